// atan2(y, x) over a register of doubles (pow_core's), for finite (x, y) other than (0, 0): an
// octant reduction to |u| <= tan(pi/8) and a polynomial, to about 2^-52 relative; and the
// correction step that refines it to a double-double with sin and cos of the first value.
#pragma once

#include "vml/kernels/double_double.hpp"
#include "vml/pow/pow_core.hpp"
#include "vml/pow/sincos_core.hpp"

namespace tav::TAV_PATH_NS::pow_core {

// atan u = u + u·z·atan_a(z), z = u², |u| <= tan(pi/8): a Chebyshev interpolant fitted with
// mpmath at 200 bits and rounded to double, error of atan_a below 2^-54.3 on a grid of 2001
// points, so below 2^-56.8 relative to atan u.
inline constexpr double atan_a[] = {
    -0x1.5555555555555p-2, 0x1.999999999934cp-3, -0x1.2492492436201p-3, 0x1.c71c71853d7fap-4,
    -0x1.745d0b28a7e36p-4, 0x1.3b1263064f6b9p-4, -0x1.10fa77b1a6d51p-4, 0x1.dfe6497e962bap-5,
    -0x1.a0999c632b4c8p-5, 0x1.4162c02b1d771p-5, -0x1.3a31b1c0fc488p-6};
inline constexpr double tan_pi_8 = 0x1.a827999fcef32p-2;
inline constexpr double pi_4 = 0x1.921fb54442d18p-1;
inline constexpr double pi_2 = 0x1.921fb54442d18p+0;
inline constexpr double pi = 0x1.921fb54442d18p+1;

inline reg magnitude(reg v) { return L::from_bits(L::iand(L::bits(v), L::iset(~sign_bit))); }
// All ones where a > b (neither NaN).
inline reg greater(reg a, reg b) {
  return L::not_within(L::sub(a, b), L::broadcast(-__builtin_inf()), L::zero());
}

// With n = min(|x|, |y|), d = max(|x|, |y|): atan(n/d) = atan u for n <= tan(pi/8)·d, else
// pi/4 + atan u with u = (n - d)/(n + d); then pi/2 minus that when |y| > |x|, pi minus that
// when x < 0, and y's sign.
inline reg atan2_plain(reg y, reg x) {
  const reg ax = magnitude(x), ay = magnitude(y);
  const reg swap = greater(ay, ax);
  const reg n = L::select(swap, ay, ax), d = L::select(swap, ax, ay);
  const reg shifted = greater(n, L::mul(L::broadcast(tan_pi_8), d));
  const reg u = L::div(L::select(shifted, n, L::sub(n, d)), L::select(shifted, d, L::add(n, d)));
  const reg z = L::mul(u, u);
  reg t = L::mul_add(L::mul(u, z), estrin(z, atan_a), u);
  t = L::add(t, L::select(shifted, L::zero(), L::broadcast(pi_4)));
  t = L::select(swap, t, L::sub(L::broadcast(pi_2), t));
  t = L::select(L::not_within(x, L::zero(), L::broadcast(__builtin_inf())), t,
                L::sub(L::broadcast(pi), t));
  return L::bit_xor(t, L::from_bits(L::iand(L::bits(y), L::iset(sign_bit))));
}

// atan2(y, x) = t0 + delta as a double-double, t0 from atan2_plain and sc = sin_cos_of<true>(t0):
// the residual angle delta = atan((y·cos t0 - x·sin t0)/(x·cos t0 + y·sin t0)) is below 2^-50
// and equals its argument to 2^-150; the numerator cancels, so its products are formed exactly
// and sin, cos are double-doubles. Absolute error near 2^-66 at worst, and relative to atan2
// for small angles.
inline double_double atan2_corrected(reg y, reg x, reg t0, const sin_cos& sc) {
  const vml::double_double<reg> yc = vml::two_prod(y, sc.c.hi), xs = vml::two_prod(x, sc.s.hi);
  reg num = L::add(L::sub(yc.lo, xs.lo), L::sub(L::mul(y, sc.c.lo), L::mul(x, sc.s.lo)));
  num = L::add(L::sub(yc.hi, xs.hi), num);  // yc.hi - xs.hi is exact (Sterbenz)
  const reg den = L::mul_add(x, sc.c.hi, L::mul(y, sc.s.hi));
  return fast_two_sum(t0, L::div(num, den));
}

}  // namespace tav::TAV_PATH_NS::pow_core
