/* The Fortran-style BLAS routines (every argument by address, 32-bit integers, options as the
   first character of a string), each under four names: upper case, lower case, lower case with
   a trailing underscore, and the tav_blas__ form. */
#ifndef TAV_BLAS_H
#define TAV_BLAS_H

#include <tav/tav_export.h>
#include <tav/tav_types.h>

TAV_BEGIN_DECLS

/* C := alpha*op(A)*op(B) + beta*C */
typedef void tav_sgemm_routine(const char* transa, const char* transb, const int* m, const int* n,
                               const int* k, const float* alpha, const float* a, const int* lda,
                               const float* b, const int* ldb, const float* beta, float* c,
                               const int* ldc);
typedef void tav_dgemm_routine(const char* transa, const char* transb, const int* m, const int* n,
                               const int* k, const double* alpha, const double* a, const int* lda,
                               const double* b, const int* ldb, const double* beta, double* c,
                               const int* ldc);
typedef void tav_cgemm_routine(const char* transa, const char* transb, const int* m, const int* n,
                               const int* k, const tav_complex8* alpha, const tav_complex8* a,
                               const int* lda, const tav_complex8* b, const int* ldb,
                               const tav_complex8* beta, tav_complex8* c, const int* ldc);
typedef void tav_zgemm_routine(const char* transa, const char* transb, const int* m, const int* n,
                               const int* k, const tav_complex16* alpha, const tav_complex16* a,
                               const int* lda, const tav_complex16* b, const int* ldb,
                               const tav_complex16* beta, tav_complex16* c, const int* ldc);
tav_sgemm_routine SGEMM, sgemm, sgemm_, tav_blas__sgemm;
tav_dgemm_routine DGEMM, dgemm, dgemm_, tav_blas__dgemm;
tav_cgemm_routine CGEMM, cgemm, cgemm_, tav_blas__cgemm;
tav_zgemm_routine ZGEMM, zgemm, zgemm_, tav_blas__zgemm;

/* B := alpha*op(A)^-1*B (side 'L') or alpha*B*op(A)^-1 (side 'R'), A triangular */
typedef void tav_strsm_routine(const char* side, const char* uplo, const char* transa,
                               const char* diag, const int* m, const int* n, const float* alpha,
                               const float* a, const int* lda, float* b, const int* ldb);
typedef void tav_dtrsm_routine(const char* side, const char* uplo, const char* transa,
                               const char* diag, const int* m, const int* n, const double* alpha,
                               const double* a, const int* lda, double* b, const int* ldb);
typedef void tav_ctrsm_routine(const char* side, const char* uplo, const char* transa,
                               const char* diag, const int* m, const int* n,
                               const tav_complex8* alpha, const tav_complex8* a, const int* lda,
                               tav_complex8* b, const int* ldb);
typedef void tav_ztrsm_routine(const char* side, const char* uplo, const char* transa,
                               const char* diag, const int* m, const int* n,
                               const tav_complex16* alpha, const tav_complex16* a, const int* lda,
                               tav_complex16* b, const int* ldb);
tav_strsm_routine STRSM, strsm, strsm_, tav_blas__strsm;
tav_dtrsm_routine DTRSM, dtrsm, dtrsm_, tav_blas__dtrsm;
tav_ctrsm_routine CTRSM, ctrsm, ctrsm_, tav_blas__ctrsm;
tav_ztrsm_routine ZTRSM, ztrsm, ztrsm_, tav_blas__ztrsm;

/* y := alpha*x + y */
typedef void tav_saxpy_routine(const int* n, const float* alpha, const float* x, const int* incx,
                               float* y, const int* incy);
typedef void tav_daxpy_routine(const int* n, const double* alpha, const double* x,
                               const int* incx, double* y, const int* incy);
typedef void tav_caxpy_routine(const int* n, const tav_complex8* alpha, const tav_complex8* x,
                               const int* incx, tav_complex8* y, const int* incy);
typedef void tav_zaxpy_routine(const int* n, const tav_complex16* alpha, const tav_complex16* x,
                               const int* incx, tav_complex16* y, const int* incy);
tav_saxpy_routine SAXPY, saxpy, saxpy_, tav_blas__saxpy;
tav_daxpy_routine DAXPY, daxpy, daxpy_, tav_blas__daxpy;
tav_caxpy_routine CAXPY, caxpy, caxpy_, tav_blas__caxpy;
tav_zaxpy_routine ZAXPY, zaxpy, zaxpy_, tav_blas__zaxpy;

/* sum x_i*y_i */
typedef float tav_sdot_routine(const int* n, const float* x, const int* incx, const float* y,
                               const int* incy);
typedef double tav_ddot_routine(const int* n, const double* x, const int* incx, const double* y,
                                const int* incy);
tav_sdot_routine SDOT, sdot, sdot_, tav_blas__sdot;
tav_ddot_routine DDOT, ddot, ddot_, tav_blas__ddot;

/* x := alpha*x */
typedef void tav_sscal_routine(const int* n, const float* alpha, float* x, const int* incx);
typedef void tav_dscal_routine(const int* n, const double* alpha, double* x, const int* incx);
typedef void tav_cscal_routine(const int* n, const tav_complex8* alpha, tav_complex8* x,
                               const int* incx);
typedef void tav_zscal_routine(const int* n, const tav_complex16* alpha, tav_complex16* x,
                               const int* incx);
tav_sscal_routine SSCAL, sscal, sscal_, tav_blas__sscal;
tav_dscal_routine DSCAL, dscal, dscal_, tav_blas__dscal;
tav_cscal_routine CSCAL, cscal, cscal_, tav_blas__cscal;
tav_zscal_routine ZSCAL, zscal, zscal_, tav_blas__zscal;

/* 1 when the first characters of ca and cb are equal ignoring ASCII case, 0 otherwise or when
   either is null */
typedef int tav_lsame_routine(const char* ca, const char* cb);
tav_lsame_routine LSAME, lsame, lsame_, tav_lapack__lsame_;

TAV_END_DECLS

#endif
