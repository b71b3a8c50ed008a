// The memory manager's one-time start: the switches read from the environment and the system
// functions that every block comes from.
#pragma once

#include <cstddef>

namespace tav::service {

struct memory_switches {
  bool cache_disabled = false;
  long long fast_limit = -1;  // bytes of high-bandwidth memory; negative is unlimited
};

// Parses TAV_DISABLE_FAST_MM (present and non-empty disables the cache) and
// TAV_FAST_MEMORY_LIMIT (a decimal count of MiB; without digits the limit stays unlimited).
// Either may be null; only the first 32 characters of a value count.
memory_switches parse_switches(const char* disable_fast_mm, const char* fast_memory_limit);

// Where blocks come from: the application's hooks when it replaced any, else the C library's
// malloc and free with high-bandwidth memory in front when that is available.
struct system_functions {
  void* (*allocate)(size_t bytes) = nullptr;
  void (*release)(void* start) = nullptr;
  bool high_bandwidth = false;
};

// Starts the manager on first use; afterwards it only tests a flag.
void start_memory_manager();

// Both valid only after start_memory_manager(), and fixed from then on.
bool cache_disabled();
const system_functions& chosen_system_functions();

}  // namespace tav::service
