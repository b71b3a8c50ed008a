// Every runnable path's level-1 kernels (axpy, dot, dotc, scal, real-alpha complex scal), called
// directly for the four element types against long-double references inside guard bands.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "blas/level1/level1_slots.hpp"
#include "code_paths.hpp"
#include "level1_checks.hpp"

namespace {

using namespace tav::blas;  // the kernel types and each family's variants
using namespace tav::test;

using c8 = std::complex<float>;
using c16 = std::complex<double>;

// Each family's eight variants in path-id order; dotc of a real type is its dot.
template <class T>
struct family;
template <>
struct family<float> {
  static constexpr axpy_kernel<float>* axpy[8] = {TAV_PATH_VARIANTS(blas, xsaxpy)};
  static constexpr dot_kernel<float>* dot[8] = {TAV_PATH_VARIANTS(blas, xsdot)};
  static constexpr dot_kernel<float>* dotc[8] = {TAV_PATH_VARIANTS(blas, xsdot)};
  static constexpr scal_kernel<float>* scal[8] = {TAV_PATH_VARIANTS(blas, xsscal)};
};
template <>
struct family<double> {
  static constexpr axpy_kernel<double>* axpy[8] = {TAV_PATH_VARIANTS(blas, xdaxpy)};
  static constexpr dot_kernel<double>* dot[8] = {TAV_PATH_VARIANTS(blas, xddot)};
  static constexpr dot_kernel<double>* dotc[8] = {TAV_PATH_VARIANTS(blas, xddot)};
  static constexpr scal_kernel<double>* scal[8] = {TAV_PATH_VARIANTS(blas, xdscal)};
};
template <>
struct family<c8> {
  static constexpr axpy_kernel<float>* axpy[8] = {TAV_PATH_VARIANTS(blas, xcaxpy)};
  static constexpr dot_kernel<float>* dot[8] = {TAV_PATH_VARIANTS(blas, xcdotu)};
  static constexpr dot_kernel<float>* dotc[8] = {TAV_PATH_VARIANTS(blas, xcdotc)};
  static constexpr scal_kernel<float>* scal[8] = {TAV_PATH_VARIANTS(blas, xcscal)};
  static constexpr scal_kernel<float>* scal_real[8] = {TAV_PATH_VARIANTS(blas, xcsscal)};
};
template <>
struct family<c16> {
  static constexpr axpy_kernel<double>* axpy[8] = {TAV_PATH_VARIANTS(blas, xzaxpy)};
  static constexpr dot_kernel<double>* dot[8] = {TAV_PATH_VARIANTS(blas, xzdotu)};
  static constexpr dot_kernel<double>* dotc[8] = {TAV_PATH_VARIANTS(blas, xzdotc)};
  static constexpr scal_kernel<double>* scal[8] = {TAV_PATH_VARIANTS(blas, xzscal)};
  static constexpr scal_kernel<double>* scal_real[8] = {TAV_PATH_VARIANTS(blas, xzdscal)};
};

// Sizes around every register width and four-register step (up to 64 floats on AVX-512).
const int64_t sizes[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 127, 128, 129, 1000};
const std::pair<int64_t, int64_t> increments[] = {{1, 1}, {2, 1}, {1, 3}, {-1, -1}, {-1, 1},
                                                  {-3, 2}, {2, -2}, {0, 1}, {1, 0}};

class KernelPath : public path_test {
 protected:
  std::mt19937_64 rng{0x1e7e11u + static_cast<unsigned>(GetParam())};
};

template <class T>
void check_axpy_kernel(axpy_kernel<real_of<T>>* kernel, std::mt19937_64& rng) {
  auto call = [&](int64_t n, T alpha, const T* x, int64_t incx, T* y, int64_t incy) {
    kernel(n, as_reals(&alpha), as_reals(x), incx, as_reals(y), incy);
  };
  for (int64_t n : sizes)
    for (auto [incx, incy] : increments) ASSERT_EQ(check_axpy<T>(n, incx, incy, rng, call), "");
}

template <class T>
T call_dot(dot_kernel<real_of<T>>* kernel, int64_t n, const T* x, int64_t incx, const T* y,
           int64_t incy) {
  T result;
  kernel(as_reals(&result), n, as_reals(x), incx, as_reals(y), incy);
  return result;
}

template <class T>
void check_dot_kernel(dot_kernel<real_of<T>>* kernel, bool conjugate, std::mt19937_64& rng) {
  auto call = [&](int64_t n, const T* x, int64_t incx, const T* y, int64_t incy) {
    return call_dot(kernel, n, x, incx, y, incy);
  };
  for (int64_t n : sizes) {
    for (auto [incx, incy] : increments)
      ASSERT_EQ(check_dot<T>(n, incx, incy, conjugate, rng, call), "");
    // The order of additions depends on n alone: the same data one element further on in
    // memory (another alignment) gives the same bits.
    std::vector<T> x(n + 1), y(n + 1);
    for (int64_t i = 0; i <= n; ++i) x[i] = random_value<T>(rng), y[i] = random_value<T>(rng);
    const T here = call_dot(kernel, n, x.data(), 1, y.data(), 1);
    std::memmove(x.data() + 1, x.data(), n * sizeof(T));
    std::memmove(y.data() + 1, y.data(), n * sizeof(T));
    const T moved = call_dot(kernel, n, x.data() + 1, 1, y.data() + 1, 1);
    EXPECT_EQ(std::memcmp(&moved, &here, sizeof(T)), 0) << "n=" << n;
  }
}

template <class T, class A>
void check_scal_kernel(scal_kernel<real_of<T>>* kernel, std::mt19937_64& rng) {
  auto call = [&](int64_t n, A alpha, T* x, int64_t inc) { kernel(n, as_reals(&alpha), as_reals(x), inc); };
  for (int64_t n : sizes)
    for (int64_t inc : {1, 2, -1, -3, 0}) ASSERT_EQ((check_scal<T, A>(n, inc, rng, call)), "");
}

TEST_P(KernelPath, Axpy) {
  check_axpy_kernel<float>(family<float>::axpy[GetParam()], rng);
  check_axpy_kernel<double>(family<double>::axpy[GetParam()], rng);
  check_axpy_kernel<c8>(family<c8>::axpy[GetParam()], rng);
  check_axpy_kernel<c16>(family<c16>::axpy[GetParam()], rng);
}

TEST_P(KernelPath, Dot) {
  for (bool conjugate : {false, true}) {
    SCOPED_TRACE(conjugate ? "dotc" : "dotu");
    const int p = GetParam();
    check_dot_kernel<float>(conjugate ? family<float>::dotc[p] : family<float>::dot[p], conjugate, rng);
    check_dot_kernel<double>(conjugate ? family<double>::dotc[p] : family<double>::dot[p], conjugate, rng);
    check_dot_kernel<c8>(conjugate ? family<c8>::dotc[p] : family<c8>::dot[p], conjugate, rng);
    check_dot_kernel<c16>(conjugate ? family<c16>::dotc[p] : family<c16>::dot[p], conjugate, rng);
  }
}

TEST_P(KernelPath, Scal) {
  const int p = GetParam();
  check_scal_kernel<float, float>(family<float>::scal[p], rng);
  check_scal_kernel<double, double>(family<double>::scal[p], rng);
  check_scal_kernel<c8, c8>(family<c8>::scal[p], rng);
  check_scal_kernel<c16, c16>(family<c16>::scal[p], rng);
  check_scal_kernel<c8, float>(family<c8>::scal_real[p], rng);
  check_scal_kernel<c16, double>(family<c16>::scal_real[p], rng);
}

// IEEE special values pass through unchanged by the vector forms: scal multiplies (0·NaN and
// 0·Inf are NaN), axpy with a NaN alpha spreads NaN, dot sums Inf.
TEST_P(KernelPath, SpecialValues) {
  const int p = GetParam();
  const double inf = std::numeric_limits<double>::infinity();
  std::vector<double> x(37, 1.0), y(37, 2.0);
  x[5] = std::nan("");
  x[30] = inf;
  const double zero = 0, nan = std::nan("");
  family<double>::scal[p](37, &zero, x.data(), 1);
  for (int i = 0; i < 37; ++i)
    EXPECT_EQ(std::isnan(x[i]), i == 5 || i == 30) << i;
  family<double>::axpy[p](37, &nan, y.data(), 1, x.data(), 1);
  for (int i = 0; i < 37; ++i) EXPECT_TRUE(std::isnan(x[i])) << i;
  std::vector<double> ones(37, 1.0);
  y[36] = inf;
  double result = 0;
  family<double>::dot[p](&result, 37, ones.data(), 1, y.data(), 1);
  EXPECT_EQ(result, inf);
}

INSTANTIATE_TEST_SUITE_P(EveryPath, KernelPath, testing::Range(0, 8), path_name);

}  // namespace
