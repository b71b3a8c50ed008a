// cblas_?gemm and cblas_?trsm: their own argument checks, reported through the library's CBLAS
// report, then the layout mapped onto the Fortran-style routine.
#include <tav/tav_cblas.h>

#include "blas/interface/fortran_wrappers.hpp"
#include "common/exports.hpp"
#include "service/messages/report.hpp"

namespace tav::blas::interface {
namespace {

const char* transpose_letter(int code) {
  return code == TAV_CBLAS_NO_TRANS ? "N" : code == TAV_CBLAS_TRANS ? "T" : "C";
}

// The report goes to the hidden entry, never to the exported cblas_xerbla: a program written
// for another CBLAS library may define that name with a signature of its own.
template <class T>
void cblas_gemm(int layout, int transa, int transb, int m, int n, int k, cblas_scalar_t<T> alpha,
                const c_type_t<T>* a, int lda, const c_type_t<T>* b, int ldb,
                cblas_scalar_t<T> beta, c_type_t<T>* c, int ldc) {
  if (const int bad = cblas_gemm_bad_argument(layout, transa, transb, m, n, k, lda, ldb, ldc)) {
    service::cblas_report(routine_names<T>::cblas_gemm, bad);
    return;
  }
  const char* ta = transpose_letter(transa);
  const char* tb = transpose_letter(transb);
  if (layout == TAV_CBLAS_COL_MAJOR) {
    gemm_wrapper<T, true>(ta, tb, &m, &n, &k, scalar_address<T>(alpha), a, &lda, b, &ldb,
                          scalar_address<T>(beta), c, &ldc);
  } else {
    // A row-major matrix is the column-major storage of its transpose: C^T = op(B)^T·op(A)^T.
    gemm_wrapper<T, true>(tb, ta, &n, &m, &k, scalar_address<T>(alpha), b, &ldb, a, &lda,
                          scalar_address<T>(beta), c, &ldc);
  }
}

template <class T>
void cblas_trsm(int layout, int side, int uplo, int transa, int diag, int m, int n,
                cblas_scalar_t<T> alpha, const c_type_t<T>* a, int lda, c_type_t<T>* b,
                int ldb) {
  if (const int bad = cblas_trsm_bad_argument(layout, side, uplo, transa, diag, m, n, lda, ldb)) {
    service::cblas_report(routine_names<T>::cblas_trsm, bad);
    return;
  }
  const bool left = side == TAV_CBLAS_LEFT, upper = uplo == TAV_CBLAS_UPPER;
  const char* ta = transpose_letter(transa);
  const char* unit = diag == TAV_CBLAS_UNIT ? "U" : "N";
  if (layout == TAV_CBLAS_COL_MAJOR) {
    trsm_wrapper<T>(left ? "L" : "R", upper ? "U" : "L", ta, unit, &m, &n,
                    scalar_address<T>(alpha), a, &lda, b, &ldb);
  } else {
    // Stored column-major, B is its n x m transpose and A its transpose: op(A)·X = B becomes
    // X^T·op(A^T) = B^T, so the side and the triangle swap while op and the diagonal stay.
    trsm_wrapper<T>(left ? "R" : "L", upper ? "L" : "U", ta, unit, &n, &m,
                    scalar_address<T>(alpha), a, &lda, b, &ldb);
  }
}

}  // namespace
}  // namespace tav::blas::interface

using namespace tav::blas::interface;
using c8 = std::complex<float>;
using c16 = std::complex<double>;

TAV_EXPORT void cblas_sgemm(int layout, int transa, int transb, int m, int n, int k, float alpha,
                            const float* a, int lda, const float* b, int ldb, float beta,
                            float* c, int ldc) {
  cblas_gemm<float>(layout, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
TAV_EXPORT void cblas_dgemm(int layout, int transa, int transb, int m, int n, int k, double alpha,
                            const double* a, int lda, const double* b, int ldb, double beta,
                            double* c, int ldc) {
  cblas_gemm<double>(layout, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
TAV_EXPORT void cblas_cgemm(int layout, int transa, int transb, int m, int n, int k,
                            const tav_complex8* alpha, const tav_complex8* a, int lda,
                            const tav_complex8* b, int ldb, const tav_complex8* beta,
                            tav_complex8* c, int ldc) {
  cblas_gemm<c8>(layout, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
TAV_EXPORT void cblas_zgemm(int layout, int transa, int transb, int m, int n, int k,
                            const tav_complex16* alpha, const tav_complex16* a, int lda,
                            const tav_complex16* b, int ldb, const tav_complex16* beta,
                            tav_complex16* c, int ldc) {
  cblas_gemm<c16>(layout, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

TAV_EXPORT void cblas_strsm(int layout, int side, int uplo, int transa, int diag, int m, int n,
                            float alpha, const float* a, int lda, float* b, int ldb) {
  cblas_trsm<float>(layout, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
TAV_EXPORT void cblas_dtrsm(int layout, int side, int uplo, int transa, int diag, int m, int n,
                            double alpha, const double* a, int lda, double* b, int ldb) {
  cblas_trsm<double>(layout, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
TAV_EXPORT void cblas_ctrsm(int layout, int side, int uplo, int transa, int diag, int m, int n,
                            const tav_complex8* alpha, const tav_complex8* a, int lda,
                            tav_complex8* b, int ldb) {
  cblas_trsm<c8>(layout, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
TAV_EXPORT void cblas_ztrsm(int layout, int side, int uplo, int transa, int diag, int m, int n,
                            const tav_complex16* alpha, const tav_complex16* a, int lda,
                            tav_complex16* b, int ldb) {
  cblas_trsm<c16>(layout, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
