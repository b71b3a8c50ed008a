// The arithmetic kernels on every code path this processor runs, each forced by the CPU-type
// override in a child process: the table slot picks the path's kernel family, every result is
// correctly rounded (real) or within one ulp (complex), and all paths agree bit for bit.
#include <gtest/gtest.h>
#include <tav/tav_cpu.h>

#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "arith_oracles.hpp"
#include "child_process.hpp"
#include "code_paths.hpp"
#include "service/cpu/cpu_state.hpp"
#include "vml/interface/vector_call.hpp"
#include "vml/kernels/kernel_family.hpp"
#include "vml/tables/function_tables.hpp"

extern "C" std::remove_pointer_t<tav::vml::kernel_fn<double>> TAV_VML_KERNEL_BUILDS(dAdd, HA, ynn);

namespace {

using namespace tav::test;

// The kernel each CPU type 0 to 7 must find in vdAdd's high-accuracy row.
const tav::vml::kernel_fn<double> expected_dadd[8] = {TAV_VML_KERNEL_BUILDS(dAdd, HA, ynn)};

uint64_t fnv(uint64_t hash, const void* data, size_t bytes) {
  const auto* p = static_cast<const unsigned char*>(data);
  for (size_t i = 0; i < bytes; ++i) hash = (hash ^ p[i]) * 0x100000001b3ULL;
  return hash;
}

// Operands with specials planted among wide random values, for the complex rare paths.
template <class Real>
std::vector<Real> operands(int reals, unsigned seed, int lo, int hi) {
  auto v = wide_values<Real>(reals, seed, lo, hi);
  const Real specials[] = {0, -0.0f, INFINITY, -INFINITY, NAN, 1};
  for (int i = 0; i < reals; i += 37) v[i] = specials[(i / 37) % 6];
  return v;
}

uint64_t hash = 0xcbf29ce484222325ULL;
long failures = 0;

template <class T, class Real>
void run(const tav::vml::kernel_fn<T>* table, operation op, bool complex, int lo, int hi) {
  const int n = 3001, reals = complex ? 2 * n : n;
  const auto a = operands<Real>(reals, 21, lo, hi), b = operands<Real>(reals, 22, lo, hi);
  std::vector<Real> r(reals);
  const int index = tav::vml::table_index(VML_HA, tav::service::vml_cpu_type());
  table[index](n, reinterpret_cast<const T*>(a.data()), reinterpret_cast<const T*>(b.data()),
               reinterpret_cast<T*>(r.data()));
  hash = fnv(hash, r.data(), r.size() * sizeof(Real));
  const bool exact = !complex || op == operation::add || op == operation::sub;
  failures += exact ? misrounded(op, a, b, r) : complex_off_by_more_than_an_ulp(op, a, b, r);
}

TAV_SCENARIO(arith_on_forced_path) {
  vmlSetMode(VML_ERRMODE_IGNORE);
  const int type = tav_serv_cpu_detect();
  const int index = tav::vml::table_index(VML_HA, tav::service::vml_cpu_type());
  const bool slot_ok = tav_vml_kernel_dAdd_ttab[index] == expected_dadd[type];
  using cf = std::complex<float>;
  using cd = std::complex<double>;
  run<double, double>(tav_vml_kernel_dAdd_ttab, operation::add, false, -560, 560);
  run<double, double>(tav_vml_kernel_dSub_ttab, operation::sub, false, -560, 560);
  run<double, double>(tav_vml_kernel_dMul_ttab, operation::mul, false, -560, 560);
  run<double, double>(tav_vml_kernel_dDiv_ttab, operation::div, false, -560, 560);
  run<float, float>(tav_vml_kernel_sAdd_ttab, operation::add, false, -70, 70);
  run<float, float>(tav_vml_kernel_sSub_ttab, operation::sub, false, -70, 70);
  run<float, float>(tav_vml_kernel_sMul_ttab, operation::mul, false, -70, 70);
  run<float, float>(tav_vml_kernel_sDiv_ttab, operation::div, false, -70, 70);
  run<cd, double>(tav_vml_kernel_zAdd_ttab, operation::add, true, -560, 560);
  run<cd, double>(tav_vml_kernel_zSub_ttab, operation::sub, true, -560, 560);
  run<cd, double>(tav_vml_kernel_zMul_ttab, operation::mul, true, -500, 500);
  run<cd, double>(tav_vml_kernel_zDiv_ttab, operation::div, true, -500, 500);
  run<cf, float>(tav_vml_kernel_cAdd_ttab, operation::add, true, -70, 70);
  run<cf, float>(tav_vml_kernel_cSub_ttab, operation::sub, true, -70, 70);
  run<cf, float>(tav_vml_kernel_cMul_ttab, operation::mul, true, -60, 60);
  run<cf, float>(tav_vml_kernel_cDiv_ttab, operation::div, true, -60, 60);
  std::printf("slot=%s failures=%ld hash=%016llx\n", slot_ok ? "ok" : "wrong", failures,
              static_cast<unsigned long long>(hash));
}

TEST(VmlForcedPaths, EveryPathIsCorrectAndAllAgree) {
  std::string first;
  for (int id = 0; id <= 5; ++id) {
    if (!path_runs(id)) continue;
    const auto r = run_child("arith_on_forced_path", {{"TAV_DEBUG_CPU_TYPE", std::to_string(id)}});
    ASSERT_EQ(r.exit_code, 0) << path_tags[id] << ": " << r.err;
    EXPECT_EQ(r.out.substr(0, 19), "slot=ok failures=0 ") << path_tags[id] << ": " << r.out;
    const std::string hash = r.out.substr(r.out.find("hash="));
    if (first.empty()) first = hash;
    EXPECT_EQ(hash, first) << path_tags[id];
  }
}

}  // namespace
