// The dispatch slots of the level-1 kernel families and, per element type, the slot of each
// operation and the routine name that warnings carry.
#pragma once

#include <complex>

#include "blas/level1/level1_kernel_types.hpp"
#include "common/scalar_traits.hpp"
#include "service/dispatch/dispatched.hpp"

namespace tav::blas {

TAV_DISPATCHED(blas, xsaxpy, axpy_kernel<float>);
TAV_DISPATCHED(blas, xdaxpy, axpy_kernel<double>);
TAV_DISPATCHED(blas, xcaxpy, axpy_kernel<float>);
TAV_DISPATCHED(blas, xzaxpy, axpy_kernel<double>);

TAV_DISPATCHED(blas, xsdot, dot_kernel<float>);
TAV_DISPATCHED(blas, xddot, dot_kernel<double>);
TAV_DISPATCHED(blas, xcdotu, dot_kernel<float>);
TAV_DISPATCHED(blas, xzdotu, dot_kernel<double>);
TAV_DISPATCHED(blas, xcdotc, dot_kernel<float>);
TAV_DISPATCHED(blas, xzdotc, dot_kernel<double>);

TAV_DISPATCHED(blas, xsscal, scal_kernel<float>);
TAV_DISPATCHED(blas, xdscal, scal_kernel<double>);
TAV_DISPATCHED(blas, xcscal, scal_kernel<float>);
TAV_DISPATCHED(blas, xzscal, scal_kernel<double>);
TAV_DISPATCHED(blas, xcsscal, scal_kernel<float>);
TAV_DISPATCHED(blas, xzdscal, scal_kernel<double>);

// axpy, dot (unconjugated), dotc and scal for each element type; scal_real, the real-alpha
// scaling of complex vectors, exists for the complex types only.
template <class T>
struct level1_slots;

template <>
struct level1_slots<float> {
  static constexpr auto& axpy = xsaxpy_dispatch;
  static constexpr auto& dot = xsdot_dispatch;
  static constexpr auto& scal = xsscal_dispatch;
  static constexpr const char* dot_name = "tav_blas_sdot";
};

template <>
struct level1_slots<double> {
  static constexpr auto& axpy = xdaxpy_dispatch;
  static constexpr auto& dot = xddot_dispatch;
  static constexpr auto& scal = xdscal_dispatch;
  static constexpr const char* dot_name = "tav_blas_ddot";
};

template <>
struct level1_slots<std::complex<float>> {
  static constexpr auto& axpy = xcaxpy_dispatch;
  static constexpr auto& dot = xcdotu_dispatch;
  static constexpr auto& dotc = xcdotc_dispatch;
  static constexpr auto& scal = xcscal_dispatch;
  static constexpr auto& scal_real = xcsscal_dispatch;
  static constexpr const char* dot_name = "tav_blas_cdotu";
  static constexpr const char* dotc_name = "tav_blas_cdotc";
};

template <>
struct level1_slots<std::complex<double>> {
  static constexpr auto& axpy = xzaxpy_dispatch;
  static constexpr auto& dot = xzdotu_dispatch;
  static constexpr auto& dotc = xzdotc_dispatch;
  static constexpr auto& scal = xzscal_dispatch;
  static constexpr auto& scal_real = xzdscal_dispatch;
  static constexpr const char* dot_name = "tav_blas_zdotu";
  static constexpr const char* dotc_name = "tav_blas_zdotc";
};

// The kernels see complex data as interleaved reals.
template <class T>
const real_t<T>* as_reals(const T* p) {
  return reinterpret_cast<const real_t<T>*>(p);
}
template <class T>
real_t<T>* as_reals(T* p) {
  return reinterpret_cast<real_t<T>*>(p);
}

}  // namespace tav::blas
