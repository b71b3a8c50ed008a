// The diagonal-block kernels of the triangular solve and product, per code path and element
// type: the right-hand sides of one packed diagonal block, a row's lanes at a time, are gathered
// into rows and solved or multiplied against the lower triangle in row blocks of four held in
// registers.
#include <cstdint>

#include "blas/level3/trsm_kernel_types.hpp"
#include "common/path_naming.hpp"
#include "common/simd.hpp"

namespace tav::TAV_PATH_NS::triangular_block {
namespace {

using index = int64_t;

// The vectors of a row: 256 bits on every AVX path, the AVX-512 ones included (512 bits would
// double the lanes for little, the diagonal blocks being a small share of the solve), 128 bits
// before.
#if defined(__AVX__)
template <class Real>
using vec = simd256<Real>;
#else
template <class Real>
using vec = simd128<Real>;
#endif

// Arithmetic on one element and on one row of `lanes` right-hand sides, for real data. A row in
// registers is two vectors, so that a row block keeps eight multiply-add chains going: enough to
// cover the latency of two FMA units, where four chains leave half of them idle. In memory a row
// is its `row_reals` lanes in order.
template <class Real>
struct real_arithmetic {
  using V = vec<Real>;
  using reg = typename V::reg;
  static constexpr int lanes = 2 * V::width;
  static constexpr int row_reals = lanes;
  using element = Real;
  using coefficient = reg;
  struct row {
    reg lo, hi;
  };

  static element load(const Real* p, index k) { return p[k]; }
  static void store(Real* p, index k, element e) { p[k] = e; }
  static element mul(element a, element b) { return a * b; }
  static bool is_one(element a) { return a == Real(1); }
  static void put(Real* x, int q, element e) { x[q] = e; }
  static element take(const Real* x, int q) { return x[q]; }
  static row load_row(const Real* x) { return {V::load(x), V::load(x + V::width)}; }
  static void store_row(Real* x, row v) {
    V::store(x, v.lo);
    V::store(x + V::width, v.hi);
  }
  // Element k of the packed triangle in every lane.
  static coefficient broadcast(const Real* l, index k) { return V::broadcast_load(l + k); }
  // acc - l·x, acc + l·x and l·x.
  static row sub_product(row acc, coefficient l, row x) {
    return {V::neg_mul_add(l, x.lo, acc.lo), V::neg_mul_add(l, x.hi, acc.hi)};
  }
  static row add_product(row acc, coefficient l, row x) {
    return {V::mul_add(l, x.lo, acc.lo), V::mul_add(l, x.hi, acc.hi)};
  }
  static row product(coefficient l, row x) { return {V::mul(l, x.lo), V::mul(l, x.hi)}; }

  // A tile of `tile_rows` right-hand-side rows, all lanes, between B and the stored rows x, by
  // register transposes: the column of lane q holds the tile as consecutive elements from
  // t + q·col_stride, the first row first, or the last row first when `reversed`.
  static constexpr int tile_rows = V::width;
  static void load_tile(const Real* t, index col_stride, bool reversed, reg scale, Real* x) {
    for (int half = 0; half < 2; ++half) {
      reg v[V::width];
      for (int q = 0; q < V::width; ++q)
        v[q] = V::mul(scale, V::load(t + (half * V::width + q) * col_stride));
      V::transpose(v);
      for (int i = 0; i < V::width; ++i)
        V::store(x + (reversed ? V::width - 1 - i : i) * row_reals + half * V::width, v[i]);
    }
  }
  static void store_tile(Real* t, index col_stride, bool reversed, const Real* x) {
    for (int half = 0; half < 2; ++half) {
      reg v[V::width];
      for (int i = 0; i < V::width; ++i)
        v[i] = V::load(x + (reversed ? V::width - 1 - i : i) * row_reals + half * V::width);
      V::transpose(v);
      for (int q = 0; q < V::width; ++q) V::store(t + (half * V::width + q) * col_stride, v[q]);
    }
  }
};

// The same for complex data, (re, im) pairs in memory and split into a vector of real parts and
// one of imaginary parts in a row (in memory: the real parts, then the imaginary ones), so that
// every lane operation is plain multiply-adds; the two halves again give eight chains.
template <class Real>
struct complex_arithmetic {
  using V = vec<Real>;
  using reg = typename V::reg;
  static constexpr int lanes = V::width;
  static constexpr int row_reals = 2 * lanes;
  struct element {
    Real re, im;
  };
  struct coefficient {
    reg re, im;
  };
  struct row {
    reg re, im;
  };

