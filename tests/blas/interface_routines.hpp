// The exported BLAS routines gathered by C element type, with small references for the
// interface tests.
#pragma once

#include <tav/tav.h>

#include <vector>

#include "c_elements.hpp"

namespace tav::test {

template <class C>
struct routines {
  static constexpr auto gemm = by_c_type<C>(SGEMM, DGEMM, CGEMM, ZGEMM);
  static constexpr auto trsm = by_c_type<C>(STRSM, DTRSM, CTRSM, ZTRSM);
  static constexpr auto axpy = by_c_type<C>(SAXPY, DAXPY, CAXPY, ZAXPY);
  static constexpr auto scal = by_c_type<C>(SSCAL, DSCAL, CSCAL, ZSCAL);
  static constexpr auto cblas_gemm =
      by_c_type<C>(cblas_sgemm, cblas_dgemm, cblas_cgemm, cblas_zgemm);
  static constexpr auto cblas_trsm =
      by_c_type<C>(cblas_strsm, cblas_dtrsm, cblas_ctrsm, cblas_ztrsm);
  static constexpr auto cblas_axpy =
      by_c_type<C>(cblas_saxpy, cblas_daxpy, cblas_caxpy, cblas_zaxpy);
  static constexpr auto cblas_scal =
      by_c_type<C>(cblas_sscal, cblas_dscal, cblas_cscal, cblas_zscal);
};

// CBLAS takes a real scalar by value and a complex one by address.
template <class C>
auto cblas_scalar(const C& scalar) {
  if constexpr (is_real_v<C>) return scalar;
  else return &scalar;
}

// An n x n triangular matrix (column-major, leading dimension ld) whose diagonal cycles through
// 1, -1 and 2, so that substitution divides exactly; the other triangle holds values that a
// correct solve never reads, and the unit diagonal case ignores the stored diagonal.
template <class C>
std::vector<C> triangular(int n, int ld, bool upper, int seed) {
  std::vector<C> a = small_integers<C>(static_cast<size_t>(ld) * n, seed);
  static constexpr double diagonal[] = {1, -1, 2};
  for (int j = 0; j < n; ++j) {
    a[static_cast<size_t>(j + j * ld)] = make<C>(diagonal[j % 3]);
    for (int i = 0; i < n; ++i)
      if (upper ? i > j : i < j) a[static_cast<size_t>(i + j * ld)] = make<C>(1000);
  }
  return a;
}

// B := alpha·op(A)^-1·B (side 'L') or alpha·B·op(A)^-1 (side 'R'), column-major, by solving for
// one row or column of B at a time in the order the triangle allows.
template <class C>
void reference_trsm(char side, char uplo, char trans, char diag, int m, int n, C alpha,
                    const C* a, int lda, C* b, int ldb) {
  const bool left = side == 'L';
  const int order = left ? m : n;
  // op(A) is upper triangular when A is upper and not transposed, or lower and transposed.
  const bool op_upper = (uplo == 'U') == (trans == 'N');
  auto op = [&](int i, int j) { return op_at(trans, a, lda, i, j); };
  auto at = [&](int i, int j) -> C& { return b[i + j * ldb]; };
  for (int t = 0; t < order; ++t) {
    // Left: op(A)·X = alpha·B, rows of X from the bottom (upper) or the top (lower).
    // Right: X·op(A) = alpha·B, columns of X from the left (upper) or the right (lower).
    const int p = left == op_upper ? order - 1 - t : t;
    const int lines = left ? n : m;
    for (int q = 0; q < lines; ++q) {
      std_t<C> sum = to_std(alpha) * to_std(left ? at(p, q) : at(q, p));
      for (int r = 0; r < order; ++r) {
        const bool solved = left ? (op_upper ? r > p : r < p) : (op_upper ? r < p : r > p);
        if (!solved) continue;
        sum -= left ? op(p, r) * to_std(at(r, q)) : to_std(at(q, r)) * op(r, p);
      }
      if (diag == 'N') sum /= op(p, p);
      (left ? at(p, q) : at(q, p)) = from_std<C>(sum);
    }
  }
}

// The row-major copy (leading dimension ld) of a rows x cols column-major matrix of leading
// dimension ld_col, the rest of the buffer filled with `fill`.
template <class C>
std::vector<C> to_row_major(const std::vector<C>& x, int rows, int cols, int ld_col, int ld,
                            C fill) {
  std::vector<C> y(static_cast<size_t>(ld) * rows, fill);
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < cols; ++j)
      y[static_cast<size_t>(i * ld + j)] = x[static_cast<size_t>(i + j * ld_col)];
  return y;
}

}  // namespace tav::test
