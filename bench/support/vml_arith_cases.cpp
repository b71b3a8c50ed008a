// The vector-arithmetic benchmark cases (see vml_arith_cases.hpp).
#include "support/vml_arith_cases.hpp"

#include <omp.h>
#include <tav/tav_threads.h>
#include <tav/tav_vml.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/copy_bandwidth.hpp"
#include "support/interleaved_timing.hpp"
#include "support/markdown_table.hpp"
#include "support/path_runs.hpp"

namespace tav::bench {
namespace {

using real_fn = void (*)(int, const double*, const double*, double*);
using complex_fn = void (*)(int, const tav_complex16*, const tav_complex16*, tav_complex16*);
using cd = std::complex<double>;

// The loops TAV competes with, compiled by the compiler's vectoriser at -O3: once for the
// baseline and once for AVX2 with FMA, matching the path that TAV runs.
#define TAV_BENCH_REFERENCE_LOOPS(suffix, attributes)                                          \
  attributes void add_loop##suffix(int n, const double* a, const double* b, double* r) {      \
    for (int i = 0; i < n; ++i) r[i] = a[i] + b[i];                                            \
  }                                                                                            \
  attributes void mul_loop##suffix(int n, const double* a, const double* b, double* r) {      \
    for (int i = 0; i < n; ++i) r[i] = a[i] * b[i];                                            \
  }                                                                                            \
  attributes void div_loop##suffix(int n, const double* a, const double* b, double* r) {      \
    for (int i = 0; i < n; ++i) r[i] = a[i] / b[i];                                            \
  }                                                                                            \
  attributes void cmul_loop##suffix(int n, const cd* a, const cd* b, cd* r, int threads) {    \
    _Pragma("omp parallel for num_threads(threads)") for (int i = 0; i < n; ++i) r[i] =        \
        a[i] * b[i];                                                                           \
  }                                                                                            \
  attributes void cdiv_loop##suffix(int n, const cd* a, const cd* b, cd* r, int threads) {    \
    _Pragma("omp parallel for num_threads(threads)") for (int i = 0; i < n; ++i) r[i] =        \
        a[i] / b[i];                                                                           \
  }

TAV_BENCH_REFERENCE_LOOPS(_baseline, )
TAV_BENCH_REFERENCE_LOOPS(_avx2, __attribute__((target("avx2,fma"))))

struct real_case {
  const char* name;
  real_fn tav;
  real_fn loop_baseline, loop_avx2;
};
const real_case real_cases[] = {{"vdAdd", vdAdd, add_loop_baseline, add_loop_avx2},
                                {"vdMul", vdMul, mul_loop_baseline, mul_loop_avx2},
                                {"vdDiv", vdDiv, div_loop_baseline, div_loop_avx2}};

std::vector<double> filled(size_t n, double base) {
  std::vector<double> v(n);
  for (size_t i = 0; i < n; ++i) v[i] = base + std::sin(static_cast<double>(i));
  return v;
}

// TAV's thread count for the vector-math calls of this thread; before each timed batch, with
// one untimed call after it that wakes the OpenMP team (interleaved_medians).
std::function<void()> threads_of(int threads) {
  return [threads] { tav_serv_set_num_threads_local(threads); };
}

// n = 10^7: three streams of 8 bytes per element (two read, one written), against the copy
// traffic on as many threads.
void long_arrays(markdown_table& table) {
  const int n = 10000000;
  const auto a = filled(n, 2), b = filled(n, 3);
  std::vector<double> r(n);
  for (int threads : {1, 2}) {
    const double ceiling = copy_traffic_gbs(threads);
    for (const real_case& c : real_cases) {
      timing_plan plan;
      plan.calls = 4;
      plan.rounds = 11;
      plan.settle_seconds = threads > 1 ? 0.25 : 0;
      const double s = interleaved_medians(
          {{threads_of(threads), [&] { c.tav(n, a.data(), b.data(), r.data()); }}}, plan)[0];
      const double traffic = 24.0 * n / s / 1e9;
      table.add_row({c.name, "10^7", std::to_string(threads), format("%.2f", s * 1e3),
                     format("%.1f", traffic), format("%.1f", ceiling),
                     format("%.0f%%", 100 * traffic / ceiling)});
    }
  }
}

