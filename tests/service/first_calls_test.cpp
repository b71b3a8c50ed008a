// Many threads making their first calls into the library at the same moment: detection, the
// environment readers and the per-thread caches must settle on one answer for everybody.
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <algorithm>
#include <barrier>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "child_process.hpp"

namespace {

constexpr int thread_count = 16;

TAV_SCENARIO(first_calls_at_once) {
  std::barrier start(thread_count);
  std::vector<std::string> seen(thread_count);
  std::vector<std::thread> threads;
  for (int t = 0; t < thread_count; ++t) {
    threads.emplace_back([&, t] {
      start.arrive_and_wait();
      char line[256];
      std::snprintf(line, sizeof line, "type=%d branch=%d blas=%d dynamic=%d verbose=%d vml=0x%X",
                    tav_serv_cpu_detect(), tav_serv_cbwr_get(TAV_CBWR_BRANCH),
                    tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS), tav_serv_get_dynamic(),
                    tav_serv_verbose_mode(), vmlGetMode());
      // Buffers of a few sizes through the per-thread cache, each filled and checked.
      bool intact = true;
      for (int round = 0; round < 50; ++round) {
        size_t bytes = 1000 + 64 * static_cast<size_t>((t + round) % 7);
        auto* p = static_cast<unsigned char*>(tav_serv_allocate(bytes, 128));
        std::memset(p, t, bytes);
        for (size_t i = 0; i < bytes; i += 61) intact = intact && p[i] == t;
        tav_serv_deallocate(p);
      }
      seen[t] = std::string(line) + (intact ? "" : " corrupted");
    });
  }
  for (auto& th : threads) th.join();
  std::set<std::string> distinct(seen.begin(), seen.end());
  for (const auto& s : distinct) std::printf("%s\n", s.c_str());
  tav_serv_free_buffers();
  int buffers = -1;
  std::printf("held=%lld buffers=%d\n", tav_serv_mem_stat(&buffers), buffers);
}

TEST(FirstCalls, EveryThreadSeesTheSameSettings) {
  auto r = tav::test::run_child("first_calls_at_once", {{"TAV_DOMAIN_NUM_THREADS", "TAV_DOMAIN_BLAS=3"},
                                                       {"TAV_CBWR", "AUTO"},
                                                       {"TAV_VML_MODE", "VML_LA"},
                                                       {"TAV_DYNAMIC", "FALSE"}});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  const std::string expected_first = "type=0 branch=2 blas=3 dynamic=0 verbose=0 vml=0x1A01\n";
  if (tav_serv_orvat_cpu_true() == 0) EXPECT_EQ(r.out.substr(0, expected_first.size()), expected_first);
  // One line of settings shared by all threads, then the manager holding nothing.
  EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), 2) << r.out;
  EXPECT_NE(r.out.find("held=0 buffers=0\n"), std::string::npos) << r.out;
}

}  // namespace
