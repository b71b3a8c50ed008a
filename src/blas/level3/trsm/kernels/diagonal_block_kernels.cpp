// The diagonal-block kernels of the triangular solve and product, per code path and element
// type: the right-hand sides of one packed diagonal block, four at a time, are gathered into
// lanes and solved or multiplied against the lower triangle in row blocks of four held in
// registers.
#include <cstdint>

#include "blas/level3/trsm_kernel_types.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS::triangular_block {
namespace {

using index = int64_t;

// Right-hand sides per pass, the loop the compiler vectorises in every lane operation below. A
// row block then keeps 4·lanes values in registers: with eight, two AVX vectors of doubles per
// row, the eight multiply-add chains cover the latency of both FMA units (four chains leave
// half of them idle); the SSE paths, with half as many lanes per register, keep four.
constexpr int lanes = TAV_PATH_ID >= 4 ? 8 : 4;

// Arithmetic on one element and on one row of `lanes` right-hand sides, for real data.
template <class Real>
struct real_arithmetic {
  using element = Real;
  struct row {
    Real v[lanes];
  };

  static element load(const Real* p, index k) { return p[k]; }
  static void store(Real* p, index k, element e) { p[k] = e; }
  static element mul(element a, element b) { return a * b; }
  static bool is_one(element a) { return a == Real(1); }
  static row zero() { return row{}; }
  static void set(row& x, int q, element e) { x.v[q] = e; }
  static element get(const row& x, int q) { return x.v[q]; }
  // acc - l·x, acc + l·x and l·x, by value: rows passed and returned whole stay in registers
  // across the loops below, where updates through a reference leave copies in memory.
  static row sub_product(row acc, element l, const row& x) {
    for (int q = 0; q < lanes; ++q) acc.v[q] -= l * x.v[q];
    return acc;
  }
  static row add_product(row acc, element l, const row& x) {
    for (int q = 0; q < lanes; ++q) acc.v[q] += l * x.v[q];
    return acc;
  }
  static row product(element l, const row& x) {
    row p;
    for (int q = 0; q < lanes; ++q) p.v[q] = l * x.v[q];
    return p;
  }
};

// The same for complex data, (re, im) pairs in memory and split into real and imaginary planes
// in a row, so that every lane operation is plain multiply-adds on four reals.
template <class Real>
struct complex_arithmetic {
  struct element {
    Real re, im;
  };
  struct row {
    Real re[lanes], im[lanes];
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
  static row zero() { return row{}; }
  static void set(row& x, int q, element e) {
    x.re[q] = e.re;
    x.im[q] = e.im;
  }
  static element get(const row& x, int q) { return {x.re[q], x.im[q]}; }
  static row sub_product(row acc, element l, const row& x) {
    for (int q = 0; q < lanes; ++q) {
      acc.re[q] -= l.re * x.re[q];
      acc.re[q] += l.im * x.im[q];
      acc.im[q] -= l.re * x.im[q];
      acc.im[q] -= l.im * x.re[q];
    }
    return acc;
  }
  static row add_product(row acc, element l, const row& x) {
    for (int q = 0; q < lanes; ++q) {
      acc.re[q] += l.re * x.re[q];
      acc.re[q] -= l.im * x.im[q];
      acc.im[q] += l.re * x.im[q];
      acc.im[q] += l.im * x.re[q];
    }
    return acc;
  }
  static row product(element l, const row& x) {
    row p;
    for (int q = 0; q < lanes; ++q) {
      p.re[q] = l.re * x.re[q] - l.im * x.im[q];
      p.im[q] = l.re * x.im[q] + l.im * x.re[q];
    }
    return p;
  }
};

// X := L^-1·X on n rows (a multiple of 4), L packed lower with reciprocal diagonal, leading
// dimension n. Left-looking by row blocks of four: the block's rows first take in every row
// already solved, x_i := x_i - sum_{c < r0} L(i, c)·x_c, with four accumulators in registers
// and each solved row loaded once per block; then forward substitution inside the 4 x 4
// diagonal triangle, x_i := (x_i - sum_{r0 <= p < i} L(i, p)·x_p)·(1 / L(i, i)).
template <class A, class Real>
void solve_rows(const Real* l, index n, typename A::row* x) {
  for (index r0 = 0; r0 < n; r0 += 4) {
    typename A::row acc[4] = {x[r0], x[r0 + 1], x[r0 + 2], x[r0 + 3]};
    for (index c = 0; c < r0; ++c) {
#pragma unroll
      for (int i = 0; i < 4; ++i) acc[i] = A::sub_product(acc[i], A::load(l, r0 + i + c * n), x[c]);
    }
#pragma unroll
    for (int i = 0; i < 4; ++i) {
#pragma unroll
      for (int p = 0; p < i; ++p)
        acc[i] = A::sub_product(acc[i], A::load(l, r0 + i + (r0 + p) * n), acc[p]);
      acc[i] = A::product(A::load(l, r0 + i + (r0 + i) * n), acc[i]);
      x[r0 + i] = acc[i];
    }
  }
}

// X := L·X on n rows (a multiple of 4), L packed lower, leading dimension n. Row block r0 of the
// product reads rows up to r0 + 3 only, so the blocks are finished from the bottom, leaving the
// rows above as they came in: x_i := sum_{r0 <= p <= i} L(i, p)·x_p + sum_{c < r0} L(i, c)·x_c.
template <class A, class Real>
void multiply_rows(const Real* l, index n, typename A::row* x) {
  for (index r0 = n - 4; r0 >= 0; r0 -= 4) {
    typename A::row acc[4];
#pragma unroll
    for (int i = 0; i < 4; ++i) {
      acc[i] = A::product(A::load(l, r0 + i + (r0 + i) * n), x[r0 + i]);
#pragma unroll
      for (int p = 0; p < i; ++p)
        acc[i] = A::add_product(acc[i], A::load(l, r0 + i + (r0 + p) * n), x[r0 + p]);
    }
    for (index c = 0; c < r0; ++c) {
#pragma unroll
      for (int i = 0; i < 4; ++i) acc[i] = A::add_product(acc[i], A::load(l, r0 + i + c * n), x[c]);
    }
#pragma unroll
    for (int i = 0; i < 4; ++i) x[r0 + i] = acc[i];
  }
}

// The kernel entry: for each group of `lanes` columns of B1, gather alpha·B1 into rows (zero in
// the padding rows and in the lanes past the last column, which the identity padding of L and
// the independence of the lanes keep from reaching real data), solve or multiply, scatter back.
template <class A, bool Solve, class Real>
void block_kernel(const Real* packed, index kb, const Real* alpha, Real* b, index row_step,
                  index col_stride, index cols) {
  const index n = tav::blas::padded_order(kb);
  typename A::row x[tav::blas::triangular_max_order];
  const typename A::element a = A::load(alpha, 0);
  const bool scaled = !A::is_one(a);
  for (index j = 0; j < cols; j += lanes) {
    const int width = cols - j < lanes ? static_cast<int>(cols - j) : lanes;
    for (index r = 0; r < n; ++r) {
      x[r] = A::zero();
      if (r >= kb) continue;
      for (int q = 0; q < width; ++q) {
        const typename A::element v = A::load(b, r * row_step + (j + q) * col_stride);
        A::set(x[r], q, scaled ? A::mul(a, v) : v);
      }
    }
    if constexpr (Solve)
      solve_rows<A>(packed, n, x);
    else
      multiply_rows<A>(packed, n, x);
    for (index r = 0; r < kb; ++r) {
      for (int q = 0; q < width; ++q)
        A::store(b, r * row_step + (j + q) * col_stride, A::get(x[r], q));
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
