// The per-path level-2 kernels (gemv 'N', 'T'/'C', rank-1 update with beta) on every path this
// processor runs, against the long-double reference.
#include <gtest/gtest.h>

#include "blas/level2/level2_kernels.hpp"
#include "blas_test_data.hpp"

namespace {

using namespace tav::test;
namespace ref = tav::test;
// The per-path entries, declared with the dispatch slots in tav::blas.
using namespace tav::blas;

template <class T>
struct path_kernels;

template <>
struct path_kernels<float> {
  static constexpr gemv_n_fn<float>* gemv_n[8] = {TAV_PATH_VARIANTS(blas, xsgemv_n)};
  static constexpr gemv_t_fn<float>* gemv_t[8] = {TAV_PATH_VARIANTS(blas, xsgemv_t)};
  static constexpr rank1_fn<float>* rank1[8] = {TAV_PATH_VARIANTS(blas, xsger)};
};

template <>
struct path_kernels<double> {
  static constexpr gemv_n_fn<double>* gemv_n[8] = {TAV_PATH_VARIANTS(blas, xdgemv_n)};
  static constexpr gemv_t_fn<double>* gemv_t[8] = {TAV_PATH_VARIANTS(blas, xdgemv_t)};
  static constexpr rank1_fn<double>* rank1[8] = {TAV_PATH_VARIANTS(blas, xdger)};
};

template <>
struct path_kernels<std::complex<float>> {
  static constexpr gemv_n_fn<float>* gemv_n[8] = {TAV_PATH_VARIANTS(blas, xcgemv_n)};
  static constexpr gemv_t_fn<float>* gemv_t[8] = {TAV_PATH_VARIANTS(blas, xcgemv_t)};
  static constexpr rank1_fn<float>* rank1[8] = {TAV_PATH_VARIANTS(blas, xcger)};
};

template <>
struct path_kernels<std::complex<double>> {
  static constexpr gemv_n_fn<double>* gemv_n[8] = {TAV_PATH_VARIANTS(blas, xzgemv_n)};
  static constexpr gemv_t_fn<double>* gemv_t[8] = {TAV_PATH_VARIANTS(blas, xzgemv_t)};
  static constexpr rank1_fn<double>* rank1[8] = {TAV_PATH_VARIANTS(blas, xzger)};
};

// Rows straddle the pack widths (2 to 16 reals), columns the group of 4; then a few column
// counts past the 1024-row gather block and the 4096-row block.
std::vector<std::pair<int64_t, int64_t>> shapes() {
  std::vector<std::pair<int64_t, int64_t>> out;
  for (int64_t m : {0, 1, 2, 3, 5, 8, 15, 16, 17, 33})
    for (int64_t n : {0, 1, 3, 4, 5, 9}) out.emplace_back(m, n);
  for (int64_t m : {1025, 4100})
    for (int64_t n : {1, 5}) out.emplace_back(m, n);
  return out;
}
const std::pair<int64_t, int64_t> increment_pairs[] = {{1, 1}, {2, -1}, {-2, 2}, {-1, -2}};

template <class T>
class Level2Kernels : public testing::Test {};
TYPED_TEST_SUITE(Level2Kernels, element_types);

// Element 0 of a guarded strided vector, where the kernels take it.
template <class T>
T* element0(guarded_vector<T>& v) {
  return v.size() > 0 ? &v[0] : v.data();
}

TYPED_TEST(Level2Kernels, GemvMatchesReferenceOnEveryPath) {
  using T = TypeParam;
  std::mt19937_64 rng(21);
  for (int id : runnable_paths()) {
    for (auto [m, n] : shapes())
      for (auto [incx, incy] : increment_pairs)
        for (char trans : {'N', 'T', 'C'}) {
          SCOPED_TRACE(testing::Message() << path_tags[id] << " trans " << trans << " m " << m
                                          << " n " << n << " incx " << incx << " incy " << incy);
          const bool no_trans = trans == 'N';
          const int64_t len_x = no_trans ? n : m, len_y = no_trans ? m : n;
          guarded_matrix<T> a = random_matrix<T>(m, n, 3, rng);
          const std::vector<T> x = ref::random_vector<T>(len_x, rng);
          const std::vector<T> y = ref::random_vector<T>(len_y, rng);
          const T alpha = ref::random_value<T>(rng);
          const auto want = reference_gemv(trans, m, n, alpha, a.data(), a.ld(), x, T(1), y);
          guarded_vector<T> gx = strided(x, incx), gy = strided(y, incy);
          if (no_trans)
            path_kernels<T>::gemv_n[id](m, n, reals(&alpha), reals(a.data()), a.ld(),
                                        reals(element0(gx)), incx, reals(element0(gy)), incy);
          else
            path_kernels<T>::gemv_t[id](m, n, reals(&alpha), reals(a.data()), a.ld(),
                                        reals(element0(gx)), incx, reals(element0(gy)), incy,
                                        trans == 'C');
          EXPECT_TRUE(gy.intact());
          EXPECT_LT(worst_ratio(gy, want, len_x + 1), ratio_limit);
        }
  }
}

TYPED_TEST(Level2Kernels, RankOneMatchesReferenceOnEveryPath) {
  using T = TypeParam;
  std::mt19937_64 rng(22);
  for (int id : runnable_paths()) {
    for (auto [m, n] : shapes())
      for (auto [incx, incy] : increment_pairs)
        for (bool conj : {false, true})
          for (T beta : {T(0), T(1), ref::random_value<T>(rng)}) {
            SCOPED_TRACE(testing::Message()
                         << path_tags[id] << " conj " << conj << " m " << m << " n " << n
                         << " incx " << incx << " incy " << incy << " beta " << beta);
            guarded_matrix<T> a = random_matrix<T>(m, n, 2, rng);
            // beta = 0 must not read A.
            if (beta == T(0))
              for (int64_t j = 0; j < n; ++j)
                for (int64_t i = 0; i < m; ++i) a(i, j) = nan_value<T>();
            const std::vector<T> x = ref::random_vector<T>(m, rng);
            const std::vector<T> y = ref::random_vector<T>(n, rng);
            const T alpha = ref::random_value<T>(rng);
            const bool conj_y = conj && complex_v<T>;
            const auto want =
                reference_ger(conj_y, m, n, alpha, x, y, T(0), {}, {}, beta, a.data(), a.ld());
            guarded_vector<T> gx = strided(x, incx), gy = strided(y, incy);
            path_kernels<T>::rank1[id](m, n, reals(&alpha), reals(element0(gx)), incx,
                                       reals(element0(gy)), incy, reals(&beta), reals(a.data()),
                                       a.ld(), conj ? 1 : 0);
            EXPECT_TRUE(a.intact());
            EXPECT_LT(worst_ratio(a, want, 3), ratio_limit);
          }
  }
}

}  // namespace
