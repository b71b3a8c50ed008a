// Thread counts in a fresh process: the threading variables, their precedence among themselves
// and against calls made before the first query, the MPI rules and the exported forms.
#include <gtest/gtest.h>
#include <tav/tav_threads.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "child_process.hpp"
#include "sysfs_topology.hpp"

namespace {

using tav::test::env_list;
using tav::test::run_child;

// What a query of each domain answers: all, BLAS, FFT, VML, PARDISO, domain 7, no domain.
void print_report() {
  std::printf("%d %d %d %d %d %d %d dynamic=%d\n", tav_serv_domain_get_max_threads(0),
              tav_serv_domain_get_max_threads(1), tav_serv_domain_get_max_threads(2),
              tav_serv_domain_get_max_threads(3), tav_serv_domain_get_max_threads(4),
              tav_serv_domain_get_max_threads(7), tav_serv_get_max_threads(),
              tav_serv_get_dynamic());
}

// Runs the calls named by the arguments in order ("set N", "domain N D", "dynamic F",
// "safe F", "report"), printing what the calls that answer return.
TAV_SCENARIO(threads_calls) {
  const auto& args = tav::test::scenario_args();
  for (std::size_t i = 0; i < args.size(); ++i) {
    auto number = [&] { return std::atoi(args.at(++i).c_str()); };
    if (args[i] == "set") {
      tav_serv_set_num_threads(number());
    } else if (args[i] == "domain") {
      int n = number();
      int domain = number();
      std::printf("domain(%d,%d)=%d\n", n, domain, tav_serv_domain_set_num_threads(n, domain));
    } else if (args[i] == "dynamic") {
      tav_serv_set_dynamic(number());
    } else if (args[i] == "safe") {
      tav_serv_mpi_safe(number());
    } else if (args[i] == "report") {
      print_report();
    }
  }
}

std::string same(int n) {
  std::string line;
  for (int i = 0; i < 7; ++i) line += std::to_string(n) + (i < 6 ? " " : "");
  return line;
}

struct env_case {
  const char* name;
  env_list env;
  std::vector<std::string> calls;
  std::string out;
};

std::ostream& operator<<(std::ostream& os, const env_case& c) { return os << c.name; }

class ThreadsEnvironment : public testing::TestWithParam<env_case> {};

TEST_P(ThreadsEnvironment, Report) {
  const env_case& c = GetParam();
  std::vector<std::string> calls = c.calls;
  calls.push_back("report");
  auto r = run_child("threads_calls", c.env, calls);
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, c.out);
}

// Without dynamic lowering and with OpenMP offering 3 threads, so that every source shows.
env_list fixed(env_list more) {
  more.insert(more.begin(), {{"TAV_DYNAMIC", "false"}, {"OMP_NUM_THREADS", "3"}});
  return more;
}

