// y := alpha·x + y: the quick returns and the thread split around the per-path kernel.
#include "blas/blas_internal.hpp"
#include "blas/level1/level1_slots.hpp"
#include "blas/level1/level1_split.hpp"

namespace tav::blas {
namespace {

// A vector long enough to share: the team size, then the threads' parts, apart so that a short
// vector reaches its kernel without saving registers.
template <class T, class Kernel>
[[gnu::noinline]] void axpy_long(Kernel* kernel, index n, const real_t<T>* alpha, const T* x,
                                 index incx, T* y, index incy) {
  const int team = long_vector_team(n, stream_bytes / index{sizeof(T)});
  if (team == 1) return kernel(n, alpha, as_reals(x), incx, as_reals(y), incy);
  for_each_part(n, team, [&](const vector_part& part, int, int) {
    if (part.length == 0) return;
    kernel(part.length, alpha, as_reals(x + part_offset(part, n, incx)), incx,
           as_reals(y + part_offset(part, n, incy)), incy);
  });
}

}  // namespace

template <class T>
void axpy(index n, T alpha, const T* x, index incx, T* y, index incy) {
  // A NaN alpha compares unequal to zero and goes on to spread through y.
  if (n < 1 || alpha == T(0)) return;
  auto* const kernel = level1_slots<T>::axpy.target();
  if (short_vector(n, stream_bytes / index{sizeof(T)}, incx == 0 || incy == 0))
    kernel(n, as_reals(&alpha), as_reals(x), incx, as_reals(y), incy);
  else
    axpy_long(kernel, n, as_reals(&alpha), x, incx, y, incy);
}

template void axpy(index, float, const float*, index, float*, index);
template void axpy(index, double, const double*, index, double*, index);
template void axpy(index, std::complex<float>, const std::complex<float>*, index,
                   std::complex<float>*, index);
template void axpy(index, std::complex<double>, const std::complex<double>*, index,
                   std::complex<double>*, index);

}  // namespace tav::blas
