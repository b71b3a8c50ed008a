// Long-double oracles for the level-3 routines beside the matrix product: the residual ratio of
// a triangular solve, and reference triangular products and symmetric/Hermitian rank-k and
// rank-2k updates that return, like reference_gemm, the elementwise bound for the error check.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "reference_level3.hpp"

namespace tav::test {

// Element (i, j) of op(A) for a triangular A of the given uplo and diag: zero outside the
// triangle and 1 on a unit diagonal, so neither the other triangle nor a unit diagonal is read.
template <class T>
wide_t<T> triangular_element(char uplo, char trans, char diag, const T* a, int64_t lda, int64_t i,
                             int64_t j) {
  const bool upper = (uplo & ~0x20) == 'U';
  // Element (i, j) of op(A) is element (r, c) of A.
  const bool transposed = (trans & ~0x20) != 'N';
  const int64_t r = transposed ? j : i, c = transposed ? i : j;
  if (r == c && (diag & ~0x20) == 'U') return wide_t<T>(1);
  if (upper ? r > c : r < c) return wide_t<T>(0);
  return op_element(trans, a, lda, i, j);
}

template <class T>
long double unit_roundoff() {
  if constexpr (std::is_floating_point_v<T>)
    return std::numeric_limits<T>::epsilon();
  else
    return std::numeric_limits<typename T::value_type>::epsilon();
}

// Residual of a triangular solve with solution X (m x n, leading dimension ldx) of the original
// right-hand sides B: max_j ||R(:, j)||_1 / (||op(A)||_1·||X||_1·order·eps), where
// R = op(A)·X - alpha·B (side 'L', order m) or X·op(A) - alpha·B (side 'R', order n), in long
// double. A backward-stable solve stays below a small constant (Higham, Accuracy and Stability,
// chapter 8); 0 for an empty problem.
template <class T>
long double trsm_residual_ratio(char side, char uplo, char trans, char diag, int64_t m, int64_t n,
                                T alpha, const T* a, int64_t lda, const T* x, int64_t ldx,
                                const T* b, int64_t ldb) {
  if (m <= 0 || n <= 0) return 0;
  const bool left = (side & ~0x20) == 'L';
  const int64_t order = left ? m : n;
  auto op_a = [&](int64_t i, int64_t j) {
    return triangular_element(uplo, trans, diag, a, lda, i, j);
  };
  long double norm_a = 0, norm_x = 0, norm_r = 0;
  for (int64_t j = 0; j < order; ++j) {
    long double column = 0;
    for (int64_t i = 0; i < order; ++i) column += wide_abs1(op_a(i, j));
    norm_a = std::max(norm_a, column);
  }
  const wide_t<T> wa = widen(alpha);
  // Columns of R are taken one at a time; the 1-norm is the largest column sum either way.
  for (int64_t j = 0; j < n; ++j) {
    long double column_x = 0, column_r = 0;
    for (int64_t i = 0; i < m; ++i) {
      column_x += wide_abs1(widen(x[i + j * ldx]));
      wide_t<T> sum = 0;
      if (left) {
        for (int64_t l = 0; l < m; ++l) sum += op_a(i, l) * widen(x[l + j * ldx]);
      } else {
        for (int64_t l = 0; l < n; ++l) sum += widen(x[i + l * ldx]) * op_a(l, j);
      }
      column_r += wide_abs1(sum - wa * widen(b[i + j * ldb]));
    }
    norm_x = std::max(norm_x, column_x);
    norm_r = std::max(norm_r, column_r);
  }
  if (norm_r == 0) return 0;
  return norm_r / (norm_a * norm_x * static_cast<long double>(order) * unit_roundoff<T>());
}

// B := alpha·op(A)·B (side 'L') or alpha·B·op(A) (side 'R') with every sum in long double, and
// the bound |alpha|·sum_l |op(A)_il|·|B_lj| (or the right-side twin) per element of B, column
// major with leading dimension m, for gemm_error_ratio with k = the order of A.
template <class T>
std::vector<long double> reference_trmm(char side, char uplo, char trans, char diag, int64_t m,
                                        int64_t n, T alpha, const T* a, int64_t lda, T* b,
                                        int64_t ldb) {
  std::vector<long double> bound(static_cast<size_t>(m > 0 && n > 0 ? m * n : 0), 0.0L);
  if (m <= 0 || n <= 0) return bound;
  const bool left = (side & ~0x20) == 'L';
  const wide_t<T> wa = widen(alpha);
  std::vector<wide_t<T>> product(static_cast<size_t>(m * n));
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < m; ++i) {
      wide_t<T> sum = 0;
      long double magnitude = 0;
      const int64_t order = left ? m : n;
      for (int64_t l = 0; l < order; ++l) {
        const wide_t<T> p = left ? triangular_element(uplo, trans, diag, a, lda, i, l)
                                 : triangular_element(uplo, trans, diag, a, lda, l, j);
        const wide_t<T> q = left ? widen(b[l + j * ldb]) : widen(b[i + l * ldb]);
        sum += p * q;
        magnitude += wide_abs1(p) * wide_abs1(q);
      }
      product[static_cast<size_t>(i + j * m)] = alpha == T(0) ? wide_t<T>(0) : wa * sum;
      bound[static_cast<size_t>(i + j * m)] = wide_abs1(wa) * magnitude;
    }
  }
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < m; ++i)
      b[i + j * ldb] = narrow<T>(product[static_cast<size_t>(i + j * m)]);
  }
  return bound;
}

