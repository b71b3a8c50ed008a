// The interleaved timing loop and its medians.
#include "support/interleaved_timing.hpp"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace tav::bench {

double thread_seconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

std::vector<double> interleaved_medians(const std::vector<candidate>& candidates,
                                        const timing_plan& plan) {
  using clock = std::chrono::steady_clock;
  std::vector<std::vector<double>> per_call(candidates.size());
  for (int round = 0; round < plan.rounds; ++round) {
    for (size_t c = 0; c < candidates.size(); ++c) {
      if (plan.settle_seconds > 0)
        std::this_thread::sleep_for(std::chrono::duration<double>(plan.settle_seconds));
      candidates[c].prepare();
      candidates[c].call();
      const clock::time_point start = clock::now();
      const double cpu_start = thread_seconds();
      for (int k = 0; k < plan.calls; ++k) candidates[c].call();
      const std::chrono::duration<double> elapsed = clock::now() - start;
      const double seconds = plan.thread_cpu_time ? thread_seconds() - cpu_start : elapsed.count();
      per_call[c].push_back(seconds / plan.calls);
    }
  }
  std::vector<double> medians;
  for (std::vector<double>& times : per_call) {
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    medians.push_back(times[times.size() / 2]);
  }
  return medians;
}

}  // namespace tav::bench
