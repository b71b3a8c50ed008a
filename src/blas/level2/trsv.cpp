// The triangular solve x := op(A)^-1·x, op(A) = A, A^T or A^H, A upper or lower with a stored or
// unit diagonal: diagonal blocks by substitution, the panels beside them by gemv. Only the
// triangle `uplo` is read, and the diagonal not at all when diag is 'U'.
#include <complex>

#include "blas/blas_internal.hpp"
#include "blas/level2/strided_vectors.hpp"

namespace tav::blas {
namespace {

// Diagonal blocks of 64: substitution does n·64/2 of the n²/2 multiply-adds, gemv the rest.
constexpr index block = 64;

template <class T>
T op(const T& a, bool conj) {
  return conj ? conj_if_complex(a) : a;
}

// x := op(A11)^-1·x for the nb x nb diagonal block A11; x is the element-0 address.
template <class T>
void diagonal_block(bool upper, bool trans, bool conj, bool unit, index nb, const T* a, index lda,
                    T* x, index incx) {
  if (!trans) {
    // Column-oriented substitution: x(j) := x(j) / a(j, j), then x(i) -= x(j)·a(i, j) over the
    // off-diagonal of column j; backwards for upper, forwards for lower.
    for (index s = 0; s < nb; ++s) {
      const index j = upper ? nb - 1 - s : s;
      const T* aj = a + j * lda;
      if (!unit) x[j * incx] /= aj[j];
      const T xj = x[j * incx];
      const index i0 = upper ? 0 : j + 1, i1 = upper ? j : nb;
      for (index i = i0; i < i1; ++i) x[i * incx] -= xj * aj[i];
    }
  } else {
    // Dot-oriented substitution: x(j) := (x(j) - sum op(a(i, j))·x(i)) / op(a(j, j)) over the
    // off-diagonal of column j, whose x(i) are already solved; forwards for upper, backwards
    // for lower.
    for (index s = 0; s < nb; ++s) {
      const index j = upper ? s : nb - 1 - s;
      const T* aj = a + j * lda;
      T t = x[j * incx];
      const index i0 = upper ? 0 : j + 1, i1 = upper ? j : nb;
      for (index i = i0; i < i1; ++i) t -= op(aj[i], conj) * x[i * incx];
      x[j * incx] = unit ? t : t / op(aj[j], conj);
    }
  }
}

}  // namespace

template <class T>
void trsv(char uplo, char trans, char diag, index n, const T* a, index lda, T* x, index incx) {
  if (n <= 0) return;
  const bool upper = option(uplo) == 'U', unit = option(diag) == 'U';
  const char op_trans = option(trans);
  const bool transposed = op_trans != 'N', conj = is_complex_v<T> && op_trans == 'C';
  T* x0 = first_element(x, n, incx);
  const index last = (n - 1) / block * block;
  // Block k's panel P lies above A11 (upper) or below it (lower). op(A) is lower triangular
  // (lower and A, or upper and A^T) when the solve runs forwards through the blocks.
  const bool forward = upper == transposed;
  for (index s = 0; s <= last; s += block) {
    const index k = forward ? s : last - s;
    const index nb = n - k < block ? n - k : block;
    const index p0 = upper ? 0 : k + nb, pm = upper ? k : n - k - nb;
    const T* panel = a + p0 + k * lda;
    T* xk = sub_vector(x0, k, nb, incx);
    if (!transposed) {
      // x(k:k+nb) := A11^-1·x(k:k+nb), then x(p) -= P·x(k:k+nb) for the blocks still to solve
      diagonal_block(upper, false, false, unit, nb, a + k + k * lda, lda, x0 + k * incx, incx);
      if (pm > 0)
        gemv<T>('N', pm, nb, T(-1), panel, lda, xk, incx, T(1), sub_vector(x0, p0, pm, incx), incx);
    } else {
      // x(k:k+nb) := op(A11)^-1·(x(k:k+nb) - op(P)^T·x(p)) with x(p) already solved
      if (pm > 0)
        gemv<T>(op_trans, pm, nb, T(-1), panel, lda, sub_vector(x0, p0, pm, incx), incx, T(1), xk,
                incx);
      diagonal_block(upper, true, conj, unit, nb, a + k + k * lda, lda, x0 + k * incx, incx);
    }
  }
}

template void trsv<float>(char, char, char, index, const float*, index, float*, index);
template void trsv<double>(char, char, char, index, const double*, index, double*, index);
template void trsv<std::complex<float>>(char, char, char, index, const std::complex<float>*, index,
                                        std::complex<float>*, index);
template void trsv<std::complex<double>>(char, char, char, index, const std::complex<double>*,
                                         index, std::complex<double>*, index);

}  // namespace tav::blas
