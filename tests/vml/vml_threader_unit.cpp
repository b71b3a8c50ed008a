// The threader of the two-input functions and the error handler underneath it: the threshold,
// the share of each worker, indices reported relative to the whole array from any worker, the
// gathered status, the machine factor of dynamic threading and the errno of every code.
#include <gtest/gtest.h>
#include <omp.h>
#include <tav/tav_threads.h>
#include <tav/tav_vml.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "fresh_thread.hpp"
#include "vml/kernels/vml_kernel.hpp"
#include "vml/mode/vml_state.hpp"
#include "vml/threader/thread_count.hpp"
#include "vml/threader/threader_2i_1o.hpp"

namespace {

using tav::test::in_fresh_thread;
using tav::vml::machine_factor;
using tav::vml::run_2i_1o;

// Two threads for the vector-math domain, without dynamic threading: every call of 100 elements
// or more splits.
class two_vml_threads : public testing::Environment {
 public:
  void SetUp() override {
    tav_serv_set_dynamic(0);
    tav_serv_domain_set_num_threads(2, 3);
  }
};
[[maybe_unused]] testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new two_vml_threads);

std::mutex lock;
std::vector<std::pair<long, int>> shares;  // (offset in the whole array, count) per kernel call
std::vector<double> whole(1000);
int failing = -1;  // element of the whole array that the recording kernel reports

void recording_kernel(int n, const double* a, const double* b, double* r) {
  const long offset = a - whole.data();
  {
    std::lock_guard guard(lock);
    shares.emplace_back(offset, n);
  }
  for (int i = 0; i < n; ++i) {
    r[i] = a[i] + b[i];
    if (offset + i == failing) tav::vml::report_error<double>(VML_STATUS_OVERFLOW, i, a, b, r, nullptr, "vdTest");
  }
}

std::vector<std::pair<long, int>> run_recorded(int n) {
  shares.clear();
  std::vector<double> r(n);
  run_2i_1o<double>(n, whole.data(), whole.data(), r.data(), recording_kernel, 1.0f);
  std::sort(shares.begin(), shares.end());
  return shares;
}

using share_list = std::vector<std::pair<long, int>>;

TEST(VmlThreader, SplitsFromTheThresholdOnInContiguousShares) {
  EXPECT_EQ(run_recorded(99), (share_list{{0, 99}}));
  EXPECT_EQ(run_recorded(100), (share_list{{0, 50}, {50, 50}}));
  // q = 50, r = 1: worker 0 takes q + 1 elements.
  EXPECT_EQ(run_recorded(101), (share_list{{0, 51}, {51, 50}}));
}

TEST(VmlThreader, NeverNestsInsideAParallelRegion) {
  share_list inner;
#pragma omp parallel num_threads(2)
  {
#pragma omp master
    inner = run_recorded(1000);
  }
  EXPECT_EQ(inner, (share_list{{0, 1000}}));
}

tav_vml_error_context seen;
std::thread::id callback_thread;

int remember(tav_vml_error_context* context) {
  seen = *context;
  callback_thread = std::this_thread::get_id();
  context->r1 = -1;
  return 0;
}

TEST(VmlThreader, WorkerReportsIndexInTheWholeArrayAndStatusReachesCaller) {
  in_fresh_thread([] {
    vmlSetErrorCallBack(remember);
    vmlSetMode(VML_ERRMODE_CALLBACK);  // the callback only
    failing = 777;
    std::vector<double> r(1000);
    shares.clear();
    run_2i_1o<double>(1000, whole.data(), whole.data(), r.data(), recording_kernel, 1.0f);
    failing = -1;
    EXPECT_EQ(seen.index, 777);
    EXPECT_EQ(seen.code, VML_STATUS_OVERFLOW);
    EXPECT_STREQ(seen.function_name, "vdTest");
    EXPECT_NE(callback_thread, std::this_thread::get_id());  // the second worker's share
    EXPECT_EQ(r[777], -1.0);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OVERFLOW);
    EXPECT_EQ(tav::vml::interface_input(), nullptr);
    // A threaded call without reports leaves the gathered status, 0.
    run_2i_1o<double>(1000, whole.data(), whole.data(), r.data(), recording_kernel, 1.0f);
    EXPECT_EQ(vmlGetErrStatus(), VML_STATUS_OK);
  });
}

// Dynamic threading: t = int(w·n·A), at least 1 and at most the domain's count.
TEST(VmlThreadCount, DynamicCountFollowsTheWork) {
  tav_serv_set_dynamic(1);
  EXPECT_EQ(tav::vml::thread_count(99, 1e9f), 1);
  EXPECT_EQ(tav::vml::thread_count(100000, 1e-12f), 1);
  EXPECT_EQ(tav::vml::thread_count(100000, 1e9f), 2);
  tav_serv_set_dynamic(0);
  EXPECT_EQ(tav::vml::thread_count(100, 1e-12f), 2);
}

struct topology_case {
  int packages, cores, logical;
  double expected;
};

TEST(VmlThreadCount, MachineFactorWeighsTheOtherProcessors) {
  const topology_case cases[] = {
      {1, 1, 1, 0.0},                 // one processor: always serial
      {1, 2, 2, 2.0 / 60000},         // the other processor is another core
      {1, 1, 2, 2.0 / 500000},        // the other processor shares the core
      {2, 2, 2, 2.0 / 9000},          // the other processor is in the other package
      // 2 packages of 16 cores with 2 threads each: of 63 others, 32 in the other package, 30
      // on other cores of this package, 1 on this core.
      {2, 32, 64, 2.0 / ((9000.0 * 32 + 60000.0 * 30 + 500000.0 * 1) / 63)},
  };
  for (const topology_case& c : cases)
    EXPECT_DOUBLE_EQ(machine_factor(c.packages, c.cores, c.logical), c.expected)
        << c.packages << " " << c.cores << " " << c.logical;
}

struct errno_case {
  int code, expected;
};

// Argument codes (-1, -2) are reported without arrays: their values are never read.
TEST(VmlErrorHandler, SetsErrnoFromTheCode) {
  in_fresh_thread([] {
    vmlSetMode(VML_ERRMODE_ERRNO);
    const errno_case cases[] = {{-2, 13}, {-1, 22}, {0, 0}, {1, 33}, {2, 34},
                                {3, 34},  {4, 34},  {5, 14}, {-3, 14}};
    double x[1] = {1}, r[1] = {2};
    for (const errno_case& c : cases) {
      errno = -1;
      if (c.code < 0 && c.code >= -2)
        tav::vml::report_error<double>(c.code, 0, nullptr, nullptr, nullptr, nullptr, "vdAdd");
      else
        tav::vml::report_error<double>(c.code, 0, x, x, r, nullptr, "vdAdd");
      EXPECT_EQ(errno, c.expected) << c.code;
      EXPECT_EQ(vmlGetErrStatus(), c.code);
    }
    EXPECT_EQ(r[0], 2.0);
  });
}

// The name in the context is cut to 63 characters and a terminator.
TEST(VmlErrorHandler, CutsLongNames) {
  in_fresh_thread([] {
    vmlSetErrorCallBack(remember);
    vmlSetMode(VML_ERRMODE_CALLBACK);
    const std::string name(80, 'n');
    float x[1] = {1}, r[1] = {0};
    tav::vml::report_error<float>(VML_STATUS_UNDERFLOW, 0, x, x, r, nullptr, name.c_str());
    EXPECT_EQ(seen.function_name_length, 63);
    EXPECT_EQ(std::string(seen.function_name), name.substr(0, 63));
    EXPECT_EQ(r[0], -1.0f);
  });
}

}  // namespace