  static element load(const Real* p, index k) { return {p[2 * k], p[2 * k + 1]}; }
  static void store(Real* p, index k, element e) {
    p[2 * k] = e.re;
    p[2 * k + 1] = e.im;
  }
  static element mul(element a, element b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
  }
  static bool is_one(element a) { return a.re == Real(1) && a.im == Real(0); }
  static void put(Real* x, int q, element e) {
    x[q] = e.re;
    x[lanes + q] = e.im;
  }
  static element take(const Real* x, int q) { return {x[q], x[lanes + q]}; }
  static row load_row(const Real* x) { return {V::load(x), V::load(x + lanes)}; }
  static void store_row(Real* x, row v) {
    V::store(x, v.re);
    V::store(x + lanes, v.im);
  }
  static coefficient broadcast(const Real* l, index k) {
    return {V::broadcast_load(l + 2 * k), V::broadcast_load(l + 2 * k + 1)};
  }
  static row sub_product(row acc, coefficient l, row x) {
    const reg re = V::mul_add(l.im, x.im, V::neg_mul_add(l.re, x.re, acc.re));
    const reg im = V::neg_mul_add(l.im, x.re, V::neg_mul_add(l.re, x.im, acc.im));
    return {re, im};
  }
  static row add_product(row acc, coefficient l, row x) {
    const reg re = V::neg_mul_add(l.im, x.im, V::mul_add(l.re, x.re, acc.re));
    const reg im = V::mul_add(l.im, x.re, V::mul_add(l.re, x.im, acc.im));
    return {re, im};
  }
  static row product(coefficient l, row x) {
    return {V::neg_mul_add(l.im, x.im, V::mul(l.re, x.re)),
            V::mul_add(l.im, x.re, V::mul(l.re, x.im))};
  }

