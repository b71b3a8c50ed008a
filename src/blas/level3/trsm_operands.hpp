// The operands of a left-side triangular operation as the blocked triangular solve and product
// see them: op(A) with its effective triangle, the right-hand sides as B or as B transposed, the
// GEMM update between blocks of the two, and the packed copy of one diagonal block of op(A).
#pragma once

#include "blas/blas_internal.hpp"
#include "blas/level3/trsm_arguments.hpp"
#include "blas/level3/trsm_kernel_types.hpp"
#include "common/scalar_traits.hpp"

namespace tav::blas {

// op(A) for an order-n triangular A: trans is 'N', 'T' or 'C' ('C' only for complex types).
// op(A) is lower triangular when A is lower and not transposed or upper and transposed.
template <class T>
struct triangle_operand {
  const T* a;
  index lda;
  char trans;
  bool lower;  // of op(A), not of A
  bool unit;

  // op(A)(i, j).
  T operator()(index i, index j) const {
    if (trans == 'N') return a[i + j * lda];
    if (trans == 'C') return conj_if_complex(a[j + i * lda]);
    return a[j + i * lda];
  }

  // The block of op(A) whose top-left element is op(A)(i, j), as GEMM takes it: the address in
  // A of that block (or of its transpose) to pass with `trans` and `lda`.
  const T* block(index i, index j) const {
    return trans == 'N' ? a + i + j * lda : a + j + i * lda;
  }
};

template <class T>
triangle_operand<T> make_triangle_operand(char uplo, char trans, char diag, const T* a, index lda) {
  const bool a_lower = upper_char(uplo) != 'U';
  return {a, lda, trans, a_lower == (trans == 'N'), upper_char(diag) == 'U'};
}

// The right-hand sides of a left-side problem: columns of B itself, or, for a right-side problem
// turned into a left-side one by transposition, the rows of B (element (i, j) of the view is
// B(j, i)). Either way one of the two strides is 1.
template <class T>
struct rhs_view {
  T* p;
  index rows;
  index cols;
  index ld;
  bool transposed;

  index row_stride() const { return transposed ? ld : 1; }
  index col_stride() const { return transposed ? 1 : ld; }
  rhs_view row_range(index first, index count) const {
    return {p + first * row_stride(), count, cols, ld, transposed};
  }
  rhs_view col_range(index first, index count) const {
    return {p + first * col_stride(), rows, count, ld, transposed};
  }
};

// C := beta·C + alpha·op(A)(i:, j:)·X, with op(A)(i:, j:) the C.rows x X.rows block of op(A) at
// (i, j) and X, C views of the same kind. For a transposed view the storage holds C^T and X^T,
// so GEMM forms C^T := beta·C^T + alpha·X^T·op(A)(i:, j:)^T, where the transpose of a block taken
// with 'N' is the same storage taken with 'T' and vice versa ('C' never reaches a transposed
// view: the driver turns it into 'T' on conjugated data).
template <class T>
void update_rhs(const triangle_operand<T>& op_a, index i, index j, T alpha, const rhs_view<T>& x,
                T beta, const rhs_view<T>& c) {
  // No rows, no columns, or an empty sum with beta = 1 leave C as it is.
  if (c.rows <= 0 || c.cols <= 0 || (x.rows <= 0 && beta == T(1))) return;
  if (!c.transposed) {
    gemm<T>(op_a.trans, 'N', c.rows, c.cols, x.rows, alpha, op_a.block(i, j), op_a.lda, x.p, x.ld,
            beta, c.p, c.ld);
  } else {
    gemm<T>('N', op_a.trans == 'N' ? 'T' : 'N', c.cols, c.rows, x.rows, alpha, x.p, x.ld,
            op_a.block(i, j), op_a.lda, beta, c.p, c.ld);
  }
}

// Copies the diagonal block op(A)(k:k+kb, k:k+kb) into `packed` (column-major, leading dimension
// padded_order(kb)) as a lower triangle: unchanged when op(A) is lower, and with rows and columns
// taken in reverse order when op(A) is upper, since reversing both indices of an upper triangle
// gives a lower one (J·U·J with J the reversal). One forward recurrence then serves both
// triangles, the kernel visiting the right-hand-side rows in the same reversed order. The
// diagonal holds op(A)(i, i), or its reciprocal when `invert_diagonal` (a solve then
// multiplies), or 1 for a unit diagonal, which is never read. The padding rows and columns are
// those of the identity, which leaves zero padding rows of the right-hand sides at zero.
template <class T>
void pack_diagonal_block(const triangle_operand<T>& op_a, index k, index kb, bool invert_diagonal,
                         T* packed) {
  const index ld = padded_order(kb);
  for (index c = 0; c < ld; ++c) {
    T* column = packed + c * ld;
    for (index r = 0; r < ld; ++r) column[r] = T(0);
    if (c >= kb) {
      column[c] = T(1);
      continue;
    }
    const index jc = op_a.lower ? k + c : k + kb - 1 - c;
    if (op_a.unit) {
      column[c] = T(1);
    } else {
      const T d = op_a(jc, jc);
      column[c] = invert_diagonal ? T(1) / d : d;
    }
    for (index r = c + 1; r < kb; ++r) {
      const index ir = op_a.lower ? k + r : k + kb - 1 - r;
      column[r] = op_a(ir, jc);
    }
  }
}

}  // namespace tav::blas
