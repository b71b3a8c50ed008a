// The symmetric and Hermitian rank-k and rank-2k updates (syrk, herk, syr2k, her2k) against the
// long-double reference for both triangles and every transpose each routine takes, at sizes
// around the panel step, with alpha and beta of 0, 1 and general values. The triangle that is
// not referenced must stay bit for bit, and beta = 0 must not read C.
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <sstream>
#include <string>

#include "blas/blas_internal.hpp"
#include "blas/level3/syrk_triangle_update.hpp"
#include "guarded_buffer.hpp"
#include "level3_test_data.hpp"
#include "reference_level3_ext.hpp"

namespace {

using namespace tav::test;

constexpr int64_t step = tav::blas::rank_update_blocking::step;

enum class routine { syrk, herk, syr2k, her2k };

struct rank_case {
  routine r;
  element type;
  char uplo, trans;
};

std::string routine_name(routine r) {
  switch (r) {
    case routine::syrk:
      return "syrk";
    case routine::herk:
      return "herk";
    case routine::syr2k:
      return "syr2k";
    default:
      return "her2k";
  }
}

std::ostream& operator<<(std::ostream& os, const rank_case& c) {
  return os << routine_name(c.r) << "_" << element_name(c.type) << "_" << c.uplo << c.trans;
}

// Every routine with the types and transposes it takes: the real symmetric updates accept 'C'
// as 'T'; the complex symmetric ones 'N' and 'T'; the Hermitian ones 'N' and 'C'.
std::vector<rank_case> all_cases() {
  std::vector<rank_case> cases;
  for (routine r : {routine::syrk, routine::herk, routine::syr2k, routine::her2k}) {
    const bool hermitian = r == routine::herk || r == routine::her2k;
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

struct shape {
  int64_t n, k;
};

// Orders on both sides of one and two panel steps, k = 0 and 1, a deep sum, and an update
// large enough to be split over threads.
const shape shapes[] = {{0, 3},        {3, 0},        {1, 1},        {5, 1},
                        {step - 1, 7}, {step, 3},     {step + 1, 9}, {2 * step + 5, 17},
                        {300, 48},     {17, 2 * step}};

template <class T>
void run_routine(const rank_case& c, int64_t n, int64_t k, T alpha, T beta, const T* a, int64_t lda,
                 const T* b, int64_t ldb, T* out, int64_t ldc, std::vector<long double>* bound,
                 bool reference) {
  if constexpr (tav::is_complex_v<T>) {
    const tav::real_t<T> ra = alpha.real(), rb = beta.real();
    if (c.r == routine::herk) {
      if (reference)
        *bound = reference_herk(c.uplo, c.trans, n, k, ra, a, lda, rb, out, ldc);
      else
        tav::blas::herk<T>(c.uplo, c.trans, n, k, ra, a, lda, rb, out, ldc);
      return;
    }
    if (c.r == routine::her2k) {
      if (reference)
        *bound = reference_her2k(c.uplo, c.trans, n, k, alpha, a, lda, b, ldb, rb, out, ldc);
      else
        tav::blas::her2k<T>(c.uplo, c.trans, n, k, alpha, a, lda, b, ldb, rb, out, ldc);
      return;
    }
  }
  if (c.r == routine::syrk) {
    if (reference)
      *bound = reference_syrk(c.uplo, c.trans, n, k, alpha, a, lda, beta, out, ldc);
    else
      tav::blas::syrk<T>(c.uplo, c.trans, n, k, alpha, a, lda, beta, out, ldc);
  } else {
    if (reference)
      *bound = reference_syr2k(c.uplo, c.trans, n, k, alpha, a, lda, b, ldb, beta, out, ldc);
    else
      tav::blas::syr2k<T>(c.uplo, c.trans, n, k, alpha, a, lda, b, ldb, beta, out, ldc);
  }
}

template <class T>
void check_update(const rank_case& c, shape s, T alpha, T beta, uint64_t seed) {
  SCOPED_TRACE(testing::Message() << "n=" << s.n << " k=" << s.k << " alpha=" << alpha
                                  << " beta=" << beta);
  std::mt19937_64 g(seed);
  const bool plain = c.trans == 'N';
  const int64_t rows = plain ? s.n : s.k, cols = plain ? s.k : s.n;
  const int64_t lda = rows + 2, ldb = rows + 5;
  std::vector<T> a(static_cast<size_t>(lda * (cols > 0 ? cols : 1)), nan_element<T>());
  std::vector<T> b(static_cast<size_t>(ldb * (cols > 0 ? cols : 1)), nan_element<T>());
  fill_random(g, rows, cols, a.data(), lda);
  fill_random(g, rows, cols, b.data(), ldb);
  guarded_matrix<T> out(s.n, s.n, s.n + 3);
  fill_random(g, out);
  const bool upper = c.uplo == 'U';
  // beta = 0 must not read the referenced triangle: NaN there would show.
  if (beta == T(0)) {
    for (int64_t j = 0; j < s.n; ++j) {
      for (int64_t i = upper ? 0 : j; i < (upper ? j + 1 : s.n); ++i) out(i, j) = nan_element<T>();
    }
  }
  const std::vector<T> before = contents(out);
  std::vector<T> want = before;
  std::vector<long double> bound;
  run_routine<T>(c, s.n, s.k, alpha, beta, a.data(), lda, b.data(), ldb, want.data(), s.n, &bound,
                 true);
  run_routine<T>(c, s.n, s.k, alpha, beta, a.data(), lda, b.data(), ldb, out.data(), out.ld(),
                 nullptr, false);
  EXPECT_TRUE(out.intact());
  const int64_t terms = c.r == routine::syr2k || c.r == routine::her2k ? 2 : 1;
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
    for (const shape& s : shapes) {
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
