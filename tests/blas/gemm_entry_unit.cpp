// The internal matrix-product entry: its route for each shape, and the result of every route for
// all transposition pairs and element types, with the quick return, k = 0 and the special scalars.
#include <tav/tav_memory.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "blas/blas_internal.hpp"
#include "blas/level3/gemm_entries.hpp"
#include "blas/level3/gemm_routing.hpp"
#include "child_process.hpp"
#include "gemm_test_problem.hpp"

namespace {

using namespace tav::test;
using tav::blas::gemm_route;

int path_avx2() { return 5; }
int path_avx512_tp() { return 6; }
int path_never_asked() {
  ADD_FAILURE() << "the code path was asked for a shape that does not depend on it";
  return 5;
}

struct route_case {
  const char* name;
  char ta, tb;
  int64_t m, n, k, lda, ldb, ldc;
  bool complex;
  int (*path)();
  gemm_route expected;
};

void PrintTo(const route_case& c, std::ostream* os) { *os << c.name; }

class GemmEntryRoute : public testing::TestWithParam<route_case> {};

TEST_P(GemmEntryRoute, ShapeSelectsRoute) {
  const route_case& c = GetParam();
  const tav::blas::gemm_shape s{tav::blas::decode_trans(&c.ta), tav::blas::decode_trans(&c.tb),
                                c.m, c.n, c.k, c.lda, c.ldb, c.ldc, c.complex};
  EXPECT_EQ(tav::blas::route_gemm(s, c.path), c.expected);
}

constexpr auto quick = gemm_route::quick_return, row = gemm_route::row_gemv,
               by_column = gemm_route::column_by_column_gemv, column = gemm_route::column_gemv,
               rank1 = gemm_route::rank1_update, general = gemm_route::general;

INSTANTIATE_TEST_SUITE_P(
    Shapes, GemmEntryRoute,
    testing::Values(
        route_case{"m0", 'N', 'N', 0, 5, 5, 1, 5, 1, false, path_never_asked, quick},
        route_case{"n0", 'N', 'N', 5, 0, 5, 5, 5, 5, false, path_never_asked, quick},
        route_case{"negative", 'N', 'N', -1, 5, 5, 1, 5, 1, false, path_never_asked, quick},
        route_case{"k0", 'N', 'N', 1, 1, 0, 1, 1, 1, false, path_never_asked, general},
        route_case{"m1", 'T', 't', 1, 9, 9, 9, 9, 1, false, path_never_asked, row},
        route_case{"m1_real_conj", 'C', 'C', 1, 9, 9, 9, 9, 1, false, path_never_asked, row},
        route_case{"m1_conj_a", 'C', 'N', 1, 9, 9, 9, 9, 1, true, path_avx2, general},
        route_case{"m1_conj_b", 'n', 'c', 1, 9, 9, 1, 9, 1, true, path_avx2, general},
        route_case{"n1", 'C', 'T', 9, 1, 9, 9, 1, 9, true, path_avx2, column},
        route_case{"n1_conj_b", 'N', 'C', 9, 1, 9, 9, 1, 9, true, path_avx2, general},
        route_case{"k1", 'T', 'N', 70, 5, 1, 1, 1, 70, false, path_avx2, rank1},
        route_case{"k1_conj", 'N', 'C', 70, 5, 1, 70, 5, 70, true, path_avx2, general},
        route_case{"general", 'N', 'N', 9, 9, 9, 9, 9, 9, true, path_avx2, general},
        // The avx512_tp small shape: B plain, m < 8, lda < 8 or a multiple of 256, ldc < 8,
        // ldb a multiple of 256, and only on that path.
        route_case{"tp_small", 'N', 'N', 7, 5, 9, 7, 256, 7, false, path_avx512_tp, by_column},
        route_case{"tp_small_lda256", 'C', 'N', 7, 5, 9, 512, 256, 7, true, path_avx512_tp,
                   by_column},
        route_case{"tp_small_n1", 'N', 'N', 7, 1, 9, 7, 256, 7, false, path_avx512_tp, by_column},
        route_case{"tp_small_other_path", 'N', 'N', 7, 5, 9, 7, 256, 7, false, path_avx2, general},
        route_case{"tp_small_ldb", 'N', 'N', 7, 5, 9, 7, 255, 7, false, path_avx512_tp, general},
        route_case{"tp_small_m8", 'N', 'N', 8, 5, 9, 8, 256, 8, false, path_avx512_tp, general},
        route_case{"tp_small_b_trans", 'N', 'T', 7, 5, 9, 7, 256, 7, false, path_avx512_tp,
                   general}),
    [](const testing::TestParamInfo<route_case>& info) { return std::string(info.param.name); });

template <class T>
T scalar(double re, double im) {
  if constexpr (std::is_floating_point_v<T>) return static_cast<T>(re);
  else return T(static_cast<typename T::value_type>(re), static_cast<typename T::value_type>(im));
}

template <class T>
void call_entry(gemm_problem<T>& p) {
  tav::blas::gemm<T>(p.transa, p.transb, p.m, p.n, p.k, p.alpha, p.a.data(), p.lda, p.b.data(),
                     p.ldb, p.beta, p.c.data(), p.ldc);
}

template <class T>
class GemmEntry : public testing::Test {};
TYPED_TEST_SUITE(GemmEntry, gemm_types);

struct entry_shape {
  int64_t m, n, k;
};
// One shape per route: m = 1, n = 1, k = 1 with a short and a long (copied) x, general.
constexpr entry_shape route_shapes[] = {{1, 9, 13}, {1, 1, 5}, {11, 1, 7}, {20, 6, 1},
                                        {90, 7, 1}, {1, 40, 1}, {31, 17, 23}, {5, 4, 0}};

TYPED_TEST(GemmEntry, EveryRouteAgreesWithTheReference) {
  using T = TypeParam;
  for (char ta : trans_codes)
    for (char tb : trans_codes)
      for (const entry_shape& s : route_shapes)
        for (int pad : {0, 5}) {
          gemm_problem<T> p(ta, tb, s.m, s.n, s.k, scalar<T>(0.6, -1.1), scalar<T>(-0.4, 0.3),
                            pad);
          call_entry(p);
          expect_matches_reference(p);
        }
}

// beta = 0 with NaN in C leaves no NaN; alpha = 0 with NaN in A and B gives beta·C exactly.
TYPED_TEST(GemmEntry, SpecialScalarsOnEveryRoute) {
  using T = TypeParam;
  using R = tav::real_t<T>;
  const T nan = scalar<T>(std::numeric_limits<R>::quiet_NaN(), std::numeric_limits<R>::quiet_NaN());
  for (char ta : trans_codes)
    for (char tb : trans_codes)
      for (const entry_shape& s : route_shapes) {
        gemm_problem<T> zero_beta(ta, tb, s.m, s.n, s.k, scalar<T>(2, 1), T(0));
        for (int64_t j = 0; j < s.n; ++j)
          for (int64_t i = 0; i < s.m; ++i) zero_beta.c(i, j) = nan;
        call_entry(zero_beta);
        expect_matches_reference(zero_beta);

        gemm_problem<T> zero_alpha(ta, tb, s.m, s.n, s.k, T(0), scalar<T>(0.5, 0.5));
        for (T& x : zero_alpha.a) x = nan;
        for (T& x : zero_alpha.b) x = nan;
        call_entry(zero_alpha);
        EXPECT_TRUE(zero_alpha.c.intact());
        for (int64_t j = 0; j < s.n; ++j)
          for (int64_t i = 0; i < s.m; ++i)
            EXPECT_EQ(zero_alpha.c(i, j),
                      zero_alpha.beta * zero_alpha.c0[static_cast<size_t>(i + j * s.m)])
                << zero_alpha.describe();
      }
}

// A NaN in op(A)(i, l) and an Inf in op(B)(l, j) reach row i and column j of C on every route.
TYPED_TEST(GemmEntry, NanAndInfPropagateOnEveryRoute) {
  using T = TypeParam;
  using R = tav::real_t<T>;
  for (char ta : trans_codes)
    for (char tb : trans_codes)
      for (const entry_shape& s : route_shapes) {
        if (s.k == 0) continue;
        gemm_problem<T> p(ta, tb, s.m, s.n, s.k, scalar<T>(1, 0.5), scalar<T>(0.5, 0));
        const int64_t i0 = s.m / 2, j0 = s.n - 1, l0 = s.k / 2;
        p.a[static_cast<size_t>(ta == 'N' ? i0 + l0 * p.lda : l0 + i0 * p.lda)] =
            scalar<T>(std::numeric_limits<R>::quiet_NaN(), 0);
        p.b[static_cast<size_t>(tb == 'N' ? l0 + j0 * p.ldb : j0 + l0 * p.ldb)] =
            scalar<T>(std::numeric_limits<R>::infinity(), 0);
        call_entry(p);
        for (int64_t j = 0; j < s.n; ++j)
          for (int64_t i = 0; i < s.m; ++i)
            EXPECT_EQ(std::isfinite(std::abs(p.c(i, j))), i != i0 && j != j0)
                << p.describe() << " at " << i << "," << j;
      }
}

// m = 0 or n = 0 returns before anything, C untouched even with beta != 1 (through the C entry,
// which takes every argument by address); k = 0 is not a quick return and leaves beta·C.
TEST(GemmEntry, EmptyShapes) {
  gemm_problem<double> p('N', 'N', 4, 3, 2, 1.0, 5.0);
  const gemm_problem<double> before = p;
  const double alpha = 1, beta = 5;
  for (auto [m, n] : {std::pair<int64_t, int64_t>{0, 3}, {4, 0}, {0, 0}}) {
    const int64_t k = 2;
    tav_blas_dgemm("N", "N", &m, &n, &k, &alpha, p.a.data(), &p.lda, p.b.data(), &p.ldb, &beta,
                   p.c.data(), &p.ldc);
    EXPECT_TRUE(bitwise_equal(p, before));
  }
  const int64_t m = 4, n = 3, k = 0;
  const std::complex<double> za(1, 0), zb(0, 2);
  gemm_problem<std::complex<double>> z('C', 'T', 4, 3, 0, za, zb);
  tav_blas_zgemm("c", "t", &m, &n, &k, &za, z.a.data(), &z.lda, z.b.data(), &z.ldb, &zb,
                 z.c.data(), &z.ldc);
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i) EXPECT_EQ(z.c(i, j), zb * z.c0[static_cast<size_t>(i + j * m)]);
}

