// How many threads a general product gets and how C is cut among them: the thread-count formulas
// per code path and the two-dimensional grids of C blocks.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas {

// The thread count for an m x n x k product on code path `path` when `available` threads may be
// used (version-2 formulas; paths other than 6 and 7 follow the general row, which the version-1
// driver uses as well). At least 1.
int gemm_thread_count(int path, index m, index n, index k, int available);

// Whether the work alone settles gemm_thread_count at 1 whatever `available` is: W below 3000,
// the smallest small-work bound, on every path but 6 (whose tall-k rule may keep every thread).
// Lets a small product skip the threading service's query.
bool gemm_one_thread_by_work(int path, index m, index n, index k);

// Thread t of a team computes rows [(t mod row_blocks)·mb, +mb) and columns
// [(t div row_blocks)·nb, +nb) of C, clipped to m x n; a block starting outside C is empty.
// Blocks are disjoint and, for t < row_blocks·col_blocks <= team size, cover C.
struct c_grid {
  int row_blocks, col_blocks;
  index mb, nb;
};

// The stripes split: s = min(S, T) row stripes, max(1, T div S) column blocks, block edges
// rounded up to multiples of 8 so every block starts on a kernel-tile boundary.
c_grid stripes_grid(int stripes, int team, index m, index n);

// The split of the version-1 and version-2 drivers: row_blocks·col_blocks = team, chosen so the
// blocks are as near square as the team's factors allow (least packing per flop), edges in
// multiples of 8.
c_grid balanced_grid(int team, index m, index n);

// The split of the small-n kernels: rows only, since n is too narrow to cut.
c_grid rows_grid(int team, index m, index n);

// Whether a threaded product goes to the small-n kernels: only on paths 6 and 7, op(B) = B and
// op(A) transposed; n of 2 or 3, and on path 7 also n < 16 with a leading dimension that is a
// multiple of 256.
bool smalln_applies(int path, int transa, int transb, index n, index lda, index ldb, index ldc);

}  // namespace tav::blas
