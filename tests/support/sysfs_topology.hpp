// The allowed processors counted from sysfs the way lscpu counts them, independently of the
// library: logical processors, distinct (package, core) pairs and distinct packages.
#pragma once

#include <sched.h>

#include <fstream>
#include <set>
#include <string>
#include <utility>

namespace tav::test {

struct sysfs_topology {
  int logical = 0, physical = 0, packages = 0;
};

inline sysfs_topology read_sysfs_topology() {
  cpu_set_t mask;
  sched_getaffinity(0, sizeof mask, &mask);
  std::set<std::pair<int, int>> cores;
  std::set<int> packages;
  sysfs_topology t;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (!CPU_ISSET(cpu, &mask)) continue;
    ++t.logical;
    const std::string dir = "/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/topology/";
    int core = cpu, package = 0;
    std::ifstream(dir + "core_id") >> core;
    std::ifstream(dir + "physical_package_id") >> package;
    cores.emplace(package, core);
    packages.insert(package);
  }
  t.physical = static_cast<int>(cores.size());
  t.packages = static_cast<int>(packages.size());
  return t;
}

}  // namespace tav::test
