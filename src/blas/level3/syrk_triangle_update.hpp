// The symmetric and Hermitian rank-k and rank-2k updates written once:
// C := beta·C + sum_t alpha_t·X_t·op(Y_t) on one triangle of C, with op the transpose (syrk,
// syr2k) or the conjugate transpose (herk, her2k), by the per-path product on one triangle and
// threaded by column panels.
#pragma once

#include <omp.h>
#include <tav/tav_threads.h>

#include <algorithm>
#include <cmath>

#include "blas/blas_internal.hpp"
#include "blas/level3/gemm_entries.hpp"
#include "blas/level3/trsm_arguments.hpp"
#include "common/scalar_traits.hpp"

namespace tav::blas {

// One term alpha·X·op(Y) of the update; X and Y are n x k ('N') or k x n (transposed form).
template <class T>
struct rank_update_term {
  T alpha;
  const T* x;
  index ldx;
  const T* y;
  index ldy;
};

template <class T>
struct rank_update {
  bool lower;       // the triangle of C referenced and updated
  bool transposed;  // trans != 'N': the terms are op(X)·Y, from the columns of X and Y
  char op;          // 'T' for the symmetric updates, 'C' for the Hermitian ones
  index k;
  T beta;
  rank_update_term<T> terms[2];
  int term_count;

  bool hermitian() const { return op == 'C'; }
};

// Panels of columns start at multiples of this step, a multiple of every path's register block
// (rows and columns), so the tiles of C and those the diagonal crosses are the same whichever
// panels the threads take: every element of C is then computed alike for any thread count.
struct rank_update_blocking {
  static constexpr index step = 96;
};

// The one-triangle product of the dispatched path, complex data as interleaved reals.
template <class T>
void triangle_product(char uplo, char transa, char transb, index m, index n, index k, T alpha,
                      const T* a, index lda, const T* b, index ldb, T beta, T* c, index ldc,
                      index diagonal) {
  using R = real_t<T>;
  auto r = [](const T* p) { return reinterpret_cast<const R*>(p); };
  serial_entries<T>::gemmt(&uplo, &transa, &transb, &m, &n, &k, r(&alpha), r(a), &lda, r(b), &ldb, r(&beta),
         reinterpret_cast<R*>(c), &ldc, &diagonal);
}

// A Hermitian C has a real diagonal by definition: the imaginary parts of C(j, j), j0 <= j < j1,
// are not read (cleared before beta scales them) and the update leaves none (those of the sum
// are rounding).
template <class T>
void clear_diagonal_imaginary(index j0, index j1, T* c, index ldc) {
  if constexpr (is_complex_v<T>) {
    for (index j = j0; j < j1; ++j) c[j + j * ldc] = T(c[j + j * ldc].real(), 0);
  }
}

// The columns [j0, j1) of the referenced triangle, from the diagonal down (lower) or from row 0 to
// the diagonal (upper), one triangle product per term. Block row i, column j is element
// (i0 + i, j0 + j) of C, on the triangle when i0 + i >= j0 + j (lower) or <= (upper).
template <class T>
void update_panel(const rank_update<T>& u, index j0, index j1, index n, T* c, index ldc) {
  const index i0 = u.lower ? j0 : 0, rows = u.lower ? n - j0 : j1, cols = j1 - j0;
  const char uplo = u.lower ? 'L' : 'U';
  const index diagonal = j0 - i0;
  T* block = c + i0 + j0 * ldc;
  if (u.hermitian() && u.beta != T(0)) clear_diagonal_imaginary(j0, j1, c, ldc);
  for (int t = 0; t < u.term_count; ++t) {
    const rank_update_term<T>& term = u.terms[t];
    const T term_beta = t == 0 ? u.beta : T(1);
    if (!u.transposed) {
      triangle_product<T>(uplo, 'N', u.op, rows, cols, u.k, term.alpha, term.x + i0, term.ldx,
                          term.y + j0, term.ldy, term_beta, block, ldc, diagonal);
    } else {
      triangle_product<T>(uplo, u.op, 'N', rows, cols, u.k, term.alpha, term.x + i0 * term.ldx,
                          term.ldx, term.y + j0 * term.ldy, term.ldy, term_beta, block, ldc,
                          diagonal);
    }
  }
  if (u.hermitian()) clear_diagonal_imaginary(j0, j1, c, ldc);
}

// The first column of panel t of `team` panels of about equal area. The lower triangle holds
// n·j - j^2/2 elements left of column j, the upper one j^2/2, so the boundary of a fraction f
// of the area is n·(1 - sqrt(1 - f)) or n·sqrt(f), rounded to a multiple of the step (which
// also keeps two threads off one cache line of C).
inline index panel_start(bool lower, index n, int t, int team, index step) {
  if (t >= team) return n;
  const double f = static_cast<double>(t) / team;
  const double j = lower ? n * (1 - std::sqrt(1 - f)) : n * std::sqrt(f);
  return std::min<index>(n, (static_cast<index>(j) + step / 2) / step * step);
}

// Threads for an update of order n and depth k: one inside a parallel region (the caller's
// threads are busy) or when the work would not pay for starting a team; otherwise the BLAS
// domain's count, each thread taking at least 64 columns.
inline int rank_update_threads(index n, index k) {
  if (omp_in_parallel()) return 1;
  if (static_cast<double>(n) * static_cast<double>(n) * static_cast<double>(k) < 4.0e6) return 1;
  const int domain = tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS);
  return static_cast<int>(std::clamp<index>(n / 64, 1, std::max(domain, 1)));
}

// The whole update of the order-n C, with the quick returns of the rank-k routines: nothing to
// do for n = 0 or for an empty sum with beta = 1 (an empty sum otherwise only scales, which the
// triangle product does without reading A or B). Threads take column panels of equal area.
template <class T>
void update_rank_triangle(const rank_update<T>& u, index n, T* c, index ldc) {
  if (n <= 0) return;
  const bool no_product = u.k <= 0 || u.terms[0].alpha == T(0);
  if (no_product && u.beta == T(1)) return;
  auto run_panel = [&](index j0, index j1) {
    if (j1 > j0) update_panel(u, j0, j1, n, c, ldc);
  };
  const int threads = rank_update_threads(n, u.k);
  if (threads <= 1) {
    run_panel(0, n);
    return;
  }
#pragma omp parallel num_threads(threads)
  {
    const int team = omp_get_num_threads(), t = omp_get_thread_num();
    constexpr index step = rank_update_blocking::step;
    run_panel(panel_start(u.lower, n, t, team, step), panel_start(u.lower, n, t + 1, team, step));
  }
}

// The common fields of a rank update from the BLAS arguments: uplo 'U' or 'L', trans 'N' for
// the X·op(Y) form and anything else for op(X)·Y.
template <class T>
rank_update<T> make_rank_update(char uplo, char trans, char op, index k, T beta) {
  rank_update<T> u{};
  u.lower = upper_char(uplo) != 'U';
  u.transposed = upper_char(trans) != 'N';
  u.op = op;
  u.k = k;
  u.beta = beta;
  return u;
}

}  // namespace tav::blas
