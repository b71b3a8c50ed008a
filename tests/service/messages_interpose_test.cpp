// A program that defines its own xerbla_ takes over every report that reaches the chain above it:
// those of the Fortran-style and CBLAS routines, with their parameter numbers, instead of the
// library's printed message.
#include <gtest/gtest.h>
#include <tav/tav.h>
#include <tav/tav_error.h>

#include <cstdio>
#include <string>

#include "child_process.hpp"

namespace {

// One line per call that reached the application's xerbla_.
std::string received;

}  // namespace

// The Fortran convention: the name's length comes last and the name is not terminated.
extern "C" void xerbla_(const char* name, const int* info, int name_length) {
  received +=
      std::string(name, static_cast<size_t>(name_length)) + " " + std::to_string(*info) + "\n";
}

namespace {

using tav::test::run_child;

struct link {
  const char* label;
  tav_xerbla_handler entry;
};

class Upstream : public testing::TestWithParam<link> {};

TEST_P(Upstream, ReachesApplication) {
  received.clear();
  int info = -2;
  GetParam().entry("DGETRF  ", &info, 6);
  EXPECT_EQ(received, "DGETRF -2\n");
}

INSTANTIATE_TEST_SUITE_P(Chain, Upstream,
                         testing::Values(link{"cdecl_xerbla", cdecl_xerbla},
                                         link{"xerbla", xerbla}),
                         [](const auto& info) { return std::string(info.param.label); });

TAV_SCENARIO(downstream_link) {
  int info = 2;
  XERBLA_("DPOTRF", &info, 6);
  std::printf("%s", received.c_str());
}

TEST(Chain, DownstreamStaysTheLibrarys) {
  auto r = run_child("downstream_link");
  EXPECT_EQ(r.out, "\nOrvat TAV ERROR: Parameter 2 was incorrect on entry to DPOTRF.\n");
}

// tav_serv_xerbla reaches the chain through the installed cdecl_xerbla, as cblas_xerbla and the
// BLAS wrappers install it; with the slot empty it calls the default handler itself.
TAV_SCENARIO(reports_through_slot) {
  int info = 3;
  tav_serv_xerbla("DGEMM ", &info, 6);
  cblas_xerbla("cblas_dgemm", 4);
  tav_serv_xerbla("DGEMM ", &info, 6);
  tav_serv_check_ptr(nullptr, "vdAdd");
  std::printf("%s", received.c_str());
}

TEST(Chain, ReportsReachApplicationOnceCdeclInstalled) {
  auto r = run_child("reports_through_slot");
  EXPECT_EQ(r.out,
            "\nOrvat TAV ERROR: Parameter 3 was incorrect on entry to DGEMM .\n"
            "cblas_dgemm 4\nDGEMM  3\nvdAdd 1089\n");
}

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

TEST(OwnXerbla, ReceivesEveryBlasReport) {
  received.clear();
  call_bad_routines();
  EXPECT_EQ(received, "DGEMM  8\nCTRSM  5\ncblas_dgemm 14\n");
}

TAV_SCENARIO(bad_calls) { call_bad_routines(); }

// The library's default handler sits behind xerbla_ in the chain, so nothing is printed.
TEST(OwnXerbla, ReplacesThePrintedMessage) {
  auto child = run_child("bad_calls");
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "");
}

}  // namespace
