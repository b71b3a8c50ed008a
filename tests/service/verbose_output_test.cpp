// Verbose mode in a fresh process: TAV_VERBOSE read once, the output file and its warnings, the
// banner printed once, and the line with the process's real thread and memory settings.
#include <gtest/gtest.h>
#include <tav/tav.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "child_process.hpp"

namespace {

using tav::test::run_child;

// Runs the steps named by the arguments and prints what they return, one per line:
//   vN tav_serv_verbose(N)   VN TAV_VERBOSE(&N)   TN TAV_Verbose(N)   m tav_serv_verbose_mode()
//   i tav_serv_iface_verbose_mode()   f<path> tav_serv_verbose_output_file(path)
//   F<path> TAV_Verbose_Output_File(path)   l<text> one line of 1.5 ms   r<path> remove(path)
//   b one BLAS thread   y dynamic off   z buffer cache off   c the thread counts
TAV_SCENARIO(verbose_steps) {
  for (const std::string& step : tav::test::scenario_args()) {
    std::string rest = step.substr(1);
    int n = std::atoi(rest.c_str());
    switch (step[0]) {
      case 'v': std::printf("%d\n", tav_serv_verbose(n)); break;
      case 'V': std::printf("%d\n", TAV_VERBOSE(&n)); break;
      case 'T': std::printf("%d\n", TAV_Verbose(n)); break;
      case 'm': std::printf("%d\n", tav_serv_verbose_mode()); break;
      case 'i': std::printf("%d\n", tav_serv_iface_verbose_mode()); break;
      case 'f': std::printf("%d\n", tav_serv_verbose_output_file(rest.c_str())); break;
      case 'F': std::printf("%d\n", TAV_Verbose_Output_File(rest.c_str())); break;
      case 'l': tav_serv_iface_print_verbose_info(rest.c_str(), 1.5e-3); break;
      case 'r': std::remove(rest.c_str()); break;
      case 'b': tav_serv_domain_set_num_threads(1, TAV_DOMAIN_BLAS); break;
      case 'y': tav_serv_set_dynamic(0); break;
      case 'z': tav_serv_disable_fast_mm(); break;
      case 'c':
        std::printf("counts %d %d\n", tav_serv_get_max_threads(),
                    tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS));
        break;
    }
    std::fflush(stdout);
  }
}

std::string lines(const std::vector<std::string>& list) {
  std::string text;
  for (const std::string& line : list) text += line + "\n";
  return text;
}

struct switch_case {
  const char* name;
  const char* verbose;  // TAV_VERBOSE, or null for absent
  std::vector<std::string> steps;
  std::vector<std::string> results;
};

class VerboseSwitch : public testing::TestWithParam<switch_case> {};

TEST_P(VerboseSwitch, ReadsTheEnvironmentOnceUnlessACallCameFirst) {
  const switch_case& c = GetParam();
  tav::test::env_list env;
  if (c.verbose != nullptr) env.emplace_back("TAV_VERBOSE", c.verbose);
  auto child = run_child("verbose_steps", env, c.steps);
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, lines(c.results));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, VerboseSwitch,
    // The value's reading is verbose_format_unit's; here only whether the variable is read.
    testing::Values(switch_case{"Hexadecimal", "0x1", {"m", "i"}, {"1", "1"}},
                    switch_case{"TrailingBlank", "1 ", {"m"}, {"0"}},
                    switch_case{"Absent", nullptr, {"m"}, {"0"}},
                    switch_case{"BadValueChangesNothing", "1", {"v2", "v-1", "m"}, {"-1", "-1", "1"}},
                    switch_case{"CallBeforeReadWins", "1", {"v0", "m"}, {"0", "0"}},
                    switch_case{"CallAfterRead", "1", {"m", "T0", "m", "V1", "i"},
                                {"1", "0", "0", "1", "1"}}),
    [](const auto& info) { return std::string(info.param.name); });

const std::regex banner(
    "TAV_VERBOSE Orvat\\(R\\) TAV 2019\\.0 Update 2 Product build 20190118 for Orvat\\(R\\) 64 "
    "architecture Orvat\\(R\\) [^\n]*processors, Lnx [0-9]+\\.[0-9]{2}GHz lp64 orvat_thread\n");

std::string read_file(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// A directory of its own for each test's output files.
class VerboseOutput : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/tav_verbose_XXXXXX";
    ASSERT_NE(mkdtemp(name), nullptr);
    dir_ = name;
  }
  void TearDown() override {
    std::remove((dir_ + "/out.txt").c_str());
    std::remove(dir_.c_str());
  }
  std::string dir_;
};

