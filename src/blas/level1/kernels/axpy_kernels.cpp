// y := alpha·x + y per code path, real and complex: unit stride in full registers, several in
// flight; other strides one element at a time (a complex element still in one register).
#include "blas/level1/kernels/level1_lanes.hpp"
#include "blas/level1/level1_kernel_types.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS::level1 {
namespace {

template <class Real>
void axpy_real(index n, Real alpha, const Real* x, index incx, Real* y, index incy) {
  // Both increments negative and equal: the same pairs (x_i, y_i) sit at the same offsets as
  // with the positive increment, so walk them forwards.
  if (incx == incy && incx < 0) incx = incy = -incx;
  if (incx == 1 && incy == 1) {
    using V = simd<Real>;
    constexpr index w = V::width;
    const typename V::reg a = V::broadcast(alpha);
    // Eight registers of each stream loaded before their stores: more misses in flight than
    // with four, a few per cent more bandwidth on long vectors (bench/RESULTS.md, "daxpy
    // unrolling").
    index i = 0;
    for (; i + 8 * w <= n; i += 8 * w) {
      typename V::reg v[8];
      for (index k = 0; k < 8; ++k) v[k] = V::mul_add(a, V::load(x + i + k * w), V::load(y + i + k * w));
      for (index k = 0; k < 8; ++k) V::store(y + i + k * w, v[k]);
    }
    for (; i + w <= n; i += w) V::store(y + i, V::mul_add(a, V::load(x + i), V::load(y + i)));
    for (; i < n; ++i) y[i] += alpha * x[i];
    return;
  }
  const Real* x0 = first_element(x, n, incx, 1);
  Real* y0 = first_element(y, n, incy, 1);
  for (index i = 0; i < n; ++i) y0[i * incy] += alpha * x0[i * incx];
}

// (ar + i·ai)·(xr + i·xi) = ar·(xr, xi) + (-ai, ai)·(xi, xr): two multiply-adds and one swap
// of the pair per register, for any number of complex elements in it.
template <class V>
struct complex_axpy_step {
  typename V::reg ar, ai;
  template <class Real>
  complex_axpy_step(const Real* alpha)
      : ar(V::broadcast(alpha[0])), ai(V::alternate(-alpha[1], alpha[1])) {}
  template <class Real>
  void operator()(const Real* x, Real* y) const {
    typename V::reg xv = V::load(x);
    V::store(y, V::mul_add(ai, V::swap_pairs(xv), V::mul_add(ar, xv, V::load(y))));
  }
};

template <class Real>
void axpy_complex(index n, const Real* alpha, const Real* x, index incx, Real* y, index incy) {
  if (incx == incy && incx < 0) incx = incy = -incx;
  const complex_axpy_step<one_complex<Real>> one(alpha);
  if (incx == 1 && incy == 1) {
    using V = simd<Real>;
    constexpr index w = V::width;
    const complex_axpy_step<V> step(alpha);
    const index m = 2 * n;  // reals
    index i = 0;
    for (; i + 4 * w <= m; i += 4 * w) {
      step(x + i, y + i);
      step(x + i + w, y + i + w);
      step(x + i + 2 * w, y + i + 2 * w);
      step(x + i + 3 * w, y + i + 3 * w);
    }
    for (; i + w <= m; i += w) step(x + i, y + i);
    for (; i < m; i += 2) one(x + i, y + i);
    return;
  }
  const Real* x0 = first_element(x, n, incx, 2);
  Real* y0 = first_element(y, n, incy, 2);
  for (index i = 0; i < n; ++i) one(x0 + 2 * i * incx, y0 + 2 * i * incy);
}

}  // namespace
}  // namespace tav::TAV_PATH_NS::level1

using namespace tav::TAV_PATH_NS::level1;

extern "C" {

tav::blas::axpy_kernel<float> TAV_PATH_NAME(blas, xsaxpy);
tav::blas::axpy_kernel<double> TAV_PATH_NAME(blas, xdaxpy);
tav::blas::axpy_kernel<float> TAV_PATH_NAME(blas, xcaxpy);
tav::blas::axpy_kernel<double> TAV_PATH_NAME(blas, xzaxpy);

void TAV_PATH_NAME(blas, xsaxpy)(int64_t n, const float* alpha, const float* x, int64_t incx,
                                 float* y, int64_t incy) {
  axpy_real(n, *alpha, x, incx, y, incy);
}

void TAV_PATH_NAME(blas, xdaxpy)(int64_t n, const double* alpha, const double* x, int64_t incx,
                                 double* y, int64_t incy) {
  axpy_real(n, *alpha, x, incx, y, incy);
}

void TAV_PATH_NAME(blas, xcaxpy)(int64_t n, const float* alpha, const float* x, int64_t incx,
                                 float* y, int64_t incy) {
  axpy_complex(n, alpha, x, incx, y, incy);
}

void TAV_PATH_NAME(blas, xzaxpy)(int64_t n, const double* alpha, const double* x, int64_t incx,
                                 double* y, int64_t incy) {
  axpy_complex(n, alpha, x, incx, y, incy);
}

}  // extern "C"
