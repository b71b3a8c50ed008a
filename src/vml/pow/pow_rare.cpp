// The scalar rare path of the power function: the IEEE special cases with the vector-math
// statuses, and |x|^y with the sign for the remaining finite operands, including denormal x and
// results that overflow or fall into the subnormal range, rounded once.
#include "vml/pow/pow_rare.hpp"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "vml/pow/pow_core.hpp"

namespace tav::vml {
namespace {

using namespace baseline::pow_core;

enum class parity { not_integer, odd, even };

// |y| of at least 2^53 (2^24 in single precision) is even, infinities included; |y| below 1 is
// not an integer. NaN and zero y never get here.
template <class T>
parity classify(T y) {
  constexpr T all_even = 2 / std::numeric_limits<T>::epsilon();
  T a = std::fabs(y);
  if (!(a < all_even)) return parity::even;
  if (a < 1 || std::trunc(a) != a) return parity::not_integer;
  return std::fmod(a, T(2)) == 1 ? parity::odd : parity::even;
}

struct scalar_dd {
  double hi, lo;
};

// y·ln x as a double-double for finite positive x (denormals scaled up by 2^200 first, then
// 200·ln2 taken off by Knuth's TwoSum) and finite y.
scalar_dd y_log_x(double x, double y) {
  bool denormal = x < std::numeric_limits<double>::min();
  double_double l = log_dd(L::broadcast(denormal ? x * 0x1p200 : x), log_q5);
  if (denormal) {
    double hi = L::lane0(l.hi), c = -200 * ln2_hi;  // exact
    double s = hi + c, bv = s - hi;
    double err = (hi - (s - bv)) + (c - bv);
    l.hi = L::broadcast(s);
    l.lo = L::broadcast(L::lane0(l.lo) + err - 200 * ln2_lo);
  }
  double_double t = times(L::broadcast(y), l);
  return {L::lane0(t.hi), L::lane0(t.lo)};
}

// e^t = 2^k·(hi + lo) with hi = 2^(j/128) and lo = hi·tmp, for |t| below 2^40.
struct scaled_exp {
  int64_t k;
  double hi, lo;
};

scaled_exp exp_scaled(scalar_dd t) {
  exp_parts p = exp_reduce(L::broadcast(t.hi), L::broadcast(t.lo), exp_e3, true);
  int64_t ki = L::lane0(p.ki_bits) - std::bit_cast<int64_t>(round_shift);
  int64_t j = ki & 127;
  double hi = std::bit_cast<double>(
      std::bit_cast<uint64_t>(pow_data::exp_table[j].scale) + (static_cast<uint64_t>(j) << 45));
  return {ki >> 7, hi, hi * L::lane0(p.tmp)};
}

// 2^k·(hi + lo) rounded once to double. In the subnormal range, hi + lo is scaled so that
// 2^-1022 becomes 1 and added to 1.0: the sum rounds at the position of the subnormal's last
// bit, and the way back is exact.
double rounded(scaled_exp e, double) {
  double v = std::ldexp(e.hi + e.lo, static_cast<int>(e.k));
  if (v >= std::numeric_limits<double>::min() || e.k < -1076) return v;
  double u_hi = std::ldexp(e.hi, static_cast<int>(e.k + 1022));  // exact
  double u_lo = std::ldexp(e.lo, static_cast<int>(e.k + 1022));
  double s1 = 1 + u_hi;
  double s = s1 + (((1 - s1) + u_hi) + u_lo);
  return (s - 1) * 0x1p-1022;  // exact
}

// In single precision through the double result, a normal double for every t that gets here.
float rounded(scaled_exp e, float) {
  return static_cast<float>(std::ldexp(e.hi + e.lo, static_cast<int>(e.k)));
}

// |x|^y. Beyond the range: the largest finite value squared (inf with the overflow flag); far
// below it a tiny value squared (a zero with the underflow flag). The cut-offs on t = y·ln x
// lie outside the format's range (e^710 and e^-746 for double, e^100 and e^-110 for float), so
// that only rounded() decides near the edges.
template <class T>
T magnitude(T x, T y) {
  constexpr bool is_double = sizeof(T) == sizeof(double);
  constexpr T big = std::numeric_limits<T>::max();
  constexpr T tiny = std::numeric_limits<T>::min();
  scalar_dd t = y_log_x(x, y);
  if (t.hi > (is_double ? 710 : 100)) return big * big;
  if (t.hi < (is_double ? -746 : -110)) return tiny * tiny;
  T v = rounded(exp_scaled(t), T());
  return std::isinf(v) ? big * big : v;
}

template <class T>
int pow_rare(T x, T y, T* r) {
  constexpr T inf = std::numeric_limits<T>::infinity();
  if (y == 0) {
    *r = 1;
    return 0;
  }
  if (std::isnan(x) || std::isnan(y)) {
    *r = x + y;
    return 0;
  }
  parity p = classify(y);
  bool odd_negative = std::signbit(x) && p == parity::odd;
  if (x == 0) {
    // The domain status for 0^negative, not the singularity status, is deliberate.
    if (y > 0) {
      *r = odd_negative ? -T(0) : T(0);
      return 0;
    }
    *r = odd_negative ? -inf : inf;
    return 1;
  }
  if (x == -1 && p != parity::not_integer) {
    *r = p == parity::odd ? -1 : 1;
    return 0;
  }
  if (std::isinf(y)) {
    T ax = std::fabs(x);
    *r = ax == 1 ? 1 : (ax > 1) == (y > 0) ? inf : 0;
    return 0;
  }
  if (std::isinf(x)) {
    T v = y > 0 ? inf : 0;
    *r = odd_negative ? -v : v;
    return 0;
  }
  if (x < 0 && p == parity::not_integer) {
    volatile T zero = 0;
    *r = zero / zero;  // raises the invalid-operation flag
    return 1;
  }
  T v = magnitude(std::fabs(x), y);
  *r = odd_negative ? -v : v;
  return 0;
}

}  // namespace

int vdpow_cout_rare(const double* a, const double* b, double* r) { return pow_rare(*a, *b, r); }
int vspow_cout_rare(const float* a, const float* b, float* r) { return pow_rare(*a, *b, r); }

}  // namespace tav::vml
