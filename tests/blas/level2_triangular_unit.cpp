// trmv and trsv against the long-double reference for every uplo, trans and diag: sizes around
// the 64-column diagonal blocks, strided and reversed x, NaN in the triangle that is not
// referenced (and on a unit diagonal), which must not reach the result. trsv is checked by its
// residual, op(A)·x - b, which a backward-stable solve keeps at the rounding level of |A|·|x|.
#include <gtest/gtest.h>

#include "blas/blas_internal.hpp"
#include "level2_test_data.hpp"

namespace {

using namespace tav::test;
namespace ref = tav::test::level2_ref;

template <class T>
class Level2Triangular : public testing::Test {};
TYPED_TEST_SUITE(Level2Triangular, level2_types);

const int64_t orders[] = {0, 1, 2, 5, 63, 64, 65, 129, 200};

// The triangle `uplo` holds off-diagonal values of size 1/n and a diagonal near 2, so op(A) is
// well conditioned; the other triangle, and a unit diagonal, hold NaN.
template <class T>
guarded_matrix<T> triangular(char uplo, char diag, int64_t n, std::mt19937_64& rng) {
  guarded_matrix<T> a(n, n, n + 3);
  using R = typename ref::real_of<T>::type;
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < n; ++i) {
      const bool stored = uplo == 'U' ? i < j : i > j;
      if (i == j) a(i, j) = diag == 'U' ? quiet_nan<T>() : ref::random_value<T>(rng) + T(R(2));
      else a(i, j) = stored ? ref::random_value<T>(rng) / T(R(n)) : quiet_nan<T>();
    }
  return a;
}

enum class routine { trmv, trsv };

template <class T>
void check_triangular(routine r, char uplo, char trans, char diag, int64_t n, int64_t incx,
                      std::mt19937_64& rng) {
  SCOPED_TRACE(testing::Message() << (r == routine::trmv ? "trmv " : "trsv ") << uplo << trans
                                  << diag << " n " << n << " incx " << incx);
  const guarded_matrix<T> a = triangular<T>(uplo, diag, n, rng);
  const ref::dense<T> full = ref::full_triangular(uplo, diag, n, a.data(), a.ld());
  const std::vector<T> b = ref::random_vector<T>(n, rng);
  guarded_vector<T> gx = strided(b, incx);
  if (r == routine::trmv)
    tav::blas::trmv<T>(uplo, trans, diag, n, a.data(), a.ld(), gx.data(), incx);
  else tav::blas::trsv<T>(uplo, trans, diag, n, a.data(), a.ld(), gx.data(), incx);
  EXPECT_TRUE(gx.intact());
  std::vector<T> x(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) x[static_cast<size_t>(i)] = gx[i];
  long double worst = 0;
  if (r == routine::trmv) {
    // x = op(A)·b
    const auto want = ref::gemv(trans, n, n, T(1), full.data.data(), full.ld, b, T(0), b);
    worst = worst_ratio(gx, want, n + 1);
  } else {
    // op(A)·x - b = 0 up to rounding
    const auto residual = ref::gemv(trans, n, n, T(1), full.data.data(), full.ld, x, T(-1), b);
    for (const auto& v : residual) {
      const long double e = ref::error_ratio(T(0), v, n + 1);
      if (!(e <= worst)) worst = e;
      if (std::isnan(e)) break;
    }
  }
  EXPECT_LT(worst, ratio_limit);
}

TYPED_TEST(Level2Triangular, ProductMatchesReference) {
  std::mt19937_64 rng(51);
  for (char uplo : {'U', 'L'})
    for (char trans : {'N', 'T', 'C'})
      for (char diag : {'N', 'U'})
        for (int64_t n : orders)
          for (int64_t incx : increments)
            check_triangular<TypeParam>(routine::trmv, uplo, trans, diag, n, incx, rng);
}

TYPED_TEST(Level2Triangular, SolveLeavesRoundingLevelResidual) {
  std::mt19937_64 rng(52);
  for (char uplo : {'U', 'L'})
    for (char trans : {'N', 'T', 'C'})
      for (char diag : {'N', 'U'})
        for (int64_t n : orders)
          for (int64_t incx : increments)
            check_triangular<TypeParam>(routine::trsv, uplo, trans, diag, n, incx, rng);
}

}  // namespace
