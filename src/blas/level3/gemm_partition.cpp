// The thread-count formulas of the general product and the grids that cut C among a team.
#include "blas/level3/gemm_partition.hpp"

namespace tav::blas {
namespace {

// The fork and the per-thread packing cost about 3000 units of W per extra thread on up to four
// threads; on more, the stepped loop asks (500·nt + 4000) per thread and sheds threads faster.
int linear_reduction(int nt, double w) {
  while (nt > 1 && !((nt - 1) * w > 3000.0 * nt)) --nt;
  return nt;
}

int stepped_reduction(int nt, double w, double per_thread, double base) {
  while (nt > 1 && !((nt - 1) * w > (per_thread * nt + base) * nt))
    nt -= nt < 10 ? 2 : nt < 30 ? 4 : 8;
  return nt < 1 ? 1 : nt;
}

// Path 6 keeps deep, narrow products parallel: k div max(m, n) >= 4 takes every thread.
int tall_k_rule(index m, index n, index k, int available) {
  const index wider = m > n ? m : n;
  return k / wider >= 4 ? available : 1;
}

double product_flops(index m, index n, index k) {
  return 2.0 * static_cast<double>(m) * static_cast<double>(n) * static_cast<double>(k);
}

// W of the general row and of path 7.
double scaled_work(int path, index m, index n, index k) {
  return product_flops(m, n, k) * (path == 7 ? 0.03125 : 0.0625);
}

index edge_of(index extent, index blocks) {
  const index per = (extent + blocks - 1) / blocks;
  return (per + 7) / 8 * 8;
}

}  // namespace

int gemm_thread_count(int path, index m, index n, index k, int available) {
  if (available <= 1) return 1;
  if (path == 6) {
    const bool candidate =
        (m > 32 || n > 60) ? (k > 16 || m > 128 || n > 112) : k > 32;
    if (!candidate) return 1;
    const double w = product_flops(m, n, k) / 3.2;
    if (w < 8000) return tall_k_rule(m, n, k, available);
    const int nt = stepped_reduction(available, w, 2500, 3000);
    return nt > 1 ? nt : tall_k_rule(m, n, k, available);
  }
  const double w = scaled_work(path, m, n, k);
  if (available <= 4) return w < 3000 ? 1 : linear_reduction(available, w);
  return w < 5000 ? 1 : stepped_reduction(available, w, 500, 4000);
}

bool gemm_one_thread_by_work(int path, index m, index n, index k) {
  return path != 6 && scaled_work(path, m, n, k) < 3000;
}

c_grid stripes_grid(int stripes, int team, index m, index n) {
  const int s = stripes < team ? stripes : team;
  const int c = team / stripes > 1 ? team / stripes : 1;
  return {s, c, edge_of(m, s), edge_of(n, c)};
}

c_grid balanced_grid(int team, index m, index n) {
  // Among the factorisations team = r·c pick the one whose block m/r x n/c has the least
  // perimeter (the packed A and B a thread reads), that is the smallest m/r + n/c.
  int best = 1;
  double best_cost = 0;
  for (int r = 1; r <= team; ++r) {
    if (team % r != 0) continue;
    const double cost = static_cast<double>(m) / r + static_cast<double>(n) / (team / r);
    if (r == 1 || cost < best_cost) best = r, best_cost = cost;
  }
  return {best, team / best, edge_of(m, best), edge_of(n, team / best)};
}

c_grid rows_grid(int team, index m, index n) { return {team, 1, edge_of(m, team), n}; }

bool smalln_applies(int path, int transa, int transb, index n, index lda, index ldb, index ldc) {
  if ((path != 6 && path != 7) || transb != 0 || transa == 0) return false;
  if (n == 2 || n == 3) return true;
  return path == 7 && n < 16 && (lda % 256 == 0 || ldb % 256 == 0 || ldc % 256 == 0);
}

}  // namespace tav::blas
