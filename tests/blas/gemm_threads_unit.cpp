// Threading of the matrix product: thread counts, grids, and products on one and two threads
// against the serial kernel (bitwise on the reproducible path) with each path forced.
#include <omp.h>
#include <tav/tav_threads.h>

#include <cstdio>
#include <string>

#include "blas/blas_internal.hpp"
#include "blas/level3/gemm_entries.hpp"
#include "blas/level3/gemm_partition.hpp"
#include "child_process.hpp"
#include "blas_test_data.hpp"

namespace {

using namespace tav::test;
using tav::blas::gemm_thread_count;

TEST(GemmThreadCount, SmallWorkRunsOnOneThread) {
  EXPECT_EQ(gemm_thread_count(5, 20, 20, 20, 8), 1);  // W = 1000 < 5000
  EXPECT_EQ(gemm_thread_count(5, 30, 30, 30, 2), 1);  // W = 3375, (2-1)·W <= 3000·2
  EXPECT_EQ(gemm_thread_count(5, 40, 40, 40, 2), 2);  // W = 8000
  EXPECT_EQ(gemm_thread_count(5, 1000, 1000, 1000, 1), 1);
  EXPECT_EQ(gemm_thread_count(5, 1000, 1000, 1000, 0), 1);
}

TEST(GemmThreadCount, LinearAndSteppedReductions) {
  // Linear on up to four threads: nt stays while W > 3000·nt / (nt - 1), a bound that grows as
  // nt falls, so W = 4500 keeps all four and W = 4000 drops to one.
  EXPECT_EQ(gemm_thread_count(5, 20, 20, 90, 4), 4);
  EXPECT_EQ(gemm_thread_count(5, 20, 20, 80, 4), 1);
  EXPECT_EQ(gemm_thread_count(5, 20, 20, 95, 3), 3);
  // Stepped on 16: W = 8000 falls 16 -> 12 -> 8 -> 6 -> 4 -> 2 -> 0, raised to 1.
  EXPECT_EQ(gemm_thread_count(5, 40, 40, 40, 16), 1);
  EXPECT_EQ(gemm_thread_count(5, 50, 50, 50, 16), 16);  // W = 15625
  // Path 7 counts half the work per flop: 50^3 gives W = 7812.5, which sheds threads.
  EXPECT_LT(gemm_thread_count(7, 50, 50, 50, 16), 16);
  EXPECT_EQ(gemm_thread_count(7, 400, 400, 400, 40), 40);
  // Other paths (the version-1 ones) follow the path-5 row.
  EXPECT_EQ(gemm_thread_count(3, 40, 40, 40, 2), gemm_thread_count(5, 40, 40, 40, 2));
}

TEST(GemmThreadCount, Avx512TpPreTestAndTallK) {
  EXPECT_EQ(gemm_thread_count(6, 8, 8, 4096, 8), 8);    // deep and narrow keeps every thread
  EXPECT_EQ(gemm_thread_count(6, 4, 4, 40, 8), 8);      // W = 400 < 8000, k / 4 = 10 >= 4
  EXPECT_EQ(gemm_thread_count(6, 20, 20, 40, 8), 1);    // stepped loop ends at 1, k / 20 < 4
  EXPECT_EQ(gemm_thread_count(6, 40, 10, 16, 8), 1);    // m > 32 but k, m, n all small
  EXPECT_EQ(gemm_thread_count(6, 8, 8, 32, 8), 1);      // m <= 32, n <= 60 needs k > 32
  EXPECT_EQ(gemm_thread_count(6, 500, 500, 500, 8), 8);
}

TEST(GemmGrid, StripesSplit) {
  // S = 3, T = 8: 3 row stripes, 8 div 3 = 2 column blocks; threads 6 and 7 get column block 2
  // (the third), which starts past n when n <= 2·nb.
  const auto g = tav::blas::stripes_grid(3, 8, 100, 50);
  EXPECT_EQ(g.row_blocks, 3);
  EXPECT_EQ(g.col_blocks, 2);
  EXPECT_EQ(g.mb, 40);  // ceil(100 / 3) = 34, up to a multiple of 8
  EXPECT_EQ(g.nb, 32);  // ceil(50 / 2) = 25
  EXPECT_GE((6 / g.row_blocks) * g.nb, 50);
  const auto one = tav::blas::stripes_grid(4, 1, 100, 50);
  EXPECT_EQ(one.row_blocks * one.col_blocks, 1);
}

// Every grid's blocks are disjoint and cover C.
TEST(GemmGrid, BlocksCoverC) {
  for (int team : {1, 2, 3, 4, 6, 7, 8, 12})
    for (int64_t m : {1, 7, 8, 9, 100, 1001})
      for (int64_t n : {1, 5, 64, 333}) {
        for (const auto& g : {tav::blas::balanced_grid(team, m, n),
                              tav::blas::stripes_grid(3, team, m, n),
                              tav::blas::rows_grid(team, m, n)}) {
          std::vector<int> hits(static_cast<size_t>(m * n), 0);
          for (int t = 0; t < team && t < g.row_blocks * g.col_blocks; ++t) {
            const int64_t i0 = (t % g.row_blocks) * g.mb, j0 = (t / g.row_blocks) * g.nb;
            for (int64_t j = j0; j < std::min(n, j0 + g.nb); ++j)
              for (int64_t i = i0; i < std::min(m, i0 + g.mb); ++i) ++hits[static_cast<size_t>(i + j * m)];
          }
          for (int h : hits) ASSERT_EQ(h, 1) << team << " " << m << "x" << n;
        }
      }
  // Two threads cut the longer side.
  EXPECT_EQ(tav::blas::balanced_grid(2, 1000, 10).row_blocks, 2);
  EXPECT_EQ(tav::blas::balanced_grid(2, 10, 1000).col_blocks, 2);
}

TEST(GemmGrid, SmallNOnlyOnAvx512Paths) {
  using tav::blas::smalln_applies;
  EXPECT_TRUE(smalln_applies(6, 1, 0, 3, 100, 100, 100));
  EXPECT_FALSE(smalln_applies(6, 1, 0, 4, 256, 100, 100));
  EXPECT_TRUE(smalln_applies(7, 2, 0, 15, 100, 512, 100));
  EXPECT_FALSE(smalln_applies(7, 2, 0, 16, 100, 512, 100));
  EXPECT_FALSE(smalln_applies(7, 0, 0, 3, 100, 100, 100));
  EXPECT_FALSE(smalln_applies(7, 1, 1, 3, 100, 100, 100));
  EXPECT_FALSE(smalln_applies(5, 1, 0, 3, 100, 100, 100));
}

template <class T>
void call_serial(gemm_problem<T>& p) {
  using R = tav::real_t<T>;
  auto r = [](const T* x) { return reinterpret_cast<const R*>(x); };
  auto* kernel = by_type<T>(tav_blas_xsgemm, tav_blas_xdgemm, tav_blas_xcgemm, tav_blas_xzgemm);
  kernel(&p.transa, &p.transb, &p.m, &p.n, &p.k, r(&p.alpha), r(p.a.data()), &p.lda,
         r(p.b.data()), &p.ldb, r(&p.beta), reinterpret_cast<R*>(p.c.data()), &p.ldc);
}

// For each type, transposition pair and shape: the product through the entry on 2 threads, on
// 1 thread, and by the serial kernel; prints one line of counts.
template <class T>
void compare_thread_counts(int& mismatches, int& inaccurate, int& bitwise) {
  // 14 x 300 x 6 leaves a 6-row stripe, which the 6 x 6 no-copy kernel takes.
  const int64_t shapes[][3] = {{150, 90, 300}, {97, 130, 40}, {300, 20, 64}, {41, 41, 257},
                               {14, 300, 6}};
  for (char ta : trans_codes)
    for (char tb : trans_codes)
      for (const auto& s : shapes) {
        gemm_problem<T> two(ta, tb, s[0], s[1], s[2], scalar<T>(0.8, -0.2), scalar<T>(0.3, 0.4));
        gemm_problem<T> one = two, serial = two, again = two;
        tav_serv_set_num_threads(2);
        call_entry(two);
        call_entry(again);
        tav_serv_set_num_threads(1);
        call_entry(one);
        call_serial(serial);
        const auto want = two.reference();
        for (auto* p : {&two, &one, &serial}) inaccurate += !p->matches(want);
        if (!bitwise_equal(two, again)) ++mismatches;
        if (bitwise_equal(two, serial) && bitwise_equal(one, serial)) ++bitwise;
      }
}

// The entry's other routes (m = 1, n = 1, k = 1 and k = 0), which reach the path's level-2
// kernels: accuracy only, since they need not sum as the matrix-product kernel does.
template <class T>
void check_other_routes(int& inaccurate) {
  const int64_t shapes[][3] = {{1, 7, 9}, {8, 1, 9}, {70, 9, 1}, {6, 6, 0}};
  for (char ta : trans_codes)
    for (char tb : trans_codes)
      for (const auto& s : shapes)
        for (double beta : {0.0, 0.7}) {
          gemm_problem<T> p(ta, tb, s[0], s[1], s[2], scalar<T>(1.2, -0.5), scalar<T>(beta, 0.1));
          call_entry(p);
          inaccurate += !p.matches(p.reference());
        }
}

TAV_SCENARIO(gemm_thread_counts) {
  int mismatches = 0, inaccurate = 0, bitwise = 0;
  compare_thread_counts<float>(mismatches, inaccurate, bitwise);
  compare_thread_counts<double>(mismatches, inaccurate, bitwise);
  compare_thread_counts<std::complex<float>>(mismatches, inaccurate, bitwise);
  compare_thread_counts<std::complex<double>>(mismatches, inaccurate, bitwise);
  check_other_routes<float>(inaccurate);
  check_other_routes<double>(inaccurate);
  check_other_routes<std::complex<float>>(inaccurate);
  check_other_routes<std::complex<double>>(inaccurate);
  std::printf("path=%d runs_differ=%d inaccurate=%d bitwise=%d of %d\n", tav_blas_gemm_code_path(),
              mismatches, inaccurate, bitwise, 4 * 9 * 5);
}

struct thread_case {
  const char* name;
  env_list env;
  const char* path;
  bool reproducible;  // every product bitwise equal to the serial kernel
};

void PrintTo(const thread_case& c, std::ostream* os) { *os << c.name; }

class GemmThreads : public testing::TestWithParam<thread_case> {};

TEST_P(GemmThreads, TwoThreadsMatchTheSerialKernel) {
  const thread_case& c = GetParam();
  const auto r = run_child("gemm_thread_counts", c.env);
  ASSERT_EQ(r.exit_code, 0) << r.err;
  const std::string prefix = std::string("path=") + c.path + " runs_differ=0 inaccurate=0 bitwise=";
  EXPECT_EQ(r.out.substr(0, prefix.size()), prefix) << r.out;
  if (c.reproducible) EXPECT_NE(r.out.find("bitwise=180 of 180"), std::string::npos) << r.out;
}

INSTANTIATE_TEST_SUITE_P(
    Routes, GemmThreads,
    testing::Values(
        thread_case{"version1_def", {{"TAV_DEBUG_CPU_TYPE", "0"}}, "0", false},
        thread_case{"version1_mc", {{"TAV_DEBUG_CPU_TYPE", "2"}}, "2", false},
        thread_case{"version1_mc3", {{"TAV_DEBUG_CPU_TYPE", "3"}}, "3", false},
        thread_case{"version1_avx", {{"TAV_DEBUG_CPU_TYPE", "4"}}, "4", false},
        thread_case{"version2_avx2", {{"TAV_DEBUG_CPU_TYPE", "5"}}, "5", false},
        thread_case{"stripes_avx2", {{"TAV_DEBUG_CPU_TYPE", "5"}, {"TAV_NUM_STRIPES", "3"}}, "5",
                    false},
        thread_case{"reproducible", {{"TAV_DEBUG_CPU_TYPE", "0"}, {"TAV_CBWR", "COMPATIBLE"}}, "1",
                    true},
        thread_case{"reproducible_stripes",
                    {{"TAV_CBWR", "COMPATIBLE"}, {"TAV_NUM_STRIPES", "2"}}, "1", true}),
    [](const testing::TestParamInfo<thread_case>& info) { return std::string(info.param.name); });

// Called from inside a parallel region, each product runs on its caller's thread alone and is
// still correct.
TEST(GemmThreads, NestedCallsDoNotOversubscribe) {
  tav_serv_set_num_threads(2);
  int failures = 0;
#pragma omp parallel num_threads(2) reduction(+ : failures)
  {
    gemm_problem<double> p('N', 'T', 120, 110, 130 + omp_get_thread_num(), 1.5, -0.5);
    call_entry(p);
    failures += !p.matches(p.reference());
  }
  EXPECT_EQ(failures, 0);
}

}  // namespace
