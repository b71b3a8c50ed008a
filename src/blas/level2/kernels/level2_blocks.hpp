// What the level-2 kernels share beyond the vector vocabulary: the row blocking that keeps the
// reused vector in cache, and the gather of strided vectors into contiguous blocks.
#pragma once

#include <cstdint>

#include "common/simd.hpp"

namespace tav::TAV_PATH_NS {

using index = int64_t;

// Rows per block, in elements: the kernels sweep every column over one block of rows before the
// next, so the block of the vector they reuse (y for 'N', x for 'T' and the rank-1 update)
// stays in L1/L2. On the test machine 4096 rows beat 1024 by 10-40% for double 2000 x 2000 and
// 4000 x 4000 gemv and ger (32 and 128 MB matrices), where 1024 rows cut each column into 8 KB
// streams; below 1000 x 1000 the two were within noise.
constexpr index row_block = 4096;
// A strided vector is gathered into a stack buffer of this many elements, one block at a time.
constexpr index gather_block = 1024;

// The smaller of two sizes (kernel files keep clear of std::min).
inline index smaller(index a, index b) { return a < b ? a : b; }

// Copies `count` elements of `reals` reals each, element i from from[i·step·reals], to a
// contiguous `to`; and back.
template <class R>
void gather(index count, int reals, const R* from, index step, R* to) {
  for (index i = 0; i < count; ++i)
    for (int r = 0; r < reals; ++r) to[i * reals + r] = from[i * step * reals + r];
}

template <class R>
void scatter(index count, int reals, const R* from, R* to, index step) {
  for (index i = 0; i < count; ++i)
    for (int r = 0; r < reals; ++r) to[i * step * reals + r] = from[i * reals + r];
}

}  // namespace tav::TAV_PATH_NS