  // Pairs in B would need a shuffle of their own: the rows go one element at a time.
  static constexpr int tile_rows = 0;
};

// X := L^-1·X on n rows (a multiple of 4) stored A::row_reals apart, L packed lower with
// reciprocal diagonal, leading dimension n. Left-looking by row blocks of four: the block's rows
// first take in every row already solved, x_i := x_i - sum_{c < r0} L(i, c)·x_c, with four
// accumulators in registers and each solved row loaded once per block; then forward
// substitution inside the 4 x 4 diagonal triangle, x_i := (x_i - sum_{r0 <= p < i} L(i, p)·x_p)·
// (1 / L(i, i)).
template <class A, class Real>
void solve_rows(const Real* l, index n, Real* x) {
  constexpr int w = A::row_reals;
  for (index r0 = 0; r0 < n; r0 += 4) {
    typename A::row acc[4];
#pragma unroll
    for (int i = 0; i < 4; ++i) acc[i] = A::load_row(x + (r0 + i) * w);
    for (index c = 0; c < r0; ++c) {
      const typename A::row xc = A::load_row(x + c * w);
#pragma unroll
      for (int i = 0; i < 4; ++i)
        acc[i] = A::sub_product(acc[i], A::broadcast(l, r0 + i + c * n), xc);
    }
#pragma unroll
    for (int i = 0; i < 4; ++i) {
#pragma unroll
      for (int p = 0; p < i; ++p)
        acc[i] = A::sub_product(acc[i], A::broadcast(l, r0 + i + (r0 + p) * n), acc[p]);
      acc[i] = A::product(A::broadcast(l, r0 + i + (r0 + i) * n), acc[i]);
      A::store_row(x + (r0 + i) * w, acc[i]);
    }
  }
}

// X := L·X on n rows (a multiple of 4) stored A::row_reals apart, L packed lower, leading
// dimension n. Row block r0 of the product reads rows up to r0 + 3 only, so the blocks are
// finished from the bottom, leaving the rows above as they came in:
// x_i := sum_{r0 <= p <= i} L(i, p)·x_p + sum_{c < r0} L(i, c)·x_c.
template <class A, class Real>
void multiply_rows(const Real* l, index n, Real* x) {
  constexpr int w = A::row_reals;
  for (index r0 = n - 4; r0 >= 0; r0 -= 4) {
    typename A::row acc[4];
#pragma unroll
    for (int i = 0; i < 4; ++i) {
      acc[i] = A::product(A::broadcast(l, r0 + i + (r0 + i) * n), A::load_row(x + (r0 + i) * w));
#pragma unroll
      for (int p = 0; p < i; ++p)
        acc[i] = A::add_product(acc[i], A::broadcast(l, r0 + i + (r0 + p) * n),
                                A::load_row(x + (r0 + p) * w));
    }
    for (index c = 0; c < r0; ++c) {
      const typename A::row xc = A::load_row(x + c * w);
#pragma unroll
      for (int i = 0; i < 4; ++i)
        acc[i] = A::add_product(acc[i], A::broadcast(l, r0 + i + c * n), xc);
    }
#pragma unroll
    for (int i = 0; i < 4; ++i) A::store_row(x + (r0 + i) * w, acc[i]);
  }
}

// The kernel entry: for each group of A::lanes columns of B1, gather alpha·B1 into rows (zero in
// the padding rows and in the lanes past the last column, which the identity padding of L and
// the independence of the lanes keep from reaching real data), solve or multiply, scatter back.
// When the rows of a full group are consecutive in each column (B1 not transposed), whole tiles
// of rows move by register transposes and only the last kb mod tile_rows one element at a time.
template <class A, bool Solve, class Real>
void block_kernel(const Real* packed, index kb, const Real* alpha, Real* b, index row_step,
                  index col_stride, index cols) {
  constexpr int lanes = A::lanes, w = A::row_reals, tile = A::tile_rows;
  const index n = tav::blas::padded_order(kb);
  alignas(64) Real x[tav::blas::triangular_max_order * w];
  const typename A::element a = A::load(alpha, 0);
  const bool scaled = !A::is_one(a);
  const bool reversed = row_step < 0;
  // The lowest address of the tile at row r in the first column of the group.
  auto tile_start = [&](index r, index j) {
    return r * row_step + (reversed ? 1 - tile : 0) + j * col_stride;
  };
  for (index j = 0; j < cols; j += lanes) {
    const int width = cols - j < lanes ? static_cast<int>(cols - j) : lanes;
    const bool tiled = tile > 0 && width == lanes && (row_step == 1 || row_step == -1);
    index tiled_rows = 0;
    if constexpr (tile > 0) {
      if (tiled) {
        const auto scale = A::V::broadcast(a);
        for (; tiled_rows + tile <= kb; tiled_rows += tile)
          A::load_tile(b + tile_start(tiled_rows, j), col_stride, reversed, scale,
                       x + tiled_rows * w);
      }
    }
    for (index r = tiled_rows; r < n; ++r) {
      Real* xr = x + r * w;
      const int filled = r < kb ? width : 0;
      for (int q = 0; q < filled; ++q) {
        const typename A::element v = A::load(b, r * row_step + (j + q) * col_stride);
        A::put(xr, q, scaled ? A::mul(a, v) : v);
      }
      for (int q = filled; q < lanes; ++q) A::put(xr, q, typename A::element{});
    }
    if constexpr (Solve)
      solve_rows<A>(packed, n, x);
    else
      multiply_rows<A>(packed, n, x);
    index r = 0;
    if constexpr (tile > 0) {
      if (tiled) {
        for (; r + tile <= kb; r += tile)
          A::store_tile(b + tile_start(r, j), col_stride, reversed, x + r * w);
      }
    }
    for (; r < kb; ++r) {
      for (int q = 0; q < width; ++q)
        A::store(b, r * row_step + (j + q) * col_stride, A::take(x + r * w, q));
    }
  }
}

}  // namespace
}  // namespace tav::TAV_PATH_NS::triangular_block

namespace block = tav::TAV_PATH_NS::triangular_block;

// tav_blas_<tag>_x<t><op>_block, with op trsm (Solve) or trmm, element arithmetic A on Real.
#define TAV_TRIANGULAR_BLOCK(name, Real, A, Solve)                                                \
  void TAV_PATH_NAME(blas, name)(const Real* packed, int64_t kb, const Real* alpha, Real* b,      \
                                 int64_t row_step, int64_t col_stride, int64_t cols) {            \
    block::block_kernel<block::A<Real>, Solve>(packed, kb, alpha, b, row_step, col_stride, cols); \
  }

extern "C" {

TAV_TRIANGULAR_BLOCK(xstrsm_block, float, real_arithmetic, true)
TAV_TRIANGULAR_BLOCK(xdtrsm_block, double, real_arithmetic, true)
TAV_TRIANGULAR_BLOCK(xctrsm_block, float, complex_arithmetic, true)
TAV_TRIANGULAR_BLOCK(xztrsm_block, double, complex_arithmetic, true)
TAV_TRIANGULAR_BLOCK(xstrmm_block, float, real_arithmetic, false)
TAV_TRIANGULAR_BLOCK(xdtrmm_block, double, real_arithmetic, false)
TAV_TRIANGULAR_BLOCK(xctrmm_block, float, complex_arithmetic, false)
TAV_TRIANGULAR_BLOCK(xztrmm_block, double, complex_arithmetic, false)

}  // extern "C"
