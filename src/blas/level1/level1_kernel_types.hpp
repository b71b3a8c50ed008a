// Function types of the per-path level-1 kernels: plain C signatures over the real type, complex
// data as interleaved (re, im) pairs, so that the drivers and every path's objects agree on them.
#pragma once

#include <cstdint>

namespace tav::blas {

// y := alpha·x + y on n elements; alpha is one real or one (re, im) pair.
template <class Real>
using axpy_kernel = void(int64_t n, const Real* alpha, const Real* x, int64_t incx, Real* y,
                         int64_t incy);

// *result := sum x_i·y_i (or conj(x_i)·y_i); result is one real or one (re, im) pair.
template <class Real>
using dot_kernel = void(Real* result, int64_t n, const Real* x, int64_t incx, const Real* y,
                        int64_t incy);

// x := alpha·x on n elements; alpha is one real or one (re, im) pair.
template <class Real>
using scal_kernel = void(int64_t n, const Real* alpha, Real* x, int64_t incx);

}  // namespace tav::blas
