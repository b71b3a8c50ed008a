// The threading decision of the general matrix product: stripes, the version-1 driver, or the
// version-2 thread count with the small-n kernels and the version-2 driver. Every thread runs the
// serial per-path kernel on its own block of C, packing its own panels.
#include "blas/level3/gemm_threading.hpp"

#include <omp.h>
#include <tav/tav_threads.h>

#include "blas/level3/gemm_entries.hpp"
#include "blas/level3/gemm_partition.hpp"
#include "blas/level3/gemm_routing.hpp"
#include "service/threads/thread_settings.hpp"

namespace tav::blas {
namespace {

// The serial kernel of the dispatched path, complex data passed as interleaved reals.
template <class T>
void serial(const gemm_call<T>& g, index m, index n, const T* a, const T* b, T* c) {
  using R = real_t<T>;
  auto r = [](const T* p) { return reinterpret_cast<const R*>(p); };
  serial_entries<T>::gemm(g.transa, g.transb, &m, &n, &g.k, r(g.alpha), r(a), &g.lda, r(b), &g.ldb, r(g.beta),
         reinterpret_cast<R*>(c), &g.ldc);
}

template <class T>
void serial_whole(const gemm_call<T>& g) {
  serial(g, g.m, g.n, g.a, g.b, g.c);
}

// Block (i0, j0) of C: rows i0.. of op(A) and columns j0.. of op(B).
template <class T>
void serial_block(const gemm_call<T>& g, index i0, index mm, index j0, index nn) {
  const bool a_plain = decode_trans(g.transa) == 0, b_plain = decode_trans(g.transb) == 0;
  serial(g, mm, nn, g.a + (a_plain ? i0 : i0 * g.lda), g.b + (b_plain ? j0 * g.ldb : j0),
         g.c + i0 + j0 * g.ldc);
}

// One parallel region of nt threads; the grid is cut for the team the runtime grants. Out of line:
// a function that opens a region asks the OpenMP runtime for the caller's thread number on entry,
// which the serial calls need not pay.
template <class T, class GridOf>
[[gnu::noinline]] void run_region(const gemm_call<T>& g, int nt, GridOf grid_of) {
#pragma omp parallel num_threads(nt)
  {
    const c_grid grid = grid_of(omp_get_num_threads());
    const int t = omp_get_thread_num();
    const index i0 = (t % grid.row_blocks) * grid.mb, j0 = (t / grid.row_blocks) * grid.nb;
    if (t < grid.row_blocks * grid.col_blocks && i0 < g.m && j0 < g.n)
      serial_block(g, i0, grid.mb < g.m - i0 ? grid.mb : g.m - i0, j0,
                   grid.nb < g.n - j0 ? grid.nb : g.n - j0);
  }
}

template <class T, class GridOf>
void run_team(const gemm_call<T>& g, int nt, GridOf grid_of) {
  if (nt <= 1)
    serial_whole(g);
  else
    run_region(g, nt, grid_of);
}

// The threads this call may use: the BLAS domain, one inside an outer parallel region.
int available_threads() {
  return omp_in_parallel() ? 1 : tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS);
}

// The size formulas' thread count; the threading service is asked only when the work alone does
// not already settle it at one thread.
template <class T>
int sized_thread_count(int path, const gemm_call<T>& g) {
  if (gemm_one_thread_by_work(path, g.m, g.n, g.k)) return 1;
  return gemm_thread_count(path, g.m, g.n, g.k, available_threads());
}

template <class T>
[[gnu::noinline]] void gemm_omp_driver_v1(const gemm_call<T>& g) {
  const int nt = sized_thread_count(tav_blas_gemm_code_path(), g);
  run_team(g, nt, [&](int team) { return balanced_grid(team, g.m, g.n); });
}

template <class T>
[[gnu::noinline]] void gemm_in_stripes(const gemm_call<T>& g, int stripes) {
  run_team(g, available_threads(), [&](int team) { return stripes_grid(stripes, team, g.m, g.n); });
}

// Narrow products on the AVX-512 paths: C cut in rows over the whole BLAS domain.
template <class T>
bool use_smalln_kernels(const gemm_call<T>& g, int path) {
  if (!smalln_applies(path, decode_trans(g.transa), decode_trans(g.transb), g.n, g.lda, g.ldb,
                      g.ldc))
    return false;
  run_team(g, available_threads(), [&](int team) { return rows_grid(team, g.m, g.n); });
  return true;
}

// Version 2 once the work alone does not settle the product at one thread.
template <class T>
[[gnu::noinline]] void gemm_omp_driver_v2(const gemm_call<T>& g, int path) {
  const int nt = gemm_thread_count(path, g.m, g.n, g.k, available_threads());
  if (nt == 1) {
    serial_whole(g);
    return;
  }
  if (use_smalln_kernels(g, path)) return;
  run_team(g, nt, [&](int team) { return balanced_grid(team, g.m, g.n); });
}

}  // namespace

template <class T>
void gemm_general(const gemm_call<T>& g) {
  if (const int stripes = tav_serv_get_num_stripes(); stripes > 0)
    return gemm_in_stripes(g, stripes);
  if (tav_blas_get_kernel_api_version() != 2) return gemm_omp_driver_v1(g);
  const int path = tav_blas_gemm_code_path();
  if (gemm_one_thread_by_work(path, g.m, g.n, g.k)) return serial_whole(g);
  gemm_omp_driver_v2(g, path);
}

template void gemm_general<float>(const gemm_call<float>&);
template void gemm_general<double>(const gemm_call<double>&);
template void gemm_general<std::complex<float>>(const gemm_call<std::complex<float>>&);
template void gemm_general<std::complex<double>>(const gemm_call<std::complex<double>>&);

}  // namespace tav::blas
