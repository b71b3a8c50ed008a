// The dispatch facility: which variant a slot takes for every CPU type and reproducibility branch.
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <cstdio>
#include <string>

#include "child_process.hpp"
#include "service/dispatch/dispatched.hpp"
#include "service/dispatch/path_rule.hpp"

namespace {

using tav::service::path_for;
using tav::test::run_child;

TAV_DISPATCHED(test, which_path, int(int));

TAV_SCENARIO(resolve_which_path) {
  // Two calls: the first resolves the slot, the second goes through it.
  int first = which_path_dispatch(0);
  int second = which_path_dispatch(100);
  std::printf("type=%d branch=%d path=%s second=%d\n", tav_serv_cpu_detect(),
              tav_serv_cbwr_get(TAV_CBWR_BRANCH), tav::service::path_tag(first), second);
}

TEST(PathRule, TypesAndBranches) {
  for (int branch : {1, 2, 3, 10}) {
    const bool off = branch == 1;
    EXPECT_EQ(path_for(0, branch), off ? 0 : 1);
    EXPECT_EQ(path_for(1, branch), off ? 0 : 1);
    EXPECT_EQ(path_for(2, branch), off ? 2 : 1);
    for (int type = 3; type <= 7; ++type) EXPECT_EQ(path_for(type, branch), type);
  }
  for (int type : {-1, 8, 9, 10, 1000}) EXPECT_EQ(path_for(type, 1), -1);
}

struct forced_case {
  const char* forced;   // value of the CPU-type override variable, or nullptr for unset
  const char* cbwr;     // TAV_CBWR, or nullptr for unset
  const char* expected; // the scenario's line
};

class ForcedType : public testing::TestWithParam<forced_case> {};

TEST_P(ForcedType, SlotTakesTheVariantOfTheRule) {
  const forced_case& c = GetParam();
  tav::test::env_list env;
  if (c.forced) env.emplace_back("TAV_DEBUG_CPU_TYPE", c.forced);
  if (c.cbwr) env.emplace_back("TAV_CBWR", c.cbwr);
  auto r = run_child("resolve_which_path", env);
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, std::string(c.expected) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    EveryTypeAndBranch, ForcedType,
    testing::Values(
        forced_case{"0", nullptr, "type=0 branch=1 path=def second=100"},
        forced_case{"1", nullptr, "type=1 branch=1 path=def second=100"},
        forced_case{"2", nullptr, "type=2 branch=1 path=mc second=102"},
        forced_case{"3", nullptr, "type=3 branch=1 path=mc3 second=103"},
        forced_case{"4", nullptr, "type=4 branch=1 path=avx second=104"},
        forced_case{"5", nullptr, "type=5 branch=1 path=avx2 second=105"},
        forced_case{"6", nullptr, "type=6 branch=1 path=avx512_tp second=106"},
        forced_case{"7", nullptr, "type=7 branch=1 path=avx512 second=107"},
        forced_case{"8", nullptr, "type=6 branch=1 path=avx512_tp second=106"},
        forced_case{"9", nullptr, "type=7 branch=1 path=avx512 second=107"},
        forced_case{"0", "", "type=0 branch=1 path=def second=100"},
        forced_case{"0", "AUTO", "type=0 branch=2 path=cnr_def second=101"},
        forced_case{"1", "COMPATIBLE", "type=1 branch=3 path=cnr_def second=101"},
        forced_case{"2", "AUTO", "type=2 branch=2 path=cnr_def second=101"},
        forced_case{"5", "AUTO", "type=5 branch=2 path=avx2 second=105"},
        forced_case{"7", "COMPATIBLE", "type=7 branch=3 path=avx512 second=107"},
        // No override: on any processor COMPATIBLE gives type 1 and the cnr_def variant.
        forced_case{nullptr, "COMPATIBLE", "type=1 branch=3 path=cnr_def second=101"}));

TEST(ForcedType, OutOfRangeIsFatal) {
  for (const char* value : {"10", "-1", "99"}) {
    auto r = run_child("resolve_which_path", {{"TAV_DEBUG_CPU_TYPE", value}});
    EXPECT_EQ(r.exit_code, 1) << value;
    EXPECT_EQ(r.out, std::string("Orvat TAV ERROR: CPU ") + value + " is not supported.\n") << value;
  }
}

TEST(ForcedType, NonIntegerIsIgnored) {
  for (const char* value : {"5x", "avx2", " "}) {
    auto r = run_child("resolve_which_path", {{"TAV_DEBUG_CPU_TYPE", value}});
    EXPECT_EQ(r.exit_code, 0) << value;
    const int type = tav_serv_cpu_detect();
    EXPECT_EQ(r.out.substr(0, 7), "type=" + std::to_string(type) + " ") << value;
  }
}

}  // namespace
