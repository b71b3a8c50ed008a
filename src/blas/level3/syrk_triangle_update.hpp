// The symmetric and Hermitian rank-k and rank-2k updates written once:
// C := beta·C + sum_t alpha_t·X_t·op(Y_t) on one triangle of C, with op the transpose (syrk,
// syr2k) or the conjugate transpose (herk, her2k), recursive on GEMM and threaded by column
// panels.
#pragma once

#include <omp.h>
#include <tav/tav_error.h>
#include <tav/tav_threads.h>

#include <algorithm>
#include <cmath>

#include "blas/blas_internal.hpp"
#include "blas/level3/trsm_arguments.hpp"
#include "common/scalar_traits.hpp"
#include "common/scratch.hpp"

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

struct rank_update_blocking {
  // Order of the diagonal blocks. Each is computed whole into a scratch square, so the other
  // half of it, leaf/(2n) of all the flops, is work thrown away; smaller leaves waste less but
  // make slimmer GEMM calls.
  static constexpr index leaf = 96;
  // Used when the scratch square cannot be allocated.
  static constexpr index fallback_leaf = 16;
};

// C(i:i+ni, j:j+nj) := beta·C(i:i+ni, j:j+nj) + sum_t alpha_t·X_t(i:i+ni)·op(Y_t(j:j+nj)), where
// X(i:i+ni) means rows i.. of X, or its columns i.. in the transposed form (op(X)·Y). The
// second term accumulates onto the first with beta = 1.
template <class T>
void add_block_product(const rank_update<T>& u, index i, index ni, index j, index nj, T beta, T* c,
                       index ldc) {
  for (int t = 0; t < u.term_count; ++t) {
    const rank_update_term<T>& term = u.terms[t];
    const T term_beta = t == 0 ? beta : T(1);
    if (!u.transposed) {
      gemm<T>('N', u.op, ni, nj, u.k, term.alpha, term.x + i, term.ldx, term.y + j, term.ldy,
              term_beta, c, ldc);
    } else {
      gemm<T>(u.op, 'N', ni, nj, u.k, term.alpha, term.x + i * term.ldx, term.ldx,
              term.y + j * term.ldy, term.ldy, term_beta, c, ldc);
    }
  }
}

// C11 := beta·C11 + S on the referenced triangle of the nb x nb diagonal block C11, leaving the
// other triangle as it was; beta = 0 does not read C11. A Hermitian C has a real diagonal by
// definition, so its diagonal keeps only the real parts (the imaginary part of S_jj is rounding).
template <class T>
void merge_triangle(const rank_update<T>& u, index nb, const T* s, T* c11, index ldc) {
  const bool beta_zero = u.beta == T(0);
  for (index j = 0; j < nb; ++j) {
    const index first = u.lower ? j : 0;
    const index last = u.lower ? nb : j + 1;
    T* cj = c11 + j * ldc;
    const T* sj = s + j * nb;
    const T diagonal = beta_zero ? T(0) : cj[j];
    for (index i = first; i < last; ++i) cj[i] = beta_zero ? sj[i] : u.beta * cj[i] + sj[i];
    if constexpr (is_complex_v<T>) {
      if (u.hermitian()) cj[j] = T(u.beta.real() * diagonal.real() + sj[j].real(), 0);
    }
  }
}

// C := beta·C on the referenced triangle only: the whole update when alpha = 0 or k = 0.
// beta = 0 writes zeros without reading C; a Hermitian diagonal is made real.
template <class T>
void scale_triangle(const rank_update<T>& u, index n, T* c, index ldc) {
  const bool beta_zero = u.beta == T(0);
  for (index j = 0; j < n; ++j) {
    const index first = u.lower ? j : 0;
    const index last = u.lower ? n : j + 1;
    T* cj = c + j * ldc;
    for (index i = first; i < last; ++i) cj[i] = beta_zero ? T(0) : u.beta * cj[i];
    if constexpr (is_complex_v<T>) {
      if (u.hermitian()) cj[j] = T(cj[j].real(), 0);
    }
  }
}

