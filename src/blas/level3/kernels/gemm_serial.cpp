// The per-path serial matrix product tav_blas_<tag>_x?gemm: beta first, then the strategy that
// the shape selects; with the path's kernel interface version and path id.
#include "blas/level3/gemm_kernel_api.hpp"
#include "blas/level3/kernels/gemm_strategies.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS::gemm {

// How often each serial route ran on this path, indexed by serial_route, for the tests that check
// a shape reaches its route. A relaxed load and store, no locked add: the count may miss calls
// that race on two threads, which no test does, and a small product pays no atomic.
long route_counts[6];

inline void count_route(serial_route r) {
  long& n = route_counts[static_cast<int>(r)];
  __atomic_store_n(&n, __atomic_load_n(&n, __ATOMIC_RELAXED) + 1, __ATOMIC_RELAXED);
}

template <class E>
void serial_gemm(const char* transa, const char* transb, const index* m, const index* n,
                 const index* k, const E* alpha, const E* a, const index* lda, const E* b,
                 const index* ldb, const E* beta, E* c, const index* ldc) {
  const problem<E> p = problem_of(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
  const bool alpha_zero = is_zero(p.alpha), beta_zero = is_zero(p.beta);
  const serial_route route = route_serial<E>(
      {decode_trans(transa), decode_trans(transb), p.m, p.n, p.k, alpha_zero, beta_zero});
  count_route(route);
  if (route == serial_route::done) return;
  if (route == serial_route::nocopy_6x6) {
    if (beta_zero) nocopy_anbn_meq6_keq6<E, true>(p);
    else nocopy_anbn_meq6_keq6<E, false>(p);
    return;
  }
  scale_c(p.m, p.n, p.beta, p.c, p.ldc);
  // alpha = 0 (and an empty sum) leave beta·C; A and B are not read.
  if (alpha_zero || p.k == 0 || route == serial_route::scale_only) return;
  if (route == serial_route::small) run_small(p);
  else if (route == serial_route::pst) pst(p);
  else driver(p);
}

template <class E, class R>
void serial_gemm_interleaved(const char* transa, const char* transb, const index* m,
                             const index* n, const index* k, const R* alpha, const R* a,
                             const index* lda, const R* b, const index* ldb, const R* beta, R* c,
                             const index* ldc) {
  serial_gemm<E>(transa, transb, m, n, k, reinterpret_cast<const E*>(alpha),
                 reinterpret_cast<const E*>(a), lda, reinterpret_cast<const E*>(b), ldb,
                 reinterpret_cast<const E*>(beta), reinterpret_cast<E*>(c), ldc);
}

}  // namespace tav::TAV_PATH_NS::gemm

extern "C" {

tav::blas::xgemm_fn<float> TAV_PATH_NAME(blas, xsgemm), TAV_PATH_NAME(blas, xcgemm);
tav::blas::xgemm_fn<double> TAV_PATH_NAME(blas, xdgemm), TAV_PATH_NAME(blas, xzgemm);
tav::blas::path_query_fn TAV_PATH_NAME(blas, get_kernel_api_version),
    TAV_PATH_NAME(blas, gemm_code_path);
long TAV_PATH_NAME(blas, gemm_route_count)(int route);

void TAV_PATH_NAME(blas, xsgemm)(const char* transa, const char* transb, const int64_t* m,
                                 const int64_t* n, const int64_t* k, const float* alpha,
                                 const float* a, const int64_t* lda, const float* b,
                                 const int64_t* ldb, const float* beta, float* c,
                                 const int64_t* ldc) {
  tav::TAV_PATH_NS::gemm::serial_gemm<float>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta,
                                             c, ldc);
}

void TAV_PATH_NAME(blas, xdgemm)(const char* transa, const char* transb, const int64_t* m,
                                 const int64_t* n, const int64_t* k, const double* alpha,
                                 const double* a, const int64_t* lda, const double* b,
                                 const int64_t* ldb, const double* beta, double* c,
                                 const int64_t* ldc) {
  tav::TAV_PATH_NS::gemm::serial_gemm<double>(transa, transb, m, n, k, alpha, a, lda, b, ldb,
                                              beta, c, ldc);
}

void TAV_PATH_NAME(blas, xcgemm)(const char* transa, const char* transb, const int64_t* m,
                                 const int64_t* n, const int64_t* k, const float* alpha,
                                 const float* a, const int64_t* lda, const float* b,
                                 const int64_t* ldb, const float* beta, float* c,
                                 const int64_t* ldc) {
  using namespace tav::TAV_PATH_NS::gemm;
  serial_gemm_interleaved<cpx<float>>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c,
                                      ldc);
}

void TAV_PATH_NAME(blas, xzgemm)(const char* transa, const char* transb, const int64_t* m,
                                 const int64_t* n, const int64_t* k, const double* alpha,
                                 const double* a, const int64_t* lda, const double* b,
                                 const int64_t* ldb, const double* beta, double* c,
                                 const int64_t* ldc) {
  using namespace tav::TAV_PATH_NS::gemm;
  serial_gemm_interleaved<cpx<double>>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c,
                                       ldc);
}

int TAV_PATH_NAME(blas, get_kernel_api_version)() {
  return tav::TAV_PATH_NS::gemm::this_path.api_version;
}

int TAV_PATH_NAME(blas, gemm_code_path)() { return TAV_PATH_ID; }

// Test hook: the calls of this path's serial entries that took route `route` (a serial_route).
long TAV_PATH_NAME(blas, gemm_route_count)(int route) {
  return __atomic_load_n(&tav::TAV_PATH_NS::gemm::route_counts[route], __ATOMIC_RELAXED);
}

}  // extern "C"
