// The level-1 drivers and serial routines for the four types against long-double references,
// with guard bands around every vector.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "blas/blas_internal.hpp"
#include "blas/level1/level1_entries.hpp"
#include "level1_checks.hpp"

namespace {

using namespace tav::test;
using c8 = std::complex<float>;
using c16 = std::complex<double>;

template <class T>
class Level1Driver : public testing::Test {
 protected:
  std::mt19937_64 rng{20240611};
  // Threads are considered from 32 KiB of x (axpy, dot) and 64 KiB (scal).
  static constexpr int64_t stream = 32768 / sizeof(T);
  static constexpr int64_t scale = 65536 / sizeof(T);
  static std::vector<int64_t> sizes(int64_t threshold) {
    return {0, 1, 2, 7, 33, 1000, threshold - 1, threshold, threshold + 1, 3 * threshold + 5};
  }
};

using element_types = testing::Types<float, double, c8, c16>;
TYPED_TEST_SUITE(Level1Driver, element_types);

const std::pair<int64_t, int64_t> increments[] = {{1, 1}, {2, 1}, {-1, -1}, {-3, 2}, {1, -1},
                                                  {0, 1}, {1, 0}};

TYPED_TEST(Level1Driver, AxpyMatchesReference) {
  using T = TypeParam;
  for (int64_t n : this->sizes(this->stream))
    for (auto [incx, incy] : increments)
      ASSERT_EQ(check_axpy<T>(n, incx, incy, this->rng, tav::blas::axpy<T>), "");
}

TYPED_TEST(Level1Driver, DotAndDotcMatchReference) {
  using T = TypeParam;
  for (int64_t n : this->sizes(this->stream)) {
    for (auto [incx, incy] : increments) {
      ASSERT_EQ(check_dot<T>(n, incx, incy, false, this->rng, tav::blas::dot<T>), "");
      ASSERT_EQ(check_dot<T>(n, incx, incy, true, this->rng, tav::blas::dotc<T>), "");
    }
  }
}

TYPED_TEST(Level1Driver, ScalMatchesReference) {
  using T = TypeParam;
  using R = real_of<T>;
  for (int64_t n : this->sizes(this->scale)) {
    for (int64_t inc : {1, 2, -1, -3, 0}) {
      ASSERT_EQ((check_scal<T, T>(n, inc, this->rng, tav::blas::scal<T>)), "");
      ASSERT_EQ((check_scal<T, R>(n, inc, this->rng, tav::blas::scal_real<T>)), "");
    }
  }
}

// alpha == 0 returns before y is read or written: NaNs and signed zeros keep their bits, and a
// NaN in x does not reach y. -0 equals 0 as well.
TYPED_TEST(Level1Driver, AxpyZeroAlphaLeavesYBitForBit) {
  using T = TypeParam;
  const int64_t n = 3 * this->stream;
  guarded_vector<T> x = random_vector<T>(n, 1, this->rng), y = random_vector<T>(n, 2, this->rng);
  x[3] = T(std::numeric_limits<real_of<T>>::quiet_NaN());
  y[0] = T(-0.0f);
  y[1] = sentinel<T>();
  y[n - 1] = T(std::numeric_limits<real_of<T>>::infinity());
  const guarded_vector<T> before = y;
  for (T alpha : {T(0), T(-0.0f)}) {
    tav::blas::axpy<T>(n, alpha, x.data(), 1, y.data(), 2);
    EXPECT_TRUE(same_bits(y, before));
    EXPECT_TRUE(y.intact());
  }
}

TYPED_TEST(Level1Driver, NanAlphaPropagates) {
  using T = TypeParam;
  for (int64_t n : {int64_t{5}, 2 * this->stream + 1}) {
    guarded_vector<T> x = random_vector<T>(n, 1, this->rng), y = random_vector<T>(n, -1, this->rng);
    const T nan(std::numeric_limits<real_of<T>>::quiet_NaN());
    tav::blas::axpy<T>(n, nan, x.data(), 1, y.data(), -1);
    for (int64_t i = 0; i < n; ++i) ASSERT_TRUE(has_nan(widen(y[i]))) << "n=" << n << " i=" << i;
    tav::blas::scal<T>(n, nan, x.data(), 1);
    for (int64_t i = 0; i < n; ++i) ASSERT_TRUE(has_nan(widen(x[i]))) << "n=" << n << " i=" << i;
  }
}

TYPED_TEST(Level1Driver, NonPositiveLengthTouchesNothing) {
  using T = TypeParam;
  for (int64_t n : {0, -1, -100}) {
    guarded_vector<T> x(0, 1), y(0, 1);
    tav::blas::axpy<T>(n, T(2), x.data(), 1, y.data(), 1);
    tav::blas::scal<T>(n, T(2), x.data(), 1);
    tav::blas::scal_real<T>(n, 2, x.data(), 1);
    const T d = tav::blas::dot<T>(n, x.data(), 1, y.data(), 1);
    const T dc = tav::blas::dotc<T>(n, x.data(), 1, y.data(), 1);
    EXPECT_TRUE(x.intact() && y.intact());
    const T zero(0);
    EXPECT_EQ(std::memcmp(&d, &zero, sizeof(T)), 0);
    EXPECT_EQ(std::memcmp(&dc, &zero, sizeof(T)), 0);
  }
}

// The real-alpha scalings of complex vectors have no public routine to reach them through (the
// interface tests reach the other C entries): a halving is exact, and only every other element
// of the increment-2 vector may change.
TEST(Level1Entries, RealAlphaScalingOfComplexVectors) {
  std::mt19937_64 rng(7);
  const int64_t n = 37, one = 1, two = 2;
  std::vector<c16> z(2 * n);
  for (auto& v : z) v = random_value<c16>(rng);
  const std::vector<c16> z0 = z;
  const double half = 0.5;
  tav_blas_zdscal(&n, &half, z.data(), &two);
  for (int64_t i = 0; i < 2 * n; ++i) EXPECT_EQ(z[i], i % 2 ? z0[i] : z0[i] * 0.5) << i;
  std::vector<c8> v(n, c8(0.5f, 1));
  const float minus_two = -2;
  tav_blas_csscal(&n, &minus_two, v.data(), &one);
  EXPECT_EQ(v, std::vector<c8>(n, c8(-1, -2)));
}

// The serial routines: sizes and increment pairs.
const int64_t serial_sizes[] = {0, 1, 2, 7, 33, 100};
const std::pair<int64_t, int64_t> serial_increments[] = {{1, 1},   {2, 1},  {-1, -1},
                                                        {-3, 2}, {1, -2}};

template <class T>
class Level1Serial : public testing::Test {
 protected:
  std::mt19937_64 rng{97};
};

TYPED_TEST_SUITE(Level1Serial, element_types);

TYPED_TEST(Level1Serial, CopyAndSwapMoveElementsExactly) {
  using T = TypeParam;
  for (int64_t n : serial_sizes) {
    for (auto [incx, incy] : serial_increments) {
      SCOPED_TRACE(testing::Message() << "n=" << n << " incx=" << incx << " incy=" << incy);
      guarded_vector<T> x = random_vector<T>(n, incx, this->rng), y = random_vector<T>(n, incy, this->rng);
      const guarded_vector<T> x0 = x, y0 = y;
      tav::blas::swap<T>(n, x.data(), incx, y.data(), incy);
      for (int64_t i = 0; i < n; ++i) {
        ASSERT_EQ(std::memcmp(&x[i], &y0[i], sizeof(T)), 0) << i;
        ASSERT_EQ(std::memcmp(&y[i], &x0[i], sizeof(T)), 0) << i;
      }
      tav::blas::copy<T>(n, x.data(), incx, y.data(), incy);
      EXPECT_TRUE(same_bits(y, x));
      EXPECT_TRUE(x.intact() && y.intact());
    }
  }
}

TYPED_TEST(Level1Serial, AsumAndIamaxMatchReference) {
  using T = TypeParam;
  for (int64_t n : serial_sizes) {
    for (int64_t inc : {1, 3, -2}) {
      guarded_vector<T> x = random_vector<T>(n, inc, this->rng);
      const auto wx = widened(n, x.data(), inc);
      EXPECT_TRUE(close(tav::blas::asum<T>(n, x.data(), inc), ref_asum(wx), ref_asum(wx), n + 2.0L))
          << "n=" << n << " inc=" << inc;
      EXPECT_EQ(tav::blas::iamax<T>(n, x.data(), inc), ref_iamax(wx)) << "n=" << n << " inc=" << inc;
      EXPECT_TRUE(x.intact());
    }
  }
}

// The first of equal maxima wins; a NaN is taken only as element 1 (comparisons with NaN are
// false); for complex values the measure is |re| + |im|, not the modulus.
TYPED_TEST(Level1Serial, IamaxTiesNanAndMeasure) {
  using T = TypeParam;
  using R = real_of<T>;
  const R nan = std::numeric_limits<R>::quiet_NaN();
  auto index_of = [](std::vector<T> v, int64_t inc) {
    std::vector<T> spaced(v.size() * 2);
    for (size_t i = 0; i < v.size(); ++i) spaced[2 * i] = v[i];
    return tav::blas::iamax<T>(static_cast<int64_t>(v.size()), spaced.data(), inc);
  };
  EXPECT_EQ(index_of({T(1), T(-3), T(3), T(2)}, 2), 2);
  EXPECT_EQ(index_of({T(nan), T(5), T(7)}, 2), 1);
  EXPECT_EQ(index_of({T(1), T(nan), T(7), T(nan)}, 2), 3);
  EXPECT_EQ(index_of({T(1), T(-3), T(3), T(2)}, -2), 2);  // elements 2, 3, -3, 1 from the end
  EXPECT_EQ(tav::blas::iamax<T>(0, static_cast<const T*>(nullptr), 1), 0);
  if constexpr (complex_v<T>) EXPECT_EQ(index_of({T(3, 0), T(2, -2), T(0, 3.5)}, 2), 2);
}

TYPED_TEST(Level1Serial, Nrm2MatchesReference) {
  using T = TypeParam;
  for (int64_t n : serial_sizes) {
    for (int64_t inc : {1, 2, -3, 0}) {
      guarded_vector<T> x = random_vector<T>(n, inc, this->rng);
      const long double want = ref_nrm2(widened(n, x.data(), inc));
      EXPECT_TRUE(close(tav::blas::nrm2<T>(n, x.data(), inc), want, want, n + 4.0L))
          << "n=" << n << " inc=" << inc;
    }
  }
}

// Values whose squares overflow or underflow: the norm is still right to a few ulps.
TYPED_TEST(Level1Serial, Nrm2AtTheEndsOfTheRange) {
  using T = TypeParam;
  using R = real_of<T>;
  const R huge = sizeof(R) == 8 ? R(1e300) : R(1e30);
  const R tiny = sizeof(R) == 8 ? R(1e-300) : R(1e-30);
  for (R scale : {huge, tiny}) {
    for (int64_t n : {1, 2, 3, 10}) {
      std::vector<T> x(n);
      for (int64_t i = 0; i < n; ++i) x[i] = T(scale * R(i + 1) / R(n));
      const long double want = ref_nrm2(widened(n, x.data(), 1));
      const R got = tav::blas::nrm2<T>(n, x.data(), 1);
      EXPECT_TRUE(close(got, want, want, 4)) << "scale=" << scale << " n=" << n << " got " << got;
    }
  }
  // Huge, medium and tiny together: the tiny ones vanish beside the huge one.
  const T mixed[] = {T(tiny), T(3 * huge), T(1), T(4 * huge), T(tiny)};
  EXPECT_TRUE(close(tav::blas::nrm2<T>(5, mixed, 1), 5.0L * huge, 5.0L * huge, 4));
  // Medium and tiny together: both ranges count.
  const T low[] = {T(tiny), T(R(1e-3)), T(tiny)};
  EXPECT_TRUE(close(tav::blas::nrm2<T>(3, low, 1), 1e-3L, 1e-3L, 4));
  const R inf = std::numeric_limits<R>::infinity();
  const T with_inf[] = {T(1), T(inf), T(tiny)};
  EXPECT_EQ(tav::blas::nrm2<T>(3, with_inf, 1), inf);
  const T with_nan[] = {T(huge), T(std::numeric_limits<R>::quiet_NaN()), T(1)};
  EXPECT_TRUE(std::isnan(tav::blas::nrm2<T>(3, with_nan, 1)));
  EXPECT_EQ(tav::blas::nrm2<T>(0, mixed, 1), R(0));
}

template <class T, class S>
void check_rot(std::mt19937_64& rng) {
  for (int64_t n : serial_sizes) {
    for (auto [incx, incy] : serial_increments) {
      SCOPED_TRACE(testing::Message() << "n=" << n << " incx=" << incx << " incy=" << incy);
      guarded_vector<T> x = random_vector<T>(n, incx, rng), y = random_vector<T>(n, incy, rng);
      const real_of<T> c = std::uniform_real_distribution<real_of<T>>(-1, 1)(rng);
      const S s = random_value<S>(rng);
      auto wx = widened(n, x.data(), incx), wy = widened(n, y.data(), incy);
      auto bx = magnitudes(wx), by = magnitudes(wy);
      ref_rot(wx, wy, c, widen(s));
      // Error bound of both outputs: |c|·|own element| + |s|·|the other element|.
      const long double abs_c = std::fabs(c), abs_s = magnitude(widen(s));
      for (int64_t i = 0; i < n; ++i) {
        const long double mx = magnitude(widen(x[i])), my = magnitude(widen(y[i]));
        bx[i] = abs_c * mx + abs_s * my;
        by[i] = abs_c * my + abs_s * mx;
      }
      tav::blas::rot<T, S>(n, x.data(), incx, y.data(), incy, c, s);
      ASSERT_EQ(compare_elements("rot x", n, incx, incy, x, wx, bx, 8), "");
      ASSERT_EQ(compare_elements("rot y", n, incx, incy, y, wy, by, 8), "");
    }
  }
}

TYPED_TEST(Level1Serial, RotWithRealAndComplexSine) {
  using T = TypeParam;
  check_rot<T, real_of<T>>(this->rng);
  if constexpr (complex_v<T>) check_rot<T, T>(this->rng);
}

}  // namespace
