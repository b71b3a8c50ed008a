// The internal BLAS: one template per operation over float, double, std::complex<float> and
// std::complex<double>, with 64-bit sizes. LAPACK drivers, the interface layer and the provider
// call these; nothing here checks arguments. Characters are read case-insensitively ('N', 'T',
// 'C', 'U', 'L', 'R'). Negative increments follow the BLAS convention: element i of an n-vector
// with increment inc < 0 lives at x + (n - 1 - i)·|inc|.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas {

// ---- level 1 -------------------------------------------------------------------------------
// y := alpha·x + y; alpha == 0 (not NaN) leaves y untouched.
template <class T> void axpy(index n, T alpha, const T* x, index incx, T* y, index incy);
// sum x_i·y_i (unconjugated); 0 for n < 1. Reduction order fixed for any thread count.
template <class T> T dot(index n, const T* x, index incx, const T* y, index incy);
// sum conj(x_i)·y_i.
template <class T> T dotc(index n, const T* x, index incx, const T* y, index incy);
// x := alpha·x, and the real-alpha form for the complex types (csscal, zdscal).
template <class T> void scal(index n, T alpha, T* x, index incx);
template <class T> void scal_real(index n, real_t<T> alpha, T* x, index incx);
template <class T> void copy(index n, const T* x, index incx, T* y, index incy);
template <class T> void swap(index n, T* x, index incx, T* y, index incy);
// Euclidean norm without overflow or underflow in intermediate squares.
template <class T> real_t<T> nrm2(index n, const T* x, index incx);
// 1-based index of the first element of largest |re| + |im| (abs for real); 0 for n < 1.
template <class T> index iamax(index n, const T* x, index incx);
// sum |re| + |im|.
template <class T> real_t<T> asum(index n, const T* x, index incx);
// Plane rotation (x, y) := (c·x + s·y, c·y - conj(s)·x); S is real_t<T> or T.
template <class T, class S> void rot(index n, T* x, index incx, T* y, index incy, real_t<T> c, S s);

// ---- level 2 -------------------------------------------------------------------------------
// y := alpha·op(A)·x + beta·y, op by trans 'N', 'T', 'C'; beta == 0 does not read y.
template <class T>
void gemv(char trans, index m, index n, T alpha, const T* a, index lda, const T* x, index incx,
          T beta, T* y, index incy);
// A := alpha·x·y^T + A (ger, geru) and A := alpha·x·y^H + A (gerc).
template <class T>
void ger(index m, index n, T alpha, const T* x, index incx, const T* y, index incy, T* a, index lda);
template <class T>
void gerc(index m, index n, T alpha, const T* x, index incx, const T* y, index incy, T* a, index lda);
// y := alpha·A·x + beta·y with A symmetric (symv) or Hermitian (hemv), one triangle referenced.
template <class T>
void symv(char uplo, index n, T alpha, const T* a, index lda, const T* x, index incx, T beta, T* y,
          index incy);
template <class T>
void hemv(char uplo, index n, T alpha, const T* a, index lda, const T* x, index incx, T beta, T* y,
          index incy);
// A := alpha·x·y^T + alpha·y·x^T + A (syr2); A := alpha·x·y^H + conj(alpha)·y·x^H + A (her2).
template <class T>
void syr2(char uplo, index n, T alpha, const T* x, index incx, const T* y, index incy, T* a, index lda);
template <class T>
void her2(char uplo, index n, T alpha, const T* x, index incx, const T* y, index incy, T* a, index lda);
// x := op(A)·x and x := op(A)^-1·x with A triangular; diag 'U' means unit diagonal, not read.
template <class T>
void trmv(char uplo, char trans, char diag, index n, const T* a, index lda, T* x, index incx);
template <class T>
void trsv(char uplo, char trans, char diag, index n, const T* a, index lda, T* x, index incx);
// Row interchanges k1..k2 (1-based) of the n columns of A, ipiv 1-based with increment incx.
template <class T>
void laswp(index n, T* a, index lda, index k1, index k2, const index* ipiv, index incx);

// ---- level 3 -------------------------------------------------------------------------------
// C := alpha·op(A)·op(B) + beta·C; beta == 0 does not read C, alpha == 0 does not read A or B.
template <class T>
void gemm(char transa, char transb, index m, index n, index k, T alpha, const T* a, index lda,
          const T* b, index ldb, T beta, T* c, index ldc);
// B := alpha·op(A)^-1·B (side 'L') or alpha·B·op(A)^-1 (side 'R'); alpha == 0 zeroes B unread A.
template <class T>
void trsm(char side, char uplo, char transa, char diag, index m, index n, T alpha, const T* a,
          index lda, T* b, index ldb);
// B := alpha·op(A)·B or alpha·B·op(A).
template <class T>
void trmm(char side, char uplo, char transa, char diag, index m, index n, T alpha, const T* a,
          index lda, T* b, index ldb);
// C := alpha·A·A^T + beta·C (trans 'N') or alpha·A^T·A + beta·C, one triangle of C.
template <class T>
void syrk(char uplo, char trans, index n, index k, T alpha, const T* a, index lda, T beta, T* c,
          index ldc);
// C := alpha·A·A^H + beta·C or alpha·A^H·A + beta·C with real alpha, beta (complex types only).
template <class T>
void herk(char uplo, char trans, index n, index k, real_t<T> alpha, const T* a, index lda,
          real_t<T> beta, T* c, index ldc);
// C := alpha·A·B^T + alpha·B·A^T + beta·C (syr2k); alpha·A·B^H + conj(alpha)·B·A^H + beta·C (her2k).
template <class T>
void syr2k(char uplo, char trans, index n, index k, T alpha, const T* a, index lda, const T* b,
           index ldb, T beta, T* c, index ldc);
template <class T>
void her2k(char uplo, char trans, index n, index k, T alpha, const T* a, index lda, const T* b,
           index ldb, real_t<T> beta, T* c, index ldc);

}  // namespace tav::blas
