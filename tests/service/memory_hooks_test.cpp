// The allocator hook variables in fresh processes: replaced hooks carry every block, a failing
// hook gives null without leaking, and hooks replaced after the start are ignored.
#include <gtest/gtest.h>
#include <tav/tav_memory.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "child_process.hpp"

namespace {

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

long long current_bytes() { return tav_serv_mem_stat(nullptr); }

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
  std::printf("served: %d, bytes: %lld\n", pointer != nullptr, current_bytes());
  tav_serv_free(pointer);
}

struct hooks_case {
  const char* scenario;
  const char* output;
};

void PrintTo(const hooks_case& c, std::ostream* out) { *out << c.scenario; }

class MemoryHooks : public testing::TestWithParam<hooks_case> {};

TEST_P(MemoryHooks, PrintThis) {
  auto child = tav::test::run_child(GetParam().scenario);
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, GetParam().output);
  EXPECT_EQ(child.err, "");
}

const hooks_case hooks_cases[] = {
    {"refusing_hooks",
     "before record: 1 1 1 1\nwith record: 1 1 7\nheld: 0 0, outstanding hook blocks: 1\n"},
    {"one_hook_replaced", "releases through the hook: 1\n"},
    {"hooks_after_start", "served: 1, bytes: 188\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, MemoryHooks, testing::ValuesIn(hooks_cases),
                         [](const auto& info) { return std::string(info.param.scenario); });

}  // namespace
