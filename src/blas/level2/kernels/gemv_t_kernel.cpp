// Per-path kernel of y := y + alpha·op(A)·x with op = transpose or conjugate transpose (gemv 'T'
// and 'C'): four dot products at a time over a unit-stride block of x, for real and interleaved
// complex elements.
#include "blas/level2/kernels/level2_blocks.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS {
namespace {

constexpr int group = 4;

// The four partial sums of one complex dot product a·x over interleaved lanes:
// rr = sum a_re·x_re, ii = sum a_im·x_im, ri = sum a_re·x_im, ir = sum a_im·x_re.
template <class R>
struct partial {
  R rr, ii, ri, ir;
};

// Dot products of `count` columns with the x block; `len` counts reals. Each column keeps its own
// accumulators, reduced in lane order and then extended by the remainder in row order, so a
// column's result does not depend on the group it was computed in.
template <class R, bool cplx, int count>
void dot_columns(index len, const R* const* col, const R* x, partial<R>* out) {
  using P = simd<R>;
  using reg = typename P::reg;
  constexpr int w = P::width;
  reg acc0[count], acc1[count];
  for (int g = 0; g < count; ++g) acc0[g] = acc1[g] = P::zero();
  index i = 0;
  if constexpr (cplx) {
    // acc0 += a·x gives (a_re·x_re, a_im·x_im) lanes, acc1 += a·swap(x) gives (a_re·x_im,
    // a_im·x_re).
    for (; i + w <= len; i += w) {
      const reg xv = P::load(x + i);
      const reg xs = P::swap_pairs(xv);
      for (int g = 0; g < count; ++g) {
        const reg av = P::load(col[g] + i);
        acc0[g] = P::mul_add(av, xv, acc0[g]);
        acc1[g] = P::mul_add(av, xs, acc1[g]);
      }
    }
    for (int g = 0; g < count; ++g) {
      partial<R> p{lane_sum<P, R>(acc0[g], 0, 2), lane_sum<P, R>(acc0[g], 1, 2),
                   lane_sum<P, R>(acc1[g], 0, 2), lane_sum<P, R>(acc1[g], 1, 2)};
      for (index k = i; k < len; k += 2) {
        const R ar = col[g][k], ai = col[g][k + 1];
        p.rr = mul_add(ar, x[k], p.rr);
        p.ii = mul_add(ai, x[k + 1], p.ii);
        p.ri = mul_add(ar, x[k + 1], p.ri);
        p.ir = mul_add(ai, x[k], p.ir);
      }
      out[g] = p;
    }
  } else {
    // Two accumulators per column: even and odd packs, for twice the independent chains.
    for (; i + 2 * w <= len; i += 2 * w) {
      const reg x0 = P::load(x + i);
      const reg x1 = P::load(x + i + w);
      for (int g = 0; g < count; ++g) {
        acc0[g] = P::mul_add(P::load(col[g] + i), x0, acc0[g]);
        acc1[g] = P::mul_add(P::load(col[g] + i + w), x1, acc1[g]);
      }
    }
    if (i + w <= len) {
      const reg x0 = P::load(x + i);
      for (int g = 0; g < count; ++g) acc0[g] = P::mul_add(P::load(col[g] + i), x0, acc0[g]);
      i += w;
    }
    for (int g = 0; g < count; ++g) {
      R sum = lane_sum<P, R>(P::add(acc0[g], acc1[g]), 0, 1);
      for (index k = i; k < len; ++k) sum = mul_add(col[g][k], x[k], sum);
      out[g] = partial<R>{sum, 0, 0, 0};
    }
  }
}

// y_j += alpha·d_j for columns j0 .. j0+count-1 over rows [row, row + rows), with d_j the
// (conjugated, for 'C') dot product of column j with the x block.
template <class R, bool cplx, int count>
void dot_group(index rows, index row, index j0, const R* alpha, const R* a, index lda, const R* x,
               R* y, index incy, bool conj) {
  constexpr int e = cplx ? 2 : 1;
  const R* col[count];
  for (int g = 0; g < count; ++g) col[g] = a + ((j0 + g) * lda + row) * e;
  partial<R> p[count];
  dot_columns<R, cplx, count>(rows * e, col, x, p);
  for (int g = 0; g < count; ++g) {
    R* yj = y + (j0 + g) * incy * e;
    if constexpr (cplx) {
      // a·x = (rr - ii) + i(ri + ir); conj(a)·x = (rr + ii) + i(ri - ir)
      const R dr = conj ? p[g].rr + p[g].ii : p[g].rr - p[g].ii;
      const R di = conj ? p[g].ri - p[g].ir : p[g].ri + p[g].ir;
      yj[0] += alpha[0] * dr - alpha[1] * di;
      yj[1] += alpha[0] * di + alpha[1] * dr;
    } else {
      yj[0] += alpha[0] * p[g].rr;
    }
  }
}

// x points at element 0 and element i lies at x + i·incx (incx may be negative); so for y.
template <class R, bool cplx>
void gemv_t(index m, index n, const R* alpha, const R* a, index lda, const R* x, index incx, R* y,
            index incy, bool conj) {
  constexpr int e = cplx ? 2 : 1;
  R buffer[gather_block * e];
  const index rows_per_block = incx == 1 ? row_block : gather_block;
  for (index row = 0; row < m; row += rows_per_block) {
    const index rows = smaller(rows_per_block, m - row);
    const R* block = x + row * e;
    if (incx != 1) {
      gather(rows, e, x + row * incx * e, incx, buffer);
      block = buffer;
    }
    index j = 0;
    for (; j + group <= n; j += group)
      dot_group<R, cplx, group>(rows, row, j, alpha, a, lda, block, y, incy, conj);
    for (; j < n; ++j) dot_group<R, cplx, 1>(rows, row, j, alpha, a, lda, block, y, incy, conj);
  }
}

}  // namespace
}  // namespace tav::TAV_PATH_NS

// The entries; complex ones take interleaved (re, im) arrays and alpha as two reals, and conj
// selects conj(A)^T. Real entries ignore conj.
extern "C" void TAV_PATH_NAME(blas, xsgemv_t)(int64_t m, int64_t n, const float* alpha,
                                              const float* a, int64_t lda, const float* x,
                                              int64_t incx, float* y, int64_t incy, int conj) {
  tav::TAV_PATH_NS::gemv_t<float, false>(m, n, alpha, a, lda, x, incx, y, incy, false);
}

extern "C" void TAV_PATH_NAME(blas, xdgemv_t)(int64_t m, int64_t n, const double* alpha,
                                              const double* a, int64_t lda, const double* x,
                                              int64_t incx, double* y, int64_t incy, int conj) {
  tav::TAV_PATH_NS::gemv_t<double, false>(m, n, alpha, a, lda, x, incx, y, incy, false);
}

extern "C" void TAV_PATH_NAME(blas, xcgemv_t)(int64_t m, int64_t n, const float* alpha,
                                              const float* a, int64_t lda, const float* x,
                                              int64_t incx, float* y, int64_t incy, int conj) {
  tav::TAV_PATH_NS::gemv_t<float, true>(m, n, alpha, a, lda, x, incx, y, incy, conj != 0);
}

extern "C" void TAV_PATH_NAME(blas, xzgemv_t)(int64_t m, int64_t n, const double* alpha,
                                              const double* a, int64_t lda, const double* x,
                                              int64_t incx, double* y, int64_t incy, int conj) {
  tav::TAV_PATH_NS::gemv_t<double, true>(m, n, alpha, a, lda, x, incx, y, incy, conj != 0);
}
