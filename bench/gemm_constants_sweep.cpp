// Chooses the serial matrix product's per-path limits (gemm_params.hpp, serial_limits) by
// measurement, calling each path's strategies directly with explicit blocking:
// - small_plain, small_trans: where the small strategy stops beating the packed driver, for A
//   plain and A transposed, on square products and on m = 480 with n varying;
// - kb_long and the column caps nb_real, nb_complex of the driver, on square products.
// Each candidate scores the mean over shapes of its time over the best candidate's time; the
// lowest score wins, but of the candidates within the noise of it the avx2 value stays if it is
// one, else the smallest is taken. Times are thread CPU seconds, minimum over rounds, the
// candidates of one shape interleaved batch by batch.
//
//   gemm_constants_sweep [def] [mc] [mc3] [avx] [avx2] [--sizes=1000,1500] [--rounds=N]
#include "gemm_constants_sweep.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "common/path_features.hpp"
#include "common/path_naming.hpp"
#include "support/interleaved_timing.hpp"
#include "support/markdown_table.hpp"

extern "C" {
tav::bench::sweep_gemm_fn TAV_PATH_VARIANTS(sweep, gemm);
// The table is the same in every path's copy; def's runs on every processor.
tav::bench::sweep_limits_fn TAV_PATH_NAME_JOIN(sweep, def, limits);
}

