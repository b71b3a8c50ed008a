// The thread-count machinery: the threading variables' texts, the rule over chosen settings, and
// the hardware counts on made-up topology trees and on this machine.
#include <gtest/gtest.h>
#include <omp.h>
#include <sched.h>
#include <tav/tav_threads.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <latch>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "child_process.hpp"
#include "service/threads/env_parsing.hpp"
#include "service/threads/hardware_topology.hpp"
#include "service/threads/thread_count.hpp"
#include "service/threads/thread_settings.hpp"
#include "sysfs_topology.hpp"

namespace {

using namespace tav::service;
using tav::test::run_child;
namespace fs = std::filesystem;

struct number_case {
  const char* text;
  int thread_count;  // TAV_NUM_THREADS / OMP_NUM_THREADS
  int stripes;
  int processes;     // TAV_MPI_PPN and the launchers
  int mpi_level;
};

std::ostream& operator<<(std::ostream& os, const number_case& c) { return os << c.text; }

class NumberRules : public testing::TestWithParam<number_case> {};

TEST_P(NumberRules, EachVariableReadsItsWay) {
  const number_case& c = GetParam();
  EXPECT_EQ(thread_count_value(c.text), c.thread_count);
  EXPECT_EQ(stripes_value(c.text), c.stripes);
  EXPECT_EQ(processes_per_node_value(c.text), c.processes);
  EXPECT_EQ(mpi_thread_level_value(c.text), c.mpi_level);
}

INSTANTIATE_TEST_SUITE_P(
    Threads, NumberRules,
    testing::Values(number_case{"4", 4, 4, 4, 0}, number_case{"3", 3, 3, 3, 3},
                    number_case{"1", 1, 1, 1, 1}, number_case{"0", unset, 0, unset, 0},
                    number_case{"007", 7, 7, 7, 0}, number_case{"4x", 1, unset, unset, 0},
                    number_case{" 4", 1, unset, unset, 0}, number_case{"-2", 1, unset, unset, 0},
                    number_case{"+2", 1, unset, unset, 0},
                    number_case{"", unset, unset, unset, unset},
                    number_case{"99999999999", INT_MAX, INT_MAX, INT_MAX, 0}));

TEST(ThreadsEnvBound, OnlyThe255FirstCharactersCount) {
  std::string zeros(255, '0');
  EXPECT_EQ(bounded_value((zeros + "x").c_str()), zeros);
  EXPECT_EQ(thread_count_value(bounded_value((zeros + "x").c_str())), unset);
  EXPECT_EQ(thread_count_value(bounded_value((zeros.substr(1) + "x").c_str())), 1);
  EXPECT_EQ(bounded_value(nullptr), "");
}

struct word_case {
  const char* text;
  int dynamic;
};

std::ostream& operator<<(std::ostream& os, const word_case& c) { return os << c.text; }

class DynamicWord : public testing::TestWithParam<word_case> {};

TEST_P(DynamicWord, OnlyFalseInTwoSpellingsTurnsItOff) {
  EXPECT_EQ(dynamic_value(GetParam().text), GetParam().dynamic) << '[' << GetParam().text << ']';
}

INSTANTIATE_TEST_SUITE_P(
    Threads, DynamicWord,
    testing::Values(word_case{"FALSE", 0}, word_case{"false", 0}, word_case{"  false", 0},
                    word_case{"'false'", 0}, word_case{"\" 'FALSE\"", 0},
                    word_case{"false now", 0}, word_case{"False", 1}, word_case{"fALSE", 1},
                    word_case{"falsey", 1}, word_case{"false,", 1}, word_case{"0", 1},
                    word_case{"no", 1}, word_case{"", 1}, word_case{"  ", 1},
                    word_case{"TRUE", 1}));

struct list_case {
  const char* text;
  std::array<int, 5> values;  // all, BLAS, FFT, VML, PARDISO
};

std::ostream& operator<<(std::ostream& os, const list_case& c) { return os << c.text; }

class DomainList : public testing::TestWithParam<list_case> {};

TEST_P(DomainList, ItemsGiveTheFirstValuePerDomain) {
  EXPECT_EQ(domain_list_values(GetParam().text), GetParam().values) << GetParam().text;
}

constexpr int u = unset;

INSTANTIATE_TEST_SUITE_P(
    Threads, DomainList,
    testing::Values(
        list_case{"TAV_DOMAIN_ALL=2, TAV_DOMAIN_BLAS=4", {2, 4, u, u, u}},
        // Every separator, and blanks or "=" between name and value.
        list_case{"TAV_DOMAIN_FFT 5;TAV_DOMAIN_VML = 6:'TAV_DOMAIN_PARDISO==7'", {u, u, 5, 6, 7}},
        list_case{"\"TAV_DOMAIN_BLAS=3\",TAV_DOMAIN_ALL  8", {8, 3, u, u, u}},
        // Empty and non-digit values count as 1; so does a name at the very end.
        list_case{"TAV_DOMAIN_BLAS=,TAV_DOMAIN_FFT=x2 TAV_DOMAIN_VML", {u, 1, 1, 1, u}},
        list_case{"TAV_DOMAIN_ALL=2x", {1, u, u, u, u}},
        // A separator ends the item, so the value after it belongs to no name.
        list_case{"TAV_DOMAIN_BLAS:4", {u, 1, u, u, u}},
        // First of two items wins; a 0 is not stored and leaves room for a later item.
        list_case{"TAV_DOMAIN_BLAS=4,TAV_DOMAIN_BLAS=5", {u, 4, u, u, u}},
        list_case{"TAV_DOMAIN_BLAS=0 TAV_DOMAIN_BLAS=5", {u, 5, u, u, u}},
        // Unknown names, other spellings and stray text are skipped with their values.
        list_case{"TAV_DOMAIN_LAPACK=9,tav_domain_fft=8,TAV_DOMAIN_BLAS=4", {u, 4, u, u, u}},
        list_case{"TAV_DOMAIN_BLASX=3 =5 TAV_DOMAIN_PARDISO=2", {u, u, u, u, 2}},
        list_case{"", {u, u, u, u, u}}, list_case{" ,;:'\"", {u, u, u, u, u}}));

struct rule_case {
  const char* name;
  count_inputs in;
  int expected;
};

// A 16-core machine with 32 logical processors, OpenMP offering 32 threads, dynamic off.
constexpr count_inputs machine{.openmp_max = 32, .dynamic = false, .physical_cores = 16};

constexpr count_inputs with(count_inputs in, auto change) {
  change(in);
  return in;
}

// An MPI rank whose count comes from OpenMP: 4 ranks per node at thread level 3.
constexpr count_inputs rank = with(machine, [](count_inputs& c) {
  c.processes_per_node = 4;
  c.mpi_thread_level = 3;
});

std::ostream& operator<<(std::ostream& os, const rule_case& c) { return os << c.name; }

class ThreadCountRule : public testing::TestWithParam<rule_case> {};

TEST_P(ThreadCountRule, Gives) { EXPECT_EQ(thread_count(GetParam().in), GetParam().expected); }

INSTANTIATE_TEST_SUITE_P(
    Threads, ThreadCountRule,
    testing::Values(
        rule_case{"OpenMPMaximum", machine, 32},
        rule_case{"GlobalBeatsOpenMP", with(machine, [](auto& c) { c.global_count = 6; }), 6},
        rule_case{"DomainBeatsGlobal",
                  with(machine, [](auto& c) { c.global_count = 6; c.domain_count = 3; }), 3},
        rule_case{"DomainZeroFollowsGlobal",
                  with(machine, [](auto& c) { c.global_count = 6; c.domain_count = 0; }), 6},
        rule_case{"GlobalZeroFallsToOpenMP", with(machine, [](auto& c) { c.global_count = 0; }),
                  32},
        rule_case{"DynamicLowersToPhysical", with(machine, [](auto& c) { c.dynamic = true; }), 16},
        rule_case{"DynamicKeepsSmallerCount",
                  with(machine, [](auto& c) { c.dynamic = true; c.global_count = 5; }), 5},
        rule_case{"DynamicInParallelIsSerial",
                  with(machine, [](auto& c) { c.dynamic = true; c.in_parallel = true; }), 1},
        rule_case{"StaticInParallelKeepsCount",
                  with(machine, [](auto& c) { c.in_parallel = true; c.global_count = 5; }), 5},
        rule_case{"RanksSharePhysicalCores", rank, 4},
        rule_case{"RanksShareAtLeastOne", with(rank, [](auto& c) { c.processes_per_node = 64; }),
                  1},
        rule_case{"RanksKeepSmallerCount", with(rank, [](auto& c) { c.openmp_max = 2; }), 2},
        rule_case{"RankAtLevelZeroIsSerial", with(rank, [](auto& c) { c.mpi_thread_level = 0; }),
                  1},
        rule_case{"RankWithoutLevelIsSerial",
                  with(rank, [](auto& c) { c.mpi_thread_level = -1; }), 1},
        rule_case{"OmpNumThreadsDisablesRankRule",
                  with(rank, [](auto& c) { c.omp_num_threads = 8; c.openmp_max = 8; }), 8},
        rule_case{"ChosenCountDisablesRankRule", with(rank, [](auto& c) { c.global_count = 12; }),
                  12},
        rule_case{"DomainCountDisablesRankRule", with(rank, [](auto& c) { c.domain_count = 12; }),
                  12},
        rule_case{"NoProcessesPerNodeNoRankRule",
                  with(rank, [](auto& c) { c.processes_per_node = -1; c.mpi_thread_level = 0; }),
                  32},
        rule_case{"MpiSafeZeroIsSerial", with(machine, [](auto& c) { c.mpi_safe = 0; }), 1},
        rule_case{"MpiSafeOneKeepsCount",
                  with(rank, [](auto& c) { c.mpi_safe = 1; c.mpi_thread_level = 0; }), 32},
        rule_case{"DynamicThenRankRule", with(rank, [](auto& c) { c.dynamic = true; }), 4}),
    [](const auto& info) { return std::string(info.param.name); });

// Inside a parallel region of two threads: what each thread is told, before and after it sets
// its own count.
TAV_SCENARIO(threads_in_parallel_region) {
  int answers[2][2] = {};
#pragma omp parallel num_threads(2)
  {
    int t = omp_get_thread_num();
    answers[t][0] = tav_serv_get_max_threads();
    tav_serv_set_num_threads_local(3 + t);
    answers[t][1] = tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS);
  }
  std::printf("%d %d %d %d outside=%d\n", answers[0][0], answers[0][1], answers[1][0],
              answers[1][1], tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS));
}

