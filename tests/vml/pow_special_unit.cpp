// The special cases of the real power kernels, bit for bit, with the statuses they report, in
// every code path this processor runs and every accuracy: signed zeros, infinities, NaNs, -1,
// negative bases, overflow and underflow into the subnormals, denormal bases.
#include <gtest/gtest.h>
#include <tav/tav_vml.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "runnable_vml_slots.hpp"
#include "vml/tables/function_tables.hpp"

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct pow_case {
  double x, y, expected;
  int status;
};

// Cases whose values every format holds.
const std::vector<pow_case> common_cases = {
    {0.0, -1.0, inf, 1},      {-0.0, -3.0, -inf, 1},   {-0.0, -2.0, inf, 1},
    {0.0, -0.5, inf, 1},      {-0.0, -inf, inf, 1},    {0.0, 3.0, 0.0, 0},
    {-0.0, 3.0, -0.0, 0},     {-0.0, 2.0, 0.0, 0},     {-0.0, 0.5, 0.0, 0},
    {-0.0, inf, 0.0, 0},      {-8.0, 1.0 / 3, nan, 1}, {-1.5, -2.5, nan, 1},
    {-8.0, 3.0, -512.0, 0},   {-2.0, -3.0, -0.125, 0}, {-2.0, 2.0, 4.0, 0},
    {10.0, 400.0, inf, 0},    {-10.0, 401.0, -inf, 0}, {10.0, -400.0, 0.0, 0},
    {-10.0, -401.0, -0.0, 0}, {nan, 0.0, 1.0, 0},      {inf, 0.0, 1.0, 0},
    {-inf, -0.0, 1.0, 0},     {0.0, 0.0, 1.0, 0},      {1.0, nan, nan, 0},
    {nan, 1.0, nan, 0},       {-1.0, inf, 1.0, 0},     {-1.0, -inf, 1.0, 0},
    {-1.0, 3.0, -1.0, 0},     {-1.0, 2.0, 1.0, 0},     {-1.0, 0x1p60, 1.0, 0},
    {-1.0, 0.5, nan, 1},      {1.0, inf, 1.0, 0},      {1.0, 12345.6, 1.0, 0},
    {2.0, inf, inf, 0},       {0.5, inf, 0.0, 0},      {2.0, -inf, 0.0, 0},
    {0.5, -inf, inf, 0},      {-1.5, inf, inf, 0},     {-0.5, inf, 0.0, 0},
    {inf, 2.0, inf, 0},       {inf, -2.0, 0.0, 0},     {-inf, 3.0, -inf, 0},
    {-inf, 2.0, inf, 0},      {-inf, -3.0, -0.0, 0},   {-inf, -2.0, 0.0, 0},
    {-inf, 0.5, inf, 0},      {-inf, -0.5, 0.0, 0},    {2.0, 10.0, 1024.0, 0},
};

// Subnormal results and bases of each format.
const std::vector<pow_case> double_cases = {
    {0.5, 1074.0, 0x1p-1074, 0},  {2.0, -1074.0, 0x1p-1074, 0}, {-2.0, -1073.0, -0x1p-1073, 0},
    {2.0, -1080.0, 0.0, 0},       {-2.0, -1081.0, -0.0, 0},      {0x1p-1074, 0.5, 0x1p-537, 0},
    {0x1p-1074, -1.0, inf, 0},    {0x1p-1074, 1.0, 0x1p-1074, 0}, {0x1p-1030, -0.5, 0x1p515, 0},
    {0x1.8p-1050, 1.0, 0x1.8p-1050, 0},
};
const std::vector<pow_case> float_cases = {
    {0.5, 149.0, 0x1p-149, 0}, {2.0, -149.0, 0x1p-149, 0}, {-2.0, -147.0, -0x1p-147, 0},
    {2.0, -160.0, 0.0, 0},     {-2.0, -161.0, -0.0, 0},    {0x1p-148, 0.5, 0x1p-74, 0},
    {0x1p-149, -1.0, inf, 0},  {0x1p-140, -0.5, 0x1p70, 0},
};

struct report {
  int code, index;
};
thread_local std::vector<report> reports;

int record(tav_vml_error_context* context) {
  reports.push_back({context->code, context->index});
  return 0;
}

template <class T>
bool same_value(T got, T expected) {
  if (std::isnan(expected)) return std::isnan(got);
  return std::memcmp(&got, &expected, sizeof(T)) == 0;
}

template <class T>
void check_cases(const tav::vml::kernel_fn<T>* table, const std::vector<pow_case>& extra) {
  std::vector<pow_case> cases = common_cases;
  cases.insert(cases.end(), extra.begin(), extra.end());
  int n = static_cast<int>(cases.size());
  std::vector<T> x(n), y(n), r(n);
  for (int i = 0; i < n; ++i) {
    x[i] = static_cast<T>(cases[i].x);
    y[i] = static_cast<T>(cases[i].y);
  }
  vmlSetErrorCallBack(record);
  for (const tav::test::vml_slot& p : tav::test::runnable_vml_slots()) {
    for (int accuracy = 0; accuracy < 3; ++accuracy) {
      // Case i sits at offset shift + i, after `shift` ordinary elements (2^3), so that every
      // case meets every lane position of a block of up to 16 lanes in one of the runs.
      for (int shift = 0; shift < 16; ++shift) {
        std::vector<T> xs(shift, T(2)), ys(shift, T(3));
        xs.insert(xs.end(), x.begin(), x.end());
        ys.insert(ys.end(), y.begin(), y.end());
        std::vector<T> rs(xs.size());
        reports.clear();
        table[p.slot + 10 * accuracy](n + shift, xs.data(), ys.data(), rs.data());
        std::vector<int> status(n + shift, 0);
        for (const report& rep : reports) status[rep.index] = rep.code;
        for (int i = 0; i < n; ++i) {
          const pow_case& c = cases[i];
          EXPECT_TRUE(same_value(rs[shift + i], static_cast<T>(c.expected)))
              << "slot " << p.slot << " accuracy " << accuracy + 1 << ": " << c.x << "^" << c.y
              << " = " << rs[shift + i] << ", expected " << c.expected;
          EXPECT_EQ(status[shift + i], c.status)
              << "slot " << p.slot << " accuracy " << accuracy + 1 << ": " << c.x << "^" << c.y;
        }
      }
    }
  }
  vmlClearErrorCallBack();
}

TEST(PowSpecialValues, DoubleEveryPathAndAccuracy) {
  check_cases<double>(tav_vml_kernel_dPow_ttab, double_cases);
}

TEST(PowSpecialValues, SingleEveryPathAndAccuracy) {
  check_cases<float>(tav_vml_kernel_sPow_ttab, float_cases);
}

}  // namespace
