// Counting the processors this process may run on and the physical cores behind them.
#pragma once

#include <vector>

#include "service/threads/thread_settings.hpp"

namespace tav::service {

// The CPUs in the calling thread's affinity mask, in increasing order; empty if unreadable.
std::vector<int> allowed_cpus();

// Counts over `cpus` from <cpu_dir>/cpu<N>/topology/core_id and physical_package_id, the way
// lscpu does: a physical core is a distinct (package, core id) pair. When some CPU has no
// readable topology, every CPU counts as a core of its own in one package.
hardware_counts count_hardware(const char* cpu_dir, const std::vector<int>& cpus);

// count_hardware over /sys/devices/system/cpu and the affinity mask, or over the online
// processors when the mask cannot be read.
hardware_counts machine_hardware();

}  // namespace tav::service
