// The symmetric and Hermitian rank-k and rank-2k updates on one triangle of C, each the one
// triangle update of syrk_triangle_update.hpp with its own terms:
//   syrk   C := alpha·A·A^T + beta·C                      (real and complex symmetric)
//   herk   C := alpha·A·A^H + beta·C, alpha, beta real    (complex)
//   syr2k  C := alpha·A·B^T + alpha·B·A^T + beta·C        (real and complex symmetric)
//   her2k  C := alpha·A·B^H + conj(alpha)·B·A^H + beta·C, beta real (complex)
// or the transposed forms (A^T·A, A^H·A, ...) for trans other than 'N'.
#include "blas/blas_internal.hpp"
#include "blas/level3/syrk_triangle_update.hpp"

namespace tav::blas {

template <class T>
void syrk(char uplo, char trans, index n, index k, T alpha, const T* a, index lda, T beta, T* c,
          index ldc) {
  rank_update<T> u = make_rank_update<T>(uplo, trans, 'T', k, beta);
  u.terms[0] = {alpha, a, lda, a, lda};
  u.term_count = 1;
  update_rank_triangle(u, n, c, ldc);
}

template <class T>
void herk(char uplo, char trans, index n, index k, real_t<T> alpha, const T* a, index lda,
          real_t<T> beta, T* c, index ldc) {
  rank_update<T> u = make_rank_update<T>(uplo, trans, 'C', k, T(beta));
  u.terms[0] = {T(alpha), a, lda, a, lda};
  u.term_count = 1;
  update_rank_triangle(u, n, c, ldc);
}

template <class T>
void syr2k(char uplo, char trans, index n, index k, T alpha, const T* a, index lda, const T* b,
           index ldb, T beta, T* c, index ldc) {
  rank_update<T> u = make_rank_update<T>(uplo, trans, 'T', k, beta);
  u.terms[0] = {alpha, a, lda, b, ldb};
  u.terms[1] = {alpha, b, ldb, a, lda};
  u.term_count = 2;
  update_rank_triangle(u, n, c, ldc);
}

template <class T>
void her2k(char uplo, char trans, index n, index k, T alpha, const T* a, index lda, const T* b,
           index ldb, real_t<T> beta, T* c, index ldc) {
  rank_update<T> u = make_rank_update<T>(uplo, trans, 'C', k, T(beta));
  // The second term is the conjugate transpose of the first, which keeps C Hermitian.
  u.terms[0] = {alpha, a, lda, b, ldb};
  u.terms[1] = {std::conj(alpha), b, ldb, a, lda};
  u.term_count = 2;
  update_rank_triangle(u, n, c, ldc);
}

template void syrk<float>(char, char, index, index, float, const float*, index, float, float*,
                          index);
template void syrk<double>(char, char, index, index, double, const double*, index, double, double*,
                           index);
template void syrk<std::complex<float>>(char, char, index, index, std::complex<float>,
                                        const std::complex<float>*, index, std::complex<float>,
                                        std::complex<float>*, index);
template void syrk<std::complex<double>>(char, char, index, index, std::complex<double>,
                                         const std::complex<double>*, index, std::complex<double>,
                                         std::complex<double>*, index);

template void herk<std::complex<float>>(char, char, index, index, float, const std::complex<float>*,
                                        index, float, std::complex<float>*, index);
template void herk<std::complex<double>>(char, char, index, index, double,
                                         const std::complex<double>*, index, double,
                                         std::complex<double>*, index);

template void syr2k<float>(char, char, index, index, float, const float*, index, const float*,
                           index, float, float*, index);
template void syr2k<double>(char, char, index, index, double, const double*, index, const double*,
                            index, double, double*, index);
template void syr2k<std::complex<float>>(char, char, index, index, std::complex<float>,
                                         const std::complex<float>*, index,
                                         const std::complex<float>*, index, std::complex<float>,
                                         std::complex<float>*, index);
template void syr2k<std::complex<double>>(char, char, index, index, std::complex<double>,
                                          const std::complex<double>*, index,
                                          const std::complex<double>*, index, std::complex<double>,
                                          std::complex<double>*, index);

template void her2k<std::complex<float>>(char, char, index, index, std::complex<float>,
                                         const std::complex<float>*, index,
                                         const std::complex<float>*, index, float,
                                         std::complex<float>*, index);
template void her2k<std::complex<double>>(char, char, index, index, std::complex<double>,
                                          const std::complex<double>*, index,
                                          const std::complex<double>*, index, double,
                                          std::complex<double>*, index);

}  // namespace tav::blas
