// Row interchanges of LU pivoting: for each i of k1..k2 (1-based), row i of A swaps with row
// ipiv(i), forwards for incx > 0 and backwards (undoing a forward sequence) for incx < 0.
#include <complex>
#include <utility>

#include "blas/blas_internal.hpp"

namespace tav::blas {
namespace {

// Columns per pass: 32 columns of one row span 32 cache lines, which stay in L1 while all the
// interchanges of the pass reuse them.
constexpr index column_block = 32;

}  // namespace

template <class T>
void laswp(index n, T* a, index lda, index k1, index k2, const index* ipiv, index incx) {
  if (n <= 0 || incx == 0 || k2 < k1) return;
  // Row i pairs with the 1-based entry k1 + (i - k1)·|incx| of ipiv, in either direction.
  const index step = incx > 0 ? incx : -incx;
  const index count = k2 - k1 + 1;
  for (index j0 = 0; j0 < n; j0 += column_block) {
    const index j1 = n - j0 < column_block ? n : j0 + column_block;
    for (index s = 0; s < count; ++s) {
      const index i = incx > 0 ? k1 + s : k2 - s;  // 1-based row
      const index p = ipiv[k1 - 1 + (i - k1) * step];
      if (p == i) continue;
      T* row_i = a + (i - 1);
      T* row_p = a + (p - 1);
      for (index j = j0; j < j1; ++j) std::swap(row_i[j * lda], row_p[j * lda]);
    }
  }
}

template void laswp<float>(index, float*, index, index, index, const index*, index);
template void laswp<double>(index, double*, index, index, index, const index*, index);
template void laswp<std::complex<float>>(index, std::complex<float>*, index, index, index,
                                         const index*, index);
template void laswp<std::complex<double>>(index, std::complex<double>*, index, index, index,
                                          const index*, index);

}  // namespace tav::blas
