// The function type of the per-path diagonal-block kernels of the triangular solve and product:
// a plain C signature over the real type, complex data as interleaved (re, im) pairs, so that the
// baseline drivers and every path's objects agree on it.
#pragma once

#include <cstdint>

namespace tav::blas {

// B1 := L^-1·(alpha·B1) (solve) or B1 := L·(alpha·B1) (product) for the kb x cols block B1 whose
// row r, column j is element b[r·row_step + j·col_stride] (row_step may be negative), with L the
// packed lower triangle of order kb, leading dimension padded_order(kb), as the packing writes it:
// reciprocal diagonal for the solve, identity beyond kb. alpha is one real or one (re, im) pair.
template <class Real>
using triangular_block_kernel = void(const Real* packed, int64_t kb, const Real* alpha, Real* b,
                                     int64_t row_step, int64_t col_stride, int64_t cols);

// The packed order: kb rounded up to the kernels' row block of 4. Internal linkage gives each
// path's objects their own copy, so no baseline caller can end up with a path's code.
static constexpr int64_t padded_order(int64_t kb) { return (kb + 3) / 4 * 4; }

// The largest kb the kernels accept (their work space lives on the stack).
constexpr int64_t triangular_max_order = 192;

}  // namespace tav::blas
