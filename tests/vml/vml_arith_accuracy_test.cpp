// Accuracy of the arithmetic functions on random operands over a wide exponent range: real
// results correctly rounded, complex parts within one ulp; and the special values of complex
// multiply and divide. Sizes cross the threader's threshold and the kernels' block lengths.
#include <gtest/gtest.h>
#include <tav/tav_vml.h>

#include <cmath>
#include <complex>
#include <vector>

#include "arith_oracles.hpp"

namespace {

using tav::test::operation;
using tav::test::wide_values;

template <class Real>
using real_fn = void (*)(int, const Real*, const Real*, Real*);

struct real_case {
  operation op;
  real_fn<float> single;
  real_fn<double> twice;
};

const real_case real_cases[] = {{operation::add, vsAdd, vdAdd},
                                {operation::sub, vsSub, vdSub},
                                {operation::mul, vsMul, vdMul},
                                {operation::div, vsDiv, vdDiv}};

// Exponents chosen so that sums see every alignment, and products and quotients cover overflow
// and the subnormal range.
TEST(VmlRealArithmetic, CorrectlyRoundedInEveryCase) {
  vmlSetMode(VML_ERRMODE_IGNORE);
  for (const real_case& c : real_cases) {
    for (int n : {1, 7, 99, 100, 1031, 20000}) {
      const auto da = wide_values<double>(n, 1 + n, -560, 560), db = wide_values<double>(n, 2 + n, -560, 560);
      std::vector<double> dr(n);
      c.twice(n, da.data(), db.data(), dr.data());
      EXPECT_EQ(tav::test::misrounded(c.op, da, db, dr), 0) << static_cast<int>(c.op) << " n=" << n;
      const auto sa = wide_values<float>(n, 3 + n, -70, 70), sb = wide_values<float>(n, 4 + n, -70, 70);
      std::vector<float> sr(n);
      c.single(n, sa.data(), sb.data(), sr.data());
      EXPECT_EQ(tav::test::misrounded(c.op, sa, sb, sr), 0) << static_cast<int>(c.op) << " n=" << n;
    }
  }
}

template <class C>
using complex_fn = void (*)(int, const C*, const C*, C*);

// Add and subtract act on the parts, so they round correctly; multiply and divide stay within one
// ulp, in double also for exponents beyond the fast formulas' ranges (the scaled rare paths).
template <class Real, class C>
void expect_complex_arithmetic(const complex_fn<C> (&fn)[4], int n, unsigned seed, int range) {
  const auto a = wide_values<Real>(2 * n, seed, -range, range);
  const auto b = wide_values<Real>(2 * n, seed + 1, -range, range);
  std::vector<std::vector<Real>> r(4, std::vector<Real>(2 * n));
  for (int op = 0; op < 4; ++op)
    fn[op](n, reinterpret_cast<const C*>(a.data()), reinterpret_cast<const C*>(b.data()),
           reinterpret_cast<C*>(r[op].data()));
  EXPECT_EQ(tav::test::misrounded(operation::add, a, b, r[0]), 0) << n;
  EXPECT_EQ(tav::test::misrounded(operation::sub, a, b, r[1]), 0) << n;
  EXPECT_EQ(tav::test::complex_off_by_more_than_an_ulp(operation::mul, a, b, r[2]), 0) << n;
  EXPECT_EQ(tav::test::complex_off_by_more_than_an_ulp(operation::div, a, b, r[3]), 0) << n;
}

TEST(VmlComplexArithmetic, AddSubtractExactMultiplyDivideWithinOneUlp) {
  const complex_fn<tav_complex16> twice[4] = {vzAdd, vzSub, vzMul, vzDiv};
  const complex_fn<tav_complex8> single[4] = {vcAdd, vcSub, vcMul, vcDiv};
  for (int n : {1, 17, 333, 5000}) {
    expect_complex_arithmetic<double>(twice, n, 7 + n, 500);
    expect_complex_arithmetic<float>(single, n, 11 + n, 60);
  }
}

// Nearly cancelling parts: the plain formula loses most digits of ac - bd here.
TEST(VmlComplexArithmetic, CancellationStaysWithinOneUlp) {
  const int n = 4000;
  auto a = wide_values<double>(2 * n, 9, -3, 3), b = a;
  const auto noise = wide_values<double>(2 * n, 10, -30, -20);
  for (int i = 0; i < n; ++i) {
    // (x, y)·(y, x)·(1 + tiny): re = xy - yx(1 + tiny) nearly cancels.
    b[2 * i] = a[2 * i + 1] * (1 + noise[2 * i]);
    b[2 * i + 1] = a[2 * i] * (1 + noise[2 * i + 1]);
  }
  std::vector<double> product(2 * n);
  vzMul(n, reinterpret_cast<const tav_complex16*>(a.data()), reinterpret_cast<const tav_complex16*>(b.data()),
        reinterpret_cast<tav_complex16*>(product.data()));
  EXPECT_EQ(tav::test::complex_off_by_more_than_an_ulp(operation::mul, a, b, product), 0);
}

// Special values, checked for both precisions through one list of double operands.
struct special_case {
  const char* label;
  bool divide;
  double a[2], b[2];
  int expected_status;
  // Expected parts: a value, or NaN for "is NaN".
  double re, im;
};

constexpr double inf = INFINITY;
constexpr double nan = NAN;

const special_case special_cases[] = {
    {"NonZeroOverZeroIsInfinite", true, {1, 1}, {0, 0}, VML_STATUS_SING, inf, inf},
    {"ZeroOverZeroIsNaN", true, {0, 0}, {0, 0}, VML_STATUS_ERRDOM, nan, nan},
    {"ZeroDivisorSignedByItsRealPart", true, {-2, 3}, {-0.0, 0}, VML_STATUS_SING, inf, -inf},
    {"InfiniteNumeratorOverZero", true, {inf, 1}, {0, 0}, VML_STATUS_SING, inf, inf},
    {"FiniteOverInfiniteIsZero", true, {1, 1}, {inf, 0}, VML_STATUS_OK, 0, 0},
    {"InfiniteOverFiniteKeepsDirection", true, {inf, nan}, {1, 0}, VML_STATUS_OK, inf, nan},
    {"RealDivisorKeepsSignedZero", true, {3, -0.0}, {2, 0}, VML_STATUS_OK, 1.5, -0.0},
    {"ImaginaryDivisor", true, {4, 6}, {0, 2}, VML_STATUS_OK, 3, -2},
    {"InfinityRecoveredFromNaNPart", false, {inf, nan}, {1, 1}, VML_STATUS_OK, inf, inf},
    {"InfinityKeepsFinitePartsDirection", false, {inf, 2}, {1, 0}, VML_STATUS_OK, inf, inf},
    {"InfiniteTimesZeroOperandStaysNaN", false, {inf, 0}, {0, 0}, VML_STATUS_OK, nan, nan},
    {"NaNWithoutInfinityStays", false, {nan, 1}, {1, 1}, VML_STATUS_OK, nan, nan},
};

class VmlComplexSpecialValues : public testing::TestWithParam<special_case> {};

template <class Real>
void expect_part(Real got, double expected) {
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(got)) << got;
  } else {
    EXPECT_EQ(got, static_cast<Real>(expected));
    EXPECT_EQ(std::signbit(got), std::signbit(expected));
  }
}

