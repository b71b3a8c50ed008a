// The machine's copy bandwidth: memcpy of 128 MiB between two touched buffers, on one thread and
// split in halves over two, as the ceiling that out-of-place matrix copies are measured against.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "support/markdown_table.hpp"

namespace {

constexpr size_t bytes = size_t{128} << 20;
constexpr int repetitions = 15;

// Median seconds of one copy of `bytes` from `from` to `to`, split over `threads` threads.
double median_copy_seconds(const char* from, char* to, int threads) {
  std::vector<double> seconds;
  for (int r = 0; r < repetitions; ++r) {
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> team;
    const size_t share = bytes / threads;
    for (int t = 1; t < threads; ++t)
      team.emplace_back([=] { std::memcpy(to + t * share, from + t * share, share); });
    std::memcpy(to, from, share);
    for (std::thread& member : team) member.join();
    seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  std::nth_element(seconds.begin(), seconds.begin() + repetitions / 2, seconds.end());
  return seconds[repetitions / 2];
}

}  // namespace

int main() {
  const std::unique_ptr<char[]> from(new char[bytes]), to(new char[bytes]);
  // Touch every page of both buffers so that the copies time memory, not page faults.
  std::memset(from.get(), 1, bytes);
  std::memset(to.get(), 2, bytes);
  std::printf("## Copy bandwidth: memcpy of 128 MiB, median of %d\n\n", repetitions);
  tav::bench::markdown_table table({"threads", "ms", "copied GB/s", "traffic GB/s (read + write)"});
  for (int threads : {1, 2}) {
    const double s = median_copy_seconds(from.get(), to.get(), threads);
    table.add_row({std::to_string(threads), tav::bench::format("%.2f", s * 1e3),
                   tav::bench::format("%.2f", bytes / s / 1e9),
                   tav::bench::format("%.2f", 2.0 * bytes / s / 1e9)});
  }
  table.print(stdout);
  return 0;
}
