// The symmetric rank-2 update A := alpha·x·y^T + alpha·y·x^T + A (syr2) and the Hermitian one
// A := alpha·x·y^H + conj(alpha)·y·x^H + A (her2) on the triangle `uplo`: diagonal blocks by a
// column loop, the panels beside them by two rank-1 updates each.
#include <complex>

#include "blas/blas_internal.hpp"
#include "blas/level2/rank1_update.hpp"
#include "blas/level2/strided_vectors.hpp"

namespace tav::blas {
namespace {

// Diagonal blocks of 64: the scalar loop does n·64 of the n² updates, the rank-1 kernel the rest.
constexpr index block = 64;

template <class T, bool hermitian>
T op(const T& a) {
  if constexpr (hermitian) return conj_if_complex(a);
  else return a;
}

// A11 += alpha·x1·op(y1)^T + op(alpha)·y1·op(x1)^T on the stored triangle of the nb x nb diagonal
// block; a Hermitian diagonal stays real. x and y are element-0 addresses with increments.
template <class T, bool hermitian>
void diagonal_block(bool upper, index nb, T alpha, const T* x, index incx, const T* y, index incy,
                    T* a, index lda) {
  for (index j = 0; j < nb; ++j) {
    // a(i, j) += x(i)·t1 + y(i)·t2
    const T t1 = alpha * op<T, hermitian>(y[j * incy]);
    const T t2 = op<T, hermitian>(alpha * x[j * incx]);
    T* aj = a + j * lda;
    const index i0 = upper ? 0 : j + 1, i1 = upper ? j : nb;
    for (index i = i0; i < i1; ++i) aj[i] += x[i * incx] * t1 + y[i * incy] * t2;
    const T d = x[j * incx] * t1 + y[j * incy] * t2;
    aj[j] = hermitian ? T(real_part(aj[j]) + real_part(d)) : aj[j] + d;
  }
}

template <class T, bool hermitian>
void symmetric_rank2(char uplo, index n, T alpha, const T* x, index incx, const T* y, index incy,
                     T* a, index lda) {
  if (n <= 0 || alpha == T(0)) return;
  const T* x0 = first_element(x, n, incx);
  const T* y0 = first_element(y, n, incy);
  const bool upper = option(uplo) == 'U';
  for (index k = 0; k < n; k += block) {
    const index nb = n - k < block ? n - k : block;
    diagonal_block<T, hermitian>(upper, nb, alpha, x0 + k * incx, incx, y0 + k * incy, incy,
                                 a + k + k * lda, lda);
    // The panel P beside A11 in the stored triangle: rows 0:k above it (upper) or rows k+nb:n
    // below it (lower).
    const index p0 = upper ? 0 : k + nb, pm = upper ? k : n - k - nb;
    if (pm == 0) continue;
    T* panel = a + p0 + k * lda;
    // P += alpha·x(p)·op(y(k:k+nb))^T
    rank1_update<T>(hermitian, pm, nb, alpha, sub_vector(x0, p0, pm, incx), incx,
                    sub_vector(y0, k, nb, incy), incy, T(1), panel, lda);
    // P += op(alpha)·y(p)·op(x(k:k+nb))^T
    rank1_update<T>(hermitian, pm, nb, op<T, hermitian>(alpha), sub_vector(y0, p0, pm, incy), incy,
                    sub_vector(x0, k, nb, incx), incx, T(1), panel, lda);
  }
}

}  // namespace

template <class T>
void syr2(char uplo, index n, T alpha, const T* x, index incx, const T* y, index incy, T* a,
          index lda) {
  symmetric_rank2<T, false>(uplo, n, alpha, x, incx, y, incy, a, lda);
}

template <class T>
void her2(char uplo, index n, T alpha, const T* x, index incx, const T* y, index incy, T* a,
          index lda) {
  symmetric_rank2<T, true>(uplo, n, alpha, x, incx, y, incy, a, lda);
}

template void syr2<float>(char, index, float, const float*, index, const float*, index, float*,
                          index);
template void syr2<double>(char, index, double, const double*, index, const double*, index, double*,
                           index);
template void syr2<std::complex<float>>(char, index, std::complex<float>,
                                        const std::complex<float>*, index,
                                        const std::complex<float>*, index, std::complex<float>*,
                                        index);
template void syr2<std::complex<double>>(char, index, std::complex<double>,
                                         const std::complex<double>*, index,
                                         const std::complex<double>*, index, std::complex<double>*,
                                         index);
template void her2<float>(char, index, float, const float*, index, const float*, index, float*,
                          index);
template void her2<double>(char, index, double, const double*, index, const double*, index, double*,
                           index);
template void her2<std::complex<float>>(char, index, std::complex<float>,
                                        const std::complex<float>*, index,
                                        const std::complex<float>*, index, std::complex<float>*,
                                        index);
template void her2<std::complex<double>>(char, index, std::complex<double>,
                                         const std::complex<double>*, index,
                                         const std::complex<double>*, index, std::complex<double>*,
                                         index);

}  // namespace tav::blas
