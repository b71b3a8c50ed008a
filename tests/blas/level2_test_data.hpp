// Shared pieces of the level-2 tests: the four element types, guarded operands filled from
// logical data, and the pass limit of the error ratio.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "code_paths.hpp"
#include "guarded_buffer.hpp"
#include "reference_level2.hpp"

namespace tav::test {

using level2_types = testing::Types<float, double, std::complex<float>, std::complex<double>>;

// Error ratios (reference_level2.hpp) at or above this fail.
constexpr long double ratio_limit = 30;

// Increments every vector operand is tried with.
inline const std::vector<int64_t> increments{1, 2, -1, -2};

template <class T>
T quiet_nan() {
  if constexpr (level2_ref::is_complex<T>) {
    using E = typename T::value_type;
    return T(std::numeric_limits<E>::quiet_NaN(), std::numeric_limits<E>::quiet_NaN());
  } else {
    return std::numeric_limits<T>::quiet_NaN();
  }
}

template <class T>
bool is_nan(const T& v) {
  if constexpr (level2_ref::is_complex<T>) return std::isnan(v.real()) || std::isnan(v.imag());
  else return std::isnan(v);
}

template <class T>
bool same_bits(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

// An m x n guarded matrix with leading dimension m + extra, random in its m x n part.
template <class T>
guarded_matrix<T> random_matrix(int64_t m, int64_t n, int64_t extra, std::mt19937_64& rng) {
  guarded_matrix<T> a(m, n, m + extra);
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i) a(i, j) = level2_ref::random_value<T>(rng);
  return a;
}

// The logical vector v laid out with increment inc inside guard bands.
template <class T>
guarded_vector<T> strided(const std::vector<T>& v, int64_t inc) {
  guarded_vector<T> g(static_cast<int64_t>(v.size()), inc);
  for (size_t i = 0; i < v.size(); ++i) g[static_cast<int64_t>(i)] = v[i];
  return g;
}

// The worst error ratio of a strided result against its reference, n elements.
template <class T>
long double worst_ratio(const guarded_vector<T>& got, const std::vector<level2_ref::value<T>>& want,
                        int64_t terms) {
  long double worst = 0;
  for (size_t i = 0; i < want.size(); ++i) {
    const long double r = level2_ref::error_ratio(got[static_cast<int64_t>(i)], want[i], terms);
    if (std::isnan(r)) return r;
    if (r > worst) worst = r;
  }
  return worst;
}

// The same over an m x n result, the reference stored column by column with leading dimension m;
// `skip(i, j)` leaves out elements that the routine does not own.
template <class T, class Skip>
long double worst_ratio(const guarded_matrix<T>& got, const std::vector<level2_ref::value<T>>& want,
                        int64_t terms, Skip skip) {
  long double worst = 0;
  for (int64_t j = 0; j < got.cols(); ++j)
    for (int64_t i = 0; i < got.rows(); ++i) {
      if (skip(i, j)) continue;
      const long double r =
          level2_ref::error_ratio(got(i, j), want[static_cast<size_t>(i + j * got.rows())], terms);
      if (std::isnan(r)) return r;
      if (r > worst) worst = r;
    }
  return worst;
}

template <class T>
long double worst_ratio(const guarded_matrix<T>& got, const std::vector<level2_ref::value<T>>& want,
                        int64_t terms) {
  return worst_ratio(got, want, terms, [](int64_t, int64_t) { return false; });
}

}  // namespace tav::test
