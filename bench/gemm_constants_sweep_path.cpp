// The per-path half of the constants sweep: one product on this path's small strategy or packed
// driver, with the caller's kb and nb limits, and the path's own row of serial limits.
#include "blas/level3/kernels/gemm_strategies.hpp"
#include "common/path_naming.hpp"
#include "gemm_constants_sweep.hpp"

namespace tav::TAV_PATH_NS::gemm {

template <class E>
void sweep_gemm(const bench::sweep_product& q) {
  const E* a = reinterpret_cast<const E*>(q.a);
  const E* b = reinterpret_cast<const E*>(q.b);
  E one{};
  *reinterpret_cast<real_of<E>*>(&one) = 1;  // the real part, first in both layouts
  const index lda = q.a_trans ? q.k : q.m;
  const problem<E> p = problem_of(q.a_trans ? "T" : "N", "N", &q.m, &q.n, &q.k, &one, a, &lda, b,
                                  &q.k, &one, reinterpret_cast<E*>(q.c), &q.m);
  if (q.strategy == bench::sweep_strategy::small) return run_small(p);
  serial_limits l = this_path.serial;
  if (q.kb_long > 0) l.kb_long = static_cast<int>(q.kb_long);
  if (q.nb > 0) l.nb_real = l.nb_complex = static_cast<int>(q.nb);
  driver(p, whole_c{}, blocking_for<E>(q.m, q.n, q.k, l));
}

}  // namespace tav::TAV_PATH_NS::gemm

extern "C" {

tav::bench::sweep_gemm_fn TAV_PATH_NAME(sweep, gemm);
tav::bench::sweep_limits_fn TAV_PATH_NAME(sweep, limits);

void TAV_PATH_NAME(sweep, gemm)(const tav::bench::sweep_product* q) {
  using namespace tav::TAV_PATH_NS::gemm;
  return q->complex ? sweep_gemm<cpx<double>>(*q) : sweep_gemm<double>(*q);
}

void TAV_PATH_NAME(sweep, limits)(int path, int* row) {
  const tav::TAV_PATH_NS::gemm::serial_limits l = tav::TAV_PATH_NS::gemm::path_table[path].serial;
  const int values[tav::bench::serial_limit_count] = {l.small_plain, l.small_trans, l.kb_long,
                                                      l.nb_real,     l.nb_complex,  l.mb};
  for (int i = 0; i < tav::bench::serial_limit_count; ++i) row[i] = values[i];
}

}  // extern "C"
