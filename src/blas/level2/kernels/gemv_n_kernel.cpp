// Per-path kernel of y := y + alpha·A·x (gemv 'N'): four columns at a time as chained
// multiply-adds over a unit-stride block of y, for real and interleaved complex elements.
#include "blas/level2/kernels/level2_blocks.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS {
namespace {

constexpr int group = 4;

// y[0..len) += a_0·s_0 + a_1·s_1 + ... for `count` columns in column order: each element takes
// the chain y := y + a_j·s_j (real) or y := (y + a_j·s_j.re) + i·a_j·s_j.im (complex) one column
// after another, so its roundings do not depend on how columns are grouped or rows split.
// `len` counts reals; s_re/s_im hold s_j = alpha·x_j.
template <class R, bool cplx, int count>
void update_columns(index len, const R* const* col, const R* s_re, const R* s_im, R* y) {
  using P = simd<R>;
  constexpr int w = P::width;
  typename P::reg re[count], im[count];
  for (int g = 0; g < count; ++g) {
    re[g] = P::broadcast(s_re[g]);
    if constexpr (cplx) im[g] = P::alternate(-s_im[g], s_im[g]);
  }
  // One pack: y[k..k+w) += a_j[k..k+w)·s_j for each column in order.
  const auto update = [&](index k) {
    typename P::reg acc = P::load(y + k);
    for (int g = 0; g < count; ++g) {
      const typename P::reg av = P::load(col[g] + k);
      acc = P::mul_add(av, re[g], acc);
      if constexpr (cplx) acc = P::mul_add(P::swap_pairs(av), im[g], acc);
    }
    P::store(y + k, acc);
  };
  index i = 0;
  // Two packs per step: two independent chains, and half the loop bookkeeping.
  for (; i + 2 * w <= len; i += 2 * w) {
    update(i);
    update(i + w);
  }
  if (i + w <= len) {
    update(i);
    i += w;
  }
  if constexpr (cplx) {
    for (; i < len; i += 2) {
      R yr = y[i], yi = y[i + 1];
      for (int g = 0; g < count; ++g) {
        const R ar = col[g][i], ai = col[g][i + 1];
        yr = mul_add(ar, s_re[g], yr);
        yr = mul_add(ai, -s_im[g], yr);
        yi = mul_add(ai, s_re[g], yi);
        yi = mul_add(ar, s_im[g], yi);
      }
      y[i] = yr;
      y[i + 1] = yi;
    }
  } else {
    for (; i < len; ++i) {
      R yv = y[i];
      for (int g = 0; g < count; ++g) yv = mul_add(col[g][i], s_re[g], yv);
      y[i] = yv;
    }
  }
}

// Columns j0 .. j0+count-1 over rows [row, row + rows) of A into the y block.
template <class R, bool cplx, int count>
void update_group(index rows, index row, index j0, const R* alpha, const R* a, index lda,
                  const R* x, index incx, R* y) {
  constexpr int e = cplx ? 2 : 1;
  const R* col[count];
  R s_re[count], s_im[count];
  for (int g = 0; g < count; ++g) {
    const index j = j0 + g;
    col[g] = a + (j * lda + row) * e;
    const R* xj = x + j * incx * e;
    if constexpr (cplx) {
      // s = alpha·x_j
      s_re[g] = alpha[0] * xj[0] - alpha[1] * xj[1];
      s_im[g] = alpha[0] * xj[1] + alpha[1] * xj[0];
    } else {
      s_re[g] = alpha[0] * xj[0];
      s_im[g] = 0;
    }
  }
  update_columns<R, cplx, count>(rows * e, col, s_re, s_im, y);
}

// x points at element 0 and element j lies at x + j·incx (incx may be negative); so for y.
template <class R, bool cplx>
void gemv_n(index m, index n, const R* alpha, const R* a, index lda, const R* x, index incx, R* y,
            index incy) {
  constexpr int e = cplx ? 2 : 1;
  R buffer[gather_block * e];
  const index rows_per_block = incy == 1 ? row_block : gather_block;
  for (index row = 0; row < m; row += rows_per_block) {
    const index rows = smaller(rows_per_block, m - row);
    R* block = incy == 1 ? y + row * e : buffer;
    if (incy != 1) gather(rows, e, y + row * incy * e, incy, buffer);
    index j = 0;
    for (; j + group <= n; j += group)
      update_group<R, cplx, group>(rows, row, j, alpha, a, lda, x, incx, block);
    for (; j < n; ++j) update_group<R, cplx, 1>(rows, row, j, alpha, a, lda, x, incx, block);
    if (incy != 1) scatter(rows, e, buffer, y + row * incy * e, incy);
  }
}

}  // namespace
}  // namespace tav::TAV_PATH_NS

// The entries; complex ones take interleaved (re, im) arrays and alpha as two reals.
extern "C" void TAV_PATH_NAME(blas, xsgemv_n)(int64_t m, int64_t n, const float* alpha,
                                              const float* a, int64_t lda, const float* x,
                                              int64_t incx, float* y, int64_t incy) {
  tav::TAV_PATH_NS::gemv_n<float, false>(m, n, alpha, a, lda, x, incx, y, incy);
}

extern "C" void TAV_PATH_NAME(blas, xdgemv_n)(int64_t m, int64_t n, const double* alpha,
                                              const double* a, int64_t lda, const double* x,
                                              int64_t incx, double* y, int64_t incy) {
  tav::TAV_PATH_NS::gemv_n<double, false>(m, n, alpha, a, lda, x, incx, y, incy);
}

extern "C" void TAV_PATH_NAME(blas, xcgemv_n)(int64_t m, int64_t n, const float* alpha,
                                              const float* a, int64_t lda, const float* x,
                                              int64_t incx, float* y, int64_t incy) {
  tav::TAV_PATH_NS::gemv_n<float, true>(m, n, alpha, a, lda, x, incx, y, incy);
}

extern "C" void TAV_PATH_NAME(blas, xzgemv_n)(int64_t m, int64_t n, const double* alpha,
                                              const double* a, int64_t lda, const double* x,
                                              int64_t incx, double* y, int64_t incy) {
  tav::TAV_PATH_NS::gemv_n<double, true>(m, n, alpha, a, lda, x, incx, y, incy);
}
