// Element traits shared by every driver written once for float, double and the two complexes.
#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace tav {

using index = int64_t;

template <class T>
struct scalar_traits {
  using real = T;
  static constexpr bool is_complex = false;
};

template <class R>
struct scalar_traits<std::complex<R>> {
  using real = R;
  static constexpr bool is_complex = true;
};

template <class T>
using real_t = typename scalar_traits<T>::real;

template <class T>
inline constexpr bool is_complex_v = scalar_traits<T>::is_complex;

// Machine epsilon of the element's real type (the spacing of 1, as LAPACK's "precision" / 2).
template <class T>
inline constexpr real_t<T> eps_v = std::numeric_limits<real_t<T>>::epsilon() / 2;

// Smallest normalised value whose reciprocal does not overflow.
template <class T>
inline constexpr real_t<T> safe_min_v = std::numeric_limits<real_t<T>>::min();

template <class T>
constexpr T conj_if_complex(const T& x) {
  if constexpr (is_complex_v<T>) return std::conj(x);
  else return x;
}

// |re| + |im|: the cheap magnitude that BLAS uses to pick pivots and maxima.
template <class T>
real_t<T> abs1(const T& x) {
  if constexpr (is_complex_v<T>) return std::abs(x.real()) + std::abs(x.imag());
  else return std::abs(x);
}

template <class T>
constexpr real_t<T> real_part(const T& x) {
  if constexpr (is_complex_v<T>) return x.real();
  else return x;
}

}  // namespace tav
