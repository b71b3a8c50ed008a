// The argument checks of ?GEMM, ?TRSM, cblas_?gemm and cblas_?trsm (one per routine, shared by
// the four precisions).
#include "blas/interface/argument_checks.hpp"

#include <tav/tav_cblas.h>

#include <algorithm>

#include "blas/interface/lsame.hpp"

namespace tav::blas::interface {
namespace {

bool is(const char* option, const char* letter) { return same_letter(option, letter); }

bool is_transpose_letter(const char* t) { return is(t, "N") || is(t, "T") || is(t, "C"); }

bool is_transpose_code(int t) {
  return t == TAV_CBLAS_NO_TRANS || t == TAV_CBLAS_TRANS || t == TAV_CBLAS_CONJ_TRANS;
}

bool is_layout_code(int layout) {
  return layout == TAV_CBLAS_ROW_MAJOR || layout == TAV_CBLAS_COL_MAJOR;
}

// A leading dimension must cover the stored rows, and is at least 1 even for an empty matrix.
template <class I>
bool too_small(I ld, I rows) {
  return ld < std::max<I>(1, rows);
}

}  // namespace

int gemm_bad_argument(const char* transa, const char* transb, index m, index n, index k,
                      index lda, index ldb, index ldc) {
  // Rows of A and B as stored: op(A) is m x k, op(B) is k x n.
  const index rows_a = is(transa, "N") ? m : k;
  const index rows_b = is(transb, "N") ? k : n;
  if (!is_transpose_letter(transa)) return 1;
  if (!is_transpose_letter(transb)) return 2;
  if (m < 0) return 3;
  if (n < 0) return 4;
  if (k < 0) return 5;
  if (too_small(lda, rows_a)) return 8;
  if (too_small(ldb, rows_b)) return 10;
  if (too_small(ldc, m)) return 13;
  return 0;
}

int trsm_bad_argument(const char* side, const char* uplo, const char* transa, const char* diag,
                      index m, index n, index lda, index ldb) {
  // A is m x m on the left of B, n x n on its right.
  const index rows_a = is(side, "L") ? m : n;
  if (!is(side, "L") && !is(side, "R")) return 1;
  if (!is(uplo, "U") && !is(uplo, "L")) return 2;
  if (!is_transpose_letter(transa)) return 3;
  if (!is(diag, "U") && !is(diag, "N")) return 4;
  if (m < 0) return 5;
  if (n < 0) return 6;
  if (too_small(lda, rows_a)) return 9;
  if (too_small(ldb, m)) return 11;
  return 0;
}

// The layout is tested only after the options and dimensions, so a bad layout together with a
// negative dimension reports the dimension.
int cblas_gemm_bad_argument(int layout, int transa, int transb, int m, int n, int k, int lda,
                            int ldb, int ldc) {
  if (!is_transpose_code(transa)) return 2;
  if (!is_transpose_code(transb)) return 3;
  if (m < 0) return 4;
  if (n < 0) return 5;
  if (k < 0) return 6;
  if (!is_layout_code(layout)) return 1;
  // Row major stores the transposes: a row of A holds op(A)'s k columns when not transposed.
  const bool row_major = layout == TAV_CBLAS_ROW_MAJOR;
  const bool plain_a = transa == TAV_CBLAS_NO_TRANS, plain_b = transb == TAV_CBLAS_NO_TRANS;
  const int rows_a = row_major ? (plain_a ? k : m) : (plain_a ? m : k);
  const int rows_b = row_major ? (plain_b ? n : k) : (plain_b ? k : n);
  if (too_small(lda, rows_a)) return 9;
  if (too_small(ldb, rows_b)) return 11;
  if (too_small(ldc, row_major ? n : m)) return 14;
  return 0;
}

int cblas_trsm_bad_argument(int layout, int side, int uplo, int transa, int diag, int m, int n,
                            int lda, int ldb) {
  if (side != TAV_CBLAS_LEFT && side != TAV_CBLAS_RIGHT) return 2;
  if (uplo != TAV_CBLAS_UPPER && uplo != TAV_CBLAS_LOWER) return 3;
  if (!is_transpose_code(transa)) return 4;
  if (diag != TAV_CBLAS_NON_UNIT && diag != TAV_CBLAS_UNIT) return 5;
  if (m < 0) return 6;
  if (n < 0) return 7;
  if (!is_layout_code(layout)) return 1;
  if (too_small(lda, side == TAV_CBLAS_LEFT ? m : n)) return 10;
  if (too_small(ldb, layout == TAV_CBLAS_ROW_MAJOR ? n : m)) return 12;
  return 0;
}

}  // namespace tav::blas::interface
