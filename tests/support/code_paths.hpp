// The eight code paths in path-id order, and which of them this processor can run, read from its
// own feature bits (the library's CPU type may be lower, since it looks at the vendor as well).
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tav::test {

inline const char* const path_tags[8] = {"def", "cnr_def", "mc",        "mc3",
                                         "avx", "avx2",    "avx512_tp", "avx512"};

// Each path needs its own instructions and those of the paths below it (cnr_def aside).
inline bool path_runs(int id) {
  __builtin_cpu_init();
  switch (id) {
    case 0:
    case 1: return true;
    case 2: return __builtin_cpu_supports("ssse3");
    case 3:
      return path_runs(2) && __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
    case 4: return path_runs(3) && __builtin_cpu_supports("avx");
    case 5:
      return path_runs(4) && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
             __builtin_cpu_supports("bmi2");
    case 6:
      return path_runs(5) && __builtin_cpu_supports("avx512f") &&
             __builtin_cpu_supports("avx512cd");
    case 7:
      return path_runs(5) && __builtin_cpu_supports("avx512f") &&
             __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
             __builtin_cpu_supports("avx512vl");
    default: return false;
  }
}

inline std::vector<int> runnable_paths() {
  std::vector<int> ids;
  for (int id = 0; id < 8; ++id)
    if (path_runs(id)) ids.push_back(id);
  return ids;
}

// A test run once per path id (testing::Range(0, 8)), skipped where the path cannot run, and
// named for the path.
class path_test : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (!path_runs(GetParam())) GTEST_SKIP() << path_tags[GetParam()] << " does not run here";
  }
};

inline std::string path_name(const testing::TestParamInfo<int>& info) {
  return path_tags[info.param];
}

}  // namespace tav::test
