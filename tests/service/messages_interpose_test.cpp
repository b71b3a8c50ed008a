// A program that defines its own xerbla_ takes over every report that reaches the chain above it.
#include <gtest/gtest.h>
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

}  // namespace
