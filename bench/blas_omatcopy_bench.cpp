// Out-of-place copy and transpose against the machine's copy bandwidth (memcpy of 128 MiB, timed
// in the same interleaved rounds) and against OpenBLAS's ?omatcopy_: 4000 x 4000 doubles and
// other shapes on 1 and 2 threads, with TAV forced to the avx2 path and to the def path, each in a
// process of its own because the CPU type is read once per process.
//
//   blas_omatcopy_bench [avx2] [def]     (both when none is named)
#include <dlfcn.h>
#include <sys/wait.h>
#include <tav/tav.h>
#include <unistd.h>

#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/interleaved_timing.hpp"
#include "support/markdown_table.hpp"
#include "support/path_runs.hpp"

namespace {

using namespace tav::bench;

// ---- the peer ------------------------------------------------------------------------------

template <class T>
using peer_omatcopy = void(const char* ordering, const char* trans, const int* rows,
                           const int* cols, const T* alpha, const T* a, const int* lda, T* b,
                           const int* ldb);

struct peer {
  peer_omatcopy<float>* s = nullptr;
  peer_omatcopy<double>* d = nullptr;
  peer_omatcopy<std::complex<double>>* z = nullptr;
  std::string detail;
};

peer load_openblas() {
  peer p;
  // RTLD_LOCAL and RTLD_DEEPBIND keep OpenBLAS's names and calls inside OpenBLAS.
  void* handle = nullptr;
  for (const char* file :
       {"/usr/lib/x86_64-linux-gnu/openblas-pthread/libopenblas.so.0", "libopenblas.so.0"})
    if ((handle = dlopen(file, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND)) != nullptr) break;
  if (handle == nullptr) {
    std::fprintf(stderr, "bench: cannot load OpenBLAS: %s\n", dlerror());
    return p;
  }
  p.s = reinterpret_cast<peer_omatcopy<float>*>(dlsym(handle, "somatcopy_"));
  p.d = reinterpret_cast<peer_omatcopy<double>*>(dlsym(handle, "domatcopy_"));
  p.z = reinterpret_cast<peer_omatcopy<std::complex<double>>*>(dlsym(handle, "zomatcopy_"));
  auto config = reinterpret_cast<const char* (*)()>(dlsym(handle, "openblas_get_config"));
  auto set_threads = reinterpret_cast<void (*)(int)>(dlsym(handle, "openblas_set_num_threads"));
  if (config) p.detail = config();
  // OpenBLAS's omatcopy runs on the calling thread; its own pool stays idle at one thread.
  if (set_threads) set_threads(1);
  return p;
}

// ---- operands and calls --------------------------------------------------------------------

template <class T>
struct aligned_buffer {
  struct release {
    void operator()(T* p) const { std::free(p); }
  };
  std::unique_ptr<T[], release> data;
  explicit aligned_buffer(size_t n)
      : data(static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64))) {
    for (size_t k = 0; k < n; ++k) {
      if constexpr (std::is_floating_point_v<T>)
        data[k] = static_cast<T>(k % 1021) * 0.5f;
      else
        data[k] = T(static_cast<double>(k % 1021) * 0.5, static_cast<double>(k % 997) - 0.25);
    }
  }
};

template <class T>
void tav_call(char ordering, char trans, size_t rows, size_t cols, T alpha, const T* a, size_t lda,
              T* b, size_t ldb) {
  if constexpr (std::is_same_v<T, float>)
    TAV_Somatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb);
  else if constexpr (std::is_same_v<T, double>)
    TAV_Domatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb);
  else
    TAV_Zomatcopy(ordering, trans, rows, cols, tav_complex16{alpha.real(), alpha.imag()},
                  reinterpret_cast<const tav_complex16*>(a), lda,
                  reinterpret_cast<tav_complex16*>(b), ldb);
}

template <class T>
peer_omatcopy<T>* peer_routine(const peer& p) {
  if constexpr (std::is_same_v<T, float>)
    return p.s;
  else if constexpr (std::is_same_v<T, double>)
    return p.d;
  else
    return p.z;
}

struct shape_case {
  const char* type;
  char ordering, trans;
  int rows, cols;
  int calls;  // timed calls per batch
};

// 128 MiB copied by `threads` threads, each its own contiguous share.
void copy_128mib(const char* from, char* to, int threads) {
  constexpr size_t bytes = size_t{128} << 20;
  const size_t share = bytes / static_cast<size_t>(threads);
  std::vector<std::thread> team;
  for (int t = 1; t < threads; ++t)
    team.emplace_back([=] { std::memcpy(to + t * share, from + t * share, share); });
  std::memcpy(to, from, share);
  for (std::thread& member : team) member.join();
}

