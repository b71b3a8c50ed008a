// The single-precision power function on eight lanes of AVX2: x^y = 2^(y·log2 x). The
// reductions work on the float bits of all eight lanes at once; what needs more than single
// precision runs in two registers of four doubles. HA keeps the whole formula in double and
// rounds once at the end; LA rounds the reduced argument of 2^r to float and finishes in single
// precision; EP works in single precision throughout.
#pragma once

#include <cstdint>

#include "common/simd.hpp"
#include "vml/pow/pow_single_tables.hpp"

#if !defined(__AVX2__) || !defined(__FMA__)
#error "the eight-lane single-precision power function needs AVX2 and FMA"
#endif

namespace tav::TAV_PATH_NS::pow_single {

namespace pow_data = ::tav::vml::pow_data;
using F = simd256<float>;
using D = simd256<double>;

enum class accuracy { high, low, enhanced };

// Polynomial coefficients: Chebyshev interpolants fitted with mpmath at 60 digits on the
// reduced ranges and rounded to the format; the bound quoted is the largest relative error of
// the rounded polynomial on a grid of 4000 points.
//   log2(1 + r) = r·q(r), -2^-6 <= r <= 2^-6: log2_q5 to 2^-43.9, log2_q4 to 2^-36.7.
inline constexpr double log2_q5[] = {0x1.71547652b847dp+0, -0x1.71547652b198fp-1,
                                     0x1.ec709d546e4ddp-2, -0x1.71547a964f4ebp-2,
                                     0x1.2789e93141f53p-2, -0x1.ebf8c6166a186p-3};
inline constexpr double log2_q4[] = {0x1.71547652b717ap+0, -0x1.7154762ea69b5p-1,
                                     0x1.ec70a0e8fa5b3p-2, -0x1.7167147ff1665p-2,
                                     0x1.273c2cc74f9e8p-2};
//   The same in single precision, -2^-4 <= r <= 2^-4: log2f_q3 to 2^-21.5.
inline constexpr float log2f_q3[] = {0x1.71547p+0f, -0x1.715552p-1f, 0x1.ed71c8p-2f,
                                     -0x1.6e19b6p-2f};
//   2^r = 1 + r·e(r), |r| <= 2^-6 in double: exp2_e2 to 2^-32.7; |r| <= 2^-4 in single:
//   exp2f_e2 to 2^-24.7, exp2f_e1 to 2^-17.1.
inline constexpr double exp2_e2[] = {0x1.62e42fefa39efp-1, 0x1.ebfccc586302fp-3,
                                     0x1.c6b110835b776p-5};
inline constexpr float exp2f_e2[] = {0x1.62e43p-1f, 0x1.ec0aa6p-3f, 0x1.c6b8bep-5f};
inline constexpr float exp2f_e1[] = {0x1.62f266p-1f, 0x1.ec05bap-3f};

// The vector path takes |y·log2 x| <= t_max, where 2^t is a normal float with room for the
// formula's error; the rare path takes the rest.
inline constexpr double t_max = 125.5;

// head + c[0]·r + c[1]·r² + ... + c[n-1]·r^n, by Horner's scheme in r² over pairs of terms:
// a dependency chain half as long as Horner's in r.
template <class V, class R, int n>
inline typename V::reg series(typename V::reg r, typename V::reg r2, typename V::reg head,
                              const R (&c)[n]) {
  auto pair = [&](int i) {  // c[i - 1] + c[i]·r, with c[-1] = head
    typename V::reg low = i == 0 ? head : V::broadcast(c[i - 1]);
    return i < n ? V::mul_add(V::broadcast(c[i]), r, low) : low;
  };
  int last = n & ~1;
  typename V::reg p = pair(last);
  for (int i = last - 2; i >= 0; i -= 2) p = V::mul_add(p, r2, pair(i));
  return p;
}

// The lanes of one block, and those outside the formula's domain (x not positive and normal, or
// y NaN or beyond ±y_max) marked in `special`. Their y becomes 1 so that they raise no stray
// exception flag; x needs no such care, since the logarithm reads only its bits (z and k stay
// finite whatever they hold).
struct operands {
  F::reg x, y, special;
};

inline operands admit(const float* a, const float* b, float y_max) {
  F::reg x = F::load(a), y = F::load(b);
  F::reg special = F::mask_or(
      F::not_within(x, F::broadcast(0x1p-126f), F::broadcast(0x1.fffffep127f)),
      F::not_within(y, F::broadcast(-y_max), F::broadcast(y_max)));
  return {x, F::select(special, y, F::broadcast(1.0f)), special};
}

// x = 2^k·z with z in [offset, 2·offset) (offset as a bit pattern), and the subinterval of z:
// the `bits` mantissa bits of x minus offset that follow the exponent.
struct log_split {
  F::reg k, z;
  F::ireg index;
};

template <int32_t offset, int bits>
inline log_split split(F::reg x) {
  F::ireg ix = F::bits(x);
  F::ireg tmp = F::isub(ix, F::iset(offset));
  log_split s;
  s.k = F::from_int(F::sar<23>(tmp));
  s.z = F::from_bits(F::isub(ix, F::iand(tmp, F::iset(static_cast<int32_t>(0xff800000u)))));
  s.index = F::iand(F::shr<23 - bits>(tmp), F::iset((1 << bits) - 1));
  return s;
}

// log2 x = k + log2c + r·q(r) on four lanes, r = z·invc - 1 with one rounding.
template <int n>
inline D::reg log2_half(D::reg k, D::reg z, const int32_t* index, const double (&q)[n]) {
  D::reg invc, log2c;
  D::lookup_pairs(&pow_data::log2_table[0][0], index, invc, log2c);
  D::reg r = D::mul_add(z, invc, D::broadcast(-1.0));
  return series<D>(r, D::mul(r, r), D::add(k, log2c), q);
}

// t = y·log2 x for the eight lanes as two halves of doubles. Lanes with |t| beyond t_max get
// t = 0; `flags` marks them and the special lanes (bit i for lane i).
struct exponent {
  D::reg low, high;
  int flags;
};

template <int n>
inline exponent y_log2_x(const operands& in, const double (&q)[n]) {
  log_split s = split<pow_data::log2_offset, pow_data::log2_bits>(in.x);
  alignas(32) int32_t index[8];
  F::store(index, s.index);
  D::reg low = log2_half(widen_low(s.k), widen_low(s.z), index, q);
  D::reg high = log2_half(widen_high(s.k), widen_high(s.z), index + 4, q);
  low = D::mul(widen_low(in.y), low);
  high = D::mul(widen_high(in.y), high);
  D::reg out_low = D::not_within(low, D::broadcast(-t_max), D::broadcast(t_max));
  D::reg out_high = D::not_within(high, D::broadcast(-t_max), D::broadcast(t_max));
  return {D::select(out_low, low, D::zero()), D::select(out_high, high, D::zero()),
          F::lane_bits(in.special) | D::lane_bits(out_low) | D::lane_bits(out_high) << 4};
}

// 2^t on four lanes in double: 2^(ki/32) from the table times 2^r, r = t - ki/32.
inline D::reg exp2_half(D::reg t) {
  const D::reg shift = D::broadcast(0x1.8p52 / 32);
  D::reg kd = D::add(t, shift);             // round(32·t) in the low bits
  D::reg r = D::sub(t, D::sub(kd, shift));  // exact, |r| <= 1/64
  alignas(32) int64_t j[4];
  D::store(j, D::iand(D::bits(kd), D::iset(31)));
  D::reg table_bits = D::lookup(pow_data::exp2_table, j);
  D::reg scale = D::from_bits(D::iadd(D::bits(table_bits), D::shl<47>(D::bits(kd))));
  return D::mul_add(scale, series<D>(r, D::mul(r, r), D::zero(), exp2_e2), scale);
}

// 2^(ki/8 + r) on eight lanes in single precision, ki in the low bits of each lane (the
// table's register read picks ki mod 8), |r| <= 1/16.
template <int n>
inline F::reg exp2f_scaled(F::reg r, F::ireg ki, const float (&e)[n]) {
  F::reg table_bits = F::permute(F::load(pow_data::exp2f_table), ki);
  F::reg scale = F::from_bits(F::iadd(F::bits(table_bits), F::shl<20>(ki)));
  return F::mul_add(scale, series<F>(r, F::mul(r, r), F::zero(), e), scale);
}

// One block of eight elements: run writes r and returns the lanes that need the rare path as
// bits. Always inlined: as a function of its own it would reload its constants at every call.
template <accuracy a>
struct block {
  static constexpr int width = F::width;
  [[gnu::always_inline]] static int run(const float* x, const float* y, float* r);
};

template <accuracy a>
[[gnu::always_inline]] inline int block<a>::run(const float* x, const float* y, float* r) {
  if constexpr (a == accuracy::high) {
    exponent t = y_log2_x(admit(x, y, 0x1.fffffep127f), log2_q5);
    F::store(r, narrow(exp2_half(t.low), exp2_half(t.high)));
    return t.flags;
  } else if constexpr (a == accuracy::low) {
    // t - ki/8 is exact in double; only its rounding to float and the single-precision steps
    // after it add error.
    exponent t = y_log2_x(admit(x, y, 0x1.fffffep127f), log2_q4);
    const D::reg shift = D::broadcast(0x1.8p52 / 8);
    D::reg kd_low = D::add(t.low, shift), kd_high = D::add(t.high, shift);
    F::reg rf =
        narrow(D::sub(t.low, D::sub(kd_low, shift)), D::sub(t.high, D::sub(kd_high, shift)));
    F::store(r, exp2f_scaled(rf, narrow(D::bits(kd_low), D::bits(kd_high)), exp2f_e2));
    return t.flags;
  } else {
    // |y| up to 2^32 keeps y·log2 x finite in single precision; beyond it only x = 1 leaves
    // t in range, and the rare path gives 1 there as well.
    operands in = admit(x, y, 0x1p32f);
    log_split s = split<pow_data::log2f_offset, pow_data::log2f_bits>(in.x);
    F::reg invc = F::permute(F::load(pow_data::log2f_invc), s.index);
    F::reg log2c = F::permute(F::load(pow_data::log2f_logc), s.index);
    F::reg rl = F::mul_add(s.z, invc, F::broadcast(-1.0f));
    F::reg t = F::mul(in.y, series<F>(rl, F::mul(rl, rl), F::add(s.k, log2c), log2f_q3));
    const float tf_max = static_cast<float>(t_max);
    F::reg out = F::not_within(t, F::broadcast(-tf_max), F::broadcast(tf_max));
    t = F::select(out, t, F::zero());
    const F::reg shift = F::broadcast(0x1.8p23f / 8);
    F::reg kd = F::add(t, shift);  // round(8·t) in the low bits
    F::store(r, exp2f_scaled(F::sub(t, F::sub(kd, shift)), F::bits(kd), exp2f_e1));
    return F::lane_bits(F::mask_or(in.special, out));
  }
}

}  // namespace tav::TAV_PATH_NS::pow_single
