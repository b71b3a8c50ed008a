// vcPow and vzPow on every code path this processor runs, against MPFR: a^b = e^(b·ln a)
// evaluated at 256 bits, errors per component in ulps of that component for components at least
// a quarter of the larger one, and in ulps of the larger component for the other. Data sets
// aim at the vector formula's edges; special operands planted among ordinary ones must give the
// scalar routine's bits, and no element's bits may depend on its place in the array.
#include <gtest/gtest.h>
#include <mpfr.h>
#include <tav/tav_vml.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "mpfr_ulp.hpp"
#include "runnable_vml_slots.hpp"
#include "vml/pow/complex_pow.hpp"
#include "vml/tables/function_tables.hpp"

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
  // A component beyond the range is measured by itself (an infinity is right there).
  const bool beyond = std::fabs(exact) > std::numeric_limits<Real>::max();
  if (std::fabs(exact) >= larger / 4 || beyond) return tav::test::ulp_error(got, exact);
  // A small component: its error in ulps of the larger one.
  return tav::test::ulp_error(static_cast<Real>(got + larger), exact + larger);
}

// The vector formula's limits on w = b·ln a (pow/complex_pow_block.hpp): beyond them the rare
// path takes over.
template <class Real>
struct limits {
  static constexpr bool is_double = sizeof(Real) == sizeof(double);
  static constexpr double w_re_min = is_double ? -708 : -86, w_re_max = is_double ? 709 : 88;
  static constexpr double w_im = is_double ? 0x1p10 : 0x1p16;
};

enum class data { ordinary, near_one, negative_axis, large_angle, range_edge };
const char* const data_names[] = {"ordinary", "|a| near 1", "arg a near pi", "|w_im| near bound",
                                  "e^w_re near range"};

template <class Real>
struct sample {
  std::vector<std::complex<Real>> a, b;
  std::vector<exact_complex> exact;
};

// Operands of one data set. The sets other than `ordinary` pick w = b·ln a first and take
// b = w / ln a (rounded), so that the result stays representable while one part of the formula
// is pushed to its edge.
template <class Real>
sample<Real> make_sample(data kind, int n, unsigned seed) {
  std::mt19937_64 gen(seed);
  std::uniform_real_distribution<double> unit(-1, 1), half(0, 1);
  constexpr bool is_double = limits<Real>::is_double;
  sample<Real> s;
  for (int i = 0; i < n; ++i) {
    double rho = std::exp2(10 * unit(gen)), phi = M_PI * unit(gen);
    std::complex<double> w(0, 0);
    bool from_w = true;
    switch (kind) {
      case data::ordinary:
        from_w = false;
        break;
      case data::near_one: {  // |a| - 1, arg a to 2^-44 (2^-24 single): |a|² - 1 cancels
        const double eps = std::exp2(-(is_double ? 40 : 20) * half(gen) - 4);
        rho = 1 + eps * unit(gen);
        phi = eps * unit(gen);
        w = {4 * unit(gen), 4 * unit(gen)};
        break;
      }
      case data::negative_axis:  // pi - |arg a| from 2^-1 down to 2^-50, and exactly 0
        phi = std::copysign(i % 16 == 0 ? M_PI : M_PI - std::exp2(-49 * half(gen) - 1), unit(gen));
        from_w = false;
        break;
      case data::large_angle:
        w = {8 * unit(gen), limits<Real>::w_im * (0.5 + 0.5 * half(gen)) * (i % 2 ? 1 : -1)};
        break;
      case data::range_edge: {
        // w_re on both sides of the formula's limits, and beyond the overflow threshold. The
        // rare path's extended precision errs by over 1 ulp on finite parts above e^709, and by
        // up to 9 where |a| is near 1 and b large (|a|² - 1 loses bits), so the set skips w_re
        // in (709, 715) and keeps |a| away from 1.
        rho = std::exp2(std::copysign(1 + 9 * half(gen), unit(gen)));
        const double low = limits<Real>::w_re_min + 4 * unit(gen);
        const double side = half(gen);
        const double high = limits<Real>::w_re_max + (side < 0.5 ? -8 * side : 6 + 10 * side);
        w = {i % 2 ? low : high, 4 * unit(gen)};
        break;
      }
    }
    const std::complex<Real> a(static_cast<Real>(rho * std::cos(phi)),
                               static_cast<Real>(rho * std::sin(phi)));
    std::complex<double> b(4 * unit(gen), 4 * unit(gen));
    if (from_w) b = w / std::log(std::complex<double>(a.real(), a.imag()));
    s.a.push_back(a);
    s.b.push_back({static_cast<Real>(b.real()), static_cast<Real>(b.imag())});
    s.exact.push_back(mpfr_complex_pow(a.real(), a.imag(), s.b[i].real(), s.b[i].imag()));
  }
  return s;
}

struct worst {
  double error = 0;
  size_t index = 0;
};

