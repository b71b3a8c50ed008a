// Thread caches seen from other threads: releasing another thread's idle buffers, a thread that
// ends holding buffers, and many threads making their first allocations at once.
#include <gtest/gtest.h>
#include <tav/tav_memory.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

#include "child_process.hpp"
#include "memory_usage.hpp"

namespace {

using tav::test::now;
using tav::test::usage;

TEST(MemoryThreads, FreeBuffersReleasesOnlyTheIdleBuffersOfOtherThreads) {
  if (tav_serv_get_fast_mm_status() != 0) GTEST_SKIP() << "the cache is disabled";
  tav_serv_free_buffers();
  const usage start = now();
  std::promise<void> filled, released, emptied, done;
  bool intact = false;
  std::thread worker([&] {
    void* idle = tav_serv_allocate(1000, 64);
    auto* busy = static_cast<unsigned char*>(tav_serv_allocate(2000, 64));
    std::memset(busy, 5, 2000);
    tav_serv_deallocate(idle);
    filled.set_value();
    released.get_future().wait();
    intact = busy[0] == 5 && std::memcmp(busy, busy + 1, 1999) == 0;
    std::memset(busy, 6, 2000);
    tav_serv_deallocate(busy);
    emptied.set_value();
    done.get_future().wait();
  });
  filled.get_future().wait();
  EXPECT_EQ(now(), (usage{start.bytes + 1096 + 2096, start.buffers + 2}));
  TAV_Free_Buffers();
  EXPECT_EQ(now(), (usage{start.bytes + 2096, start.buffers + 1}));
  released.set_value();
  emptied.get_future().wait();
  EXPECT_TRUE(intact);
  tav_serv_free_buffers();
  EXPECT_EQ(now(), start);
  done.set_value();
  worker.join();
}

// A thread leaves two idle buffers and one in use behind; ending it must free the idle ones and
// its record, and the one in use must stay valid until released. A leak fails the sanitizer's
// check at the child's exit.
TAV_SCENARIO(thread_ends_with_buffers) {
  const usage start = now();
  unsigned char* kept = nullptr;
  std::thread([&] {
    kept = static_cast<unsigned char*>(tav_serv_allocate(5000, 128));
    std::memset(kept, 3, 5000);
    tav_serv_deallocate(tav_serv_allocate(1000, 64));
    tav_serv_deallocate(tav_serv_allocate(300000, 4096));
    tav_serv_free(tav_serv_malloc(100, 64));
  }).join();
  usage after_exit = now();
  std::printf("after exit: %lld %d\n", after_exit.bytes - start.bytes,
              after_exit.buffers - start.buffers);
  std::printf("contents kept: %d\n", kept[0] == 3 && kept[4999] == 3);
  tav_serv_deallocate(kept);
  usage end = now();
  std::printf("after release: %lld %d\n", end.bytes - start.bytes, end.buffers - start.buffers);
}

TEST(MemoryThreads, EndingThreadReleasesItsBuffers) {
  auto child = tav::test::run_child("thread_ends_with_buffers");
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "after exit: 5160 1\ncontents kept: 1\nafter release: 0 0\n");
  EXPECT_EQ(child.err, "");
}

// 16 threads start their first allocations together, each holding up to seven buffers of mixed
// sizes and alignments (so the cache's five slots overflow into uncached blocks), checking every
// byte before it releases; meanwhile the main thread releases all idle buffers again and again.
TAV_SCENARIO(first_allocations_at_once) {
  constexpr int threads = 16;
  constexpr size_t sizes[] = {1, 100, 1000, 4096, 20000, 65536, 300000};
  constexpr int alignments[] = {64, 128, 4096, 100};
  std::atomic<int> waiting{threads};
  std::atomic<int> running{threads};
  std::atomic<int> failures{0};
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t) {
    pool.emplace_back([&, t] {
      waiting.fetch_sub(1);
      while (waiting.load() > 0) std::this_thread::yield();
      struct buffer {
        unsigned char* pointer;
        size_t size;
        unsigned char value;
      };
      std::vector<buffer> held;
      int wrong = 0;
      for (int round = 0; round < 400; ++round) {
        buffer b{nullptr, sizes[(round * 3 + t) % 7], static_cast<unsigned char>(t * 31 + round)};
        b.pointer =
            static_cast<unsigned char*>(tav_serv_allocate(b.size, alignments[(round + t) % 4]));
        std::memset(b.pointer, b.value, b.size);
        held.push_back(b);
        if (held.size() < 7 && round % 9 != 8) continue;
        for (const buffer& h : held) {
          for (size_t i = 0; i < h.size; ++i) wrong += h.pointer[i] != h.value ? 1 : 0;
          tav_serv_deallocate(h.pointer);
        }
        held.clear();
      }
      for (const buffer& h : held) tav_serv_deallocate(h.pointer);
      failures.fetch_add(wrong);
      running.fetch_sub(1);
    });
  }
  while (running.load() > 0) {
    tav_serv_free_buffers();
    std::this_thread::yield();
  }
  for (std::thread& thread : pool) thread.join();
  int buffers = -1;
  long long bytes = tav_serv_mem_stat(&buffers);
  std::printf("failures: %d, held: %lld %d\n", failures.load(), bytes, buffers);
}

TEST(MemoryThreads, ManyThreadsStartingAtOnceGetSoundBuffers) {
  auto child = tav::test::run_child("first_allocations_at_once");
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "failures: 0, held: 0 0\n");
  EXPECT_EQ(child.err, "");
}

}  // namespace
