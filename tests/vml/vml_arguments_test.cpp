// Argument checks of the vector functions: bad sizes and null arrays reach the program's own
// xerbla_ with the function's C name and the argument position and leave the status; n = 0 does
// nothing; every name of a function (C, Fortran, mode-taking twin) runs the same operation.
#include <gtest/gtest.h>
#include <tav/tav_vml.h>

#include <string>
#include <thread>
#include <vector>

#include "fresh_thread.hpp"

namespace {

using tav::test::in_fresh_thread;

struct report {
  std::string name;
  int info;
};

std::vector<report>& received() {
  static std::vector<report> reports;
  return reports;
}

}  // namespace

extern "C" void xerbla_(const char* name, const int* info, int name_length) {
  received().push_back({std::string(name, static_cast<size_t>(name_length)), *info});
}

namespace {

struct bad_call {
  const char* label;
  void (*call)();
  const char* name;
  int position;
  int status;
};

double x[4] = {1, 2, 3, 4}, y[4] = {5, 6, 7, 8}, out[4];
tav_complex16 zx[2], zy[2];

const bad_call bad_calls[] = {
    {"NegativeSize", [] { vdAdd(-1, x, y, out); }, "vdAdd", 1, VML_STATUS_BADSIZE},
    {"NullFirst", [] { vdAdd(4, nullptr, y, out); }, "vdAdd", 2, VML_STATUS_BADMEM},
    {"NullSecond", [] { vsMul(4, reinterpret_cast<float*>(x), nullptr, reinterpret_cast<float*>(out)); },
     "vsMul", 3, VML_STATUS_BADMEM},
    {"NullResult", [] { vzDiv(2, zx, zy, nullptr); }, "vzDiv", 4, VML_STATUS_BADMEM},
    {"TwinKeepsTheCName", [] { vmdAdd(-5, x, y, out, VML_LA); }, "vdAdd", 1, VML_STATUS_BADSIZE},
    {"FortranNegativeSize", [] { const int n = -2; vcsub_(&n, nullptr, nullptr, nullptr); },
     "vcSub", 1, VML_STATUS_BADSIZE},
    {"PowerNull", [] { vdPow(4, x, nullptr, out); }, "vdPow", 3, VML_STATUS_BADMEM},
};

class VmlBadArguments : public testing::TestWithParam<bad_call> {};

TEST_P(VmlBadArguments, ReportThroughXerblaAndStatus) {
  in_fresh_thread([] {
    received().clear();
    GetParam().call();
    ASSERT_EQ(received().size(), 1u);
    EXPECT_EQ(received()[0].name, GetParam().name);
    EXPECT_EQ(received()[0].info, GetParam().position);
    EXPECT_EQ(vmlGetErrStatus(), GetParam().status);
  });
}

INSTANTIATE_TEST_SUITE_P(Cases, VmlBadArguments, testing::ValuesIn(bad_calls),
                         [](const auto& info) { return std::string(info.param.label); });

TEST(VmlEmptyCall, DoesNothingEvenWithNullArrays) {
  in_fresh_thread([] {
    received().clear();
    vmlSetErrStatus(7);
    vdAdd(0, nullptr, nullptr, nullptr);
    vmzPow(0, nullptr, nullptr, nullptr, VML_EP);
    EXPECT_TRUE(received().empty());
    EXPECT_EQ(vmlGetErrStatus(), 7);
    EXPECT_EQ(vmlGetMode(), VML_HA | VML_ERRMODE_DEFAULT);
  });
}

// The twin applies its groups for the call only; its zero groups keep the thread's setting.
TEST(VmlTwin, RestoresTheModeAndKeepsZeroGroups) {
  in_fresh_thread([] {
    vmlSetMode(VML_EP);
    double r[4] = {};
    vmdAdd(4, x, y, r, VML_LA);
    EXPECT_EQ(r[3], 12.0);
    EXPECT_EQ(vmlGetMode(), VML_EP | VML_ERRMODE_DEFAULT);
    // Error mode only: the accuracy group stays EP during the call, and no status is set by a
    // data error while NOERR is in force.
    const double zero[1] = {0};
    vmdDiv(1, x, zero, r, VML_ERRMODE_NOERR);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK);
    EXPECT_EQ(vmlGetMode(), VML_EP | VML_ERRMODE_DEFAULT);
    // Setting the previous mode back goes through the same rules: a trap group that was zero
    // before the call cannot be cleared by it and stays.
    vmdAdd(4, x, y, r, VML_TRAP_OVERFLOW);
    EXPECT_EQ(vmlGetMode(), VML_EP | VML_ERRMODE_DEFAULT | VML_TRAP_OVERFLOW);
  });
}

// Every name runs the same operation.
TEST(VmlNames, FortranAndTwinFormsComputeTheSame) {
  const int n = 4;
  const unsigned mode = VML_HA;
  double r[6][4];
  vdSub(n, x, y, r[0]);
  VDSUB_(&n, x, y, r[1]);
  vdsub_(&n, x, y, r[2]);
  vmdSub(n, x, y, r[3], mode);
  VMDSUB_(&n, x, y, r[4], &mode);
  vmdsub_(&n, x, y, r[5], &mode);
  for (int form = 0; form < 6; ++form)
    for (int i = 0; i < n; ++i) EXPECT_EQ(r[form][i], x[i] - y[i]) << form;
}

}  // namespace
