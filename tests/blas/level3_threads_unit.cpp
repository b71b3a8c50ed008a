// The level-3 routines beside the matrix product on one and two threads, each setting in a child:
// within rounding on every path, bit for bit in the reproducible mode.
#include <gtest/gtest.h>
#include <omp.h>
#include <tav/tav_threads.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "blas/blas_internal.hpp"
#include "blas/level3/trsm_driver.hpp"
#include "child_process.hpp"
#include "code_paths.hpp"
#include "blas_test_data.hpp"

namespace {

using namespace tav::test;

constexpr int64_t nb = tav::blas::triangular_blocking::nb;
// Orders of a few blocks, with more right-hand sides than one thread takes.
constexpr int64_t m = 2 * nb + 37, n = 3 * nb + 5;

template <class T>
void write(std::ofstream& out, const std::vector<T>& values) {
  out.write(reinterpret_cast<const char*>(values.data()),
            static_cast<std::streamsize>(values.size() * sizeof(T)));
}

// Triangular solves and products for both sides and two transposes, then the rank-k update of
// each kind, all on seeded data.
template <class T>
void write_results(std::ofstream& out) {
  std::mt19937_64 g(2024);
  for (const char side : {'L', 'R'}) {
    for (const char trans : {'N', 'C'}) {
      const int64_t order = side == 'L' ? m : n;
      const std::vector<T> a = triangular_matrix<T>(g, 'L', 'N', order, order);
      std::vector<T> solved(static_cast<size_t>(m * n));
      fill_random(g, m, n, solved.data(), m);
      std::vector<T> multiplied = solved;
      tav::blas::trsm<T>(side, 'L', trans, 'N', m, n, general_scalar<T>(), a.data(), order,
                         solved.data(), m);
      tav::blas::trmm<T>(side, 'L', trans, 'N', m, n, general_scalar<T>(), a.data(), order,
                         multiplied.data(), m);
      write(out, solved);
      write(out, multiplied);
    }
  }
  std::vector<T> a(static_cast<size_t>(n * m)), c(static_cast<size_t>(n * n));
  fill_random(g, n, m, a.data(), n);
  fill_random(g, n, n, c.data(), n);
  if constexpr (tav::is_complex_v<T>) {
    tav::blas::herk<T>('U', 'N', n, m, 0.5, a.data(), n, 0.25, c.data(), n);
  } else {
    tav::blas::syrk<T>('L', 'N', n, m, 0.5, a.data(), n, 0.25, c.data(), n);
  }
  write(out, c);
}

// Writes the results to the file named by the first argument and prints the thread count.
TAV_SCENARIO(level3_results) {
  std::ofstream out(scenario_args().at(0), std::ios::binary);
  write_results<double>(out);
  write_results<std::complex<double>>(out);
  std::printf("threads=%d\n", tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS));
}

std::vector<double> read_doubles(const std::string& path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  std::vector<double> values(static_cast<size_t>(in.tellg()) / sizeof(double));
  in.seekg(0);
  in.read(reinterpret_cast<char*>(values.data()),
          static_cast<std::streamsize>(values.size() * sizeof(double)));
  return values;
}

// The results of the scenario with TAV_NUM_THREADS = 1 and = 2 and the given extra settings.
struct two_runs {
  std::vector<double> serial, parallel;
};

two_runs run_both(const env_list& extra) {
  two_runs runs;
  for (const char* threads : {"1", "2"}) {
    // Named for this process, as tests of this binary may run side by side.
    const std::string path = testing::TempDir() + "level3_results_" +
                             std::to_string(getpid()) + "_" + threads + ".bin";
    env_list env = extra;
    env.emplace_back("TAV_NUM_THREADS", threads);
    const child_result child = run_child("level3_results", env, {path});
    EXPECT_EQ(child.exit_code, 0) << child.err;
    EXPECT_EQ(child.out, std::string("threads=") + threads + "\n");
    (threads[0] == '1' ? runs.serial : runs.parallel) = read_doubles(path);
    std::remove(path.c_str());
  }
  return runs;
}

using Level3ThreadsOnPath = path_test;

// Forced to each CPU type this processor runs (the type is detected once per process).
TEST_P(Level3ThreadsOnPath, OneAndTwoThreadsAgreeWithinRounding) {
  const two_runs runs = run_both({{"TAV_DEBUG_CPU_TYPE", std::to_string(GetParam())}});
  const std::vector<double>& x1 = runs.serial;
  const std::vector<double>& x2 = runs.parallel;
  ASSERT_EQ(x1.size(), x2.size());
  ASSERT_FALSE(x1.empty());
  double largest = 0;
  for (double v : x1) largest = std::max(largest, std::abs(v));
  // Every result is a backward-stable computation of order at most n on data of size 1 and
  // condition near 1, so two summation orders differ by at most a few n·eps.
  const double tolerance = 30.0 * n * std::numeric_limits<double>::epsilon() * largest;
  for (size_t i = 0; i < x1.size(); ++i) ASSERT_LE(std::abs(x1[i] - x2[i]), tolerance) << i;
}

INSTANTIATE_TEST_SUITE_P(Level3, Level3ThreadsOnPath, testing::Range(0, 8));

// On the reproducible path the thread count changes only which thread computes a right-hand
// side or a panel of C, never how an element is computed: the results are equal bit for bit.
TEST(Level3Threads, ReproducibleModeIsBitwiseEqualOnOneAndTwoThreads) {
  const two_runs runs = run_both({{"TAV_CBWR", "COMPATIBLE"}});
  ASSERT_FALSE(runs.serial.empty());
  ASSERT_EQ(runs.serial.size(), runs.parallel.size());
  EXPECT_EQ(
      std::memcmp(runs.serial.data(), runs.parallel.data(), runs.serial.size() * sizeof(double)),
      0);
}

// Each thread of an outer team solves its own copy of one problem; every copy must match the
// solve made outside the region, within rounding (the outer call may split its GEMM updates).
TEST(Level3Threads, CallsInsideAParallelRegionAgreeWithALoneCall) {
  using T = double;
  std::mt19937_64 g(99);
  const std::vector<T> a = triangular_matrix<T>(g, 'U', 'N', n, n);
  std::vector<T> b(static_cast<size_t>(m * n));
  fill_random(g, m, n, b.data(), m);
  std::vector<T> lone = b;
  tav::blas::trsm<T>('R', 'U', 'T', 'N', m, n, 2.0, a.data(), n, lone.data(), m);
  constexpr int team = 3;
  std::vector<std::vector<T>> copies(team, b);
  int team_size = 0;
#pragma omp parallel num_threads(team)
  {
    std::vector<T>& mine = copies[static_cast<size_t>(omp_get_thread_num())];
    tav::blas::trsm<T>('R', 'U', 'T', 'N', m, n, 2.0, a.data(), n, mine.data(), m);
#pragma omp single
    team_size = omp_get_num_threads();
  }
  ASSERT_GT(team_size, 1);
  copies.resize(static_cast<size_t>(team_size));
  double largest = 0;
  for (T v : lone) largest = std::max(largest, std::abs(v));
  const double tolerance = 30.0 * n * std::numeric_limits<double>::epsilon() * largest;
  for (const std::vector<T>& copy : copies) {
    for (size_t i = 0; i < lone.size(); ++i) ASSERT_LE(std::abs(copy[i] - lone[i]), tolerance) << i;
  }
}

}  // namespace
