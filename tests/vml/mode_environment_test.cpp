// Tests of a thread's first vector-math mode, read from TAV_VML_MODE, in child processes.
#include <gtest/gtest.h>
#include <tav/tav_vml.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>

#include "child_process.hpp"

namespace {

constexpr unsigned default_mode = VML_HA | VML_ERRMODE_DEFAULT;  // 0x1A02

TAV_SCENARIO(print_first_mode) { std::printf("%x\n", vmlGetMode()); }

unsigned parse_mode(const std::string& text) {
  return static_cast<unsigned>(std::stoul(text, nullptr, 16));
}

// A value of exactly 255 characters, the most that the reader looks at: 0x401.
std::string value_of_255_characters() {
  std::string value = "VML_LA";
  for (int i = 0; i < 5; ++i) value += ",VML_ERRMODE_STDERR";
  for (int i = 0; i < 22; ++i) value += ",VML_LA";
  return value;
}

struct environment_case {
  const char* label;
  std::optional<std::string> value;  // nothing: the variable is absent
  unsigned expected;
};

class VmlModeEnvironment : public testing::TestWithParam<environment_case> {};

TEST_P(VmlModeEnvironment, GivesTheFirstMode) {
  tav::test::env_list env;
  if (GetParam().value) env.emplace_back("TAV_VML_MODE", *GetParam().value);
  const tav::test::child_result child = tav::test::run_child("print_first_mode", env);
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(parse_mode(child.out), GetParam().expected) << child.out;
}

// Each of the 18 names appears at least once; a bad token anywhere gives the default.
INSTANTIATE_TEST_SUITE_P(
    Values, VmlModeEnvironment,
    testing::Values(
        environment_case{"absent", std::nullopt, default_mode},
        environment_case{"low_accuracy_and_stderr", "VML_LA,VML_ERRMODE_STDERR", 0x401},
        environment_case{"enhanced_performance", "VML_EP", 0x1A03},
        environment_case{"accuracies_are_ored", "VML_LA,VML_HA", 0x1A03},
        environment_case{"semicolon_separator", "VML_LA;VML_HA", default_mode},
        environment_case{"trailing_comma", "VML_LA,", default_mode},
        environment_case{"leading_comma", ",VML_LA", default_mode},
        environment_case{"empty", "", default_mode},
        environment_case{"lower_case", "vml_la", default_mode},
        environment_case{"lower_case_name", "VML_la", default_mode},
        environment_case{"blank_after_comma", "VML_LA, VML_HA", default_mode},
        environment_case{"name_with_suffix", "VML_LAX", default_mode},
        environment_case{"bad_token_after_good_ones", "VML_LA,VML_ERRMODE_STDERR,VML_XX",
                         default_mode},
        environment_case{"double_consistent_full_word", "VML_DOUBLE_CONSISTENT", default_mode},
        environment_case{"double_consistent_short_name", "VML_DOUBLE_CONSISTEN", 0x1A22},
        environment_case{"float_consistent", "VML_FLOAT_CONSISTENT,VML_LA", 0x1A11},
        environment_case{"restore", "VML_RESTORE", 0x1A32},
        environment_case{"default_precision", "VML_DEFAULT_PRECISION,VML_EP", 0x1A03},
        environment_case{"ignore_and_trap", "VML_ERRMODE_IGNORE,VML_TRAP_DIVBYZERO", 0x2000102},
        environment_case{"no_error", "VML_ERRMODE_NOERR", 0x2002},
        environment_case{"default_error_mode", "VML_ERRMODE_DEFAULT,VML_LA", 0x1A01},
        environment_case{"error_modes_one_by_one",
                         "VML_ERRMODE_ERRNO,VML_ERRMODE_EXCEPT,VML_ERRMODE_CALLBACK", 0x1A02},
        environment_case{"traps", "VML_TRAP_INVALID,VML_TRAP_OVERFLOW,VML_TRAP_UNDERFLOW",
                         0xD001A02},
        environment_case{"longest_value_read", value_of_255_characters(), 0x401},
        // The reader's buffer ends at a token boundary: the last token is not seen.
        environment_case{"token_past_the_buffer", value_of_255_characters() + ",VML_EP", 0x401},
        // The buffer ends inside the last token, which then fails to match.
        environment_case{"token_cut_by_the_buffer",
                         value_of_255_characters().substr(0, 248) + ",VML_ERRMODE_IGNORE",
                         default_mode}),
    [](const testing::TestParamInfo<environment_case>& info) { return info.param.label; });

// A mode change made before the first read starts from the environment's mode, and the
// precision-control group that only the environment can set survives the change and the
// callback bit rules.
TAV_SCENARIO(change_before_first_read) {
  std::printf("%x\n", vmlSetMode(VML_LA | VML_DOUBLE_CONSISTENT));
  std::printf("%x\n", vmlGetMode());
  vmlSetErrorCallBack([](tav_vml_error_context*) { return 1; });
  std::printf("%x\n", vmlGetMode());
  vmlClearErrorCallBack();
  std::printf("%x\n", vmlGetMode());
}

TEST(VmlModeEnvironmentRead, ChangeStartsFromTheEnvironmentAndKeepsPrecision) {
  const auto child = tav::test::run_child(
      "change_before_first_read",
      {{"TAV_VML_MODE", "VML_EP,VML_ERRMODE_STDERR,VML_FLOAT_CONSISTENT"}});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "413\n411\n1411\n411\n");
}

// Every thread reads the variable on its own first use: a new thread starts from the value the
// variable has then, never from another thread's mode, and a thread that has read it keeps its
// mode when the variable changes.
TAV_SCENARIO(threads_read_on_first_use) {
  vmlSetMode(VML_LA | VML_ERRMODE_STDERR);
  std::thread([] { std::printf("%x\n", vmlGetMode()); }).join();
  setenv("TAV_VML_MODE", "VML_HA,VML_ERRMODE_IGNORE", 1);
  std::thread([] { std::printf("%x\n", vmlGetMode()); }).join();
  std::printf("%x\n", vmlGetMode());
}

TEST(VmlModeEnvironmentRead, EachThreadReadsOnItsFirstUse) {
  const auto child =
      tav::test::run_child("threads_read_on_first_use", {{"TAV_VML_MODE", "VML_EP"}});
  ASSERT_EQ(child.exit_code, 0) << child.err;
  EXPECT_EQ(child.out, "1a03\n102\n401\n");
}

}  // namespace
