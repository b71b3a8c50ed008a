// The calling form of the per-path serial matrix-product entries (tav_blas_<tag>_x?gemm and the
// one-triangle form x?gemmt) and of the per-path queries, shared by the kernels that define them
// and the dispatch that calls them.
#pragma once

#include <cstdint>

namespace tav::blas {

// All thirteen arguments by address, as the internal entry receives them; complex elements are
// interleaved (re, im) pairs of R, so no complex type crosses into the per-path code.
template <class R>
using xgemm_fn = void(const char* transa, const char* transb, const int64_t* m, const int64_t* n,
                      const int64_t* k, const R* alpha, const R* a, const int64_t* lda,
                      const R* b, const int64_t* ldb, const R* beta, R* c, const int64_t* ldc);

// The same product on one triangle of the m x n block C (tav_blas_<tag>_x?gemmt): the elements
// (i, j) with i - j >= *diagonal for uplo 'L', i - j <= *diagonal for 'U'; the others are
// neither read nor written. The rank updates call it per panel of columns.
template <class R>
using xgemmt_fn = void(const char* uplo, const char* transa, const char* transb, const int64_t* m,
                       const int64_t* n, const int64_t* k, const R* alpha, const R* a,
                       const int64_t* lda, const R* b, const int64_t* ldb, const R* beta, R* c,
                       const int64_t* ldc, const int64_t* diagonal);

// tav_blas_<tag>_get_kernel_api_version and tav_blas_<tag>_gemm_code_path.
using path_query_fn = int();

}  // namespace tav::blas
