// The internal level-2 entries that the GEMM entry reaches: every integer a 64-bit signed value
// by reference, characters by pointer (first character read, either case), scalars by pointer,
// complex data as std::complex (real part first). They check nothing.
#pragma once

#include <complex>
#include <cstdint>

extern "C" {

// y := alpha·op(A)·x + beta·y, op by trans 'N', 'T', 'C'; beta = 0 does not read y, alpha = 0
// reads neither A nor x; m = 0 or n = 0 returns at once.
void tav_blas_sgemv(const char* trans, const int64_t* m, const int64_t* n, const float* alpha,
                    const float* a, const int64_t* lda, const float* x, const int64_t* incx,
                    const float* beta, float* y, const int64_t* incy);
void tav_blas_dgemv(const char* trans, const int64_t* m, const int64_t* n, const double* alpha,
                    const double* a, const int64_t* lda, const double* x, const int64_t* incx,
                    const double* beta, double* y, const int64_t* incy);
void tav_blas_cgemv(const char* trans, const int64_t* m, const int64_t* n,
                    const std::complex<float>* alpha, const std::complex<float>* a,
                    const int64_t* lda, const std::complex<float>* x, const int64_t* incx,
                    const std::complex<float>* beta, std::complex<float>* y, const int64_t* incy);
void tav_blas_zgemv(const char* trans, const int64_t* m, const int64_t* n,
                    const std::complex<double>* alpha, const std::complex<double>* a,
                    const int64_t* lda, const std::complex<double>* x, const int64_t* incx,
                    const std::complex<double>* beta, std::complex<double>* y, const int64_t* incy);

// C := beta·C + alpha·x·y^T over the m x n matrix C (GEMM with k = 1); beta = 0 does not read C,
// alpha = 0 reads neither x nor y; m = 0 or n = 0 returns at once.
void tav_blas_sgemmger(const int64_t* m, const int64_t* n, const float* alpha, const float* x,
                       const int64_t* incx, const float* y, const int64_t* incy, const float* beta,
                       float* c, const int64_t* ldc);
void tav_blas_dgemmger(const int64_t* m, const int64_t* n, const double* alpha, const double* x,
                       const int64_t* incx, const double* y, const int64_t* incy,
                       const double* beta, double* c, const int64_t* ldc);
void tav_blas_cgemmger(const int64_t* m, const int64_t* n, const std::complex<float>* alpha,
                       const std::complex<float>* x, const int64_t* incx,
                       const std::complex<float>* y, const int64_t* incy,
                       const std::complex<float>* beta, std::complex<float>* c, const int64_t* ldc);
void tav_blas_zgemmger(const int64_t* m, const int64_t* n, const std::complex<double>* alpha,
                       const std::complex<double>* x, const int64_t* incx,
                       const std::complex<double>* y, const int64_t* incy,
                       const std::complex<double>* beta, std::complex<double>* c,
                       const int64_t* ldc);

}  // extern "C"
