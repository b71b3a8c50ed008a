// How the parallel copy and transpose shares an R x C matrix among T threads: a two-dimensional
// split when T, R and C are powers of two and T <= R·C, else a split of the columns.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas {

// Thread t's block: rows [row0, row0 + rows) and columns [col0, col0 + cols) of the matrix.
struct omatcopy_block {
  index row0, rows, col0, cols;
};

inline bool is_power_of_two(index x) { return x > 0 && (x & (x - 1)) == 0; }

inline omatcopy_block omatcopy_share(index team, index t, index rows, index cols) {
  if (is_power_of_two(team) && is_power_of_two(rows) && is_power_of_two(cols) &&
      team <= rows * cols) {
    // Each halving of the share count halves the block along its longer side, rows on a tie.
    index block_rows = rows, block_cols = cols, column_blocks = 1;
    for (index shares = team; shares > 1; shares /= 2) {
      if (block_rows < block_cols) {
        block_cols /= 2;
        column_blocks *= 2;
      } else {
        block_rows /= 2;
      }
    }
    return {(t / column_blocks) * block_rows, block_rows, (t % column_blocks) * block_cols,
            block_cols};
  }
  // C div T columns each; the last C mod T threads take one more.
  const index share = cols / team;
  const index plain = team - cols % team;
  const index col0 = t * share + (t > plain ? t - plain : 0);
  return {0, rows, col0, share + (t >= plain ? 1 : 0)};
}

}  // namespace tav::blas
