// The exported out-of-place copy and transpose TAV_?omatcopy and the internal entries behind them.
#include <tav/tav_omatcopy.h>

#include "blas/omatcopy/omatcopy.hpp"
#include "common/exports.hpp"

void tav_trans_tav_somatcopy(char ordering, char trans, int64_t rows, int64_t cols, float alpha,
                             const float* a, int64_t lda, float* b, int64_t ldb) {
  tav::blas::omatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb);
}
void tav_trans_tav_domatcopy(char ordering, char trans, int64_t rows, int64_t cols, double alpha,
                             const double* a, int64_t lda, double* b, int64_t ldb) {
  tav::blas::omatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb);
}
void tav_trans_tav_comatcopy(char ordering, char trans, int64_t rows, int64_t cols,
                             tav_complex8 alpha, const tav_complex8* a, int64_t lda,
                             tav_complex8* b, int64_t ldb) {
  tav::blas::omatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb);
}
void tav_trans_tav_zomatcopy(char ordering, char trans, int64_t rows, int64_t cols,
                             tav_complex16 alpha, const tav_complex16* a, int64_t lda,
                             tav_complex16* b, int64_t ldb) {
  tav::blas::omatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb);
}

// Sizes arrive unsigned; as 64-bit signed values the internal routine reads them the same.
TAV_EXPORT void TAV_Somatcopy(char ordering, char trans, size_t rows, size_t cols, float alpha,
                              const float* A, size_t lda, float* B, size_t ldb) {
  tav_trans_tav_somatcopy(ordering, trans, rows, cols, alpha, A, lda, B, ldb);
}
TAV_EXPORT void TAV_Domatcopy(char ordering, char trans, size_t rows, size_t cols, double alpha,
                              const double* A, size_t lda, double* B, size_t ldb) {
  tav_trans_tav_domatcopy(ordering, trans, rows, cols, alpha, A, lda, B, ldb);
}
TAV_EXPORT void TAV_Comatcopy(char ordering, char trans, size_t rows, size_t cols,
                              tav_complex8 alpha, const tav_complex8* A, size_t lda,
                              tav_complex8* B, size_t ldb) {
  tav_trans_tav_comatcopy(ordering, trans, rows, cols, alpha, A, lda, B, ldb);
}
TAV_EXPORT void TAV_Zomatcopy(char ordering, char trans, size_t rows, size_t cols,
                              tav_complex16 alpha, const tav_complex16* A, size_t lda,
                              tav_complex16* B, size_t ldb) {
  tav_trans_tav_zomatcopy(ordering, trans, rows, cols, alpha, A, lda, B, ldb);
}
