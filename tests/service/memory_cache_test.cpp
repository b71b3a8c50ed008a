// The calling thread's buffer cache and the uncached forms, observed through the pointers handed
// out and the byte and buffer counts of tav_serv_mem_stat.
#include <gtest/gtest.h>
#include <tav/tav_memory.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "memory_usage.hpp"

namespace {

using tav::test::now;
using tav::test::usage;

// A cached block holds size + alignment + 32 bytes, an uncached one size + alignment + 24.
constexpr long long cached_bytes(long long size, long long alignment) {
  return size + alignment + 32;
}
constexpr long long uncached_bytes(long long size, long long alignment) {
  return size + alignment + 24;
}

constexpr size_t largest_cached = size_t{128} << 20;

usage plus(usage base, long long bytes, int buffers) {
  return {base.bytes + bytes, base.buffers + buffers};
}

bool aligned_to(const void* pointer, size_t alignment) {
  return reinterpret_cast<uintptr_t>(pointer) % alignment == 0;
}

class MemoryCache : public testing::Test {
 protected:
  void SetUp() override {
    if (tav_serv_get_fast_mm_status() != 0) GTEST_SKIP() << "the cache is disabled";
    tav_serv_thread_free_buffers();
    start = now();
  }
  void TearDown() override {
    tav_serv_thread_free_buffers();
    EXPECT_EQ(now(), start);
  }

  // Takes the five slots with sizes 1000 to 5000, all in use.
  std::vector<void*> fill_slots() {
    std::vector<void*> held;
    for (size_t size = 1000; size <= 5000; size += 1000)
      held.push_back(tav_serv_allocate(size, 64));
    return held;
  }

