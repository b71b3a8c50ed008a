// Processor classification for every processor class, as pure functions of the processor,
// the enable flags and the reproducibility branch.
#include <gtest/gtest.h>

#include "service/cpu/classify.hpp"
#include "service/cpu/features.hpp"

namespace {

using namespace tav::service;
namespace m = feature_mask;

constexpr uint64_t v2 = m::sse2 | m::ssse3 | m::sse4_2 | feature::sse3 | feature::sse4_1;
constexpr uint64_t v3 = v2 | m::avx | m::avx2;
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

}  // namespace