// The grammar of the values is threads_rules_unit's; here that each variable is read and where it
// stands among the sources.
INSTANTIATE_TEST_SUITE_P(
    Threads, ThreadsEnvironment,
    testing::Values(
        env_case{"OpenMPCount", fixed({}), {}, same(3) + " dynamic=0\n"},
        env_case{"NumThreads", fixed({{"TAV_NUM_THREADS", "6"}}), {}, same(6) + " dynamic=0\n"},
        env_case{"NumThreadsZeroIsUnset", fixed({{"TAV_NUM_THREADS", "0"}}), {},
                 same(3) + " dynamic=0\n"},
        env_case{"NumThreadsPast255Characters",
                 fixed({{"TAV_NUM_THREADS", std::string(255, '0') + "x"}}), {},
                 same(3) + " dynamic=0\n"},
        env_case{"DomainList",
                 fixed({{"TAV_DOMAIN_NUM_THREADS", "TAV_DOMAIN_ALL=2, TAV_DOMAIN_BLAS=4"}}), {},
                 "2 4 2 2 2 2 2 dynamic=0\n"},
        env_case{"DomainListSeparators",
                 fixed({{"TAV_DOMAIN_NUM_THREADS",
                         "TAV_DOMAIN_FFT 5;TAV_DOMAIN_VML=6:'TAV_DOMAIN_PARDISO = 7\""}}),
                 {}, "3 3 5 6 7 3 3 dynamic=0\n"},
        env_case{"NumThreadsBeatsDomainAll",
                 fixed({{"TAV_NUM_THREADS", "5"}, {"TAV_DOMAIN_NUM_THREADS", "TAV_DOMAIN_ALL=2"}}),
                 {}, same(5) + " dynamic=0\n"},
        env_case{"DomainAllWhenNumThreadsIsZero",
                 fixed({{"TAV_NUM_THREADS", "0"}, {"TAV_DOMAIN_NUM_THREADS", "TAV_DOMAIN_ALL=2"}}),
                 {}, same(2) + " dynamic=0\n"},
        // Calls made before the first query win over the environment.
        env_case{"CallBeatsNumThreads", fixed({{"TAV_NUM_THREADS", "2"}}), {"set", "5"},
                 same(5) + " dynamic=0\n"},
        env_case{"DomainZeroFollowsGlobal",
                 fixed({{"TAV_NUM_THREADS", "2"},
                        {"TAV_DOMAIN_NUM_THREADS", "TAV_DOMAIN_BLAS=4"}}),
                 {"domain", "0", "1"}, "domain(0,1)=1\n" + same(2) + " dynamic=0\n"},
        env_case{"CallBeatsDynamic", fixed({{"TAV_NUM_THREADS", "1"}}), {"dynamic", "7"},
                 same(1) + " dynamic=1\n"},
        // Counts that are not positive leave the environment in charge.
        env_case{"SetZeroOrNegativeChangesNothing", fixed({{"TAV_NUM_THREADS", "2"}}),
                 {"set", "0", "set", "-3", "report", "set", "0", "set", "-3"},
                 same(2) + " dynamic=0\n" + same(2) + " dynamic=0\n"},
        env_case{"BadDomainOrNegativeCount", fixed({}),
                 {"domain", "4", "5", "domain", "4", "-1", "domain", "-1", "2", "domain", "2", "4"},
                 "domain(4,5)=0\ndomain(4,-1)=0\ndomain(-1,2)=0\ndomain(2,4)=1\n"
                 "3 3 3 3 2 3 3 dynamic=0\n"},
        env_case{"DomainSevenIsDomainZero", fixed({}),
                 {"domain", "2", "0", "domain", "5", "1", "domain", "6", "4"},
                 "domain(2,0)=1\ndomain(5,1)=1\ndomain(6,4)=1\n2 5 2 2 6 2 2 dynamic=0\n"},
        env_case{"MpiSafeZeroIsSerial", fixed({{"TAV_NUM_THREADS", "2"}}), {"safe", "0"},
                 same(1) + " dynamic=0\n"},
        env_case{"MpiSafeOtherThanOneIsZero", fixed({{"TAV_NUM_THREADS", "2"}}), {"safe", "2"},
                 same(1) + " dynamic=0\n"}),
    [](const auto& info) { return std::string(info.param.name); });

TAV_SCENARIO(threads_dynamic) { std::printf("%d\n", tav_serv_get_dynamic()); }

// The spellings are threads_rules_unit's; here only that the variable is read.
TEST(ThreadsDynamic, OnlyFalseOrFALSETurnsItOff) {
  std::pair<const char*, const char*> cases[] = {{"False", "1\n"}, {" 'false'", "0\n"}};
  for (const auto& [value, out] : cases) {
    auto r = run_child("threads_dynamic", {{"TAV_DYNAMIC", value}});
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, out) << '[' << value << ']';
  }
  EXPECT_EQ(run_child("threads_dynamic").out, "1\n");
}

// With the dynamic switch on, a count above the physical cores is lowered to them.
TEST(ThreadsDynamic, LowersToPhysicalCores) {
  int cores = tav::test::read_sysfs_topology().physical;
  auto r = run_child("threads_calls", {{"TAV_NUM_THREADS", "64"}}, {"report"});
  EXPECT_EQ(r.out, same(cores) + " dynamic=1\n");
  r = run_child("threads_calls", {{"TAV_NUM_THREADS", "1"}}, {"report"});
  EXPECT_EQ(r.out, same(1) + " dynamic=1\n");
}

