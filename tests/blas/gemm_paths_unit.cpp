// The matrix product through the dispatcher on every code path this processor runs, each forced
// by the CPU-type override in a child process: the chosen path, its interface version, and the
// results of every route for all types and transposition pairs.
#include <cstdio>
#include <string>

#include "blas/blas_internal.hpp"
#include "blas/level3/gemm_entries.hpp"
#include "child_process.hpp"
#include "gemm_test_problem.hpp"

namespace {

using namespace tav::test;

template <class T>
T scalar(double re, double im) {
  if constexpr (std::is_floating_point_v<T>) return static_cast<T>(re);
  else return T(static_cast<typename T::value_type>(re), static_cast<typename T::value_type>(im));
}

// Shapes for the entry's routes (m = 1, n = 1, k = 1, k = 0) and the serial strategies (6 x 6
// no-copy, small, pst, driver with two k blocks).
template <class T>
int count_failures(int& total) {
  const int64_t shapes[][3] = {{1, 7, 9},   {8, 1, 9},    {70, 9, 1},  {6, 6, 0},
                               {6, 11, 6},  {33, 20, 17}, {101, 5, 50}, {80, 75, 300}};
  int failures = 0;
  for (char ta : trans_codes)
    for (char tb : trans_codes)
      for (const auto& s : shapes)
        for (double beta : {0.0, 0.7}) {
          gemm_problem<T> p(ta, tb, s[0], s[1], s[2], scalar<T>(1.2, -0.5), scalar<T>(beta, 0.1));
          tav::blas::gemm<T>(p.transa, p.transb, p.m, p.n, p.k, p.alpha, p.a.data(), p.lda,
                             p.b.data(), p.ldb, p.beta, p.c.data(), p.ldc);
          const auto want = p.reference();
          const long double ratio = gemm_error_ratio<T>(p.m, p.n, p.k, p.c.data(), p.ldc,
                                                        want.want.data(), want.bound);
          ++total;
          if (!(ratio <= 2.0) || !p.c.intact()) {
            ++failures;
            std::fprintf(stderr, "%s ratio %Lg\n", p.describe().c_str(), ratio);
          }
        }
  return failures;
}

TAV_SCENARIO(gemm_on_forced_path) {
  int total = 0;
  const int failures = count_failures<float>(total) + count_failures<double>(total) +
                       count_failures<std::complex<float>>(total) +
                       count_failures<std::complex<double>>(total);
  std::printf("path=%d version=%d failures=%d of %d\n", tav_blas_gemm_code_path(),
              tav_blas_get_kernel_api_version(), failures, total);
}

struct forced_case {
  const char* name;
  env_list env;
  const char* expected;
  bool (*runnable)();  // whether this processor has the path's instructions
};

bool baseline() { return true; }
bool ssse3() { return __builtin_cpu_supports("ssse3"); }
bool sse42() { return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt"); }
bool avx() { return __builtin_cpu_supports("avx"); }
bool avx2() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"); }

void PrintTo(const forced_case& c, std::ostream* os) { *os << c.name; }

class GemmForcedPath : public testing::TestWithParam<forced_case> {};

TEST_P(GemmForcedPath, EveryRouteIsCorrect) {
  const forced_case& c = GetParam();
  if (!c.runnable()) GTEST_SKIP() << "this processor cannot run " << c.name;
  const auto r = run_child("gemm_on_forced_path", c.env);
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, std::string(c.expected) + " failures=0 of 576\n") << r.err;
}

INSTANTIATE_TEST_SUITE_P(
    Paths, GemmForcedPath,
    testing::Values(forced_case{"def", {{"TAV_DEBUG_CPU_TYPE", "0"}}, "path=0 version=1", baseline},
                    forced_case{"cnr_def",
                                {{"TAV_DEBUG_CPU_TYPE", "2"}, {"TAV_CBWR", "AUTO"}},
                                "path=1 version=1", baseline},
                    forced_case{"mc", {{"TAV_DEBUG_CPU_TYPE", "2"}}, "path=2 version=1", ssse3},
                    forced_case{"mc3", {{"TAV_DEBUG_CPU_TYPE", "3"}}, "path=3 version=1", sse42},
                    forced_case{"avx", {{"TAV_DEBUG_CPU_TYPE", "4"}}, "path=4 version=1", avx},
                    forced_case{"avx2", {{"TAV_DEBUG_CPU_TYPE", "5"}}, "path=5 version=2", avx2}),
    [](const testing::TestParamInfo<forced_case>& info) { return std::string(info.param.name); });

}  // namespace
