// The power function's two halves, written once over a register of doubles of simd.hpp: ln x
// for positive normal x (as a double-double, or as one double for the shorter forms) and e^t for
// t within the normal range, both by table reduction and a short polynomial. x^y = e^(y·ln x).
#pragma once

#include "common/simd.hpp"
#include "vml/pow/pow_exp_table.hpp"
#include "vml/pow/pow_log_table.hpp"

#ifdef TAV_PATH_NS
namespace tav::TAV_PATH_NS::pow_core {
#else
namespace tav::baseline::pow_core {
#endif

namespace pow_data = ::tav::vml::pow_data;
// Four lanes with AVX2 and FMA, on the AVX-512 paths too: their 512-bit forms would need a
// machine with AVX-512 to be tested. Two lanes otherwise (AVX without FMA included), products
// then split by Dekker's method where an exact remainder is needed.
#if defined(__AVX2__) && defined(__FMA__)
using L = simd256<double>;
#else
using L = simd128<double>;
#endif
using reg = L::reg;
using ireg = L::ireg;

// Polynomial coefficients, fitted by weighted least squares at 400 Chebyshev nodes with MPFR at
// 256 bits and rounded to double; the error bound quoted is the maximum over a fine grid of the
// rounded polynomial's error times its weight.
//   ln(1 + r) = r - r²/2 + r³·q(r),  |r| <= 0x1.5ap-8 (the log table's reduced range),
//   weight r²: log_q5 to 2^-69.4, log_q4 to 2^-61.1 relative to r.
inline constexpr double log_q5[] = {0x1.555555555555ep-2, -0x1.000000000000ap-2,
                                    0x1.999999963fe49p-3, -0x1.55555551c78c7p-3,
                                    0x1.24956c711f1bep-3, -0x1.0003052d5086bp-3};
inline constexpr double log_q4[] = {0x1.555555555555ep-2, -0x1.fffffffe3db4fp-3,
                                    0x1.999999963fe49p-3, -0x1.555814376637p-3,
                                    0x1.24956c711f1bep-3};
//   ln(1 + r) = r + r²·p(r), weight r: log_p3 to 2^-44.4, log_p2 to 2^-35.1, log_p1 to 2^-26.7.
inline constexpr double log_p3[] = {-0x1.ffffffff4d503p-2, 0x1.555555547ee89p-2,
                                    -0x1.0001867d288fp-2, 0x1.999c87572c59fp-3};
inline constexpr double log_p2[] = {-0x1.ffffffff4d503p-2, 0x1.55568db918dcep-2,
                                    -0x1.0001867d288fp-2};
inline constexpr double log_p1[] = {-0x1.0000afb807a64p-1, 0x1.55568db918dcep-2};
//   e^r = 1 + r + r²·e(r),  |r| <= 1.01·ln2/256, weight r²: exp_e3 to 2^-65.2, exp_e1 to
//   2^-41.2, exp_e0 to 2^-28.1 absolute.
inline constexpr double exp_e3[] = {0x1.ffffffffffd9cp-2, 0x1.5555555555483p-3,
                                    0x1.55555d23e70a4p-5, 0x1.111115d8ae2f4p-7};
inline constexpr double exp_e1[] = {0x1.000008b68bcdp-1, 0x1.55555ca6fdf03p-3};
inline constexpr double exp_e0[] = {0x1.000008b68bcdp-1};

// ln 2 = ln2_hi + ln2_lo with ln2_hi on 42 bits, so that k·ln2_hi is exact for |k| < 2^11;
// ln2/128 likewise on 35 bits, exact times any |k| < 2^18.
inline constexpr double ln2 = 0x1.62e42fefa39efp-1;
inline constexpr double ln2_hi = 0x1.62e42fefa38p-1;
inline constexpr double ln2_lo = 0x1.ef35793c7673p-45;
inline constexpr double ln2_128_hi = 0x1.62e42fefcp-8;
inline constexpr double ln2_128_lo = -0x1.c610ca86c3899p-44;
inline constexpr double inv_ln2_128 = 0x1.71547652b82fep+7;
// Adding 1.5·2^52 rounds a double of magnitude below 2^51 to an integer held in the low bits.
inline constexpr double round_shift = 0x1.8p52;
// The sign bit of a double as an integer lane.
inline constexpr int64_t sign_bit = static_cast<int64_t>(1ull << 63);

struct double_double {
  reg hi, lo;
};

// c[0] + r·(c[1] + r·(c[2] + ...)).
template <int n>
inline reg horner(reg r, const double (&c)[n]) {
  reg p = L::broadcast(c[n - 1]);
  for (int i = n - 2; i >= 0; --i) p = L::mul_add(p, r, L::broadcast(c[i]));
  return p;
}

// c[0] + c[1]·z + ... + c[n-1]·z^(n-1) by Estrin's scheme: pairs c[2i] + c[2i+1]·z, then pairs
// of those with z², and so on, a chain of ceil(log2 n) multiply-adds instead of Horner's n - 1.
template <int n>
inline reg estrin(reg z, const double (&c)[n]) {
  reg t[n];
  for (int i = 0; i < n; ++i) t[i] = L::broadcast(c[i]);
  reg x = z;
  for (int m = n; m > 1; m = (m + 1) / 2) {
    for (int i = 0; 2 * i < m; ++i)
      t[i] = 2 * i + 1 < m ? L::mul_add(t[2 * i + 1], x, t[2 * i]) : t[2 * i];
    x = L::mul(x, x);
  }
  return t[0];
}

// The exact rounding error of the product p = a·b: a·b - p. Dekker's split without FMA.
inline reg product_error(reg a, reg b, reg p) {
  if constexpr (fused_mul_add) {
    return L::mul_add(a, b, L::sub(L::broadcast(0.0), p));
  } else {
    const reg split = L::broadcast(134217729.0);  // 2^27 + 1
    reg ca = L::mul(a, split), cb = L::mul(b, split);
    reg ah = L::sub(ca, L::sub(ca, a)), bh = L::sub(cb, L::sub(cb, b));
    reg al = L::sub(a, ah), bl = L::sub(b, bh);
    reg e = L::add(L::add(L::sub(L::mul(ah, bh), p), L::mul(ah, bl)), L::mul(al, bh));
    return L::add(e, L::mul(al, bl));
  }
}

// x = 2^k · z with z in [0x1.69p-1, 0x1.69p+0), z = c·(1 + r), ln c from the table.
struct log_reduction {
  reg kd, r, logc_hi, logc_lo;
};

inline log_reduction reduce_log(reg x) {
  using pow_data::log_table;
  ireg ix = L::bits(x);
  ireg tmp = L::isub(ix, L::iset(pow_data::log_table_offset));
  ireg i = L::iand(L::shr<52 - pow_data::log_table_bits>(tmp), L::iset(127));
  log_reduction out;
  out.kd = L::top12_signed(tmp);
  reg z = L::from_bits(L::isub(ix, L::iand(tmp, L::iset(0xfff0000000000000ull))));
  reg invc;
  L::lookup_rows3(&log_table[0].invc, i, invc, out.logc_hi, out.logc_lo);
  // r = z·invc - 1 is exact: invc has at most 9 significant bits (see the table). Without FMA
  // z splits into 21 high bits and the rest, each product then being exact.
  if constexpr (fused_mul_add) {
    out.r = L::mul_add(z, invc, L::broadcast(-1.0));
  } else {
    reg zhi = L::from_bits(L::iand(L::bits(z), L::iset(0xffffffff00000000ull)));
    reg zlo = L::sub(z, zhi);
    out.r = L::add(L::sub(L::mul(zhi, invc), L::broadcast(1.0)), L::mul(zlo, invc));
  }
  return out;
}

// ln x = k·ln2 + ln c + ln(1 + r) as hi + lo, with a relative error near 2^-68 for q = log_q5.
// The exact parts k·ln2_hi + ln c_hi + r - r²/2 are summed by Fast2Sum (each left operand has
// the larger exponent), their rounding errors collected in lo with the small terms.
template <int q_terms>
inline double_double log_dd(reg x, const double (&q)[q_terms]) {
  log_reduction t = reduce_log(x);
  reg p1 = L::mul(t.kd, L::broadcast(ln2_hi));  // exact
  reg s1 = L::add(p1, t.logc_hi);
  reg e1 = L::add(L::sub(p1, s1), t.logc_hi);
  reg s2 = L::add(s1, t.r);
  reg e2 = L::add(L::sub(s1, s2), t.r);
  reg half_r = L::mul(L::broadcast(-0.5), t.r);  // exact
  reg sq = L::mul(t.r, half_r);                  // -r²/2 rounded
  reg e3 = product_error(t.r, half_r, sq);
  reg s3 = L::add(s2, sq);
  reg e4 = L::add(L::sub(s2, s3), sq);
  reg r2 = L::mul(t.r, t.r);
  reg tail = L::mul(L::mul(r2, t.r), horner(t.r, q));
  reg lo = L::mul_add(t.kd, L::broadcast(ln2_lo), t.logc_lo);
  lo = L::add(L::add(lo, L::add(e1, e2)), L::add(L::add(e3, e4), tail));
  double_double out;
  out.hi = L::add(s3, lo);
  out.lo = L::add(L::sub(s3, out.hi), lo);
  return out;
}

// ln x as one double: (k·ln2 + ln c) + (r + r²·p(r)).
template <int p_terms>
inline reg log_plain(reg x, const double (&p)[p_terms]) {
  log_reduction t = reduce_log(x);
  reg head = L::mul_add(t.kd, L::broadcast(ln2), t.logc_hi);
  reg r2 = L::mul(t.r, t.r);
  return L::add(head, L::mul_add(r2, horner(t.r, p), t.r));
}

// y·(hi + lo) as a double-double.
inline double_double times(reg y, double_double l) {
  double_double out;
  out.hi = L::mul(y, l.hi);
  out.lo = L::mul_add(y, l.lo, product_error(y, l.hi, out.hi));
  return out;
}

// a + b as a double-double, for |a| >= |b| (Dekker's Fast2Sum).
inline double_double fast_two_sum(reg a, reg b) {
  reg s = L::add(a, b);
  return {s, L::add(L::sub(a, s), b)};
}

// (x.hi + x.lo)·(y.hi + y.lo) to about 2^-102 relative.
inline double_double dd_times(double_double x, double_double y) {
  reg p = L::mul(x.hi, y.hi);
  reg e = L::mul_add(x.hi, y.lo, product_error(x.hi, y.hi, p));
  return {p, L::mul_add(x.lo, y.hi, e)};
}

// e^t = 2^(ki/128) · (1 + tmp): ki = round(t·128/ln2), t - ki·ln2/128 = r, and
// tmp = tail_j + r + r²·e(r) with j = ki mod 128. scale_bits holds the table's bits plus
// ki << 45, which is 2^(ki/128) rounded whenever the exponent stays in range.
struct exp_parts {
  reg tmp;
  ireg ki_bits;     // ki in the low bits of round_shift + ki
  ireg scale_bits;
};

template <int e_terms>
inline exp_parts exp_reduce(reg t_hi, reg t_lo, const double (&e)[e_terms], bool with_tail) {
  using pow_data::exp_table;
  reg kd = L::add(L::mul(t_hi, L::broadcast(inv_ln2_128)), L::broadcast(round_shift));
  exp_parts out;
  out.ki_bits = L::bits(kd);
  kd = L::sub(kd, L::broadcast(round_shift));
  // t_hi - kd·ln2_128_hi is exact (Sterbenz), the rest of kd·ln2/128 and t_lo are small.
  reg r = L::sub(t_hi, L::mul(kd, L::broadcast(ln2_128_hi)));
  r = L::add(L::mul_add(kd, L::broadcast(-ln2_128_lo), r), t_lo);
  reg scale, tail;
  L::lookup_pairs(&exp_table[0].scale, L::iand(out.ki_bits, L::iset(127)), scale, tail);
  out.scale_bits = L::iadd(L::bits(scale), L::shl<52 - pow_data::exp_table_bits>(out.ki_bits));
  reg head = with_tail ? L::add(r, tail) : r;
  out.tmp = L::mul_add(L::mul(r, r), horner(r, e), head);
  return out;
}

// The value of exp_parts where e^t is a normal number.
inline reg exp_value(const exp_parts& p) {
  reg scale = L::from_bits(p.scale_bits);
  return L::mul_add(scale, p.tmp, scale);
}

}  // namespace tav::...::pow_core