// The banner once, then each line with the settings in force when it was printed.
TEST_F(VerboseOutput, BannerOnceThenOneLinePerCall) {
  auto child = run_child("verbose_steps", {{"TAV_CBWR", "COMPATIBLE"}},
                         {"lDGEMM(N,N,4,4,4,...)", "b", "y", "lDGETRF(4,4)", "c"});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  int max_threads = 0, blas_threads = 0;
  size_t counts = child.out.rfind("counts ");
  ASSERT_NE(counts, std::string::npos) << child.out;
  ASSERT_EQ(std::sscanf(child.out.c_str() + counts, "counts %d %d", &max_threads, &blas_threads), 2);
  std::string nthr = "NThr:" + std::to_string(max_threads);
  std::string blas = blas_threads != max_threads ? ",BLAS:" + std::to_string(blas_threads) : "";
  std::string expected_lines =
      "TAV_VERBOSE DGEMM(N,N,4,4,4,...) 1.50ms CNR:COMPATIBLE Dyn:1 FastMM:1 TID:0  " + nthr + "\n" +
      "TAV_VERBOSE DGETRF(4,4) 1.50ms CNR:COMPATIBLE Dyn:0 FastMM:1 TID:0  " + nthr + blas + "\n";
  std::smatch head;
  ASSERT_TRUE(std::regex_search(child.out, head, banner)) << child.out;
  EXPECT_EQ(head.position(0), 0) << child.out;
  EXPECT_EQ(child.out.substr(head.length(0), counts - head.length(0)), expected_lines);
  EXPECT_EQ(child.err, "");
  EXPECT_GT(max_threads, 1) << "this machine cannot show a differing domain";
}

// The buffer cache can only be switched off before the memory manager reads its settings.
TEST(VerboseLine, ShowsTheBufferCacheOff) {
  auto child = run_child("verbose_steps", {}, {"z", "lA"});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_NE(child.out.find("TAV_VERBOSE A 1.50ms CNR:OFF Dyn:1 FastMM:0 TID:0  NThr:"),
            std::string::npos)
      << child.out;
}

TEST_F(VerboseOutput, EnvironmentFileIsAppendedTo) {
  std::string file = dir_ + "/out.txt";
  std::ofstream(file) << "earlier\n";
  auto child = run_child("verbose_steps", {{"TAV_VERBOSE_OUTPUT_FILE", file}}, {"lA", "lB"});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "");
  EXPECT_EQ(child.err, "");
  std::string text = read_file(file);
  ASSERT_EQ(text.rfind("earlier\n", 0), 0u) << text;
  std::smatch head;
  std::string rest = text.substr(8);
  ASSERT_TRUE(std::regex_search(rest, head, banner)) << text;
  EXPECT_EQ(head.position(0), 0);
  EXPECT_EQ(std::regex_replace(rest.substr(head.length(0)), std::regex(" CNR:.*"), ""),
            "TAV_VERBOSE A 1.50ms\nTAV_VERBOSE B 1.50ms\n");
}

struct file_case {
  const char* name;
  std::string value;
  const char* warning;  // on standard error, or "" for none
};

class VerboseOutputFileEnvironment : public testing::TestWithParam<file_case> {};

TEST_P(VerboseOutputFileEnvironment, RefusedNamesWarnOnceAndPrintToStdout) {
  auto child = run_child("verbose_steps", {{"TAV_VERBOSE_OUTPUT_FILE", GetParam().value}},
                         {"lA", "lB"});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.err, GetParam().warning);
  EXPECT_TRUE(std::regex_search(child.out, banner)) << child.out;
  EXPECT_NE(child.out.find("TAV_VERBOSE B 1.50ms CNR:OFF"), std::string::npos) << child.out;
}

constexpr const char* too_long = "TAV_VERBOSE WARNING: incorrect output filename: too long or empty\n";
constexpr const char* cannot_open = "TAV_VERBOSE WARNING: Unable to open verbose output file.\n";

INSTANTIATE_TEST_SUITE_P(
    Names, VerboseOutputFileEnvironment,
    testing::Values(file_case{"Empty", "", ""},
                    file_case{"Length4096", std::string(4096, 'a'), too_long},
                    file_case{"Length4095", "/tmp/" + std::string(4090, 'a'), cannot_open},
                    file_case{"MissingDirectory", "/nonexistent-tav-dir/out.txt", cannot_open}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(VerboseOutput, CallSetsTheFileAndFallsBackWhenItVanishes) {
  std::string file = dir_ + "/out.txt";
  auto child = run_child("verbose_steps", {},
                         {"f", "F/nonexistent-tav-dir/x", "f" + file, "lA", "r" + file, "r" + dir_,
                          "lB"});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.err, std::string(too_long) + cannot_open +
                           "TAV_VERBOSE WARNING: unable to open output file. Print to STDOUT\n");
  EXPECT_EQ(child.out.substr(0, 6), "1\n1\n0\n");
  EXPECT_EQ(std::regex_replace(child.out.substr(6), std::regex(" CNR:.*"), ""),
            "TAV_VERBOSE B 1.50ms\n");
}

}  // namespace
