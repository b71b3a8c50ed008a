// The level-2 routines for the four types against the long-double reference, with NaN wherever a
// routine must not read (other triangle, unit diagonal, ignored operands under zero scalars).
#include <gtest/gtest.h>
#include <tav/tav_threads.h>

#include <cstdio>
#include <cstring>

#include "blas/blas_internal.hpp"
#include "blas/level2/level2_entries.hpp"
#include "blas/level2/level2_kernels.hpp"
#include "child_process.hpp"
#include "blas_test_data.hpp"

namespace {

using namespace tav::test;
namespace ref = tav::test;

template <class T>
class Level2Routines : public testing::Test {};
TYPED_TEST_SUITE(Level2Routines, element_types);

// Orders around the 64-column diagonal blocks.
const int64_t orders[] = {0, 1, 2, 5, 63, 64, 65, 129, 300};

struct shape {
  int64_t m, n, extra;  // extra: lda - m
};

// Edges: empty, single, the kernels' pack widths and four-column groups, the 1024-row block,
// and 300 x 260 above the 64K-element threading threshold.
const shape shapes[] = {{0, 3, 0},   {3, 0, 1},    {1, 1, 0},    {1, 7, 0},   {7, 1, 2},
                        {5, 4, 3},   {17, 9, 1},   {33, 31, 0},  {64, 65, 5}, {130, 3, 0},
                        {3, 130, 0}, {1100, 6, 1}, {300, 260, 3}};

// The C entries of element type T.
template <class T>
constexpr auto gemv_entry() {
  return by_type<T>(&tav_blas_sgemv, &tav_blas_dgemv, &tav_blas_cgemv, &tav_blas_zgemv);
}
template <class T>
constexpr auto gemmger_entry() {
  return by_type<T>(&tav_blas_sgemmger, &tav_blas_dgemmger, &tav_blas_cgemmger, &tav_blas_zgemmger);
}

// Runs gemv (through the template or the C entry) and returns the worst error ratio of y, infinite
// when a guard band changed. NaN in A or x (alpha = 0) or in y (beta = 0) must not reach the
// result.
template <class T>
long double gemv_error(char trans, const shape& s, int64_t incx, int64_t incy, T alpha, T beta,
                       bool through_entry, bool nan_in_ignored, std::mt19937_64& rng) {
  const bool no_trans = trans == 'N' || trans == 'n';
  const int64_t len_x = no_trans ? s.n : s.m, len_y = no_trans ? s.m : s.n;
  guarded_matrix<T> a = random_matrix<T>(s.m, s.n, s.extra, rng);
  std::vector<T> x = ref::random_vector<T>(len_x, rng), y = ref::random_vector<T>(len_y, rng);
  // An empty product returns at once and keeps y as it was, NaN or not.
  nan_in_ignored = nan_in_ignored && s.m > 0 && s.n > 0;
  if (nan_in_ignored && alpha == T(0)) {
    for (int64_t j = 0; j < s.n; ++j)
      for (int64_t i = 0; i < s.m; ++i) a(i, j) = nan_value<T>();
    for (T& e : x) e = nan_value<T>();
  }
  if (nan_in_ignored && beta == T(0))
    for (T& e : y) e = nan_value<T>();
  const auto want = reference_gemv(trans, s.m, s.n, alpha, a.data(), a.ld(), x, beta, y);
  guarded_vector<T> gx = strided(x, incx), gy = strided(y, incy);
  if (through_entry) {
    const int64_t m = s.m, n = s.n, lda = a.ld();
    gemv_entry<T>()(&trans, &m, &n, &alpha, a.data(), &lda, gx.data(), &incx, &beta, gy.data(),
                    &incy);
  } else {
    tav::blas::gemv<T>(trans, s.m, s.n, alpha, a.data(), a.ld(), gx.data(), incx, beta, gy.data(),
                       incy);
  }
  return gy.intact() ? worst_ratio(gy, want, len_x + 1) : INFINITY;
}

template <class T>
void check_gemv(char trans, const shape& s, int64_t incx, int64_t incy, T alpha, T beta,
                bool through_entry, bool nan_in_ignored, std::mt19937_64& rng) {
  EXPECT_LT(gemv_error(trans, s, incx, incy, alpha, beta, through_entry, nan_in_ignored, rng),
            ratio_limit)
      << "trans " << trans << " m " << s.m << " n " << s.n << " lda +" << s.extra << " incx "
      << incx << " incy " << incy;
}

TYPED_TEST(Level2Routines, GemvMatchesReferenceForEveryTransposeAndIncrement) {
  using T = TypeParam;
  std::mt19937_64 rng(11);
  for (const shape& s : shapes)
    for (char trans : {'N', 'T', 'C'})
      for (int64_t incx : increments)
        for (int64_t incy : increments) {
          const T alpha = ref::random_value<T>(rng), beta = ref::random_value<T>(rng);
          check_gemv<T>(trans, s, incx, incy, alpha, beta, false, false, rng);
        }
}

// beta = 0 ignores NaN in y; alpha = 0 ignores NaN in A and x, whatever beta is.
TYPED_TEST(Level2Routines, GemvZeroScalarsIgnoreNan) {
  using T = TypeParam;
  std::mt19937_64 rng(12);
  for (const shape& s : shapes)
    for (char trans : {'N', 'T', 'C'}) {
      check_gemv<T>(trans, s, 1, -2, ref::random_value<T>(rng), T(0), false, true, rng);
      for (T beta : {T(0), T(1), ref::random_value<T>(rng)})
        check_gemv<T>(trans, s, 2, 1, T(0), beta, false, true, rng);
    }
}

TYPED_TEST(Level2Routines, GemvCEntryTakesEitherCase) {
  using T = TypeParam;
  std::mt19937_64 rng(14);
  for (const shape& s : {shapes[5], shapes[7], shapes[12]})
    for (char trans : {'n', 't', 'c', 'N'})
      check_gemv<T>(trans, s, -1, 2, ref::random_value<T>(rng), ref::random_value<T>(rng), true,
                    false, rng);
}

// Rows ('N') or columns ('T') split among threads leave every element's summation order alone,
// so one and two threads agree bit for bit.
TYPED_TEST(Level2Routines, GemvThreadCountDoesNotChangeTheResult) {
  using T = TypeParam;
  std::mt19937_64 rng(15);
  const int64_t m = 700, n = 500;
  guarded_matrix<T> a = random_matrix<T>(m, n, 1, rng);
  for (char trans : {'N', 'C'}) {
    const int64_t len_x = trans == 'N' ? n : m, len_y = trans == 'N' ? m : n;
    const std::vector<T> x = ref::random_vector<T>(len_x, rng),
                         y = ref::random_vector<T>(len_y, rng);
    const T alpha = ref::random_value<T>(rng), beta = ref::random_value<T>(rng);
    std::vector<std::vector<T>> results;
    for (int threads : {1, 2}) {
      const int previous = tav_serv_set_num_threads_local(threads);
      std::vector<T> out = y;
      tav::blas::gemv<T>(trans, m, n, alpha, a.data(), a.ld(), x.data(), 1, beta, out.data(), 1);
      tav_serv_set_num_threads_local(previous);
      results.push_back(out);
    }
    EXPECT_EQ(0, std::memcmp(results[0].data(), results[1].data(), sizeof(T) * results[0].size()))
        << trans;
  }
}

// gemv 'N' and 'C' through the dispatch slots, without GoogleTest (it runs in a child): true
// when every element is within the ratio limit.
template <class T>
bool gemv_passes(std::mt19937_64& rng) {
  bool ok = true;
  for (char trans : {'N', 'C'})
    ok = gemv_error(trans, {37, 29, 2}, -2, 1, ref::random_value<T>(rng), ref::random_value<T>(rng),
                    false, false, rng) < ratio_limit && ok;
  return ok;
}

// Prints the path whose kernel the double 'N' slot took, and whether the products passed.
TAV_SCENARIO(gemv_on_forced_path) {
  std::mt19937_64 rng(16);
  const bool ok = gemv_passes<double>(rng) && gemv_passes<std::complex<float>>(rng);
  using namespace tav::blas;
  gemv_n_fn<double>* const variants[8] = {TAV_PATH_VARIANTS(blas, xdgemv_n)};
  const auto chosen = xdgemv_n_dispatch.target();
  int id = 0;
  while (id < 8 && variants[id] != chosen) ++id;
  std::printf("%s %s\n", id < 8 ? path_tags[id] : "none", ok ? "ok" : "wrong");
}

// The library's CPU type, forced in a child process, picks each kernel this processor runs.
TEST(Level2GemvDispatch, EveryRunnablePathServesTheDrivers) {
  for (int id : runnable_paths()) {
    // Types 0 to 2 take cnr_def under the reproducibility setting AUTO.
    env_list env{{"TAV_DEBUG_CPU_TYPE", std::to_string(id == 1 ? 0 : id)}};
    if (id == 1) env.emplace_back("TAV_CBWR", "AUTO");
    const child_result r = run_child("gemv_on_forced_path", env);
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, std::string(path_tags[id]) + " ok\n");
  }
}

