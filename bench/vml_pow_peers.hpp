// The peers of the power benchmark, each a loop over the arrays split across `threads` OpenMP
// threads: glibc's libmvec (_ZGVdN4vv_pow / _ZGVdN8vv_powf through the compiler's vectoriser),
// SLEEF's 1-ulp AVX2 functions, and glibc's scalar pow/powf.
#pragma once

namespace tav::bench {

void libmvec_pow(int n, const double* x, const double* y, double* r, int threads);
void libmvec_pow(int n, const float* x, const float* y, float* r, int threads);
void sleef_pow(int n, const double* x, const double* y, double* r, int threads);
void sleef_pow(int n, const float* x, const float* y, float* r, int threads);
void glibc_pow(int n, const double* x, const double* y, double* r, int threads);
void glibc_pow(int n, const float* x, const float* y, float* r, int threads);

}  // namespace tav::bench
