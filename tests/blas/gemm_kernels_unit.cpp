// The per-path serial matrix-product kernels x?gemm and x?gemmt, called directly on every path
// this processor runs, around every blocking edge of the path.
#include <algorithm>
#include <cmath>
#include <limits>

#include "blas/level3/gemm_kernel_api.hpp"
#include "common/path_naming.hpp"
#include "code_paths.hpp"
#include "common/scalar_traits.hpp"
#include "blas_test_data.hpp"

// The path table itself, viewed from outside any path, for the block edges to straddle.
#define TAV_PATH_NS params_view
#define TAV_PATH_ID 0
#include "blas/level3/kernels/gemm_params.hpp"
#undef TAV_PATH_ID
#undef TAV_PATH_NS

extern "C" {
tav::blas::xgemm_fn<float> TAV_PATH_VARIANTS(blas, xsgemm), TAV_PATH_VARIANTS(blas, xcgemm);
tav::blas::xgemm_fn<double> TAV_PATH_VARIANTS(blas, xdgemm), TAV_PATH_VARIANTS(blas, xzgemm);
tav::blas::xgemmt_fn<float> TAV_PATH_VARIANTS(blas, xsgemmt), TAV_PATH_VARIANTS(blas, xcgemmt);
tav::blas::xgemmt_fn<double> TAV_PATH_VARIANTS(blas, xdgemmt), TAV_PATH_VARIANTS(blas, xzgemmt);
tav::blas::path_query_fn TAV_PATH_VARIANTS(blas, get_kernel_api_version);
}

