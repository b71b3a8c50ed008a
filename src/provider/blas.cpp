// The provider's vector and matrix-product functions, each one template over the element type
// that forwards to the CBLAS routine it is handed, with increments 1 and column-major storage.
#include <tav/tav_cblas.h>
#include <tav/tav_provider.h>

#include <type_traits>

#include "common/exports.hpp"

namespace tav::provider {
namespace {

// CBLAS takes a real scalar by value and a complex one by address; `scalar` is the provider
// function's own by-value copy, alive for the whole forwarded call.
template <class C>
auto cblas_scalar(const C& scalar) {
  if constexpr (std::is_floating_point_v<C>) return scalar;
  else return &scalar;
}

template <class C, class Axpy>
void axpy(Axpy cblas_axpy, int n, const C* x, C* y, C alpha) {
  cblas_axpy(n, cblas_scalar(alpha), x, 1, y, 1);
}

template <class C, class Scal>
void scale(Scal cblas_scal, int n, C* x, C alpha) {
  cblas_scal(n, cblas_scalar(alpha), x, 1);
}

// The complex CBLAS dot products store their result instead of returning it.
template <class C, class Dot>
C dot_product(Dot cblas_dot, int n, const C* x, const C* y) {
  if constexpr (std::is_floating_point_v<C>) {
    return cblas_dot(n, x, 1, y, 1);
  } else {
    C result{};
    cblas_dot(n, x, 1, y, 1, &result);
    return result;
  }
}

// Packed storage: A is m x k (k x m when transposed), B is k x n (n x k), C is m x n, each with
// its row count as leading dimension.
template <class C, class Gemm>
void matrix_multiply(Gemm cblas_gemm, int transa, int transb, int m, int n, int k, const C* a,
                     const C* b, C* c, C alpha, C beta) {
  const int lda = transa == TAV_CBLAS_NO_TRANS ? m : k;
  const int ldb = transb == TAV_CBLAS_NO_TRANS ? k : n;
  cblas_gemm(TAV_CBLAS_COL_MAJOR, transa, transb, m, n, k, cblas_scalar(alpha), a, lda, b, ldb,
             cblas_scalar(beta), c, m);
}

}  // namespace
}  // namespace tav::provider

using namespace tav::provider;

TAV_EXPORT void s_axpy(int n, const float* x, float* y, float alpha) {
  axpy(cblas_saxpy, n, x, y, alpha);
}
TAV_EXPORT void d_axpy(int n, const double* x, double* y, double alpha) {
  axpy(cblas_daxpy, n, x, y, alpha);
}
TAV_EXPORT void c_axpy(int n, const tav_complex8* x, tav_complex8* y, tav_complex8 alpha) {
  axpy(cblas_caxpy, n, x, y, alpha);
}
TAV_EXPORT void z_axpy(int n, const tav_complex16* x, tav_complex16* y, tav_complex16 alpha) {
  axpy(cblas_zaxpy, n, x, y, alpha);
}

TAV_EXPORT void s_scale(int n, float* x, float alpha) { scale(cblas_sscal, n, x, alpha); }
TAV_EXPORT void d_scale(int n, double* x, double alpha) { scale(cblas_dscal, n, x, alpha); }
TAV_EXPORT void c_scale(int n, tav_complex8* x, tav_complex8 alpha) {
  scale(cblas_cscal, n, x, alpha);
}
TAV_EXPORT void z_scale(int n, tav_complex16* x, tav_complex16 alpha) {
  scale(cblas_zscal, n, x, alpha);
}

TAV_EXPORT float s_dot_product(int n, const float* x, const float* y) {
  return dot_product(cblas_sdot, n, x, y);
}
TAV_EXPORT double d_dot_product(int n, const double* x, const double* y) {
  return dot_product(cblas_ddot, n, x, y);
}
TAV_EXPORT tav_complex8 c_dot_product(int n, const tav_complex8* x, const tav_complex8* y) {
  return dot_product(cblas_cdotu_sub, n, x, y);
}
TAV_EXPORT tav_complex16 z_dot_product(int n, const tav_complex16* x, const tav_complex16* y) {
  return dot_product(cblas_zdotu_sub, n, x, y);
}

TAV_EXPORT void s_matrix_multiply(int transa, int transb, int m, int n, int k, const float* a,
                                  const float* b, float* c, float alpha, float beta) {
  matrix_multiply(cblas_sgemm, transa, transb, m, n, k, a, b, c, alpha, beta);
}
TAV_EXPORT void d_matrix_multiply(int transa, int transb, int m, int n, int k, const double* a,
                                  const double* b, double* c, double alpha, double beta) {
  matrix_multiply(cblas_dgemm, transa, transb, m, n, k, a, b, c, alpha, beta);
}
TAV_EXPORT void c_matrix_multiply(int transa, int transb, int m, int n, int k,
                                  const tav_complex8* a, const tav_complex8* b, tav_complex8* c,
                                  tav_complex8 alpha, tav_complex8 beta) {
  matrix_multiply(cblas_cgemm, transa, transb, m, n, k, a, b, c, alpha, beta);
}
TAV_EXPORT void z_matrix_multiply(int transa, int transb, int m, int n, int k,
                                  const tav_complex16* a, const tav_complex16* b,
                                  tav_complex16* c, tav_complex16 alpha, tav_complex16 beta) {
  matrix_multiply(cblas_zgemm, transa, transb, m, n, k, a, b, c, alpha, beta);
}
