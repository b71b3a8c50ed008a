// The allocator hook variables, the switches read once from the environment under the manager's
// lock, the one-time start, and the exports that read or set the switches.
#include "service/memory/manager_start.hpp"

#include <tav/tav_memory.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "common/exports.hpp"
#include "service/cpu/cpu_state.hpp"
#include "service/memory/high_bandwidth.hpp"

TAV_BEGIN_DECLS
TAV_API void* (*i_malloc)(size_t size) = std::malloc;
TAV_API void (*i_free)(void* pointer) = std::free;
TAV_API void* (*i_realloc)(void* pointer, size_t size) = std::realloc;
TAV_API void* (*i_calloc)(size_t count, size_t size) = std::calloc;
TAV_END_DECLS

namespace tav::service {
namespace {

constexpr size_t longest_value = 32;

// A limit of 2^43 MiB or more is as good as unlimited; clamping keeps the shift in range.
constexpr long long largest_limit_mib = (1LL << 43) - 1;

// Lock order: start_lock, then switch_lock (the manager's lock over the switches).
std::mutex start_lock;
std::mutex switch_lock;
bool environment_read = false;
std::atomic<bool> disabled{false};

std::atomic<bool> started{false};
system_functions functions;

void read_environment_locked() {
  if (environment_read) return;
  memory_switches read =
      parse_switches(std::getenv("TAV_DISABLE_FAST_MM"), std::getenv("TAV_FAST_MEMORY_LIMIT"));
  // An earlier tav_serv_disable_fast_mm() call stands even when the variable is absent.
  if (read.cache_disabled) disabled.store(true, std::memory_order_relaxed);
  high_bandwidth_budget().reset(read.fast_limit);
  environment_read = true;
}

bool hooks_replaced() {
  return i_malloc != &std::malloc || i_free != &std::free || i_realloc != &std::realloc ||
         i_calloc != &std::calloc;
}

}  // namespace

memory_switches parse_switches(const char* disable_fast_mm, const char* fast_memory_limit) {
  memory_switches read;
  read.cache_disabled = disable_fast_mm != nullptr && *disable_fast_mm != '\0';
  if (fast_memory_limit == nullptr) return read;
  char text[longest_value + 1] = {};
  std::strncpy(text, fast_memory_limit, longest_value);
  char* end = nullptr;
  long long mib = std::strtoll(text, &end, 10);
  if (end == text) return read;
  read.fast_limit = std::clamp(mib, -largest_limit_mib, largest_limit_mib) << 20;
  return read;
}

void start_memory_manager() {
  if (started.load(std::memory_order_acquire)) return;
  std::lock_guard start_guard(start_lock);
  if (started.load(std::memory_order_relaxed)) return;
  std::lock_guard switch_guard(switch_lock);
  read_environment_locked();
  if (hooks_replaced()) {
    functions = {i_malloc, i_free, false};
  } else {
    functions = {&std::malloc, &std::free, open_high_bandwidth(this_processor().features)};
  }
  started.store(true, std::memory_order_release);
}

bool cache_disabled() { return disabled.load(std::memory_order_relaxed); }

const system_functions& chosen_system_functions() { return functions; }

}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT int tav_serv_disable_fast_mm(void) {
  std::lock_guard guard(switch_lock);
  if (environment_read) return 0;
  disabled.store(true, std::memory_order_relaxed);
  return 1;
}
TAV_EXPORT_ALIAS(TAV_Disable_Fast_MM, tav_serv_disable_fast_mm);
TAV_EXPORT_ALIAS(TAV_DISABLE_FAST_MM, tav_serv_disable_fast_mm);

TAV_EXPORT int tav_serv_get_fast_mm_status(void) {
  std::lock_guard guard(switch_lock);
  read_environment_locked();
  return cache_disabled() ? 1 : 0;
}

TAV_EXPORT long long tav_serv_check_fast_memory_size(void) {
  {
    std::lock_guard guard(switch_lock);
    read_environment_locked();
  }
  return high_bandwidth_budget().remaining();
}
