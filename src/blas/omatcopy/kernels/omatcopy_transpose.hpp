// The transpose B(j, i) = op(A(i, j)): recursive halving of the longer side down to tiles, which
// are walked in 4x4 leaves transposed in registers.
#pragma once

#include <cstdint>

#include "blas/omatcopy/kernels/omatcopy_element.hpp"
#include "blas/omatcopy/kernels/omatcopy_vector.hpp"

namespace tav::TAV_PATH_NS::omatcopy {

// Line i of A starts at a + i·lda and holds its element j at + j·sa; B is written with its line
// j at b + j·ldb and element i at + i·sb. "Outer" counts the lines of A, "inner" their length.

// The plain leaf, two elements per step with a final odd one:
// B[j·ldb + i·sb] = op(A[i·lda + j·sa]).
template <class T, class Op>
void leaf_scalar(index outer, index inner, const T* a, index lda, index sa, T* b, index ldb,
                 index sb, const Op& op) {
  for (index i = 0; i < outer; ++i) {
    const T* a_line = a + i * lda;
    T* b_column = b + i * sb;
    index j = 0;
    for (; j + 2 <= inner; j += 2) {
      const T x0 = op(a_line[j * sa]);
      const T x1 = op(a_line[(j + 1) * sa]);
      b_column[j * ldb] = x0;
      b_column[(j + 1) * ldb] = x1;
    }
    if (j < inner) b_column[j * ldb] = op(a_line[j * sa]);
  }
}

// A full 4x4 leaf with unit element strides: four rows of A in registers, the operation, the
// register transpose, four rows of B. Streaming stores bypass the cache when the caller found
// B too large to stay there and the rows are aligned for them.
template <bool Stream, class T, class Op>
void leaf4x4(const T* a, index lda, T* b, index ldb, const row_op<T, Op>& op) {
  row4<T> r[4];
  for (int k = 0; k < 4; ++k) {
    r[k].load(a + k * lda);
    op(r[k]);
  }
  transpose(r);
  if (Stream && stream_aligned(b)) {
    for (int k = 0; k < 4; ++k) r[k].stream(b + k * ldb);
  } else {
    for (int k = 0; k < 4; ++k) r[k].store(b + k * ldb);
  }
}

// Where to cut n elements that start `at` elements into a cache line of `granule` elements:
// the middle rounded down to a line boundary, else to a leaf boundary, else floor(n / 2). Cuts
// on line boundaries let every leaf write whole cache lines of B and load whole lines of A.
inline index cut(index n, index at, index granule) {
  const index half = n / 2;
  const index on_line = half - (at + half) % granule;
  if (on_line > 0) return on_line;
  const index on_leaf = half - (at + half) % 4;
  return on_leaf > 0 ? on_leaf : half;
}

template <class T>
index line_position(const T* p) {
  return static_cast<index>(reinterpret_cast<uintptr_t>(p) / sizeof(T)) % line_elements<T>;
}

// Unit element strides: tiles of at most outer_side lines of A by inner_side elements, cut on
// cache lines. A tile writes long runs along each line of B, which keeps the streaming stores
// sequential in memory, and the 256 lines of A that a sweep reads (16 KiB) stay in the
// first-level cache until their other elements are used. 256 beat 64, 128 and 512 on a
// 4000 x 4000 double transpose (bench/RESULTS.md, "Out-of-place copy and transpose"). Lines of
// A a multiple of 4 KiB apart all fall into one set of that cache, which holds 8 of them: then,
// unless the stores stream, a tile has 8 lines (sides 512 and 1024 of double 1.3 to 1.5x as fast;
// streamed, the short runs along B were slower).
template <class T, class Op>
struct unit_tiles {
  static constexpr index tile_side = 256;
  static constexpr index aliased_side = 8;
  static constexpr index inner_side = tile_side;

  index lda, ldb;
  Op op;
  row_op<T, Op> rows;
  bool stream;
  index outer_side;

  static index outer_side_for(index lda, bool stream) {
    const bool aliased = (lda * static_cast<index>(sizeof(T))) % 4096 == 0;
    return aliased && !stream ? aliased_side : tile_side;
  }

