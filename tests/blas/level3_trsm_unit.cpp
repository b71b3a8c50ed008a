// The triangular solve against its long-double residual for every side, triangle, transpose
// and diagonal in the four types, at sizes around the block size; alpha = 0 with NaN in A; and
// lower-case arguments.
#include <gtest/gtest.h>

#include <tuple>

#include "blas/blas_internal.hpp"
#include "blas/level3/trsm_driver.hpp"
#include "guarded_buffer.hpp"
#include "level3_test_data.hpp"
#include "reference_level3_ext.hpp"

namespace {

using namespace tav::test;
using tav::blas::triangular_blocking;

constexpr int64_t nb = triangular_blocking::nb;

struct shape {
  int64_t m, n;
};

// Orders on both sides of one and two blocks, for either side; the last shapes have enough
// right-hand sides for the solve to split them over threads.
const shape shapes[] = {{0, 4},  {4, 0},      {1, 1},          {1, 9},          {9, 1},
                        {7, 5},  {nb - 1, 5}, {nb, 3},         {nb + 1, 6},     {5, nb - 1},
                        {3, nb}, {6, nb + 1}, {2 * nb + 3, 9}, {9, 2 * nb + 3}, {200, 150}};

using trsm_case = std::tuple<element, char, char, char, char>;

template <class T>
void check_solve(char side, char uplo, char trans, char diag, shape s, T alpha, uint64_t seed) {
  SCOPED_TRACE(testing::Message() << "m=" << s.m << " n=" << s.n << " alpha=" << alpha);
  std::mt19937_64 g(seed);
  const int64_t order = side == 'L' ? s.m : s.n;
  const int64_t lda = order + 3;
  const std::vector<T> a = triangular_matrix<T>(g, uplo, diag, order, lda);
  guarded_matrix<T> b(s.m, s.n, s.m + 5);
  fill_random(g, b);
  const std::vector<T> b0 = contents(b);
  tav::blas::trsm<T>(side, uplo, trans, diag, s.m, s.n, alpha, a.data(), lda, b.data(), b.ld());
  EXPECT_TRUE(b.intact());
  EXPECT_LT(trsm_residual_ratio(side, uplo, trans, diag, s.m, s.n, alpha, a.data(), lda, b.data(),
                                b.ld(), b0.data(), s.m),
            30.0L);
}

class TrsmResidual : public testing::TestWithParam<trsm_case> {};

TEST_P(TrsmResidual, BelowThirtyAtEverySize) {
  // Structured bindings cannot be captured by the lambda below.
  const element type = std::get<0>(GetParam());
  const char side = std::get<1>(GetParam()), uplo = std::get<2>(GetParam());
  const char trans = std::get<3>(GetParam()), diag = std::get<4>(GetParam());
  with_element_type(type, [&](auto tag) {
    using T = decltype(tag);
    uint64_t seed = 1;
    for (const shape& s : shapes) {
      // alpha = 1 reaches the single-vector solves when m or n is 1.
      check_solve<T>(side, uplo, trans, diag, s, T(1), ++seed);
      check_solve<T>(side, uplo, trans, diag, s, general_scalar<T>(), ++seed);
    }
  });
}

std::string case_name(const testing::TestParamInfo<trsm_case>& info) {
  const auto [type, side, uplo, trans, diag] = info.param;
  return element_name(type) + "_" + side + uplo + trans + diag;
}

INSTANTIATE_TEST_SUITE_P(Level3, TrsmResidual,
                         testing::Combine(all_elements(), testing::Values('L', 'R'),
                                          testing::Values('U', 'L'), testing::Values('N', 'T', 'C'),
                                          testing::Values('N', 'U')),
                         case_name);

class TrsmElementType : public testing::TestWithParam<element> {};

// alpha = 0 sets B to zero without reading A, here all NaN.
TEST_P(TrsmElementType, ZeroAlphaClearsBWithoutReadingA) {
  with_element_type(GetParam(), [&](auto tag) {
    using T = decltype(tag);
    std::mt19937_64 g(7);
    for (const shape s : {shape{13, 5}, shape{3, 4}, shape{40, 33}}) {
      for (const char side : {'L', 'R'}) {
        const int64_t order = side == 'L' ? s.m : s.n;
        const std::vector<T> a(static_cast<size_t>(order * order), nan_element<T>());
        guarded_matrix<T> b(s.m, s.n, s.m + 2);
        fill_random(g, b);
        tav::blas::trsm<T>(side, 'L', 'N', 'N', s.m, s.n, T(0), a.data(), order, b.data(), b.ld());
        EXPECT_TRUE(b.intact());
        for (int64_t j = 0; j < s.n; ++j) {
          for (int64_t i = 0; i < s.m; ++i) EXPECT_EQ(b(i, j), T(0)) << i << "," << j;
        }
      }
    }
  });
}

// The character arguments are read without regard to case.
TEST_P(TrsmElementType, LowerCaseArgumentsGiveTheSameResult) {
  with_element_type(GetParam(), [&](auto tag) {
    using T = decltype(tag);
    std::mt19937_64 g(11);
    const int64_t m = nb + 9, n = 21;
    const std::vector<T> a = triangular_matrix<T>(g, 'U', 'N', n, n);
    guarded_matrix<T> upper_case(m, n, m), lower_case(m, n, m);
    fill_random(g, upper_case);
    for (int64_t j = 0; j < n; ++j) {
      for (int64_t i = 0; i < m; ++i) lower_case(i, j) = upper_case(i, j);
    }
    tav::blas::trsm<T>('R', 'U', 'C', 'N', m, n, general_scalar<T>(), a.data(), n,
                       upper_case.data(), m);
    tav::blas::trsm<T>('r', 'u', 'c', 'n', m, n, general_scalar<T>(), a.data(), n,
                       lower_case.data(), m);
    EXPECT_EQ(contents(upper_case), contents(lower_case));
  });
}

INSTANTIATE_TEST_SUITE_P(Level3, TrsmElementType, all_elements(),
                         [](const auto& info) { return element_name(info.param); });

}  // namespace
