// Data errors through the public functions: division by zero reports VML_STATUS_SING and 0/0
// VML_STATUS_ERRDOM, and the mode word decides what else happens (status only, errno, the
// callback that may replace the result, the message on stderr, a trapping exception).
#include <gtest/gtest.h>
#include <tav/tav_vml.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "child_process.hpp"
#include "fresh_thread.hpp"

namespace {

using tav::test::in_fresh_thread;
using tav::test::run_child;

const double a[4] = {1, 2, 0, 4};
const double b[4] = {1, 0, 0, 2};

// With n = 4 the division by zero (element 1) comes before 0/0 (element 2): the last report wins.
TEST(VmlDataErrors, ModeDecidesStatusAndErrnoWhileIeeeResultsStay) {
  const struct {
    unsigned mode;  // 0: the default
    int n, status, error;
  } cases[] = {{0, 2, VML_STATUS_SING, 34},
               {0, 4, VML_STATUS_ERRDOM, 33},
               {VML_ERRMODE_NOERR, 4, VML_STATUS_OK, 0},
               {VML_ERRMODE_IGNORE, 2, VML_STATUS_SING, 0}};
  for (const auto& c : cases)
    in_fresh_thread([&c] {
      if (c.mode != 0) vmlSetMode(c.mode);
      double r[4];
      errno = 0;
      vdDiv(c.n, a, b, r);
      EXPECT_EQ(vmlGetErrStatus(), c.status) << std::hex << c.mode << " n=" << c.n;
      EXPECT_EQ(errno, c.error) << std::hex << c.mode << " n=" << c.n;
      EXPECT_EQ(r[0], 1.0);
      EXPECT_EQ(r[1], INFINITY);
      if (c.n == 4) {
        EXPECT_TRUE(std::isnan(r[2]));
        EXPECT_EQ(r[3], 2.0);
      }
    });
}

tav_vml_error_context seen;
int calls = 0;

int replace_result(tav_vml_error_context* context) {
  seen = *context;
  ++calls;
  context->r1 = -42;
  context->r1_im = 7;
  return 0;
}

int handle_fully(tav_vml_error_context* context) {
  ++calls;
  context->r1 = -42;
  return 1;
}

TEST(VmlCallback, ReturningZeroReplacesTheResultAndLetsErrnoAct) {
  in_fresh_thread([] {
    calls = 0;
    vmlSetErrorCallBack(replace_result);
    double r[4];
    errno = 0;
    vdDiv(2, a, b, r);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(r[1], -42.0);
    EXPECT_EQ(errno, 34);
    EXPECT_EQ(seen.code, VML_STATUS_SING);
    EXPECT_EQ(seen.index, 1);
    EXPECT_EQ(seen.a1, 2.0);
    EXPECT_EQ(seen.a2, 0.0);
    EXPECT_EQ(seen.r1, INFINITY);
    EXPECT_STREQ(seen.function_name, "vdDiv");
    EXPECT_EQ(seen.function_name_length, 5);
  });
}

TEST(VmlCallback, ReturningNonZeroEndsTheHandling) {
  in_fresh_thread([] {
    calls = 0;
    vmlSetErrorCallBack(handle_fully);
    double r[4];
    errno = 0;
    vdDiv(2, a, b, r);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(r[1], INFINITY);  // nothing written back
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_SING);
  });
}

TEST(VmlCallback, ComplexContextCarriesImaginaryParts) {
  in_fresh_thread([] {
    calls = 0;
    vmlSetErrorCallBack(replace_result);
    const tav_complex16 x[3] = {{1, 1}, {3, -2}, {1, 0}};
    const tav_complex16 y[3] = {{1, 0}, {0, 0}, {2, 0}};
    tav_complex16 r[3];
    vzDiv(3, x, y, r);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(seen.index, 1);
    EXPECT_EQ(seen.a1, 3.0);
    EXPECT_EQ(seen.a1_im, -2.0);
    EXPECT_STREQ(seen.function_name, "vzDiv");
    EXPECT_EQ(r[1].real, -42.0);
    EXPECT_EQ(r[1].imag, 7.0);
    EXPECT_EQ(r[2].real, 0.5);
  });
}

// In place the divisors are checked before they are overwritten; on long arrays (streamed
// stores, two threads) the index is the one in the whole array.
TEST(VmlCallback, ReportsZeroDivisorsInPlaceAndInLongArrays) {
  in_fresh_thread([] {
    calls = 0;
    vmlSetErrorCallBack(replace_result);
    std::vector<double> x(700, 3.0), y(700, 2.0);
    y[650] = 0;
    vdDiv(700, x.data(), y.data(), y.data());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(seen.index, 650);
    EXPECT_EQ(y[650], -42.0);
    EXPECT_EQ(y[649], 1.5);

    const int n = 3 << 20;  // 24 MiB per array
    std::vector<double> big_a(n, 1.0), big_b(n, 4.0), big_r(n);
    big_b[n - 5] = 0;
    vdDiv(n, big_a.data(), big_b.data(), big_r.data());
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(seen.index, n - 5);
    EXPECT_EQ(big_r[n - 5], -42.0);
    EXPECT_EQ(big_r[n - 6], 0.25);
    EXPECT_EQ(big_r[0], 0.25);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_SING);
  });
}

TAV_SCENARIO(stderr_message) {
  vmlSetMode(VML_ERRMODE_STDERR);
  double r[4];
  vdDiv(2, a, b, r);
  const float fa[1] = {0}, fb[1] = {0};
  float fr[1];
  vsDiv(1, fa, fb, fr);
}

TEST(VmlMessages, StderrModePrintsTheCatalogText) {
  auto child = run_child("stderr_message");
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.err,
            "Error (VML_STATUS_SING) in vdDiv: argument caused singularity.\n"
            "Error (VML_STATUS_ERRDOM) in vsDiv: argument is out of domain.\n");
  EXPECT_EQ(child.out, "");
}

TAV_SCENARIO(trapped_division) {
  vmlSetMode(VML_ERRMODE_EXCEPT | VML_TRAP_DIVBYZERO);
  double r[4];
  vdDiv(2, a, b, r);
}

// The trap bit unmasks the exception that the handler raises, so the process gets SIGFPE.
TEST(VmlExceptions, TrapBitMakesTheRaisedExceptionTrap) {
  // A sanitizer runtime would catch the signal itself and exit; the test wants it unhandled.
  auto child = run_child("trapped_division", {{"ASAN_OPTIONS", "handle_sigfpe=0"}});
  EXPECT_EQ(child.signal, SIGFPE) << child.err;
}

}  // namespace
