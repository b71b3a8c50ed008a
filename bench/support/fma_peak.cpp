// The FMA-throughput loop. Twelve independent accumulators cover the FMA latency (4 cycles on
// Zen 3 and Haswell) times the two FMA pipes with room to spare, so the loop is bound by issue
// alone: 2 FMAs of 4 doubles per cycle give 16 flops per cycle per core.
#include "support/fma_peak.hpp"

#include <immintrin.h>
#include <omp.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace tav::bench {
namespace {

constexpr int accumulators = 12;
constexpr long iterations = 50'000'000;

// Returns a value that depends on every accumulator so the loop cannot be removed.
__attribute__((target("avx2,fma"))) double fma_burst(long count) {
  __m256d acc[accumulators];
  for (int i = 0; i < accumulators; ++i) acc[i] = _mm256_set1_pd(1.0 + i * 1e-9);
  const __m256d x = _mm256_set1_pd(0.999999999), y = _mm256_set1_pd(1e-12);
  for (long it = 0; it < count; ++it) {
#pragma unroll
    for (int i = 0; i < accumulators; ++i) acc[i] = _mm256_fmadd_pd(acc[i], x, y);
    __asm__ volatile("" : "+x"(acc[0]), "+x"(acc[1]), "+x"(acc[2]), "+x"(acc[3]), "+x"(acc[4]),
                     "+x"(acc[5]), "+x"(acc[6]), "+x"(acc[7]), "+x"(acc[8]), "+x"(acc[9]),
                     "+x"(acc[10]), "+x"(acc[11]));
  }
  __m256d sum = acc[0];
  for (int i = 1; i < accumulators; ++i) sum = _mm256_add_pd(sum, acc[i]);
  alignas(32) double lanes[4];
  _mm256_store_pd(lanes, sum);
  return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}

}  // namespace

double fma_peak_gflops(int threads) {
  if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma")) return 0;
  std::vector<double> rates;
  volatile double sink = 0;
  for (int burst = 0; burst < 5; ++burst) {
    const auto start = std::chrono::steady_clock::now();
    double total = 0;
#pragma omp parallel num_threads(threads) reduction(+ : total)
    total += fma_burst(iterations);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    sink = sink + total;
    const double flops = 2.0 * 4 * accumulators * static_cast<double>(iterations) * threads;
    rates.push_back(flops / elapsed.count() * 1e-9);
  }
  std::nth_element(rates.begin(), rates.begin() + rates.size() / 2, rates.end());
  return rates[rates.size() / 2];
}

}  // namespace tav::bench
