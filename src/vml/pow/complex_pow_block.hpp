// The complex power a^b = e^w, w = b·ln a = b·(ln|a| + i·arg a), on a block of elements (two
// registers of pow_core's lanes of double): ln|a| = ln(ar² + ai²)/2, arg a = atan2(ai, ar), and
// the result e^(w_re)·(cos w_im + i·sin w_im). The error of w becomes the result's relative
// error, so the wide form keeps ln a, w and the reduced angle as double-doubles (w to about
// 2^-66 relative, 2^-56 absolute at |w| = 2^10); the plain form, enough for results of single
// precision and for 2^-26, works in doubles (w to about 2^-44 relative).
#pragma once

#include "vml/pow/atan2_core.hpp"
#include "vml/pow/pow_core.hpp"
#include "vml/pow/sincos_core.hpp"

namespace tav::TAV_PATH_NS::pow_core {

enum class complex_form {
  wide,      // vzPow HA
  wide_low,  // vzPow LA: the same without the tail of 2^(j/128)
  plain,     // vcPow, vzPow EP
};

// Operands the formula takes: parts of b below 2^900 in magnitude (no product with ln a
// overflows), |a|² within [2^-900, 2^1000] (normal, its parts' squares exact to far below its
// ulp), w_re within [w_re_min, w_re_max] (e^(w_re) and the larger part of the result normal,
// so that only a smaller part can round in the subnormal range) and |w_im| <= w_im_max (below
// which the reduction of sin and cos is exact and w accurate enough).
template <class Real>
struct complex_range;
template <>
struct complex_range<double> {
  static constexpr double w_re_min = -708.0, w_re_max = 709.0, w_im_max = 0x1p10;
};
template <>
struct complex_range<float> {
  static constexpr double w_re_min = -86.0, w_re_max = 88.0, w_im_max = 0x1p16;
};

// Elements 0 to L::width - 1 at p (interleaved re, im) as their parts, and back.
template <class Real>
inline void load_parts(const Real* p, reg& re, reg& im) {
  L::deinterleave(L::load(p), L::load(p + L::width), re, im);
}
template <class Real>
inline void store_parts(Real* p, reg re, reg im) {
  reg a, b;
  L::interleave(re, im, a, b);
  L::store(p, a);
  L::store(p + L::width, b);
}

// |a|² = ar² + ai² as a double-double: exact products, one two-sum.
inline double_double square_magnitude(reg ar, reg ai) {
  const vml::double_double<reg> p = vml::two_prod(ar, ar), q = vml::two_prod(ai, ai);
  const vml::double_double<reg> s = vml::two_sum(p.hi, q.hi);
  return {s.hi, L::add(s.lo, L::add(p.lo, q.lo))};
}

// x + y, both double-doubles of any magnitudes.
inline double_double dd_add(double_double x, double_double y) {
  const vml::double_double<reg> s = vml::two_sum(x.hi, y.hi);
  return fast_two_sum(s.hi, L::add(s.lo, L::add(x.lo, y.lo)));
}

// scale·(1 + tmp)·(c.hi + c.lo) rounded once: scale = 2^e·m with m in [1, 2), the exact
// product m·c.hi plus the small rest rounded, then the exact scaling by 2^e (|e| <= 1022, and
// the product's splitting works on m, which keeps it in range).
inline reg scaled(reg scale, reg tmp, double_double c) {
  const ireg exponent = L::iset(0x7ff0000000000000ll);
  const reg power = L::from_bits(L::iand(L::bits(scale), exponent));
  const reg m = L::from_bits(L::iadd(L::iand(L::bits(scale), L::iset(0x000fffffffffffffll)),
                                     L::iset(0x3ff0000000000000ll)));
  const reg p = L::mul(m, c.hi);
  const reg rest = L::mul_add(m, L::mul_add(c.hi, tmp, c.lo), product_error(m, c.hi, p));
  return L::mul(L::add(p, rest), power);
}

// The lanes of one register: operands, their flags, and what the stages compute from them.
struct complex_lanes {
  reg ar, ai, br, bi, special, out_of_range, t0;
  double_double s, ln_abs, w_re, w_im;
  sin_cos sc;
};

// Loads a register of elements and flags the operands outside the formula's range; flagged
// lanes compute 1^0 from here on, so that no stray exception flag is raised.
template <class Real>
inline void admit(const Real* a, const Real* b, complex_lanes& z) {
  load_parts(a, z.ar, z.ai);
  load_parts(b, z.br, z.bi);
  const reg a_min = L::broadcast(-0x1p499), a_max = L::broadcast(0x1p499);
  const reg b_min = L::broadcast(-0x1p900), b_max = L::broadcast(0x1p900);
  z.special =
      L::mask_or(L::mask_or(L::not_within(z.ar, a_min, a_max), L::not_within(z.ai, a_min, a_max)),
                 L::mask_or(L::not_within(z.br, b_min, b_max), L::not_within(z.bi, b_min, b_max)));
  z.ar = L::select(z.special, z.ar, L::broadcast(1.0));
  z.ai = L::select(z.special, z.ai, L::zero());
  z.s = square_magnitude(z.ar, z.ai);
  z.special =
      L::mask_or(z.special, L::not_within(z.s.hi, L::broadcast(0x1p-900), L::broadcast(0x1p1000)));
  z.ar = L::select(z.special, z.ar, L::broadcast(1.0));
  z.ai = L::select(z.special, z.ai, L::zero());
  z.br = L::select(z.special, z.br, L::zero());
  z.bi = L::select(z.special, z.bi, L::zero());
  z.s.hi = L::select(z.special, z.s.hi, L::broadcast(1.0));
  z.s.lo = L::select(z.special, z.s.lo, L::zero());
}

// ln|a| = (ln s.hi + s.lo/s.hi)/2.
template <bool wide>
inline void log_stage(complex_lanes& z) {
  const reg ratio = L::div(z.s.lo, z.s.hi);
  if constexpr (wide) {
    const double_double l = log_dd(z.s.hi, log_q5);
    z.ln_abs = {L::mul(L::broadcast(0.5), l.hi), L::mul(L::broadcast(0.5), L::add(l.lo, ratio))};
  } else {
    z.ln_abs = {L::mul(L::broadcast(0.5), L::add(log_plain(z.s.hi, log_p3), ratio)), L::zero()};
  }
}

// w = b·ln a, arg a = t0 or its correction; lanes whose w is beyond the formula's range are
// flagged and compute e^0.
template <class Real, bool wide>
inline void exponent_stage(complex_lanes& z) {
  if constexpr (wide) {
    const double_double t = atan2_corrected(z.ai, z.ar, z.t0, z.sc);
    const double_double p = times(z.br, z.ln_abs), q = times(z.bi, t);
    const double_double u = times(z.br, t), v = times(z.bi, z.ln_abs);
    z.w_re = dd_add(p, {L::sub(L::zero(), q.hi), L::sub(L::zero(), q.lo)});
    z.w_im = dd_add(u, v);
  } else {
    const reg l = z.ln_abs.hi, t = z.t0;
    z.w_re = {L::sub(L::mul(z.br, l), L::mul(z.bi, t)), L::zero()};
    z.w_im = {L::mul_add(z.br, t, L::mul(z.bi, l)), L::zero()};
  }
  // +0 for a zero w_im, as the rare path gives a real result there.
  z.w_im.hi = L::add(z.w_im.hi, L::zero());
  z.out_of_range = L::mask_or(L::not_within(z.w_re.hi, L::broadcast(complex_range<Real>::w_re_min),
                                            L::broadcast(complex_range<Real>::w_re_max)),
                              L::not_within(z.w_im.hi, L::broadcast(-complex_range<Real>::w_im_max),
                                            L::broadcast(complex_range<Real>::w_im_max)));
  z.w_re.hi = L::select(z.out_of_range, z.w_re.hi, L::zero());
  z.w_re.lo = L::select(z.out_of_range, z.w_re.lo, L::zero());
  z.w_im.hi = L::select(z.out_of_range, z.w_im.hi, L::zero());
  z.w_im.lo = L::select(z.out_of_range, z.w_im.lo, L::zero());
}

// e^(w_re)·(cos w_im + i·sin w_im) with z.sc = sin, cos of w_im, stored at r; returns the
// flagged lanes as bits.
template <class Real, complex_form f>
inline int power_stage(const complex_lanes& z, Real* r) {
  reg re, im;
  if constexpr (f != complex_form::plain) {
    const exp_parts e = exp_reduce(z.w_re.hi, z.w_re.lo, exp_e3, f == complex_form::wide);
    const reg scale = L::from_bits(e.scale_bits);
    re = scaled(scale, e.tmp, z.sc.c);
    im = scaled(scale, e.tmp, z.sc.s);
  } else {
    const reg m = exp_value(exp_reduce(z.w_re.hi, z.w_re.lo, exp_e1, false));
    re = L::mul(m, z.sc.c.hi);
    im = L::mul(m, z.sc.s.hi);
  }
  store_parts(r, re, im);
  return L::lane_bits(L::mask_or(z.special, z.out_of_range));
}

// One block of complex_block elements: writes r and returns the lanes that need the rare path
// as bits (their results are to be overwritten). The formula is one long chain of dependent
// steps; the block holds two registers of elements and takes each step (logarithm, angle,
// sin and cos, exponential, each well within the processor's reorder window) for both before
// the next, so that the two chains overlap (bench/RESULTS.md, "Complex power").
inline constexpr int complex_registers = 2;
inline constexpr int complex_block = complex_registers * L::width;

template <class Real, complex_form f>
inline int complex_pow_block(const Real* a, const Real* b, Real* r) {
  constexpr bool wide = f != complex_form::plain;
  constexpr int n = complex_registers;
  constexpr long step = 2 * L::width;  // reals per register of elements
  complex_lanes z[n];
  for (int k = 0; k < n; ++k) admit(a + k * step, b + k * step, z[k]);
  for (int k = 0; k < n; ++k) log_stage<wide>(z[k]);
  for (int k = 0; k < n; ++k) z[k].t0 = atan2_plain(z[k].ai, z[k].ar);
  if constexpr (wide) {
    for (int k = 0; k < n; ++k) z[k].sc = sin_cos_of<true>(z[k].t0, L::zero());
  }
  for (int k = 0; k < n; ++k) exponent_stage<Real, wide>(z[k]);
  for (int k = 0; k < n; ++k) z[k].sc = sin_cos_of<wide>(z[k].w_im.hi, z[k].w_im.lo);
  int flags = 0;
  for (int k = 0; k < n; ++k) flags |= power_stage<Real, f>(z[k], r + k * step) << (k * L::width);
  return flags;
}

}  // namespace tav::TAV_PATH_NS::pow_core
