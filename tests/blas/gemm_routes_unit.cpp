// The serial matrix product's blocking factors and strategies, every route reached by a shape
// of its own (its counter alone moves, the product matches the reference) on every path, and
// each path's small-strategy switches where its own row of the table puts them.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "blas/level3/gemm_kernel_api.hpp"
#include "code_paths.hpp"
#include "common/path_naming.hpp"
#include "common/scalar_traits.hpp"
#include "blas_test_data.hpp"

#define TAV_PATH_NS avx2_view
#define TAV_PATH_ID 5
#include "blas/level3/kernels/gemm_blocking.hpp"
#undef TAV_PATH_ID
#undef TAV_PATH_NS

using route_count_fn = long(int route);

extern "C" {
tav::blas::xgemm_fn<double> TAV_PATH_VARIANTS(blas, xdgemm), TAV_PATH_VARIANTS(blas, xzgemm);
route_count_fn TAV_PATH_VARIANTS(blas, gemm_route_count);
}

namespace {

using namespace tav::test;
namespace g = tav::avx2_view::gemm;
using g::serial_route;

TEST(GemmBlocking, KBlock) {
  struct row {
    int64_t k, kb;
  };
  for (row r : {row{1, 128}, {10, 128}, {128, 128}, {129, 129}, {256, 256}, {257, 128},
                {300, 150}, {383, 191}, {384, 192}, {1000, 192}})
    EXPECT_EQ(g::blocking_for<double>(100, 100, r.k).kb, r.kb) << r.k;
}

TEST(GemmBlocking, RowAndColumnBlocks) {
  // mb: max(mr, m) capped at 5000, rounded up to mr = 12.
  EXPECT_EQ(g::blocking_for<double>(1, 10, 10).mb, 12);
  EXPECT_EQ(g::blocking_for<double>(13, 10, 10).mb, 24);
  EXPECT_EQ(g::blocking_for<double>(4999, 10, 10).mb, 5004);
  EXPECT_EQ(g::blocking_for<double>(9000, 10, 10).mb, 5004);
  // nb: max(nr, n) capped at 24 (k < 48) or 192, rounded up to nr = 4.
  EXPECT_EQ(g::blocking_for<double>(100, 10, 40).nb, 12);
  EXPECT_EQ(g::blocking_for<double>(100, 1, 40).nb, 4);
  EXPECT_EQ(g::blocking_for<double>(100, 30, 47).nb, 24);
  EXPECT_EQ(g::blocking_for<double>(100, 30, 48).nb, 32);
  EXPECT_EQ(g::blocking_for<double>(100, 1000, 48).nb, 192);
  // Complex panels stop at 96 columns; nr = 3 for double complex.
  EXPECT_EQ(g::blocking_for<g::cpx<double>>(100, 1000, 100).nb, 96);
}

struct route_case {
  int ta, tb;
  int64_t m, n, k;
  bool alpha_zero, beta_zero;
  serial_route expected;
};

class GemmSerialRoute : public testing::TestWithParam<route_case> {};

TEST_P(GemmSerialRoute, TakesTheStrategyOfItsShape) {
  const route_case& c = GetParam();
  const g::serial_shape s{c.ta, c.tb, c.m, c.n, c.k, c.alpha_zero, c.beta_zero};
  EXPECT_EQ(g::route_serial<double>(s), c.expected)
      << c.ta << c.tb << " " << c.m << "x" << c.n << "x" << c.k;
}

constexpr auto nocopy = serial_route::nocopy_6x6, small = serial_route::small,
               pst = serial_route::pst, driver = serial_route::driver,
               scale = serial_route::scale_only, done = serial_route::done;

INSTANTIATE_TEST_SUITE_P(
    Avx2Constants, GemmSerialRoute,
    testing::Values(
        route_case{0, 0, 0, 5, 5, false, false, done}, route_case{0, 0, 5, 0, 5, false, false, done},
        // m = k of 9 or 12 with beta = 0.
        route_case{0, 0, 9, 500, 9, false, true, small},
        route_case{1, 0, 12, 500, 12, false, true, small},
        // The 6 x 6 no-copy kernel needs both untransposed.
        route_case{0, 0, 6, 300, 6, false, false, nocopy},
        route_case{0, 0, 6, 300, 6, false, true, nocopy},
        route_case{1, 0, 6, 300, 6, false, false, small},
        // k <= 128, m·n/(m+n) < 11.
        route_case{0, 0, 100, 10, 100, false, false, small},
        route_case{0, 0, 500, 3, 3, false, false, small},
        route_case{0, 0, 500, 5, 100, false, false, pst},
        route_case{1, 1, 500, 5, 100, false, false, pst},
        route_case{1, 0, 500, 5, 100, false, false, driver},
        // k < 7, m < 41, n < 41 unless A plain and B transposed.
        route_case{0, 0, 40, 40, 6, false, false, small},
        route_case{1, 1, 40, 40, 6, false, false, small},
        route_case{1, 0, 40, 40, 6, false, false, small},
        // alpha = 0 only scales.
        route_case{0, 0, 100, 100, 100, true, false, scale},
        route_case{0, 0, 9, 9, 9, true, false, scale},
        // A plain: m < 72 small; n >= 72 general; else small.
        route_case{0, 0, 71, 500, 500, false, false, small},
        route_case{0, 0, 72, 72, 500, false, false, driver},
        route_case{0, 1, 72, 71, 500, false, false, small},
        // A transposed: m < 56 small; n < 56 small; else general (pst below 2·mr rows).
        route_case{1, 0, 55, 500, 500, false, false, small},
        route_case{2, 0, 56, 55, 500, false, false, small},
        route_case{2, 0, 56, 56, 500, false, false, driver},
        route_case{1, 1, 56, 56, 500, false, false, driver}));

constexpr tav::blas::xgemm_fn<double>* dgemm_of[8] = {TAV_PATH_VARIANTS(blas, xdgemm)};
constexpr tav::blas::xgemm_fn<double>* zgemm_of[8] = {TAV_PATH_VARIANTS(blas, xzgemm)};
constexpr route_count_fn* counts_of[8] = {TAV_PATH_VARIANTS(blas, gemm_route_count)};
constexpr int route_total = 6;

struct counted_case {
  const char* name;
  char ta, tb;
  int64_t m, n, k;
  double alpha, beta;
  serial_route expected;
};

const counted_case counted_cases[] = {
    {"done", 'N', 'N', 0, 5, 5, 1, 1, serial_route::done},
    {"nocopy_6x6", 'N', 'N', 6, 30, 6, 1.5, 0.5, serial_route::nocopy_6x6},
    {"nocopy_6x6 beta 0", 'N', 'N', 6, 30, 6, 1.5, 0, serial_route::nocopy_6x6},
    {"small k < 7", 'N', 'N', 40, 40, 6, 1, 1, serial_route::small},
    {"small transposed", 'T', 'N', 20, 200, 300, 1, -1, serial_route::small},
    {"pst", 'N', 'N', 500, 1, 100, 2, 1, serial_route::pst},
    {"driver", 'N', 'T', 100, 100, 300, 1, 0.5, serial_route::driver},
    {"driver transposed A", 'C', 'N', 100, 60, 500, 1, 0.5, serial_route::driver},
    {"scale_only", 'N', 'N', 100, 100, 100, 0, 0.5, serial_route::scale_only},
};

template <class T>
void run_case(int path, const counted_case& c) {
  using R = tav::real_t<T>;
  gemm_problem<T> p(c.ta, c.tb, c.m, c.n, c.k, T(R(c.alpha)), T(R(c.beta)));
  // C's old contents must not reach the result when beta = 0, even a NaN.
  if (c.beta == 0 && c.m > 0) p.c(0, 0) = T(std::numeric_limits<R>::quiet_NaN());
  long before[route_total];
  for (int r = 0; r < route_total; ++r) before[r] = counts_of[path](r);
  auto cast = [](const T* x) { return reinterpret_cast<const R*>(x); };
  auto* kernel = std::is_same_v<T, double> ? dgemm_of[path] : zgemm_of[path];
  kernel(&p.transa, &p.transb, &p.m, &p.n, &p.k, cast(&p.alpha), cast(p.a.data()), &p.lda,
         cast(p.b.data()), &p.ldb, cast(&p.beta), reinterpret_cast<R*>(p.c.data()), &p.ldc);
  for (int r = 0; r < route_total; ++r)
    EXPECT_EQ(counts_of[path](r) - before[r], r == static_cast<int>(c.expected) ? 1 : 0)
        << "path " << path << " " << c.name << " route " << r;
  if (c.m > 0) expect_matches_reference(p);
}

TEST(GemmRouteCount, EveryRouteIsReachedByItsShape) {
  int reached = 0;
  for (int path = 0; path < 8; ++path) {
    // The AVX-512 paths are left to the ISA audit, which runs where AVX-512 is missing.
    if (path >= 6 || !path_runs(path)) continue;
    for (const counted_case& c : counted_cases) {
      run_case<double>(path, c);
      run_case<std::complex<double>>(path, c);
    }
    ++reached;
  }
  EXPECT_GE(reached, 2);
}

// Each path's own switches, read from its row of the table: a product one row or one column
// short of the switch takes the small strategy, one at the switch the packed driver.
TEST(GemmRouteCount, EachPathSwitchesWhereItsRowSays) {
  for (int path = 0; path < 6; ++path) {
    if (!path_runs(path)) continue;
    const g::serial_limits l = g::path_table[path].serial;
    for (const auto& [ta, t] : {std::pair{'N', l.small_plain}, std::pair{'T', l.small_trans}}) {
      run_case<double>(path, {"below in m", ta, 'N', t - 1, 200, 200, 1, 1, small});
      run_case<double>(path, {"below in n", ta, 'N', 200, t - 1, 200, 1, 1, small});
      run_case<double>(path, {"at the switch", ta, 'N', t, t, 200, 1, 1, driver});
    }
  }
}

}  // namespace
