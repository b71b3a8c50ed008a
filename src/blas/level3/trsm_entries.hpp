// The internal C entries of the triangular solve, tav_blas_strsm ... tav_blas_ztrsm: characters
// by pointer (first character read), 64-bit integers and alpha by reference, no argument checks.
// The Fortran-style and CBLAS layers call these after checking; they stay hidden in libtav.so.
#pragma once

#include <complex>

#include "common/scalar_traits.hpp"

extern "C" {

void tav_blas_strsm(const char* side, const char* uplo, const char* transa, const char* diag,
                    const tav::index* m, const tav::index* n, const float* alpha, const float* a,
                    const tav::index* lda, float* b, const tav::index* ldb);
void tav_blas_dtrsm(const char* side, const char* uplo, const char* transa, const char* diag,
                    const tav::index* m, const tav::index* n, const double* alpha, const double* a,
                    const tav::index* lda, double* b, const tav::index* ldb);
void tav_blas_ctrsm(const char* side, const char* uplo, const char* transa, const char* diag,
                    const tav::index* m, const tav::index* n, const std::complex<float>* alpha,
                    const std::complex<float>* a, const tav::index* lda, std::complex<float>* b,
                    const tav::index* ldb);
void tav_blas_ztrsm(const char* side, const char* uplo, const char* transa, const char* diag,
                    const tav::index* m, const tav::index* n, const std::complex<double>* alpha,
                    const std::complex<double>* a, const tav::index* lda, std::complex<double>* b,
                    const tav::index* ldb);

}  // extern "C"