TEST_P(VmlComplexSpecialValues, GiveTheCustomaryResult) {
  const special_case& c = GetParam();
  vmlSetMode(VML_ERRMODE_IGNORE);
  // One special element among ordinary ones, so that the block test has to find it.
  std::vector<tav_complex16> za(40, {1, 2}), zb(40, {3, 4}), zr(40);
  std::vector<tav_complex8> ca(40, {1, 2}), cb(40, {3, 4}), cr(40);
  za[21] = {c.a[0], c.a[1]};
  zb[21] = {c.b[0], c.b[1]};
  ca[21] = {static_cast<float>(c.a[0]), static_cast<float>(c.a[1])};
  cb[21] = {static_cast<float>(c.b[0]), static_cast<float>(c.b[1])};
  for (int precision = 0; precision < 2; ++precision) {
    vmlClearErrStatus();
    if (precision == 0)
      (c.divide ? vzDiv : vzMul)(40, za.data(), zb.data(), zr.data());
    else
      (c.divide ? vcDiv : vcMul)(40, ca.data(), cb.data(), cr.data());
    EXPECT_EQ(vmlGetErrStatus(), c.expected_status) << precision;
    if (precision == 0) {
      expect_part(zr[21].real, c.re);
      expect_part(zr[21].imag, c.im);
      EXPECT_EQ(zr[20].real, c.divide ? 0.44 : -5.0);
    } else {
      expect_part(cr[21].real, c.re);
      expect_part(cr[21].imag, c.im);
      EXPECT_EQ(cr[20].real, c.divide ? 0.44f : -5.0f);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, VmlComplexSpecialValues, testing::ValuesIn(special_cases),
                         [](const auto& info) { return std::string(info.param.label); });

// In place: the result array is the first input.
TEST(VmlComplexArithmetic, InPlaceWithSpecialElements) {
  vmlSetMode(VML_ERRMODE_IGNORE);
  std::vector<tav_complex16> a(50, {1, 2}), b(50, {3, 4});
  a[7] = {1, 1};
  b[7] = {0, 0};
  vzDiv(50, a.data(), b.data(), a.data());
  EXPECT_EQ(a[7].real, inf);
  EXPECT_DOUBLE_EQ(a[6].real, 0.44);
  EXPECT_DOUBLE_EQ(a[8].imag, 0.08);
}

}  // namespace
