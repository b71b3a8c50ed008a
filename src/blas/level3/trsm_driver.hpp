// The driver shared by the triangular solve and the triangular product: it reduces every side and
// transpose to a left-side problem, splits the right-hand sides over the threads of the BLAS
// domain, and hands each slice, with its packing buffer, to the serial blocked algorithm.
#pragma once

#include <omp.h>
#include <tav/tav_error.h>
#include <tav/tav_threads.h>

#include <algorithm>

#include "blas/level3/trsm_operands.hpp"
#include "common/scratch.hpp"

namespace tav::blas {

struct triangular_blocking {
  // Order of the diagonal blocks: the GEMM updates between them have this inner dimension, and
  // the work on the diagonal grows with it (nb/m of the flops). With the register kernels 96, 128
  // and 192 ran within the noise of each other (a few percent) for dtrsm with m = n = 2000 on the
  // avx2 path, interleaved on 1 thread; 128 keeps the kernels' stack rows and packed block small.
  static constexpr index nb = 128;
  // Used when the packing buffer cannot be allocated: small enough for the stack.
  static constexpr index fallback_nb = 16;
  // Every thread gets at least this many right-hand sides, in multiples of `rhs_align` so that
  // no two threads write to one cache line of B when the slices are rows.
  static constexpr index min_rhs_per_thread = 32;
  static constexpr index rhs_align = 16;
  // Below order^2·rhs multiply-adds of this size one thread is faster than starting a team.
  static constexpr double min_parallel_work = 2.0e6;
};
static_assert(triangular_blocking::nb <= triangular_max_order);

// B := 0 over the stored m x n matrix, four rows per step when the columns are long enough for
// the unrolled loop to pay.
template <class T>
void zero_matrix(index m, index n, T* b, index ldb) {
  for (index j = 0; j < n; ++j) {
    T* column = b + j * ldb;
    index i = 0;
    if (m > 12) {
      for (; i + 4 <= m; i += 4) {
        column[i] = T(0);
        column[i + 1] = T(0);
        column[i + 2] = T(0);
        column[i + 3] = T(0);
      }
    }
    for (; i < m; ++i) column[i] = T(0);
  }
}

// B := conj(B) over the storage of a view.
template <class T>
void conjugate_view(const rhs_view<T>& b) {
  const index stored_rows = b.transposed ? b.cols : b.rows;
  const index stored_cols = b.transposed ? b.rows : b.cols;
  for (index j = 0; j < stored_cols; ++j) {
    T* column = b.p + j * b.ld;
    for (index i = 0; i < stored_rows; ++i) column[i] = std::conj(column[i]);
  }
}

// Threads for a left-side problem of the given order and number of right-hand sides: one inside
// a parallel region (the caller's threads are already busy) or for small work.
inline int triangular_threads(index order, index rhs) {
  using blocking = triangular_blocking;
  if (omp_in_parallel()) return 1;
  if (static_cast<double>(order) * static_cast<double>(order) * static_cast<double>(rhs) <
      blocking::min_parallel_work) {
    return 1;
  }
  const index by_rhs = rhs / blocking::min_rhs_per_thread;
  const int domain = tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS);
  return static_cast<int>(std::clamp<index>(by_rhs, 1, std::max(domain, 1)));
}

// Runs `left_blocked(op_a, alpha, B, packed, nb)`, the serial left-side algorithm, for any side.
// A right-side problem X = alpha·B·op(A)^{±1} is the left-side problem X^T = alpha·op(A)^T^{±1}·B^T
// on the transposed view of B, where op(A)^T is A^T for 'N' and A for 'T'. For 'C', op(A)^T is
// conj(A), which GEMM cannot express: conjugating the equation instead gives
// conj(X) = conj(alpha)·conj(B)·(A^T)^{±1}, a 'T' problem on conj(B), so B is conjugated before
// and after. Each thread takes a contiguous slice of the right-hand sides (columns of B for the
// left side, rows for the right side) and runs the whole blocked algorithm on it.
template <class T, class LeftBlocked>
void run_triangular(char side, char uplo, char transa, char diag, index m, index n, T alpha,
                    const T* a, index lda, T* b, index ldb, const char* operation,
                    LeftBlocked left_blocked) {
  using blocking = triangular_blocking;
  const bool right = upper_char(side) == 'R';
  const char trans = decode_trans<T>(transa);
  const bool conjugate = right && trans == 'C';
  const char left_trans = !right ? trans : (trans == 'N' ? 'T' : 'N');
  const T left_alpha = conjugate ? conj_if_complex(alpha) : alpha;
  const triangle_operand<T> op_a = make_triangle_operand(uplo, left_trans, diag, a, lda);
  const rhs_view<T> whole =
      right ? rhs_view<T>{b, n, m, ldb, true} : rhs_view<T>{b, m, n, ldb, false};
  const routine_name<T> name(operation);

  auto run_slice = [&](index first, index count) {
    if (count <= 0) return;
    const rhs_view<T> slice = whole.col_range(first, count);
    scratch<T> buffer(static_cast<size_t>(padded_order(blocking::nb) * padded_order(blocking::nb)),
                      64);
    T fallback[padded_order(blocking::fallback_nb) * padded_order(blocking::fallback_nb)];
    const bool have_buffer = tav_serv_check_ptr_and_warn(buffer.data(), name.text) == 0;
    T* packed = have_buffer ? buffer.data() : fallback;
    const index nb = have_buffer ? blocking::nb : blocking::fallback_nb;
    if constexpr (is_complex_v<T>) {
      if (conjugate) conjugate_view(slice);
    }
    left_blocked(op_a, left_alpha, slice, packed, nb);
    if constexpr (is_complex_v<T>) {
      if (conjugate) conjugate_view(slice);
    }
  };

  const index rhs = whole.cols;
  const int threads = triangular_threads(whole.rows, rhs);
  if (threads <= 1) {
    run_slice(0, rhs);
    return;
  }
#pragma omp parallel num_threads(threads)
  {
    const index team = omp_get_num_threads();
    const index share = (rhs + team - 1) / team;
    const index chunk =
        (share + blocking::rhs_align - 1) / blocking::rhs_align * blocking::rhs_align;
    const index first = std::min<index>(omp_get_thread_num() * chunk, rhs);
    run_slice(first, std::min(chunk, rhs - first));
  }
}

}  // namespace tav::blas
