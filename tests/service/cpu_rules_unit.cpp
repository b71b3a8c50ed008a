// Processor classification and reproducibility-mode decisions for synthetic processors of every
// class, as pure functions.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "service/cbwr/cbwr_rules.hpp"
#include "service/cpu/classify.hpp"
#include "service/cpu/features.hpp"

namespace {

using namespace tav::service;
namespace m = feature_mask;

constexpr uint64_t sse2_only = m::sse2 | feature::sse3;
constexpr uint64_t ssse3 = sse2_only | m::ssse3;
constexpr uint64_t sse4_1 = ssse3 | feature::sse4_1;
constexpr uint64_t v2 = sse4_1 | m::sse4_2;
constexpr uint64_t avx = v2 | m::avx;
constexpr uint64_t v3 = avx | m::avx2;
constexpr uint64_t v4 = v3 | m::avx512;
constexpr uint64_t many_core = v3 | m::avx512_tp;

struct machine {
  const char* name;
  processor cpu;
  int type;         // the ladder's answer with every class enabled
  int auto_branch;  // the AUTO target on it
};

const machine machines[] = {
    {"sse2 only", {true, m::sse2, false}, 0, 4},
    {"ssse3", {true, m::sse2 | m::ssse3, false}, 2, 6},
    {"ssse3 with sse4.1", {true, m::sse2 | m::ssse3 | feature::sse4_1, false}, 2, 7},
    {"sse4.2", {true, v2, false}, 3, 8},
    {"avx", {true, v2 | m::avx, false}, 4, 9},
    {"avx2", {true, v3, false}, 5, 10},
    {"avx2 without fma", {true, v3 & ~feature::fma, false}, 4, 9},
    {"many-core", {true, many_core, false}, 6, 11},
    {"many-core e1", {true, many_core | m::avx512_tp_e1, false}, 8, 13},
    {"avx512", {true, v4, false}, 7, 12},
    {"avx512 vnni", {true, v4, true}, 9, 14},
    {"avx512 and many-core bits", {true, v4 | many_core, false}, 7, 12},
    {"other vendor, avx512", {false, v4, true}, 0, 2},
    {"other vendor, sse2", {false, m::sse2, false}, 0, 2},
};

class Machines : public testing::TestWithParam<machine> {};

TEST_P(Machines, LadderAndAutoBranch) {
  const machine& c = GetParam();
  EXPECT_EQ(ladder_type(c.cpu, enable_flags{}), c.type);
  EXPECT_EQ(auto_branch(c.cpu, c.type), c.auto_branch);
  EXPECT_TRUE(supports_type(c.cpu, c.cpu.orvat ? c.type : 0));
}

INSTANTIATE_TEST_SUITE_P(EveryClass, Machines, testing::ValuesIn(machines),
                         [](const auto& info) {
                           std::string n = info.param.name;
                           for (char& ch : n)
                             if (!isalnum(static_cast<unsigned char>(ch))) ch = '_';
                           return n;
                         });

TEST(Ladder, NoSse2IsAFailure) {
  EXPECT_EQ(ladder_type({true, 0, false}, {}), -1);
  EXPECT_EQ(ladder_type({false, m::avx, false}, {}), -1);
}

TEST(EnableInstructions, Spellings) {
  EXPECT_EQ(parse_enable_instructions("SSE4_2"), 0);
  EXPECT_EQ(parse_enable_instructions("AVX"), 1);
  EXPECT_EQ(parse_enable_instructions("AVX2"), 2);
  EXPECT_EQ(parse_enable_instructions("AVX512_TP"), 3);
  EXPECT_EQ(parse_enable_instructions("AVX512"), 4);
  EXPECT_EQ(parse_enable_instructions("AVX512_TP_E1"), 5);
  EXPECT_EQ(parse_enable_instructions("AVX512_E1"), 6);
  for (const char* bad : {"avx2", "AVX2 ", " AVX2", "AVX-512", "", "SSE4_1", "AVX512_E2"})
    EXPECT_EQ(parse_enable_instructions(bad), -1) << bad;
  EXPECT_EQ(parse_enable_instructions(nullptr), -1);
}

// The class the ladder picks on a processor after a limit of `level`.
int limited_type(const processor& cpu, int level) {
  enable_flags flags;
  EXPECT_EQ(apply_enable_level(cpu, false, level, flags), 1) << level;
  return ladder_type(cpu, flags);
}

TEST(EnableInstructions, LevelsLowerTheLadder) {
  const processor top{true, v4 | many_core | m::avx512_tp_e1, true};
  EXPECT_EQ(limited_type(top, 0), 3);
  EXPECT_EQ(limited_type(top, 1), 4);
  EXPECT_EQ(limited_type(top, 2), 5);
  EXPECT_EQ(limited_type(top, 3), 6);
  EXPECT_EQ(limited_type(top, 4), 7);
  EXPECT_EQ(limited_type(top, 5), 8);
  EXPECT_EQ(limited_type(top, 6), 9);
}

TEST(EnableInstructions, RefusedLimitsChangeNothing) {
  const processor avx2{true, v3, false};
  enable_flags flags;
  EXPECT_EQ(apply_enable_level(avx2, false, 4, flags), 0);   // lacks AVX-512
  EXPECT_EQ(apply_enable_level(avx2, false, 6, flags), 0);   // lacks VNNI
  EXPECT_EQ(apply_enable_level(avx2, false, 7, flags), 0);
  EXPECT_EQ(apply_enable_level(avx2, false, -1, flags), 0);
  EXPECT_EQ(apply_enable_level(avx2, true, 1, flags), 0);    // CPU type forced
  EXPECT_EQ(apply_enable_level({false, v3, false}, false, 1, flags), 0);  // other vendor
  EXPECT_EQ(ladder_type(avx2, flags), 5);
  // A limit never raises: SSE4_2 on an AVX2 processor, then AVX2 again.
  EXPECT_EQ(apply_enable_level(avx2, false, 0, flags), 1);
  EXPECT_EQ(ladder_type(avx2, flags), 3);
  EXPECT_EQ(apply_enable_level(avx2, false, 2, flags), 1);
  EXPECT_EQ(ladder_type(avx2, flags), 5);
}

TEST(ReproducibilityTarget, BranchToClass) {
  const int expected[] = {-1, -1, -1, 1, 0, 0, 2, 2, 3, 4, 5, 6, 7, 8, 9, -1};
  for (int branch = 0; branch < 16; ++branch) EXPECT_EQ(cbwr_target_type(branch), expected[branch]);
  EXPECT_EQ(cbwr_target_type(64 + 10), 5);  // only the low six bits name the target
}

TEST(ReproducibilityTarget, NeverAboveTheProcessorOrTheLimit) {
  const processor avx512{true, v4, false};
  enable_flags all;
  EXPECT_EQ(target_type(avx512, all, 5), 5);
  EXPECT_EQ(target_type(avx512, all, 7), 7);
  EXPECT_EQ(target_type(avx512, all, 6), -1);  // no many-core features
  EXPECT_EQ(target_type(avx512, all, 9), -1);  // no VNNI
  EXPECT_EQ(target_type(avx512, all, 1), 1);
  EXPECT_EQ(target_type({true, v2, false}, all, 5), -1);
  enable_flags avx_only;
  ASSERT_EQ(apply_enable_level(avx512, false, 1, avx_only), 1);
  EXPECT_EQ(target_type(avx512, avx_only, 7), 4);
  EXPECT_EQ(target_type(avx512, avx_only, 3), 3);
}

TEST(VectorMathType, FromCpuType) {
  const int expected[] = {0, 1, 3, 5, 6, 7, 8, 9};
  for (int type = 0; type < 8; ++type) EXPECT_EQ(vml_type(type), expected[type]);
  EXPECT_EQ(stored_type(8), 6);
  EXPECT_EQ(stored_type(9), 7);
}

struct runnable_case {
  const char* name;
  processor cpu;
  uint32_t branches;  // bit b set when target branch b (3 to 14) is runnable
};

constexpr uint32_t bits(std::initializer_list<int> branches) {
  uint32_t set = 0;
  for (int b : branches) set |= 1u << b;
  return set;
}

class CbwrTargetRunnable : public testing::TestWithParam<runnable_case> {};

TEST_P(CbwrTargetRunnable, MatchesTheProcessorsClasses) {
  const runnable_case& c = GetParam();
  for (int branch = 3; branch <= 14; ++branch)
    EXPECT_EQ(cbwr_target_runnable(c.cpu, branch), ((c.branches >> branch) & 1u) != 0)
        << "branch " << branch;
}

INSTANTIATE_TEST_SUITE_P(
    Processors, CbwrTargetRunnable,
    testing::Values(
        runnable_case{"OtherVendorWithEverything", {false, v4 | m::avx512_tp | m::avx512_tp_e1, true},
                      bits({3})},
        runnable_case{"Sse2", {true, sse2_only, false}, bits({3, 4, 5})},
        runnable_case{"Ssse3WithoutSse41", {true, ssse3, false}, bits({3, 4, 5, 6})},
        runnable_case{"Ssse3WithSse41", {true, sse4_1, false}, bits({3, 4, 5, 6, 7})},
        runnable_case{"Sse42", {true, v2, false}, bits({3, 4, 5, 6, 7, 8})},
        runnable_case{"Avx", {true, avx, false}, bits({3, 4, 5, 6, 7, 8, 9})},
        runnable_case{"Avx2", {true, v3, false}, bits({3, 4, 5, 6, 7, 8, 9, 10})},
        runnable_case{"ManyCore", {true, many_core, false}, bits({3, 4, 5, 6, 7, 8, 9, 10, 11})},
        runnable_case{"ManyCoreE1", {true, many_core | m::avx512_tp_e1, false},
                      bits({3, 4, 5, 6, 7, 8, 9, 10, 11, 13})},
        runnable_case{"Avx512", {true, v4, false}, bits({3, 4, 5, 6, 7, 8, 9, 10, 12})},
        runnable_case{"Avx512Vnni", {true, v4, true}, bits({3, 4, 5, 6, 7, 8, 9, 10, 12, 14})}),
    [](const auto& info) { return std::string(info.param.name); });

struct name_case {
  const char* value;
  int branch;
};

class CbwrBranchByName : public testing::TestWithParam<name_case> {};

TEST_P(CbwrBranchByName, ReadsWholeNamesOnly) {
  EXPECT_EQ(cbwr_branch_by_name(GetParam().value), GetParam().branch) << GetParam().value;
}

INSTANTIATE_TEST_SUITE_P(
    Names, CbwrBranchByName,
    testing::Values(name_case{"AUTO", 2}, name_case{"COMPATIBLE", 3}, name_case{"SSE2", 4},
                    name_case{"SSE3", 4}, name_case{"SSSE3", 6}, name_case{"SSE4_1", 7},
                    name_case{"SSE4_2", 8}, name_case{"AVX", 9}, name_case{"AVX2", 10},
                    name_case{"AVX512_TP_E1", 13}, name_case{"AVX512_TP", 11},
                    name_case{"AVX512_E1", 14}, name_case{"AVX512", 12},
                    name_case{"BRANCH=AVX2", 10}, name_case{"BRANCH=AVX512_TP_E1", 13},
                    name_case{"AVX2x", -1}, name_case{"AVX2 ", -1}, name_case{"avx2", -1},
                    name_case{"OFF", -1}, name_case{"", -1}, name_case{"BRANCH=", -1},
                    name_case{"BRANCH=BRANCH=AVX", -1}, name_case{"branch=AVX", -1},
                    name_case{"AVX512_TP_E", -1}));

TEST(CbwrBranchByName, AbsentValueMatchesNothing) { EXPECT_EQ(cbwr_branch_by_name(nullptr), -1); }

struct environment_case {
  const char* name;
  processor cpu;
  const char* value;
  int branch;
  bool fell_back;
};

class CbwrEnvironment : public testing::TestWithParam<environment_case> {};

TEST_P(CbwrEnvironment, StoresTheBranchOrFallsBackToAuto) {
  const environment_case& c = GetParam();
  cbwr_environment_choice choice = cbwr_branch_from_environment(c.cpu, c.value);
  EXPECT_EQ(choice.branch, c.branch);
  EXPECT_EQ(choice.fell_back, c.fell_back);
}

constexpr processor other_vendor{false, v4, true};

INSTANTIATE_TEST_SUITE_P(
    Values, CbwrEnvironment,
    testing::Values(
        environment_case{"AbsentIsOff", {true, v3, false}, nullptr, 1, false},
        environment_case{"UnknownIsOff", {true, v3, false}, "AVX2x", 1, false},
        environment_case{"PrefixedTarget", {true, v3, false}, "BRANCH=AVX2", 10, false},
        environment_case{"TargetAboveProcessor", {true, v3, false}, "AVX512", 2, true},
        environment_case{"E1WithoutVnni", {true, v4, false}, "AVX512_E1", 2, true},
        environment_case{"E1WithVnni", {true, v4, true}, "AVX512_E1", 14, false},
        environment_case{"OtherVendorTarget", other_vendor, "SSE2", 2, true},
        environment_case{"OtherVendorCompatible", other_vendor, "COMPATIBLE", 3, false},
        environment_case{"OtherVendorAuto", other_vendor, "AUTO", 2, false}),
    [](const auto& info) { return std::string(info.param.name); });

// One setter call on a given state: the status and the state it leaves.
struct set_case {
  const char* name;
  processor cpu;
  bool detected;
  cbwr_state before;
  int mode;
  int status;
  cbwr_state after;
};

class CbwrSet : public testing::TestWithParam<set_case> {};

TEST_P(CbwrSet, ReturnsTheStatusAndKeepsTheStateConsistent) {
  const set_case& c = GetParam();
  cbwr_state state = c.before;
  EXPECT_EQ(cbwr_apply_set(c.cpu, c.detected, c.mode, state), c.status);
  EXPECT_EQ(state.word, c.after.word);
  EXPECT_EQ(state.source, c.after.source);
}

constexpr processor avx2_cpu{true, v3, false};
constexpr cbwr_state fresh{0, cbwr_source_unread};
constexpr cbwr_state from_environment_off{1, cbwr_source_environment};
constexpr cbwr_state cleared{0, cbwr_source_environment};
constexpr cbwr_state call_auto{2, cbwr_source_call};

INSTANTIATE_TEST_SUITE_P(
    Calls, CbwrSet,
    testing::Values(
        set_case{"UnknownCode", avx2_cpu, false, fresh, 15, -4, fresh},
        set_case{"NegativeCode", avx2_cpu, false, fresh, -1, -4, fresh},
        set_case{"ClearMarksEnvironmentRead", avx2_cpu, false, fresh, 0, 0, cleared},
        set_case{"Auto", avx2_cpu, false, fresh, 2, 0, call_auto},
        set_case{"Off", avx2_cpu, false, fresh, 1, 0, {1, cbwr_source_call}},
        set_case{"TargetWithinProcessor", avx2_cpu, false, fresh, 10, 0, {10, cbwr_source_call}},
        set_case{"TargetAboveProcessor", avx2_cpu, false, fresh, 12, -3, fresh},
        set_case{"Sse41WithoutIt", {true, ssse3, false}, false, fresh, 7, -3, fresh},
        set_case{"OtherVendorTarget", other_vendor, false, fresh, 4, -3, fresh},
        set_case{"OtherVendorCompatible", other_vendor, false, fresh, 3, 0, {3, cbwr_source_call}},
        set_case{"OverridesEnvironment", avx2_cpu, false, from_environment_off, 3, 0,
                 {3, cbwr_source_call}},
        set_case{"AfterClear", avx2_cpu, false, cleared, 9, 0, {9, cbwr_source_call}},
        set_case{"SameAsCall", avx2_cpu, false, call_auto, 2, 0, call_auto},
        set_case{"OtherThanCall", avx2_cpu, false, call_auto, 3, -8, call_auto},
        set_case{"ClearAfterCall", avx2_cpu, false, call_auto, 0, -8, call_auto},
        set_case{"DetectedSame", avx2_cpu, true, from_environment_off, 1, 0, from_environment_off},
        set_case{"DetectedOther", avx2_cpu, true, from_environment_off, 10, -8,
                 from_environment_off},
        set_case{"DetectedClear", avx2_cpu, true, from_environment_off, 0, -8, from_environment_off}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
