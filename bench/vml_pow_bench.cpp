// Speed of vdPow and vsPow (HA, LA, EP) against libmvec, SLEEF (1 ulp) and glibc's scalar pow,
// at n = 1000 and 10^6 on 1 and 2 threads, TAV forced to a code path (default avx2). Prints
// ns per element, the peers' time over TAV HA's, and each candidate's largest error in ulps on
// the benchmark data (against powl, whose 64-bit significand measures double ulps closely).
#include <tav/tav.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/interleaved_timing.hpp"
#include "support/markdown_table.hpp"
#include "support/path_runs.hpp"
#include "vml_pow_peers.hpp"

namespace tav::bench {
namespace {

template <class T>
struct pow_candidate {
  std::string name;
  void (*run)(int n, const T* x, const T* y, T* r, int threads);
};

template <class T>
void tav_pow(int n, const T* x, const T* y, T* r, unsigned mode) {
  if constexpr (sizeof(T) == sizeof(double)) {
    vmdPow(n, x, y, r, mode);
  } else {
    vmsPow(n, x, y, r, mode);
  }
}

template <class T>
std::vector<pow_candidate<T>> candidates_of() {
  return {
      {"TAV HA", [](int n, const T* x, const T* y, T* r, int) { tav_pow(n, x, y, r, VML_HA); }},
      {"TAV LA", [](int n, const T* x, const T* y, T* r, int) { tav_pow(n, x, y, r, VML_LA); }},
      {"TAV EP", [](int n, const T* x, const T* y, T* r, int) { tav_pow(n, x, y, r, VML_EP); }},
      {"libmvec", [](int n, const T* x, const T* y, T* r, int t) { libmvec_pow(n, x, y, r, t); }},
      {"SLEEF u10", [](int n, const T* x, const T* y, T* r, int t) { sleef_pow(n, x, y, r, t); }},
      {"glibc", [](int n, const T* x, const T* y, T* r, int t) { glibc_pow(n, x, y, r, t); }},
  };
}

// Bases 2^u and exponents v with u, v uniform in [-8, 8]: results within the normal range, so
// every candidate runs its fast path.
template <class T>
void fill(int n, std::vector<T>& x, std::vector<T>& y) {
  std::mt19937_64 gen(42);
  std::uniform_real_distribution<double> u(-8, 8);
  x.resize(n);
  y.resize(n);
  for (int i = 0; i < n; ++i) {
    x[i] = static_cast<T>(std::exp2(u(gen)));
    y[i] = static_cast<T>(u(gen));
  }
}

template <class T>
double max_ulp(const std::vector<T>& x, const std::vector<T>& y, const std::vector<T>& r) {
  double worst = 0;
  for (size_t i = 0; i < x.size(); ++i) {
    long double exact = powl(x[i], y[i]);
    int e = std::ilogb(exact);
    long double ulp = std::ldexp(1.0L, e - (std::numeric_limits<T>::digits - 1));
    double err = static_cast<double>(std::fabs(r[i] - exact) / ulp);
    if (!(err <= worst)) worst = err;
  }
  return worst;
}

// TAV_POW_BENCH_ROUTINE=vsPow (or vdPow) limits a run to one routine, TAV_POW_BENCH_THREADS=1
// (or 2) to one thread count, for quick comparisons.
bool selected(const char* variable, const std::string& value) {
  const char* only = std::getenv(variable);
  return only == nullptr || value == only;
}

template <class T>
void run_type(const char* routine, markdown_table& table) {
  if (!selected("TAV_POW_BENCH_ROUTINE", routine)) return;
  std::vector<pow_candidate<T>> all = candidates_of<T>();
  for (int threads : {1, 2}) {
    if (!selected("TAV_POW_BENCH_THREADS", std::to_string(threads))) continue;
    for (int n : {1000, 1000000}) {
      std::vector<T> x, y;
      fill(n, x, y);
      std::vector<std::vector<T>> out(all.size(), std::vector<T>(n));
      std::vector<candidate> timed;
      for (size_t c = 0; c < all.size(); ++c) {
        T* r = out[c].data();
        const T *xp = x.data(), *yp = y.data();
        auto run = all[c].run;
        bool is_tav = c < 3;
        timed.push_back(
            {[threads, is_tav] {
               if (is_tav) tav_serv_domain_set_num_threads(threads, TAV_DOMAIN_VML);
             },
             [run, n, xp, yp, r, threads] { run(n, xp, yp, r, threads); }});
      }
      timing_plan plan;
      plan.calls = n == 1000 ? 2000 : 3;
      plan.rounds = n == 1000 ? 21 : 9;
      plan.settle_seconds = threads > 1 ? 0.25 : 0;
      std::vector<double> seconds = interleaved_medians(timed, plan);
      std::vector<std::string> row = {routine, std::to_string(n), std::to_string(threads)};
      for (double s : seconds) row.push_back(format("%.2f", s * 1e9 / n));
      for (size_t c = 3; c < all.size(); ++c) row.push_back(format("%.2f", seconds[c] / seconds[0]));
      std::string errors;
      for (size_t c = 0; c < all.size(); ++c) {
        errors += format("%s%.2f", c == 0 ? "" : " / ", max_ulp(x, y, out[c]));
      }
      row.push_back(errors);
      table.add_row(row);
    }
  }
}

void run_path(const path_choice& path) {
  setenv("TAV_DEBUG_CPU_TYPE", path.cpu_type, 1);
  std::printf("\n### TAV on the %s path\n\n", path.tag);
  std::vector<std::string> header = {"routine", "n", "threads"};
  for (const pow_candidate<double>& c : candidates_of<double>()) header.push_back(c.name + " ns");
  header.insert(header.end(), {"libmvec/HA", "SLEEF/HA", "glibc/HA", "max ulp (same order)"});
  markdown_table table(header);
  run_type<double>("vdPow", table);
  run_type<float>("vsPow", table);
  table.print(stdout);
  std::fflush(stdout);
}

}  // namespace
}  // namespace tav::bench

int main(int argc, char** argv) {
  return tav::bench::run_on_paths(
      argc, argv, "Vector math: power",
      "ns per element (median of interleaved batches); ratios are peer time over TAV HA time\n"
      "(above 1: TAV HA is faster). Peers run the same arrays split over the same OpenMP thread\n"
      "count; libmvec through clang's vectoriser (_ZGVdN4vv_pow, _ZGVdN8vv_powf), SLEEF\n"
      "Sleef_powd4_u10avx2 / Sleef_powf8_u10avx2, glibc scalar pow/powf. Data: x = 2^u,\n"
      "y = v, u and v uniform in [-8, 8]. Max ulp against powl on the same data.\n",
      tav::bench::run_path);
}
