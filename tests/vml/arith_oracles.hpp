// Oracles for the arithmetic functions, in binary128: products of doubles are exact there and
// quotients round close enough that rounding to double is correct rounding (long double would round twice).
#pragma once

#include <tav/tav_vml.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace tav::test {

using quad = __float128;

// Sign, 53 random bits and a binary exponent uniform in [lo, hi].
template <class Real>
std::vector<Real> wide_values(int n, unsigned seed, int lo, int hi) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> mantissa(1.0, 2.0);
  std::uniform_int_distribution<int> exponent(lo, hi);
  std::vector<Real> values(n);
  for (Real& v : values)
    v = static_cast<Real>(std::ldexp(random() % 2 ? -mantissa(random) : mantissa(random), exponent(random)));
  return values;
}

// Distance of x from the reference in units of the last place of the reference's binade.
template <class Real>
double ulps(Real x, quad reference) {
  const Real rounded = static_cast<Real>(reference);
  if (x == rounded) return 0;
  if (!std::isfinite(rounded) || !std::isfinite(x)) return INFINITY;
  int e;
  std::frexp(rounded == 0 ? x : rounded, &e);
  const int digits = sizeof(Real) == 8 ? 53 : 24;
  const double unit = std::ldexp(1.0, std::max(e - digits, sizeof(Real) == 8 ? -1074 : -149));
  return static_cast<double>((static_cast<quad>(x) - reference) / unit) * (x > reference ? 1 : -1);
}

enum class operation { add, sub, mul, div };

inline quad apply(operation op, quad a, quad b) {
  switch (op) {
    case operation::add: return a + b;
    case operation::sub: return a - b;
    case operation::mul: return a * b;
    default: return a / b;
  }
}

// Results of a real function that are not the correctly rounded value of the exact operation.
template <class Real>
long misrounded(operation op, const std::vector<Real>& a, const std::vector<Real>& b,
                const std::vector<Real>& r) {
  long wrong = 0;
  for (size_t i = 0; i < a.size(); ++i) {
    const Real expected = static_cast<Real>(apply(op, a[i], b[i]));
    if (!(r[i] == expected || (std::isnan(r[i]) && std::isnan(expected)))) ++wrong;
  }
  return wrong;
}

// Complex results (interleaved reals) with a part more than one ulp from the binary128 formula,
// counting only parts at least 2^-30 of the larger part and finite results in the normal range.
template <class Real>
long complex_off_by_more_than_an_ulp(operation op, const std::vector<Real>& a,
                                     const std::vector<Real>& b, const std::vector<Real>& r) {
  long wrong = 0;
  for (size_t i = 0; i + 1 < a.size(); i += 2) {
    const quad x = a[i], y = a[i + 1], u = b[i], v = b[i + 1];
    quad re, im;
    if (op == operation::mul) {
      re = x * u - y * v;
      im = u * y + x * v;
    } else {
      const quad den = u * u + v * v;
      re = (x * u + y * v) / den;
      im = (y * u - x * v) / den;
    }
    const double larger = std::max(std::fabs(static_cast<double>(re)), std::fabs(static_cast<double>(im)));
    const double smallest = sizeof(Real) == 8 ? 0x1p-1022 : 0x1p-126;
    const double largest = sizeof(Real) == 8 ? 0x1p1023 : 0x1p127;
    if (!std::isfinite(larger) || larger < smallest * 0x1p30 || larger > largest) continue;
    for (int k = 0; k < 2; ++k) {
      const quad part = k == 0 ? re : im;
      if (std::fabs(static_cast<double>(part)) < larger * 0x1p-30) continue;
      if (ulps(r[i + k], part) > 1.0) ++wrong;
    }
  }
  return wrong;
}

}  // namespace tav::test
