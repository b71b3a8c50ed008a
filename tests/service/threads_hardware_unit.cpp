// Hardware counts: distinct (package, core) pairs over the allowed processors, on made-up
// topology trees and on this machine, with and without a narrowed affinity mask.
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>
#include <vector>

#include "child_process.hpp"
#include "service/threads/hardware_topology.hpp"
#include "service/threads/thread_settings.hpp"

namespace {

using namespace tav::service;
namespace fs = std::filesystem;

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

TEST_F(ThreadsFakeTopology, AllProcessors) {
  expect_counts(count({0, 1, 2, 3, 4, 5, 6, 7}), 8, 4, 2, 2, true);
}

TEST_F(ThreadsFakeTopology, OneThreadPerCore) {
  expect_counts(count({0, 2, 4, 6}), 4, 4, 2, 2, false);
}

TEST_F(ThreadsFakeTopology, SiblingsOfOneCore) {
  expect_counts(count({4, 5}), 2, 1, 1, 1, true);
}

TEST_F(ThreadsFakeTopology, MissingTopologyCountsEachProcessorAsACore) {
  fs::remove(root_ / "cpu3" / "topology" / "core_id");
  expect_counts(count({0, 1, 2, 3}), 4, 4, 1, 4, false);
  expect_counts(count({0, 1, 9}), 3, 3, 1, 3, false);
}

// The machine's counts, taken independently the way lscpu takes them.
hardware_counts sysfs_counts() {
  cpu_set_t mask;
  sched_getaffinity(0, sizeof mask, &mask);
  std::set<std::pair<int, int>> cores;
  std::set<int> packages;
  int logical = 0;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (!CPU_ISSET(cpu, &mask)) continue;
    ++logical;
    std::string dir = "/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/topology/";
    int core = -1;
    int package = -1;
    std::ifstream(dir + "core_id") >> core;
    std::ifstream(dir + "physical_package_id") >> package;
    cores.emplace(package, core);
    packages.insert(package);
  }
  hardware_counts c;
  c.logical = logical;
  c.physical = static_cast<int>(cores.size());
  c.packages = static_cast<int>(packages.size());
  c.cores_per_package = c.physical / c.packages;
  c.hyper_threading = c.logical > c.physical;
  return c;
}

TEST(ThreadsHardware, MatchesSysfs) {
  if (!fs::exists("/sys/devices/system/cpu/cpu0/topology/core_id"))
    GTEST_SKIP() << "no CPU topology in sysfs";
  hardware_counts expected = sysfs_counts();
  const hardware_counts& got = hardware();
  expect_counts(got, expected.logical, expected.physical, expected.packages,
                expected.cores_per_package, expected.hyper_threading);
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
