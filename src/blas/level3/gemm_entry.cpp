// The internal matrix-product entry C := alpha·op(A)·op(B) + beta·C for the four element types:
// quick return, the vector shapes handed to level 2, and the general driver.
#include <tav/tav_error.h>

#include "blas/blas_internal.hpp"
#include "blas/level2/level2_entries.hpp"
#include "blas/level3/gemm_entries.hpp"
#include "blas/level3/gemm_routing.hpp"
#include "blas/level3/gemm_threading.hpp"
#include "common/scratch.hpp"

namespace tav::blas {
namespace {

template <class T>
constexpr const char* routine_name() {
  if constexpr (std::is_same_v<T, float>) return "SGEMM";
  else if constexpr (std::is_same_v<T, double>) return "DGEMM";
  else if constexpr (std::is_same_v<T, std::complex<float>>) return "CGEMM";
  else return "ZGEMM";
}

void gemmger(const index* m, const index* n, const float* alpha, const float* x,
             const index* incx, const float* y, const index* incy, const float* beta, float* c,
             const index* ldc) {
  tav_blas_sgemmger(m, n, alpha, x, incx, y, incy, beta, c, ldc);
}
void gemmger(const index* m, const index* n, const double* alpha, const double* x,
             const index* incx, const double* y, const index* incy, const double* beta,
             double* c, const index* ldc) {
  tav_blas_dgemmger(m, n, alpha, x, incx, y, incy, beta, c, ldc);
}
void gemmger(const index* m, const index* n, const std::complex<float>* alpha,
             const std::complex<float>* x, const index* incx, const std::complex<float>* y,
             const index* incy, const std::complex<float>* beta, std::complex<float>* c,
             const index* ldc) {
  tav_blas_cgemmger(m, n, alpha, x, incx, y, incy, beta, c, ldc);
}
void gemmger(const index* m, const index* n, const std::complex<double>* alpha,
             const std::complex<double>* x, const index* incx, const std::complex<double>* y,
             const index* incy, const std::complex<double>* beta, std::complex<double>* c,
             const index* ldc) {
  tav_blas_zgemmger(m, n, alpha, x, incx, y, incy, beta, c, ldc);
}

// C := beta·C + alpha·x·y^T with x the column of op(A) and y the row of op(B) (k = 1). A strided
// x of more than 64 elements is first copied to a contiguous scratch vector; without memory the
// copy is skipped with a warning.
template <class T>
void rank1_update(bool a_plain, bool b_plain, index m, index n, const T* alpha, const T* a,
                  index lda, const T* b, index ldb, const T* beta, T* c, index ldc) {
  const T* x = a;
  index incx = a_plain ? 1 : lda;
  const index incy = b_plain ? ldb : 1;
  scratch<T> contiguous;
  if (incx != 1 && m > 64) {
    contiguous = scratch<T>(static_cast<size_t>(m), 128);
    if (contiguous) {
      copy<T>(m, a, lda, contiguous.data(), 1);
      x = contiguous.data();
      incx = 1;
    } else {
      tav_serv_check_ptr_and_warn(contiguous.data(), routine_name<T>());
    }
  }
  gemmger(&m, &n, alpha, x, &incx, b, &incy, beta, c, &ldc);
}

template <class T>
void gemm_entry(const char* transa, const char* transb, const index* m, const index* n,
                const index* k, const T* alpha, const T* a, const index* lda, const T* b,
                const index* ldb, const T* beta, T* c, const index* ldc) {
  const gemm_shape s{decode_trans(transa), decode_trans(transb), *m, *n, *k, *lda, *ldb, *ldc,
                     is_complex_v<T>};
  const bool a_plain = s.transa == 0, b_plain = s.transb == 0;
  switch (route_gemm(s, tav_blas_gemm_code_path)) {
    case gemm_route::quick_return:
      return;
    case gemm_route::row_gemv:
      // C(0, :)^T := alpha·op(B)^T·op(A)(0, :)^T + beta·C(0, :)^T.
      gemv<T>(b_plain ? 'T' : 'N', b_plain ? s.k : s.n, b_plain ? s.n : s.k, *alpha, b, s.ldb,
              a, a_plain ? s.lda : 1, *beta, c, s.ldc);
      return;
    case gemm_route::column_by_column_gemv:
      // C(:, j) := alpha·op(A)·B(:, j) + beta·C(:, j) for each j.
      for (index j = 0; j < s.n; ++j)
        gemv<T>(*transa, a_plain ? s.m : s.k, a_plain ? s.k : s.m, *alpha, a, s.lda,
                b + j * s.ldb, 1, *beta, c + j * s.ldc, 1);
      return;
    case gemm_route::column_gemv:
      // C(:, 0) := alpha·op(A)·op(B)(:, 0) + beta·C(:, 0).
      gemv<T>(*transa, a_plain ? s.m : s.k, a_plain ? s.k : s.m, *alpha, a, s.lda, b,
              b_plain ? 1 : s.ldb, *beta, c, 1);
      return;
    case gemm_route::rank1_update:
      rank1_update(a_plain, b_plain, s.m, s.n, alpha, a, s.lda, b, s.ldb, beta, c, s.ldc);
      return;
    case gemm_route::general:
      gemm_general<T>({transa, transb, s.m, s.n, s.k, alpha, a, s.lda, b, s.ldb, beta, c, s.ldc});
      return;
  }
}

}  // namespace

template <class T>
void gemm(char transa, char transb, index m, index n, index k, T alpha, const T* a, index lda,
          const T* b, index ldb, T beta, T* c, index ldc) {
  gemm_entry(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
}

template void gemm<float>(char, char, index, index, index, float, const float*, index,
                          const float*, index, float, float*, index);
template void gemm<double>(char, char, index, index, index, double, const double*, index,
                           const double*, index, double, double*, index);
template void gemm<std::complex<float>>(char, char, index, index, index, std::complex<float>,
                                        const std::complex<float>*, index,
                                        const std::complex<float>*, index, std::complex<float>,
                                        std::complex<float>*, index);
template void gemm<std::complex<double>>(char, char, index, index, index, std::complex<double>,
                                         const std::complex<double>*, index,
                                         const std::complex<double>*, index, std::complex<double>,
                                         std::complex<double>*, index);

}  // namespace tav::blas

using tav::blas::gemm_entry;

extern "C" {

void tav_blas_sgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                    const int64_t* k, const float* alpha, const float* a, const int64_t* lda,
                    const float* b, const int64_t* ldb, const float* beta, float* c,
                    const int64_t* ldc) {
  gemm_entry(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

void tav_blas_dgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                    const int64_t* k, const double* alpha, const double* a, const int64_t* lda,
                    const double* b, const int64_t* ldb, const double* beta, double* c,
                    const int64_t* ldc) {
  gemm_entry(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

void tav_blas_cgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                    const int64_t* k, const std::complex<float>* alpha,
                    const std::complex<float>* a, const int64_t* lda,
                    const std::complex<float>* b, const int64_t* ldb,
                    const std::complex<float>* beta, std::complex<float>* c, const int64_t* ldc) {
  gemm_entry(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

void tav_blas_zgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                    const int64_t* k, const std::complex<double>* alpha,
                    const std::complex<double>* a, const int64_t* lda,
                    const std::complex<double>* b, const int64_t* ldb,
                    const std::complex<double>* beta, std::complex<double>* c,
                    const int64_t* ldc) {
  gemm_entry(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

}  // extern "C"
