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
#include "blas_test_data.hpp"

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
class GemmEntry : public testing::Test {};
TYPED_TEST_SUITE(GemmEntry, element_types);

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

// The special scalars, NaN and Inf on every route.
TYPED_TEST(GemmEntry, SpecialValuesOnEveryRoute) {
  using T = TypeParam;
  for (char ta : trans_codes)
    for (char tb : trans_codes)
      for (const entry_shape& s : route_shapes) {
        expect_special_scalars_honoured<T>(ta, tb, s.m, s.n, s.k, scalar<T>(0.5, 0.5),
                                           call_entry<T>);
        if (s.k > 0) expect_nan_and_inf_propagate<T>(ta, tb, s.m, s.n, s.k, call_entry<T>);
      }
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
      failures += !p.matches(p.reference()) + !z.matches(z.reference());
      total += 2;
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
