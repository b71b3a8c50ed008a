// Verbose lines of the BLAS entries in a child process with TAV_VERBOSE=1: call texts byte for
// byte (pointers masked), failed checks logged, CBLAS calls logged as the routine they reach.
#include <tav/tav.h>
#include <gtest/gtest.h>

#include <complex>
#include <regex>
#include <sstream>
#include <string>

#include "child_process.hpp"

namespace {

using namespace tav::test;

TAV_SCENARIO(verbose_calls) {
  const int two = 2, one = 1, zero = 0;
  double a[4] = {1, 2, 3, 4}, b[4] = {1, 0, 0, 1}, c[4] = {};
  const double alpha = 1, beta = 0;
  DGEMM("N", "T", &two, &two, &two, &alpha, a, &two, b, &two, &beta, c, &two);
  sgemm_("x", "N", &two, &two, &two, nullptr, nullptr, &two, nullptr, &two, nullptr, nullptr,
         &two);
  tav_complex16 za[4] = {{1, 0}, {0, 0}, {0, 0}, {1, 0}}, zb[4] = {}, zalpha = {1, 0};
  ztrsm_("L", "U", "C", "N", &two, &one, &zalpha, za, &two, zb, &two);
  DTRSM("R", "L", "N", "U", &two, &two, &alpha, a, &one, b, &two);  // lda below n
  daxpy(nullptr, &alpha, nullptr, nullptr, nullptr, nullptr);
  float s[2] = {1, 2};
  tav_blas__sdot(&two, s, &one, s, &one);
  tav_complex8 cscale = {2, 0}, cx[2] = {};
  CSCAL(&two, &cscale, cx, &one);
  cblas_ddot(2, a, 1, b, 1);
  tav_complex16 dot;
  cblas_zdotu_sub(2, za, 1, za, 1, &dot);  // no Fortran-style layer, no line
  cblas_dgemm(TAV_CBLAS_ROW_MAJOR, TAV_CBLAS_NO_TRANS, TAV_CBLAS_TRANS, 2, 1, 2, 1.0, a, 2, b, 2,
              0.0, c, 1);
  cblas_dgemm(0, TAV_CBLAS_NO_TRANS, TAV_CBLAS_NO_TRANS, 2, 2, 2, 1.0, a, 2, b, 2, 0.0, c, 2);
  // The switch is read by the first call and kept: turning it off now changes nothing here.
  tav_serv_verbose(0);
  dscal(&zero, &alpha, a, &one);
}

// Masks the pointers of a verbose line and checks what follows the call text: the elapsed time
// in one of its four units, then the settings, which this test does not pin down.
std::string masked(const std::string& line) {
  static const std::regex suffix(
      R"( [0-9]+(\.[0-9]{2})?(s|ms|us|ns) CNR:\S+ Dyn:\d FastMM:\d TID:0 .*)");
  static const std::regex pointer(R"(0x[0-9a-f]+|\(nil\))");
  std::smatch m;
  if (!std::regex_search(line, m, suffix)) return "BAD SUFFIX: " + line;
  return std::regex_replace(m.prefix().str(), pointer, "P");
}

TEST(Verbose, LinesCarryTheCallsArguments) {
  auto child = run_child("verbose_calls", {{"TAV_VERBOSE", "1"}});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  // Before masking: pointers print in hexadecimal, null ones as (nil).
  EXPECT_NE(child.out.find("TAV_VERBOSE DAXPY(0,0x"), std::string::npos);
  EXPECT_NE(child.out.find(",(nil),0,(nil),0) "), std::string::npos) << child.out;
  std::istringstream lines(child.out);
  std::string line, seen;
  std::getline(lines, line);
  EXPECT_EQ(line.rfind("TAV_VERBOSE Orvat(R) TAV ", 0), 0u) << line;
  while (std::getline(lines, line))
    seen += line.rfind("TAV_VERBOSE ", 0) == 0 ? masked(line) + "\n" : line + "\n";
  EXPECT_EQ(seen,
            "TAV_VERBOSE DGEMM(N,T,2,2,2,P,P,2,P,2,P,P,2)\n"
            "\n"
            "Orvat TAV ERROR: Parameter 1 was incorrect on entry to SGEMM .\n"
            "TAV_VERBOSE SGEMM(x,N,2,2,2,P,P,2,P,2,P,P,2)\n"
            "TAV_VERBOSE ZTRSM(L,U,C,N,2,1,P,P,2,P,2)\n"
            "\n"
            "Orvat TAV ERROR: Parameter 9 was incorrect on entry to DTRSM .\n"
            "TAV_VERBOSE DTRSM(R,L,N,U,2,2,P,P,1,P,2)\n"
            "TAV_VERBOSE DAXPY(0,P,P,0,P,0)\n"
            "TAV_VERBOSE SDOT(2,P,1,P,1)\n"
            "TAV_VERBOSE CSCAL(2,P,P,1)\n"
            "TAV_VERBOSE DDOT(2,P,1,P,1)\n"
            "TAV_VERBOSE DGEMM(T,N,1,2,2,P,P,2,P,2,P,P,1)\n"
            "\n"
            "Orvat TAV ERROR: Parameter 1 was incorrect on entry to cblas_dgemm.\n"
            "TAV_VERBOSE DSCAL(0,P,P,1)\n");
}

TAV_SCENARIO(quiet_call) {
  const int one = 1;
  double x = 1;
  DSCAL(&one, &x, &x, &one);
}

TEST(Verbose, OffPrintsNothing) {
  for (const char* value : {"0", "2"}) {
    auto child = run_child("quiet_call", {{"TAV_VERBOSE", value}});
    EXPECT_EQ(child.exit_code, 0);
    EXPECT_EQ(child.out, "") << value;
  }
}

}  // namespace
