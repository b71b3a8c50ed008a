// A view of an n-vector stored with an increment, indexed by element number whatever the sign
// of the increment, for the serial level-1 templates.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas {

// Element i at base[i·inc]; for inc < 0 the base is the last element in memory, so that
// element i lives at x + (n - 1 - i)·|inc| as BLAS stores it.
template <class T>
struct strided_vector {
  T* base;
  index inc;

  strided_vector(T* x, index n, index step) : base(step < 0 ? x - (n - 1) * step : x), inc(step) {}
  T& operator[](index i) const { return base[i * inc]; }
};

}  // namespace tav::blas