void* refusing_malloc(size_t) { return nullptr; }

// With every allocation refused, the rank-1 route uses the strided x in place and the serial
// driver falls back to the strategy without heap buffers; the results stay right.
TAV_SCENARIO(gemm_without_memory) {
  i_malloc = refusing_malloc;
  const int64_t shapes[][3] = {{100, 5, 1}, {101, 5, 50}, {80, 75, 300}};
  int failures = 0, total = 0;
  for (const auto& s : shapes)
    for (char tb : trans_codes) {
      gemm_problem<double> p('T', tb, s[0], s[1], s[2], 0.5, 2.0);
      gemm_problem<std::complex<double>> z('T', tb, s[0], s[1], s[2], {0.5, 1}, {2, 0});
      call_entry(p);
      call_entry(z);
      const auto pw = p.reference();
      const auto zw = z.reference();
      for (long double ratio :
           {gemm_error_ratio<double>(p.m, p.n, p.k, p.c.data(), p.ldc, pw.want.data(), pw.bound),
            gemm_error_ratio<std::complex<double>>(z.m, z.n, z.k, z.c.data(), z.ldc,
                                                   zw.want.data(), zw.bound)}) {
        ++total;
        if (!(ratio <= 2.0)) ++failures;
      }
    }
  std::printf("allocation=%d failures=%d of %d\n", tav_serv_allocate(64, 128) != nullptr,
              failures, total);
}

TEST(GemmEntry, WithoutMemoryFallsBackToSlowerForms) {
  for (const char* type : {"0", "5"}) {
    if (type[0] == '5' && !__builtin_cpu_supports("avx2")) continue;
    const auto r = run_child("gemm_without_memory", {{"TAV_DEBUG_CPU_TYPE", type}});
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, "allocation=0 failures=0 of 18\n") << type;
  }
}

}  // namespace
