// The general matrix product after the entry's special shapes: the threading decision and the
// parallel drivers around the per-path serial kernel.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas {

// The thirteen arguments of a product, integers by value.
template <class T>
struct gemm_call {
  const char* transa;
  const char* transb;
  index m, n, k;
  const T* alpha;
  const T* a;
  index lda;
  const T* b;
  index ldb;
  const T* beta;
  T* c;
  index ldc;
};

// C := alpha·op(A)·op(B) + beta·C by the stripes route, the version-1 driver or the version-2
// thread count and driver; m, n >= 1. Inside an outer parallel region it runs on one thread.
template <class T>
void gemm_general(const gemm_call<T>& g);

}  // namespace tav::blas
