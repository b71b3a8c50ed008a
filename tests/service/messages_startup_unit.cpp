// The working directory recorded when the library loads.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>

#include "child_process.hpp"
#include "service/startup/working_directory.hpp"

namespace {

TAV_SCENARIO(print_working_directory) { std::printf("%s", tav::service::working_directory()); }

class WorkingDirectory : public testing::TestWithParam<std::string> {};

TEST_P(WorkingDirectory, RecordedWithSlash) {
  std::string directory = GetParam();
  char pattern[] = "/tmp/tav_cwd_XXXXXX";
  if (directory.empty()) directory = mkdtemp(pattern);
  std::string canonical = std::filesystem::canonical(directory).string();
  auto r = tav::test::run_child("print_working_directory", {}, {}, directory);
  if (GetParam().empty()) std::filesystem::remove(directory);
  EXPECT_EQ(r.out, canonical + "/");
}

// The empty parameter stands for a fresh temporary directory.
INSTANTIATE_TEST_SUITE_P(Startup, WorkingDirectory, testing::Values("", "/"));

}  // namespace
