// CPU detection in a fresh process: the environment limit, the override variable, the setter and
// the reproducibility target, against the classification of the processor this test runs on.
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <cstdio>
#include <string>

#include "child_process.hpp"
#include "service/cpu/classify.hpp"
#include "service/cpu/cpu_state.hpp"

namespace {

using namespace tav::service;
using tav::test::run_child;

TAV_SCENARIO(detect) {
  int type = tav_serv_cpu_detect();
  std::printf("type=%d class=%d vml=%d\n", type, cpu_class(), vml_cpu_type());
}

TAV_SCENARIO(limit_after_detection) {
  int before = tav_serv_cpu_detect();
  int applied = tav_serv_enable_instructions(TAV_ENABLE_AVX2);
  std::printf("type=%d applied=%d after=%d\n", before, applied, tav_serv_cpu_detect());
}

TAV_SCENARIO(limit_by_call_beats_environment) {
  int applied = tav_serv_enable_instructions(TAV_ENABLE_SSE4_2);
  std::printf("applied=%d type=%d\n", applied, tav_serv_cpu_detect());
}

// The class the ladder gives this processor after a limit (-1: none).
int expected_class(int level) {
  enable_flags flags;
  if (level >= 0) apply_enable_level(this_processor(), false, level, flags);
  return ladder_type(this_processor(), flags);
}

std::string detect_line(int cls) {
  int type = stored_type(cls);
  return "type=" + std::to_string(type) + " class=" + std::to_string(cls) +
         " vml=" + std::to_string(vml_type(type)) + "\n";
}

TEST(Detect, HardwareClassWithoutSettings) {
  auto r = run_child("detect");
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, detect_line(expected_class(-1)));
}

TEST(Detect, OtherVendorsAreType0) {
  if (this_processor().orvat) GTEST_SKIP() << "runs on processors of other vendors";
  EXPECT_EQ(expected_class(-1), 0);
  EXPECT_EQ(tav_serv_orvat_cpu_true(), 0);
}

TEST(Detect, EnableInstructionsEnvironment) {
  struct {
    const char* value;
    int level;
  } cases[] = {{"AVX2", 2}, {"AVX", 1}, {"SSE4_2", 0}, {"AVX512", 4},
               {"avx2", -1}, {"AVX2 ", -1}, {"", -1}, {"AVX512_E1", 6}};
  for (const auto& c : cases) {
    auto r = run_child("detect", {{"TAV_ENABLE_INSTRUCTIONS", c.value}});
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, detect_line(expected_class(c.level))) << c.value;
  }
}

TEST(Detect, OverrideBeatsEnableInstructions) {
  auto r = run_child("detect", {{"TAV_DEBUG_CPU_TYPE", "9"}, {"TAV_ENABLE_INSTRUCTIONS", "AVX"}});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "type=7 class=9 vml=9\n");
}

TEST(Detect, CompatibleTargetIsType1) {
  auto r = run_child("detect", {{"TAV_CBWR", "COMPATIBLE"}});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "type=1 class=1 vml=1\n");
}

TEST(Limit, AfterDetectionChangesNothingDetected) {
  auto r = run_child("limit_after_detection");
  enable_flags flags;
  int applied = apply_enable_level(this_processor(), false, TAV_ENABLE_AVX2, flags);
  int type = stored_type(expected_class(-1));
  EXPECT_EQ(r.out, "type=" + std::to_string(type) + " applied=" + std::to_string(applied) +
                       " after=" + std::to_string(type) + "\n");
}

TEST(Limit, CallBeforeDetectionWinsOverEnvironment) {
  auto r = run_child("limit_by_call_beats_environment", {{"TAV_ENABLE_INSTRUCTIONS", "AVX"}});
  enable_flags flags;
  int applied = apply_enable_level(this_processor(), false, TAV_ENABLE_SSE4_2, flags);
  int cls = ladder_type(this_processor(), flags);
  EXPECT_EQ(r.out, "applied=" + std::to_string(applied) + " type=" + std::to_string(stored_type(cls)) + "\n");
}

TEST(Limit, OutOfRangeLevels) {
  EXPECT_EQ(tav_serv_enable_instructions(7), 0);
  EXPECT_EQ(tav_serv_enable_instructions(-1), 0);
}

TEST(Features, WordHasTheBaseline) {
  unsigned long long word = __orvat_tav_features_init_x();
  EXPECT_EQ(word & 0x40, 0x40u);
  EXPECT_EQ(word, this_processor().features);
}

}  // namespace
