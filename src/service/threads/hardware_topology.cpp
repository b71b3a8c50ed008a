// Hardware counts from the affinity mask and the kernel's CPU topology files.
#include "service/threads/hardware_topology.hpp"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>

namespace tav::service {
namespace {

// Reads the one integer that a topology file holds.
bool read_topology_value(const char* cpu_dir, int cpu, const char* field, int& value) {
  char path[512];
  std::snprintf(path, sizeof path, "%s/cpu%d/topology/%s", cpu_dir, cpu, field);
  std::FILE* file = std::fopen(path, "r");
  if (file == nullptr) return false;
  bool read = std::fscanf(file, "%d", &value) == 1;
  std::fclose(file);
  return read;
}

template <typename T>
int distinct_count(std::vector<T>& values) {
  std::sort(values.begin(), values.end());
  return static_cast<int>(std::unique(values.begin(), values.end()) - values.begin());
}

hardware_counts without_topology(int logical) {
  hardware_counts counts;
  counts.logical = std::max(logical, 1);
  counts.physical = counts.logical;
  counts.cores_per_package = counts.logical;
  return counts;
}

struct cpu_set_deleter {
  void operator()(cpu_set_t* set) const { CPU_FREE(set); }
};

}  // namespace

std::vector<int> allowed_cpus() {
  std::vector<int> cpus;
  // The kernel refuses (EINVAL) a mask smaller than its own, so grow until it fits.
  for (int capacity = 1024; capacity <= (1 << 22); capacity *= 2) {
    std::unique_ptr<cpu_set_t, cpu_set_deleter> set(CPU_ALLOC(capacity));
    if (!set) break;
    std::size_t bytes = CPU_ALLOC_SIZE(capacity);
    if (sched_getaffinity(0, bytes, set.get()) == 0) {
      for (int cpu = 0; cpu < capacity; ++cpu)
        if (CPU_ISSET_S(cpu, bytes, set.get())) cpus.push_back(cpu);
      break;
    }
    if (errno != EINVAL) break;
  }
  return cpus;
}

hardware_counts count_hardware(const char* cpu_dir, const std::vector<int>& cpus) {
  std::vector<std::pair<int, int>> cores;
  std::vector<int> packages;
  for (int cpu : cpus) {
    int core = 0;
    int package = 0;
    if (!read_topology_value(cpu_dir, cpu, "core_id", core) ||
        !read_topology_value(cpu_dir, cpu, "physical_package_id", package))
      return without_topology(static_cast<int>(cpus.size()));
    cores.emplace_back(package, core);
    packages.push_back(package);
  }
  if (cpus.empty()) return without_topology(1);
  hardware_counts counts;
  counts.logical = static_cast<int>(cpus.size());
  counts.physical = distinct_count(cores);
  counts.packages = distinct_count(packages);
  counts.cores_per_package = std::max(counts.physical / counts.packages, 1);
  counts.hyper_threading = counts.logical > counts.physical;
  return counts;
}

hardware_counts machine_hardware() {
  try {
    std::vector<int> cpus = allowed_cpus();
    if (cpus.empty()) {
      long online = sysconf(_SC_NPROCESSORS_ONLN);
      for (long cpu = 0; cpu < online; ++cpu) cpus.push_back(static_cast<int>(cpu));
    }
    return count_hardware("/sys/devices/system/cpu", cpus);
  } catch (const std::bad_alloc&) {
    // Too little memory for a handful of integers: one core is the safe answer.
    return hardware_counts{};
  }
}

}  // namespace tav::service