// One term alpha·X·op(Y) (trans 'N') or alpha·op(X)·Y of a rank update.
template <class T>
struct reference_term {
  T alpha;
  const T* x;
  int64_t ldx;
  const T* y;
  int64_t ldy;
};

// C := beta·C + sum_t alpha_t·X_t·op(Y_t) (trans 'N') or beta·C + sum_t alpha_t·op(X_t)·Y_t on
// the uplo triangle of the order-n C, op 'T' (symmetric) or 'C' (Hermitian, whose diagonal is
// then set real). The other triangle is left as it is; the bound is 0 there, so any change fails
// gemm_error_ratio. beta = 0 does not read C; as the BLAS promise, an empty sum (alpha = 0 or
// k = 0) with beta = 1 leaves C alone, even a Hermitian diagonal. The bound (leading dimension n)
// is for gemm_error_ratio with k = the number of terms times k.
template <class T>
std::vector<long double> reference_rank_update(char uplo, char trans, char op, int64_t n, int64_t k,
                                               const std::vector<reference_term<T>>& terms, T beta,
                                               T* c, int64_t ldc) {
  std::vector<long double> bound(static_cast<size_t>(n > 0 ? n * n : 0), 0.0L);
  const bool upper = (uplo & ~0x20) == 'U';
  const bool plain = (trans & ~0x20) == 'N';
  const char flip = plain ? 'N' : op;
  const char keep = plain ? op : 'N';
  const wide_t<T> wb = widen(beta);
  const bool empty_sum = k <= 0 || std::all_of(terms.begin(), terms.end(),
                                               [](const auto& t) { return t.alpha == T(0); });
  if (empty_sum && beta == T(1)) return bound;
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = upper ? 0 : j; i < (upper ? j + 1 : n); ++i) {
      wide_t<T> sum = 0;
      long double magnitude = 0;
      for (const reference_term<T>& t : terms) {
        if (t.alpha == T(0)) continue;
        wide_t<T> part = 0;
        long double size = 0;
        for (int64_t l = 0; l < k; ++l) {
          // X(i, l)·op(Y)(l, j) in the plain form, op(X)(i, l)·Y(l, j) in the other.
          const wide_t<T> p = op_element(flip, t.x, t.ldx, i, l);
          const wide_t<T> q = op_element(keep, t.y, t.ldy, l, j);
          part += p * q;
          size += wide_abs1(p) * wide_abs1(q);
        }
        sum += widen(t.alpha) * part;
        magnitude += wide_abs1(widen(t.alpha)) * size;
      }
      if (beta != T(0)) {
        const wide_t<T> old = widen(c[i + j * ldc]);
        sum += wb * old;
        magnitude += wide_abs1(wb) * wide_abs1(old);
      }
      if constexpr (!std::is_floating_point_v<T>) {
        if (op == 'C' && i == j) sum = wide_t<T>(sum.real(), 0);
      }
      c[i + j * ldc] = narrow<T>(sum);
      bound[static_cast<size_t>(i + j * n)] = magnitude;
    }
  }
  return bound;
}

// The four rank updates through the one reference above.
template <class T>
std::vector<long double> reference_syrk(char uplo, char trans, int64_t n, int64_t k, T alpha,
                                        const T* a, int64_t lda, T beta, T* c, int64_t ldc) {
  return reference_rank_update<T>(uplo, trans, 'T', n, k, {{alpha, a, lda, a, lda}}, beta, c, ldc);
}

template <class T>
std::vector<long double> reference_herk(char uplo, char trans, int64_t n, int64_t k,
                                        typename T::value_type alpha, const T* a, int64_t lda,
                                        typename T::value_type beta, T* c, int64_t ldc) {
  return reference_rank_update<T>(uplo, trans, 'C', n, k, {{T(alpha), a, lda, a, lda}}, T(beta), c,
                                  ldc);
}

template <class T>
std::vector<long double> reference_syr2k(char uplo, char trans, int64_t n, int64_t k, T alpha,
                                         const T* a, int64_t lda, const T* b, int64_t ldb, T beta,
                                         T* c, int64_t ldc) {
  return reference_rank_update<T>(uplo, trans, 'T', n, k,
                                  {{alpha, a, lda, b, ldb}, {alpha, b, ldb, a, lda}}, beta, c, ldc);
}

template <class T>
std::vector<long double> reference_her2k(char uplo, char trans, int64_t n, int64_t k, T alpha,
                                         const T* a, int64_t lda, const T* b, int64_t ldb,
                                         typename T::value_type beta, T* c, int64_t ldc) {
  return reference_rank_update<T>(uplo, trans, 'C', n, k,
                                  {{alpha, a, lda, b, ldb}, {std::conj(alpha), b, ldb, a, lda}},
                                  T(beta), c, ldc);
}

}  // namespace tav::test
