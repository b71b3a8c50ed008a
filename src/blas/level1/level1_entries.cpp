// The internal level-1 entries: one-line shims over the templates of blas_internal.hpp.
#include "blas/level1/level1_entries.hpp"

#include "blas/blas_internal.hpp"

using tav::blas::axpy;
using tav::blas::dot;
using tav::blas::scal;
using tav::blas::scal_real;

void tav_blas_saxpy(const int64_t* n, const float* alpha, const float* x, const int64_t* incx,
                    float* y, const int64_t* incy) {
  axpy(*n, *alpha, x, *incx, y, *incy);
}

void tav_blas_daxpy(const int64_t* n, const double* alpha, const double* x, const int64_t* incx,
                    double* y, const int64_t* incy) {
  axpy(*n, *alpha, x, *incx, y, *incy);
}

void tav_blas_caxpy(const int64_t* n, const std::complex<float>* alpha,
                    const std::complex<float>* x, const int64_t* incx, std::complex<float>* y,
                    const int64_t* incy) {
  axpy(*n, *alpha, x, *incx, y, *incy);
}

void tav_blas_zaxpy(const int64_t* n, const std::complex<double>* alpha,
                    const std::complex<double>* x, const int64_t* incx, std::complex<double>* y,
                    const int64_t* incy) {
  axpy(*n, *alpha, x, *incx, y, *incy);
}

float tav_blas_sdot(const int64_t* n, const float* x, const int64_t* incx, const float* y,
                    const int64_t* incy) {
  return dot(*n, x, *incx, y, *incy);
}

double tav_blas_ddot(const int64_t* n, const double* x, const int64_t* incx, const double* y,
                     const int64_t* incy) {
  return dot(*n, x, *incx, y, *incy);
}

void tav_blas_cdotu(std::complex<float>* result, const int64_t* n, const std::complex<float>* x,
                    const int64_t* incx, const std::complex<float>* y, const int64_t* incy) {
  *result = dot(*n, x, *incx, y, *incy);
}

void tav_blas_zdotu(std::complex<double>* result, const int64_t* n,
                    const std::complex<double>* x, const int64_t* incx,
                    const std::complex<double>* y, const int64_t* incy) {
  *result = dot(*n, x, *incx, y, *incy);
}

void tav_blas_sscal(const int64_t* n, const float* alpha, float* x, const int64_t* incx) {
  scal(*n, *alpha, x, *incx);
}

void tav_blas_dscal(const int64_t* n, const double* alpha, double* x, const int64_t* incx) {
  scal(*n, *alpha, x, *incx);
}

void tav_blas_cscal(const int64_t* n, const std::complex<float>* alpha, std::complex<float>* x,
                    const int64_t* incx) {
  scal(*n, *alpha, x, *incx);
}

void tav_blas_zscal(const int64_t* n, const std::complex<double>* alpha,
                    std::complex<double>* x, const int64_t* incx) {
  scal(*n, *alpha, x, *incx);
}

void tav_blas_csscal(const int64_t* n, const float* alpha, std::complex<float>* x,
                     const int64_t* incx) {
  scal_real(*n, *alpha, x, *incx);
}

void tav_blas_zdscal(const int64_t* n, const double* alpha, std::complex<double>* x,
                     const int64_t* incx) {
  scal_real(*n, *alpha, x, *incx);
}
