// The thread count of a vector-math call: threshold, the domain's maximum and dynamic threading.
#include "vml/threader/thread_count.hpp"

#include <omp.h>
#include <tav/tav_threads.h>

#include "service/threads/thread_settings.hpp"

namespace tav::vml {

constinit std::atomic<double> known_machine_factor{-1};

namespace {

constexpr int vector_math_domain = 3;

// Computed by the first call that needs it and kept in known_machine_factor, which the inline
// check reads too: one copy of the value. Two threads computing it at once store the same number.
double this_machine_factor() {
  double factor = known_machine_factor.load(std::memory_order_relaxed);
  if (factor >= 0) return factor;
  const service::hardware_counts& counts = service::hardware();
  factor = machine_factor(counts.packages, counts.packages * counts.cores_per_package,
                          counts.logical);
  known_machine_factor.store(factor, std::memory_order_relaxed);
  return factor;
}

}  // namespace

double machine_factor(int packages, int cores, int logical) {
  if (logical <= 1) return 0;
  const int p = packages < 1 ? 1 : packages, c = cores < 1 ? 1 : cores;
  const double others = logical - 1;
  // The counts' own quotients (processors per package, cores per package, processors per core)
  // are integer divisions; the shares are fractions of the L - 1 other processors.
  const double a = (logical / p) * (p - 1) / others;
  const double b = (c / p - 1) * (logical / c) / others;
  const double s = (logical / c - 1) / others;
  return 2.0 / (9000.0 * a + 60000.0 * b + 500000.0 * s);
}

// With dynamic threading, t = min(int(w·n·A), domain maximum), at least 1. The work estimate
// comes first: when it asks for one thread the answer is 1 whatever the maximum or the caller's
// parallel region, and short calls skip both queries (a fifth of a 1000-element addition).
int thread_count(int n, float cost) {
  if (n < threading_threshold) return 1;
  const bool dynamic = service::dynamic_threading();
  const double wanted = dynamic ? static_cast<double>(cost) * n * this_machine_factor() : 0;
  if ((dynamic && wanted < 2) || omp_in_parallel()) return 1;
  const int most = tav_serv_domain_get_max_threads(vector_math_domain);
  if (most <= 1) return 1;
  return !dynamic || wanted >= most ? most : static_cast<int>(wanted);
}

}  // namespace tav::vml
