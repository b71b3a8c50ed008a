// symv and hemv against the long-double reference: both triangles, sizes around the 64-column
// diagonal blocks, strided and reversed vectors, NaN in the triangle that is not referenced and
// in the imaginary part of a Hermitian diagonal, and the beta = 0 and alpha = 0 rules.
#include <gtest/gtest.h>

#include "blas/blas_internal.hpp"
#include "level2_test_data.hpp"

namespace {

using namespace tav::test;
namespace ref = tav::test::level2_ref;

template <class T>
class Level2Symv : public testing::Test {};
TYPED_TEST_SUITE(Level2Symv, level2_types);

const int64_t orders[] = {0, 1, 2, 5, 63, 64, 65, 129, 300};

// A with random values in the triangle `uplo`, NaN in the other one and, for a Hermitian A,
// NaN in the imaginary part of the diagonal, which hemv must not read.
template <class T>
guarded_matrix<T> stored_triangle(bool hermitian, char uplo, int64_t n, std::mt19937_64& rng) {
  guarded_matrix<T> a(n, n, n + 1);
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < n; ++i) {
      const bool stored = uplo == 'U' ? i <= j : i >= j;
      a(i, j) = stored ? ref::random_value<T>(rng) : quiet_nan<T>();
      if constexpr (ref::is_complex<T>)
        if (hermitian && i == j) a(i, j).imag(quiet_nan<T>().imag());
    }
  return a;
}

template <class T>
void check_symmetric_mv(bool hermitian, char uplo, int64_t n, int64_t incx, int64_t incy, T alpha,
                        T beta, std::mt19937_64& rng) {
  SCOPED_TRACE(testing::Message() << (hermitian ? "hemv" : "symv") << " uplo " << uplo << " n " << n
                                  << " incx " << incx << " incy " << incy << " alpha " << alpha
                                  << " beta " << beta);
  const guarded_matrix<T> a = stored_triangle<T>(hermitian, uplo, n, rng);
  std::vector<T> x = ref::random_vector<T>(n, rng), y = ref::random_vector<T>(n, rng);
  if (beta == T(0))
    for (T& e : y) e = quiet_nan<T>();
  const ref::dense<T> full =
      ref::full_symmetric(hermitian && ref::is_complex<T>, uplo, n, a.data(), a.ld());
  const auto want = ref::gemv('N', n, n, alpha, full.data.data(), full.ld, x, beta, y);
  guarded_vector<T> gx = strided(x, incx), gy = strided(y, incy);
  if (hermitian)
    tav::blas::hemv<T>(uplo, n, alpha, a.data(), a.ld(), gx.data(), incx, beta, gy.data(), incy);
  else tav::blas::symv<T>(uplo, n, alpha, a.data(), a.ld(), gx.data(), incx, beta, gy.data(), incy);
  EXPECT_TRUE(gy.intact());
  EXPECT_LT(worst_ratio(gy, want, n + 1), ratio_limit);
}

TYPED_TEST(Level2Symv, MatchesReferenceForBothTriangles) {
  using T = TypeParam;
  std::mt19937_64 rng(41);
  for (bool hermitian : {false, true})
    for (char uplo : {'U', 'L'})
      for (int64_t n : orders)
        for (int64_t incx : increments)
          for (int64_t incy : {1, -2})
            check_symmetric_mv<T>(hermitian, uplo, n, incx, incy, ref::random_value<T>(rng),
                                  ref::random_value<T>(rng), rng);
}

TYPED_TEST(Level2Symv, BetaZeroAndAlphaZero) {
  using T = TypeParam;
  std::mt19937_64 rng(42);
  for (bool hermitian : {false, true})
    for (char uplo : {'U', 'L'})
      for (int64_t n : {1, 65}) {
        check_symmetric_mv<T>(hermitian, uplo, n, 2, -1, ref::random_value<T>(rng), T(0), rng);
        check_symmetric_mv<T>(hermitian, uplo, n, 1, 1, T(0), ref::random_value<T>(rng), rng);
      }
}

}  // namespace
