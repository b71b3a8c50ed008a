// y := alpha·A·x + beta·y with A symmetric (symv) or Hermitian (hemv) and only the triangle
// `uplo` referenced: diagonal blocks by a column loop over the stored triangle, the panels beside
// them by two gemv calls each.
#include <complex>

#include "blas/blas_internal.hpp"
#include "blas/level2/strided_vectors.hpp"

namespace tav::blas {
namespace {

// Diagonal blocks of 64: the scalar loop does n·64 of the n² multiply-adds, gemv the rest.
constexpr index block = 64;

// conj(a) for the Hermitian case, a for the symmetric one.
template <class T, bool hermitian>
T op(const T& a) {
  if constexpr (hermitian) return conj_if_complex(a);
  else return a;
}

// y1 += alpha·A11·x1 for the nb x nb diagonal block, reading only its stored triangle; a
// Hermitian diagonal counts by its real part. x and y are element-0 addresses with increments.
template <class T, bool hermitian>
void diagonal_block(bool upper, index nb, T alpha, const T* a, index lda, const T* x, index incx,
                    T* y, index incy) {
  for (index j = 0; j < nb; ++j) {
    const T t1 = alpha * x[j * incx];
    const T* aj = a + j * lda;
    const T ajj = hermitian ? T(real_part(aj[j])) : aj[j];
    T t2 = T(0);
    const index i0 = upper ? 0 : j + 1, i1 = upper ? j : nb;
    // the column part y(i) += t1·a(i, j), and the row part sum op(a(i, j))·x(i) for y(j)
    for (index i = i0; i < i1; ++i) {
      y[i * incy] += t1 * aj[i];
      t2 += op<T, hermitian>(aj[i]) * x[i * incx];
    }
    y[j * incy] += t1 * ajj + alpha * t2;
  }
}

template <class T, bool hermitian>
void symmetric_mv(char uplo, index n, T alpha, const T* a, index lda, const T* x, index incx,
                  T beta, T* y, index incy) {
  if (n <= 0 || (alpha == T(0) && beta == T(1))) return;
  T* y0 = first_element(y, n, incy);
  scale_by_beta(n, beta, y0, incy);
  if (alpha == T(0)) return;
  const T* x0 = first_element(x, n, incx);
  const bool upper = option(uplo) == 'U';
  const char op_trans = hermitian ? 'C' : 'T';
  for (index k = 0; k < n; k += block) {
    const index nb = n - k < block ? n - k : block;
    const T* a11 = a + k + k * lda;
    diagonal_block<T, hermitian>(upper, nb, alpha, a11, lda, x0 + k * incx, incx, y0 + k * incy,
                                 incy);
    // The panel P beside A11 in the stored triangle: rows 0:k above it (upper) or rows k+nb:n
    // below it (lower); the other triangle holds op(P)^T.
    const index p0 = upper ? 0 : k + nb, pm = upper ? k : n - k - nb;
    if (pm == 0) continue;
    const T* panel = a + p0 + k * lda;
    // y(p) += alpha·P·x(k:k+nb)
    gemv<T>('N', pm, nb, alpha, panel, lda, sub_vector(x0, k, nb, incx), incx, T(1),
            sub_vector(y0, p0, pm, incy), incy);
    // y(k:k+nb) += alpha·op(P)^T·x(p)
    gemv<T>(op_trans, pm, nb, alpha, panel, lda, sub_vector(x0, p0, pm, incx), incx, T(1),
            sub_vector(y0, k, nb, incy), incy);
  }
}

}  // namespace

template <class T>
void symv(char uplo, index n, T alpha, const T* a, index lda, const T* x, index incx, T beta, T* y,
          index incy) {
  symmetric_mv<T, false>(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
}

template <class T>
void hemv(char uplo, index n, T alpha, const T* a, index lda, const T* x, index incx, T beta, T* y,
          index incy) {
  symmetric_mv<T, true>(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
}

template void symv<float>(char, index, float, const float*, index, const float*, index, float,
                          float*, index);
template void symv<double>(char, index, double, const double*, index, const double*, index, double,
                           double*, index);
template void symv<std::complex<float>>(char, index, std::complex<float>,
                                        const std::complex<float>*, index,
                                        const std::complex<float>*, index, std::complex<float>,
                                        std::complex<float>*, index);
template void symv<std::complex<double>>(char, index, std::complex<double>,
                                         const std::complex<double>*, index,
                                         const std::complex<double>*, index, std::complex<double>,
                                         std::complex<double>*, index);
template void hemv<float>(char, index, float, const float*, index, const float*, index, float,
                          float*, index);
template void hemv<double>(char, index, double, const double*, index, const double*, index, double,
                           double*, index);
template void hemv<std::complex<float>>(char, index, std::complex<float>,
                                        const std::complex<float>*, index,
                                        const std::complex<float>*, index, std::complex<float>,
                                        std::complex<float>*, index);
template void hemv<std::complex<double>>(char, index, std::complex<double>,
                                         const std::complex<double>*, index,
                                         const std::complex<double>*, index, std::complex<double>,
                                         std::complex<double>*, index);

}  // namespace tav::blas
