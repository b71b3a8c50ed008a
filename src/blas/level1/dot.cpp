// Dot products, unconjugated (dot) and conjugated (dotc): the thread split around the per-path
// kernel and the reduction of the threads' partial results in a fixed order, so that the
// result does not depend on thread timing.
#include <tav/tav_error.h>

#include "blas/blas_internal.hpp"
#include "blas/level1/level1_slots.hpp"
#include "blas/level1/level1_split.hpp"
#include "common/scratch.hpp"

namespace tav::blas {
namespace {

// Up to this many threads the partial results live on the stack.
constexpr int local_partials = 512;

template <class T, class Kernel>
T kernel_dot(Kernel* kernel, index n, const T* x, index incx, const T* y, index incy) {
  T result;
  kernel(as_reals(&result), n, as_reals(x), incx, as_reals(y), incy);
  return result;
}

// r_0 + ... + r_{p-1} in the order fixed for every thread count: with eight or more partials
// after r_0, four two-lane accumulators (lo_k, hi_k), a_0 starting at (r_0, 0), take each group
// of eight r_{1+8g} ... r_{8+8g} pairwise, a_k += (r_{1+8g+2k}, r_{2+8g+2k}); then
// s = (a_0 + a_1) + (a_2 + a_3) lane by lane and the sum is lo(s) + hi(s). The partials not in a
// full group are added one at a time in index order.
template <class T>
T fixed_order_sum(const T* r, int p) {
  T sum = r[0];
  int next = 1;
  if (p - 1 >= 8) {
    T lo[4] = {r[0], T(0), T(0), T(0)};
    T hi[4] = {T(0), T(0), T(0), T(0)};
    for (; next + 8 <= p; next += 8) {
      for (int k = 0; k < 4; ++k) {
        lo[k] += r[next + 2 * k];
        hi[k] += r[next + 2 * k + 1];
      }
    }
    sum = ((lo[0] + lo[1]) + (lo[2] + lo[3])) + ((hi[0] + hi[1]) + (hi[2] + hi[3]));
  }
  for (; next < p; ++next) sum += r[next];
  return sum;
}

// A vector long enough to share: the team size, then the threads' partial results, apart so that a
// short vector reaches its kernel without saving registers.
template <class T, class Kernel>
[[gnu::noinline]] T dot_long(Kernel* kernel, index n, const T* x, index incx, const T* y,
                             index incy, const char* name) {
  const int team = long_vector_team(n, stream_bytes / index{sizeof(T)});
  if (team == 1) return kernel_dot(kernel, n, x, incx, y, incy);
  T local[local_partials];
  scratch<T> allocated;
  T* partials = local;
  if (team > local_partials) {
    allocated = scratch<T>(static_cast<size_t>(team), 128);
    if (!allocated) {
      tav_serv_check_ptr_and_warn(allocated.data(), name);
      return kernel_dot(kernel, n, x, incx, y, incy);
    }
    partials = allocated.data();
  }
  int parts = 1;
  for_each_part(n, team, [&](const vector_part& part, int thread, int size) {
    partials[thread] = part.length == 0
                           ? T(0)
                           : kernel_dot(kernel, part.length, x + part_offset(part, n, incx), incx,
                                        y + part_offset(part, n, incy), incy);
    if (thread == 0) parts = size;
  });
  return fixed_order_sum(partials, parts);
}

template <class T, class Slot>
T dot_split(index n, const T* x, index incx, const T* y, index incy, Slot& slot,
            const char* name) {
  if (n < 1) return T(0);
  if (short_vector(n, stream_bytes / index{sizeof(T)}, incx == 0 || incy == 0))
    return kernel_dot(slot.target(), n, x, incx, y, incy);
  return dot_long(slot.target(), n, x, incx, y, incy, name);
}

}  // namespace

template <class T>
T dot(index n, const T* x, index incx, const T* y, index incy) {
  return dot_split(n, x, incx, y, incy, level1_slots<T>::dot, level1_slots<T>::dot_name);
}

template <class T>
T dotc(index n, const T* x, index incx, const T* y, index incy) {
  if constexpr (is_complex_v<T>)
    return dot_split(n, x, incx, y, incy, level1_slots<T>::dotc, level1_slots<T>::dotc_name);
  else
    return dot(n, x, incx, y, incy);
}

template float dot(index, const float*, index, const float*, index);
template double dot(index, const double*, index, const double*, index);
template std::complex<float> dot(index, const std::complex<float>*, index,
                                 const std::complex<float>*, index);
template std::complex<double> dot(index, const std::complex<double>*, index,
                                  const std::complex<double>*, index);

template float dotc(index, const float*, index, const float*, index);
template double dotc(index, const double*, index, const double*, index);
template std::complex<float> dotc(index, const std::complex<float>*, index,
                                  const std::complex<float>*, index);
template std::complex<double> dotc(index, const std::complex<double>*, index,
                                   const std::complex<double>*, index);

}  // namespace tav::blas
