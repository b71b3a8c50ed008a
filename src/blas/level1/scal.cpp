// x := alpha·x, with alpha of the element type (scal) or real on complex x (scal_real): the
// thread split around the per-path kernel, with no quick return on alpha (0·NaN stays NaN).
#include "blas/blas_internal.hpp"
#include "blas/level1/level1_slots.hpp"
#include "blas/level1/level1_split.hpp"

namespace tav::blas {
namespace {

// A vector long enough to share: the team size, then the threads' parts, apart so that a short
// vector reaches its kernel without saving registers.
template <class T, class Kernel>
[[gnu::noinline]] void scal_long(Kernel* kernel, index n, const real_t<T>* alpha, T* x,
                                 index incx) {
  const int team = long_vector_team(n, scale_bytes / index{sizeof(T)});
  if (team == 1) return kernel(n, alpha, as_reals(x), incx);
  for_each_part(n, team, [&](const vector_part& part, int, int) {
    if (part.length > 0) kernel(part.length, alpha, as_reals(x + part_offset(part, n, incx)), incx);
  });
}

template <class T, class Alpha, class Slot>
void scal_split(index n, const Alpha& alpha, T* x, index incx, Slot& slot) {
  if (n < 1) return;
  if (short_vector(n, scale_bytes / index{sizeof(T)}, incx == 0))
    slot.target()(n, as_reals(&alpha), as_reals(x), incx);
  else
    scal_long(slot.target(), n, as_reals(&alpha), x, incx);
}

}  // namespace

template <class T>
void scal(index n, T alpha, T* x, index incx) {
  scal_split(n, alpha, x, incx, level1_slots<T>::scal);
}

template <class T>
void scal_real(index n, real_t<T> alpha, T* x, index incx) {
  if constexpr (is_complex_v<T>) scal_split(n, alpha, x, incx, level1_slots<T>::scal_real);
  else scal(n, alpha, x, incx);
}

template void scal(index, float, float*, index);
template void scal(index, double, double*, index);
template void scal(index, std::complex<float>, std::complex<float>*, index);
template void scal(index, std::complex<double>, std::complex<double>*, index);

template void scal_real(index, float, float*, index);
template void scal_real(index, double, double*, index);
template void scal_real(index, float, std::complex<float>*, index);
template void scal_real(index, double, std::complex<double>*, index);

}  // namespace tav::blas
