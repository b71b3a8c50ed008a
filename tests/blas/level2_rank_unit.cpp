// Rank-1 and rank-2 updates against the long-double reference: ger, gerc and the GEMM k = 1
// entries (with beta = 0 over NaN and alpha = 0), and syr2/her2, which must leave the other
// triangle, filled with NaN, untouched and keep a Hermitian diagonal real.
#include <gtest/gtest.h>

#include <cstring>

#include "blas/blas_internal.hpp"
#include "blas/level2/level2_entries.hpp"
#include "level2_test_data.hpp"

namespace {

using namespace tav::test;
namespace ref = tav::test::level2_ref;

template <class T>
class Level2Rank : public testing::Test {};
TYPED_TEST_SUITE(Level2Rank, level2_types);

template <class T>
constexpr auto gemmger_entry() {
  if constexpr (std::is_same_v<T, float>) return &tav_blas_sgemmger;
  else if constexpr (std::is_same_v<T, double>) return &tav_blas_dgemmger;
  else if constexpr (std::is_same_v<T, std::complex<float>>) return &tav_blas_cgemmger;
  else return &tav_blas_zgemmger;
}

// Sizes from empty to past the 64K-element threading threshold.
const std::pair<int64_t, int64_t> shapes[] = {{0, 4}, {4, 0}, {1, 1}, {7, 3}, {33, 17}, {300, 250}};

enum class rank1_form { ger, gerc, gemmger };

TYPED_TEST(Level2Rank, RankOneMatchesReference) {
  using T = TypeParam;
  std::mt19937_64 rng(31);
  for (auto [m, n] : shapes)
    for (int64_t incx : increments)
      for (int64_t incy : {1, -3})
        for (rank1_form form : {rank1_form::ger, rank1_form::gerc, rank1_form::gemmger}) {
          const bool with_beta = form == rank1_form::gemmger;
          for (T beta :
               with_beta ? std::vector<T>{T(0), ref::random_value<T>(rng)} : std::vector<T>{T(1)})
            for (T alpha : {ref::random_value<T>(rng), T(0)}) {
              SCOPED_TRACE(testing::Message()
                           << "form " << int(form) << " m " << m << " n " << n << " incx " << incx
                           << " incy " << incy << " alpha " << alpha << " beta " << beta);
              guarded_matrix<T> a = random_matrix<T>(m, n, 1, rng);
              std::vector<T> x = ref::random_vector<T>(m, rng), y = ref::random_vector<T>(n, rng);
              // beta = 0 does not read C; alpha = 0 reads neither x nor y.
              if (beta == T(0))
                for (int64_t j = 0; j < n; ++j)
                  for (int64_t i = 0; i < m; ++i) a(i, j) = quiet_nan<T>();
              if (alpha == T(0)) {
                for (T& e : x) e = quiet_nan<T>();
                for (T& e : y) e = quiet_nan<T>();
              }
              const bool conj = form == rank1_form::gerc && ref::is_complex<T>;
              const auto want = ref::rank_update(
                  conj, m, n, alpha, alpha == T(0) ? std::vector<T>(m) : x,
                  alpha == T(0) ? std::vector<T>(n) : y, T(0), {}, {}, beta, a.data(), a.ld());
              guarded_vector<T> gx = strided(x, incx), gy = strided(y, incy);
              if (form == rank1_form::ger)
                tav::blas::ger<T>(m, n, alpha, gx.data(), incx, gy.data(), incy, a.data(), a.ld());
              else if (form == rank1_form::gerc)
                tav::blas::gerc<T>(m, n, alpha, gx.data(), incx, gy.data(), incy, a.data(), a.ld());
              else {
                const int64_t lda = a.ld();
                gemmger_entry<T>()(&m, &n, &alpha, gx.data(), &incx, gy.data(), &incy, &beta,
                                   a.data(), &lda);
              }
              EXPECT_TRUE(a.intact());
              EXPECT_LT(worst_ratio(a, want, 4), ratio_limit);
            }
        }
}

// A with random values in the triangle `uplo` (a Hermitian diagonal with a non-zero imaginary
// part, which the routines must not keep) and NaN in the other one.
template <class T>
guarded_matrix<T> triangle_matrix(char uplo, int64_t n, std::mt19937_64& rng) {
  guarded_matrix<T> a(n, n, n + 2);
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < n; ++i) {
      const bool stored = uplo == 'U' ? i <= j : i >= j;
      a(i, j) = stored ? ref::random_value<T>(rng) : quiet_nan<T>();
    }
  return a;
}

template <class T>
bool same_bits(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

// Sizes around the 64-column diagonal blocks.
const int64_t orders[] = {0, 1, 2, 5, 63, 64, 65, 150};

TYPED_TEST(Level2Rank, SymmetricRankTwoUpdatesOnlyItsTriangle) {
  using T = TypeParam;
  std::mt19937_64 rng(32);
  for (bool hermitian : {false, true})
    for (char uplo : {'U', 'L'})
      for (int64_t n : orders)
        for (auto [incx, incy] : {std::pair<int64_t, int64_t>{1, 1}, {2, -1}, {-2, 2}, {-1, -2}}) {
          SCOPED_TRACE(testing::Message() << (hermitian ? "her2" : "syr2") << " uplo " << uplo
                                          << " n " << n << " incx " << incx << " incy " << incy);
          guarded_matrix<T> a = triangle_matrix<T>(uplo, n, rng);
          const guarded_matrix<T> before = a;
          const std::vector<T> x = ref::random_vector<T>(n, rng), y = ref::random_vector<T>(n, rng);
          const T alpha = ref::random_value<T>(rng);
          const bool conj = hermitian && ref::is_complex<T>;
          const T alpha2 = ref::conj_if(alpha, conj);
          // The reference reads the full matrix: give it the stored triangle and zeros elsewhere.
          guarded_matrix<T> stored = a;
          for (int64_t j = 0; j < n; ++j)
            for (int64_t i = 0; i < n; ++i)
              if (conj && i == j) stored(i, j) = T(std::real(a(i, j)));
              else if (uplo == 'U' ? i > j : i < j) stored(i, j) = T(0);
          const auto want = ref::rank_update(conj, n, n, alpha, x, y, alpha2, y, x, T(1),
                                             stored.data(), stored.ld());
          guarded_vector<T> gx = strided(x, incx), gy = strided(y, incy);
          if (hermitian)
            tav::blas::her2<T>(uplo, n, alpha, gx.data(), incx, gy.data(), incy, a.data(), a.ld());
          else
            tav::blas::syr2<T>(uplo, n, alpha, gx.data(), incx, gy.data(), incy, a.data(), a.ld());
          EXPECT_TRUE(a.intact());
          const auto other = [uplo](int64_t i, int64_t j) { return uplo == 'U' ? i > j : i < j; };
          EXPECT_LT(worst_ratio(a, want, 5, other), ratio_limit);
          bool untouched = true, real_diagonal = true;
          for (int64_t j = 0; j < n; ++j)
            for (int64_t i = 0; i < n; ++i) {
              if (other(i, j)) untouched = untouched && same_bits(a(i, j), before(i, j));
              if (conj && i == j) real_diagonal = real_diagonal && std::imag(a(i, j)) == 0;
            }
          EXPECT_TRUE(untouched);
          EXPECT_TRUE(real_diagonal);
        }
}

}  // namespace
