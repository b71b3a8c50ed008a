// The memory manager's once-read settings, each in a fresh process: cache switch, high-bandwidth
// limit, peak-usage modes and allocator hooks.
#include <gtest/gtest.h>
#include <tav/tav_memory.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "child_process.hpp"

namespace {

// Runs the calls named by the arguments in order and prints the results of the queries,
// blank-separated: d disable_fast_mm, s get_fast_mm_status, l check_fast_memory_size,
// c whether a released 1000-byte buffer stays cached (1) or not (0), pN peak_mem_usage(N),
// PN TAV_PEAK_MEM_USAGE(&N); mN takes N bytes with tav_serv_malloc and f frees the newest one
// (the rest are freed at the end).
TAV_SCENARIO(memory_calls) {
  std::vector<void*> held;
  std::string results;
  auto print = [&](long long value) {
    results += (results.empty() ? "" : " ") + std::to_string(value);
  };
  for (const std::string& call : tav::test::scenario_args()) {
    int n = call.size() > 1 ? std::atoi(call.c_str() + 1) : 0;
    int buffers = 0;
    switch (call[0]) {
      case 'd': print(tav_serv_disable_fast_mm()); break;
      case 's': print(tav_serv_get_fast_mm_status()); break;
      case 'l': print(tav_serv_check_fast_memory_size()); break;
      case 'c':
        tav_serv_deallocate(tav_serv_allocate(1000, 64));
        tav_serv_mem_stat(&buffers);
        print(buffers);
        tav_serv_thread_free_buffers();
        break;
      case 'p': print(tav_serv_peak_mem_usage(n)); break;
      case 'P': print(TAV_PEAK_MEM_USAGE(&n)); break;
      case 'm': held.push_back(tav_serv_malloc(static_cast<size_t>(n), 64)); break;
      case 'f':
        tav_serv_free(held.back());
        held.pop_back();
        break;
      default: print(999);
    }
  }
  for (void* pointer : held) tav_serv_free(pointer);
  std::printf("%s\n", results.c_str());
}

bool refuse = false;
int hook_allocations = 0;
int hook_releases = 0;

void* counting_malloc(size_t size) {
  if (refuse) return nullptr;
  ++hook_allocations;
  return std::malloc(size);
}

void counting_free(void* pointer) {
  ++hook_releases;
  std::free(pointer);
}

// Every form fails while the hook refuses, before and after the thread's record exists; the
// blocks that were made all go back through the hooks, except the thread's cache record.
TAV_SCENARIO(refusing_hooks) {
  i_malloc = counting_malloc;
  i_free = counting_free;
  refuse = true;
  std::printf("before record: %d %d %d %d\n", tav_serv_allocate(1000, 64) == nullptr,
              tav_serv_malloc(1000, 64) == nullptr, tav_serv_calloc(10, 10, 64) == nullptr,
              tav_serv_realloc(nullptr, 10, 64) == nullptr);
  refuse = false;
  void* cached = tav_serv_allocate(1000, 64);
  void* kept = tav_serv_malloc(100, 64);
  std::memset(kept, 7, 100);
  refuse = true;
  void* other_size = tav_serv_allocate(5000, 64);
  void* grown = tav_serv_realloc(kept, 200, 64);
  std::printf("with record: %d %d %d\n", other_size == nullptr, grown == nullptr,
              static_cast<unsigned char*>(kept)[99]);
  tav_serv_deallocate(cached);
  tav_serv_free(kept);
  tav_serv_thread_free_buffers();
  int buffers = -1;
  long long bytes = tav_serv_mem_stat(&buffers);
  std::printf("held: %lld %d, outstanding hook blocks: %d\n", bytes, buffers,
              hook_allocations - hook_releases);
}

// Replacing one hook is enough for the manager to route everything through the hooks.
TAV_SCENARIO(one_hook_replaced) {
  i_free = counting_free;
  tav_serv_free(tav_serv_malloc(100, 64));
  std::printf("releases through the hook: %d\n", hook_releases);
}

// Hooks installed after the first allocation are not used.
TAV_SCENARIO(hooks_after_start) {
  tav_serv_free(tav_serv_malloc(100, 64));
  i_malloc = counting_malloc;
  refuse = true;
  void* pointer = tav_serv_malloc(100, 64);
  std::printf("served: %d, bytes: %lld\n", pointer != nullptr, tav_serv_mem_stat(nullptr));
  tav_serv_free(pointer);
}

struct settings_case {
  const char* name;
  tav::test::env_list env;
  std::vector<std::string> calls;
  const char* results;
  const char* scenario = "memory_calls";
};

void PrintTo(const settings_case& c, std::ostream* out) { *out << c.name; }

class MemorySettings : public testing::TestWithParam<settings_case> {};

TEST_P(MemorySettings, GiveTheseResults) {
  const settings_case& c = GetParam();
  auto child = tav::test::run_child(c.scenario, c.env, c.calls);
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, std::string(c.results) + "\n");
  EXPECT_EQ(child.err, "");
}

