// The triangular product B := alpha·op(A)·B or alpha·B·op(A): the blocked left-side product on
// GEMM, reached for every side and transpose through the shared triangular driver.
#include <algorithm>

#include "blas/blas_internal.hpp"
#include "blas/level3/trsm_driver.hpp"
#include "blas/level3/trsm_kernel_slots.hpp"
#include "blas/level3/trsm_operands.hpp"

namespace tav::blas {

namespace {

// B := alpha·op(A)·B by blocks of nb rows. Row block 1 of the product reads the rows of B on the
// near side of the diagonal, so the blocks are finished in the order that leaves those rows
// unchanged: from the bottom when op(A) is lower, from the top when upper. With A11 the block
// and B1 its rows:
//   B1 := alpha·A11·B1
//   B1 := B1 + alpha·A10·B0   (lower: the rows above)   or   B1 := B1 + alpha·A12·B2 (upper)
template <class T>
void trmm_left_blocked(const triangle_operand<T>& op_a, T alpha, const rhs_view<T>& b, T* packed,
                       index nb) {
  const index m = b.rows;
  for (index done = 0; done < m; done += nb) {
    const index kb = std::min(nb, m - done);
    const index k = op_a.lower ? m - done - kb : done;
    const index rest = m - done - kb;
    const index rest_first = op_a.lower ? 0 : k + kb;
    const rhs_view<T> b1 = b.row_range(k, kb);
    pack_diagonal_block(op_a, k, kb, false, packed);
    run_block_kernel(triangular_block_slots<T>::multiply, packed, alpha, b1, op_a.lower);
    update_rhs(op_a, k, rest_first, alpha, b.row_range(rest_first, rest), T(1), b1);
  }
}

}  // namespace

template <class T>
void trmm(char side, char uplo, char transa, char diag, index m, index n, T alpha, const T* a,
          index lda, T* b, index ldb) {
  if (m <= 0 || n <= 0) return;
  if (alpha == T(0)) {
    zero_matrix(m, n, b, ldb);
    return;
  }
  run_triangular(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb, "TRMM",
                 trmm_left_blocked<T>);
}

template void trmm<float>(char, char, char, char, index, index, float, const float*, index, float*,
                          index);
template void trmm<double>(char, char, char, char, index, index, double, const double*, index,
                           double*, index);
template void trmm<std::complex<float>>(char, char, char, char, index, index, std::complex<float>,
                                        const std::complex<float>*, index, std::complex<float>*,
                                        index);
template void trmm<std::complex<double>>(char, char, char, char, index, index, std::complex<double>,
                                         const std::complex<double>*, index, std::complex<double>*,
                                         index);

}  // namespace tav::blas
