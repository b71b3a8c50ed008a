// The level-1 drivers axpy, dot, dotc, scal and scal_real and their C entries, for the four
// element types: results against long-double references around the thread thresholds, the
// quick returns, and IEEE special values.
#include <gtest/gtest.h>

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

// The C entries are shims: the same bits as the templates, the complex dots through `result`.
TEST(Level1Entries, ForwardToTheTemplates) {
  std::mt19937_64 rng(7);
  const int64_t n = 37, one = 1, two = 2, minus = -1;
  std::vector<c16> x(2 * n), y(2 * n), z;
  for (auto& v : x) v = random_value<c16>(rng);
  for (auto& v : y) v = random_value<c16>(rng);

  c16 result, alpha(0.5, -2);
  tav_blas_zdotu(&result, &n, x.data(), &two, y.data(), &minus);
  EXPECT_EQ(result, tav::blas::dot<c16>(n, x.data(), 2, y.data(), -1));
  z = y;
  tav_blas_zaxpy(&n, &alpha, x.data(), &one, y.data(), &one);
  tav::blas::axpy<c16>(n, alpha, x.data(), 1, z.data(), 1);
  EXPECT_EQ(y, z);
  tav_blas_zscal(&n, &alpha, y.data(), &two);
  tav::blas::scal<c16>(n, alpha, z.data(), 2);
  EXPECT_EQ(y, z);
  const double half = 0.5;
  tav_blas_zdscal(&n, &half, y.data(), &one);
  tav::blas::scal_real<c16>(n, half, z.data(), 1);
  EXPECT_EQ(y, z);

  std::vector<float> s(n, 1.5f), t(n, -2.0f);
  const float two_f = 2;
  EXPECT_EQ(tav_blas_sdot(&n, s.data(), &one, t.data(), &one), -3.0f * n);
  tav_blas_saxpy(&n, &two_f, s.data(), &one, t.data(), &one);
  EXPECT_EQ(t, std::vector<float>(n, 1.0f));
  tav_blas_sscal(&n, &two_f, t.data(), &one);
  EXPECT_EQ(t, std::vector<float>(n, 2.0f));

  std::vector<double> d(n, 3.0);
  const double three = 3;
  tav_blas_daxpy(&n, &three, d.data(), &one, d.data(), &one);
  tav_blas_dscal(&n, &half, d.data(), &one);
  EXPECT_EQ(tav_blas_ddot(&n, d.data(), &one, d.data(), &one), 36.0 * n);

  std::vector<c8> u(n, c8(1, 2)), v(n, c8(3, -1));
  const c8 i_unit(0, 1);
  c8 sum;
  tav_blas_cdotu(&sum, &n, u.data(), &one, v.data(), &one);
  EXPECT_EQ(sum, c8(5.0f * n, 5.0f * n));
  tav_blas_caxpy(&n, &i_unit, u.data(), &one, v.data(), &one);  // v = i·u + v = (1, 0)
  tav_blas_cscal(&n, &i_unit, v.data(), &one);                 // v = (0, 1)
  const float minus_two = -2;
  tav_blas_csscal(&n, &minus_two, v.data(), &one);  // v = (0, -2)
  EXPECT_EQ(v, std::vector<c8>(n, c8(0, -2)));
}

}  // namespace
