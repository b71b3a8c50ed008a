// Level-1 BLAS speed against the peers: daxpy, ddot and dscal at n = 1000 (in cache, many calls)
// and n = 10^7 (memory bound), on 1 and 2 threads, with TAV forced to the avx2 path and to the def
// path, each in a process of its own because the CPU type is read once per process.
//
//   blas_level1_bench [avx2] [def]     (both when none is named)
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

#include "support/interleaved_timing.hpp"
#include "support/markdown_table.hpp"
#include "support/path_runs.hpp"
#include "support/peer_libraries.hpp"

namespace {

using namespace tav::bench;

struct routine {
  const char* name;
  int bytes_per_element;  // memory traffic: daxpy reads x, y and writes y; ddot reads two
};
constexpr routine routines[] = {{"daxpy", 24}, {"ddot", 16}, {"dscal", 16}};

struct aligned_free {
  void operator()(double* p) const { std::free(p); }
};
using buffer = std::unique_ptr<double[], aligned_free>;

buffer filled(size_t n, double base) {
  buffer b(static_cast<double*>(std::aligned_alloc(64, (n * sizeof(double) + 63) / 64 * 64)));
  for (size_t i = 0; i < n; ++i) b[i] = base + std::sin(static_cast<double>(i));
  return b;
}

// One call of `name` on x and y. daxpy's tiny alpha keeps y bounded over many calls; dscal
// alternates 2 and 0.5, exact and never 1 or 0 (which a library may skip).
std::function<void()> call_of(const blas_library& library, const char* name, const int& n,
                              double* x, double* y) {
  static const int one = 1;
  static const double tiny = 1e-9;
  if (std::strcmp(name, "daxpy") == 0)
    return [&library, &n, x, y] { library.daxpy(&n, &tiny, x, &one, y, &one); };
  if (std::strcmp(name, "ddot") == 0)
    return [&library, &n, x, y] {
      volatile double sink = library.ddot(&n, x, &one, y, &one);
      (void)sink;
    };
  auto flip = std::make_shared<bool>(false);
  return [&library, &n, x, flip] {
    static const double up = 2, down = 0.5;
    *flip = !*flip;
    library.dscal(&n, *flip ? &up : &down, x, &one);
  };
}

// The libraries must agree on a dot product before their speeds mean anything.
void check_agreement(const std::vector<blas_library>& libraries, int n, const double* x,
                     const double* y) {
  const int one = 1;
  const double reference = libraries[0].ddot(&n, x, &one, y, &one);
  for (const blas_library& library : libraries) {
    const double value = library.ddot(&n, x, &one, y, &one);
    if (std::fabs(value - reference) > 1e-10 * std::fabs(reference))
      std::fprintf(stderr, "bench: %s ddot %.17g differs from TAV's %.17g\n", library.name.c_str(),
                   value, reference);
  }
}

void run_path(const path_choice& path) {
  // Before TAV's first call: the dispatcher reads the override once.
  setenv("TAV_DEBUG_CPU_TYPE", path.cpu_type, 1);
  std::vector<blas_library> libraries = {tav_library()};
  for (blas_library& peer : load_peers()) libraries.push_back(peer);

  std::printf("\n### TAV on the %s path\n\n", path.tag);
  for (const blas_library& library : libraries)
    std::printf("- %s: %s\n", library.name.c_str(), library.detail.c_str());
  std::printf("\n");

  std::vector<std::string> header = {"routine", "n", "threads"};
  for (const blas_library& library : libraries) header.push_back(library.name + " us");
  header.push_back("TAV GB/s");
  for (size_t p = 1; p < libraries.size(); ++p) header.push_back(libraries[p].name + "/TAV");
  markdown_table table(header);

  for (int threads : {1, 2}) {
    for (int n : {1000, 10000000}) {
      const buffer x = filled(n, 1), y = filled(n, 2);
      check_agreement(libraries, n, x.get(), y.get());
      for (const routine& r : routines) {
        std::vector<candidate> candidates;
        for (const blas_library& library : libraries)
          candidates.push_back({[&library, threads] { library.set_threads(threads); },
                                call_of(library, r.name, n, x.get(), y.get())});
        timing_plan plan;
        plan.calls = n == 1000 ? 4000 : 4;
        plan.rounds = threads == 1 ? (n == 1000 ? 41 : 11) : (n == 1000 ? 15 : 9);
        // libomp and OpenBLAS workers spin for a while after a parallel call (libomp 200 ms).
        plan.settle_seconds = threads > 1 ? 0.25 : 0;
        const std::vector<double> seconds = interleaved_medians(candidates, plan);
        std::vector<std::string> row = {r.name, std::to_string(n), std::to_string(threads)};
        for (double s : seconds) row.push_back(format("%.3f", s * 1e6));
        row.push_back(format("%.1f", double(r.bytes_per_element) * n / seconds[0] / 1e9));
        for (size_t p = 1; p < seconds.size(); ++p) row.push_back(format("%.2f", seconds[p] / seconds[0]));
        table.add_row(row);
      }
    }
  }
  table.print(stdout);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  return run_on_paths(
      argc, argv, "Level 1: daxpy, ddot, dscal",
      "Times are per-call medians over interleaved rounds; PEER/TAV is the peer's time over\n"
      "TAV's (above 1: TAV is faster). Before every timed batch each library gets its thread\n"
      "count and one untimed warm-up call, so 2-thread figures are for warm thread teams;\n"
      "2-thread batches also wait 0.25 s first, for the previous library's threads to sleep.\n",
      run_path);
}
