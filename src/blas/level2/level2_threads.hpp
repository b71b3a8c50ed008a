// How the level-2 updates split their work over the threads of the BLAS domain: one parallel
// region per call, each thread one contiguous range of rows or columns.
#pragma once

#include <omp.h>
#include <tav/tav_threads.h>

#include "common/scalar_traits.hpp"

namespace tav::blas {

// Matrices with fewer elements run on one thread. A 64K-element dgemv takes about 10 us on one
// core of the 2-core test machine; the fork and join of a warm libomp team, taken as 1-2 us on
// idle cores, costs under half of the ~5 us the second core saves. An estimate: the crossover could
// not be timed there, because with the second core busy every parallel region waited ~100 us.
constexpr index level2_parallel_elements = 65536;

// Threads for `elements` matrix elements in `units` indivisible pieces; a call from inside a
// parallel region stays on its own thread.
inline int level2_threads(index elements, index units) {
  if (elements < level2_parallel_elements || omp_in_parallel() != 0) return 1;
  const int threads = tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS);
  return units < threads ? static_cast<int>(units) : threads;
}

// Runs body(begin, end) over [0, count), split into contiguous ranges whose boundaries are
// multiples of `grain`, one per thread; `elements` is the size of the matrix behind the range.
template <class Body>
void for_ranges(index count, index grain, index elements, Body body) {
  const index units = (count + grain - 1) / grain;
  const int threads = level2_threads(elements, units);
  if (threads <= 1) {
    body(index{0}, count);
    return;
  }
#pragma omp parallel num_threads(threads)
  {
    const index part = omp_get_thread_num(), parts = omp_get_num_threads();
    const index begin = units * part / parts * grain;
    const index end = units * (part + 1) / parts * grain;
    if (begin < count) body(begin, end < count ? end : count);
  }
}

}  // namespace tav::blas
