// x := alpha·x per code path, for real x, complex x with complex alpha, and complex x with real
// alpha: unit stride in full registers, four in flight; other strides one element at a time.
#include "blas/level1/kernels/level1_lanes.hpp"
#include "blas/level1/level1_kernel_types.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS::level1 {
namespace {

// Scales m consecutive reals; an elementwise product, so IEEE rules hold (0·NaN is NaN).
template <class Real>
void scal_unit(index m, Real alpha, Real* x) {
  using V = simd<Real>;
  constexpr index w = V::width;
  const typename V::reg a = V::broadcast(alpha);
  index i = 0;
  for (; i + 4 * w <= m; i += 4 * w) {
    typename V::reg x0 = V::mul(a, V::load(x + i));
    typename V::reg x1 = V::mul(a, V::load(x + i + w));
    typename V::reg x2 = V::mul(a, V::load(x + i + 2 * w));
    typename V::reg x3 = V::mul(a, V::load(x + i + 3 * w));
    V::store(x + i, x0);
    V::store(x + i + w, x1);
    V::store(x + i + 2 * w, x2);
    V::store(x + i + 3 * w, x3);
  }
  for (; i + w <= m; i += w) V::store(x + i, V::mul(a, V::load(x + i)));
  for (; i < m; ++i) x[i] *= alpha;
}

// The set of elements does not depend on the sign of the increment, nor does the result (each
// element is scaled on its own), so a negative increment walks the same elements forwards.
// With incx = 0 element 0 is scaled n times, as the n-element loop says.
template <class Real>
void scal_real(index n, Real alpha, Real* x, index incx) {
  if (incx < 0) incx = -incx;
  if (incx == 1) {
    scal_unit(n, alpha, x);
    return;
  }
  for (index i = 0; i < n; ++i) x[i * incx] *= alpha;
}

// (ar + i·ai)·(xr + i·xi) = ar·(xr, xi) + (-ai, ai)·(xi, xr).
template <class V>
struct complex_scal_step {
  typename V::reg ar, ai;
  template <class Real>
  complex_scal_step(const Real* alpha)
      : ar(V::broadcast(alpha[0])), ai(V::alternate(-alpha[1], alpha[1])) {}
  template <class Real>
  void operator()(Real* x) const {
    typename V::reg xv = V::load(x);
    V::store(x, V::mul_add(ar, xv, V::mul(ai, V::swap_pairs(xv))));
  }
};

template <class Real>
void scal_complex(index n, const Real* alpha, Real* x, index incx) {
  if (incx < 0) incx = -incx;
  const complex_scal_step<one_complex<Real>> one(alpha);
  if (incx == 1) {
    using V = simd<Real>;
    constexpr index w = V::width;
    const complex_scal_step<V> step(alpha);
    const index m = 2 * n;  // reals
    index i = 0;
    for (; i + 4 * w <= m; i += 4 * w) {
      step(x + i);
      step(x + i + w);
      step(x + i + 2 * w);
      step(x + i + 3 * w);
    }
    for (; i + w <= m; i += w) step(x + i);
    for (; i < m; i += 2) one(x + i);
    return;
  }
  for (index i = 0; i < n; ++i) one(x + 2 * i * incx);
}

// Real alpha on complex x: both parts scaled, (alpha·xr, alpha·xi).
template <class Real>
void scal_complex_by_real(index n, Real alpha, Real* x, index incx) {
  if (incx < 0) incx = -incx;
  if (incx == 1) {
    scal_unit(2 * n, alpha, x);
    return;
  }
  using C = one_complex<Real>;
  const typename C::reg a = C::broadcast(alpha);
  for (index i = 0; i < n; ++i) C::store(x + 2 * i * incx, C::mul(a, C::load(x + 2 * i * incx)));
}

}  // namespace
}  // namespace tav::TAV_PATH_NS::level1

using namespace tav::TAV_PATH_NS::level1;

extern "C" {

tav::blas::scal_kernel<float> TAV_PATH_NAME(blas, xsscal);
tav::blas::scal_kernel<double> TAV_PATH_NAME(blas, xdscal);
tav::blas::scal_kernel<float> TAV_PATH_NAME(blas, xcscal);
tav::blas::scal_kernel<double> TAV_PATH_NAME(blas, xzscal);
tav::blas::scal_kernel<float> TAV_PATH_NAME(blas, xcsscal);
tav::blas::scal_kernel<double> TAV_PATH_NAME(blas, xzdscal);

void TAV_PATH_NAME(blas, xsscal)(int64_t n, const float* alpha, float* x, int64_t incx) {
  scal_real(n, *alpha, x, incx);
}

void TAV_PATH_NAME(blas, xdscal)(int64_t n, const double* alpha, double* x, int64_t incx) {
  scal_real(n, *alpha, x, incx);
}

void TAV_PATH_NAME(blas, xcscal)(int64_t n, const float* alpha, float* x, int64_t incx) {
  scal_complex(n, alpha, x, incx);
}

void TAV_PATH_NAME(blas, xzscal)(int64_t n, const double* alpha, double* x, int64_t incx) {
  scal_complex(n, alpha, x, incx);
}

void TAV_PATH_NAME(blas, xcsscal)(int64_t n, const float* alpha, float* x, int64_t incx) {
  scal_complex_by_real(n, *alpha, x, incx);
}

void TAV_PATH_NAME(blas, xzdscal)(int64_t n, const double* alpha, double* x, int64_t incx) {
  scal_complex_by_real(n, *alpha, x, incx);
}

}  // extern "C"
