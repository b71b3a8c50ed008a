// The matrix-product cases: operands, the interleaved rounds per case and the tables.
#include "support/gemm_cases.hpp"

#include <algorithm>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <sstream>

#include "support/fma_peak.hpp"
#include "support/interleaved_timing.hpp"
#include "support/markdown_table.hpp"
#include "support/path_runs.hpp"
#include "support/peer_libraries.hpp"

namespace tav::bench {
namespace {

struct gemm_options {
  std::vector<std::string> sections = {"peak", "large", "small", "skinny", "trsm"};
  std::vector<int> sizes = {1024, 2048, 4096};
  std::vector<int> threads = {1, 2};
  std::string routines = "DGEMM,SGEMM,ZGEMM,CGEMM";  // of the large section
  std::string csv;                                   // empty: no CSV
};

// The OpenBLAS core type that stands for an SSE-class processor (its Nehalem kernels use SSE2
// and SSE3 only), the peer of TAV's def path.
constexpr const char* sse_openblas_core = "NEHALEM";

constexpr const char* gemm_preface =
    "GFLOP/s (2mnk real, 8mnk complex per product; million calls per second for the small "
    "products), medians of interleaved rounds; ratio = TAV / faster peer.\n";

gemm_options options;
dsyrk_routine* tav_internal_syrk = nullptr;

std::vector<int> int_list(const char* text) {
  std::vector<int> values;
  std::stringstream in(text);
  for (std::string item; std::getline(in, item, ',');) values.push_back(std::atoi(item.c_str()));
  return values;
}

template <class T>
std::vector<T> random_matrix(size_t elements, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> value(-0.5, 0.5);
  std::vector<T> x(elements);
  for (T& e : x) {
    if constexpr (std::is_floating_point_v<T>) e = static_cast<T>(value(generator));
    else e = T(value(generator), value(generator));
  }
  return x;
}

// One measurement: the libraries that have the routine, each a closure over its own C.
struct contender {
  const blas_library* library;
  std::function<void()> call;
};

struct report {
  const char* path;
  const gemm_options& options;
  std::FILE* csv;
};

// Times the contenders interleaved; `work` converts seconds per call into the figure printed
// (GFLOP/s or million calls per second), `flops` sizes the batches (about 20 ms each at
// 20 GFLOP/s). Adds a row: figures, then TAV over the faster peer.
void measure(const report& r, const char* section, const std::string& routine,
             const std::string& shape, int n, int threads, double work, double flops, bool large,
             const std::vector<contender>& contenders, markdown_table& table) {
  std::vector<candidate> candidates;
  for (const contender& c : contenders)
    candidates.push_back({[lib = c.library, threads] { lib->set_threads(threads); }, c.call});
  timing_plan plan;
  const double seconds_guess = flops / 20e9 + 2e-7;
  plan.calls = large ? 1 : std::max(1, static_cast<int>(0.02 / seconds_guess));
  plan.rounds = large ? (n >= 4096 ? 3 : 5) : 11;
  // Worker threads of the previous candidate spin for a while after their last region.
  plan.settle_seconds = threads > 1 ? 0.3 : 0;
  plan.thread_cpu_time = threads == 1;
  const std::vector<double> seconds = interleaved_medians(candidates, plan);
  std::vector<std::string> row = {routine, shape, std::to_string(threads)};
  double tav = 0, best_peer = 0;
  for (size_t c = 0; c < contenders.size(); ++c) {
    const double figure = work / seconds[c] * 1e-9;
    row.push_back(format("%.1f", figure));
    if (c == 0) tav = figure;
    else best_peer = std::max(best_peer, figure);
    if (r.csv)
      std::fprintf(r.csv, "%s,%s,%s,%s,%d,%d,%s,%.3f\n", r.path, section, routine.c_str(),
                   shape.c_str(), n, threads, contenders[c].library->name.c_str(), figure);
  }
  row.push_back(best_peer > 0 ? format("%.2f", tav / best_peer) : "-");
  table.add_row(row);
}

// One contender per library that has the routine `routine_of(library)` names: call(routine, out)
// on the library's own copy of the output, outputs[l].
template <class T, class RoutineOf, class Call>
std::vector<contender> contenders_of(const std::vector<blas_library>& libraries,
                                     std::vector<std::vector<T>>& outputs, RoutineOf routine_of,
                                     Call call) {
  std::vector<contender> contenders;
  for (size_t l = 0; l < libraries.size(); ++l) {
    const auto routine = routine_of(libraries[l]);
    if (routine == nullptr) continue;
    T* out = outputs[l].data();
    contenders.push_back({&libraries[l], [=] { call(routine, out); }});
  }
  return contenders;
}

std::vector<std::string> header(const std::vector<blas_library>& libraries, const char* unit) {
  std::vector<std::string> h = {"routine", "shape", "threads"};
  for (const blas_library& l : libraries) h.push_back(l.name + " " + unit);
  h.push_back("ratio");
  return h;
}

template <class T>
auto gemm_of(const blas_library& l) {
  if constexpr (std::is_same_v<T, float>) return l.sgemm;
  else if constexpr (std::is_same_v<T, double>) return l.dgemm;
  else if constexpr (std::is_same_v<T, std::complex<float>>) return l.cgemm;
  else return l.zgemm;
}

// C := A·B + C, m x k times k x n, every library on its own copy of C.
template <class T>
void gemm_case(const report& r, const char* section, const char* routine, int m, int n, int k,
               int threads, bool large, const std::vector<blas_library>& libraries,
               markdown_table& table) {
  const std::vector<T> a = random_matrix<T>(size_t(m) * k, 1), b = random_matrix<T>(size_t(k) * n, 2);
  std::vector<std::vector<T>> c(libraries.size(), random_matrix<T>(size_t(m) * n, 3));
  const std::vector<contender> contenders = contenders_of(
      libraries, c, [](const blas_library& l) { return gemm_of<T>(l); },
      [&a, &b, m, n, k](auto routine, T* cl) {
        const T one(1);
        routine("N", "N", &m, &n, &k, &one, a.data(), &m, b.data(), &k, &one, cl, &m);
      });
  const double flops = (std::is_floating_point_v<T> ? 2.0 : 8.0) * m * n * double(k);
  const std::string shape = format("%d x %d x %d", m, n, k);
  measure(r, section, routine, shape, std::max({m, n, k}), threads, flops, flops, large,
          contenders, table);
}

void large_section(const report& r, const std::vector<blas_library>& libraries) {
  markdown_table table(header(libraries, "GFLOP/s"));
  for (int threads : r.options.threads)
    for (int n : r.options.sizes) {
      auto chosen = [&](const char* routine) {
        return r.options.routines.find(routine) != std::string::npos;
      };
      if (chosen("DGEMM"))
        gemm_case<double>(r, "large", "DGEMM", n, n, n, threads, true, libraries, table);
      if (chosen("SGEMM"))
        gemm_case<float>(r, "large", "SGEMM", n, n, n, threads, true, libraries, table);
      if (chosen("ZGEMM"))
        gemm_case<std::complex<double>>(r, "large", "ZGEMM", n, n, n, threads, true, libraries,
                                        table);
      if (chosen("CGEMM"))
        gemm_case<std::complex<float>>(r, "large", "CGEMM", n, n, n, threads, true, libraries,
                                       table);
    }
  table.print(stdout);
}

void skinny_section(const report& r, const std::vector<blas_library>& libraries) {
  markdown_table table(header(libraries, "GFLOP/s"));
  const int shapes[][3] = {{2000, 2000, 32}, {2000, 32, 2000}, {64, 64, 2000}};
  for (int threads : r.options.threads)
    for (const auto& s : shapes)
      gemm_case<double>(r, "skinny", "DGEMM", s[0], s[1], s[2], threads, false, libraries,
                        table);
  table.print(stdout);
}

// C := A·B + C through cblas_dgemm, column major, as an application calls it.
void small_section(const report& r, const std::vector<blas_library>& libraries) {
  markdown_table table(header(libraries, "Mcalls/s"));
  for (int n : {4, 8, 16, 32}) {
    const std::vector<double> a = random_matrix<double>(size_t(n) * n, 1),
                              b = random_matrix<double>(size_t(n) * n, 2);
    std::vector<std::vector<double>> c(libraries.size(), random_matrix<double>(size_t(n) * n, 3));
    const std::vector<contender> contenders = contenders_of(
        libraries, c, [](const blas_library& l) { return l.cblas_dgemm; },
        [&a, &b, n](auto routine, double* cl) {
          routine(102, 111, 111, n, n, n, 1.0, a.data(), n, b.data(), n, 1.0, cl, n);
        });
    // "work" of one call is 1e3 so that work / seconds · 1e-9 reads in million calls per second.
    measure(r, "small", "cblas_dgemm", format("%d x %d x %d", n, n, n), n, 1, 1e3,
            2.0 * n * n * n, false, contenders, table);
  }
  table.print(stdout);
}

// B := A^-1·B with A lower triangular (n x n, well conditioned) and n right-hand sides.
void trsm_section(const report& r, const std::vector<blas_library>& libraries) {
  markdown_table table(header(libraries, "GFLOP/s"));
  const int n = 2000;
  std::vector<double> a = random_matrix<double>(size_t(n) * n, 1);
  for (int i = 0; i < n; ++i) a[size_t(i) * n + i] = n;
  const std::vector<double> b0 = random_matrix<double>(size_t(n) * n, 2);
  std::vector<std::vector<double>> b(libraries.size(), b0);
  for (int threads : r.options.threads) {
    const std::vector<contender> contenders = contenders_of(
        libraries, b, [](const blas_library& l) { return l.dtrsm; },
        [&a, n](auto routine, double* bl) {
          const double one = 1;
          routine("L", "L", "N", "N", &n, &n, &one, a.data(), &n, bl, &n);
        });
    const double flops = double(n) * n * n;
    measure(r, "trsm", "DTRSM LLNN", format("%d x %d", n, n), n, threads, flops, flops, false,
            contenders, table);
  }
  table.print(stdout);
}

// C := A·A^T + C on the lower triangle, A n x n: the update under a blocked Cholesky
// factorisation, n·n·(n+1) flops.
void syrk_section(const report& r, const std::vector<blas_library>& libraries) {
  if (libraries.front().dsyrk == nullptr) {
    std::printf("(TAV's SYRK is internal: bench/blas_syrk_bench times it)\n");
    return;
  }
  markdown_table table(header(libraries, "GFLOP/s"));
  const int n = 2000;
  const std::vector<double> a = random_matrix<double>(size_t(n) * n, 1);
  std::vector<std::vector<double>> c(libraries.size(), random_matrix<double>(size_t(n) * n, 2));
  for (int threads : r.options.threads) {
    const std::vector<contender> contenders = contenders_of(
        libraries, c, [](const blas_library& l) { return l.dsyrk; },
        [&a, n](auto routine, double* cl) {
          const double one = 1;
          routine("L", "N", &n, &n, &one, a.data(), &n, &one, cl, &n);
        });
    const double flops = double(n) * n * (n + 1);
    measure(r, "syrk", "DSYRK LN", format("%d x %d", n, n), n, threads, flops, flops, false,
            contenders, table);
  }
  table.print(stdout);
}

void peak_section(const report& r) {
  markdown_table table({"threads", "FMA-loop peak GFLOP/s (double, 256-bit FMA)"});
  for (int threads : r.options.threads) {
    const double peak = fma_peak_gflops(threads);
    table.add_row({std::to_string(threads), format("%.1f", peak)});
    if (r.csv)
      std::fprintf(r.csv, "%s,peak,FMA,-,0,%d,peak,%.3f\n", r.path, threads, peak);
  }
  table.print(stdout);
}

// Takes "--sections=a,b", "--sizes=n,n", "--threads=t,t", "--routines=DGEMM,SGEMM" or
// "--csv=FILE"; false otherwise.
bool parse_gemm_option(const char* argument) {
  auto value = [&](const char* key) {
    const size_t length = std::strlen(key);
    return std::strncmp(argument, key, length) == 0 ? argument + length : nullptr;
  };
  if (const char* v = value("--sizes=")) options.sizes = int_list(v);
  else if (const char* v = value("--threads=")) options.threads = int_list(v);
  else if (const char* v = value("--csv=")) options.csv = v;
  else if (const char* v = value("--routines=")) options.routines = v;
  else if (const char* v = value("--sections=")) {
    options.sections.clear();
    std::stringstream in(v);
    for (std::string item; std::getline(in, item, ',');) options.sections.push_back(item);
  } else {
    return false;
  }
  return true;
}

// Loads the peers (OpenBLAS on `openblas_core` when given, else its own choice) and runs the
// chosen sections, labelled with the TAV path tag.
void run_gemm_cases(const char* path_tag, const char* openblas_core) {
  std::vector<blas_library> libraries = {tav_library()};
  libraries.front().dsyrk = tav_internal_syrk;
  for (const blas_library& peer : load_peers(openblas_core)) libraries.push_back(peer);
  std::printf("\n### TAV on the %s path\n\n", path_tag);
  for (const blas_library& l : libraries) std::printf("- %s: %s\n", l.name.c_str(), l.detail.c_str());
  std::printf("\n");
  std::FILE* csv = options.csv.empty() ? nullptr : std::fopen(options.csv.c_str(), "a");
  const report r{path_tag, options, csv};
  for (const std::string& section : options.sections) {
    std::printf("#### %s\n\n", section.c_str());
    std::fflush(stdout);
    if (section == "peak") peak_section(r);
    else if (section == "large") large_section(r, libraries);
    else if (section == "small") small_section(r, libraries);
    else if (section == "skinny") skinny_section(r, libraries);
    else if (section == "trsm") trsm_section(r, libraries);
    else if (section == "syrk") syrk_section(r, libraries);
    else std::printf("(unknown section)\n");
    std::printf("\n");
    std::fflush(stdout);
  }
  if (csv) std::fclose(csv);
}

void run_path(const path_choice& path) {
  // Before TAV's first call: the dispatcher reads the override once.
  setenv("TAV_DEBUG_CPU_TYPE", path.cpu_type, 1);
  run_gemm_cases(path.tag, std::strcmp(path.tag, "def") == 0 ? sse_openblas_core : nullptr);
}

}  // namespace

int gemm_bench_main(int argc, char** argv, const char* default_sections,
                    dsyrk_routine* tav_syrk) {
  tav_internal_syrk = tav_syrk;
  if (default_sections != nullptr) parse_gemm_option(default_sections);
  std::vector<char*> paths = {argv[0]};
  for (int a = 1; a < argc; ++a)
    if (!parse_gemm_option(argv[a])) paths.push_back(argv[a]);
  return run_on_paths(static_cast<int>(paths.size()), paths.data(), "Matrix products",
                      gemm_preface, run_path);
}

}  // namespace tav::bench
