// The matrix-vector product y := alpha·op(A)·x + beta·y: quick returns, the beta step, and the
// split over threads, rows for op(A) = A and columns otherwise, of the per-path kernels.
#include <complex>

#include "blas/blas_internal.hpp"
#include "blas/level2/level2_kernels.hpp"
#include "blas/level2/level2_threads.hpp"
#include "blas/level2/strided_vectors.hpp"

namespace tav::blas {
namespace {

// Row ranges of the 'N' split start at multiples of 64 rows, whole cache lines of y.
constexpr index row_grain = 64;
// Column ranges of the 'T' split start at multiples of the kernel's four-column group.
constexpr index column_grain = 4;

}  // namespace

template <class T>
void gemv(char trans, index m, index n, T alpha, const T* a, index lda, const T* x, index incx,
          T beta, T* y, index incy) {
  if (m <= 0 || n <= 0 || (alpha == T(0) && beta == T(1))) return;
  const char op = option(trans);
  const bool no_trans = op == 'N';
  const index len_x = no_trans ? n : m, len_y = no_trans ? m : n;
  T* y0 = first_element(y, len_y, incy);
  scale_by_beta(len_y, beta, y0, incy);
  // alpha = 0 reads neither A nor x.
  if (alpha == T(0)) return;
  const T* x0 = first_element(x, len_x, incx);
  const real_t<T>* al = reals(&alpha);
  if (no_trans) {
    // y(r0:r1) += alpha·A(r0:r1, :)·x
    for_ranges(m, row_grain, m * n, [&](index r0, index r1) {
      level2_slots<T>::gemv_n(r1 - r0, n, al, reals(a + r0), lda, reals(x0), incx,
                              reals(y0 + r0 * incy), incy);
    });
  } else {
    const int conj = is_complex_v<T> && op == 'C' ? 1 : 0;
    // y(c0:c1) += alpha·op(A(:, c0:c1))·x
    for_ranges(n, column_grain, m * n, [&](index c0, index c1) {
      level2_slots<T>::gemv_t(m, c1 - c0, al, reals(a + c0 * lda), lda, reals(x0), incx,
                              reals(y0 + c0 * incy), incy, conj);
    });
  }
}

template void gemv<float>(char, index, index, float, const float*, index, const float*, index,
                          float, float*, index);
template void gemv<double>(char, index, index, double, const double*, index, const double*, index,
                           double, double*, index);
template void gemv<std::complex<float>>(char, index, index, std::complex<float>,
                                        const std::complex<float>*, index,
                                        const std::complex<float>*, index, std::complex<float>,
                                        std::complex<float>*, index);
template void gemv<std::complex<double>>(char, index, index, std::complex<double>,
                                         const std::complex<double>*, index,
                                         const std::complex<double>*, index, std::complex<double>,
                                         std::complex<double>*, index);

}  // namespace tav::blas
