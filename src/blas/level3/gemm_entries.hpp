// The hidden C entries of the matrix product: the internal entries tav_blas_?gemm that the
// interface layer calls, the per-path serial entries behind the dispatcher (tav_blas_x?gemm) and
// the path queries that other level-3 drivers share.
#pragma once

#include <complex>
#include <cstdint>

#include "blas/level3/gemm_kernel_api.hpp"

extern "C" {

// C := alpha·op(A)·op(B) + beta·C with no argument checks; characters by address (first byte
// read, either case), integers by reference, scalars by address. Same as tav::blas::gemm<T>.
void tav_blas_sgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                    const int64_t* k, const float* alpha, const float* a, const int64_t* lda,
                    const float* b, const int64_t* ldb, const float* beta, float* c,
                    const int64_t* ldc);
void tav_blas_dgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                    const int64_t* k, const double* alpha, const double* a, const int64_t* lda,
                    const double* b, const int64_t* ldb, const double* beta, double* c,
                    const int64_t* ldc);
void tav_blas_cgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                    const int64_t* k, const std::complex<float>* alpha,
                    const std::complex<float>* a, const int64_t* lda,
                    const std::complex<float>* b, const int64_t* ldb,
                    const std::complex<float>* beta, std::complex<float>* c, const int64_t* ldc);
void tav_blas_zgemm(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                    const int64_t* k, const std::complex<double>* alpha,
                    const std::complex<double>* a, const int64_t* lda,
                    const std::complex<double>* b, const int64_t* ldb,
                    const std::complex<double>* beta, std::complex<double>* c,
                    const int64_t* ldc);

// The serial product on the dispatched code path, one thread, same arguments; complex data as
// interleaved (re, im) pairs of the real type.
tav::blas::xgemm_fn<float> tav_blas_xsgemm, tav_blas_xcgemm;
tav::blas::xgemm_fn<double> tav_blas_xdgemm, tav_blas_xzgemm;
// The same on one triangle of C (see xgemmt_fn).
tav::blas::xgemmt_fn<float> tav_blas_xsgemmt, tav_blas_xcgemmt;
tav::blas::xgemmt_fn<double> tav_blas_xdgemmt, tav_blas_xzgemmt;

// The kernel interface version of the dispatched path: 1 (def, cnr_def, mc, mc3, avx), the caller
// threads the product itself; 2 (avx2, avx512_tp, avx512), thread counts from size formulas.
int tav_blas_get_kernel_api_version(void);
// The dispatched path id: 0 def, 1 cnr_def, 2 mc, 3 mc3, 4 avx, 5 avx2, 6 avx512_tp, 7 avx512.
int tav_blas_gemm_code_path(void);

}  // extern "C"

namespace tav::blas {

// The dispatched serial entries by element type: the product and its one-triangle form.
template <class T>
struct serial_entries;
template <>
struct serial_entries<float> {
  static constexpr xgemm_fn<float>* gemm = tav_blas_xsgemm;
  static constexpr xgemmt_fn<float>* gemmt = tav_blas_xsgemmt;
};
template <>
struct serial_entries<double> {
  static constexpr xgemm_fn<double>* gemm = tav_blas_xdgemm;
  static constexpr xgemmt_fn<double>* gemmt = tav_blas_xdgemmt;
};
template <>
struct serial_entries<std::complex<float>> {
  static constexpr xgemm_fn<float>* gemm = tav_blas_xcgemm;
  static constexpr xgemmt_fn<float>* gemmt = tav_blas_xcgemmt;
};
template <>
struct serial_entries<std::complex<double>> {
  static constexpr xgemm_fn<double>* gemm = tav_blas_xzgemm;
  static constexpr xgemmt_fn<double>* gemmt = tav_blas_xzgemmt;
};

}  // namespace tav::blas