namespace {

using namespace tav::test;
namespace params = tav::params_view::gemm;

template <class T>
tav::blas::xgemm_fn<tav::real_t<T>>* kernel_of(int path) {
  static constexpr tav::blas::xgemm_fn<float>* s[8] = {TAV_PATH_VARIANTS(blas, xsgemm)};
  static constexpr tav::blas::xgemm_fn<double>* d[8] = {TAV_PATH_VARIANTS(blas, xdgemm)};
  static constexpr tav::blas::xgemm_fn<float>* c[8] = {TAV_PATH_VARIANTS(blas, xcgemm)};
  static constexpr tav::blas::xgemm_fn<double>* z[8] = {TAV_PATH_VARIANTS(blas, xzgemm)};
  return by_type<T>(s[path], d[path], c[path], z[path]);
}

template <class T>
tav::blas::xgemmt_fn<tav::real_t<T>>* triangle_kernel_of(int path) {
  static constexpr tav::blas::xgemmt_fn<float>* s[8] = {TAV_PATH_VARIANTS(blas, xsgemmt)};
  static constexpr tav::blas::xgemmt_fn<double>* d[8] = {TAV_PATH_VARIANTS(blas, xdgemmt)};
  static constexpr tav::blas::xgemmt_fn<float>* c[8] = {TAV_PATH_VARIANTS(blas, xcgemmt)};
  static constexpr tav::blas::xgemmt_fn<double>* z[8] = {TAV_PATH_VARIANTS(blas, xzgemmt)};
  return by_type<T>(s[path], d[path], c[path], z[path]);
}

template <class T>
params::register_block block_of(int path) {
  const params::path_params& p = params::path_table[path];
  return by_type<T>(p.s, p.d, p.c, p.z);
}

// Runs the path's kernel on the problem's operands, C in place; m, n, k as given.
template <class T>
void call_kernel(int path, gemm_problem<T>& p, int64_t m, int64_t n, int64_t k, const T* a,
                 const T* b, T* c) {
  using R = tav::real_t<T>;
  auto r = [](const T* x) { return reinterpret_cast<const R*>(x); };
  kernel_of<T>(path)(&p.transa, &p.transb, &m, &n, &k, r(&p.alpha), r(a), &p.lda, r(b), &p.ldb,
                     r(&p.beta), reinterpret_cast<R*>(c), &p.ldc);
}

template <class T>
void call_kernel(int path, gemm_problem<T>& p) {
  call_kernel(path, p, p.m, p.n, p.k, p.a.data(), p.b.data(), p.c.data());
}

template <class T>
class GemmKernels : public testing::Test {};
TYPED_TEST_SUITE(GemmKernels, element_types);

// Every register-block edge (mr ± 1, nr ± 1) with short k, for all nine transposition pairs;
// every m up to mr + 1, since the small strategy gives an edge of rows the shortest block of
// whole vectors that covers it, read in place when A is untransposed and the rows fill it.
TYPED_TEST(GemmKernels, RegisterBlockEdges) {
  using T = TypeParam;
  for (int path : runnable_paths()) {
    SCOPED_TRACE(path_tags[path]);
    const auto rb = block_of<T>(path);
    std::vector<int64_t> rows;
    for (int64_t m = 1; m <= rb.mr + 1; ++m) rows.push_back(m);
    rows.push_back(2 * rb.mr + 1);
    for (char ta : trans_codes)
      for (char tb : trans_codes)
        for (int64_t m : rows)
          for (int64_t n : {int64_t{1}, int64_t{rb.nr - 1}, int64_t{rb.nr}, int64_t{rb.nr + 1}})
            for (int64_t k : {1, 7}) {
              gemm_problem<T> p(ta, tb, m, n, k, scalar<T>(0.7, -0.4), scalar<T>(-1.3, 0.2));
              call_kernel(path, p);
              expect_matches_reference(p);
            }
  }
}

// Shapes that reach each strategy (6 x 6 no-copy, small, pst, driver) and straddle kb (128 for
// k <= 256, k/2 below 384, 192 beyond) and nb (24 for k < 48, else 192 or 96).
TYPED_TEST(GemmKernels, StrategiesAndPanelEdges) {
  using T = TypeParam;
  struct shape {
    int64_t m, n, k;
  };
  const shape shapes[] = {{6, 7, 6},     {9, 10, 9},    {12, 5, 12},   {50, 9, 40},
                          {101, 5, 50},  {130, 3, 2},   {73, 73, 129}, {60, 25, 47},
                          {75, 193, 257}, {40, 97, 383}, {29, 98, 385}, {57, 57, 100}};
  const double betas[] = {0.0, 1.0, 0.5};
  for (int ia = 0; ia < 3; ++ia)
    for (int ib = 0; ib < 3; ++ib)
      for (size_t is = 0; is < std::size(shapes); ++is) {
        // beta takes 0, 1 and another value in turn, so each shape meets all three.
        const shape& s = shapes[is];
        const double beta = betas[(ia + ib + is) % 3];
        gemm_problem<T> p(trans_codes[ia], trans_codes[ib], s.m, s.n, s.k, scalar<T>(-0.9, 0.6),
                          scalar<T>(beta, 0));
        const gemm_reference<T> want = p.reference();
        for (int path : runnable_paths()) {
          SCOPED_TRACE(path_tags[path]);
          p.reset_c();
          call_kernel(path, p);
          expect_matches(p, want);
        }
      }
}

// More rows than one packed block of A holds (mb = 5000 rounded up to a multiple of mr).
TYPED_TEST(GemmKernels, RowBlockEdge) {
  using T = TypeParam;
  if constexpr (!std::is_same_v<T, double>) return;
  for (int path : runnable_paths()) {
    SCOPED_TRACE(path_tags[path]);
    const int64_t mr = block_of<T>(path).mr, mb = (5000 + mr - 1) / mr * mr;
    gemm_problem<T> p('N', 'T', mb + 1, 73, 129, scalar<T>(1, 0.5), scalar<T>(0.25, 0));
    call_kernel(path, p);
    expect_matches_reference(p);
  }
}

// beta = 0 never reads C, alpha = 0 never reads A or B (bitwise C itself when beta = 1); k = 0
// leaves beta·C; m = 0 or n = 0 touches nothing.
TYPED_TEST(GemmKernels, SpecialScalarsAndEmptyShapes) {
  using T = TypeParam;
  const int64_t sizes[][3] = {{6, 8, 6}, {9, 9, 9}, {40, 30, 20}, {101, 5, 50}, {80, 80, 140}};
  for (int path : runnable_paths()) {
    SCOPED_TRACE(path_tags[path]);
    auto call = [path](gemm_problem<T>& p) { call_kernel(path, p); };
    for (char ta : trans_codes)
      for (const auto& s : sizes) {
        expect_special_scalars_honoured<T>(ta, 'N', s[0], s[1], s[2], T(1), call);
        expect_special_scalars_honoured<T>(ta, 'T', s[0], s[1], s[2], scalar<T>(-2, 1), call);
        gemm_problem<T> empty_k(ta, 'C', s[0], s[1], 0, scalar<T>(2, 0), scalar<T>(0.5, -0.5));
        call_kernel(path, empty_k);
        expect_matches_reference(empty_k);
      }
    for (auto [m, n] : {std::pair<int64_t, int64_t>{0, 5}, {5, 0}, {0, 0}}) {
      gemm_problem<T> p('N', 'N', 5, 5, 5, T(1), scalar<T>(3, 0));
      call_kernel(path, p, m, n, 5, p.a.data(), p.b.data(), p.c.data());
      gemm_problem<T> untouched('N', 'N', 5, 5, 5, T(1), scalar<T>(3, 0));
      EXPECT_TRUE(bitwise_equal(p, untouched));
    }
  }
}

// NaN and Inf reach their row and column of C only, whichever strategy runs.
TYPED_TEST(GemmKernels, NanAndInfPropagate) {
  using T = TypeParam;
  const int64_t sizes[][3] = {{6, 7, 6}, {30, 9, 12}, {101, 5, 50}, {80, 80, 140}};
  for (int path : runnable_paths()) {
    SCOPED_TRACE(path_tags[path]);
    for (char ta : trans_codes)
      for (char tb : trans_codes)
        for (const auto& s : sizes)
          expect_nan_and_inf_propagate<T>(ta, tb, s[0], s[1], s[2],
                                          [path](gemm_problem<T>& p) { call_kernel(path, p); });
  }
}

// On cnr_def a product computed in four blocks of C (as threads split it) equals the whole
// product bit for bit, whatever strategy each block takes.
TYPED_TEST(GemmKernels, ReproduciblePathIsBlockInvariant) {
  using T = TypeParam;
  const int64_t sizes[][3] = {{150, 90, 300}, {73, 200, 129}, {20, 8, 70}, {200, 7, 40}};
  for (char ta : trans_codes)
    for (char tb : trans_codes)
      for (const auto& s : sizes) {
        gemm_problem<T> whole(ta, tb, s[0], s[1], s[2], scalar<T>(0.3, 1), scalar<T>(-0.7, 0.1));
        gemm_problem<T> split = whole;
        call_kernel(1, whole);
        const int64_t mh = std::min(s[0], (s[0] / 2 + 7) / 8 * 8);
        const int64_t nh = std::min(s[1], (s[1] / 2 + 7) / 8 * 8);
        for (auto [i0, mm] : {std::pair{int64_t{0}, mh}, {mh, s[0] - mh}})
          for (auto [j0, nn] : {std::pair{int64_t{0}, nh}, {nh, s[1] - nh}}) {
            const T* a = split.a.data() + (ta == 'N' ? i0 : i0 * split.lda);
            const T* b = split.b.data() + (tb == 'N' ? j0 * split.ldb : j0);
            call_kernel(1, split, mm, nn, s[2], a, b, split.c.data() + i0 + j0 * split.ldc);
          }
        EXPECT_TRUE(bitwise_equal(whole, split)) << whole.describe();
        expect_matches_reference(whole);
      }
}

// The one-triangle product: on the part (i - j >= d for 'L', <= d for 'U') the product, with
// diagonals that cross register blocks, miss the block or cover it whole; off the part C bit for
// bit as it was, even with beta = 0.
TYPED_TEST(GemmKernels, TriangleProductUpdatesOnlyItsPart) {
  using T = TypeParam;
  using R = tav::real_t<T>;
  for (int path : runnable_paths()) {
    SCOPED_TRACE(path_tags[path]);
    const auto rb = block_of<T>(path);
    const int64_t m = 3 * rb.mr + 5, n = 4 * rb.nr + 1;
    for (char uplo : {'L', 'U'})
      for (int64_t d : {int64_t{0}, int64_t{-7}, int64_t{5}, m, -n})
        for (int64_t k : {3, 200}) {
          gemm_problem<T> p('N', 'C', m, n, k, scalar<T>(0.6, -1.1), scalar<T>(k == 3 ? 0 : 0.5, 0));
          SCOPED_TRACE(testing::Message() << uplo << " d=" << d << " " << p.describe());
          gemm_reference<T> r = p.reference();
          for (int64_t j = 0; j < n; ++j)
            for (int64_t i = 0; i < m; ++i)
              if (uplo == 'L' ? i - j < d : i - j > d) {
                const size_t at = static_cast<size_t>(i + j * m);
                r.want[at] = p.c0[at];
                r.bound[at] = 0;  // any difference there fails
              }
          auto e = [](const T* x) { return reinterpret_cast<const R*>(x); };
          triangle_kernel_of<T>(path)(&uplo, &p.transa, &p.transb, &m, &n, &k, e(&p.alpha),
                                      e(p.a.data()), &p.lda, e(p.b.data()), &p.ldb, e(&p.beta),
                                      reinterpret_cast<R*>(p.c.data()), &p.ldc, &d);
          expect_matches(p, r);
        }
  }
}

TEST(GemmKernels, InterfaceVersionPerPath) {
  tav::blas::path_query_fn* version[8] = {TAV_PATH_VARIANTS(blas, get_kernel_api_version)};
  for (int path : runnable_paths())
    EXPECT_EQ(version[path](), path >= 5 ? 2 : 1) << path_tags[path];
}

}  // namespace
