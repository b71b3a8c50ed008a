// Long-double references for the level-2 BLAS (matrix-vector products, rank-1 and rank-2 updates,
// triangular products, row interchanges), each with the magnitude that bounds the rounding
// error of the same result computed in the element's own precision, and random test data.
#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include "reference_level3.hpp"

namespace tav::test::level2_ref {

// widen, wide_t, wide_abs1 and op_element come from reference_level3.hpp.

template <class T>
inline constexpr bool is_complex = !std::is_floating_point_v<T>;

// The real type of an element: float for std::complex<float>.
template <class T>
struct real_of {
  using type = T;
};
template <class R>
struct real_of<std::complex<R>> {
  using type = R;
};

template <class W>
W conj_if(const W& x, bool conj) {
  if constexpr (std::is_floating_point_v<W>) return x;
  else return conj ? std::conj(x) : x;
}

// A long-double result and the sum of the magnitudes of its terms: a sum of k products computed
// in precision eps errs by at most about k·eps·scale (Higham, Accuracy and Stability, 3.1).
template <class T>
struct value {
  wide_t<T> exact;
  long double scale;
};

// |computed - exact| in units of (terms + 2)·eps·scale; below 1 for a correct summation, and the
// tests fail above 30. NaN gives NaN, which fails every comparison.
template <class T>
long double error_ratio(const T& computed, const value<T>& v, int64_t terms) {
  using R = typename real_of<T>::type;
  const long double err = wide_abs1(widen(computed) - v.exact);
  if (err == 0) return 0;
  const long double eps = std::numeric_limits<R>::epsilon();
  return err / (static_cast<long double>(terms + 2) * eps * v.scale);
}

// A dense column-major matrix of logical elements: element (i, j) at data[i + j·ld].
template <class T>
struct dense {
  int64_t rows, cols, ld;
  std::vector<T> data;
  const T& operator()(int64_t i, int64_t j) const { return data[static_cast<size_t>(i + j * ld)]; }
};

// y := alpha·op(A)·x + beta·y over logical (unstrided) x and y; beta = 0 ignores y, alpha = 0
// ignores A and x, and m = 0 or n = 0 leaves y as it is.
template <class T>
std::vector<value<T>> gemv(char trans, int64_t m, int64_t n, T alpha, const T* a, int64_t lda,
                           const std::vector<T>& x, T beta, const std::vector<T>& y) {
  const int64_t rows = trans == 'N' ? m : n, inner = trans == 'N' ? n : m;
  std::vector<value<T>> out(static_cast<size_t>(rows));
  if (m <= 0 || n <= 0) {
    for (int64_t i = 0; i < rows; ++i)
      out[static_cast<size_t>(i)] = {widen(y[i]), wide_abs1(widen(y[i]))};
    return out;
  }
  for (int64_t i = 0; i < rows; ++i) {
    wide_t<T> sum = 0;
    long double scale = 0;
    if (alpha != T(0)) {
      for (int64_t l = 0; l < inner; ++l) {
        const wide_t<T> t = widen(alpha) * op_element(trans, a, lda, i, l) * widen(x[l]);
        sum += t;
        scale += wide_abs1(widen(alpha)) * wide_abs1(op_element(trans, a, lda, i, l)) *
                 wide_abs1(widen(x[l]));
      }
    }
    if (beta != T(0)) {
      sum += widen(beta) * widen(y[i]);
      scale += wide_abs1(widen(beta)) * wide_abs1(widen(y[i]));
    }
    out[static_cast<size_t>(i)] = {sum, scale};
  }
  return out;
}

// A := beta·A + alpha·x·op(y)^T + alpha2·y2·op(x2)^T over the whole m x n matrix, op = conj when
// `conj`; beta = 0 ignores A. With alpha2 = 0 it is the rank-1 update.
template <class T>
std::vector<value<T>> rank_update(bool conj, int64_t m, int64_t n, T alpha, const std::vector<T>& x,
                                  const std::vector<T>& y, T alpha2, const std::vector<T>& y2,
                                  const std::vector<T>& x2, T beta, const T* a, int64_t lda) {
  std::vector<value<T>> out(static_cast<size_t>(m * n));
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < m; ++i) {
      wide_t<T> t = widen(alpha) * widen(x[i]) * conj_if(widen(y[j]), conj);
      long double scale =
          wide_abs1(widen(alpha)) * wide_abs1(widen(x[i])) * wide_abs1(widen(y[j]));
      if (alpha2 != T(0)) {
        t += widen(alpha2) * widen(y2[i]) * conj_if(widen(x2[j]), conj);
        scale += wide_abs1(widen(alpha2)) * wide_abs1(widen(y2[i])) * wide_abs1(widen(x2[j]));
      }
      if (beta != T(0)) {
        t += widen(beta) * widen(a[i + j * lda]);
        scale += wide_abs1(widen(beta)) * wide_abs1(widen(a[i + j * lda]));
      }
      out[static_cast<size_t>(i + j * m)] = {t, scale};
    }
  }
  return out;
}

