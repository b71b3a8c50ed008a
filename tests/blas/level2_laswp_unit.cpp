// laswp against the interchanges applied one by one: forwards and backwards, pivot increments 1
// and 2, ranges k1..k2 that start past row 1, column counts around the 32-column passes, and a
// forward sequence undone by the backward one.
#include <gtest/gtest.h>

#include <cstring>

#include "blas/blas_internal.hpp"
#include "level2_test_data.hpp"

namespace {

using namespace tav::test;
namespace ref = tav::test::level2_ref;

template <class T>
class Level2Laswp : public testing::Test {};
TYPED_TEST_SUITE(Level2Laswp, level2_types);

struct swap_case {
  int64_t m, n, k1, k2, incx;
};

const swap_case cases[] = {{1, 1, 1, 1, 1},   {5, 3, 1, 5, 1},    {9, 31, 2, 7, 1},
                           {9, 32, 2, 7, -1}, {40, 33, 3, 40, 2}, {40, 65, 1, 39, -2},
                           {12, 0, 1, 12, 1}, {12, 4, 5, 4, 1},   {12, 4, 1, 12, 0}};

template <class T>
bool same_bits(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

// Pivots as getrf leaves them: row i swaps with some row p >= i, stored at 1-based position
// k1 + (i - k1)·|incx|; unused positions hold an out-of-range row to catch a wrong walk.
std::vector<int64_t> random_pivots(const swap_case& c, std::mt19937_64& rng) {
  const int64_t step = c.incx > 0 ? c.incx : (c.incx < 0 ? -c.incx : 1);
  std::vector<int64_t> ipiv(static_cast<size_t>(c.k1 + (c.m - c.k1 + 1) * step), c.m + 100);
  for (int64_t i = c.k1; i <= c.k2; ++i) {
    std::uniform_int_distribution<int64_t> pick(i, c.m);
    ipiv[static_cast<size_t>(c.k1 - 1 + (i - c.k1) * step)] = pick(rng);
  }
  return ipiv;
}

TYPED_TEST(Level2Laswp, MatchesInterchangesOneByOne) {
  using T = TypeParam;
  std::mt19937_64 rng(61);
  for (const swap_case& c : cases) {
    SCOPED_TRACE(testing::Message() << "m " << c.m << " n " << c.n << " k1 " << c.k1 << " k2 "
                                    << c.k2 << " incx " << c.incx);
    guarded_matrix<T> a = random_matrix<T>(c.m, c.n, 2, rng);
    const std::vector<int64_t> ipiv = random_pivots(c, rng);
    ref::dense<T> before{c.m, c.n, a.ld(), std::vector<T>(a.data(), a.data() + a.ld() * c.n)};
    const ref::dense<T> want =
        c.incx == 0 || c.k2 < c.k1 ? before : ref::swap_rows(before, c.k1, c.k2, ipiv, c.incx);
    tav::blas::laswp<T>(c.n, a.data(), a.ld(), c.k1, c.k2, ipiv.data(), c.incx);
    EXPECT_TRUE(a.intact());
    bool equal = true;
    for (int64_t j = 0; j < c.n; ++j)
      for (int64_t i = 0; i < c.m; ++i) equal = equal && same_bits(a(i, j), want(i, j));
    EXPECT_TRUE(equal);
  }
}

TYPED_TEST(Level2Laswp, BackwardUndoesForward) {
  using T = TypeParam;
  std::mt19937_64 rng(62);
  const swap_case c{70, 45, 1, 70, 1};
  guarded_matrix<T> a = random_matrix<T>(c.m, c.n, 0, rng);
  const guarded_matrix<T> original = a;
  const std::vector<int64_t> ipiv = random_pivots(c, rng);
  tav::blas::laswp<T>(c.n, a.data(), a.ld(), c.k1, c.k2, ipiv.data(), 1);
  tav::blas::laswp<T>(c.n, a.data(), a.ld(), c.k1, c.k2, ipiv.data(), -1);
  bool equal = true;
  for (int64_t j = 0; j < c.n; ++j)
    for (int64_t i = 0; i < c.m; ++i) equal = equal && same_bits(a(i, j), original(i, j));
  EXPECT_TRUE(equal);
}

}  // namespace