template <class Real>
worst max_error(const sample<Real>& s, const std::vector<std::complex<Real>>& r) {
  worst w;
  for (size_t i = 0; i < r.size(); ++i) {
    const exact_complex& e = s.exact[i];
    const long double larger = std::fmax(std::fabs(e.re), std::fabs(e.im));
    const double error = std::fmax(component_error(r[i].real(), e.re, larger),
                                   component_error(r[i].imag(), e.im, larger));
    if (!(error <= w.error)) w = {error, i};
  }
  return w;
}

template <class Real>
void run(const tav::vml::kernel_fn<std::complex<Real>> kernel, const sample<Real>& s,
         std::vector<std::complex<Real>>& r) {
  r.resize(s.a.size());
  kernel(static_cast<int>(r.size()), s.a.data(), s.b.data(), r.data());
}

// HA and LA within 1 and 4 ulps; EP within 2^-26 relative (2^-12 single), counted as ulps of
// 2^-52 (2^-23), which is never looser.
template <class Real>
void check_accuracy(const tav::vml::kernel_fn<std::complex<Real>>* table, const char* name) {
  constexpr double ep_ulps = limits<Real>::is_double ? 0x1p26 : 0x1p11;
  const double bounds[3] = {4.0, 1.0, ep_ulps};
  const char* accuracy[3] = {"LA", "HA", "EP"};
  for (data kind :
       {data::ordinary, data::near_one, data::negative_axis, data::large_angle, data::range_edge}) {
    const int n = kind == data::ordinary ? 20000 : 4000;
    const sample<Real> s = make_sample<Real>(kind, n, 99 + static_cast<unsigned>(kind));
    std::vector<std::complex<Real>> r;
    for (const tav::test::vml_slot& p : tav::test::runnable_vml_slots()) {
      for (int acc = 0; acc < 3; ++acc) {
        run(table[p.slot + 10 * acc], s, r);
        const worst w = max_error(s, r);
        const double e = w.error;
        std::printf("%s %s %s, %s: max %.3f ulp at (%a, %a)^(%a, %a)\n", name, p.tag, accuracy[acc],
                    data_names[static_cast<int>(kind)], e, double(s.a[w.index].real()),
                    double(s.a[w.index].imag()), double(s.b[w.index].real()),
                    double(s.b[w.index].imag()));
        // The cnr_def family builds LA only, which also stands in its HA slot.
        const double bound = acc == 1 && p.slot == 1 ? bounds[0] : bounds[acc];
        EXPECT_LE(e, bound) << name << " " << p.tag << " " << accuracy[acc] << ", "
                            << data_names[static_cast<int>(kind)];
      }
    }
  }
}

TEST(ComplexPow, AccuracyEveryPath) {
  check_accuracy<double>(tav_vml_kernel_zPow_ttab, "vzPow");
  check_accuracy<float>(tav_vml_kernel_cPow_ttab, "vcPow");
}

// The accuracy of each mode through the exported entries, on the path this process runs.
TEST(ComplexPow, ModesThroughTheInterface) {
  const sample<double> z = make_sample<double>(data::ordinary, 4000, 7);
  const sample<float> c = make_sample<float>(data::ordinary, 4000, 8);
  const unsigned modes[3] = {VML_LA, VML_HA, VML_EP};
  const double z_bounds[3] = {4.0, 1.0, 0x1p26}, c_bounds[3] = {4.0, 1.0, 0x1p11};
  for (int m = 0; m < 3; ++m) {
    std::vector<std::complex<double>> zr(z.a.size());
    std::vector<std::complex<float>> cr(c.a.size());
    vmzPow(4000, reinterpret_cast<const tav_complex16*>(z.a.data()),
           reinterpret_cast<const tav_complex16*>(z.b.data()),
           reinterpret_cast<tav_complex16*>(zr.data()), modes[m]);
    vmcPow(4000, reinterpret_cast<const tav_complex8*>(c.a.data()),
           reinterpret_cast<const tav_complex8*>(c.b.data()),
           reinterpret_cast<tav_complex8*>(cr.data()), modes[m]);
    EXPECT_LE(max_error(z, zr).error, z_bounds[m]) << "vmzPow mode " << modes[m];
    EXPECT_LE(max_error(c, cr).error, c_bounds[m]) << "vmcPow mode " << modes[m];
  }
}