// n = 1000, in cache, one thread: TAV against the vectorised loop for the same instruction set.
void short_arrays(markdown_table& table, bool avx2) {
  const int n = 1000;
  const auto a = filled(n, 2), b = filled(n, 3);
  std::vector<double> r(n);
  for (const real_case& c : real_cases) {
    const real_fn loop = avx2 ? c.loop_avx2 : c.loop_baseline;
    timing_plan plan;
    plan.calls = 4000;
    plan.rounds = 41;
    const auto s = interleaved_medians(
        {{threads_of(1), [&] { c.tav(n, a.data(), b.data(), r.data()); }},
         {threads_of(1), [&] { loop(n, a.data(), b.data(), r.data()); }}},
        plan);
    table.add_row({c.name, "1000", format("%.1f", s[0] * 1e9), format("%.1f", s[1] * 1e9),
                   format("%.2f", s[1] / s[0])});
  }
}

// n = 10^6 complex: TAV against a std::complex loop, split over the same number of threads.
void complex_arrays(markdown_table& table, bool avx2) {
  const int n = 1000000;
  const auto a = filled(2 * n, 2), b = filled(2 * n, 3);
  std::vector<double> r(2 * n);
  const auto* za = reinterpret_cast<const tav_complex16*>(a.data());
  const auto* zb = reinterpret_cast<const tav_complex16*>(b.data());
  auto* zr = reinterpret_cast<tav_complex16*>(r.data());
  const auto* ca = reinterpret_cast<const cd*>(a.data());
  const auto* cb = reinterpret_cast<const cd*>(b.data());
  auto* cr = reinterpret_cast<cd*>(r.data());
  struct complex_case {
    const char* name;
    complex_fn tav;
    void (*loop)(int, const cd*, const cd*, cd*, int);
  };
  const complex_case cases[] = {{"vzMul", vzMul, avx2 ? cmul_loop_avx2 : cmul_loop_baseline},
                                {"vzDiv", vzDiv, avx2 ? cdiv_loop_avx2 : cdiv_loop_baseline}};
  for (int threads : {1, 2}) {
    for (const complex_case& c : cases) {
      timing_plan plan;
      plan.calls = 20;
      plan.rounds = 15;
      plan.settle_seconds = threads > 1 ? 0.25 : 0;
      const auto s = interleaved_medians(
          {{threads_of(threads), [&] { c.tav(n, za, zb, zr); }},
           {threads_of(threads), [&] { c.loop(n, ca, cb, cr, threads); }}},
          plan);
      table.add_row({c.name, "10^6", std::to_string(threads), format("%.3f", s[0] * 1e3),
                     format("%.3f", s[1] * 1e3), format("%.2f", s[1] / s[0])});
    }
  }
}

void run_path(const path_choice& path) {
  // Before TAV's first call: the dispatcher reads the override once.
  setenv("TAV_DEBUG_CPU_TYPE", path.cpu_type, 1);
  const bool avx2 = std::strcmp(path.tag, "avx2") == 0;
  std::printf("\n### TAV on the %s path\n\n", path.tag);
  markdown_table memory({"function", "n", "threads", "TAV ms", "TAV GB/s", "copy GB/s",
                         "of copy"});
  long_arrays(memory);
  memory.print(stdout);
  std::printf("\n");
  markdown_table cache({"function", "n", "TAV ns", "loop ns", "loop/TAV"});
  short_arrays(cache, avx2);
  cache.print(stdout);
  std::printf("\n");
  markdown_table complex({"function", "n", "threads", "TAV ms", "std::complex ms",
                          "std::complex/TAV"});
  complex_arrays(complex, avx2);
  complex.print(stdout);
  std::fflush(stdout);
}

#undef TAV_BENCH_REFERENCE_LOOPS

}  // namespace

int vml_arith_bench_main(int argc, char** argv) {
  return run_on_paths(
      argc, argv, "Vector math: arithmetic",
      "Times are per-call medians over interleaved rounds. GB/s counts 24 bytes per element\n"
      "(two arrays read, one written); \"copy GB/s\" is the read + write traffic of a 128 MiB\n"
      "memcpy on as many threads. The loops are compiled -O3 for the path's instruction set.\n"
      "Before every timed batch TAV gets its thread count and one untimed call, which wakes\n"
      "the OpenMP team, so 2-thread figures are for a warm team; 2-thread batches also wait\n"
      "0.25 s first, for the previous candidate's threads to sleep.\n",
      run_path);
}

}  // namespace tav::bench
