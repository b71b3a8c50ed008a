// The thread split of the level-1 drivers: whether a vector is long enough to share, how many
// threads share it, and which contiguous part of it each thread takes.
#pragma once

#include <omp.h>

#include "common/scalar_traits.hpp"

namespace tav::blas {

// axpy and dot go parallel from 32 KiB of x and scal from 64 KiB; a thread's part is at least
// half of that (16 KiB, 32 KiB), large enough to stream from memory at full speed.
inline constexpr index stream_bytes = index{32} << 10;
inline constexpr index scale_bytes = index{64} << 10;

// The number of threads for n >= threshold elements: 1 with one thread in the BLAS domain,
// else min(ceil(n / chunk), threads) with chunk = threshold / 2.
int long_vector_team(index n, index threshold);

// Whether n elements stay on the calling thread without asking the thread settings: below
// `threshold` elements or with a zero increment. Inline, so that a short vector reaches its kernel
// after two compares; a longer one asks long_vector_team.
inline bool short_vector(index n, index threshold, bool zero_increment) {
  return n < threshold || zero_increment;
}

// A contiguous run of elements [start, start + length).
struct vector_part {
  index start;
  index length;
};

// Part `thread` of `team`: q = max(n div team, 1) and r = max(n - team·q, 0); threads t < r
// take q + 1 elements from t·(q + 1), the others q from t·q + r, clipped to [0, n).
vector_part thread_part(index n, int thread, int team);

// Offset, in elements from the base pointer, of the first stored element of `part` for
// increment inc: start·inc, or (n - start - length)·|inc| when inc < 0 (the far end first).
index part_offset(const vector_part& part, index n, index inc);

// Runs body(part, thread, size) on every thread of one parallel region of `team` threads; the
// runtime may grant fewer (size), down to one when it will not fork.
template <class Body>
void for_each_part(index n, int team, Body body) {
#pragma omp parallel num_threads(team)
  {
    const int size = omp_get_num_threads();
    const int thread = omp_get_thread_num();
    body(thread_part(n, thread, size), thread, size);
  }
}

}  // namespace tav::blas