// A with random values in the triangle `uplo`, NaN in the other one and, with `nan_imaginary`
// (for hemv, which must not read it), NaN in the imaginary part of the diagonal.
template <class T>
guarded_matrix<T> stored_triangle(bool nan_imaginary, char uplo, int64_t n, std::mt19937_64& rng) {
  guarded_matrix<T> a(n, n, n + 1);
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < n; ++i) {
      const bool stored = uplo == 'U' ? i <= j : i >= j;
      a(i, j) = stored ? ref::random_value<T>(rng) : nan_value<T>();
      if constexpr (complex_v<T>)
        if (nan_imaginary && i == j) a(i, j).imag(nan_value<T>().imag());
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
    for (T& e : y) e = nan_value<T>();
  const ref::dense<T> full =
      ref::full_symmetric(hermitian && complex_v<T>, uplo, n, a.data(), a.ld());
  const auto want = reference_gemv('N', n, n, alpha, full.data.data(), full.ld, x, beta, y);
  guarded_vector<T> gx = strided(x, incx), gy = strided(y, incy);
  if (hermitian)
    tav::blas::hemv<T>(uplo, n, alpha, a.data(), a.ld(), gx.data(), incx, beta, gy.data(), incy);
  else tav::blas::symv<T>(uplo, n, alpha, a.data(), a.ld(), gx.data(), incx, beta, gy.data(), incy);
  EXPECT_TRUE(gy.intact());
  EXPECT_LT(worst_ratio(gy, want, n + 1), ratio_limit);
}

