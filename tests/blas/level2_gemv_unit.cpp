// gemv for the four element types against the long-double reference: every transpose, sizes
// from 0 past the kernels' row blocks and the threading threshold, strided and reversed vectors,
// padded leading dimensions, the beta = 0 and alpha = 0 rules, the C entries, and results that
// do not depend on the thread count.
#include <gtest/gtest.h>
#include <tav/tav_threads.h>

#include <cstdio>
#include <cstring>

#include "blas/blas_internal.hpp"
#include "blas/level2/level2_entries.hpp"
#include "blas/level2/level2_kernels.hpp"
#include "child_process.hpp"
#include "level2_test_data.hpp"

namespace {

using namespace tav::test;
namespace ref = tav::test::level2_ref;

template <class T>
class Level2Gemv : public testing::Test {};
TYPED_TEST_SUITE(Level2Gemv, level2_types);

struct shape {
  int64_t m, n, extra;  // extra: lda - m
};

// Edges: empty, single, the kernels' pack widths and four-column groups, the 1024-row block,
// and 300 x 260 above the 64K-element threading threshold.
const shape shapes[] = {{0, 3, 0},   {3, 0, 1},    {1, 1, 0},    {1, 7, 0},   {7, 1, 2},
                        {5, 4, 3},   {17, 9, 1},   {33, 31, 0},  {64, 65, 5}, {130, 3, 0},
                        {3, 130, 0}, {1100, 6, 1}, {300, 260, 3}};

// The C entry of element type T.
template <class T>
constexpr auto gemv_entry() {
  if constexpr (std::is_same_v<T, float>) return &tav_blas_sgemv;
  else if constexpr (std::is_same_v<T, double>) return &tav_blas_dgemv;
  else if constexpr (std::is_same_v<T, std::complex<float>>) return &tav_blas_cgemv;
  else return &tav_blas_zgemv;
}

// Runs gemv (through the template or the C entry) and checks y against the reference and its
// guard bands. NaN in A or x (alpha = 0) or in y (beta = 0) must not reach the result.
template <class T>
void check_gemv(char trans, const shape& s, int64_t incx, int64_t incy, T alpha, T beta,
                bool through_entry, bool nan_in_ignored, std::mt19937_64& rng) {
  SCOPED_TRACE(testing::Message() << "trans " << trans << " m " << s.m << " n " << s.n << " lda +"
                                  << s.extra << " incx " << incx << " incy " << incy);
  const bool no_trans = trans == 'N' || trans == 'n';
  const int64_t len_x = no_trans ? s.n : s.m, len_y = no_trans ? s.m : s.n;
  guarded_matrix<T> a = random_matrix<T>(s.m, s.n, s.extra, rng);
  std::vector<T> x = ref::random_vector<T>(len_x, rng), y = ref::random_vector<T>(len_y, rng);
  // An empty product returns at once and keeps y as it was, NaN or not.
  nan_in_ignored = nan_in_ignored && s.m > 0 && s.n > 0;
  if (nan_in_ignored && alpha == T(0)) {
    for (int64_t j = 0; j < s.n; ++j)
      for (int64_t i = 0; i < s.m; ++i) a(i, j) = quiet_nan<T>();
    for (T& e : x) e = quiet_nan<T>();
  }
  if (nan_in_ignored && beta == T(0))
    for (T& e : y) e = quiet_nan<T>();
  const auto want =
      ref::gemv(static_cast<char>(trans & ~0x20), s.m, s.n, alpha, a.data(), a.ld(), x, beta, y);
  guarded_vector<T> gx = strided(x, incx), gy = strided(y, incy);
  if (through_entry) {
    const int64_t m = s.m, n = s.n, lda = a.ld();
    gemv_entry<T>()(&trans, &m, &n, &alpha, a.data(), &lda, gx.data(), &incx, &beta, gy.data(),
                    &incy);
  } else {
    tav::blas::gemv<T>(trans, s.m, s.n, alpha, a.data(), a.ld(), gx.data(), incx, beta, gy.data(),
                       incy);
  }
  EXPECT_TRUE(gy.intact());
  EXPECT_LT(worst_ratio(gy, want, len_x + 1), ratio_limit);
}

TYPED_TEST(Level2Gemv, MatchesReferenceForEveryTransposeAndIncrement) {
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

TYPED_TEST(Level2Gemv, BetaZeroIgnoresNanInY) {
  using T = TypeParam;
  std::mt19937_64 rng(12);
  for (const shape& s : shapes)
    for (char trans : {'N', 'T', 'C'})
      check_gemv<T>(trans, s, 1, -2, ref::random_value<T>(rng), T(0), false, true, rng);
}

TYPED_TEST(Level2Gemv, AlphaZeroIgnoresNanInAAndX) {
  using T = TypeParam;
  std::mt19937_64 rng(13);
  for (const shape& s : shapes)
    for (char trans : {'N', 'T', 'C'})
      for (T beta : {T(0), T(1), ref::random_value<T>(rng)})
        check_gemv<T>(trans, s, 2, 1, T(0), beta, false, true, rng);
}

TYPED_TEST(Level2Gemv, CEntryTakesEitherCase) {
  using T = TypeParam;
  std::mt19937_64 rng(14);
  for (const shape& s : {shapes[5], shapes[7], shapes[12]})
    for (char trans : {'n', 't', 'c', 'N'})
      check_gemv<T>(trans, s, -1, 2, ref::random_value<T>(rng), ref::random_value<T>(rng), true,
                    false, rng);
}

// Rows ('N') or columns ('T') split among threads leave every element's summation order alone,
// so one and two threads agree bit for bit.
TYPED_TEST(Level2Gemv, ThreadCountDoesNotChangeTheResult) {
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
  const int64_t m = 37, n = 29;
  guarded_matrix<T> a = random_matrix<T>(m, n, 2, rng);
  bool ok = true;
  for (char trans : {'N', 'C'}) {
    const int64_t len_x = trans == 'N' ? n : m, len_y = trans == 'N' ? m : n;
    const std::vector<T> x = ref::random_vector<T>(len_x, rng),
                         y = ref::random_vector<T>(len_y, rng);
    const T alpha = ref::random_value<T>(rng), beta = ref::random_value<T>(rng);
    const auto want = ref::gemv(trans, m, n, alpha, a.data(), a.ld(), x, beta, y);
    guarded_vector<T> gx = strided(x, -2), gy = strided(y, 1);
    tav::blas::gemv<T>(trans, m, n, alpha, a.data(), a.ld(), gx.data(), -2, beta, gy.data(), 1);
    ok = ok && gy.intact() && worst_ratio(gy, want, len_x + 1) < ratio_limit;
  }
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
  std::printf("%s %s\n", id < 8 ? path_names[id] : "none", ok ? "ok" : "wrong");
}

// The library's CPU type, forced in a child process, picks each kernel this processor runs.
TEST(Level2GemvDispatch, EveryRunnablePathServesTheDrivers) {
  for (int id : runnable_paths()) {
    // Types 0 to 2 take cnr_def under the reproducibility setting AUTO.
    env_list env{{"TAV_DEBUG_CPU_TYPE", std::to_string(id == 1 ? 0 : id)}};
    if (id == 1) env.emplace_back("TAV_CBWR", "AUTO");
    const child_result r = run_child("gemv_on_forced_path", env);
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, std::string(path_names[id]) + " ok\n");
  }
}

}  // namespace
