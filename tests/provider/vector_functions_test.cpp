// The provider's vector functions: each forwards to its vector-math function with the arrays
// unchanged, n = 0 touches nothing, and the vector-math mode and status of the calling thread
// apply (set_vml_mode, vmlGetErrStatus).
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <cmath>
#include <complex>
#include <thread>

#include "fresh_thread.hpp"

namespace {

using tav::test::in_fresh_thread;

const double a[3] = {1.5, -2, 0.75}, b[3] = {2, 0.5, 3};

TEST(ProviderVectorFunctions, RealResultsAreTheElementOperations) {
  double r[3];
  d_vector_add(3, a, b, r);
  EXPECT_EQ(r[1], -1.5);
  d_vector_subtract(3, a, b, r);
  EXPECT_EQ(r[2], -2.25);
  d_vector_multiply(3, a, b, r);
  EXPECT_EQ(r[0], 3.0);
  d_vector_divide(3, a, b, r);
  EXPECT_EQ(r[1], -4.0);
  d_vector_power(3, a, b, r);
  EXPECT_DOUBLE_EQ(r[0], 2.25);
  EXPECT_DOUBLE_EQ(r[2], 0.421875);

  const float fa[2] = {3, 5}, fb[2] = {4, 0.5f};
  float fr[2];
  s_vector_add(2, fa, fb, fr);
  EXPECT_EQ(fr[0], 7.0f);
  s_vector_subtract(2, fa, fb, fr);
  EXPECT_EQ(fr[1], 4.5f);
  s_vector_multiply(2, fa, fb, fr);
  EXPECT_EQ(fr[0], 12.0f);
  s_vector_divide(2, fa, fb, fr);
  EXPECT_EQ(fr[1], 10.0f);
  s_vector_power(2, fa, fb, fr);
  EXPECT_FLOAT_EQ(fr[0], 81.0f);
}

TEST(ProviderVectorFunctions, ComplexResultsAreTheElementOperations) {
  const tav_complex16 x[2] = {{1, 2}, {0, 1}}, y[2] = {{3, 4}, {0, 1}};
  tav_complex16 r[2];
  z_vector_add(2, x, y, r);
  EXPECT_EQ(r[0].imag, 6.0);
  z_vector_subtract(2, x, y, r);
  EXPECT_EQ(r[0].real, -2.0);
  z_vector_multiply(2, x, y, r);
  EXPECT_EQ(r[0].real, -5.0);
  EXPECT_EQ(r[1].real, -1.0);  // i·i
  z_vector_divide(2, x, y, r);
  EXPECT_EQ(r[0].real, 0.44);
  EXPECT_EQ(r[0].imag, 0.08);
  z_vector_power(2, x, y, r);
  // i^i = e^(-π/2), real.
  EXPECT_NEAR(r[1].real, std::exp(-M_PI / 2), 1e-15);
  EXPECT_NEAR(r[1].imag, 0.0, 1e-15);

  const tav_complex8 cx[1] = {{1, 2}}, cy[1] = {{3, 4}};
  tav_complex8 cr[1];
  c_vector_add(1, cx, cy, cr);
  EXPECT_EQ(cr[0].real, 4.0f);
  c_vector_subtract(1, cx, cy, cr);
  EXPECT_EQ(cr[0].imag, -2.0f);
  c_vector_multiply(1, cx, cy, cr);
  EXPECT_EQ(cr[0].imag, 10.0f);
  c_vector_divide(1, cx, cy, cr);
  EXPECT_EQ(cr[0].imag, 0.08f);
  c_vector_power(1, cy, cx, cr);
  const std::complex<double> want = std::pow(std::complex<double>(3, 4), std::complex<double>(1, 2));
  EXPECT_NEAR(cr[0].real, want.real(), 1e-6 * std::abs(want));
  EXPECT_NEAR(cr[0].imag, want.imag(), 1e-6 * std::abs(want));
}

// n = 0 leaves every array as it was, whatever the pointers.
TEST(ProviderVectorFunctions, EmptyCallsLeaveArraysUnchanged) {
  double r[3] = {7, 7, 7};
  float fr[1] = {7};
  tav_complex8 cr[1] = {{7, 7}};
  tav_complex16 zr[1] = {{7, 7}};
  const float fa[1] = {1};
  const tav_complex8 ca[1] = {{1, 1}};
  const tav_complex16 za[1] = {{1, 1}};
  d_vector_add(0, a, b, r);
  d_vector_subtract(0, a, b, r);
  d_vector_multiply(0, a, b, r);
  d_vector_divide(0, a, b, r);
  d_vector_power(0, a, b, r);
  s_vector_add(0, fa, fa, fr);
  s_vector_power(0, fa, fa, fr);
  c_vector_multiply(0, ca, ca, cr);
  c_vector_divide(0, ca, ca, cr);
  z_vector_multiply(0, za, za, zr);
  z_vector_power(0, za, za, zr);
  EXPECT_EQ(r[0], 7.0);
  EXPECT_EQ(r[2], 7.0);
  EXPECT_EQ(fr[0], 7.0f);
  EXPECT_EQ(cr[0].real, 7.0f);
  EXPECT_EQ(zr[0].imag, 7.0);
}

// The provider checks nothing: a bad size reaches the vector function, whose status says so.
TEST(ProviderVectorFunctions, StatusAndModeAreThoseOfTheVectorMath) {
  in_fresh_thread([] {
    double r[3];
    d_vector_add(-1, a, b, r);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_BADSIZE);
    const double zero[3] = {0, 0, 0};
    vmlClearErrStatus();
    set_vml_mode(VML_ERRMODE_NOERR);
    d_vector_divide(3, a, zero, r);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK);
    set_vml_mode(VML_ERRMODE_IGNORE);
    d_vector_divide(3, a, zero, r);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_SING);
    EXPECT_EQ(r[1], -INFINITY);
  });
}

}  // namespace
