// The copy-bandwidth ceiling shared by the memory-bound benchmarks.
#include "support/copy_bandwidth.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

namespace tav::bench {
namespace {

double median_copy_seconds(const char* from, char* to, size_t bytes, int threads,
                           int repetitions) {
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

double copy_traffic_gbs(int threads) {
  constexpr size_t bytes = copy_bytes;
  const std::unique_ptr<char[]> from(new char[bytes]), to(new char[bytes]);
  // Touch every page of both buffers so that the copies time memory, not page faults.
  std::memset(from.get(), 1, bytes);
  std::memset(to.get(), 2, bytes);
  return 2.0 * bytes / median_copy_seconds(from.get(), to.get(), bytes, threads, copy_repetitions) / 1e9;
}

}  // namespace tav::bench
