// Every route of the per-path serial matrix product reached by a shape of its own, counted: the
// kernel's route counters must move for that route alone, and the product must still match the
// long-double reference, on every code path this processor can run.
#include <cmath>
#include <limits>

#include "blas/level3/gemm_kernel_api.hpp"
#include "common/path_naming.hpp"
#include "common/scalar_traits.hpp"
#include "gemm_test_problem.hpp"

#define TAV_PATH_NS routes_view
#define TAV_PATH_ID 5
#include "blas/level3/kernels/gemm_blocking.hpp"
#undef TAV_PATH_ID
#undef TAV_PATH_NS

using route_count_fn = long(int route);

extern "C" {
tav::blas::xgemm_fn<double> TAV_PATH_VARIANTS(blas, xdgemm), TAV_PATH_VARIANTS(blas, xzgemm);
route_count_fn TAV_PATH_VARIANTS(blas, gemm_route_count);
}

namespace {

using namespace tav::test;
using route = tav::routes_view::gemm::serial_route;

constexpr tav::blas::xgemm_fn<double>* dgemm_of[8] = {TAV_PATH_VARIANTS(blas, xdgemm)};
constexpr tav::blas::xgemm_fn<double>* zgemm_of[8] = {TAV_PATH_VARIANTS(blas, xzgemm)};
constexpr route_count_fn* counts_of[8] = {TAV_PATH_VARIANTS(blas, gemm_route_count)};
constexpr int route_total = 6;

bool runnable(int path) {
  switch (path) {
    case 2: return __builtin_cpu_supports("ssse3");
    case 3: return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
    case 4: return __builtin_cpu_supports("avx");
    case 5:
      return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
             __builtin_cpu_supports("bmi2");
    case 6: case 7: return false;  // covered by the ISA audit where AVX-512 is missing
    default: return true;
  }
}

struct route_case {
  const char* name;
  char ta, tb;
  int64_t m, n, k;
  double alpha, beta;
  route expected;
};

const route_case cases[] = {
    {"done", 'N', 'N', 0, 5, 5, 1, 1, route::done},
    {"nocopy_6x6", 'N', 'N', 6, 30, 6, 1.5, 0.5, route::nocopy_6x6},
    {"nocopy_6x6 beta 0", 'N', 'N', 6, 30, 6, 1.5, 0, route::nocopy_6x6},
    {"small k < 7", 'N', 'N', 40, 40, 6, 1, 1, route::small},
    {"small transposed", 'T', 'N', 55, 200, 300, 1, -1, route::small},
    {"pst", 'N', 'N', 500, 3, 100, 2, 1, route::pst},
    {"driver", 'N', 'T', 100, 100, 300, 1, 0.5, route::driver},
    {"driver transposed A", 'C', 'N', 100, 60, 500, 1, 0.5, route::driver},
    {"scale_only", 'N', 'N', 100, 100, 100, 0, 0.5, route::scale_only},
};

template <class T>
void run_case(int path, const route_case& c) {
  using R = tav::real_t<T>;
  gemm_problem<T> p(c.ta, c.tb, c.m, c.n, c.k, T(R(c.alpha)), T(R(c.beta)));
  // C's old contents must not reach the result when beta = 0, even a NaN.
  if (c.beta == 0 && c.m > 0) p.c(0, 0) = T(std::numeric_limits<R>::quiet_NaN());
  long before[route_total];
  for (int r = 0; r < route_total; ++r) before[r] = counts_of[path](r);
  auto cast = [](const T* x) { return reinterpret_cast<const R*>(x); };
  auto* kernel = std::is_same_v<T, double> ? dgemm_of[path] : zgemm_of[path];
  kernel(&p.transa, &p.transb, &p.m, &p.n, &p.k, cast(&p.alpha), cast(p.a.data()), &p.lda,
         cast(p.b.data()), &p.ldb, cast(&p.beta), reinterpret_cast<R*>(p.c.data()), &p.ldc);
  for (int r = 0; r < route_total; ++r)
    EXPECT_EQ(counts_of[path](r) - before[r], r == static_cast<int>(c.expected) ? 1 : 0)
        << "path " << path << " " << c.name << " route " << r;
  if (c.m > 0) expect_matches_reference(p);
}

TEST(GemmRouteCount, EveryRouteIsReachedByItsShape) {
  int reached = 0;
  for (int path = 0; path < 8; ++path) {
    if (!runnable(path)) continue;
    for (const route_case& c : cases) {
      run_case<double>(path, c);
      run_case<std::complex<double>>(path, c);
    }
    ++reached;
  }
  EXPECT_GE(reached, 2);
}

}  // namespace