// One row of the table: TAV and OpenBLAS interleaved, with memcpy too for the matrices of many
// megabytes (one copy of 128 MiB per timed call would swamp the small ones); B compared between
// TAV and OpenBLAS first.
template <class T>
void time_case(const shape_case& c, int threads, const peer& p, const char* from, char* to,
               markdown_table& table) {
  const size_t rows = static_cast<size_t>(c.rows), cols = static_cast<size_t>(c.cols);
  const bool transposed = c.trans == 'T' || c.trans == 'C';
  const bool row_major = c.ordering == 'R';
  const int lda = row_major ? c.cols : c.rows;
  const int ldb = row_major != transposed ? c.cols : c.rows;
  aligned_buffer<T> a(rows * cols), b_tav(rows * cols), b_peer(rows * cols);
  const T alpha(1);
  peer_omatcopy<T>* routine = peer_routine<T>(p);
  const int r = c.rows, k = c.cols;

  tav_call(c.ordering, c.trans, rows, cols, alpha, a.data.get(), lda, b_tav.data.get(), ldb);
  if (routine) {
    routine(&c.ordering, &c.trans, &r, &k, &alpha, a.data.get(), &lda, b_peer.data.get(), &ldb);
    for (size_t e = 0; e < rows * cols; ++e)
      if (b_tav.data[e] != b_peer.data[e]) {
        std::fprintf(stderr, "bench: %s %c%c %dx%d: TAV and OpenBLAS differ\n", c.type, c.ordering,
                     c.trans, c.rows, c.cols);
        break;
      }
  }

  const bool with_copy = c.calls == 1;
  std::vector<candidate> candidates = {{[threads] { TAV_Set_Num_Threads(threads); },
                                        [&] {
                                          tav_call(c.ordering, c.trans, rows, cols, alpha,
                                                   a.data.get(), lda, b_tav.data.get(), ldb);
                                        }}};
  if (with_copy) candidates.push_back({[] {}, [=] { copy_128mib(from, to, threads); }});
  if (routine)
    candidates.push_back({[] {},
                          [&] {
                            routine(&c.ordering, &c.trans, &r, &k, &alpha, a.data.get(), &lda,
                                    b_peer.data.get(), &ldb);
                          }});
  timing_plan plan;
  plan.calls = c.calls;
  plan.rounds = 7;
  // libomp's workers spin for a while after a parallel region (200 ms).
  plan.settle_seconds = threads > 1 ? 0.25 : 0;
  const std::vector<double> seconds = interleaved_medians(candidates, plan);

  // Traffic: every element read once and written once.
  const double traffic = 2.0 * static_cast<double>(rows * cols * sizeof(T));
  const double tav_gbs = traffic / seconds[0] / 1e9;
  const double copy_gbs =
      with_copy ? 2.0 * static_cast<double>(size_t{128} << 20) / seconds[1] / 1e9 : 0;
  std::vector<std::string> row = {c.type,
                                  std::string(1, c.ordering) + c.trans,
                                  std::to_string(c.rows) + " x " + std::to_string(c.cols),
                                  std::to_string(threads),
                                  with_copy ? format("%.1f", copy_gbs) : "-",
                                  format("%.3f", seconds[0] * 1e3),
                                  format("%.1f", tav_gbs),
                                  with_copy ? format("%.0f%%", 100 * tav_gbs / copy_gbs) : "-"};
  if (routine) {
    row.push_back(format("%.3f", seconds.back() * 1e3));
    row.push_back(format("%.2f", seconds.back() / seconds[0]));
  }
  table.add_row(row);
}

void run_path(const path_choice& path) {
  // Before TAV's first call: the dispatcher reads the override once.
  setenv("TAV_DEBUG_CPU_TYPE", path.cpu_type, 1);
  const peer p = load_openblas();
  std::printf("\n### TAV on the %s path\n\n", path.tag);
  if (!p.detail.empty()) std::printf("OpenBLAS: %s\n\n", p.detail.c_str());

  constexpr size_t copy_bytes = size_t{128} << 20;
  const std::unique_ptr<char[]> from(new char[copy_bytes]), to(new char[copy_bytes]);
  // Every page touched first, so that copies time memory, not page faults.
  std::memset(from.get(), 1, copy_bytes);
  std::memset(to.get(), 2, copy_bytes);

  const shape_case cases[] = {
      {"double", 'R', 'T', 4000, 4000, 1},         {"double", 'C', 'T', 4000, 4000, 1},
      {"double", 'R', 'N', 4000, 4000, 1},         {"float", 'R', 'T', 4000, 4000, 1},
      {"complex double", 'C', 'C', 4000, 4000, 1}, {"double", 'R', 'T', 1000, 1000, 20},
      {"double", 'R', 'T', 1200, 1200, 20},        {"double", 'R', 'T', 100, 100, 2000}};
  markdown_table table({"type", "letters", "size", "threads", "memcpy GB/s", "TAV ms", "TAV GB/s",
                        "TAV/memcpy", "OpenBLAS ms", "OpenBLAS/TAV"});
  for (int threads : {1, 2})
    for (const shape_case& c : cases) {
      if (std::strcmp(c.type, "double") == 0)
        time_case<double>(c, threads, p, from.get(), to.get(), table);
      else if (std::strcmp(c.type, "float") == 0)
        time_case<float>(c, threads, p, from.get(), to.get(), table);
      else
        time_case<std::complex<double>>(c, threads, p, from.get(), to.get(), table);
    }
  table.print(stdout);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  return run_on_paths(
      argc, argv, "Out-of-place copy and transpose",
      "Per-call medians over 7 interleaved rounds of TAV, OpenBLAS and, for the large\n"
      "matrices, memcpy of 128 MiB on as many threads. GB/s counts traffic, every byte read\n"
      "once and written once, for memcpy as for the matrices; TAV/memcpy compares the two.\n"
      "OpenBLAS/TAV above 1: TAV is faster.\n",
      run_path);
}
