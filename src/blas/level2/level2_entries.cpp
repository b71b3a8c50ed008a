// The internal level-2 entries by precision letter: each forwards to its template.
#include "blas/level2/level2_entries.hpp"

#include "blas/blas_internal.hpp"
#include "blas/level2/rank1_update.hpp"

using tav::blas::gemv;
using tav::blas::rank1_update;

extern "C" {

void tav_blas_sgemv(const char* trans, const int64_t* m, const int64_t* n, const float* alpha,
                    const float* a, const int64_t* lda, const float* x, const int64_t* incx,
                    const float* beta, float* y, const int64_t* incy) {
  gemv(*trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

void tav_blas_dgemv(const char* trans, const int64_t* m, const int64_t* n, const double* alpha,
                    const double* a, const int64_t* lda, const double* x, const int64_t* incx,
                    const double* beta, double* y, const int64_t* incy) {
  gemv(*trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

void tav_blas_cgemv(const char* trans, const int64_t* m, const int64_t* n,
                    const std::complex<float>* alpha, const std::complex<float>* a,
                    const int64_t* lda, const std::complex<float>* x, const int64_t* incx,
                    const std::complex<float>* beta, std::complex<float>* y, const int64_t* incy) {
  gemv(*trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

void tav_blas_zgemv(const char* trans, const int64_t* m, const int64_t* n,
                    const std::complex<double>* alpha, const std::complex<double>* a,
                    const int64_t* lda, const std::complex<double>* x, const int64_t* incx,
                    const std::complex<double>* beta, std::complex<double>* y,
                    const int64_t* incy) {
  gemv(*trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

void tav_blas_sgemmger(const int64_t* m, const int64_t* n, const float* alpha, const float* x,
                       const int64_t* incx, const float* y, const int64_t* incy, const float* beta,
                       float* c, const int64_t* ldc) {
  rank1_update(false, *m, *n, *alpha, x, *incx, y, *incy, *beta, c, *ldc);
}

void tav_blas_dgemmger(const int64_t* m, const int64_t* n, const double* alpha, const double* x,
                       const int64_t* incx, const double* y, const int64_t* incy,
                       const double* beta, double* c, const int64_t* ldc) {
  rank1_update(false, *m, *n, *alpha, x, *incx, y, *incy, *beta, c, *ldc);
}

void tav_blas_cgemmger(const int64_t* m, const int64_t* n, const std::complex<float>* alpha,
                       const std::complex<float>* x, const int64_t* incx,
                       const std::complex<float>* y, const int64_t* incy,
                       const std::complex<float>* beta, std::complex<float>* c,
                       const int64_t* ldc) {
  rank1_update(false, *m, *n, *alpha, x, *incx, y, *incy, *beta, c, *ldc);
}

void tav_blas_zgemmger(const int64_t* m, const int64_t* n, const std::complex<double>* alpha,
                       const std::complex<double>* x, const int64_t* incx,
                       const std::complex<double>* y, const int64_t* incy,
                       const std::complex<double>* beta, std::complex<double>* c,
                       const int64_t* ldc) {
  rank1_update(false, *m, *n, *alpha, x, *incx, y, *incy, *beta, c, *ldc);
}

}  // extern "C"
