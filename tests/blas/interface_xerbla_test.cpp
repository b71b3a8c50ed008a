// A program that defines its own xerbla_ (Fortran convention, name length last) receives the
// reports of the Fortran-style and CBLAS routines instead of the library's printed message.
#include <tav/tav.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "child_process.hpp"

namespace {

struct report {
  std::string name;
  int info;
  int length;
};

std::vector<report>& received() {
  static std::vector<report> reports;
  return reports;
}

}  // namespace

extern "C" void xerbla_(const char* name, const int* info, int name_length) {
  received().push_back({std::string(name, static_cast<size_t>(name_length)), *info, name_length});
}

namespace {

using tav::test::run_child;

void call_bad_routines() {
  const int two = 2, one = 1, minus = -1;
  double a[4] = {}, b[4] = {}, c[4] = {};
  const double alpha = 1, beta = 0;
  DGEMM("N", "N", &two, &two, &two, &alpha, a, &one, b, &two, &beta, c, &two);
  tav_complex8 ca[4] = {}, calpha = {1, 0};
  ctrsm("L", "U", "N", "N", &minus, &two, &calpha, ca, &two, ca, &two);
  cblas_dgemm(TAV_CBLAS_COL_MAJOR, TAV_CBLAS_NO_TRANS, TAV_CBLAS_NO_TRANS, 2, 2, 2, 1.0, a, 2, b,
              2, 0.0, c, 1);
}

TEST(OwnXerbla, ReceivesEveryReport) {
  received().clear();
  call_bad_routines();
  ASSERT_EQ(received().size(), 3u);
  EXPECT_EQ(received()[0].name, "DGEMM ");
  EXPECT_EQ(received()[0].info, 8);
  EXPECT_EQ(received()[1].name, "CTRSM ");
  EXPECT_EQ(received()[1].info, 5);
  EXPECT_EQ(received()[2].name, "cblas_dgemm");
  EXPECT_EQ(received()[2].info, 14);
  EXPECT_EQ(received()[2].length, 11);
}

TAV_SCENARIO(bad_calls) { call_bad_routines(); }

// The library's default handler sits behind xerbla_ in the chain, so nothing is printed.
TEST(OwnXerbla, ReplacesThePrintedMessage) {
  auto child = run_child("bad_calls");
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "");
}

}  // namespace
