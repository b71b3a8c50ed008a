// Rank-1 updates: ger/geru (A := alpha·x·y^T + A), gerc (A := alpha·x·y^H + A) and the form with
// a beta that GEMM uses for k = 1, split over columns among threads.
#include <complex>

#include "blas/blas_internal.hpp"
#include "blas/level2/level2_kernels.hpp"
#include "blas/level2/level2_threads.hpp"
#include "blas/level2/rank1_update.hpp"
#include "blas/level2/strided_vectors.hpp"

namespace tav::blas {

template <class T>
void rank1_update(bool conj_y, index m, index n, T alpha, const T* x, index incx, const T* y,
                  index incy, T beta, T* a, index lda) {
  if (m <= 0 || n <= 0 || (alpha == T(0) && beta == T(1))) return;
  if (alpha == T(0)) {
    // A := beta·A, column by column; beta = 0 writes zeros without reading A.
    for (index j = 0; j < n; ++j) scale_by_beta(m, beta, a + j * lda, 1);
    return;
  }
  const T* x0 = first_element(x, m, incx);
  const T* y0 = first_element(y, n, incy);
  const int conj = is_complex_v<T> && conj_y ? 1 : 0;
  // A(:, c0:c1) := beta·A(:, c0:c1) + alpha·x·op(y(c0:c1))^T
  for_ranges(n, 1, m * n, [&](index c0, index c1) {
    level2_slots<T>::rank1(m, c1 - c0, reals(&alpha), reals(x0), incx, reals(y0 + c0 * incy), incy,
                           reals(&beta), reals(a + c0 * lda), lda, conj);
  });
}

template <class T>
void ger(index m, index n, T alpha, const T* x, index incx, const T* y, index incy, T* a,
         index lda) {
  rank1_update<T>(false, m, n, alpha, x, incx, y, incy, T(1), a, lda);
}

template <class T>
void gerc(index m, index n, T alpha, const T* x, index incx, const T* y, index incy, T* a,
          index lda) {
  rank1_update<T>(true, m, n, alpha, x, incx, y, incy, T(1), a, lda);
}

template void rank1_update<float>(bool, index, index, float, const float*, index, const float*,
                                  index, float, float*, index);
template void rank1_update<double>(bool, index, index, double, const double*, index, const double*,
                                   index, double, double*, index);
template void rank1_update<std::complex<float>>(bool, index, index, std::complex<float>,
                                                const std::complex<float>*, index,
                                                const std::complex<float>*, index,
                                                std::complex<float>, std::complex<float>*, index);
template void rank1_update<std::complex<double>>(bool, index, index, std::complex<double>,
                                                 const std::complex<double>*, index,
                                                 const std::complex<double>*, index,
                                                 std::complex<double>, std::complex<double>*,
                                                 index);
template void ger<float>(index, index, float, const float*, index, const float*, index, float*,
                         index);
template void ger<double>(index, index, double, const double*, index, const double*, index, double*,
                          index);
template void ger<std::complex<float>>(index, index, std::complex<float>,
                                       const std::complex<float>*, index,
                                       const std::complex<float>*, index, std::complex<float>*,
                                       index);
template void ger<std::complex<double>>(index, index, std::complex<double>,
                                        const std::complex<double>*, index,
                                        const std::complex<double>*, index, std::complex<double>*,
                                        index);
template void gerc<float>(index, index, float, const float*, index, const float*, index, float*,
                          index);
template void gerc<double>(index, index, double, const double*, index, const double*, index,
                           double*, index);
template void gerc<std::complex<float>>(index, index, std::complex<float>,
                                        const std::complex<float>*, index,
                                        const std::complex<float>*, index, std::complex<float>*,
                                        index);
template void gerc<std::complex<double>>(index, index, std::complex<double>,
                                         const std::complex<double>*, index,
                                         const std::complex<double>*, index, std::complex<double>*,
                                         index);

}  // namespace tav::blas