namespace {

using namespace tav::bench;

constexpr const char* path_tags[8] = {"def", "cnr_def", "mc",        "mc3",
                                      "avx", "avx2",    "avx512_tp", "avx512"};
sweep_gemm_fn* const gemm_of[8] = {TAV_PATH_VARIANTS(sweep, gemm)};
sweep_limits_fn* const limits_row = TAV_PATH_NAME_JOIN(sweep, def, limits);

constexpr int avx2_id = 5;

// Score differences below this fraction are taken as noise: crossover scores average many
// in-cache shapes, the blocking scores a few products that stream from memory.
constexpr double crossover_noise = 0.01, blocking_noise = 0.02;

// Random operands for one shape, and the product C += op(A)·B on them (the small strategy, the
// path's own blocking) in `product`.
struct operands {
  std::vector<double> a, b, c;
  sweep_product product;
  operands(bool complex, bool a_trans, int64_t m, int64_t n, int64_t k) {
    const size_t w = complex ? 2 : 1;
    std::mt19937_64 gen(static_cast<uint64_t>(m * 131 + n * 17 + k));
    std::uniform_real_distribution<double> u(-1, 1);
    a.resize(w * m * k);
    b.resize(w * k * n);
    c.assign(w * m * n, 0);
    for (double& x : a) x = u(gen);
    for (double& x : b) x = u(gen);
    product = {complex, sweep_strategy::small, a_trans, m, n, k, a.data(), b.data(), c.data(), 0,
               0};
  }
};

// Per-call thread CPU seconds of each candidate on one path: after one warm-up call each, batches
// of `calls` run in turn, `rounds` times; the minimum over rounds (other processes on the
// machine only ever add time, through the caches they share).
std::vector<double> time_candidates(sweep_gemm_fn* gemm, const std::vector<sweep_product>& cands,
                                    int rounds, int calls) {
  std::vector<std::vector<double>> t(cands.size());
  for (const sweep_product& q : cands) gemm(&q);
  for (int r = 0; r < rounds; ++r)
    for (size_t c = 0; c < cands.size(); ++c) {
      const double start = thread_seconds();
      for (int i = 0; i < calls; ++i) gemm(&cands[c]);
      t[c].push_back((thread_seconds() - start) / calls);
    }
  std::vector<double> result;
  for (const std::vector<double>& v : t) result.push_back(*std::min_element(v.begin(), v.end()));
  return result;
}

double flops(const sweep_product& q) {
  return (q.complex ? 8.0 : 2.0) * static_cast<double>(q.m * q.n * q.k);
}

// The candidate with the lowest score, except that among the candidates within the noise of it
// the avx2 value is kept if it is one of them, else the smallest (scores[i] belongs to values[i],
// which ascend).
int choose(const std::vector<int>& values, const std::vector<double>& scores, int avx2,
           double noise) {
  const double best = *std::min_element(scores.begin(), scores.end());
  int chosen = -1;
  for (size_t i = 0; i < values.size(); ++i)
    if (scores[i] <= best * (1 + noise) && (chosen < 0 || values[i] == avx2)) chosen = values[i];
  return chosen;
}

void print_scores(const char* what, const std::vector<int>& values,
                  const std::vector<double>& scores, int now, int avx2, int chosen) {
  std::string line;
  for (size_t i = 0; i < values.size(); ++i) line += format(" %d:%.3f", values[i], scores[i]);
  std::printf("%s scores (time over best, mean):%s; table now %d, avx2 %d, chosen **%d**\n\n", what,
              line.c_str(), now, avx2, chosen);
}

// One shape of the crossover sweep: the two strategies' times.
struct crossover_point {
  int64_t size;  // min(m, n), which the threshold compares
  double small, driver;
};

// small_plain or small_trans: small against driver on m = n = s (k = 64, 256, 1000) and on
// m = 480, n = s (k = 256), double and double complex.
int sweep_crossover(int path, bool a_trans, int rounds) {
  const std::vector<int> sizes = {24, 32, 40, 48, 56, 64, 72, 80, 96, 112, 128, 160, 192};
  struct family {
    int64_t k, m;  // m = 0: square
  };
  const family families[] = {{64, 0}, {256, 0}, {1000, 0}, {256, 480}};
  std::vector<std::string> header = {"type", "shape"};
  for (int s : sizes) header.push_back(std::to_string(s));
  markdown_table table(header);
  std::vector<crossover_point> points;
  for (bool complex : {false, true})
    for (const family& f : families) {
      std::vector<std::string> row = {
          complex ? "z" : "d", f.m ? format("m=%lld, k=%lld, n=", (long long)f.m, (long long)f.k)
                                   : format("k=%lld, m=n=", (long long)f.k)};
      for (int s : sizes) {
        const int64_t m = f.m ? f.m : s;
        const operands o(complex, a_trans, m, s, f.k);
        const sweep_product q = o.product;
        sweep_product d = q;
        d.strategy = sweep_strategy::driver;
        const int calls = std::max(1, static_cast<int>(3e7 / flops(q)));
        const std::vector<double> t = time_candidates(gemm_of[path], {q, d}, rounds, calls);
        points.push_back({s, t[0], t[1]});
        row.push_back(format("%.2f", t[0] / t[1]));
      }
      table.add_row(row);
    }
  std::printf("%s, A %s: time of small / time of driver (above 1: the driver is faster)\n\n",
              path_tags[path], a_trans ? "transposed" : "plain");
  table.print(stdout);
  std::printf("\n");
  // Threshold T: min(m, n) < T takes the small strategy.
  std::vector<double> scores;
  for (int threshold : sizes) {
    double sum = 0;
    for (const crossover_point& p : points)
      sum += (p.size < threshold ? p.small : p.driver) / std::min(p.small, p.driver);
    scores.push_back(sum / static_cast<double>(points.size()));
  }
  int now[serial_limit_count], avx2[serial_limit_count];
  limits_row(path, now);
  limits_row(avx2_id, avx2);
  const int role = a_trans ? 1 : 0;
  const int chosen = choose(sizes, scores, avx2[role], crossover_noise);
  print_scores(a_trans ? "small_trans" : "small_plain", sizes, scores, now[role], avx2[role],
               chosen);
  return chosen;
}

// kb_long (role 2) or the column cap (role 3 real, 4 complex): the driver on square products of
// the given orders, every candidate interleaved per shape; GFLOP/s in the table.
int sweep_blocking(int path, int role, const std::vector<int>& values,
                   const std::vector<int>& orders, int rounds) {
  const char* names[] = {"", "", "kb_long", "nb_real", "nb_complex"};
  std::vector<std::string> header = {"type", "m=n=k"};
  for (int v : values) header.push_back(std::to_string(v));
  markdown_table table(header);
  std::vector<double> sum(values.size(), 0);
  int shapes = 0;
  for (bool complex : {false, true}) {
    if ((role == 3 && complex) || (role == 4 && !complex)) continue;
    for (int n : orders) {
      const operands o(complex, false, n, n, n);
      std::vector<sweep_product> cands;
      for (int v : values) {
        sweep_product q = o.product;
        q.strategy = sweep_strategy::driver;
        (role == 2 ? q.kb_long : q.nb) = v;
        cands.push_back(q);
      }
      const std::vector<double> t = time_candidates(gemm_of[path], cands, rounds, 1);
      const double best = *std::min_element(t.begin(), t.end());
      std::vector<std::string> row = {complex ? "z" : "d", std::to_string(n)};
      for (size_t i = 0; i < t.size(); ++i) {
        row.push_back(format("%.2f", flops(cands[i]) / t[i] * 1e-9));
        sum[i] += t[i] / best;
      }
      table.add_row(row);
      ++shapes;
    }
  }
  std::printf("%s, %s: GFLOP/s of the driver\n\n", path_tags[path], names[role]);
  table.print(stdout);
  std::printf("\n");
  for (double& s : sum) s /= shapes;
  int now[serial_limit_count], avx2[serial_limit_count];
  limits_row(path, now);
  limits_row(avx2_id, avx2);
  const int chosen = choose(values, sum, avx2[role], blocking_noise);
  print_scores(names[role], values, sum, now[role], avx2[role], chosen);
  return chosen;
}

std::vector<int> parse_list(const char* text) {
  std::vector<int> v;
  for (const char* p = text; *p;) {
    v.push_back(std::atoi(p));
    while (*p && *p != ',') ++p;
    if (*p == ',') ++p;
  }
  return v;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> paths, orders = {1000, 1500};
  int rounds = 9;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--sizes=", 8) == 0) {
      orders = parse_list(argv[i] + 8);
      continue;
    }
    if (std::strncmp(argv[i], "--rounds=", 9) == 0) {
      rounds = std::atoi(argv[i] + 9);
      continue;
    }
    int id = 0;
    while (id < 8 && std::strcmp(argv[i], path_tags[id]) != 0) ++id;
    // Only paths this processor runs.
    if (id == 8 || !tav::path_runs(id)) {
      std::fprintf(stderr, "unknown path, or one this processor cannot run: %s\n", argv[i]);
      return 2;
    }
    paths.push_back(id);
  }
  if (paths.empty())
    for (int id : {0, 2, 4, avx2_id})
      if (tav::path_runs(id)) paths.push_back(id);
  for (int path : paths) {
    std::printf("### %s\n\n", path_tags[path]);
    const int plain = sweep_crossover(path, false, rounds);
    const int trans = sweep_crossover(path, true, rounds);
    const int blocking_rounds = std::max(3, rounds / 3);
    const int kb = sweep_blocking(path, 2, {128, 192, 256, 320}, orders, blocking_rounds);
    const int nb_real = sweep_blocking(path, 3, {96, 128, 192, 256, 384}, orders, blocking_rounds);
    const int nb_complex = sweep_blocking(path, 4, {48, 64, 96, 128, 192}, orders, blocking_rounds);
    int now[serial_limit_count];
    limits_row(path, now);
    std::printf("Chosen for %s: {%d, %d, %d, %d, %d, %d} (mb not swept)\n\n", path_tags[path],
                plain, trans, kb, nb_real, nb_complex, now[5]);
  }
  return 0;
}
