// The eight code paths in path-id order, and which of them this processor can run, read from its
// own feature bits (the library's CPU type may be lower, since it looks at the vendor as well).
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/path_features.hpp"

namespace tav::test {

inline const char* const path_tags[8] = {"def", "cnr_def", "mc",        "mc3",
                                         "avx", "avx2",    "avx512_tp", "avx512"};

using tav::path_runs;

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
