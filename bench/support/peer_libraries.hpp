// The peer BLAS libraries that benchmarks compare against, loaded at run time beside libtav.so:
// OpenBLAS (pthread build) and BLIS, each with the Fortran-style routines the benchmarks time
// and its own thread-count setter.
#pragma once

#include <string>
#include <vector>

namespace tav::bench {

using daxpy_routine = void(const int* n, const double* alpha, const double* x, const int* incx,
                           double* y, const int* incy);
using ddot_routine = double(const int* n, const double* x, const int* incx, const double* y,
                            const int* incy);
using dscal_routine = void(const int* n, const double* alpha, double* x, const int* incx);

// One library's level-1 routines; set_threads makes the next calls use that many threads.
struct blas_library {
  std::string name;
  std::string detail;  // version and the configuration or core it runs
  daxpy_routine* daxpy = nullptr;
  ddot_routine* ddot = nullptr;
  dscal_routine* dscal = nullptr;
  void (*set_threads)(int threads) = nullptr;
};

// TAV through its exported names; detail names the CPU type the dispatcher chose.
blas_library tav_library();

// The peers that could be loaded; each that could not is reported on standard error and left
// out. Call before any peer routine runs: it prepares the peers' environment first.
std::vector<blas_library> load_peers();

}  // namespace tav::bench
