// The four element types as the copy kernels see them, and the element operation one call
// applies: y = x, y = conj(x), y = alpha·x or y = alpha·conj(x).
#pragma once

#include <tav/tav_types.h>

#include <cstdint>

// Each complex product is rounded as two real products and one sum, never fused, so that every
// code path writes the same bits as the others and as a plain reference.
#pragma STDC FP_CONTRACT OFF

namespace tav::TAV_PATH_NS::omatcopy {

using index = int64_t;

template <class T>
struct element;

template <>
struct element<float> {
  using real = float;
  static constexpr bool is_complex = false;
};
template <>
struct element<double> {
  using real = double;
  static constexpr bool is_complex = false;
};
template <>
struct element<tav_complex8> {
  using real = float;
  static constexpr bool is_complex = true;
};
template <>
struct element<tav_complex16> {
  using real = double;
  static constexpr bool is_complex = true;
};

// Elements per 64-byte cache line: the granule on which the transpose cuts its blocks.
template <class T>
inline constexpr index line_elements = 64 / static_cast<index>(sizeof(T));

// alpha == 1 exactly (1 + 0i for the complex types); false for NaN.
template <class T>
bool is_one(T alpha) {
  if constexpr (element<T>::is_complex)
    return alpha.real == 1 && alpha.imag == 0;
  else
    return alpha == 1;
}

// The operation on one element. Conj negates the imaginary part (a sign flip, exact for every
// value, NaN included); Scale multiplies by alpha afterwards. The pure forms (Scale false) move
// bit patterns and never round.
template <class T, bool Conj, bool Scale>
struct element_op {
  static constexpr bool conj = Conj;
  static constexpr bool scale = Scale;
  T alpha;

  T operator()(T x) const {
    if constexpr (element<T>::is_complex) {
      if constexpr (Conj) x.imag = -x.imag;
      if constexpr (Scale) {
        // (ar + i·ai)(xr + i·xi) = (ar·xr - ai·xi) + i·(ar·xi + ai·xr)
        const auto re = alpha.real * x.real - alpha.imag * x.imag;
        const auto im = alpha.real * x.imag + alpha.imag * x.real;
        x.real = re;
        x.imag = im;
      }
      return x;
    } else {
      if constexpr (Scale)
        return alpha * x;
      else
        return x;
    }
  }
};

// Calls body(op) with the element operation that (alpha, conj) selects: the pure form when alpha
// is exactly 1, the scaling form for any other alpha, NaN included. Conjugation exists only for
// the complex types.
template <class T, class Body>
void with_element_op(T alpha, bool conj, Body&& body) {
  const bool pure = is_one(alpha);
  if constexpr (element<T>::is_complex) {
    if (conj) {
      if (pure)
        body(element_op<T, true, false>{alpha});
      else
        body(element_op<T, true, true>{alpha});
      return;
    }
  }
  if (pure)
    body(element_op<T, false, false>{alpha});
  else
    body(element_op<T, false, true>{alpha});
}

}  // namespace tav::TAV_PATH_NS::omatcopy