  index cut_outer(index outer, const T*, const T* b) const {
    return cut(outer, line_position(b), line_elements<T>);
  }
  index cut_inner(index inner, const T* a, const T*) const {
    return cut(inner, line_position(a), line_elements<T>);
  }
  index a_outer() const { return lda; }
  index a_inner() const { return 1; }
  index b_outer() const { return 1; }
  index b_inner() const { return ldb; }

  void operator()(index outer, index inner, const T* a, T* b) const {
    if (stream)
      sweep<true>(outer, inner, a, b);
    else
      sweep<false>(outer, inner, a, b);
  }

  // Four lines of B at a time (j), each filled along i, so consecutive leaves complete lines.
  template <bool Stream>
  void sweep(index outer, index inner, const T* a, T* b) const {
    const index lda_ = lda, ldb_ = ldb;
    const row_op<T, Op> op_rows = rows;
    index j = 0;
    for (; j + 4 <= inner; j += 4) {
      const T* a_leaf = a + j;
      T* b_leaf = b + j * ldb_;
      index i = 0;
      for (; i + 4 <= outer; i += 4, a_leaf += 4 * lda_, b_leaf += 4)
        leaf4x4<Stream>(a_leaf, lda_, b_leaf, ldb_, op_rows);
      if (i < outer) leaf_scalar(outer - i, 4, a_leaf, lda_, 1, b_leaf, ldb_, 1, op);
    }
    if (j < inner) leaf_scalar(outer, inner - j, a + j, lda_, 1, b + j * ldb_, ldb_, 1, op);
  }
};

// Any element strides: leaves of at most 4x4 with the plain leaf, halves of floor(n / 2).
template <class T, class Op>
struct strided_tiles {
  static constexpr index outer_side = 4, inner_side = 4;

  index lda, sa, ldb, sb;
  Op op;

  index cut_outer(index outer, const T*, const T*) const { return outer / 2; }
  index cut_inner(index inner, const T*, const T*) const { return inner / 2; }
  index a_outer() const { return lda; }
  index a_inner() const { return sa; }
  index b_outer() const { return sb; }
  index b_inner() const { return ldb; }

  void operator()(index outer, index inner, const T* a, T* b) const {
    leaf_scalar(outer, inner, a, lda, sa, b, ldb, sb, op);
  }
};

// Halves the longer side (the inner one on a tie) of the sides that do not fit a tile yet, first
// half first, until both fit. The second half continues in the loop, so each cut costs one call.
template <class T, class Tiles>
void transpose_blocks(index outer, index inner, const T* a, T* b, const Tiles& tiles) {
  while (outer > tiles.outer_side || inner > tiles.inner_side) {
    if (outer <= tiles.outer_side || (inner > tiles.inner_side && outer <= inner)) {
      const index h = tiles.cut_inner(inner, a, b);
      transpose_blocks(outer, h, a, b, tiles);
      a += h * tiles.a_inner();
      b += h * tiles.b_inner();
      inner -= h;
    } else {
      const index h = tiles.cut_outer(outer, a, b);
      transpose_blocks(h, inner, a, b, tiles);
      a += h * tiles.a_outer();
      b += h * tiles.b_outer();
      outer -= h;
    }
  }
  tiles(outer, inner, a, b);
}

// omatcopy2_t: the transpose of `outer` lines of `inner` elements. Streaming needs every line
// of B to share one alignment, which a leading dimension of whole cache lines gives.
template <class T, class Op>
void transpose_lines(index outer, index inner, const T* a, index lda, index sa, T* b, index ldb,
                     index sb, const Op& op, bool stream) {
  if (sa == 1 && sb == 1) {
    using tiles_t = unit_tiles<T, Op>;
    const bool whole_lines = (ldb * static_cast<index>(sizeof(T))) % 64 == 0;
    const bool streamed = stream && whole_lines;
    const tiles_t tiles{lda, ldb, op, row_op<T, Op>(op), streamed,
                        tiles_t::outer_side_for(lda, streamed)};
    transpose_blocks(outer, inner, a, b, tiles);
  } else {
    transpose_blocks(outer, inner, a, b, strided_tiles<T, Op>{lda, sa, ldb, sb, op});
  }
}

}  // namespace tav::TAV_PATH_NS::omatcopy
