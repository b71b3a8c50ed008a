// Tests of the per-thread mode word, error status and error callback services under their C and
// Fortran names, in a process where the mode variable is absent.
#include <gtest/gtest.h>
#include <tav/tav_vml.h>

#include <cstdlib>
#include <thread>

#include "fresh_thread.hpp"

namespace {

using tav::test::in_fresh_thread;

constexpr unsigned default_mode = VML_HA | VML_ERRMODE_DEFAULT;  // 0x1A02

// Every thread reads its first mode from the environment; without the variable, from the
// default. The cases with the variable set run in child processes (mode_environment_test).
class without_mode_variable : public testing::Environment {
 public:
  void SetUp() override { unsetenv("TAV_VML_MODE"); }
};
[[maybe_unused]] testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new without_mode_variable);

int handled(tav_vml_error_context*) { return 1; }
int passed_on(tav_vml_error_context*) { return 0; }

// Each group that is non-zero in the request is replaced on its own; the precision-control group
// and the bits outside every group are never taken from the request.
struct group_case {
  const char* label;
  unsigned request;
  unsigned expected;
};

class VmlModeGroups : public testing::TestWithParam<group_case> {};

// All four settable groups non-zero, so that a group left alone is visible.
constexpr unsigned base_mode = default_mode | 0x40000 | VML_TRAP_INVALID;  // 0x1041A02

TEST_P(VmlModeGroups, ReplacesOnlyTheNonZeroGroups) {
  in_fresh_thread([] {
    EXPECT_EQ(vmlSetMode(0x40000 | VML_TRAP_INVALID), default_mode);
    ASSERT_EQ(vmlGetMode(), base_mode);
    EXPECT_EQ(vmlSetMode(GetParam().request), base_mode);
    EXPECT_EQ(vmlGetMode(), GetParam().expected);
  });
}

INSTANTIATE_TEST_SUITE_P(
    Requests, VmlModeGroups,
    testing::Values(
        group_case{"zero", 0, base_mode},
        group_case{"accuracy", VML_EP, 0x1041A03},
        group_case{"error_mode", VML_ERRMODE_STDERR, 0x1040402},
        group_case{"flush_to_zero", 0x200000, 0x1201A02},
        group_case{"trap", VML_TRAP_UNDERFLOW, 0x8041A02},
        group_case{"two_groups", VML_LA | VML_ERRMODE_IGNORE, 0x1040101},
        group_case{"all_groups", VML_LA | VML_ERRMODE_NOERR | 0x80000 | VML_TRAP_OVERFLOW,
                   0x4082001},
        group_case{"precision_only", VML_DOUBLE_CONSISTENT, base_mode},
        group_case{"precision_with_accuracy", VML_RESTORE | VML_LA, 0x1041A01},
        group_case{"outside_every_group", 0xF0C30000, base_mode}),
    [](const testing::TestParamInfo<group_case>& info) { return info.param.label; });

// The callback bit 0x1000 follows the callback through the group rule: clearing it when it is
// the only error-mode bit would empty the group, so the group stays as it was.
struct callback_bit_case {
  const char* label;
  unsigned error_mode;  // set with vmlSetMode before the callback; 0 keeps the default
  unsigned with_callback;
  unsigned after_clear;
};

class VmlCallbackBit : public testing::TestWithParam<callback_bit_case> {};

TEST_P(VmlCallbackBit, FollowsTheCallback) {
  in_fresh_thread([] {
    const callback_bit_case& c = GetParam();
    vmlSetMode(c.error_mode | VML_TRAP_DIVBYZERO);
    vmlSetErrorCallBack(handled);
    EXPECT_EQ(vmlGetMode(), c.with_callback | VML_TRAP_DIVBYZERO);
    vmlClearErrorCallBack();
    EXPECT_EQ(vmlGetMode(), c.after_clear | VML_TRAP_DIVBYZERO);
    // A null callback given to the setter clears in the same way.
    vmlSetErrorCallBack(passed_on);
    EXPECT_EQ(vmlSetErrorCallBack(nullptr), &passed_on);
    EXPECT_EQ(vmlGetMode(), c.after_clear | VML_TRAP_DIVBYZERO);
  });
}

INSTANTIATE_TEST_SUITE_P(
    ErrorModes, VmlCallbackBit,
    testing::Values(callback_bit_case{"default", 0, 0x1A02, 0xA02},
                    callback_bit_case{"stderr", VML_ERRMODE_STDERR, 0x1402, 0x402},
                    callback_bit_case{"callback_only", VML_ERRMODE_CALLBACK, 0x1002, 0x1002},
                    callback_bit_case{"no_error", VML_ERRMODE_NOERR, 0x3002, 0x2002}),
    [](const testing::TestParamInfo<callback_bit_case>& info) { return info.param.label; });