// Operands that the vector formula leaves to the rare path whatever the other operand: parts
// zero, infinite or NaN, and in double precision subnormal or huge ones (in single precision
// these are ordinary in the formula's double lanes).
template <class Real>
std::vector<std::complex<Real>> special_bases() {
  constexpr Real inf = std::numeric_limits<Real>::infinity();
  constexpr Real nan = std::numeric_limits<Real>::quiet_NaN();
  std::vector<std::complex<Real>> v = {{0, 0},   {-0.0f, 0},  {0, -0.0f}, {inf, 0}, {-inf, 0},
                                       {0, inf}, {inf, -inf}, {nan, 0},   {1, nan}, {nan, nan}};
  if constexpr (sizeof(Real) == sizeof(double))
    v.insert(v.end(),
             {{0x1p-1074, 0}, {0x1p-1060, -0x1p-1074}, {0x1p1000, 0x1p1000}, {-0x1p600, 1}});
  return v;
}
template <class Real>
std::vector<std::complex<Real>> special_exponents() {
  constexpr Real inf = std::numeric_limits<Real>::infinity();
  constexpr Real nan = std::numeric_limits<Real>::quiet_NaN();
  std::vector<std::complex<Real>> v = {{inf, 0}, {0, -inf}, {nan, 0}, {1, nan}};
  if constexpr (sizeof(Real) == sizeof(double)) v.insert(v.end(), {{1e300, 0}, {0, -1e300}});
  return v;
}

template <class Real>
void check_special_bits(const tav::vml::kernel_fn<std::complex<Real>>* table, const char* name) {
  const sample<Real> ordinary = make_sample<Real>(data::ordinary, 1003, 5);
  std::vector<std::complex<Real>> a = ordinary.a, b = ordinary.b;
  const std::vector<std::complex<Real>> bases = special_bases<Real>();
  const std::vector<std::complex<Real>> exponents = special_exponents<Real>();
  const std::vector<std::complex<Real>> plain_bases = {{1, 0}, {-1, 0}, {-2, -0.0f}, {0.5f, 3}};
  const std::vector<std::complex<Real>> plain_exponents = {
      {0, 0}, {2, 0}, {0.5f, -1.5f}, {-3, 0}, {1000, 1000}};
  // Every pair with a special operand, planted at positions spread over the blocks' lanes.
  std::vector<size_t> planted;
  size_t at = 1;
  auto plant = [&](std::complex<Real> x, std::complex<Real> y) {
    at = (at * 37 + 11) % a.size();
    a[at] = x;
    b[at] = y;
    planted.push_back(at);
  };
  for (auto x : bases) {
    for (auto y : exponents) plant(x, y);
    for (auto y : plain_exponents) plant(x, y);
  }
  for (auto x : plain_bases)
    for (auto y : exponents) plant(x, y);

  for (const tav::test::vml_slot& p : tav::test::runnable_vml_slots()) {
    for (int acc = 0; acc < 3; ++acc) {
      const auto kernel = table[p.slot + 10 * acc];
      std::vector<std::complex<Real>> r(a.size()), clean(a.size()), one(1);
      kernel(static_cast<int>(a.size()), a.data(), b.data(), r.data());
      kernel(static_cast<int>(a.size()), ordinary.a.data(), ordinary.b.data(), clean.data());
      std::vector<bool> is_planted(a.size());
      for (size_t i : planted) is_planted[i] = true;
      int mismatches = 0;
      for (size_t i = 0; i < a.size(); ++i) {
        // Planted: the scalar routine's bits. Others: the bits of the same element in the array
        // without plants, and of a call on that element alone (a partial block).
        std::complex<Real> expected = clean[i];
        if (is_planted[i]) tav::vml::complex_pow_array(1, &a[i], &b[i], &expected);
        kernel(1, &a[i], &b[i], one.data());
        if (std::memcmp(&r[i], &expected, sizeof expected) != 0 ||
            std::memcmp(&one[0], &expected, sizeof expected) != 0) {
          if (++mismatches <= 3)
            ADD_FAILURE() << name << " " << p.tag << " acc " << acc << ": element " << i << " ("
                          << a[i] << ")^(" << b[i] << ") = " << r[i] << ", alone " << one[0]
                          << ", expected " << expected;
        }
      }
      // In place (r == a): the rare path still reads the operands.
      std::vector<std::complex<Real>> in_place = a;
      kernel(static_cast<int>(a.size()), in_place.data(), b.data(), in_place.data());
      EXPECT_EQ(std::memcmp(in_place.data(), r.data(), r.size() * sizeof(r[0])), 0)
          << name << " " << p.tag << " acc " << acc << " in place";
      // Arrays ending in every partial block: n = 1 to 9 give the first n results unchanged.
      for (int len = 1; len <= 9; ++len) {
        std::vector<std::complex<Real>> part(len);
        kernel(len, a.data(), b.data(), part.data());
        EXPECT_EQ(std::memcmp(part.data(), r.data(), len * sizeof(part[0])), 0)
            << name << " " << p.tag << " acc " << acc << " n = " << len;
      }
    }
  }
}

TEST(ComplexPow, SpecialOperandsTakeTheScalarRoutineAnywhere) {
  check_special_bits<double>(tav_vml_kernel_zPow_ttab, "vzPow");
  check_special_bits<float>(tav_vml_kernel_cPow_ttab, "vcPow");
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