// The MPI rules, for a count that comes from OpenMP (one thread per allowed processor).
std::vector<env_case> mpi_cases() {
  // OpenMP offers one thread per allowed processor when OMP_NUM_THREADS is not set.
  const tav::test::sysfs_topology topology = tav::test::read_sysfs_topology();
  int logical = topology.logical;
  int shared = std::min(logical, topology.physical);
  env_list off = {{"TAV_DYNAMIC", "false"}};
  auto with = [&](env_list more) {
    more.insert(more.begin(), off.begin(), off.end());
    return more;
  };
  auto line = [](int n) { return same(n) + " dynamic=0\n"; };
  return {
      {"PhysicalCoresPerProcess", with({{"TAV_MPI_PPN", "1"}, {"OMPI_MPI_THREAD_LEVEL", "3"}}),
       {}, line(shared)},
      {"AtLeastOnePerProcess", with({{"TAV_MPI_PPN", "64"}, {"OMPI_MPI_THREAD_LEVEL", "1"}}), {},
       line(1)},
      {"LevelZeroIsSerial", with({{"TAV_MPI_PPN", "1"}, {"OMPI_MPI_THREAD_LEVEL", "0"}}), {},
       line(1)},
      {"LevelFourIsZero", with({{"TAV_MPI_PPN", "1"}, {"OMPI_MPI_THREAD_LEVEL", "4"}}), {},
       line(1)},
      {"NoLevelIsSerial", with({{"TAV_MPI_PPN", "1"}}), {}, line(1)},
      {"NoProcessesPerNode", with({{"OMPI_MPI_THREAD_LEVEL", "0"}}), {}, line(logical)},
      {"LauncherLocalSize", with({{"OMPI_COMM_WORLD_LOCAL_SIZE", "1"}}), {}, line(1)},
      {"LauncherLocalRanks", with({{"MPI_LOCALNRANKS", "1"}}), {}, line(1)},
      {"NonDigitPpnIsUnknown", with({{"TAV_MPI_PPN", "x"}}), {}, line(logical)},
      {"NonDigitPpnFallsToLauncher", with({{"TAV_MPI_PPN", "x"}, {"MPI_LOCALNRANKS", "1"}}), {},
       line(1)},
      {"OmpNumThreadsDisablesRule", with({{"TAV_MPI_PPN", "1"}, {"OMP_NUM_THREADS", "2"}}), {},
       line(2)},
      {"CallDisablesRule", with({{"TAV_MPI_PPN", "1"}}), {"set", "2"}, line(2)},
      {"DomainCountDisablesRuleForItsDomain",
       with({{"TAV_MPI_PPN", "1"}, {"TAV_DOMAIN_NUM_THREADS", "TAV_DOMAIN_BLAS=2"}}), {},
       "1 2 1 1 1 1 1 dynamic=0\n"},
      {"MpiSafeOneKeepsCount", with({{"TAV_MPI_PPN", "1"}}), {"safe", "1"}, line(logical)},
      {"MpiSafeZeroWithoutMpi", with({}), {"safe", "0"}, line(1)},
  };
}

INSTANTIATE_TEST_SUITE_P(Mpi, ThreadsEnvironment, testing::ValuesIn(mpi_cases()),
                         [](const auto& info) { return std::string(info.param.name); });

// Every upper-case and Fortran form reaches its service.
TAV_SCENARIO(threads_exported_forms) {
  int two = 2, three = 3, five = 5, zero = 0, blas = TAV_DOMAIN_BLAS;
  TAV_SET_NUM_THREADS(&three);
  int stored = TAV_DOMAIN_SET_NUM_THREADS(&two, &blas);
  TAV_SET_DYNAMIC(&zero);
  std::printf("%d %d %d %d\n", TAV_GET_MAX_THREADS(), TAV_DOMAIN_GET_MAX_THREADS(&blas),
              TAV_GET_DYNAMIC(), stored);
  TAV_Set_Num_Threads(4);
  stored = TAV_Domain_Set_Num_Threads(0, TAV_DOMAIN_BLAS);
  std::printf("%d %d %d", TAV_Get_Max_Threads(), TAV_Domain_Get_Max_Threads(1), stored);
  TAV_Set_Dynamic(5);
  std::printf(" %d\n", TAV_Get_Dynamic());
  int first = TAV_SET_NUM_THREADS_LOCAL(&five);
  int second = TAV_Set_Num_Threads_Local(6);
  std::printf("%d %d %d\n", first, second, tav_serv_get_max_threads());
}

TEST(ThreadsExports, UpperCaseAndFortranForms) {
  auto r = run_child("threads_exported_forms");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "3 2 0 1\n4 4 1 1\n0 5 6\n");
}

// Each thread keeps its own count; a new thread starts at 0. The queries below never reach the
// process-wide settings, since every querying thread has a positive count of its own.
TEST(ThreadsLocal, EachThreadHasItsOwnCount) {
  std::latch both_set(2);
  int previous[2][2] = {};
  int answer[2] = {};
  auto body = [&](int t) {
    previous[t][0] = tav_serv_set_num_threads_local(7 + t);
    previous[t][1] = tav_serv_set_num_threads_local(3 + t);
    both_set.arrive_and_wait();
    answer[t] = tav_serv_domain_get_max_threads(TAV_DOMAIN_FFT);
  };
  std::thread first(body, 0);
  std::thread second(body, 1);
  first.join();
  second.join();
  EXPECT_EQ(previous[0][0], 0);
  EXPECT_EQ(previous[1][0], 0);
  EXPECT_EQ(previous[0][1], 7);
  EXPECT_EQ(previous[1][1], 8);
  EXPECT_EQ(answer[0], 3);
  EXPECT_EQ(answer[1], 4);
}

}  // namespace
