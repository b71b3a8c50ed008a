// The long-double reference matrix product that level-3 tests compare against, with the
// elementwise error bound of a product computed in the element's own precision.
#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

namespace tav::test {

template <class T>
struct wide {
  using type = long double;
};
template <class R>
struct wide<std::complex<R>> {
  using type = std::complex<long double>;
};
// The long-double counterpart of an element type: long double or std::complex<long double>.
template <class T>
using wide_t = typename wide<T>::type;

template <class T>
wide_t<T> widen(const T& x) {
  if constexpr (std::is_floating_point_v<T>) return static_cast<long double>(x);
  else return wide_t<T>(x.real(), x.imag());
}

template <class T>
T narrow(const wide_t<T>& x) {
  if constexpr (std::is_floating_point_v<T>) return static_cast<T>(x);
  else return T(static_cast<typename T::value_type>(x.real()),
                static_cast<typename T::value_type>(x.imag()));
}

// |re| + |im| in long double.
template <class W>
long double wide_abs1(const W& x) {
  if constexpr (std::is_floating_point_v<W>) return std::fabs(x);
  else return std::fabs(x.real()) + std::fabs(x.imag());
}

// x·y by the textbook formula: the library's kernels multiply that way too, and it avoids the
// slow library call that C99 Annex G recovery of infinities needs.
template <class W>
W wide_mul(const W& x, const W& y) {
  if constexpr (std::is_floating_point_v<W>) return x * y;
  else return W(x.real() * y.real() - x.imag() * y.imag(), x.real() * y.imag() + x.imag() * y.real());
}

// Element (i, j) of op(X) for X column-major with leading dimension ld; trans 'N', 'T' or 'C'
// (either case).
template <class T>
wide_t<T> op_element(char trans, const T* x, int64_t ld, int64_t i, int64_t j) {
  char t = static_cast<char>(trans & ~0x20);
  if (t == 'N') return widen(x[i + j * ld]);
  wide_t<T> v = widen(x[j + i * ld]);
  if constexpr (!std::is_floating_point_v<T>) {
    if (t == 'C') v = std::conj(v);
  }
  return v;
}

// C := alpha·op(A)·op(B) + beta·C with every sum in long double and one rounding per element.
// As the BLAS promises: beta == 0 does not read C, alpha == 0 does not read A or B, m or n == 0
// touches nothing. Returns, per element of C (column-major, m x n, leading dimension m), the
// bound |alpha|·sum_l |op(A)_il|·|op(B)_lj| + |beta|·|C_ij| that scales the rounding error of a
// product computed in the element's precision (Higham, Accuracy and Stability, section 3.5).
template <class T>
std::vector<long double> reference_gemm(char transa, char transb, int64_t m, int64_t n, int64_t k,
                                        T alpha, const T* a, int64_t lda, const T* b, int64_t ldb,
                                        T beta, T* c, int64_t ldc) {
  std::vector<long double> scale(static_cast<size_t>(m > 0 && n > 0 ? m * n : 0), 0.0L);
  if (m <= 0 || n <= 0) return scale;
  const wide_t<T> wa = widen(alpha), wb = widen(beta);
  const bool alpha_zero = alpha == T(0), beta_zero = beta == T(0);
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < m; ++i) {
      wide_t<T> sum = 0;
      long double magnitude = 0;
      if (!alpha_zero) {
        for (int64_t l = 0; l < k; ++l) {
          wide_t<T> x = op_element(transa, a, lda, i, l), y = op_element(transb, b, ldb, l, j);
          sum += wide_mul(x, y);
          magnitude += wide_abs1(x) * wide_abs1(y);
        }
      }
      wide_t<T> result = alpha_zero ? wide_t<T>(0) : wide_mul(wa, sum);
      long double bound = alpha_zero ? 0.0L : wide_abs1(wa) * magnitude;
      if (!beta_zero) {
        wide_t<T> old = widen(c[i + j * ldc]);
        result += wide_mul(wb, old);
        bound += wide_abs1(wb) * wide_abs1(old);
      }
      c[i + j * ldc] = narrow<T>(result);
      scale[static_cast<size_t>(i + j * m)] = bound;
    }
  }
  return scale;
}

// Largest ratio |got - want| / ((k + 2)·eps·bound) over the m x n elements, the units in which a
// correct product stays below a small constant; NaN when the two disagree on which elements are
// finite, or for real types on which are NaN (complex Inf arithmetic may yield NaN or Inf). `want` and `bound` are column-major with leading dimension m, `got` with ldg.
template <class T>
long double gemm_error_ratio(int64_t m, int64_t n, int64_t k, const T* got, int64_t ldg,
                             const T* want, const std::vector<long double>& bound) {
  long double eps = 0;
  if constexpr (std::is_floating_point_v<T>) eps = std::numeric_limits<T>::epsilon();
  else eps = std::numeric_limits<typename T::value_type>::epsilon();
  long double worst = 0;
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < m; ++i) {
      wide_t<T> g = widen(got[i + j * ldg]), w = widen(want[i + j * m]);
      long double gm = wide_abs1(g), wm = wide_abs1(w);
      bool g_finite = std::isfinite(gm), w_finite = std::isfinite(wm);
      if (g_finite != w_finite) return NAN;
      if (!g_finite) {
        if (std::is_floating_point_v<T> && std::isnan(gm) != std::isnan(wm)) return NAN;
        continue;
      }
      long double diff = wide_abs1(g - w);
      if (diff == 0) continue;
      long double unit = static_cast<long double>(k + 2) * eps * bound[static_cast<size_t>(i + j * m)];
      // A nonzero difference against a zero bound means a term that should not exist.
      long double ratio = unit > 0 ? diff / unit : INFINITY;
      if (ratio > worst) worst = ratio;
    }
  }
  return worst;
}

}  // namespace tav::test
