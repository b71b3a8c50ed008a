// The dispatch slots of the per-path level-2 kernels, and the map from element type to them.
// Kernels take real pointers (complex data as interleaved re, im), vectors by the address of
// element 0 with a signed increment, and never split work over threads.
#pragma once

#include <complex>

#include "common/scalar_traits.hpp"
#include "service/dispatch/dispatched.hpp"

namespace tav::blas {

// y := y + alpha·A·x over m x n.
template <class R>
using gemv_n_fn = void(index m, index n, const R* alpha, const R* a, index lda, const R* x,
                       index incx, R* y, index incy);
// y := y + alpha·op(A)·x, op = A^T, or conj(A)^T when conj is non-zero.
template <class R>
using gemv_t_fn = void(index m, index n, const R* alpha, const R* a, index lda, const R* x,
                       index incx, R* y, index incy, int conj);
// A := beta·A + alpha·x·op(y)^T, op(y) = conj(y) when conj is non-zero; beta = 0 does not read A.
template <class R>
using rank1_fn = void(index m, index n, const R* alpha, const R* x, index incx, const R* y,
                      index incy, const R* beta, R* a, index lda, int conj);

TAV_DISPATCHED(blas, xsgemv_n, gemv_n_fn<float>);
TAV_DISPATCHED(blas, xdgemv_n, gemv_n_fn<double>);
TAV_DISPATCHED(blas, xcgemv_n, gemv_n_fn<float>);
TAV_DISPATCHED(blas, xzgemv_n, gemv_n_fn<double>);
TAV_DISPATCHED(blas, xsgemv_t, gemv_t_fn<float>);
TAV_DISPATCHED(blas, xdgemv_t, gemv_t_fn<double>);
TAV_DISPATCHED(blas, xcgemv_t, gemv_t_fn<float>);
TAV_DISPATCHED(blas, xzgemv_t, gemv_t_fn<double>);
TAV_DISPATCHED(blas, xsger, rank1_fn<float>);
TAV_DISPATCHED(blas, xdger, rank1_fn<double>);
TAV_DISPATCHED(blas, xcger, rank1_fn<float>);
TAV_DISPATCHED(blas, xzger, rank1_fn<double>);

template <class T>
struct level2_slots;

template <>
struct level2_slots<float> {
  static constexpr auto& gemv_n = xsgemv_n_dispatch;
  static constexpr auto& gemv_t = xsgemv_t_dispatch;
  static constexpr auto& rank1 = xsger_dispatch;
};

template <>
struct level2_slots<double> {
  static constexpr auto& gemv_n = xdgemv_n_dispatch;
  static constexpr auto& gemv_t = xdgemv_t_dispatch;
  static constexpr auto& rank1 = xdger_dispatch;
};

template <>
struct level2_slots<std::complex<float>> {
  static constexpr auto& gemv_n = xcgemv_n_dispatch;
  static constexpr auto& gemv_t = xcgemv_t_dispatch;
  static constexpr auto& rank1 = xcger_dispatch;
};

template <>
struct level2_slots<std::complex<double>> {
  static constexpr auto& gemv_n = xzgemv_n_dispatch;
  static constexpr auto& gemv_t = xzgemv_t_dispatch;
  static constexpr auto& rank1 = xzger_dispatch;
};

// The kernels' view of an element array: std::complex<R> is laid out as R[2].
template <class T>
const real_t<T>* reals(const T* p) {
  return reinterpret_cast<const real_t<T>*>(p);
}

template <class T>
real_t<T>* reals(T* p) {
  return reinterpret_cast<real_t<T>*>(p);
}

}  // namespace tav::blas
