// DSYRK against OpenBLAS and BLIS in one process, interleaved: the lower-triangle update of order
// 2000 with k = 2000, on 1 and 2 threads. TAV keeps SYRK internal, so this program links the
// static archive and calls the internal routine, on the path the CPU-type override selects (avx2
// and def, each in a process of its own).
//
//   blas_syrk_bench [avx2] [def] [--threads=1,2]
#include "blas/blas_internal.hpp"
#include "support/gemm_cases.hpp"

namespace {

void tav_dsyrk(const char* uplo, const char* trans, const int* n, const int* k,
               const double* alpha, const double* a, const int* lda, const double* beta,
               double* c, const int* ldc) {
  tav::blas::syrk<double>(*uplo, *trans, *n, *k, *alpha, a, *lda, *beta, c, *ldc);
}

}  // namespace

int main(int argc, char** argv) {
  return tav::bench::gemm_bench_main(argc, argv, "--sections=syrk", tav_dsyrk);
}
