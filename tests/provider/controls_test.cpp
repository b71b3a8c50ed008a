// The provider's control functions: the capability table and the mode, thread and memory controls.
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <cstdio>

#include "child_process.hpp"

namespace {

using tav::test::run_child;

TEST(QueryCapability, WholeTable) {
  const struct {
    int code, answer;
  } table[] = {{0, 0},     {1, -1},    {4, 8},     {5, 4},     {6, 8},     {7, 8},
               {8, 0},     {9, 1},     {10, 0},    {32, 2019}, {33, 0},    {34, 2},
               {64, 15},   {65, 1},    {66, 1},    {67, 1},    {128, 2},   {129, 0},
               {130, 0},   {131, 1},   {256, 0},   {384, 1},   {385, 0},   {512, 1},
               {513, 0},   {2, 0},     {3, 0},     {11, 0},    {-1, 0},    {1024, 0},
               {35, 0},    {-2147483647 - 1, 0}, {2147483647, 0}};
  for (const auto& row : table) EXPECT_EQ(query_capability(row.code), row.answer) << row.code;
}

TAV_SCENARIO(improved_consistency_first) {
  SetImprovedConsistency();
  std::printf("cbwr=%d vml=0x%X\n", tav_serv_cbwr_get(TAV_CBWR_BRANCH), vmlGetMode());
}

TAV_SCENARIO(improved_consistency_after_detection) {
  tav_serv_cpu_detect();
  SetImprovedConsistency();
  std::printf("cbwr=%d vml=0x%X\n", tav_serv_cbwr_get(TAV_CBWR_BRANCH), vmlGetMode());
}

TAV_SCENARIO(consistency_mode_refused_silently) {
  set_consistency_mode(TAV_CBWR_AUTO);
  set_consistency_mode(TAV_CBWR_COMPATIBLE);  // refused: a call already set another mode
  set_consistency_mode(99);
  std::printf("cbwr=%d\n", tav_serv_cbwr_get(TAV_CBWR_BRANCH));
}

TAV_SCENARIO(version_query_then_consistency) {
  int major = query_capability(32);
  SetImprovedConsistency();
  std::printf("major=%d cbwr=%d\n", major, tav_serv_cbwr_get(TAV_CBWR_BRANCH));
}

TEST(Modes, VmlModeForwardedToTheCallingThread) {
  unsigned before = vmlGetMode();
  set_vml_mode(VML_EP | VML_ERRMODE_STDERR);
  EXPECT_EQ(vmlGetMode(), (before & ~0xFF0Fu) | VML_EP | VML_ERRMODE_STDERR);
  vmlSetMode(before);
}

TAV_SCENARIO(max_threads) {
  set_max_threads(3);
  std::printf("%d ", tav_serv_get_max_threads());
  set_max_threads(0);
  set_max_threads(-2);
  std::printf("%d\n", tav_serv_get_max_threads());
}

TAV_SCENARIO(memory_controls) {
  std::printf("peak_before_enable=%lld ", peak_mem_usage(2));
  std::printf("disable_before_start=%d ", disable_fast_mm());
  void* p = TAV_malloc(1000, 64);
  int buffers = 0;
  long long bytes = mem_stat(&buffers);
  std::printf("bytes>=1000:%d buffers=%d ", bytes >= 1000, buffers);
  std::printf("disable_after_start=%d fast_mm_off=%d\n", disable_fast_mm(),
              tav_serv_get_fast_mm_status());
  TAV_free(p);
  free_buffers();
  thread_free_buffers();
}

struct control_case {
  const char* scenario;
  tav::test::env_list env;
  const char* out;
};

void PrintTo(const control_case& c, std::ostream* os) { *os << c.scenario; }

class Controls : public testing::TestWithParam<control_case> {};

TEST_P(Controls, PrintQuietly) {
  auto r = run_child(GetParam().scenario, GetParam().env);
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, GetParam().out);
  EXPECT_EQ(r.err, "");
}

INSTANTIATE_TEST_SUITE_P(
    Scenarios, Controls,
    testing::Values(
        // The version query does not freeze the branch; the mode's refusals are silent.
        control_case{"version_query_then_consistency", {}, "major=2019 cbwr=3\n"},
        control_case{"improved_consistency_first", {}, "cbwr=3 vml=0x1A02\n"},
        // After detection the branch stays, and so does the vector-math mode.
        control_case{"improved_consistency_after_detection", {}, "cbwr=1 vml=0x1A02\n"},
        control_case{"improved_consistency_after_detection", {{"TAV_VML_MODE", "VML_LA"}},
                     "cbwr=1 vml=0x1A02\n"},
        control_case{"consistency_mode_refused_silently", {}, "cbwr=2\n"},
        // Dynamic off, so that the count is not lowered to the number of physical cores.
        control_case{"max_threads", {{"TAV_NUM_THREADS", "5"}, {"TAV_DYNAMIC", "false"}}, "3 3\n"},
        control_case{"memory_controls", {},
                     "peak_before_enable=-1 disable_before_start=1 bytes>=1000:1 buffers=1 "
                     "disable_after_start=0 fast_mm_off=1\n"}),
    [](const testing::TestParamInfo<control_case>& info) {
      return std::string(info.param.scenario) + (info.param.env.empty() ? "" : "_with_env");
    });

}  // namespace