  usage start{};
};

TEST_F(MemoryCache, SameSizeGetsTheSamePointerBack) {
  void* first = tav_serv_allocate(1000, 64);
  tav_serv_deallocate(first);
  EXPECT_EQ(now(), plus(start, cached_bytes(1000, 64), 1));
  void* second = tav_serv_allocate(1000, 64);
  EXPECT_EQ(second, first);
  tav_serv_deallocate(second);
}

TEST_F(MemoryCache, SixthSizeReplacesTheFirstSmallerIdleSlot) {
  std::vector<void*> held = fill_slots();
  for (void* pointer : held) tav_serv_deallocate(pointer);
  const usage filled = now();
  EXPECT_EQ(filled, plus(start, 15000 + 5 * cached_bytes(0, 64), 5));

  void* sixth = tav_serv_allocate(6000, 64);
  EXPECT_EQ(now(), plus(filled, 5000, 0));  // the 1000-byte slot now holds 6000
  tav_serv_deallocate(sixth);
  // With the 1000-byte slot gone, 1000 bytes come from the smallest larger idle slot.
  void* small = tav_serv_allocate(1000, 64);
  EXPECT_EQ(small, held[1]);
  tav_serv_deallocate(small);
}

TEST_F(MemoryCache, SixthSizeGoesUncachedWhileAllSlotsAreInUse) {
  std::vector<void*> held = fill_slots();
  const usage filled = now();
  void* sixth = tav_serv_allocate(6000, 64);
  ASSERT_NE(sixth, nullptr);
  EXPECT_EQ(now(), plus(filled, uncached_bytes(6000, 64), 1));
  tav_serv_deallocate(sixth);
  EXPECT_EQ(now(), filled);
  for (void* pointer : held) tav_serv_deallocate(pointer);
}

TEST_F(MemoryCache, OnlyRequestsUpTo128MiBAreCached) {
  void* over = tav_serv_allocate(largest_cached + 1, 64);
  ASSERT_NE(over, nullptr);
  EXPECT_EQ(now(), plus(start, uncached_bytes(largest_cached + 1, 64), 1));
  tav_serv_deallocate(over);
  EXPECT_EQ(now(), start);

  void* bound = tav_serv_allocate(largest_cached, 64);
  ASSERT_NE(bound, nullptr);
  tav_serv_deallocate(bound);
  EXPECT_EQ(now(), plus(start, cached_bytes(largest_cached, 64), 1));
}

TEST_F(MemoryCache, SizeZeroGivesNull) {
  EXPECT_EQ(tav_serv_allocate(0, 64), nullptr);
  EXPECT_EQ(tav_serv_malloc(0, 64), nullptr);
  EXPECT_EQ(tav_serv_calloc(0, 8, 64), nullptr);
  EXPECT_EQ(tav_serv_calloc(8, 0, 64), nullptr);
  EXPECT_EQ(tav_serv_realloc(nullptr, 0, 64), nullptr);
  tav_serv_deallocate(nullptr);
  tav_serv_free(nullptr);
  EXPECT_EQ(now(), start);
}

TEST_F(MemoryCache, MemStatCountsEveryUncachedBlock) {
  void* a = TAV_malloc(100, 64);
  void* b = tav_serv_malloc(200, 128);
  void* c = tav_serv_calloc(3, 100, 64);
  EXPECT_EQ(now(), plus(start, uncached_bytes(100, 64) + uncached_bytes(200, 128) +
                                   uncached_bytes(300, 64), 3));
  int buffers = 0;
  EXPECT_EQ(TAV_Mem_Stat(&buffers), start.bytes + 928);
  EXPECT_EQ(buffers, start.buffers + 3);
  TAV_free(a);
  tav_serv_free(b);
  tav_serv_free(c);
}

TEST_F(MemoryCache, CallocZeroesAndRefusesOverflow) {
  auto* bytes = static_cast<unsigned char*>(tav_serv_calloc(100, 8, 128));
  ASSERT_NE(bytes, nullptr);
  EXPECT_TRUE(aligned_to(bytes, 128));
  for (int i = 0; i < 800; ++i) ASSERT_EQ(bytes[i], 0) << i;
  tav_serv_free(bytes);
  EXPECT_EQ(TAV_calloc(SIZE_MAX / 2, 4, 64), nullptr);
}

TEST_F(MemoryCache, ReallocKeepsTheContents) {
  auto* first = static_cast<unsigned char*>(tav_serv_malloc(100, 64));
  for (int i = 0; i < 100; ++i) first[i] = static_cast<unsigned char>(i + 1);
  auto* grown = static_cast<unsigned char*>(tav_serv_realloc(first, 5000, 4096));
  ASSERT_NE(grown, nullptr);
  EXPECT_TRUE(aligned_to(grown, 4096));
  auto* shrunk = static_cast<unsigned char*>(TAV_realloc(grown, 50, 64));
  ASSERT_NE(shrunk, nullptr);
  for (int i = 0; i < 50; ++i) ASSERT_EQ(shrunk[i], i + 1) << i;
  EXPECT_EQ(now(), plus(start, uncached_bytes(50, 64), 1));
  EXPECT_EQ(tav_serv_realloc(shrunk, 0, 64), nullptr);
  EXPECT_EQ(now(), start);

  auto* cached = static_cast<unsigned char*>(tav_serv_allocate(300, 64));
  std::memset(cached, 9, 300);
  auto* moved = static_cast<unsigned char*>(tav_serv_realloc(cached, 600, 64));
  for (int i = 0; i < 300; ++i) ASSERT_EQ(moved[i], 9) << i;
  tav_serv_free(moved);
  EXPECT_EQ(now(), plus(start, cached_bytes(300, 64), 1));  // the slot stays, idle
}

struct alignment_case {
  int requested;
  size_t used;
};

void PrintTo(const alignment_case& c, std::ostream* out) { *out << c.requested; }

class MemoryAlignment : public MemoryCache, public testing::WithParamInterface<alignment_case> {};

// The block size shows the alignment used, not just one the pointer happens to meet.
TEST_P(MemoryAlignment, PowersOfTwoFrom64AreHonouredElse64) {
  const alignment_case& c = GetParam();
  void* uncached = tav_serv_malloc(1000, c.requested);
  EXPECT_TRUE(aligned_to(uncached, c.used));
  EXPECT_EQ(now(), plus(start, uncached_bytes(1000, static_cast<long long>(c.used)), 1));
  tav_serv_free(uncached);
  void* cached = tav_serv_allocate(1000, c.requested);
  EXPECT_TRUE(aligned_to(cached, c.used));
  EXPECT_EQ(now(), plus(start, cached_bytes(1000, static_cast<long long>(c.used)), 1));
  tav_serv_deallocate(cached);
}

INSTANTIATE_TEST_SUITE_P(Alignments, MemoryAlignment,
                         testing::Values(alignment_case{64, 64}, alignment_case{128, 128},
                                         alignment_case{4096, 4096},
                                         alignment_case{1 << 21, 1 << 21},
                                         alignment_case{100, 64}, alignment_case{192, 64},
                                         alignment_case{32, 64}, alignment_case{0, 64},
                                         alignment_case{-128, 64}));

}  // namespace
