// The exported Fortran-style BLAS routines: one shim per routine and precision over the shared
// wrapper, each exported under its four names.
#include <tav/tav_blas.h>

#include "blas/interface/fortran_wrappers.hpp"
#include "common/exports.hpp"

using namespace tav::blas::interface;
using c8 = std::complex<float>;
using c16 = std::complex<double>;

TAV_EXPORT void SGEMM(const char* transa, const char* transb, const int* m, const int* n,
                      const int* k, const float* alpha, const float* a, const int* lda,
                      const float* b, const int* ldb, const float* beta, float* c, const int* ldc) {
  gemm_wrapper<float>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
TAV_EXPORT void DGEMM(const char* transa, const char* transb, const int* m, const int* n,
                      const int* k, const double* alpha, const double* a, const int* lda,
                      const double* b, const int* ldb, const double* beta, double* c,
                      const int* ldc) {
  gemm_wrapper<double>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
TAV_EXPORT void CGEMM(const char* transa, const char* transb, const int* m, const int* n,
                      const int* k, const tav_complex8* alpha, const tav_complex8* a,
                      const int* lda, const tav_complex8* b, const int* ldb,
                      const tav_complex8* beta, tav_complex8* c, const int* ldc) {
  gemm_wrapper<c8>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
TAV_EXPORT void ZGEMM(const char* transa, const char* transb, const int* m, const int* n,
                      const int* k, const tav_complex16* alpha, const tav_complex16* a,
                      const int* lda, const tav_complex16* b, const int* ldb,
                      const tav_complex16* beta, tav_complex16* c, const int* ldc) {
  gemm_wrapper<c16>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

TAV_EXPORT void STRSM(const char* side, const char* uplo, const char* transa, const char* diag,
                      const int* m, const int* n, const float* alpha, const float* a,
                      const int* lda, float* b, const int* ldb) {
  trsm_wrapper<float>(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
TAV_EXPORT void DTRSM(const char* side, const char* uplo, const char* transa, const char* diag,
                      const int* m, const int* n, const double* alpha, const double* a,
                      const int* lda, double* b, const int* ldb) {
  trsm_wrapper<double>(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
TAV_EXPORT void CTRSM(const char* side, const char* uplo, const char* transa, const char* diag,
                      const int* m, const int* n, const tav_complex8* alpha, const tav_complex8* a,
                      const int* lda, tav_complex8* b, const int* ldb) {
  trsm_wrapper<c8>(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
TAV_EXPORT void ZTRSM(const char* side, const char* uplo, const char* transa, const char* diag,
                      const int* m, const int* n, const tav_complex16* alpha,
                      const tav_complex16* a, const int* lda, tav_complex16* b, const int* ldb) {
  trsm_wrapper<c16>(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}

TAV_EXPORT void SAXPY(const int* n, const float* alpha, const float* x, const int* incx, float* y,
                      const int* incy) {
  axpy_wrapper<float>(n, alpha, x, incx, y, incy);
}
TAV_EXPORT void DAXPY(const int* n, const double* alpha, const double* x, const int* incx,
                      double* y, const int* incy) {
  axpy_wrapper<double>(n, alpha, x, incx, y, incy);
}
TAV_EXPORT void CAXPY(const int* n, const tav_complex8* alpha, const tav_complex8* x,
                      const int* incx, tav_complex8* y, const int* incy) {
  axpy_wrapper<c8>(n, alpha, x, incx, y, incy);
}
TAV_EXPORT void ZAXPY(const int* n, const tav_complex16* alpha, const tav_complex16* x,
                      const int* incx, tav_complex16* y, const int* incy) {
  axpy_wrapper<c16>(n, alpha, x, incx, y, incy);
}

TAV_EXPORT float SDOT(const int* n, const float* x, const int* incx, const float* y,
                      const int* incy) {
  return dot_wrapper<float>(n, x, incx, y, incy);
}
TAV_EXPORT double DDOT(const int* n, const double* x, const int* incx, const double* y,
                       const int* incy) {
  return dot_wrapper<double>(n, x, incx, y, incy);
}

TAV_EXPORT void SSCAL(const int* n, const float* alpha, float* x, const int* incx) {
  scal_wrapper<float>(n, alpha, x, incx);
}
TAV_EXPORT void DSCAL(const int* n, const double* alpha, double* x, const int* incx) {
  scal_wrapper<double>(n, alpha, x, incx);
}
TAV_EXPORT void CSCAL(const int* n, const tav_complex8* alpha, tav_complex8* x, const int* incx) {
  scal_wrapper<c8>(n, alpha, x, incx);
}
TAV_EXPORT void ZSCAL(const int* n, const tav_complex16* alpha, tav_complex16* x,
                      const int* incx) {
  scal_wrapper<c16>(n, alpha, x, incx);
}

// The other three names of each routine.
TAV_EXPORT_ALIAS(sgemm, SGEMM);
TAV_EXPORT_ALIAS(sgemm_, SGEMM);
TAV_EXPORT_ALIAS(tav_blas__sgemm, SGEMM);
TAV_EXPORT_ALIAS(dgemm, DGEMM);
TAV_EXPORT_ALIAS(dgemm_, DGEMM);
TAV_EXPORT_ALIAS(tav_blas__dgemm, DGEMM);
TAV_EXPORT_ALIAS(cgemm, CGEMM);
TAV_EXPORT_ALIAS(cgemm_, CGEMM);
TAV_EXPORT_ALIAS(tav_blas__cgemm, CGEMM);
TAV_EXPORT_ALIAS(zgemm, ZGEMM);
TAV_EXPORT_ALIAS(zgemm_, ZGEMM);
TAV_EXPORT_ALIAS(tav_blas__zgemm, ZGEMM);
TAV_EXPORT_ALIAS(strsm, STRSM);
TAV_EXPORT_ALIAS(strsm_, STRSM);
TAV_EXPORT_ALIAS(tav_blas__strsm, STRSM);
TAV_EXPORT_ALIAS(dtrsm, DTRSM);
TAV_EXPORT_ALIAS(dtrsm_, DTRSM);
TAV_EXPORT_ALIAS(tav_blas__dtrsm, DTRSM);
TAV_EXPORT_ALIAS(ctrsm, CTRSM);
TAV_EXPORT_ALIAS(ctrsm_, CTRSM);
TAV_EXPORT_ALIAS(tav_blas__ctrsm, CTRSM);
TAV_EXPORT_ALIAS(ztrsm, ZTRSM);
TAV_EXPORT_ALIAS(ztrsm_, ZTRSM);
TAV_EXPORT_ALIAS(tav_blas__ztrsm, ZTRSM);
TAV_EXPORT_ALIAS(saxpy, SAXPY);
TAV_EXPORT_ALIAS(saxpy_, SAXPY);
TAV_EXPORT_ALIAS(tav_blas__saxpy, SAXPY);
TAV_EXPORT_ALIAS(daxpy, DAXPY);
TAV_EXPORT_ALIAS(daxpy_, DAXPY);
TAV_EXPORT_ALIAS(tav_blas__daxpy, DAXPY);
TAV_EXPORT_ALIAS(caxpy, CAXPY);
TAV_EXPORT_ALIAS(caxpy_, CAXPY);
TAV_EXPORT_ALIAS(tav_blas__caxpy, CAXPY);
TAV_EXPORT_ALIAS(zaxpy, ZAXPY);
TAV_EXPORT_ALIAS(zaxpy_, ZAXPY);
TAV_EXPORT_ALIAS(tav_blas__zaxpy, ZAXPY);
TAV_EXPORT_ALIAS(sdot, SDOT);
TAV_EXPORT_ALIAS(sdot_, SDOT);
TAV_EXPORT_ALIAS(tav_blas__sdot, SDOT);
TAV_EXPORT_ALIAS(ddot, DDOT);
TAV_EXPORT_ALIAS(ddot_, DDOT);
TAV_EXPORT_ALIAS(tav_blas__ddot, DDOT);
TAV_EXPORT_ALIAS(sscal, SSCAL);
TAV_EXPORT_ALIAS(sscal_, SSCAL);
TAV_EXPORT_ALIAS(tav_blas__sscal, SSCAL);
TAV_EXPORT_ALIAS(dscal, DSCAL);
TAV_EXPORT_ALIAS(dscal_, DSCAL);
TAV_EXPORT_ALIAS(tav_blas__dscal, DSCAL);
TAV_EXPORT_ALIAS(cscal, CSCAL);
TAV_EXPORT_ALIAS(cscal_, CSCAL);
TAV_EXPORT_ALIAS(tav_blas__cscal, CSCAL);
TAV_EXPORT_ALIAS(zscal, ZSCAL);
TAV_EXPORT_ALIAS(zscal_, ZSCAL);
TAV_EXPORT_ALIAS(tav_blas__zscal, ZSCAL);
