// A program written for another CBLAS library, defining cblas_xerbla with a signature of its
// own, still gets the library's printed reports (never a call of its function) and right results.

// Only the CBLAS header: the library's own declaration of cblas_xerbla would clash with this one.
#include <tav/tav_cblas.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "child_process.hpp"

namespace {
int foreign_calls = 0;
}

extern "C" void cblas_xerbla(int p, const char* rout, const char* form, ...) {
  ++foreign_calls;
  std::printf("foreign cblas_xerbla %d %s\n", p, rout != nullptr ? rout : "(null)");
}

namespace {

using tav::test::run_child;

TAV_SCENARIO(bad_cblas_calls) {
  double a[4] = {}, b[4] = {}, c[4] = {};
  cblas_dgemm(TAV_CBLAS_ROW_MAJOR, TAV_CBLAS_NO_TRANS, TAV_CBLAS_NO_TRANS, 3, 2, 5, 1.0, a, 4, b,
              2, 0.0, c, 2);
  tav_complex16 z[4] = {}, alpha = {1, 0};
  cblas_ztrsm(TAV_CBLAS_COL_MAJOR, TAV_CBLAS_LEFT, 0, TAV_CBLAS_NO_TRANS, TAV_CBLAS_UNIT, 2, 2,
              &alpha, z, 2, z, 2);
  std::printf("foreign calls: %d\n", foreign_calls);
}

TEST(ForeignCblasXerbla, LibraryReportsThroughItsOwnChain) {
  auto child = run_child("bad_cblas_calls");
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out,
            "\nOrvat TAV ERROR: Parameter 9 was incorrect on entry to cblas_dgemm.\n"
            "\nOrvat TAV ERROR: Parameter 3 was incorrect on entry to cblas_ztrsm.\n"
            "foreign calls: 0\n");
}

TEST(ForeignCblasXerbla, ValidCallsCompute) {
  // C (2 x 2, row major) = A (2 x 3) · B (3 x 2).
  const double a[6] = {1, 2, 3, 4, 5, 6}, b[6] = {7, 8, 9, 10, 11, 12};
  double c[4] = {-1, -1, -1, -1};
  cblas_dgemm(TAV_CBLAS_ROW_MAJOR, TAV_CBLAS_NO_TRANS, TAV_CBLAS_NO_TRANS, 2, 2, 3, 1.0, a, 3, b,
              2, 0.0, c, 2);
  EXPECT_EQ(std::vector<double>(c, c + 4), (std::vector<double>{58, 64, 139, 154}));
  // Solve U·x = b for the row-major upper triangle U = [2 1; 0 4].
  const double u[4] = {2, 1, 0, 4};
  double x[2] = {4, 8};
  cblas_dtrsm(TAV_CBLAS_ROW_MAJOR, TAV_CBLAS_LEFT, TAV_CBLAS_UPPER, TAV_CBLAS_NO_TRANS,
              TAV_CBLAS_NON_UNIT, 2, 1, 1.0, u, 2, x, 1);
  EXPECT_EQ(x[0], 1.0);
  EXPECT_EQ(x[1], 2.0);
  EXPECT_EQ(foreign_calls, 0);
}

}  // namespace
