// Time per element of the power kernels of one family, called directly through the kernel
// tables (no threader): vdPow, vsPow, vzPow and vcPow in LA, HA and EP at n = 1000, thread CPU
// time, the best of many runs; and each one's ratio to vdPow of the same accuracy, which is what
// the cost tables in src/vml/tables/pow_tables.cpp hold. Argument: the table slot (vector-math
// CPU type) of the family, 7 (E7, the avx2 path) by default.
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "support/interleaved_timing.hpp"
#include "vml/tables/function_tables.hpp"

namespace {

using tav::bench::thread_seconds;

// Best of 30 runs of 100 calls, in ns per element.
template <class T>
double time_kernel(tav::vml::kernel_fn<T> kernel, const std::vector<T>& a,
                   const std::vector<T>& b) {
  const int n = static_cast<int>(a.size());
  std::vector<T> r(n);
  double best = INFINITY;
  for (int run = 0; run < 30; ++run) {
    const double start = thread_seconds();
    for (int call = 0; call < 100; ++call) kernel(n, a.data(), b.data(), r.data());
    best = std::fmin(best, (thread_seconds() - start) / (100.0 * n) * 1e9);
  }
  return best;
}

// Real: x = 2^u, y = v with u, v uniform in [-8, 8] (vml_pow_bench's data). Complex: |a| = 2^u,
// u uniform in [-10, 10], arg a uniform, parts of b uniform in [-4, 4]: results in range, so
// every element takes the vector formula.
template <class T>
void fill(std::vector<T>& a, std::vector<T>& b, int n) {
  std::mt19937_64 gen(42);
  std::uniform_real_distribution<double> u(-1, 1);
  a.resize(n);
  b.resize(n);
  for (int i = 0; i < n; ++i) {
    if constexpr (std::is_floating_point_v<T>) {
      a[i] = static_cast<T>(std::exp2(8 * u(gen)));
      b[i] = static_cast<T>(8 * u(gen));
    } else {
      using R = typename T::value_type;
      const double rho = std::exp2(10 * u(gen)), phi = M_PI * u(gen);
      a[i] = {static_cast<R>(rho * std::cos(phi)), static_cast<R>(rho * std::sin(phi))};
      b[i] = {static_cast<R>(4 * u(gen)), static_cast<R>(4 * u(gen))};
    }
  }
}

template <class T>
void row(const char* name, const tav::vml::kernel_fn<T>* table, int slot, const double* dpow) {
  std::vector<T> a, b;
  fill(a, b, 1000);
  std::printf("| %s |", name);
  for (int acc = 0; acc < 3; ++acc) {
    const double ns = time_kernel(table[slot + 10 * acc], a, b);
    std::printf(" %.2f (%.2f) |", ns, dpow != nullptr ? ns / dpow[acc] : 1.0);
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  const int slot = argc > 1 ? std::atoi(argv[1]) : 7;
  if (slot < 0 || slot > 9) return 1;
  std::vector<double> a, b;
  fill(a, b, 1000);
  double dpow[3];
  for (int acc = 0; acc < 3; ++acc)
    dpow[acc] = time_kernel(tav_vml_kernel_dPow_ttab[slot + 10 * acc], a, b);
  std::printf("slot %d: ns per element (ratio to vdPow of the same accuracy)\n\n", slot);
  std::printf("| routine | LA | HA | EP |\n|---|---|---|---|\n");
  std::printf("| vdPow | %.2f | %.2f | %.2f |\n", dpow[0], dpow[1], dpow[2]);
  row("vsPow", tav_vml_kernel_sPow_ttab, slot, dpow);
  row("vzPow", tav_vml_kernel_zPow_ttab, slot, dpow);
  row("vcPow", tav_vml_kernel_cPow_ttab, slot, dpow);
}
