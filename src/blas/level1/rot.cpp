// Plane rotations of two vectors, with a real sine (srot, drot, csrot, zdrot) or a complex one
// (the complex rotation that LAPACK's eigenvalue codes apply).
#include "blas/blas_internal.hpp"
#include "blas/level1/strided_vector.hpp"

namespace tav::blas {

// (x_i, y_i) := (c·x_i + s·y_i, c·y_i - conj(s)·x_i); for a real s, conj(s) = s.
template <class T, class S>
void rot(index n, T* x, index incx, T* y, index incy, real_t<T> c, S s) {
  if (n < 1) return;
  const strided_vector<T> u(x, n, incx);
  const strided_vector<T> v(y, n, incy);
  const S conj_s = conj_if_complex(s);
  for (index i = 0; i < n; ++i) {
    const T xi = u[i];
    const T yi = v[i];
    u[i] = c * xi + s * yi;
    v[i] = c * yi - conj_s * xi;
  }
}

template void rot(index, float*, index, float*, index, float, float);
template void rot(index, double*, index, double*, index, double, double);
template void rot(index, std::complex<float>*, index, std::complex<float>*, index, float, float);
template void rot(index, std::complex<double>*, index, std::complex<double>*, index, double,
                  double);
template void rot(index, std::complex<float>*, index, std::complex<float>*, index, float,
                  std::complex<float>);
template void rot(index, std::complex<double>*, index, std::complex<double>*, index, double,
                  std::complex<double>);

}  // namespace tav::blas
