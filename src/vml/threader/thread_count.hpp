// How many threads one vector-math call uses: none below 100 elements, else the vector-math
// domain's maximum, or with dynamic threading a count proportional to the call's estimated work.
#pragma once

#include <atomic>

#include "service/threads/settings_store.hpp"

namespace tav::vml {

// Arrays shorter than this run in the caller's thread.
inline constexpr int threading_threshold = 100;

// The machine's work-to-threads factor A of t = int(w·n·A): 0 on one logical processor, else
// 2 / (9000·a + 60000·b + 500000·c), where a, b and c are the shares of the other logical
// processors that sit in another package, on another core of the same package, and on the same
// core. Computed once per process from P packages, C cores and L logical processors.
double machine_factor(int packages, int cores, int logical);

// Threads for n elements at cost w per element, at least 1; 1 inside a parallel region, so that
// a call made there never oversubscribes the processors.
int thread_count(int n, float cost);

// This machine's A once thread_count has computed it, else -1.
extern std::atomic<double> known_machine_factor;

// Whether thread_count(n, cost) is 1 by the work rule alone, decided inline without a call:
// dynamic threading on, A known and w·n·A < 2, the same test as thread_count's.
inline bool one_thread_by_work(int n, float cost) {
  const double factor = known_machine_factor.load(std::memory_order_relaxed);
  return factor >= 0 && service::settings().dynamic.load(std::memory_order_relaxed) == 1 &&
         static_cast<double>(cost) * n * factor < 2;
}

}  // namespace tav::vml
