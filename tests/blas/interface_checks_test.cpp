// Bad arguments of ?GEMM, ?TRSM, cblas_?gemm and cblas_?trsm in the four precisions, one table
// per routine (position, bad value) driven by one test that compares a child's output byte for
// byte, plus lower-case options and LSAME.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "child_process.hpp"
#include "interface_routines.hpp"

namespace {

using namespace tav::test;

struct gemm_args {
  char transa = 'T', transb = 'N';
  int m = 3, n = 4, k = 5, lda = 5, ldb = 5, ldc = 3;
};
struct trsm_args {
  char side = 'R', uplo = 'U', transa = 'N', diag = 'N';
  int m = 3, n = 4, lda = 4, ldb = 3;
};
// Valid in both layouts; the bad leading dimensions differ by layout.
struct cblas_gemm_args {
  int layout, transa = TAV_CBLAS_NO_TRANS, transb = TAV_CBLAS_TRANS;
  int m = 3, n = 4, k = 5, lda = 5, ldb = 5, ldc = 4;
};
struct cblas_trsm_args {
  int layout, side = TAV_CBLAS_RIGHT, uplo = TAV_CBLAS_UPPER, transa = TAV_CBLAS_NO_TRANS,
      diag = TAV_CBLAS_NON_UNIT;
  int m = 3, n = 4, lda = 4, ldb = 4;
};

template <class Args>
struct bad_value {
  int position;
  void (*spoil)(Args&);
};

bool row_major(int layout) { return layout == TAV_CBLAS_ROW_MAJOR; }

const std::vector<bad_value<gemm_args>> gemm_table = {
    {1, [](gemm_args& g) { g.transa = 'X'; }},
    {2, [](gemm_args& g) { g.transb = 'Y'; }},
    {3, [](gemm_args& g) { g.m = -1; }},
    {4, [](gemm_args& g) { g.n = -1; }},
    {5, [](gemm_args& g) { g.k = -1; }},
    {8, [](gemm_args& g) { g.lda = 4; }},  // A is k x m for transa 'T'
    {10, [](gemm_args& g) { g.ldb = 4; }},
    {13, [](gemm_args& g) { g.ldc = 2; }},
};

const std::vector<bad_value<trsm_args>> trsm_table = {
    {1, [](trsm_args& t) { t.side = 'X'; }},
    {2, [](trsm_args& t) { t.uplo = 'X'; }},
    {3, [](trsm_args& t) { t.transa = 'X'; }},
    {4, [](trsm_args& t) { t.diag = 'X'; }},
    {5, [](trsm_args& t) { t.m = -1; }},
    {6, [](trsm_args& t) { t.n = -1; }},
    {9, [](trsm_args& t) { t.lda = 3; }},  // side 'R': lda = max(1, m) < n
    {11, [](trsm_args& t) { t.ldb = 2; }},
};

const std::vector<bad_value<cblas_gemm_args>> cblas_gemm_table = {
    {2, [](cblas_gemm_args& g) { g.transa = 110; }},
    {3, [](cblas_gemm_args& g) { g.transb = 114; }},
    {4, [](cblas_gemm_args& g) { g.m = -1; }},  // with layout 0 below: the dimension wins
    {5, [](cblas_gemm_args& g) { g.n = -1; }},
    {6, [](cblas_gemm_args& g) { g.k = -1; }},
    {1, [](cblas_gemm_args& g) { g.layout = 0; }},
    // Row major with transa 111, m 3, k 5: lda 4 is below k.
    {9, [](cblas_gemm_args& g) { g.lda = row_major(g.layout) ? 4 : 2; }},
    {11, [](cblas_gemm_args& g) { g.ldb = row_major(g.layout) ? 4 : 3; }},
    {14, [](cblas_gemm_args& g) { g.ldc = row_major(g.layout) ? 3 : 2; }},
};

const std::vector<bad_value<cblas_trsm_args>> cblas_trsm_table = {
    {2, [](cblas_trsm_args& t) { t.side = 140; }},
    {3, [](cblas_trsm_args& t) { t.uplo = 120; }},
    {4, [](cblas_trsm_args& t) { t.transa = 110; }},
    {5, [](cblas_trsm_args& t) { t.diag = 130; }},
    {6, [](cblas_trsm_args& t) { t.m = -1; }},
    {7, [](cblas_trsm_args& t) { t.n = -1; }},
    {1, [](cblas_trsm_args& t) { t.layout = 0; }},
    {10, [](cblas_trsm_args& t) { t.lda = 3; }},
    {12, [](cblas_trsm_args& t) { t.ldb = row_major(t.layout) ? 3 : 2; }},
};

enum routine_kind { fortran_gemm, fortran_trsm, cblas_gemm, cblas_trsm };

// The arguments of case `row`: the base call with that row's and every later row's bad value,
// so that the reported position also shows the checks running in the promised order.
template <class Args>
Args spoiled(const std::vector<bad_value<Args>>& table, size_t row, Args base) {
  for (size_t i = row; i < table.size(); ++i) table[i].spoil(base);
  return base;
}

// Calls the routine of case `row` on patterned buffers and prints whether the output kept
// every bit.
template <class C>
void call_bad_case(routine_kind kind, size_t row, int layout) {
  using R = routines<C>;
  const std::vector<C> a = small_integers<C>(64, 1), b0 = small_integers<C>(64, 2),
                       c0 = small_integers<C>(64, 3);
  std::vector<C> b = b0, c = c0;
  const C alpha = make<C>(2, 1), beta = make<C>(-1, 0);
  switch (kind) {
    case fortran_gemm: {
      gemm_args g = spoiled(gemm_table, row, gemm_args{});
      R::gemm(&g.transa, &g.transb, &g.m, &g.n, &g.k, &alpha, a.data(), &g.lda, b.data(), &g.ldb,
              &beta, c.data(), &g.ldc);
      break;
    }
    case fortran_trsm: {
      trsm_args t = spoiled(trsm_table, row, trsm_args{});
      R::trsm(&t.side, &t.uplo, &t.transa, &t.diag, &t.m, &t.n, &alpha, a.data(), &t.lda,
              b.data(), &t.ldb);
      break;
    }
    case cblas_gemm: {
      cblas_gemm_args g = spoiled(cblas_gemm_table, row, cblas_gemm_args{layout});
      R::cblas_gemm(g.layout, g.transa, g.transb, g.m, g.n, g.k, cblas_scalar(alpha), a.data(),
                    g.lda, b.data(), g.ldb, cblas_scalar(beta), c.data(), g.ldc);
      break;
    }
    case cblas_trsm: {
      cblas_trsm_args t = spoiled(cblas_trsm_table, row, cblas_trsm_args{layout});
      R::cblas_trsm(t.layout, t.side, t.uplo, t.transa, t.diag, t.m, t.n, cblas_scalar(alpha),
                    a.data(), t.lda, b.data(), t.ldb);
      break;
    }
  }
  std::printf("%s\n", same_bits(b, b0) && same_bits(c, c0) ? "untouched" : "CHANGED");
}

// Arguments: kind, precision letter, row, layout.
TAV_SCENARIO(bad_case) {
  const auto& args = scenario_args();
  const auto kind = static_cast<routine_kind>(std::stoi(args[0]));
  const size_t row = std::stoul(args[2]);
  const int layout = std::stoi(args[3]);
  switch (args[1][0]) {
    case 'S': call_bad_case<float>(kind, row, layout); break;
    case 'D': call_bad_case<double>(kind, row, layout); break;
    case 'C': call_bad_case<tav_complex8>(kind, row, layout); break;
    case 'Z': call_bad_case<tav_complex16>(kind, row, layout); break;
  }
}

struct error_case {
  routine_kind kind;
  char precision;
  size_t row;
  int layout;
  int position;
};

std::string routine_name(const error_case& c) {
  const char lower = static_cast<char>(c.precision - 'A' + 'a');
  switch (c.kind) {
    case fortran_gemm: return std::string(1, c.precision) + "GEMM ";
    case fortran_trsm: return std::string(1, c.precision) + "TRSM ";
    case cblas_gemm: return std::string("cblas_") + lower + "gemm";
    case cblas_trsm: return std::string("cblas_") + lower + "trsm";
  }
  return {};
}

std::vector<error_case> all_cases() {
  std::vector<error_case> cases;
  for (char p : {'S', 'D', 'C', 'Z'}) {
    auto add = [&](routine_kind kind, const auto& table, std::initializer_list<int> layouts) {
      for (size_t row = 0; row < table.size(); ++row)
        for (int layout : layouts) cases.push_back({kind, p, row, layout, table[row].position});
    };
    add(fortran_gemm, gemm_table, {TAV_CBLAS_COL_MAJOR});
    add(fortran_trsm, trsm_table, {TAV_CBLAS_COL_MAJOR});
    add(cblas_gemm, cblas_gemm_table, {TAV_CBLAS_COL_MAJOR, TAV_CBLAS_ROW_MAJOR});
    add(cblas_trsm, cblas_trsm_table, {TAV_CBLAS_COL_MAJOR, TAV_CBLAS_ROW_MAJOR});
  }
  return cases;
}

class BadArgument : public testing::TestWithParam<error_case> {};

TEST_P(BadArgument, ReportsFirstBadPositionAndLeavesOutputs) {
  const error_case& c = GetParam();
  auto child = run_child("bad_case", {},
                         {std::to_string(c.kind), std::string(1, c.precision),
                          std::to_string(c.row), std::to_string(c.layout)});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "\nOrvat TAV ERROR: Parameter " + std::to_string(c.position) +
                           " was incorrect on entry to " + routine_name(c) + ".\nuntouched\n");
}

