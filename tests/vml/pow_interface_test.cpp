// The power functions through the exported entries with the CPU type forced to each path in a
// child: special cases, the error index of a threaded call, agreement with the def path.
#include <gtest/gtest.h>
#include <tav/tav_vml.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

#include "child_process.hpp"
#include "code_paths.hpp"

namespace {

using tav::test::run_child;

int failures = 0;
std::vector<int> reported_indices;

std::mutex reported_lock;

// Called in the worker threads of a threaded call.
int record(tav_vml_error_context* context) {
  std::lock_guard<std::mutex> hold(reported_lock);
  reported_indices.push_back(context->index);
  return 0;
}

void expect(bool ok, const char* what) {
  if (!ok) {
    std::printf("FAILED: %s\n", what);
    ++failures;
  }
}

// vdPow of one element with the status it leaves.
double dpow(double x, double y, unsigned mode, int& status) {
  double r;
  vmlClearErrStatus();
  vmdPow(1, &x, &y, &r, mode);
  status = vmlGetErrStatus();
  return r;
}

TAV_SCENARIO(pow_on_forced_path) {
  for (unsigned mode : {VML_HA, VML_LA, VML_EP}) {
    int s;
    double r = dpow(0.0, -1.0, mode, s);
    expect(r == INFINITY && !std::signbit(r) && s == VML_STATUS_ERRDOM, "0^-1 = +inf, status 1");
    r = dpow(-8.0, 1.0 / 3, mode, s);
    expect(std::isnan(r) && s == VML_STATUS_ERRDOM, "-8^(1/3) = NaN, status 1");
    r = dpow(-8.0, 3.0, mode, s);
    expect(r == -512.0 && s == 0, "-8^3 = -512, no status");
    r = dpow(10.0, 400.0, mode, s);
    expect(r == INFINITY && s == 0, "10^400 = +inf, no status");
  }

  // A domain error deep in a call long enough to be threaded reports its whole-array index.
  const int n = 100000;
  std::vector<double> x(n, 1.5), y(n, 2.5), r(n);
  x[77777] = -2.0;
  vmlSetErrorCallBack(record);
  vdPow(n, x.data(), y.data(), r.data());
  vmlClearErrorCallBack();
  expect(reported_indices.size() == 1 && reported_indices[0] == 77777, "index of the error");
  expect(std::isnan(r[77777]) && std::fabs(r[0] - 2.7556759606310752) < 1e-15, "values");

  float fx = -8, fy = 3, fr;
  vsPow(1, &fx, &fy, &fr);
  expect(fr == -512.0f, "vsPow -8^3");
  tav_complex16 za{2, 0}, zb{3, 0}, zr;
  vzPow(1, &za, &zb, &zr);
  expect(zr.real == 8 && zr.imag == 0, "vzPow (2+0i)^(3+0i)");
  tav_complex8 ca{0, 1}, cb{2, 0}, cr;
  vcPow(1, &ca, &cb, &cr);
  expect(std::fabs(cr.real + 1) < 1e-6f && std::fabs(cr.imag) < 1e-6f, "vcPow i^2");

  // Checksums of a fixed random run, for the parent to compare across paths.
  std::vector<double> a(4099), b(4099), out(4099);
  std::srand(7);
  for (int i = 0; i < 4099; ++i) {
    a[i] = std::exp2(40.0 * std::rand() / RAND_MAX - 20);
    b[i] = 20.0 * std::rand() / RAND_MAX - 10;
  }
  vmdPow(4099, a.data(), b.data(), out.data(), VML_HA);
  double sum = 0;
  for (double v : out) sum += std::log2(v);
  std::printf("failures=%d sum=%.12e\n", failures, sum);
  std::exit(failures == 0 ? 0 : 1);
}

TEST(PowInterface, EveryRunnablePath) {
  std::string first_sum;
  for (int id : {0, 2, 3, 4, 5}) {
    if (!tav::test::path_runs(id)) continue;
    const char* name = tav::test::path_tags[id];
    const auto r = run_child("pow_on_forced_path", {{"TAV_DEBUG_CPU_TYPE", std::to_string(id)}});
    EXPECT_EQ(r.exit_code, 0) << name << ": " << r.out << r.err;
    // The HA results of all paths agree to within their error bound: the sums of log2 of 4099
    // results match to about 4099 · 2^-52 · 20.
    const std::string sum = r.out.substr(r.out.find("sum=") + 4);
    if (first_sum.empty()) first_sum = sum;
    EXPECT_NEAR(std::stod(sum), std::stod(first_sum), 1e-8) << name;
  }
}

}  // namespace