// With dynamic threading each thread is told 1, without it the count stands; either way a
// thread's own count comes first, and the master thread's own count, 3, outlives the region.
TEST(ThreadsParallelRegion, OwnCountComesFirst) {
  auto r = run_child("threads_in_parallel_region", {{"TAV_NUM_THREADS", "2"}});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "1 3 1 4 outside=3\n");
  r = run_child("threads_in_parallel_region", {{"TAV_NUM_THREADS", "2"}, {"TAV_DYNAMIC", "false"}});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "2 3 2 4 outside=3\n");
}

// Four threads race into the first reading while a fifth sets counts: each must see the whole
// reading (the stripe count) and a count that is either the old or the new one.
TAV_SCENARIO(threads_racing_first_queries) {
  std::latch start(5);
  int answers[4][3] = {};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      start.arrive_and_wait();
      answers[t][0] = tav_serv_get_num_stripes();
      answers[t][1] = tav_serv_domain_get_max_threads(t + 1);
      answers[t][2] = tav_serv_get_dynamic();
    });
  threads.emplace_back([&] {
    start.arrive_and_wait();
    tav_serv_set_num_threads(2);
    tav_serv_domain_set_num_threads(1, TAV_DOMAIN_FFT);
  });
  for (auto& thread : threads) thread.join();
  for (const auto& a : answers) std::printf("%d %d %d\n", a[0], a[1] == 1 || a[1] == 2, a[2]);
}

