// The per-path product on one triangle of a block of C, tav_blas_<tag>_x?gemmt: beta on the
// triangle, then the packed driver over the tiles that the diagonal leaves in it. Always the
// packed driver, whatever the shape, so that a rank update split into panels of columns computes
// every element as the unsplit one does.
#include "blas/level3/gemm_kernel_api.hpp"
#include "blas/level3/kernels/gemm_strategies.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS::gemm {

template <class E, class R>
void serial_triangle(const char* uplo, const char* transa, const char* transb, const index* m,
                     const index* n, const index* k, const R* alpha, const R* a, const index* lda,
                     const R* b, const index* ldb, const R* beta, R* c, const index* ldc,
                     const index* diagonal) {
  const auto e = [](const R* x) { return reinterpret_cast<const E*>(x); };
  const problem<E> p = problem_of(transa, transb, m, n, k, e(alpha), e(a), lda, e(b), ldb,
                                  e(beta), reinterpret_cast<E*>(c), ldc);
  const triangle_of_c part{(*uplo & ~0x20) != 'U', *diagonal};
  if (p.m < 1 || p.n < 1) return;
  scale_c(p.m, p.n, p.beta, p.c, p.ldc, part);
  if (is_zero(p.alpha) || p.k == 0) return;
  driver(p, part);
}

}  // namespace tav::TAV_PATH_NS::gemm

using tav::TAV_PATH_NS::gemm::cpx;
using tav::TAV_PATH_NS::gemm::serial_triangle;

extern "C" {

tav::blas::xgemmt_fn<float> TAV_PATH_NAME(blas, xsgemmt), TAV_PATH_NAME(blas, xcgemmt);
tav::blas::xgemmt_fn<double> TAV_PATH_NAME(blas, xdgemmt), TAV_PATH_NAME(blas, xzgemmt);

#define TAV_GEMMT_ENTRY(name, R, E)                                                              \
  void TAV_PATH_NAME(blas, name)(const char* uplo, const char* transa, const char* transb,       \
                                 const int64_t* m, const int64_t* n, const int64_t* k,           \
                                 const R* alpha, const R* a, const int64_t* lda, const R* b,     \
                                 const int64_t* ldb, const R* beta, R* c, const int64_t* ldc,    \
                                 const int64_t* diagonal) {                                      \
    serial_triangle<E>(uplo, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc,      \
                       diagonal);                                                                \
  }

TAV_GEMMT_ENTRY(xsgemmt, float, float)
TAV_GEMMT_ENTRY(xdgemmt, double, double)
TAV_GEMMT_ENTRY(xcgemmt, float, cpx<float>)
TAV_GEMMT_ENTRY(xzgemmt, double, cpx<double>)

}  // extern "C"