TEST(VmlThreads, EachThreadHasItsOwnState) {
  in_fresh_thread([] {
    vmlSetMode(VML_LA | VML_ERRMODE_STDERR);
    vmlSetErrStatus(VML_STATUS_SING);
    vmlSetErrorCallBack(handled);
    std::thread([] {
      EXPECT_EQ(vmlGetMode(), default_mode);
      EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK);
      EXPECT_EQ(vmlGetErrorCallBack(), nullptr);
      vmlSetMode(VML_EP | VML_ERRMODE_IGNORE);
      vmlSetErrStatus(VML_STATUS_ERRDOM);
      vmlSetErrorCallBack(passed_on);
    }).join();
    EXPECT_EQ(vmlGetMode(), VML_LA | VML_ERRMODE_STDERR | VML_ERRMODE_CALLBACK);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_SING);
    EXPECT_EQ(vmlGetErrorCallBack(), &handled);
  });
}

// One set of the eight services under one of the three names, called with values.
struct service_names {
  const char* label;
  unsigned (*set_mode)(unsigned);
  unsigned (*get_mode)();
  int (*set_status)(int);
  int (*get_status)();
  int (*clear_status)();
  tav_vml_error_callback (*set_callback)(tav_vml_error_callback);
  tav_vml_error_callback (*get_callback)();
  tav_vml_error_callback (*clear_callback)();
};

class VmlServiceNames : public testing::TestWithParam<service_names> {};

// What one name sets, the C name reads, and the other way round: all names share one state, and
// every setter and clearer returns what was there before.
TEST_P(VmlServiceNames, ShareTheStateOfTheCNames) {
  in_fresh_thread([] {
    const service_names& n = GetParam();
    EXPECT_EQ(n.set_mode(VML_LA), default_mode);
    EXPECT_EQ(vmlGetMode(), VML_LA | VML_ERRMODE_DEFAULT);
    vmlSetMode(VML_EP);
    EXPECT_EQ(n.get_mode(), VML_EP | VML_ERRMODE_DEFAULT);

    EXPECT_EQ(n.set_status(VML_STATUS_SING), VML_STATUS_OK);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_SING);
    vmlSetErrStatus(VML_STATUS_BADSIZE);
    EXPECT_EQ(n.get_status(), VML_STATUS_BADSIZE);
    EXPECT_EQ(n.clear_status(), VML_STATUS_BADSIZE);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK);
    EXPECT_EQ(n.clear_status(), VML_STATUS_OK);

    EXPECT_EQ(n.set_callback(handled), nullptr);
    EXPECT_EQ(vmlGetErrorCallBack(), &handled);
    EXPECT_EQ(vmlSetErrorCallBack(passed_on), &handled);
    EXPECT_EQ(n.get_callback(), &passed_on);
    EXPECT_EQ(n.clear_callback(), &passed_on);
    EXPECT_EQ(vmlGetErrorCallBack(), nullptr);
    EXPECT_EQ(n.clear_callback(), nullptr);
    EXPECT_EQ(vmlGetMode(), VML_EP | VML_ERRMODE_ERRNO | VML_ERRMODE_EXCEPT);
  });
}

INSTANTIATE_TEST_SUITE_P(
    Names, VmlServiceNames,
    testing::Values(
        service_names{"c", vmlSetMode, vmlGetMode, vmlSetErrStatus, vmlGetErrStatus,
                      vmlClearErrStatus, vmlSetErrorCallBack, vmlGetErrorCallBack,
                      vmlClearErrorCallBack},
        service_names{"fortran_upper", [](unsigned m) { return VMLSETMODE_(&m); }, VMLGETMODE_,
                      [](int s) { return VMLSETERRSTATUS_(&s); }, VMLGETERRSTATUS_,
                      VMLCLEARERRSTATUS_,
                      [](tav_vml_error_callback c) { return VMLSETERRORCALLBACK_(&c); },
                      VMLGETERRORCALLBACK_, VMLCLEARERRORCALLBACK_},
        service_names{"fortran_lower", [](unsigned m) { return vmlsetmode_(&m); }, vmlgetmode_,
                      [](int s) { return vmlseterrstatus_(&s); }, vmlgeterrstatus_,
                      vmlclearerrstatus_,
                      [](tav_vml_error_callback c) { return vmlseterrorcallback_(&c); },
                      vmlgeterrorcallback_, vmlclearerrorcallback_}),
    [](const testing::TestParamInfo<service_names>& info) { return info.param.label; });

}  // namespace
