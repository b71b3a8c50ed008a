// The peer BLAS libraries that benchmarks compare against, loaded at run time beside libtav.so:
// OpenBLAS (pthread build) and BLIS, each with the Fortran-style routines the benchmarks time
// and its own thread-count setter.
#pragma once

#include <complex>
#include <string>
#include <vector>

namespace tav::bench {

using daxpy_routine = void(const int* n, const double* alpha, const double* x, const int* incx,
                           double* y, const int* incy);
using ddot_routine = double(const int* n, const double* x, const int* incx, const double* y,
                            const int* incy);
using dscal_routine = void(const int* n, const double* alpha, double* x, const int* incx);
template <class T>
using gemm_routine = void(const char* transa, const char* transb, const int* m, const int* n,
                          const int* k, const T* alpha, const T* a, const int* lda, const T* b,
                          const int* ldb, const T* beta, T* c, const int* ldc);
using cblas_dgemm_routine = void(int layout, int transa, int transb, int m, int n, int k,
                                 double alpha, const double* a, int lda, const double* b, int ldb,
                                 double beta, double* c, int ldc);
using dtrsm_routine = void(const char* side, const char* uplo, const char* transa,
                           const char* diag, const int* m, const int* n, const double* alpha,
                           const double* a, const int* lda, double* b, const int* ldb);
using dsyrk_routine = void(const char* uplo, const char* trans, const int* n, const int* k,
                           const double* alpha, const double* a, const int* lda,
                           const double* beta, double* c, const int* ldc);

// One library's routines; set_threads makes the next calls use that many threads. The level-3
// routines are null where the library does not export them (TAV keeps syrk internal).
struct blas_library {
  std::string name;
  std::string detail;  // version and the configuration or core it runs
  daxpy_routine* daxpy = nullptr;
  ddot_routine* ddot = nullptr;
  dscal_routine* dscal = nullptr;
  gemm_routine<float>* sgemm = nullptr;
  gemm_routine<double>* dgemm = nullptr;
  gemm_routine<std::complex<float>>* cgemm = nullptr;
  gemm_routine<std::complex<double>>* zgemm = nullptr;
  cblas_dgemm_routine* cblas_dgemm = nullptr;
  dtrsm_routine* dtrsm = nullptr;
  dsyrk_routine* dsyrk = nullptr;
  void (*set_threads)(int threads) = nullptr;
};

// TAV through its exported names; detail names the CPU type the dispatcher chose.
blas_library tav_library();

// The peers that could be loaded; each that could not is reported on standard error and left
// out. Call before any peer routine runs: it prepares the peers' environment first. OpenBLAS runs
// its own core choice, or `openblas_core` (OPENBLAS_CORETYPE) when that is given.
std::vector<blas_library> load_peers(const char* openblas_core = nullptr);

}  // namespace tav::bench
