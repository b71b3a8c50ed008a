// How the interface layer sees the four element types: the C type of the public signatures, the
// form a CBLAS scalar arrives in, and the routine names that reports and verbose lines carry.
#pragma once

#include <tav/tav_types.h>

#include <complex>
#include <type_traits>

#include "common/scalar_traits.hpp"

namespace tav::blas::interface {

// The element type as the public C headers spell it: complex numbers are tav_complex8 and
// tav_complex16, which share the layout of std::complex (real part first).
template <class T>
struct c_type {
  using type = T;
};
template <>
struct c_type<std::complex<float>> {
  using type = tav_complex8;
};
template <>
struct c_type<std::complex<double>> {
  using type = tav_complex16;
};
template <class T>
using c_type_t = typename c_type<T>::type;

static_assert(sizeof(tav_complex8) == sizeof(std::complex<float>));
static_assert(sizeof(tav_complex16) == sizeof(std::complex<double>));

template <class T>
const T* elements(const c_type_t<T>* p) {
  return reinterpret_cast<const T*>(p);
}
template <class T>
T* elements(c_type_t<T>* p) {
  return reinterpret_cast<T*>(p);
}

// CBLAS takes a real alpha or beta by value and a complex one by address.
template <class T>
using cblas_scalar_t = std::conditional_t<is_complex_v<T>, const c_type_t<T>*, T>;

// The address of a CBLAS scalar, as the Fortran-style routines take it. A real scalar is the
// caller's by-value argument, so its address lives as long as the call.
template <class T>
const c_type_t<T>* scalar_address(const cblas_scalar_t<T>& scalar) {
  if constexpr (is_complex_v<T>) return scalar;
  else return &scalar;
}

template <class T>
struct routine_names;
template <>
struct routine_names<float> {
  static constexpr char letter = 'S';
  static constexpr const char* gemm = "SGEMM ";
  static constexpr const char* trsm = "STRSM ";
  static constexpr const char* cblas_gemm = "cblas_sgemm";
  static constexpr const char* cblas_trsm = "cblas_strsm";
};
template <>
struct routine_names<double> {
  static constexpr char letter = 'D';
  static constexpr const char* gemm = "DGEMM ";
  static constexpr const char* trsm = "DTRSM ";
  static constexpr const char* cblas_gemm = "cblas_dgemm";
  static constexpr const char* cblas_trsm = "cblas_dtrsm";
};
template <>
struct routine_names<std::complex<float>> {
  static constexpr char letter = 'C';
  static constexpr const char* gemm = "CGEMM ";
  static constexpr const char* trsm = "CTRSM ";
  static constexpr const char* cblas_gemm = "cblas_cgemm";
  static constexpr const char* cblas_trsm = "cblas_ctrsm";
};
template <>
struct routine_names<std::complex<double>> {
  static constexpr char letter = 'Z';
  static constexpr const char* gemm = "ZGEMM ";
  static constexpr const char* trsm = "ZTRSM ";
  static constexpr const char* cblas_gemm = "cblas_zgemm";
  static constexpr const char* cblas_trsm = "cblas_ztrsm";
};

}  // namespace tav::blas::interface
