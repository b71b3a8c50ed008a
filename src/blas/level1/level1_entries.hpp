// The internal level-1 entries that the call interfaces reach, every integer a 64-bit signed
// value by reference, alpha by reference, complex data as std::complex (real part first); they
// check nothing, the templates of blas_internal.hpp behind them take the quick returns.
#pragma once

#include <complex>
#include <cstdint>

extern "C" {

// y := alpha·x + y; alpha == 0 (not NaN) returns without touching y.
void tav_blas_saxpy(const int64_t* n, const float* alpha, const float* x, const int64_t* incx,
                    float* y, const int64_t* incy);
void tav_blas_daxpy(const int64_t* n, const double* alpha, const double* x, const int64_t* incx,
                    double* y, const int64_t* incy);
void tav_blas_caxpy(const int64_t* n, const std::complex<float>* alpha,
                    const std::complex<float>* x, const int64_t* incx, std::complex<float>* y,
                    const int64_t* incy);
void tav_blas_zaxpy(const int64_t* n, const std::complex<double>* alpha,
                    const std::complex<double>* x, const int64_t* incx, std::complex<double>* y,
                    const int64_t* incy);

// sum x_i·y_i, 0 for n < 1; the complex forms write the unconjugated sum through `result`.
float tav_blas_sdot(const int64_t* n, const float* x, const int64_t* incx, const float* y,
                    const int64_t* incy);
double tav_blas_ddot(const int64_t* n, const double* x, const int64_t* incx, const double* y,
                     const int64_t* incy);
void tav_blas_cdotu(std::complex<float>* result, const int64_t* n, const std::complex<float>* x,
                    const int64_t* incx, const std::complex<float>* y, const int64_t* incy);
void tav_blas_zdotu(std::complex<double>* result, const int64_t* n,
                    const std::complex<double>* x, const int64_t* incx,
                    const std::complex<double>* y, const int64_t* incy);

// x := alpha·x; csscal and zdscal take a real alpha.
void tav_blas_sscal(const int64_t* n, const float* alpha, float* x, const int64_t* incx);
void tav_blas_dscal(const int64_t* n, const double* alpha, double* x, const int64_t* incx);
void tav_blas_cscal(const int64_t* n, const std::complex<float>* alpha, std::complex<float>* x,
                    const int64_t* incx);
void tav_blas_zscal(const int64_t* n, const std::complex<double>* alpha,
                    std::complex<double>* x, const int64_t* incx);
void tav_blas_csscal(const int64_t* n, const float* alpha, std::complex<float>* x,
                     const int64_t* incx);
void tav_blas_zdscal(const int64_t* n, const double* alpha, std::complex<double>* x,
                     const int64_t* incx);

}  // extern "C"
