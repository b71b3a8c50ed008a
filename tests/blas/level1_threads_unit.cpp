// The level-1 drivers in child processes: the thread split and the fixed-order dot reduction
// for chosen thread counts (bit for bit against the rule), and every code path reached through
// the dispatch slots under a forced CPU type.
#include <gtest/gtest.h>
#include <tav/tav_threads.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "blas/blas_internal.hpp"
#include "blas/level1/level1_slots.hpp"
#include "child_process.hpp"
#include "code_paths.hpp"
#include "level1_checks.hpp"

namespace {

using namespace tav::test;
using tav::blas::level1_slots;
using c8 = std::complex<float>;
using c16 = std::complex<double>;

template <class T>
std::vector<T> random_storage(int64_t n, int64_t inc, std::mt19937_64& rng) {
  std::vector<T> v(static_cast<size_t>(1 + (n - 1) * (inc < 0 ? -inc : inc)));
  for (T& e : v) e = random_value<T>(rng);
  return v;
}

template <class T>
bool equal_bits(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

template <class T>
T kernel_dot(int64_t n, const T* x, int64_t incx, const T* y, int64_t incy) {
  T r;
  level1_slots<T>::dot.target()(tav::blas::as_reals(&r), n, tav::blas::as_reals(x), incx,
                                tav::blas::as_reals(y), incy);
  return r;
}

// Offset of the lowest stored element of a part: its first element, or its last for inc < 0.
int64_t first_stored(int64_t n, int64_t inc, const part& p) {
  return position(n, inc, inc < 0 ? p.start + p.length - 1 : p.start);
}

// dot on `threads` threads equals the rule: the serial kernel below the threshold or with a
// zero increment, else the kernel on each thread's part summed in the fixed order. axpy and scal
// split too, and their elements come out as the serial kernel makes them.
template <class T>
std::string check_split(int threads, std::mt19937_64& rng) {
  const int64_t threshold = 32768 / sizeof(T), chunk = threshold / 2;
  // Beyond 512 threads only the length that needs them all: the partials go to the heap.
  const std::vector<int64_t> sizes =
      threads > 512 ? std::vector<int64_t>{int64_t{threads} * chunk}
                    : std::vector<int64_t>{threshold - 1, threshold, threshold + 1, 10000,
                                           8 * chunk + 1, 19 * chunk + 7};
  const std::pair<int64_t, int64_t> increments[] = {{1, 1}, {-2, 3}, {3, -1}, {0, 1}};
  std::string failures;
  for (int64_t n : sizes) {
    for (auto [incx, incy] : increments) {
      const std::vector<T> x = random_storage<T>(n, incx, rng), y = random_storage<T>(n, incy, rng);
      T want = kernel_dot(n, x.data(), incx, y.data(), incy);
      const int64_t parts = std::min<int64_t>((n + chunk - 1) / chunk, threads);
      if (n >= threshold && incx != 0 && incy != 0 && parts > 1) {
        std::vector<T> r(static_cast<size_t>(parts));
        for (int t = 0; t < parts; ++t) {
          const part p = split_part(n, t, static_cast<int>(parts));
          r[t] = p.length == 0 ? T(0)
                               : kernel_dot(p.length, x.data() + first_stored(n, incx, p), incx,
                                            y.data() + first_stored(n, incy, p), incy);
        }
        want = rule_sum(r);
      }
      if (!equal_bits(tav::blas::dot<T>(n, x.data(), incx, y.data(), incy), want))
        failures += failure("dot", n, incx, incy, "not the rule's bits\n");

      const T alpha = random_value<T>(rng);
      std::vector<T> split_y = y, serial_y = y;
      tav::blas::axpy<T>(n, alpha, x.data(), incx, split_y.data(), incy);
      level1_slots<T>::axpy.target()(n, tav::blas::as_reals(&alpha), tav::blas::as_reals(x.data()),
                                     incx, tav::blas::as_reals(serial_y.data()), incy);
      if (std::memcmp(split_y.data(), serial_y.data(), y.size() * sizeof(T)) != 0)
        failures += failure("axpy", n, incx, incy, "differs from the serial kernel\n");

      std::vector<T> split_x = x, serial_x = x;
      tav::blas::scal<T>(n, alpha, split_x.data(), incx);
      level1_slots<T>::scal.target()(n, tav::blas::as_reals(&alpha),
                                     tav::blas::as_reals(serial_x.data()), incx);
      if (std::memcmp(split_x.data(), serial_x.data(), x.size() * sizeof(T)) != 0)
        failures += failure("scal", n, incx, 0, "differs from the serial kernel\n");
    }
  }
  return failures;
}

TAV_SCENARIO(thread_split) {
  const int threads = std::stoi(scenario_args().at(0));
  tav_serv_set_dynamic(0);
  tav_serv_domain_set_num_threads(threads, TAV_DOMAIN_BLAS);
  std::mt19937_64 rng(threads);
  const std::string failures =
      threads > 512 ? check_split<double>(threads, rng)
                    : check_split<float>(threads, rng) + check_split<double>(threads, rng) +
                          check_split<c8>(threads, rng) + check_split<c16>(threads, rng);
  std::printf("%s", failures.empty() ? "ok\n" : failures.c_str());
}

class ThreadSplit : public testing::TestWithParam<int> {};

TEST_P(ThreadSplit, DotFollowsTheRuleAndPartsCoverTheVector) {
  // More threads than cores: idle ones sleep at once instead of spinning.
  const auto r = run_child("thread_split", {{"KMP_BLOCKTIME", "0"}}, {std::to_string(GetParam())});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "ok\n");
}

// 1: always serial; 2: this machine; 8: ddot of 4096 takes two threads, r0 + r1; 20: two groups
// of eight and three more; 520: the partials no longer fit the local array of 512.
INSTANTIATE_TEST_SUITE_P(Threads, ThreadSplit, testing::Values(1, 2, 8, 20, 520));

// The tag of the variant a slot took.
template <class Slot>
std::string chosen(Slot& slot, typename Slot::function const (&variants)[8]) {
  for (int id = 0; id < 8; ++id)
    if (slot.target() == variants[id]) return path_tags[id];
  return "none";
}

template <class T>
std::string sweep(std::mt19937_64& rng) {
  using R = real_of<T>;
  const int64_t threshold = 32768 / sizeof(T);
  std::string failures;
  for (int64_t n : {int64_t{1}, int64_t{17}, threshold + 3}) {
    for (auto [incx, incy] : {std::pair<int64_t, int64_t>{1, 1}, {-2, 1}, {0, 3}}) {
      failures += check_axpy<T>(n, incx, incy, rng, tav::blas::axpy<T>);
      failures += check_dot<T>(n, incx, incy, false, rng, tav::blas::dot<T>);
      failures += check_dot<T>(n, incx, incy, true, rng, tav::blas::dotc<T>);
      failures += check_scal<T, T>(2 * n, incx, rng, tav::blas::scal<T>);
      failures += check_scal<T, R>(2 * n, incy, rng, tav::blas::scal_real<T>);
    }
  }
  return failures;
}

TAV_SCENARIO(forced_path) {
  using namespace tav::blas;  // the slots and the variants they choose from
  static axpy_kernel<double>* const daxpy[8] = {TAV_PATH_VARIANTS(blas, xdaxpy)};
  static dot_kernel<float>* const cdotc[8] = {TAV_PATH_VARIANTS(blas, xcdotc)};
  static scal_kernel<double>* const zdscal[8] = {TAV_PATH_VARIANTS(blas, xzdscal)};
  tav_serv_domain_set_num_threads(2, TAV_DOMAIN_BLAS);
  std::mt19937_64 rng(5);
  const std::string failures = sweep<float>(rng) + sweep<double>(rng) + sweep<c8>(rng) + sweep<c16>(rng);
  std::printf("%s %s %s %s", chosen(xdaxpy_dispatch, daxpy).c_str(),
              chosen(xcdotc_dispatch, cdotc).c_str(), chosen(xzdscal_dispatch, zdscal).c_str(),
              failures.empty() ? "ok\n" : failures.c_str());
}

struct forced {
  const char* type;
  const char* cbwr;  // TAV_CBWR, or nullptr
  const char* tag;   // the path every slot takes
};

class ForcedPath : public testing::TestWithParam<forced> {};

TEST_P(ForcedPath, SlotsTakeThePathAndResultsHold) {
  const forced& f = GetParam();
  env_list env{{"TAV_DEBUG_CPU_TYPE", f.type}};
  if (f.cbwr) env.emplace_back("TAV_CBWR", f.cbwr);
  const auto r = run_child("forced_path", env);
  EXPECT_EQ(r.exit_code, 0) << r.err;
  const std::string tag = f.tag;
  EXPECT_EQ(r.out, tag + " " + tag + " " + tag + " ok\n");
}

INSTANTIATE_TEST_SUITE_P(RunnableTypes, ForcedPath,
                         testing::Values(forced{"0", nullptr, "def"}, forced{"1", nullptr, "def"},
                                         forced{"0", "AUTO", "cnr_def"}, forced{"2", nullptr, "mc"},
                                         forced{"3", nullptr, "mc3"}, forced{"4", nullptr, "avx"},
                                         forced{"5", nullptr, "avx2"}));

}  // namespace
