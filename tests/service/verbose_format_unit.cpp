// The text of verbose lines and banners: time formats at each boundary, branch names, the thread
// fields, the interface names and the reading of TAV_VERBOSE's value.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "service/verbose/cpu_frequency.hpp"
#include "service/verbose/verbose_format.hpp"

namespace {

using namespace tav::service;

struct elapsed_case {
  double seconds;
  const char* text;
};

class VerboseElapsed : public testing::TestWithParam<elapsed_case> {};

TEST_P(VerboseElapsed, UsesTheUnitOfItsRange) {
  verbose_text out;
  append_elapsed(out, GetParam().seconds);
  EXPECT_STREQ(out.data, GetParam().text) << GetParam().seconds;
}

INSTANTIATE_TEST_SUITE_P(
    Boundaries, VerboseElapsed,
    testing::Values(elapsed_case{0.0, "0.00s"}, elapsed_case{-3.0, "0.00s"},
                    elapsed_case{std::numeric_limits<double>::quiet_NaN(), "0.00s"},
                    elapsed_case{2.0, "2.00s"}, elapsed_case{std::nextafter(1.0, 2.0), "1.00s"},
                    elapsed_case{1.0, "1000.00ms"}, elapsed_case{0.25, "250.00ms"},
                    elapsed_case{std::nextafter(1e-3, 1.0), "1.00ms"},
                    elapsed_case{1e-3, "1000.00us"}, elapsed_case{4.2e-5, "42.00us"},
                    elapsed_case{std::nextafter(1e-6, 1.0), "1.00us"},
                    elapsed_case{1e-6, "1000ns"}, elapsed_case{3e-9, "3ns"},
                    elapsed_case{1e-10, "0ns"}));

struct cnr_case {
  int branch;
  const char* text;
};

class VerboseCnr : public testing::TestWithParam<cnr_case> {};

TEST_P(VerboseCnr, NamesTheBranch) {
  verbose_text out;
  append_cnr(out, GetParam().branch);
  EXPECT_STREQ(out.data, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Branches, VerboseCnr,
    testing::Values(cnr_case{1, " CNR:OFF"}, cnr_case{2, " CNR:AUTO"}, cnr_case{3, " CNR:COMPATIBLE"},
                    cnr_case{4, " CNR:SSE2"}, cnr_case{6, " CNR:SSSE3"}, cnr_case{7, " CNR:SSE4_1"},
                    cnr_case{8, " CNR:SSE4_2"}, cnr_case{9, " CNR:AVX"}, cnr_case{10, " CNR:AVX2"},
                    cnr_case{11, " CNR:AVX512_TP"}, cnr_case{12, " CNR:AVX512"},
                    cnr_case{13, " CNR:AVX512_TP_E1"}, cnr_case{14, " CNR:?e"},
                    cnr_case{0, " CNR:?0"}, cnr_case{5, " CNR:?5"}, cnr_case{63, " CNR:?3f"},
                    cnr_case{-2, " CNR:?fffffffe"}));

TEST(VerboseSuffix, ShowsOnlyDomainsThatDifferFromTheGlobalCount) {
  EXPECT_STREQ(verbose_suffix(1.5e-3, 1, {1, 1, 0, 4, {4, 4, 4, 4}}).data,
               "1.50ms CNR:OFF Dyn:1 FastMM:1 TID:0  NThr:4");
  EXPECT_STREQ(verbose_suffix(2.0, 14, {0, 0, 12, 4, {1, 4, 2, 8}}).data,
               "2.00s CNR:?e Dyn:0 FastMM:0 TID:12 NThr:4,BLAS:1,VML:2,PARDISO:8");
  EXPECT_STREQ(verbose_suffix(0, 3, {1, 1, 1, 2, {2, 3, 2, 2}}).data,
               "0.00s CNR:COMPATIBLE Dyn:1 FastMM:1 TID:1  NThr:2,FFT:3");
}

constexpr TAVVersion version{2019, 0, 2, "Product", "20190118", "Orvat(R) Architecture processors",
                             "Orvat(R) 64 architecture"};
constexpr const char* banner_head =
    "TAV_VERBOSE Orvat(R) TAV 2019.0 Update 2 Product build 20190118 for Orvat(R) 64 architecture "
    "Orvat(R) Architecture processors, Lnx 3.50GHz";

struct interface_case {
  int kind;
  const char* tail;
};

class VerboseBanner : public testing::TestWithParam<interface_case> {};

TEST_P(VerboseBanner, NamesTheIntegerInterface) {
  EXPECT_EQ(std::string(verbose_banner(version, 3.5, GetParam().kind).data),
            std::string(banner_head) + GetParam().tail);
}

INSTANTIATE_TEST_SUITE_P(Interfaces, VerboseBanner,
                         testing::Values(interface_case{1, " lp64 orvat_thread"},
                                         interface_case{2, " ilp64 orvat_thread"},
                                         interface_case{-1, " cdecl orvat_thread"},
                                         interface_case{-2, " stdcall orvat_thread"},
                                         interface_case{26, " iface1a orvat_thread"},
                                         interface_case{0, " orvat_thread"}));

TEST(VerboseBanner, OmitsUpdateZero) {
  TAVVersion first = version;
  first.UpdateVersion = 0;
  EXPECT_STREQ(verbose_banner(first, 0, 1).data,
               "TAV_VERBOSE Orvat(R) TAV 2019.0 Product build 20190118 for Orvat(R) 64 "
               "architecture Orvat(R) Architecture processors, Lnx 0.00GHz lp64 orvat_thread");
}

TEST(VerboseText, CutsAtCapacityKeepingTheTerminator) {
  verbose_text out;
  std::string long_text(2 * verbose_text::capacity, 'x');
  out.append("%s", long_text.c_str());
  out.append("more");
  EXPECT_EQ(out.size, verbose_text::capacity - 1);
  EXPECT_EQ(std::string(out.data), long_text.substr(0, verbose_text::capacity - 1));
}

struct switch_case {
  const char* value;
  int on;
};

class VerboseSwitchText : public testing::TestWithParam<switch_case> {};

TEST_P(VerboseSwitchText, IsOnExactlyForAWholeOne) {
  EXPECT_EQ(verbose_switch_from_text(GetParam().value), GetParam().on) << GetParam().value;
}

INSTANTIATE_TEST_SUITE_P(
    Values, VerboseSwitchText,
    testing::Values(switch_case{"1", 1}, switch_case{"0x1", 1}, switch_case{"01", 1},
                    switch_case{" 1", 1}, switch_case{"1 ", 0}, switch_case{"2", 0},
                    switch_case{"010", 0}, switch_case{"0", 0}, switch_case{"", 0},
                    switch_case{"x", 0}, switch_case{"0x", 0}, switch_case{"-1", 0},
                    switch_case{"1x", 0}, switch_case{nullptr, 0}));

TEST(CpuFrequency, ReadsOnlyCpuMhzLines) {
  EXPECT_DOUBLE_EQ(cpuinfo_line_mhz("cpu MHz\t\t: 2894.561\n"), 2894.561);
  EXPECT_LT(cpuinfo_line_mhz("cpu family\t: 23\n"), 0);
  EXPECT_LT(cpuinfo_line_mhz("cpu MHz\n"), 0);
  EXPECT_LT(cpuinfo_line_mhz("cpu MHz\t\t: \n"), 0);
}

}  // namespace
