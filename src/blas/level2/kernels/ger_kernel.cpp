// Per-path kernel of the rank-1 update A := beta·A + alpha·x·op(y)^T, op(y) = y or conj(y)
// (ger, geru, gerc, and GEMM's k = 1 case with its beta), column by column over a unit-stride
// block of x, for real and interleaved complex elements.
#include "blas/level2/kernels/level2_blocks.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS {
namespace {

// How the old column enters: not at all (beta = 0, never read), as is (beta = 1), scaled.
enum class beta_kind { zero, one, general };

// c[0..len) := beta·c + s·x over `len` reals; s = alpha·op(y_j). A complex product u·v is formed
// as u·v.re + swap_pairs(u)·(-v.im, v.im).
template <class R, bool cplx, beta_kind kind>
void update_column(index len, const R* x, R s_re, R s_im, R b_re, R b_im, R* c) {
  using P = simd<R>;
  using reg = typename P::reg;
  constexpr int w = P::width;
  const reg sr = P::broadcast(s_re), br = P::broadcast(b_re);
  reg si = sr, bi = br;
  if constexpr (cplx) {
    si = P::alternate(-s_im, s_im);
    bi = P::alternate(-b_im, b_im);
  }
  // One pack: c[k..k+w) := beta·c + s·x.
  const auto update = [&](index k) {
    const reg xv = P::load(x + k);
    reg acc = P::zero();
    if constexpr (kind == beta_kind::one) acc = P::load(c + k);
    if constexpr (kind == beta_kind::general) {
      const reg cv = P::load(c + k);
      acc = P::mul(cv, br);
      if constexpr (cplx) acc = P::mul_add(P::swap_pairs(cv), bi, acc);
    }
    acc = P::mul_add(xv, sr, acc);
    if constexpr (cplx) acc = P::mul_add(P::swap_pairs(xv), si, acc);
    P::store(c + k, acc);
  };
  index i = 0;
  // Four packs per step: the loop's own bookkeeping would otherwise cost as much as the update.
  for (; i + 4 * w <= len; i += 4 * w) {
    update(i);
    update(i + w);
    update(i + 2 * w);
    update(i + 3 * w);
  }
  for (; i + w <= len; i += w) update(i);
  if constexpr (cplx) {
    for (; i < len; i += 2) {
      R cr = 0, ci = 0;
      if constexpr (kind == beta_kind::one) {
        cr = c[i];
        ci = c[i + 1];
      }
      if constexpr (kind == beta_kind::general) {
        cr = mul_add(c[i + 1], -b_im, c[i] * b_re);
        ci = mul_add(c[i], b_im, c[i + 1] * b_re);
      }
      cr = mul_add(x[i + 1], -s_im, mul_add(x[i], s_re, cr));
      ci = mul_add(x[i], s_im, mul_add(x[i + 1], s_re, ci));
      c[i] = cr;
      c[i + 1] = ci;
    }
  } else {
    for (; i < len; ++i) {
      R cv = 0;
      if constexpr (kind == beta_kind::one) cv = c[i];
      if constexpr (kind == beta_kind::general) cv = c[i] * b_re;
      c[i] = mul_add(x[i], s_re, cv);
    }
  }
}

// x points at element 0 and element i lies at x + i·incx (incx may be negative); so for y.
template <class R, bool cplx, beta_kind kind>
void rank1(index m, index n, const R* alpha, const R* x, index incx, const R* y, index incy,
           const R* beta, R* a, index lda, bool conj) {
  constexpr int e = cplx ? 2 : 1;
  R buffer[gather_block * e];
  const index rows_per_block = incx == 1 ? row_block : gather_block;
  const R b_re = beta[0], b_im = cplx ? beta[1] : R(0);
  for (index row = 0; row < m; row += rows_per_block) {
    const index rows = smaller(rows_per_block, m - row);
    const R* block = x + row * e;
    if (incx != 1) {
      gather(rows, e, x + row * incx * e, incx, buffer);
      block = buffer;
    }
    for (index j = 0; j < n; ++j) {
      const R* yj = y + j * incy * e;
      R s_re = alpha[0] * yj[0], s_im = 0;
      if constexpr (cplx) {
        // s = alpha·op(y_j)
        const R yi = conj ? -yj[1] : yj[1];
        s_re = alpha[0] * yj[0] - alpha[1] * yi;
        s_im = alpha[0] * yi + alpha[1] * yj[0];
      }
      update_column<R, cplx, kind>(rows * e, block, s_re, s_im, b_re, b_im,
                                   a + (j * lda + row) * e);
    }
  }
}

template <class R, bool cplx>
void rank1_beta(index m, index n, const R* alpha, const R* x, index incx, const R* y, index incy,
                const R* beta, R* a, index lda, bool conj) {
  const bool imag_zero = !cplx || beta[1] == 0;
  if (imag_zero && beta[0] == 0)
    rank1<R, cplx, beta_kind::zero>(m, n, alpha, x, incx, y, incy, beta, a, lda, conj);
  else if (imag_zero && beta[0] == 1)
    rank1<R, cplx, beta_kind::one>(m, n, alpha, x, incx, y, incy, beta, a, lda, conj);
  else rank1<R, cplx, beta_kind::general>(m, n, alpha, x, incx, y, incy, beta, a, lda, conj);
}

}  // namespace
}  // namespace tav::TAV_PATH_NS

// The entries; complex ones take interleaved (re, im) arrays and alpha, beta as two reals each,
// and conj selects conj(y). Real entries ignore conj.
extern "C" void TAV_PATH_NAME(blas, xsger)(int64_t m, int64_t n, const float* alpha, const float* x,
                                           int64_t incx, const float* y, int64_t incy,
                                           const float* beta, float* a, int64_t lda, int conj) {
  tav::TAV_PATH_NS::rank1_beta<float, false>(m, n, alpha, x, incx, y, incy, beta, a, lda, false);
}

extern "C" void TAV_PATH_NAME(blas, xdger)(int64_t m, int64_t n, const double* alpha,
                                           const double* x, int64_t incx, const double* y,
                                           int64_t incy, const double* beta, double* a, int64_t lda,
                                           int conj) {
  tav::TAV_PATH_NS::rank1_beta<double, false>(m, n, alpha, x, incx, y, incy, beta, a, lda, false);
}

extern "C" void TAV_PATH_NAME(blas, xcger)(int64_t m, int64_t n, const float* alpha, const float* x,
                                           int64_t incx, const float* y, int64_t incy,
                                           const float* beta, float* a, int64_t lda, int conj) {
  tav::TAV_PATH_NS::rank1_beta<float, true>(m, n, alpha, x, incx, y, incy, beta, a, lda, conj != 0);
}

extern "C" void TAV_PATH_NAME(blas, xzger)(int64_t m, int64_t n, const double* alpha,
                                           const double* x, int64_t incx, const double* y,
                                           int64_t incy, const double* beta, double* a, int64_t lda,
                                           int conj) {
  tav::TAV_PATH_NS::rank1_beta<double, true>(m, n, alpha, x, incx, y, incy, beta, a, lda,
                                             conj != 0);
}
