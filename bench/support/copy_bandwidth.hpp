// The machine's streaming ceiling: a large memcpy between two touched buffers, split in equal
// parts over some threads, against which memory-bound kernels are measured.
#pragma once

#include <cstddef>

namespace tav::bench {

inline constexpr size_t copy_bytes = size_t{128} << 20;
inline constexpr int copy_repetitions = 15;

// Read plus write traffic in GB/s of a memcpy of copy_bytes on `threads` threads, the median of
// copy_repetitions copies.
double copy_traffic_gbs(int threads);

}  // namespace tav::bench
