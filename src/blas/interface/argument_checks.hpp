// The argument checks of the Fortran-style and CBLAS matrix routines: each returns 0 when the
// arguments are acceptable, else the 1-based position of the first bad argument, testing the
// conditions in the order the reports promise.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas::interface {

// ?GEMM(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc).
int gemm_bad_argument(const char* transa, const char* transb, index m, index n, index k,
                      index lda, index ldb, index ldc);

// ?TRSM(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb).
int trsm_bad_argument(const char* side, const char* uplo, const char* transa, const char* diag,
                      index m, index n, index lda, index ldb);

// cblas_?gemm(layout, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc).
int cblas_gemm_bad_argument(int layout, int transa, int transb, int m, int n, int k, int lda,
                            int ldb, int ldc);

// cblas_?trsm(layout, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb).
int cblas_trsm_bad_argument(int layout, int side, int uplo, int transa, int diag, int m, int n,
                            int lda, int ldb);

}  // namespace tav::blas::interface
