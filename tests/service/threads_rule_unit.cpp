// The thread-count rule over chosen settings: the order of the sources, the dynamic switch and
// the MPI rules, on machines of any size; and the answer from many threads at once.
#include <gtest/gtest.h>
#include <omp.h>
#include <tav/tav_threads.h>

#include <cstdio>
#include <latch>
#include <ostream>
#include <thread>
#include <vector>

#include "child_process.hpp"
#include "service/threads/thread_count.hpp"
#include "service/threads/thread_settings.hpp"

namespace {

using namespace tav::service;
using tav::test::run_child;

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

TEST(ThreadsParallelRegion, DynamicGivesOneButOwnCountComesFirst) {
  auto r = run_child("threads_in_parallel_region", {{"TAV_NUM_THREADS", "2"}});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  // The master thread's own count, 3, outlives the region.
  EXPECT_EQ(r.out, "1 3 1 4 outside=3\n");
}

TEST(ThreadsParallelRegion, WithoutDynamicTheCountStands) {
  auto r = run_child("threads_in_parallel_region",
                     {{"TAV_NUM_THREADS", "2"}, {"TAV_DYNAMIC", "false"}});
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

}  // namespace
