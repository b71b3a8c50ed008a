// SLEEF's AVX2 power functions with 1-ulp bound (Sleef_powd4_u10avx2, Sleef_powf8_u10avx2) as a
// peer of the power benchmark; compiled with -march=x86-64-v3, linked against libsleef.
#include <immintrin.h>
#include <sleef.h>

#include "vml_pow_peers.hpp"

namespace tav::bench {

void sleef_pow(int n, const double* x, const double* y, double* r, int threads) {
#pragma omp parallel for num_threads(threads) schedule(static)
  for (int i = 0; i < n / 4; ++i) {
    _mm256_storeu_pd(r + 4 * i,
                     Sleef_powd4_u10avx2(_mm256_loadu_pd(x + 4 * i), _mm256_loadu_pd(y + 4 * i)));
  }
  for (int i = n / 4 * 4; i < n; ++i) r[i] = Sleef_pow_u10(x[i], y[i]);
}

void sleef_pow(int n, const float* x, const float* y, float* r, int threads) {
#pragma omp parallel for num_threads(threads) schedule(static)
  for (int i = 0; i < n / 8; ++i) {
    _mm256_storeu_ps(r + 8 * i,
                     Sleef_powf8_u10avx2(_mm256_loadu_ps(x + 8 * i), _mm256_loadu_ps(y + 8 * i)));
  }
  for (int i = n / 8 * 8; i < n; ++i) r[i] = Sleef_powf_u10(x[i], y[i]);
}

}  // namespace tav::bench
