// sin w and cos w together, over a register of doubles (pow_core's), for |w| < 2^20 given as
// one double or as a double-double: Cody and Waite's reduction by pi/2 with a three-part
// constant, then short polynomials on |r| <= pi/4 and the quadrant's swap and signs.
#pragma once

#include "vml/kernels/double_double.hpp"
#include "vml/pow/pow_core.hpp"

namespace tav::TAV_PATH_NS::pow_core {

// Polynomial coefficients: Chebyshev interpolants fitted with mpmath at 200 bits on
// z = r² in [0, (pi/4 + 2^-30)²] and rounded to double; the bound quoted is the largest absolute
// error of the rounded polynomial on a grid of 2001 points.
//   sin r = r + r·z·(-1/6 + z/120 + z²·sin_s(z)): sin_s to 2^-71.6;
//   cos r = 1 - z/2 + z²·(1/24 - z/720 + z²·cos_c(z)): cos_c to 2^-65.0.
inline constexpr double sin_s[] = {-0x1.a01a01a01a01ap-13, 0x1.71de3a556c6f7p-19,
                                   -0x1.ae64567f30704p-26, 0x1.612460be74c1fp-33,
                                   -0x1.ae7dba623fb4fp-41, 0x1.92fcc20732871p-49};
inline constexpr double cos_c[] = {0x1.a01a01a01a012p-16, -0x1.27e4fb777fd10p-22,
                                   0x1.1eed8ebdc3e9cp-29, -0x1.93961fcfe2dc0p-37,
                                   0x1.ac554d944e5c8p-45};
// The Taylor coefficients -1/6, 1/120, 1/24 and -1/720 as double-doubles.
inline constexpr double sin_3[] = {-0x1.5555555555555p-3, -0x1.5555555555555p-57};
inline constexpr double sin_5[] = {0x1.1111111111111p-7, 0x1.1111111111111p-63};
inline constexpr double cos_4[] = {0x1.5555555555555p-5, 0x1.5555555555555p-59};
inline constexpr double cos_6[] = {-0x1.6c16c16c16c17p-10, 0x1.f49f49f49f49fp-65};

// pi/2 = pio2_1 + pio2_2 + pio2_3 to 2^-122: the first two parts on 33 bits, so that k·pio2_1
// and k·pio2_2 are exact for |k| < 2^20.
inline constexpr double pio2_1 = 0x1.921fb544p+0;
inline constexpr double pio2_2 = 0x1.0b4611a6p-34;
inline constexpr double pio2_3 = 0x1.3198a2e037073p-69;
inline constexpr double two_over_pi = 0x1.45f306dc9c883p-1;

// sin and cos of w, each as hi + lo (lo zero for the one-double form).
struct sin_cos {
  double_double s, c;
};

// Lane masks from integer lanes: all ones where bit0 (0 or 1) is 1; the sign bit alone where
// bit 1 of bit1 is set.
inline reg all_ones_if(ireg bit0) { return L::from_bits(L::isub(L::iset(0), bit0)); }
inline reg sign_if(ireg bit1) {
  return L::from_bits(L::iand(L::shl<62>(bit1), L::iset(sign_bit)));
}

// c0 + c1·z + rest as a normalised double-double: c0 and c1 double-doubles, |c1·z| < |c0|,
// rest small.
inline double_double series_head(double_double z, const double (&c0)[2], const double (&c1)[2],
                                 reg rest) {
  const reg m = L::mul(z.hi, L::broadcast(c1[0]));
  reg m_lo = L::mul_add(z.hi, L::broadcast(c1[1]), product_error(z.hi, L::broadcast(c1[0]), m));
  m_lo = L::mul_add(z.lo, L::broadcast(c1[0]), m_lo);
  double_double q = fast_two_sum(L::broadcast(c0[0]), m);
  return fast_two_sum(q.hi, L::add(q.lo, L::add(L::add(L::broadcast(c0[1]), m_lo), rest)));
}

// w = k·pi/2 + r, |r| <= pi/4·(1 + 2^-50), and sin, cos of r; `wide` keeps r, and the
// polynomials' leading terms, as double-doubles (absolute error near 2^-67); the one-double
// form errs by about 2^-53.
template <bool wide>
inline sin_cos sin_cos_of(reg w_hi, reg w_lo) {
  reg kd = L::mul_add(w_hi, L::broadcast(two_over_pi), L::broadcast(round_shift));
  ireg ki = L::bits(kd);
  kd = L::sub(kd, L::broadcast(round_shift));
  // w - k·pio2_1 is exact (Sterbenz: the two are within a factor of two when k != 0), and so is
  // k·pio2_2; the subtraction of the latter is made exact by a two-sum.
  reg t1 = L::neg_mul_add(kd, L::broadcast(pio2_1), w_hi);
  reg p2 = L::mul(kd, L::broadcast(pio2_2));
  double_double r;
  if constexpr (wide) {
    vml::double_double<reg> t2 = vml::two_sum(t1, L::sub(L::zero(), p2));
    reg lo = L::add(L::neg_mul_add(kd, L::broadcast(pio2_3), t2.lo), w_lo);
    r = fast_two_sum(t2.hi, lo);
  } else {
    r.hi = L::add(L::neg_mul_add(kd, L::broadcast(pio2_3), L::sub(t1, p2)), w_lo);
    r.lo = L::zero();
  }
  const reg z = L::mul(r.hi, r.hi), z2 = L::mul(z, z);
  const reg zs = L::mul(z2, estrin(z, sin_s)), zc = L::mul(z2, estrin(z, cos_c));
  sin_cos out;
  if constexpr (wide) {
    // sin r = r + (r·z)·q_s + lo·cos r, cos r = (1 - z/2) + z²·q_c - lo·sin r, where
    // q_s = -1/6 + z/120 + z²·sin_s and q_c = 1/24 - z/720 + z²·cos_c, with z = r.hi² and its
    // rounding error: every term above 2^-13 of the result is formed as a double-double, so the
    // absolute error stays near 2^-67.
    const reg z_lo = product_error(r.hi, r.hi, z);
    const double_double zd = {z, z_lo};
    const double_double qs = series_head(zd, sin_3, sin_5, zs);
    const double_double qc = series_head(zd, cos_4, cos_6, zc);
    const double_double ts = dd_times(dd_times({r.hi, L::zero()}, zd), qs);
    const double_double tc = dd_times(dd_times(zd, zd), qc);
    const reg h = L::mul(L::broadcast(0.5), z);  // exact
    double_double u = fast_two_sum(L::broadcast(1.0), L::sub(L::zero(), h));
    u.lo = L::neg_mul_add(L::broadcast(0.5), z_lo, u.lo);
    out.s = fast_two_sum(r.hi, ts.hi);
    out.c = fast_two_sum(u.hi, tc.hi);
    out.s.lo = L::add(out.s.lo, L::mul_add(r.lo, out.c.hi, ts.lo));
    out.c.lo = L::add(L::add(out.c.lo, u.lo), L::neg_mul_add(r.lo, out.s.hi, tc.lo));
    out.s = fast_two_sum(out.s.hi, out.s.lo);
    out.c = fast_two_sum(out.c.hi, out.c.lo);
  } else {
    const reg qs = L::mul_add(z, L::broadcast(sin_5[0]), L::add(L::broadcast(sin_3[0]), zs));
    const reg qc = L::mul_add(z, L::broadcast(cos_6[0]), L::add(L::broadcast(cos_4[0]), zc));
    out.s.hi = L::mul_add(L::mul(r.hi, z), qs, r.hi);
    out.c.hi = L::mul_add(z2, qc, L::neg_mul_add(L::broadcast(0.5), z, L::broadcast(1.0)));
    out.s.lo = out.c.lo = L::zero();
  }
  // Quadrant k mod 4 (the low bits of ki): odd k exchanges sin and cos; sin changes sign for
  // k = 2, 3 and cos for k = 1, 2.
  const reg swap = all_ones_if(L::iand(ki, L::iset(1)));
  const reg sign_s = sign_if(ki), sign_c = sign_if(L::iadd(ki, L::iset(1)));
  sin_cos q;
  q.s.hi = L::bit_xor(L::select(swap, out.s.hi, out.c.hi), sign_s);
  q.s.lo = L::bit_xor(L::select(swap, out.s.lo, out.c.lo), sign_s);
  q.c.hi = L::bit_xor(L::select(swap, out.c.hi, out.s.hi), sign_c);
  q.c.lo = L::bit_xor(L::select(swap, out.c.lo, out.s.lo), sign_c);
  return q;
}

}  // namespace tav::TAV_PATH_NS::pow_core