// The update of the order-n diagonal block of C at (i, i), halved until it fits a leaf:
//   C11 := beta·C11 + sum alpha·X1·op(Y1)       (recursively)
//   C21 := beta·C21 + sum alpha·X2·op(Y1)       (lower, one GEMM per term)
//   C12 := beta·C12 + sum alpha·X1·op(Y2)       (upper, one GEMM per term)
//   C22 := beta·C22 + sum alpha·X2·op(Y2)       (recursively)
// Halving keeps the off-diagonal GEMM calls as large and square as the triangle allows. A leaf
// is computed whole into the scratch square s (leaf x leaf) and merged into its triangle. The
// split falls on a multiple of the leaf counted from column 0 (i is one), so the leaves are the
// same diagonal blocks whichever panels the threads took: every element of C is then computed
// the same way for any thread count.
template <class T>
void update_triangle(const rank_update<T>& u, index i, index n, T* c, index ldc, T* s, index leaf) {
  if (n <= leaf) {
    add_block_product(u, i, n, i, n, T(0), s, n);
    merge_triangle(u, n, s, c + i + i * ldc, ldc);
    return;
  }
  const index blocks = (n + leaf - 1) / leaf;
  const index n1 = blocks / 2 * leaf;
  const index n2 = n - n1;
  update_triangle(u, i, n1, c, ldc, s, leaf);
  if (u.lower) {
    add_block_product(u, i + n1, n2, i, n1, u.beta, c + (i + n1) + i * ldc, ldc);
  } else {
    add_block_product(u, i, n1, i + n1, n2, u.beta, c + i + (i + n1) * ldc, ldc);
  }
  update_triangle(u, i + n1, n2, c, ldc, s, leaf);
}

// The columns [j0, j1) of the referenced triangle: the diagonal block, recursively, and the
// rectangle beside it, C(j1:n, j0:j1) below (lower) or C(0:j0, j0:j1) above (upper), by GEMM.
template <class T>
void update_panel(const rank_update<T>& u, index j0, index j1, index n, T* c, index ldc, T* s,
                  index leaf) {
  update_triangle(u, j0, j1 - j0, c, ldc, s, leaf);
  if (u.lower) {
    add_block_product(u, j1, n - j1, j0, j1 - j0, u.beta, c + j1 + j0 * ldc, ldc);
  } else {
    add_block_product(u, 0, j0, j0, j1 - j0, u.beta, c + j0 * ldc, ldc);
  }
}

// The first column of panel t of `team` panels of about equal area. The lower triangle holds
// n·j - j^2/2 elements left of column j, the upper one j^2/2, so the boundary of a fraction f
// of the area is n·(1 - sqrt(1 - f)) or n·sqrt(f), rounded to a multiple of the leaf (which
// also keeps two threads off one cache line of C).
inline index panel_start(bool lower, index n, int t, int team, index leaf) {
  if (t >= team) return n;
  const double f = static_cast<double>(t) / team;
  const double j = lower ? n * (1 - std::sqrt(1 - f)) : n * std::sqrt(f);
  return std::min<index>(n, (static_cast<index>(j) + leaf / 2) / leaf * leaf);
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
// do for n = 0 or for an empty sum with beta = 1; an empty sum otherwise only scales. Threads
// take column panels of equal area; each has its own scratch square and calls GEMM serially.
template <class T>
void update_rank_triangle(const rank_update<T>& u, index n, T* c, index ldc,
                          const char* operation) {
  if (n <= 0) return;
  const bool no_product = u.k <= 0 || u.terms[0].alpha == T(0);
  if (no_product) {
    if (u.beta != T(1)) scale_triangle(u, n, c, ldc);
    return;
  }
  const routine_name<T> name(operation);
  auto run_panel = [&](index j0, index j1) {
    using blocking = rank_update_blocking;
    if (j1 <= j0) return;
    scratch<T> buffer(static_cast<size_t>(blocking::leaf * blocking::leaf), 64);
    T fallback[blocking::fallback_leaf * blocking::fallback_leaf];
    const bool have_buffer = tav_serv_check_ptr_and_warn(buffer.data(), name.text) == 0;
    update_panel(u, j0, j1, n, c, ldc, have_buffer ? buffer.data() : fallback,
                 have_buffer ? blocking::leaf : blocking::fallback_leaf);
  };
  const int threads = rank_update_threads(n, u.k);
  if (threads <= 1) {
    run_panel(0, n);
    return;
  }
#pragma omp parallel num_threads(threads)
  {
    const int team = omp_get_num_threads(), t = omp_get_thread_num();
    constexpr index leaf = rank_update_blocking::leaf;
    run_panel(panel_start(u.lower, n, t, team, leaf), panel_start(u.lower, n, t + 1, team, leaf));
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
