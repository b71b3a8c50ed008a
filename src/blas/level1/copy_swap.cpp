// The moves of level 1: y := x (copy) and x <-> y (swap).
#include <algorithm>
#include <cstring>

#include "blas/blas_internal.hpp"
#include "blas/level1/strided_vector.hpp"

namespace tav::blas {

template <class T>
void copy(index n, const T* x, index incx, T* y, index incy) {
  if (n < 1) return;
  if (incx == 1 && incy == 1) {
    // The C library's copy already streams at the machine's bandwidth on every processor.
    std::memmove(y, x, static_cast<size_t>(n) * sizeof(T));
    return;
  }
  const strided_vector<const T> from(x, n, incx);
  const strided_vector<T> to(y, n, incy);
  for (index i = 0; i < n; ++i) to[i] = from[i];
}

template <class T>
void swap(index n, T* x, index incx, T* y, index incy) {
  if (n < 1) return;
  if (incx == 1 && incy == 1) {
    std::swap_ranges(x, x + n, y);
    return;
  }
  const strided_vector<T> u(x, n, incx);
  const strided_vector<T> v(y, n, incy);
  for (index i = 0; i < n; ++i) std::swap(u[i], v[i]);
}

template void copy(index, const float*, index, float*, index);
template void copy(index, const double*, index, double*, index);
template void copy(index, const std::complex<float>*, index, std::complex<float>*, index);
template void copy(index, const std::complex<double>*, index, std::complex<double>*, index);

template void swap(index, float*, index, float*, index);
template void swap(index, double*, index, double*, index);
template void swap(index, std::complex<float>*, index, std::complex<float>*, index);
template void swap(index, std::complex<double>*, index, std::complex<double>*, index);

}  // namespace tav::blas
