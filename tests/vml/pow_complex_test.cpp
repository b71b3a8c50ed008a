// vcPow and vzPow against MPFR: a^b = e^(b·ln a) evaluated at 256 bits, errors per component in
// ulps of that component for components at least a quarter of the larger one, and in ulps of
// the larger component for the other; plus the customary special cases.
#include <gtest/gtest.h>
#include <mpfr.h>
#include <tav/tav_vml.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "mpfr_ulp.hpp"

namespace {

struct exact_complex {
  long double re, im;
};

exact_complex mpfr_complex_pow(double ar, double ai, double br, double bi) {
  mpfr_t x, y, lr, th, t, wr, wi, m;
  mpfr_inits2(256, x, y, lr, th, t, wr, wi, m, static_cast<mpfr_ptr>(nullptr));
  mpfr_set_d(x, ar, MPFR_RNDN);
  mpfr_set_d(y, ai, MPFR_RNDN);
  mpfr_hypot(lr, x, y, MPFR_RNDN);
  mpfr_log(lr, lr, MPFR_RNDN);
  mpfr_atan2(th, y, x, MPFR_RNDN);
  mpfr_mul_d(wr, lr, br, MPFR_RNDN);  // wr = br·ln|a| - bi·arg a
  mpfr_mul_d(t, th, bi, MPFR_RNDN);
  mpfr_sub(wr, wr, t, MPFR_RNDN);
  mpfr_mul_d(wi, th, br, MPFR_RNDN);  // wi = br·arg a + bi·ln|a|
  mpfr_mul_d(t, lr, bi, MPFR_RNDN);
  mpfr_add(wi, wi, t, MPFR_RNDN);
  mpfr_exp(m, wr, MPFR_RNDN);
  mpfr_cos(t, wi, MPFR_RNDN);
  mpfr_mul(t, t, m, MPFR_RNDN);
  exact_complex out;
  out.re = mpfr_get_ld(t, MPFR_RNDN);
  mpfr_sin(t, wi, MPFR_RNDN);
  mpfr_mul(t, t, m, MPFR_RNDN);
  out.im = mpfr_get_ld(t, MPFR_RNDN);
  mpfr_clears(x, y, lr, th, t, wr, wi, m, static_cast<mpfr_ptr>(nullptr));
  return out;
}

template <class Real>
double component_error(Real got, long double exact, long double larger) {
  if (std::fabs(exact) >= larger / 4) return tav::test::ulp_error(got, exact);
  // A small component: its error in ulps of the larger one.
  return tav::test::ulp_error(static_cast<Real>(got + larger), exact + larger);
}

template <class Complex, class Real>
double max_error(void (*pow)(int, const Complex*, const Complex*, Complex*), int n) {
  std::mt19937_64 gen(99);
  std::uniform_real_distribution<double> mag(-10, 10), angle(-M_PI, M_PI), exponent(-4, 4);
  std::vector<Complex> a(n), b(n), r(n);
  for (int i = 0; i < n; ++i) {
    double rho = std::exp2(mag(gen)), phi = angle(gen);
    a[i] = {static_cast<Real>(rho * std::cos(phi)), static_cast<Real>(rho * std::sin(phi))};
    b[i] = {static_cast<Real>(exponent(gen)), static_cast<Real>(exponent(gen))};
  }
  pow(n, a.data(), b.data(), r.data());
  double worst = 0;
  for (int i = 0; i < n; ++i) {
    exact_complex e = mpfr_complex_pow(a[i].real, a[i].imag, b[i].real, b[i].imag);
    long double larger = std::fmax(std::fabs(e.re), std::fabs(e.im));
    worst = std::fmax(worst, component_error(r[i].real, e.re, larger));
    worst = std::fmax(worst, component_error(r[i].imag, e.im, larger));
  }
  return worst;
}

TEST(ComplexPow, WithinOneUlpPerComponent) {
  const double z = max_error<tav_complex16, double>(vzPow, 20000);
  const double c = max_error<tav_complex8, float>(vcPow, 20000);
  std::printf("max error: vzPow %.3f ulp, vcPow %.3f ulp\n", z, c);
  EXPECT_LE(z, 1.0);
  EXPECT_LE(c, 1.0);
}

TEST(ComplexPow, SpecialCases) {
  const double inf = std::numeric_limits<double>::infinity();
  struct special {
    tav_complex16 a, b, expected;
  };
  const special cases[] = {
      {{NAN, NAN}, {0, 0}, {1, 0}},    // a^0 = 1 for every a
      {{0, 0}, {2, 1}, {0, 0}},        // 0^b = 0 for Re b > 0
      {{0, 0}, {-1, 0}, {inf, 0}},     // and complex infinity for Re b < 0
      {{4, 0}, {0.5, 0}, {2, 0}},      // positive real base, real exponent: real result
      {{-inf, 0}, {1, 0}, {-inf, 0}},  // (-inf)^1: real part -inf
      {{1, 0}, {123.25, 0}, {1, 0}},
  };
  for (const special& c : cases) {
    tav_complex16 r;
    vzPow(1, &c.a, &c.b, &r);
    if (std::isinf(c.expected.real)) {
      EXPECT_TRUE(std::isinf(r.real)) << c.a.real << "," << c.a.imag;
    } else {
      EXPECT_EQ(r.real, c.expected.real) << c.a.real << "," << c.a.imag;
      EXPECT_EQ(r.imag, c.expected.imag) << c.a.real << "," << c.a.imag;
    }
  }
}

}  // namespace