INSTANTIATE_TEST_SUITE_P(Tables, BadArgument, testing::ValuesIn(all_cases()),
                         [](const testing::TestParamInfo<error_case>& info) {
                           const error_case& c = info.param;
                           std::string name = routine_name(c);
                           if (name.back() == ' ') name.pop_back();
                           return name + (c.layout == TAV_CBLAS_ROW_MAJOR ? "_row" : "") +
                                  "_case" + std::to_string(c.row) + "_param" +
                                  std::to_string(c.position);
                         });

// Lower-case option letters are the same options: no report, and the same result bits.
template <class C>
void lower_case_matches_upper_case() {
  using R = routines<C>;
  const int m = 3, n = 4, k = 5, ld = 6;
  const std::vector<C> a = small_integers<C>(64, 4), b0 = small_integers<C>(64, 5);
  const C alpha = make<C>(2, -1), beta = make<C>(1, 1);
  std::vector<C> upper = b0, lower = b0, tri_upper = b0, tri_lower = b0;
  R::gemm("N", "T", &m, &n, &k, &alpha, a.data(), &ld, a.data() + 1, &ld, &beta, upper.data(), &ld);
  R::gemm("n", "t", &m, &n, &k, &alpha, a.data(), &ld, a.data() + 1, &ld, &beta, lower.data(), &ld);
  const std::vector<C> t = triangular<C>(n, ld, true, 6);
  R::trsm("R", "U", "C", "N", &m, &n, &alpha, t.data(), &ld, tri_upper.data(), &ld);
  R::trsm("r", "u", "c", "n", &m, &n, &alpha, t.data(), &ld, tri_lower.data(), &ld);
  std::printf("%s\n", same_bits(upper, lower) && same_bits(tri_upper, tri_lower) &&
                              !same_bits(upper, b0) && !same_bits(tri_upper, b0)
                          ? "same"
                          : "DIFFERENT");
}

TAV_SCENARIO(lower_case_options) {
  lower_case_matches_upper_case<float>();
  lower_case_matches_upper_case<double>();
  lower_case_matches_upper_case<tav_complex8>();
  lower_case_matches_upper_case<tav_complex16>();
}

TEST(OptionLetters, LowerCaseIsAcceptedSilently) {
  auto child = run_child("lower_case_options");
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "same\nsame\nsame\nsame\n");
}

TEST(Lsame, FoldsOnlyAsciiLettersAndRefusesNull) {
  EXPECT_EQ(LSAME("a", "A"), 1);
  EXPECT_EQ(lsame("Z", "z"), 1);
  EXPECT_EQ(lsame_("n", "n"), 1);
  EXPECT_EQ(tav_lapack__lsame_("Nx", "ny"), 1);  // only the first character counts
  EXPECT_EQ(LSAME("a", "B"), 0);
  EXPECT_EQ(LSAME("[", "{"), 0);  // 0x20 apart, but not letters
  EXPECT_EQ(LSAME("@", "`"), 0);
  EXPECT_EQ(LSAME(nullptr, "A"), 0);
  EXPECT_EQ(LSAME("A", nullptr), 0);
}

}  // namespace