// Random scalars over every size and increment; then beta = 0 (y all NaN) and alpha = 0.
TYPED_TEST(Level2Routines, SymvAndHemvMatchReference) {
  using T = TypeParam;
  std::mt19937_64 rng(41);
  for (bool hermitian : {false, true})
    for (char uplo : {'U', 'L'}) {
      for (int64_t n : orders)
        for (int64_t incx : increments)
          for (int64_t incy : {1, -2})
            check_symmetric_mv<T>(hermitian, uplo, n, incx, incy, ref::random_value<T>(rng),
                                  ref::random_value<T>(rng), rng);
      for (int64_t n : {1, 65}) {
        check_symmetric_mv<T>(hermitian, uplo, n, 2, -1, ref::random_value<T>(rng), T(0), rng);
        check_symmetric_mv<T>(hermitian, uplo, n, 1, 1, T(0), ref::random_value<T>(rng), rng);
      }
    }
}

enum class routine { trmv, trsv };

template <class T>
void check_triangular(routine r, char uplo, char trans, char diag, int64_t n, int64_t incx,
                      std::mt19937_64& rng) {
  SCOPED_TRACE(testing::Message() << (r == routine::trmv ? "trmv " : "trsv ") << uplo << trans
                                  << diag << " n " << n << " incx " << incx);
  // Well conditioned, NaN wherever the routines must not read (blas_test_data.hpp).
  const int64_t lda = n + 3;
  const std::vector<T> a = triangular_matrix<T>(rng, uplo, diag, n, lda);
  const ref::dense<T> full = ref::full_triangular(uplo, diag, n, a.data(), lda);
  const std::vector<T> b = ref::random_vector<T>(n, rng);
  guarded_vector<T> gx = strided(b, incx);
  if (r == routine::trmv)
    tav::blas::trmv<T>(uplo, trans, diag, n, a.data(), lda, gx.data(), incx);
  else tav::blas::trsv<T>(uplo, trans, diag, n, a.data(), lda, gx.data(), incx);
  EXPECT_TRUE(gx.intact());
  std::vector<T> x(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) x[static_cast<size_t>(i)] = gx[i];
  long double worst = 0;
  if (r == routine::trmv) {
    // x = op(A)·b
    const auto want = reference_gemv(trans, n, n, T(1), full.data.data(), full.ld, b, T(0), b);
    worst = worst_ratio(gx, want, n + 1);
  } else {
    // op(A)·x - b = 0 up to rounding
    const auto residual = reference_gemv(trans, n, n, T(1), full.data.data(), full.ld, x, T(-1), b);
    for (const auto& v : residual) {
      const long double e = error_ratio(T(0), v, n + 1);
      if (!(e <= worst)) worst = e;
      if (std::isnan(e)) break;
    }
  }
  EXPECT_LT(worst, ratio_limit);
}

