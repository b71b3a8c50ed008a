/* The C interface of the BLAS routines: scalars by value (complex ones by address), 32-bit
   integers, and the layout and option codes below passed as int. */
#ifndef TAV_CBLAS_H
#define TAV_CBLAS_H

#include <tav/tav_export.h>
#include <tav/tav_types.h>

TAV_BEGIN_DECLS

/* Layout, transpose, triangle, diagonal and side codes. */
enum {
  TAV_CBLAS_ROW_MAJOR = 101,
  TAV_CBLAS_COL_MAJOR = 102,
  TAV_CBLAS_NO_TRANS = 111,
  TAV_CBLAS_TRANS = 112,
  TAV_CBLAS_CONJ_TRANS = 113,
  TAV_CBLAS_UPPER = 121,
  TAV_CBLAS_LOWER = 122,
  TAV_CBLAS_NON_UNIT = 131,
  TAV_CBLAS_UNIT = 132,
  TAV_CBLAS_LEFT = 141,
  TAV_CBLAS_RIGHT = 142
};

/* C := alpha*op(A)*op(B) + beta*C */
void cblas_sgemm(int layout, int transa, int transb, int m, int n, int k, float alpha,
                 const float* a, int lda, const float* b, int ldb, float beta, float* c, int ldc);
void cblas_dgemm(int layout, int transa, int transb, int m, int n, int k, double alpha,
                 const double* a, int lda, const double* b, int ldb, double beta, double* c,
                 int ldc);
void cblas_cgemm(int layout, int transa, int transb, int m, int n, int k,
                 const tav_complex8* alpha, const tav_complex8* a, int lda, const tav_complex8* b,
                 int ldb, const tav_complex8* beta, tav_complex8* c, int ldc);
void cblas_zgemm(int layout, int transa, int transb, int m, int n, int k,
                 const tav_complex16* alpha, const tav_complex16* a, int lda,
                 const tav_complex16* b, int ldb, const tav_complex16* beta, tav_complex16* c,
                 int ldc);

/* B := alpha*op(A)^-1*B (side left) or alpha*B*op(A)^-1 (side right), A triangular */
void cblas_strsm(int layout, int side, int uplo, int transa, int diag, int m, int n, float alpha,
                 const float* a, int lda, float* b, int ldb);
void cblas_dtrsm(int layout, int side, int uplo, int transa, int diag, int m, int n, double alpha,
                 const double* a, int lda, double* b, int ldb);
void cblas_ctrsm(int layout, int side, int uplo, int transa, int diag, int m, int n,
                 const tav_complex8* alpha, const tav_complex8* a, int lda, tav_complex8* b,
                 int ldb);
void cblas_ztrsm(int layout, int side, int uplo, int transa, int diag, int m, int n,
                 const tav_complex16* alpha, const tav_complex16* a, int lda, tav_complex16* b,
                 int ldb);

/* y := alpha*x + y */
void cblas_saxpy(int n, float alpha, const float* x, int incx, float* y, int incy);
void cblas_daxpy(int n, double alpha, const double* x, int incx, double* y, int incy);
void cblas_caxpy(int n, const tav_complex8* alpha, const tav_complex8* x, int incx,
                 tav_complex8* y, int incy);
void cblas_zaxpy(int n, const tav_complex16* alpha, const tav_complex16* x, int incx,
                 tav_complex16* y, int incy);

/* sum x_i*y_i, unconjugated; the complex forms store it through `result` */
float cblas_sdot(int n, const float* x, int incx, const float* y, int incy);
double cblas_ddot(int n, const double* x, int incx, const double* y, int incy);
void cblas_cdotu_sub(int n, const tav_complex8* x, int incx, const tav_complex8* y, int incy,
                     tav_complex8* result);
void cblas_zdotu_sub(int n, const tav_complex16* x, int incx, const tav_complex16* y, int incy,
                     tav_complex16* result);

/* x := alpha*x */
void cblas_sscal(int n, float alpha, float* x, int incx);
void cblas_dscal(int n, double alpha, double* x, int incx);
void cblas_cscal(int n, const tav_complex8* alpha, tav_complex8* x, int incx);
void cblas_zscal(int n, const tav_complex16* alpha, tav_complex16* x, int incx);

TAV_END_DECLS

#endif
