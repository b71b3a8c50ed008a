// The dispatch slots of the matrix-product kernels and their one-line C forwarders.
#include "blas/level3/gemm_entries.hpp"
#include "service/dispatch/dispatched.hpp"

namespace tav::blas {

TAV_DISPATCHED(blas, xsgemm, xgemm_fn<float>);
TAV_DISPATCHED(blas, xdgemm, xgemm_fn<double>);
TAV_DISPATCHED(blas, xcgemm, xgemm_fn<float>);
TAV_DISPATCHED(blas, xzgemm, xgemm_fn<double>);
TAV_DISPATCHED(blas, xsgemmt, xgemmt_fn<float>);
TAV_DISPATCHED(blas, xdgemmt, xgemmt_fn<double>);
TAV_DISPATCHED(blas, xcgemmt, xgemmt_fn<float>);
TAV_DISPATCHED(blas, xzgemmt, xgemmt_fn<double>);
TAV_DISPATCHED(blas, get_kernel_api_version, path_query_fn);
TAV_DISPATCHED(blas, gemm_code_path, path_query_fn);

}  // namespace tav::blas

using namespace tav::blas;

extern "C" {

void tav_blas_xsgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                     const int64_t* k, const float* alpha, const float* a, const int64_t* lda,
                     const float* b, const int64_t* ldb, const float* beta, float* c,
                     const int64_t* ldc) {
  xsgemm_dispatch(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

void tav_blas_xdgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                     const int64_t* k, const double* alpha, const double* a, const int64_t* lda,
                     const double* b, const int64_t* ldb, const double* beta, double* c,
                     const int64_t* ldc) {
  xdgemm_dispatch(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

void tav_blas_xcgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                     const int64_t* k, const float* alpha, const float* a, const int64_t* lda,
                     const float* b, const int64_t* ldb, const float* beta, float* c,
                     const int64_t* ldc) {
  xcgemm_dispatch(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

void tav_blas_xzgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                     const int64_t* k, const double* alpha, const double* a, const int64_t* lda,
                     const double* b, const int64_t* ldb, const double* beta, double* c,
                     const int64_t* ldc) {
  xzgemm_dispatch(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

#define TAV_GEMMT_FORWARDER(name, R)                                                             \
  void tav_blas_##name(const char* uplo, const char* transa, const char* transb, const int64_t* m, \
                       const int64_t* n, const int64_t* k, const R* alpha, const R* a,             \
                       const int64_t* lda, const R* b, const int64_t* ldb, const R* beta, R* c,    \
                       const int64_t* ldc, const int64_t* diagonal) {                              \
    name##_dispatch(uplo, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, diagonal); \
  }

TAV_GEMMT_FORWARDER(xsgemmt, float)
TAV_GEMMT_FORWARDER(xdgemmt, double)
TAV_GEMMT_FORWARDER(xcgemmt, float)
TAV_GEMMT_FORWARDER(xzgemmt, double)

int tav_blas_get_kernel_api_version(void) { return get_kernel_api_version_dispatch(); }

int tav_blas_gemm_code_path(void) { return gemm_code_path_dispatch(); }

}  // extern "C"