// An uncached block of n bytes at alignment 64 counts n + 64 + 24 bytes: 1088 for 1000.
const settings_case settings_cases[] = {
    {"peak_disabled_at_start", {}, {"p2", "p-1", "p7", "p2"}, "-1 -1 -1 -1"},
    {"peak_follows_use",
     {},
     {"p1", "m1000", "p2", "m5000", "p2", "f", "p2", "p-1", "p2", "f", "p2"},
     "0 1088 6176 6176 6176 1088 1088"},
    {"peak_enable_resets_to_zero", {}, {"m1000", "p1", "p2", "p-1", "p2"}, "0 0 0 1088"},
    {"peak_disable_stops_it", {}, {"p1", "m1000", "p0", "p2", "p-1", "m5000", "p1", "p2"},
     "0 0 -1 -1 0 0"},
    {"peak_other_modes_change_nothing", {}, {"p1", "m1000", "p3", "p-2", "p2"}, "0 -1 -1 1088"},
    {"peak_reference_form", {}, {"P1", "m100", "P2", "P-1", "P5"}, "0 188 188 -1"},
    {"disable_before_start", {}, {"d", "d", "c", "s", "d"}, "1 1 0 1 0"},
    {"disable_after_start", {}, {"c", "d", "s", "c"}, "1 0 0 1"},
    {"status_reads_environment_first", {}, {"s", "d", "c"}, "0 0 1"},
    {"env_disables", {{"TAV_DISABLE_FAST_MM", "1"}}, {"s", "c", "d"}, "1 0 0"},
    {"env_zero_still_disables", {{"TAV_DISABLE_FAST_MM", "0"}}, {"c", "s"}, "0 1"},
    {"env_empty_keeps_cache", {{"TAV_DISABLE_FAST_MM", ""}}, {"c", "s"}, "1 0"},
    {"limit_unlimited_by_default", {}, {"l"}, "-1"},
    {"limit_zero", {{"TAV_FAST_MEMORY_LIMIT", "0"}}, {"c", "l"}, "1 0"},
    {"limit_negative", {{"TAV_FAST_MEMORY_LIMIT", "-5"}}, {"c", "l"}, "1 -5242880"},
    {"limit_mib", {{"TAV_FAST_MEMORY_LIMIT", "3"}}, {"l"}, "3145728"},
    {"limit_leading_digits", {{"TAV_FAST_MEMORY_LIMIT", "12MB"}}, {"l"}, "12582912"},
    {"limit_without_digits", {{"TAV_FAST_MEMORY_LIMIT", "many"}}, {"l"}, "-1"},
    {"limit_cut_at_32_characters",
     {{"TAV_FAST_MEMORY_LIMIT", "000000000000000000000000000000007"}},
     {"l"},
     "0"},
    // Replaced allocator hooks.
    {"refusing_hooks", {}, {},
     "before record: 1 1 1 1\nwith record: 1 1 7\nheld: 0 0, outstanding hook blocks: 1",
     "refusing_hooks"},
    {"one_hook_replaced", {}, {}, "releases through the hook: 1", "one_hook_replaced"},
    {"hooks_after_start", {}, {}, "served: 1, bytes: 188", "hooks_after_start"},
};

INSTANTIATE_TEST_SUITE_P(Cases, MemorySettings, testing::ValuesIn(settings_cases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
