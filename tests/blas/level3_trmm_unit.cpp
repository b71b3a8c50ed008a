// The triangular product against the long-double reference for every side, triangle, transpose
// and diagonal in the four types, at sizes around the block size, and alpha = 0 with NaN in A.
#include <gtest/gtest.h>

#include <tuple>

#include "blas/blas_internal.hpp"
#include "blas/level3/trsm_driver.hpp"
#include "guarded_buffer.hpp"
#include "level3_test_data.hpp"
#include "reference_level3_ext.hpp"

namespace {

using namespace tav::test;

constexpr int64_t nb = tav::blas::triangular_blocking::nb;

struct shape {
  int64_t m, n;
};

// Orders on both sides of one and two blocks, for either side; the last shape has enough
// right-hand sides for the product to split them over threads.
const shape shapes[] = {{0, 4},  {4, 0},      {1, 1},          {1, 9},          {9, 1},
                        {7, 5},  {nb - 1, 5}, {nb, 3},         {nb + 1, 6},     {5, nb - 1},
                        {3, nb}, {6, nb + 1}, {2 * nb + 3, 9}, {9, 2 * nb + 3}, {200, 150}};

using trmm_case = std::tuple<element, char, char, char, char>;

template <class T>
void check_product(char side, char uplo, char trans, char diag, shape s, T alpha, uint64_t seed) {
  SCOPED_TRACE(testing::Message() << "m=" << s.m << " n=" << s.n << " alpha=" << alpha);
  std::mt19937_64 g(seed);
  const int64_t order = side == 'L' ? s.m : s.n;
  const int64_t lda = order + 2;
  const std::vector<T> a = triangular_matrix<T>(g, uplo, diag, order, lda);
  guarded_matrix<T> b(s.m, s.n, s.m + 3);
  fill_random(g, b);
  std::vector<T> want = contents(b);
  const std::vector<long double> bound =
      reference_trmm(side, uplo, trans, diag, s.m, s.n, alpha, a.data(), lda, want.data(), s.m);
  tav::blas::trmm<T>(side, uplo, trans, diag, s.m, s.n, alpha, a.data(), lda, b.data(), b.ld());
  EXPECT_TRUE(b.intact());
  // Each element is a sum of at most `order` products, within gamma_order of its bound.
  EXPECT_LT(gemm_error_ratio(s.m, s.n, order, b.data(), b.ld(), want.data(), bound), 2.0L);
}

class TrmmAgainstReference : public testing::TestWithParam<trmm_case> {};

TEST_P(TrmmAgainstReference, WithinRoundingAtEverySize) {
  // Structured bindings cannot be captured by the lambda below.
  const element type = std::get<0>(GetParam());
  const char side = std::get<1>(GetParam()), uplo = std::get<2>(GetParam());
  const char trans = std::get<3>(GetParam()), diag = std::get<4>(GetParam());
  with_element_type(type, [&](auto tag) {
    using T = decltype(tag);
    uint64_t seed = 100;
    for (const shape& s : shapes) {
      check_product<T>(side, uplo, trans, diag, s, T(1), ++seed);
      check_product<T>(side, uplo, trans, diag, s, general_scalar<T>(), ++seed);
    }
  });
}

std::string case_name(const testing::TestParamInfo<trmm_case>& info) {
  const auto [type, side, uplo, trans, diag] = info.param;
  return element_name(type) + "_" + side + uplo + trans + diag;
}

INSTANTIATE_TEST_SUITE_P(Level3, TrmmAgainstReference,
                         testing::Combine(all_elements(), testing::Values('L', 'R'),
                                          testing::Values('U', 'L'), testing::Values('N', 'T', 'C'),
                                          testing::Values('N', 'U')),
                         case_name);

class TrmmElementType : public testing::TestWithParam<element> {};

// alpha = 0 sets B to zero without reading A, here all NaN.
TEST_P(TrmmElementType, ZeroAlphaClearsBWithoutReadingA) {
  with_element_type(GetParam(), [&](auto tag) {
    using T = decltype(tag);
    std::mt19937_64 g(5);
    for (const char side : {'L', 'R'}) {
      const int64_t m = 19, n = 6, order = side == 'L' ? m : n;
      const std::vector<T> a(static_cast<size_t>(order * order), nan_element<T>());
      guarded_matrix<T> b(m, n, m + 1);
      fill_random(g, b);
      tav::blas::trmm<T>(side, 'U', 'T', 'U', m, n, T(0), a.data(), order, b.data(), b.ld());
      EXPECT_TRUE(b.intact());
      EXPECT_EQ(contents(b), std::vector<T>(static_cast<size_t>(m * n), T(0)));
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Level3, TrmmElementType, all_elements(),
                         [](const auto& info) { return element_name(info.param); });

}  // namespace