// The full n x n matrix behind the triangle `uplo` of a: symmetric, or Hermitian with a real
// diagonal (the imaginary part of the stored diagonal is ignored).
template <class T>
dense<T> full_symmetric(bool hermitian, char uplo, int64_t n, const T* a, int64_t lda) {
  dense<T> f{n, n, n > 0 ? n : 1, std::vector<T>(static_cast<size_t>(n * n))};
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < n; ++i) {
      const bool stored = uplo == 'U' ? i <= j : i >= j;
      T v = stored ? a[i + j * lda] : a[j + i * lda];
      if constexpr (is_complex<T>) {
        if (hermitian && !stored) v = std::conj(v);
        if (hermitian && i == j) v = T(v.real(), 0);
      }
      f.data[static_cast<size_t>(i + j * n)] = v;
    }
  }
  return f;
}

// The full n x n matrix of the triangle `uplo` of a with zeros elsewhere and, for diag 'U', ones
// on the diagonal (the stored diagonal ignored).
template <class T>
dense<T> full_triangular(char uplo, char diag, int64_t n, const T* a, int64_t lda) {
  dense<T> f{n, n, n > 0 ? n : 1, std::vector<T>(static_cast<size_t>(n * n), T(0))};
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < n; ++i) {
      if (i == j) f.data[static_cast<size_t>(i + j * n)] = diag == 'U' ? T(1) : a[i + j * lda];
      else if (uplo == 'U' ? i < j : i > j) f.data[static_cast<size_t>(i + j * n)] = a[i + j * lda];
    }
  }
  return f;
}

// A after the interchanges of laswp, one at a time as LAPACK defines them.
template <class T>
dense<T> swap_rows(dense<T> a, int64_t k1, int64_t k2, const std::vector<int64_t>& ipiv,
                   int64_t incx) {
  const int64_t step = incx > 0 ? incx : -incx;
  for (int64_t s = 0; s <= k2 - k1; ++s) {
    const int64_t i = incx > 0 ? k1 + s : k2 - s;
    const int64_t p = ipiv[static_cast<size_t>(k1 - 1 + (i - k1) * step)];
    for (int64_t j = 0; j < a.cols; ++j)
      std::swap(a.data[static_cast<size_t>(i - 1 + j * a.ld)],
                a.data[static_cast<size_t>(p - 1 + j * a.ld)]);
  }
  return a;
}

// Uniform in [-1, 1) in each part.
template <class T>
T random_value(std::mt19937_64& rng) {
  std::uniform_real_distribution<double> d(-1.0, 1.0);
  if constexpr (is_complex<T>) {
    using R = typename T::value_type;
    const R re = static_cast<R>(d(rng));
    return T(re, static_cast<R>(d(rng)));
  } else {
    return static_cast<T>(d(rng));
  }
}

template <class T>
std::vector<T> random_vector(int64_t n, std::mt19937_64& rng) {
  std::vector<T> v(static_cast<size_t>(n > 0 ? n : 0));
  for (T& e : v) e = random_value<T>(rng);
  return v;
}

}  // namespace tav::test::level2_ref
