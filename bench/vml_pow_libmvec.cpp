// libmvec and scalar glibc loops for the power benchmark. This file is compiled with
// -O3 -ffast-math -march=x86-64-v3 -fveclib=libmvec, so the first two loops call
// _ZGVdN4vv_pow and _ZGVdN8vv_powf (check: objdump -dr on the object); the scalar loops keep
// vectorisation off.
#include <cmath>

#include "vml_pow_peers.hpp"

namespace tav::bench {
namespace {

template <class T>
void vector_loop(int n, const T* x, const T* y, T* r, int threads) {
#pragma omp parallel for num_threads(threads) schedule(static)
  for (int i = 0; i < n; ++i) r[i] = std::pow(x[i], y[i]);
}

template <class T>
void scalar_loop(int n, const T* x, const T* y, T* r, int threads) {
#pragma omp parallel for num_threads(threads) schedule(static)
  for (int i = 0; i < n; ++i) {
#pragma clang loop vectorize(disable)
    for (int k = i; k <= i; ++k) r[k] = std::pow(x[k], y[k]);
  }
}

}  // namespace

void libmvec_pow(int n, const double* x, const double* y, double* r, int threads) {
  vector_loop(n, x, y, r, threads);
}
void libmvec_pow(int n, const float* x, const float* y, float* r, int threads) {
  vector_loop(n, x, y, r, threads);
}
void glibc_pow(int n, const double* x, const double* y, double* r, int threads) {
  scalar_loop(n, x, y, r, threads);
}
void glibc_pow(int n, const float* x, const float* y, float* r, int threads) {
  scalar_loop(n, x, y, r, threads);
}

}  // namespace tav::bench
