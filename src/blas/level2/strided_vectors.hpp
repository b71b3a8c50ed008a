// Strided vectors under the BLAS increment convention, and the beta step of level-2 updates.
// A BLAS vector (base, n, inc) holds element i at base + i·inc for inc > 0 and at
// base + (n - 1 - i)·|inc| for inc < 0; the level-2 code works from the address of element 0,
// where element i always lies at first + i·inc.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas {

// The address of element 0 of the BLAS vector (base, n, inc).
template <class T>
T* first_element(T* base, index n, index inc) {
  return inc < 0 && n > 0 ? base - (n - 1) * inc : base;
}

// The BLAS base of the sub-vector of `len` elements that starts at element `start`, given the
// address `first` of element 0 of the whole vector.
template <class T>
T* sub_vector(T* first, index start, index len, index inc) {
  return inc < 0 ? first + (start + len - 1) * inc : first + start * inc;
}

// y := beta·y over n elements from element 0 at `first`; beta = 0 writes zeros without reading
// y (so NaN in y does not survive), beta = 1 leaves y alone.
template <class T>
void scale_by_beta(index n, T beta, T* first, index inc) {
  if (beta == T(1)) return;
  if (beta == T(0)) {
    for (index i = 0; i < n; ++i) first[i * inc] = T(0);
  } else {
    for (index i = 0; i < n; ++i) first[i * inc] *= beta;
  }
}

// The first character of an option, in upper case.
inline char option(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace tav::blas
