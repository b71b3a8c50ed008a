// The internal routine that each wrapper calls, by element type: the only place where the
// precision letter picks a tav_blas_ entry.
#pragma once

#include <complex>

#include "blas/level1/level1_entries.hpp"
#include "blas/level3/gemm_entries.hpp"
#include "blas/level3/trsm_entries.hpp"

namespace tav::blas::interface {

template <class T>
struct internal_entries;

template <>
struct internal_entries<float> {
  static constexpr auto gemm = tav_blas_sgemm;
  static constexpr auto trsm = tav_blas_strsm;
  static constexpr auto axpy = tav_blas_saxpy;
  static constexpr auto dot = tav_blas_sdot;
  static constexpr auto scal = tav_blas_sscal;
};

template <>
struct internal_entries<double> {
  static constexpr auto gemm = tav_blas_dgemm;
  static constexpr auto trsm = tav_blas_dtrsm;
  static constexpr auto axpy = tav_blas_daxpy;
  static constexpr auto dot = tav_blas_ddot;
  static constexpr auto scal = tav_blas_dscal;
};

// The complex dot product returns through its first argument.
template <>
struct internal_entries<std::complex<float>> {
  static constexpr auto gemm = tav_blas_cgemm;
  static constexpr auto trsm = tav_blas_ctrsm;
  static constexpr auto axpy = tav_blas_caxpy;
  static constexpr auto dotu = tav_blas_cdotu;
  static constexpr auto scal = tav_blas_cscal;
};

template <>
struct internal_entries<std::complex<double>> {
  static constexpr auto gemm = tav_blas_zgemm;
  static constexpr auto trsm = tav_blas_ztrsm;
  static constexpr auto axpy = tav_blas_zaxpy;
  static constexpr auto dotu = tav_blas_zdotu;
  static constexpr auto scal = tav_blas_zscal;
};

}  // namespace tav::blas::interface