TYPED_TEST(Level2Routines, TrmvMatchesAndTrsvLeavesRoundingLevelResidual) {
  std::mt19937_64 rng(51);
  for (routine r : {routine::trmv, routine::trsv})
    for (char uplo : {'U', 'L'})
      for (char trans : {'N', 'T', 'C'})
        for (char diag : {'N', 'U'})
          for (int64_t n : orders)
            for (int64_t incx : increments)
              check_triangular<TypeParam>(r, uplo, trans, diag, n, incx, rng);
}

// Sizes from empty to past the 64K-element threading threshold.
const std::pair<int64_t, int64_t> rank_shapes[] = {{0, 4},   {4, 0},   {1, 1},
                                                   {7, 3},   {33, 17}, {300, 250}};

enum class rank1_form { ger, gerc, gemmger };

TYPED_TEST(Level2Routines, RankOneMatchesReference) {
  using T = TypeParam;
  std::mt19937_64 rng(31);
  for (auto [m, n] : rank_shapes)
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
                  for (int64_t i = 0; i < m; ++i) a(i, j) = nan_value<T>();
              if (alpha == T(0)) {
                for (T& e : x) e = nan_value<T>();
                for (T& e : y) e = nan_value<T>();
              }
              const bool conj = form == rank1_form::gerc && complex_v<T>;
              const auto want = reference_ger(
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

TYPED_TEST(Level2Routines, SymmetricRankTwoUpdatesOnlyItsTriangle) {
  using T = TypeParam;
  std::mt19937_64 rng(32);
  for (bool hermitian : {false, true})
    for (char uplo : {'U', 'L'})
      for (int64_t n : orders)
        for (auto [incx, incy] : {std::pair<int64_t, int64_t>{1, 1}, {2, -1}, {-2, 2}, {-1, -2}}) {
          SCOPED_TRACE(testing::Message() << (hermitian ? "her2" : "syr2") << " uplo " << uplo
                                          << " n " << n << " incx " << incx << " incy " << incy);
          // A non-zero imaginary part on a Hermitian diagonal, which her2 must not keep.
          guarded_matrix<T> a = stored_triangle<T>(false, uplo, n, rng);
          const guarded_matrix<T> before = a;
          const std::vector<T> x = ref::random_vector<T>(n, rng), y = ref::random_vector<T>(n, rng);
          const T alpha = ref::random_value<T>(rng);
          const bool conj = hermitian && complex_v<T>;
          const T alpha2 = ref::conj_if(alpha, conj);
          // The reference reads the full matrix: give it the stored triangle and zeros elsewhere.
          guarded_matrix<T> stored = a;
          for (int64_t j = 0; j < n; ++j)
            for (int64_t i = 0; i < n; ++i)
              if (conj && i == j) stored(i, j) = T(std::real(a(i, j)));
              else if (uplo == 'U' ? i > j : i < j) stored(i, j) = T(0);
          const auto want = reference_ger(conj, n, n, alpha, x, y, alpha2, y, x, T(1),
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

struct swap_case {
  int64_t m, n, k1, k2, incx;
};

const swap_case swap_cases[] = {{1, 1, 1, 1, 1},   {5, 3, 1, 5, 1},    {9, 31, 2, 7, 1},
                           {9, 32, 2, 7, -1}, {40, 33, 3, 40, 2}, {40, 65, 1, 39, -2},
                           {12, 0, 1, 12, 1}, {12, 4, 5, 4, 1},   {12, 4, 1, 12, 0}};

// Pivots as getrf leaves them: row i swaps with some row p >= i, stored at 1-based position
// k1 + (i - k1)·|incx|; unused positions hold an out-of-range row to catch a wrong walk.
std::vector<int64_t> random_pivots(const swap_case& c, std::mt19937_64& rng) {
  const int64_t step = c.incx > 0 ? c.incx : (c.incx < 0 ? -c.incx : 1);
  std::vector<int64_t> ipiv(static_cast<size_t>(c.k1 + (c.m - c.k1 + 1) * step), c.m + 100);
  for (int64_t i = c.k1; i <= c.k2; ++i) {
    std::uniform_int_distribution<int64_t> pick(i, c.m);
    ipiv[static_cast<size_t>(c.k1 - 1 + (i - c.k1) * step)] = pick(rng);
  }
  return ipiv;
}

TYPED_TEST(Level2Routines, LaswpMatchesInterchangesOneByOne) {
  using T = TypeParam;
  std::mt19937_64 rng(61);
  for (const swap_case& c : swap_cases) {
    SCOPED_TRACE(testing::Message() << "m " << c.m << " n " << c.n << " k1 " << c.k1 << " k2 "
                                    << c.k2 << " incx " << c.incx);
    guarded_matrix<T> a = random_matrix<T>(c.m, c.n, 2, rng);
    const std::vector<int64_t> ipiv = random_pivots(c, rng);
    ref::dense<T> before{c.m, c.n, a.ld(), std::vector<T>(a.data(), a.data() + a.ld() * c.n)};
    const ref::dense<T> want =
        c.incx == 0 || c.k2 < c.k1 ? before : ref::swap_rows(before, c.k1, c.k2, ipiv, c.incx);
    tav::blas::laswp<T>(c.n, a.data(), a.ld(), c.k1, c.k2, ipiv.data(), c.incx);
    EXPECT_TRUE(a.intact());
    bool equal = true;
    for (int64_t j = 0; j < c.n; ++j)
      for (int64_t i = 0; i < c.m; ++i) equal = equal && same_bits(a(i, j), want(i, j));
    EXPECT_TRUE(equal);
  }
}

TYPED_TEST(Level2Routines, LaswpBackwardUndoesForward) {
  using T = TypeParam;
  std::mt19937_64 rng(62);
  const swap_case c{70, 45, 1, 70, 1};
  guarded_matrix<T> a = random_matrix<T>(c.m, c.n, 0, rng);
  const guarded_matrix<T> original = a;
  const std::vector<int64_t> ipiv = random_pivots(c, rng);
  tav::blas::laswp<T>(c.n, a.data(), a.ld(), c.k1, c.k2, ipiv.data(), 1);
  tav::blas::laswp<T>(c.n, a.data(), a.ld(), c.k1, c.k2, ipiv.data(), -1);
  bool equal = true;
  for (int64_t j = 0; j < c.n; ++j)
    for (int64_t i = 0; i < c.m; ++i) equal = equal && same_bits(a(i, j), original(i, j));
  EXPECT_TRUE(equal);
}

}  // namespace