TEST(ThreadsConcurrency, FirstQueriesSeeOneReading) {
  auto r = run_child("threads_racing_first_queries", {{"TAV_NUM_STRIPES", "3"},
                                                      {"TAV_NUM_THREADS", "1"},
                                                      {"TAV_DYNAMIC", "false"}});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "3 1 0\n3 1 0\n3 1 0\n3 1 0\n");
}

// A topology tree of 2 packages x 2 cores x 2 hyper-threads; core ids restart in each package,
// as the kernel numbers them.
class ThreadsFakeTopology : public testing::Test {
 protected:
  void SetUp() override {
    root_ = fs::temp_directory_path() / ("tav_topology_" + std::to_string(getpid()));
    for (int cpu = 0; cpu < 8; ++cpu) {
      fs::path dir = root_ / ("cpu" + std::to_string(cpu)) / "topology";
      fs::create_directories(dir);
      std::ofstream(dir / "physical_package_id") << cpu / 4 << '\n';
      std::ofstream(dir / "core_id") << (cpu / 2) % 2 << '\n';
    }
  }
  void TearDown() override { fs::remove_all(root_); }

  hardware_counts count(const std::vector<int>& cpus) {
    return count_hardware(root_.c_str(), cpus);
  }

  fs::path root_;
};

void expect_counts(const hardware_counts& c, int logical, int physical, int packages,
                   int per_package, bool hyper_threading) {
  EXPECT_EQ(c.logical, logical);
  EXPECT_EQ(c.physical, physical);
  EXPECT_EQ(c.packages, packages);
  EXPECT_EQ(c.cores_per_package, per_package);
  EXPECT_EQ(c.hyper_threading, hyper_threading);
}

