// Dot products per code path: sum x_i·y_i, and sum conj(x_i)·y_i for complex data, with several
// independent accumulators and an order of additions fixed by n alone (never by alignment), so
// a part of a vector gives the same bits whichever thread or run computes it.
#include "blas/level1/kernels/level1_lanes.hpp"
#include "blas/level1/level1_kernel_types.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS::level1 {
namespace {

// Unit stride: eight register accumulators, twice the multiply-add latency at two loads per
// multiply-add, so that a late load does not stall the chain; combined pairwise as ((a0 + a4) + (a1
// + a5)) + ((a2 + a6) + (a3 + a7)), lanes in order, then the tail.
template <class Real>
Real dot_unit(index n, const Real* x, const Real* y) {
  using V = simd<Real>;
  using reg = typename V::reg;
  constexpr index w = V::width;
  reg a[8];
  for (reg& r : a) r = V::zero();
  index i = 0;
  for (; i + 8 * w <= n; i += 8 * w) {
    for (index k = 0; k < 8; ++k)
      a[k] = V::mul_add(V::load(x + i + k * w), V::load(y + i + k * w), a[k]);
  }
  for (index k = 0; i + w <= n; i += w, ++k)
    a[k] = V::mul_add(V::load(x + i), V::load(y + i), a[k]);
  for (index k = 0; k < 4; ++k) a[k] = V::add(a[k], a[k + 4]);
  Real even, odd;
  pair_sums<V>(V::add(V::add(a[0], a[1]), V::add(a[2], a[3])), even, odd);
  Real sum = even + odd;
  for (; i < n; ++i) sum += x[i] * y[i];
  return sum;
}

// Other strides: four scalar accumulators, element i into accumulator i mod 4. Out of line, so that
// the unit-stride path saves no registers.
template <class Real>
[[gnu::noinline]] Real dot_strided(index n, const Real* x, index incx, const Real* y, index incy) {
  const Real* x0 = first_element(x, n, incx, 1);
  const Real* y0 = first_element(y, n, incy, 1);
  Real s[4] = {0, 0, 0, 0};
  index i = 0;
  for (; i + 4 <= n; i += 4) {
    for (index k = 0; k < 4; ++k) s[k] += x0[(i + k) * incx] * y0[(i + k) * incy];
  }
  for (index k = 0; i < n; ++i, ++k) s[k] += x0[i * incx] * y0[i * incy];
  return (s[0] + s[1]) + (s[2] + s[3]);
}

template <class Real>
Real dot_real(index n, const Real* x, index incx, const Real* y, index incy) {
  if (incx == incy && incx < 0) incx = incy = -incx;
  return incx == 1 && incy == 1 ? dot_unit(n, x, y) : dot_strided(n, x, incx, y, incy);
}

// Complex products without per-element shuffling of x: p accumulates x·y lane by lane
// (xr·yr, xi·yi) and q accumulates x·swap(y) (xr·yi, xi·yr); then
//   x·y       = (sum xr·yr - sum xi·yi) + i·(sum xr·yi + sum xi·yr),
//   conj(x)·y = (sum xr·yr + sum xi·yi) + i·(sum xr·yi - sum xi·yr).
template <class V>
struct complex_products {
  typename V::reg p = V::zero(), q = V::zero();
  template <class Real>
  void add(const Real* x, const Real* y) {
    typename V::reg xv = V::load(x), yv = V::load(y);
    p = V::mul_add(xv, yv, p);
    q = V::mul_add(xv, V::swap_pairs(yv), q);
  }
  void add(const complex_products& other) {
    p = V::add(p, other.p);
    q = V::add(q, other.q);
  }
  // Adds the lane sums (even, odd) of p and q to pe, po, qe, qo.
  template <class Real>
  void fold(Real& pe, Real& po, Real& qe, Real& qo) const {
    Real e, o;
    pair_sums<V>(p, e, o);
    pe += e;
    po += o;
    pair_sums<V>(q, e, o);
    qe += e;
    qo += o;
  }
};

template <class Real, bool conjugate>
void dot_complex(Real* result, index n, const Real* x, index incx, const Real* y, index incy) {
  if (incx == incy && incx < 0) incx = incy = -incx;
  Real pe = 0, po = 0, qe = 0, qo = 0;
  complex_products<one_complex<Real>> one[2];
  if (incx == 1 && incy == 1) {
    using V = simd<Real>;
    constexpr index w = V::width;
    complex_products<V> a[4];
    const index m = 2 * n;  // reals
    index i = 0;
    for (; i + 4 * w <= m; i += 4 * w) {
      for (index k = 0; k < 4; ++k) a[k].add(x + i + k * w, y + i + k * w);
    }
    for (; i + w <= m; i += w) a[0].add(x + i, y + i);
    // (a0 + a1) + (a2 + a3)
    a[0].add(a[1]);
    a[2].add(a[3]);
    a[0].add(a[2]);
    a[0].fold(pe, po, qe, qo);
    for (; i < m; i += 2) one[0].add(x + i, y + i);
  } else {
    const Real* x0 = first_element(x, n, incx, 2);
    const Real* y0 = first_element(y, n, incy, 2);
    for (index i = 0; i < n; ++i) one[i & 1].add(x0 + 2 * i * incx, y0 + 2 * i * incy);
  }
  one[0].add(one[1]);
  one[0].fold(pe, po, qe, qo);
  result[0] = conjugate ? pe + po : pe - po;
  result[1] = conjugate ? qe - qo : qe + qo;
}

}  // namespace
}  // namespace tav::TAV_PATH_NS::level1

using namespace tav::TAV_PATH_NS::level1;

extern "C" {

tav::blas::dot_kernel<float> TAV_PATH_NAME(blas, xsdot);
tav::blas::dot_kernel<double> TAV_PATH_NAME(blas, xddot);
tav::blas::dot_kernel<float> TAV_PATH_NAME(blas, xcdotu);
tav::blas::dot_kernel<double> TAV_PATH_NAME(blas, xzdotu);
tav::blas::dot_kernel<float> TAV_PATH_NAME(blas, xcdotc);
tav::blas::dot_kernel<double> TAV_PATH_NAME(blas, xzdotc);

void TAV_PATH_NAME(blas, xsdot)(float* result, int64_t n, const float* x, int64_t incx,
                                const float* y, int64_t incy) {
  *result = dot_real(n, x, incx, y, incy);
}

void TAV_PATH_NAME(blas, xddot)(double* result, int64_t n, const double* x, int64_t incx,
                                const double* y, int64_t incy) {
  *result = dot_real(n, x, incx, y, incy);
}

void TAV_PATH_NAME(blas, xcdotu)(float* result, int64_t n, const float* x, int64_t incx,
                                 const float* y, int64_t incy) {
  dot_complex<float, false>(result, n, x, incx, y, incy);
}

void TAV_PATH_NAME(blas, xzdotu)(double* result, int64_t n, const double* x, int64_t incx,
                                 const double* y, int64_t incy) {
  dot_complex<double, false>(result, n, x, incx, y, incy);
}

void TAV_PATH_NAME(blas, xcdotc)(float* result, int64_t n, const float* x, int64_t incx,
                                 const float* y, int64_t incy) {
  dot_complex<float, true>(result, n, x, incx, y, incy);
}

void TAV_PATH_NAME(blas, xzdotc)(double* result, int64_t n, const double* x, int64_t incx,
                                 const double* y, int64_t incy) {
  dot_complex<double, true>(result, n, x, incx, y, incy);
}

}  // extern "C"
