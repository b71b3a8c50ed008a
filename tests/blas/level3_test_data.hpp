// Seeded inputs for the level-3 tests (random matrices, well-conditioned triangles with NaN where
// nothing may be read) and the element-type switch that lets one parameterised test cover the
// four types.
#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "guarded_buffer.hpp"

namespace tav::test {

enum class element { s, d, c, z };

inline std::string element_name(element e) {
  static const char* const names[] = {"float", "double", "complex_float", "complex_double"};
  return names[static_cast<int>(e)];
}

// How GoogleTest prints the type in a failing parameter.
inline void PrintTo(element e, std::ostream* os) { *os << element_name(e); }

// Calls body(T{}) with T the element type that `e` names.
template <class Body>
void with_element_type(element e, Body body) {
  if (e == element::s) body(float{});
  else if (e == element::d) body(double{});
  else if (e == element::c) body(std::complex<float>{});
  else body(std::complex<double>{});
}

inline auto all_elements() {
  return testing::Values(element::s, element::d, element::c, element::z);
}

template <class T>
T nan_element() {
  if constexpr (std::is_floating_point_v<T>) {
    return std::numeric_limits<T>::quiet_NaN();
  } else {
    using R = typename T::value_type;
    return T(std::numeric_limits<R>::quiet_NaN(), std::numeric_limits<R>::quiet_NaN());
  }
}

// Uniform in [-1, 1], both parts for the complex types.
template <class T>
T random_element(std::mt19937_64& g) {
  if constexpr (std::is_floating_point_v<T>) {
    return std::uniform_real_distribution<T>(-1, 1)(g);
  } else {
    using R = typename T::value_type;
    std::uniform_real_distribution<R> u(-1, 1);
    const R re = u(g);
    return T(re, u(g));
  }
}

// A scalar away from 0 and 1 with a nonzero imaginary part for the complex types.
template <class T>
T general_scalar() {
  if constexpr (std::is_floating_point_v<T>)
    return T(0.75);
  else
    return T(0.75, -0.5);
}

template <class T>
void fill_random(std::mt19937_64& g, int64_t m, int64_t n, T* a, int64_t ld) {
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < m; ++i) a[i + j * ld] = random_element<T>(g);
  }
}

template <class T>
void fill_random(std::mt19937_64& g, guarded_matrix<T>& a) {
  fill_random(g, a.rows(), a.cols(), a.data(), a.ld());
}

// The m x n elements of a guarded matrix, leading dimension m.
template <class T>
std::vector<T> contents(const guarded_matrix<T>& a) {
  std::vector<T> out(static_cast<size_t>(a.rows() * a.cols()));
  for (int64_t j = 0; j < a.cols(); ++j) {
    for (int64_t i = 0; i < a.rows(); ++i) out[static_cast<size_t>(i + j * a.rows())] = a(i, j);
  }
  return out;
}

// An order x order triangular matrix (leading dimension ld) that is well conditioned for either
// diag: off-diagonal entries of size at most 1/order, so the strict triangle has norm below 1,
// and a diagonal of modulus 2 to 3. Everything a triangular routine must not read holds NaN:
// the other triangle, the rows between order and ld, and the diagonal when diag is 'U'.
template <class T>
std::vector<T> triangular_matrix(std::mt19937_64& g, char uplo, char diag, int64_t order,
                                 int64_t ld) {
  std::vector<T> a(static_cast<size_t>(ld * (order > 0 ? order : 1)), nan_element<T>());
  const bool upper = (uplo & ~0x20) == 'U';
  const bool unit = (diag & ~0x20) == 'U';
  for (int64_t j = 0; j < order; ++j) {
    for (int64_t i = 0; i < order; ++i) {
      T& x = a[static_cast<size_t>(i + j * ld)];
      if (i == j) {
        if (!unit) x = T(2.5) + T(0.5) * random_element<T>(g);
      } else if (upper ? i < j : i > j) {
        x = random_element<T>(g) / T(static_cast<float>(order));
      }
    }
  }
  return a;
}

}  // namespace tav::test