// All processors, one thread per core, the siblings of one core.
TEST_F(ThreadsFakeTopology, CountsOfProcessorSets) {
  expect_counts(count({0, 1, 2, 3, 4, 5, 6, 7}), 8, 4, 2, 2, true);
  expect_counts(count({0, 2, 4, 6}), 4, 4, 2, 2, false);
  expect_counts(count({4, 5}), 2, 1, 1, 1, true);
}

TEST_F(ThreadsFakeTopology, MissingTopologyCountsEachProcessorAsACore) {
  fs::remove(root_ / "cpu3" / "topology" / "core_id");
  expect_counts(count({0, 1, 2, 3}), 4, 4, 1, 4, false);
  expect_counts(count({0, 1, 9}), 3, 3, 1, 3, false);
}

TEST(ThreadsHardware, MatchesSysfs) {
  if (!fs::exists("/sys/devices/system/cpu/cpu0/topology/core_id"))
    GTEST_SKIP() << "no CPU topology in sysfs";
  const tav::test::sysfs_topology expected = tav::test::read_sysfs_topology();
  const hardware_counts& got = hardware();
  expect_counts(got, expected.logical, expected.physical, expected.packages,
                expected.physical / expected.packages, expected.logical > expected.physical);
  EXPECT_EQ(got.logical, static_cast<int>(allowed_cpus().size()));
}

// Narrows the affinity mask to the last allowed processor before the counts are taken.
TAV_SCENARIO(threads_hardware_one_cpu) {
  std::vector<int> cpus = allowed_cpus();
  cpu_set_t mask;
  CPU_ZERO(&mask);
  CPU_SET(cpus.back(), &mask);
  sched_setaffinity(0, sizeof mask, &mask);
  const hardware_counts& c = hardware();
  std::printf("%d %d %d %d %d\n", c.logical, c.physical, c.packages, c.cores_per_package,
              c.hyper_threading);
}

TEST(ThreadsHardware, OnlyAllowedProcessorsCount) {
  auto r = tav::test::run_child("threads_hardware_one_cpu");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "1 1 1 1 0\n");
}

}  // namespace
