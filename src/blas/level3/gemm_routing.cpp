// The internal matrix-product entry's route choice: quick return, the vector shapes handed to
// level 2, and everything else to the general driver.
#include "blas/level3/gemm_routing.hpp"

namespace tav::blas {

gemm_route route_gemm(const gemm_shape& s, int (*code_path)()) {
  if (s.m <= 0 || s.n <= 0) return gemm_route::quick_return;
  // An empty sum still scales C by beta, which the general driver does.
  if (s.k == 0) return gemm_route::general;
  // A conjugated operand of a complex product cannot become gemv's vector x (nor op(B) its
  // transposed matrix for the row form, nor either gemmger vector): those shapes go on.
  const bool conj_a = s.complex && s.transa == 2, conj_b = s.complex && s.transb == 2;
  if (s.m == 1 && !conj_a && !conj_b) return gemm_route::row_gemv;
  if (s.transb == 0 && s.m < 8 && (s.lda < 8 || s.lda % 256 == 0) && s.ldc < 8 &&
      s.ldb % 256 == 0 && code_path() == 6)
    return gemm_route::column_by_column_gemv;
  if (s.n == 1) return conj_b ? gemm_route::general : gemm_route::column_gemv;
  if (s.k == 1 && !conj_a && !conj_b) return gemm_route::rank1_update;
  return gemm_route::general;
}

}  // namespace tav::blas
