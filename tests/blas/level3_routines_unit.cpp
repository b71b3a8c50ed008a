// trmm, trsm, syrk, herk, syr2k and her2k for the four types against the long-double reference
// (trsm by its residual), with NaN wherever a routine must not read.
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <sstream>
#include <string>
#include <tuple>

#include "blas/blas_internal.hpp"
#include "blas/level3/syrk_triangle_update.hpp"
#include "blas/level3/trsm_driver.hpp"
#include "guarded_buffer.hpp"
#include "blas_test_data.hpp"
#include "reference.hpp"

namespace {

using namespace tav::test;

constexpr int64_t nb = tav::blas::triangular_blocking::nb;

struct shape {
  int64_t m, n;
};

// Orders on both sides of one and two blocks, for either side; the last shape has enough
// right-hand sides for the routines to split them over threads.
const shape shapes[] = {{0, 4},  {4, 0},      {1, 1},          {1, 9},          {9, 1},
                        {7, 5},  {nb - 1, 5}, {nb, 3},         {nb + 1, 6},     {5, nb - 1},
                        {3, nb}, {6, nb + 1}, {2 * nb + 3, 9}, {9, 2 * nb + 3}, {200, 150}};

enum class routine { trmm, trsm };

template <class T>
void call(routine r, char side, char uplo, char trans, char diag, int64_t m, int64_t n, T alpha,
          const T* a, int64_t lda, T* b, int64_t ldb) {
  if (r == routine::trmm) tav::blas::trmm<T>(side, uplo, trans, diag, m, n, alpha, a, lda, b, ldb);
  else tav::blas::trsm<T>(side, uplo, trans, diag, m, n, alpha, a, lda, b, ldb);
}

template <class T>
void check(routine r, char side, char uplo, char trans, char diag, shape s, T alpha,
           uint64_t seed) {
  SCOPED_TRACE(testing::Message() << "m=" << s.m << " n=" << s.n << " alpha=" << alpha);
  std::mt19937_64 g(seed);
  const int64_t order = side == 'L' ? s.m : s.n;
  const int64_t lda = order + 3;
  const std::vector<T> a = triangular_matrix<T>(g, uplo, diag, order, lda);
  guarded_matrix<T> b(s.m, s.n, s.m + 5);
  fill_random(g, b);
  std::vector<T> b0 = contents(b);
  call(r, side, uplo, trans, diag, s.m, s.n, alpha, a.data(), lda, b.data(), b.ld());
  EXPECT_TRUE(b.intact());
  if (r == routine::trmm) {
    const std::vector<long double> bound =
        reference_trmm(side, uplo, trans, diag, s.m, s.n, alpha, a.data(), lda, b0.data(), s.m);
    // Each element is a sum of at most `order` products, within gamma_order of its bound.
    EXPECT_LT(gemm_error_ratio(s.m, s.n, order, b.data(), b.ld(), b0.data(), bound), 2.0L);
  } else {
    EXPECT_LT(trsm_residual_ratio(side, uplo, trans, diag, s.m, s.n, alpha, a.data(), lda,
                                  b.data(), b.ld(), b0.data(), s.m),
              30.0L);
  }
}

using triangular_case = std::tuple<routine, element, char, char, char, char>;

class TriangularAgainstReference : public testing::TestWithParam<triangular_case> {};

TEST_P(TriangularAgainstReference, WithinRoundingAtEverySize) {
  // Structured bindings cannot be captured by the lambda below.
  const routine r = std::get<0>(GetParam());
  const char side = std::get<2>(GetParam()), uplo = std::get<3>(GetParam());
  const char trans = std::get<4>(GetParam()), diag = std::get<5>(GetParam());
  with_element_type(std::get<1>(GetParam()), [&](auto tag) {
    using T = decltype(tag);
    uint64_t seed = 100;
    for (const shape& s : shapes) {
      // alpha = 1 reaches the single-vector solves when m or n is 1.
      check<T>(r, side, uplo, trans, diag, s, T(1), ++seed);
      check<T>(r, side, uplo, trans, diag, s, general_scalar<T>(), ++seed);
    }
  });
}

std::string routine_name(routine r) { return r == routine::trmm ? "trmm" : "trsm"; }

std::string case_name(const testing::TestParamInfo<triangular_case>& info) {
  const auto [r, type, side, uplo, trans, diag] = info.param;
  return routine_name(r) + "_" + element_name(type) + "_" + side + uplo + trans + diag;
}

INSTANTIATE_TEST_SUITE_P(Level3, TriangularAgainstReference,
                         testing::Combine(testing::Values(routine::trmm, routine::trsm),
                                          all_elements(), testing::Values('L', 'R'),
                                          testing::Values('U', 'L'), testing::Values('N', 'T', 'C'),
                                          testing::Values('N', 'U')),
                         case_name);

class TriangularElementType : public testing::TestWithParam<element> {};

// alpha = 0 sets B to zero without reading A, here all NaN.
TEST_P(TriangularElementType, ZeroAlphaClearsBWithoutReadingA) {
  with_element_type(GetParam(), [&](auto tag) {
    using T = decltype(tag);
    std::mt19937_64 g(7);
    for (const routine r : {routine::trmm, routine::trsm})
      for (const char* options : {"UTU", "LNN"})
        for (const shape s : {shape{13, 5}, shape{3, 4}, shape{40, 33}})
          for (const char side : {'L', 'R'}) {
            SCOPED_TRACE(routine_name(r) + " " + side + options);
            const int64_t order = side == 'L' ? s.m : s.n;
            const std::vector<T> a(static_cast<size_t>(order * order), nan_value<T>());
            guarded_matrix<T> b(s.m, s.n, s.m + 2);
            fill_random(g, b);
            call(r, side, options[0], options[1], options[2], s.m, s.n, T(0), a.data(), order,
                 b.data(), b.ld());
            EXPECT_TRUE(b.intact());
            EXPECT_EQ(contents(b), std::vector<T>(static_cast<size_t>(s.m * s.n), T(0)));
          }
  });
}

// The character arguments are read without regard to case.
TEST_P(TriangularElementType, LowerCaseArgumentsGiveTheSameResult) {
  with_element_type(GetParam(), [&](auto tag) {
    using T = decltype(tag);
    std::mt19937_64 g(11);
    const int64_t m = nb + 9, n = 21;
    const std::vector<T> a = triangular_matrix<T>(g, 'U', 'N', n, n);
    for (const routine r : {routine::trmm, routine::trsm}) {
      guarded_matrix<T> upper_case(m, n, m), lower_case(m, n, m);
      fill_random(g, upper_case);
      for (int64_t j = 0; j < n; ++j)
        for (int64_t i = 0; i < m; ++i) lower_case(i, j) = upper_case(i, j);
      call(r, 'R', 'U', 'C', 'N', m, n, general_scalar<T>(), a.data(), n, upper_case.data(), m);
      call(r, 'r', 'u', 'c', 'n', m, n, general_scalar<T>(), a.data(), n, lower_case.data(), m);
      EXPECT_EQ(contents(upper_case), contents(lower_case)) << routine_name(r);
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Level3, TriangularElementType, all_elements(),
                         [](const auto& info) { return element_name(info.param); });

// ---- rank updates ----------------------------------------------------------------------------

constexpr int64_t step = tav::blas::rank_update_blocking::step;

enum class update { syrk, herk, syr2k, her2k };

struct rank_case {
  update r;
  element type;
  char uplo, trans;
};

std::string update_name(update r) {
  static const char* const names[] = {"syrk", "herk", "syr2k", "her2k"};
  return names[static_cast<int>(r)];
}

std::ostream& operator<<(std::ostream& os, const rank_case& c) {
  return os << update_name(c.r) << "_" << element_name(c.type) << "_" << c.uplo << c.trans;
}

// Every routine with the types and transposes it takes: the real symmetric updates accept 'C'
// as 'T'; the complex symmetric ones 'N' and 'T'; the Hermitian ones 'N' and 'C'.
std::vector<rank_case> all_cases() {
  std::vector<rank_case> cases;
  for (update r : {update::syrk, update::herk, update::syr2k, update::her2k}) {
    const bool hermitian = r == update::herk || r == update::her2k;
    for (element e : {element::s, element::d, element::c, element::z}) {
      const bool complex = e == element::c || e == element::z;
      if (hermitian && !complex) continue;
      std::string transposes = hermitian ? "NC" : complex ? "NT" : "NTC";
      for (char uplo : {'U', 'L'}) {
        for (char trans : transposes) cases.push_back({r, e, uplo, trans});
      }
    }
  }
  return cases;
}

struct update_shape {
  int64_t n, k;
};

// Orders on both sides of one and two panel steps, k = 0 and 1, a deep sum, and an update
// large enough to be split over threads.
const update_shape update_shapes[] = {
    {0, 3},       {3, 0},         {1, 1},        {5, 1},        {step - 1, 7},
    {step, 3},    {step + 1, 9},  {2 * step + 5, 17}, {300, 48}, {17, 2 * step}};

template <class T>
void run_routine(const rank_case& c, int64_t n, int64_t k, T alpha, T beta, const T* a, int64_t lda,
                 const T* b, int64_t ldb, T* out, int64_t ldc) {
  if constexpr (tav::is_complex_v<T>) {
    if (c.r == update::herk)
      return tav::blas::herk<T>(c.uplo, c.trans, n, k, alpha.real(), a, lda, beta.real(), out, ldc);
    if (c.r == update::her2k)
      return tav::blas::her2k<T>(c.uplo, c.trans, n, k, alpha, a, lda, b, ldb, beta.real(), out,
                                 ldc);
  }
  if (c.r == update::syrk) tav::blas::syrk<T>(c.uplo, c.trans, n, k, alpha, a, lda, beta, out, ldc);
  else tav::blas::syr2k<T>(c.uplo, c.trans, n, k, alpha, a, lda, b, ldb, beta, out, ldc);
}

// The same update through reference_rank_update: op(X)·op(Y) terms {alpha, X, Y}.
template <class T>
std::vector<long double> run_reference(const rank_case& c, int64_t n, int64_t k, T alpha, T beta,
                                       const T* a, int64_t lda, const T* b, int64_t ldb, T* out) {
  const bool hermitian = c.r == update::herk || c.r == update::her2k;
  // The Hermitian updates take real alpha (herk) and real beta: the real parts are used.
  if (hermitian) beta = T(std::real(beta));
  if (c.r == update::herk) alpha = T(std::real(alpha));
  const bool two = c.r == update::syr2k || c.r == update::her2k;
  std::vector<std::tuple<T, const T*, int64_t, const T*, int64_t>> terms{
      {alpha, a, lda, two ? b : a, two ? ldb : lda}};
  if (two) terms.emplace_back(conj_if(alpha, hermitian), b, ldb, a, lda);
  return reference_rank_update<T>(c.uplo, c.trans, hermitian ? 'C' : 'T', n, k, terms, beta, out,
                                  n);
}

template <class T>
void check_update(const rank_case& c, update_shape s, T alpha, T beta, uint64_t seed) {
  SCOPED_TRACE(testing::Message() << "n=" << s.n << " k=" << s.k << " alpha=" << alpha
                                  << " beta=" << beta);
  std::mt19937_64 g(seed);
  const bool plain = c.trans == 'N';
  const int64_t rows = plain ? s.n : s.k, cols = plain ? s.k : s.n;
  const int64_t lda = rows + 2, ldb = rows + 5;
  std::vector<T> a(static_cast<size_t>(lda * (cols > 0 ? cols : 1)), nan_value<T>());
  std::vector<T> b(static_cast<size_t>(ldb * (cols > 0 ? cols : 1)), nan_value<T>());
  fill_random(g, rows, cols, a.data(), lda);
  fill_random(g, rows, cols, b.data(), ldb);
  guarded_matrix<T> out(s.n, s.n, s.n + 3);
  fill_random(g, out);
  const bool upper = c.uplo == 'U';
  // beta = 0 must not read the referenced triangle: NaN there would show.
  if (beta == T(0)) {
    for (int64_t j = 0; j < s.n; ++j) {
      for (int64_t i = upper ? 0 : j; i < (upper ? j + 1 : s.n); ++i) out(i, j) = nan_value<T>();
    }
  }
  const std::vector<T> before = contents(out);
  std::vector<T> want = before;
  const std::vector<long double> bound =
      run_reference<T>(c, s.n, s.k, alpha, beta, a.data(), lda, b.data(), ldb, want.data());
  run_routine<T>(c, s.n, s.k, alpha, beta, a.data(), lda, b.data(), ldb, out.data(), out.ld());
  EXPECT_TRUE(out.intact());
  const int64_t terms = c.r == update::syr2k || c.r == update::her2k ? 2 : 1;
  EXPECT_LT(gemm_error_ratio(s.n, s.n, terms * s.k, out.data(), out.ld(), want.data(), bound),
            2.0L);
  for (int64_t j = 0; j < s.n; ++j) {
    for (int64_t i = upper ? j + 1 : 0; i < (upper ? s.n : j); ++i) {
      EXPECT_EQ(std::memcmp(&out(i, j), &before[static_cast<size_t>(i + j * s.n)], sizeof(T)), 0)
          << "untouched triangle changed at " << i << "," << j;
    }
  }
}

class RankUpdate : public testing::TestWithParam<rank_case> {};

TEST_P(RankUpdate, MatchesReferenceAndKeepsTheOtherTriangle) {
  const rank_case c = GetParam();
  with_element_type(c.type, [&](auto tag) {
    using T = decltype(tag);
    // The Hermitian updates take real alpha (herk) and real beta: the real parts are used.
    const T general = general_scalar<T>();
    const T scalars[] = {T(0), T(1), general};
    uint64_t seed = 300;
    for (const update_shape& s : update_shapes) {
      for (const T alpha : {T(0), general}) {
        for (const T beta : scalars) check_update<T>(c, s, alpha, beta, ++seed);
      }
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Level3, RankUpdate, testing::ValuesIn(all_cases()),
                         [](const testing::TestParamInfo<rank_case>& info) {
                           std::ostringstream name;
                           name << info.param;
                           return name.str();
                         });

}  // namespace
