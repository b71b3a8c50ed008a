// The rank-1 update with a beta, A := beta·A + alpha·x·op(y)^T, behind ger, gerc and GEMM's
// k = 1 case.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas {

// op(y) = conj(y) when conj_y is true (complex types), y otherwise. beta = 0 does not read A;
// alpha = 0 reads neither x nor y.
template <class T>
void rank1_update(bool conj_y, index m, index n, T alpha, const T* x, index incx, const T* y,
                  index incy, T beta, T* a, index lda);

}  // namespace tav::blas
