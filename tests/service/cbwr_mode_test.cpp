// The reproducibility mode in a fresh process on this (non-Orvat) machine: TAV_CBWR read once,
// the fall-back to AUTO with its warning, and the setter before and after CPU detection.
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "child_process.hpp"

namespace {

using tav::test::run_child;

constexpr const char* auto_warning =
    "Orvat TAV WARNING: incorrect conditional numerical reproducibility mode, TAV_CBWR_AUTO is set";

// Runs the calls named by the arguments in order and prints each result, blank-separated:
// sN tav_serv_cbwr_set(N), SN TAV_CBWR_SET(&N), gN tav_serv_cbwr_get(N), GN TAV_CBWR_GET(&N),
// d tav_serv_cpu_detect(), a tav_serv_cbwr_get_auto_branch().
TAV_SCENARIO(cbwr_calls) {
  std::string results;
  for (const std::string& call : tav::test::scenario_args()) {
    int n = call.size() > 1 ? std::atoi(call.c_str() + 1) : 0;
    int result = 0;
    switch (call[0]) {
      case 's': result = tav_serv_cbwr_set(n); break;
      case 'S': result = TAV_CBWR_SET(&n); break;
      case 'g': result = tav_serv_cbwr_get(n); break;
      case 'G': result = TAV_CBWR_GET(&n); break;
      case 'd': result = tav_serv_cpu_detect(); break;
      case 'a': result = tav_serv_cbwr_get_auto_branch(); break;
      default: result = 999;
    }
    results += (results.empty() ? "" : " ") + std::to_string(result);
  }
  std::printf("%s\n", results.c_str());
}

struct calls_case {
  const char* name;
  const char* cbwr;  // TAV_CBWR, or null for absent
  std::vector<std::string> calls;
  const char* results;
  bool warned;
};

class CbwrCalls : public testing::TestWithParam<calls_case> {
 protected:
  void SetUp() override {
    if (tav_serv_orvat_cpu_true()) GTEST_SKIP() << "the expected codes are those of another vendor";
  }
};

TEST_P(CbwrCalls, GiveTheseResults) {
  const calls_case& c = GetParam();
  tav::test::env_list env;
  if (c.cbwr != nullptr) env.emplace_back("TAV_CBWR", c.cbwr);
  auto child = run_child("cbwr_calls", env, c.calls);
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out.substr(child.out.rfind('\n', child.out.size() - 2) + 1),
            std::string(c.results) + "\n");
  std::string printed = child.out + child.err;
  EXPECT_EQ(printed.find(auto_warning) != std::string::npos, c.warned) << printed;
}

INSTANTIATE_TEST_SUITE_P(
    Environment, CbwrCalls,
    testing::Values(
        calls_case{"Absent", nullptr, {"g1", "d"}, "1 0", false},
        calls_case{"Empty", "", {"g1"}, "1", false},
        calls_case{"Auto", "AUTO", {"g1", "d"}, "2 0", false},
        calls_case{"PrefixedAuto", "BRANCH=AUTO", {"g1"}, "2", false},
        calls_case{"CompatibleGivesType1", "COMPATIBLE", {"g1", "d", "g-1"}, "3 1 3", false},
        calls_case{"PrefixedCompatible", "BRANCH=COMPATIBLE", {"d", "g1"}, "1 3", false},
        calls_case{"LowerCaseIsOff", "compatible", {"g1"}, "1", false},
        calls_case{"VendorTargetFallsBack", "AVX2", {"g1", "d"}, "2 0", true},
        calls_case{"PrefixedVendorTargetFallsBack", "BRANCH=AVX2", {"g1"}, "2", true},
        calls_case{"ReadByDetection", "COMPATIBLE", {"d", "g1"}, "1 3", false},
        calls_case{"CallBeforeReadWins", "COMPATIBLE", {"s2", "g1", "d"}, "0 2 0", false},
        calls_case{"CallAfterReadWins", "COMPATIBLE", {"g1", "s2", "g1", "d"}, "3 0 2 0", false},
        calls_case{"ClearIgnoresEnvironment", "COMPATIBLE", {"s0", "g1", "d", "s0", "s1"},
                   "0 0 0 0 -8", false}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Setter, CbwrCalls,
    testing::Values(
        calls_case{"CodesBeforeDetection", nullptr,
                   {"s15", "s-1", "s4", "s6", "s9", "s10", "s12", "s14", "s3", "g1"},
                   "-4 -4 -3 -3 -3 -3 -3 -3 0 3", false},
        calls_case{"SecondCallBeforeDetection", nullptr, {"s2", "s2", "s3", "s0", "g1"},
                   "0 0 -8 -8 2", false},
        calls_case{"FrozenAfterDetection", nullptr, {"s3", "d", "s3", "s2", "s15", "s0", "g1"},
                   "0 1 0 -8 -8 -8 3", false},
        calls_case{"FrozenWithoutCall", nullptr, {"d", "s1", "s2"}, "0 0 -8", false},
        calls_case{"FortranForms", nullptr, {"S3", "G1", "S2", "d", "S3"}, "0 3 -8 1 0", false},
        calls_case{"WhichOtherThanBranch", nullptr, {"g0", "g2", "G5", "g-1"}, "-2 -2 -2 1",
                   false},
        calls_case{"AutoBranchOfOtherVendor", nullptr, {"a", "s3", "a"}, "2 -8 2", false}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
