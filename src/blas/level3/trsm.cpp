// The triangular solve with many right-hand sides, B := alpha·op(A)^-1·B or alpha·B·op(A)^-1:
// quick returns and single-vector shapes, then the blocked left-side solve on GEMM.
#include <algorithm>

#include "blas/blas_internal.hpp"
#include "blas/level3/trsm_driver.hpp"
#include "blas/level3/trsm_kernel_slots.hpp"
#include "blas/level3/trsm_operands.hpp"

namespace tav::blas {

namespace {

// B := alpha·op(A)^-1·B, right-looking by blocks of nb rows. With A11 the next diagonal block
// (from the top when op(A) is lower, from the bottom when upper) and B1 its rows:
//   B1 := A11^-1·(alpha·B1)
//   B2 := alpha·B2 - A21·B1   (lower: the rows below)   or   B0 := alpha·B0 - A01·B1 (upper)
// alpha is applied only in the first step, which scales every row exactly once; later steps
// use 1.
template <class T>
void trsm_left_blocked(const triangle_operand<T>& op_a, T alpha, const rhs_view<T>& b, T* packed,
                       index nb) {
  const index m = b.rows;
  for (index done = 0; done < m; done += nb) {
    const index kb = std::min(nb, m - done);
    const index k = op_a.lower ? done : m - done - kb;
    const index rest = m - done - kb;
    const index rest_first = op_a.lower ? k + kb : 0;
    const T step_alpha = done == 0 ? alpha : T(1);
    const rhs_view<T> b1 = b.row_range(k, kb);
    pack_diagonal_block(op_a, k, kb, true, packed);
    run_block_kernel(triangular_block_slots<T>::solve, packed, step_alpha, b1, op_a.lower);
    update_rhs(op_a, rest_first, k, T(-1), b1, step_alpha, b.row_range(rest_first, rest));
  }
}

// x·op(A) = b for the single row x of B (stride ldb): transposing gives op(A)^T·x^T = b^T, a
// vector solve with the opposite transpose; for 'C', conjugating instead gives
// A·conj(x)^T = conj(b)^T, solved on the conjugated row.
template <class T>
void solve_row(char uplo, char trans, char diag, index n, const T* a, index lda, T* b, index ldb) {
  if (trans != 'C') {
    trsv<T>(uplo, trans == 'N' ? 'T' : 'N', diag, n, a, lda, b, ldb);
    return;
  }
  for (index j = 0; j < n; ++j) b[j * ldb] = conj_if_complex(b[j * ldb]);
  trsv<T>(uplo, 'N', diag, n, a, lda, b, ldb);
  for (index j = 0; j < n; ++j) b[j * ldb] = conj_if_complex(b[j * ldb]);
}

}  // namespace

template <class T>
void trsm(char side, char uplo, char transa, char diag, index m, index n, T alpha, const T* a,
          index lda, T* b, index ldb) {
  if (m <= 0 || n <= 0) return;
  const bool right = upper_char(side) == 'R';
  if (alpha == T(1)) {
    if (!right && n == 1) {
      trsv<T>(uplo, transa, diag, m, a, lda, b, 1);
      return;
    }
    if (right && m == 1) {
      solve_row(uplo, decode_trans<T>(transa), diag, n, a, lda, b, ldb);
      return;
    }
  }
  if (alpha == T(0)) {
    zero_matrix(m, n, b, ldb);
    return;
  }
  run_triangular(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb, "TRSM",
                 trsm_left_blocked<T>);
}

template void trsm<float>(char, char, char, char, index, index, float, const float*, index, float*,
                          index);
template void trsm<double>(char, char, char, char, index, index, double, const double*, index,
                           double*, index);
template void trsm<std::complex<float>>(char, char, char, char, index, index, std::complex<float>,
                                        const std::complex<float>*, index, std::complex<float>*,
                                        index);
template void trsm<std::complex<double>>(char, char, char, char, index, index, std::complex<double>,
                                         const std::complex<double>*, index, std::complex<double>*,
                                         index);

}  // namespace tav::blas
