// The |re| + |im| measures of a vector: their sum (asum) and the position of the largest (iamax).
#include "blas/blas_internal.hpp"
#include "blas/level1/strided_vector.hpp"

namespace tav::blas {

template <class T>
real_t<T> asum(index n, const T* x, index incx) {
  if (n < 1) return 0;
  const strided_vector<const T> v(x, n, incx);
  // Four partial sums, element i into sum i mod 4, so that four additions are in flight.
  real_t<T> s[4] = {0, 0, 0, 0};
  index i = 0;
  for (; i + 4 <= n; i += 4) {
    for (int k = 0; k < 4; ++k) s[k] += abs1(v[i + k]);
  }
  for (int k = 0; i < n; ++i, ++k) s[k] += abs1(v[i]);
  return (s[0] + s[1]) + (s[2] + s[3]);
}

template <class T>
index iamax(index n, const T* x, index incx) {
  if (n < 1) return 0;
  const strided_vector<const T> v(x, n, incx);
  // Strictly greater replaces the maximum: the first of equal values wins, and a NaN, which
  // compares false, is chosen only when it is element 1.
  index best = 0;
  real_t<T> largest = abs1(v[0]);
  for (index i = 1; i < n; ++i) {
    const real_t<T> a = abs1(v[i]);
    if (a > largest) {
      largest = a;
      best = i;
    }
  }
  return best + 1;
}

template float asum(index, const float*, index);
template double asum(index, const double*, index);
template float asum(index, const std::complex<float>*, index);
template double asum(index, const std::complex<double>*, index);

template index iamax(index, const float*, index);
template index iamax(index, const double*, index);
template index iamax(index, const std::complex<float>*, index);
template index iamax(index, const std::complex<double>*, index);

}  // namespace tav::blas
