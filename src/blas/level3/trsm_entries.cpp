// The four internal C entries of the triangular solve, each a shim over tav::blas::trsm<T>.
#include "blas/level3/trsm_entries.hpp"

#include "blas/blas_internal.hpp"

namespace {

template <class T>
void trsm_entry(const char* side, const char* uplo, const char* transa, const char* diag,
                const tav::index* m, const tav::index* n, const T* alpha, const T* a,
                const tav::index* lda, T* b, const tav::index* ldb) {
  tav::blas::trsm<T>(*side, *uplo, *transa, *diag, *m, *n, *alpha, a, *lda, b, *ldb);
}

}  // namespace

extern "C" void tav_blas_strsm(const char* side, const char* uplo, const char* transa,
                               const char* diag, const tav::index* m, const tav::index* n,
                               const float* alpha, const float* a, const tav::index* lda, float* b,
                               const tav::index* ldb) {
  trsm_entry(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}

extern "C" void tav_blas_dtrsm(const char* side, const char* uplo, const char* transa,
                               const char* diag, const tav::index* m, const tav::index* n,
                               const double* alpha, const double* a, const tav::index* lda,
                               double* b, const tav::index* ldb) {
  trsm_entry(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}

extern "C" void tav_blas_ctrsm(const char* side, const char* uplo, const char* transa,
                               const char* diag, const tav::index* m, const tav::index* n,
                               const std::complex<float>* alpha, const std::complex<float>* a,
                               const tav::index* lda, std::complex<float>* b,
                               const tav::index* ldb) {
  trsm_entry(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}

extern "C" void tav_blas_ztrsm(const char* side, const char* uplo, const char* transa,
                               const char* diag, const tav::index* m, const tav::index* n,
                               const std::complex<double>* alpha, const std::complex<double>* a,
                               const tav::index* lda, std::complex<double>* b,
                               const tav::index* ldb) {
  trsm_entry(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
