// The MPFR oracle of the vector-math tests: exact values of x^y (256-bit MPFR, rounded to long
// double, whose 64-bit significand measures double errors to within 2^-11 ulp) and the error of
// a computed result in units in the last place of its format.
#pragma once

#include <mpfr.h>

#include <cmath>
#include <limits>

namespace tav::test {

// x^y with MPFR's IEEE conventions, as a long double (which also holds the values beyond the
// double range that a correctly rounded result turns into infinity or zero).
inline long double mpfr_pow_value(double x, double y) {
  mpfr_t mx, my, mr;
  mpfr_inits2(256, mx, my, mr, static_cast<mpfr_ptr>(nullptr));
  mpfr_set_d(mx, x, MPFR_RNDN);
  mpfr_set_d(my, y, MPFR_RNDN);
  mpfr_pow(mr, mx, my, MPFR_RNDN);
  long double v = mpfr_get_ld(mr, MPFR_RNDN);
  mpfr_clears(mx, my, mr, static_cast<mpfr_ptr>(nullptr));
  return v;
}

// |got - exact| in ulps of T at exact's binade (the subnormal ulp below the normal range). An
// infinite result counts as exact when the exact value lies beyond the largest finite value by
// at least half an ulp; otherwise an infinity or a NaN where a number belongs is infinitely
// wrong.
template <class T>
double ulp_error(T got, long double exact) {
  constexpr int digits = std::numeric_limits<T>::digits;
  constexpr int min_exp = std::numeric_limits<T>::min_exponent - 1;
  constexpr long double max = std::numeric_limits<T>::max();
  long double overflow_edge = max + std::ldexp(0.5L, std::numeric_limits<T>::max_exponent - digits);
  if (std::isnan(exact)) return std::isnan(got) ? 0 : INFINITY;
  if (std::isinf(got)) {
    bool beyond = std::fabs(exact) >= overflow_edge && std::signbit(exact) == std::signbit(got);
    return beyond ? 0 : INFINITY;
  }
  if (std::isnan(got)) return INFINITY;
  int e = exact == 0 ? min_exp : std::ilogb(exact);
  if (e < min_exp) e = min_exp;
  long double ulp = std::ldexp(1.0L, e - (digits - 1));
  return static_cast<double>(std::fabs(static_cast<long double>(got) - exact) / ulp);
}

}  // namespace tav::test
