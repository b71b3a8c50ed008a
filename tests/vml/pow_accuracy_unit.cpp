// Accuracy of every path's real power kernels against MPFR (ulps for LA and HA, relative error
// for EP); TAV_VML_ACCURACY_COUNT arguments per type (default 10^5; 10^7 in bench/RESULTS.md).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include "mpfr_ulp.hpp"
#include "runnable_vml_slots.hpp"
#include "vml/tables/function_tables.hpp"

namespace {

int argument_count() {
  const char* v = std::getenv("TAV_VML_ACCURACY_COUNT");
  return v != nullptr && std::atoi(v) > 0 ? std::atoi(v) : 100000;
}

template <class T>
struct sample {
  std::vector<T> x, y;
  std::vector<long double> exact;
};

template <class T>
T random_positive(std::mt19937_64& gen) {
  // Uniform exponent over the normal and subnormal range, random significand.
  constexpr int digits = std::numeric_limits<T>::digits;
  constexpr int lo = std::numeric_limits<T>::min_exponent - digits;
  constexpr int hi = std::numeric_limits<T>::max_exponent;
  std::uniform_int_distribution<int> e(lo, hi - 1);
  std::uniform_real_distribution<double> m(1.0, 2.0);
  T v = static_cast<T>(std::ldexp(m(gen), e(gen)));
  return std::isinf(v) || v == 0 ? T(1.5) : v;
}

// y so that x^y lands at 2^u for u spread over the whole result range and a little beyond.
template <class T>
T exponent_for(T x, std::mt19937_64& gen) {
  constexpr int lo = std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits - 3;
  constexpr int hi = std::numeric_limits<T>::max_exponent + 2;
  double l = std::log2(static_cast<double>(x));
  double u = std::uniform_real_distribution<double>(lo, hi)(gen);
  return l == 0 ? T(3) : static_cast<T>(u / l);
}

template <class T>
sample<T> make_sample(int n, uint64_t seed) {
  constexpr int digits = std::numeric_limits<T>::digits;
  std::mt19937_64 gen(seed);
  std::uniform_real_distribution<double> unit(1.0, 2.0);
  sample<T> s;
  for (int i = 0; i < n; ++i) {
    T x, y;
    switch (i % 4) {
      case 0: {  // any x, y of moderate size and either sign
        x = random_positive<T>(gen);
        int e = std::uniform_int_distribution<int>(-digits, 12)(gen);
        y = static_cast<T>(std::ldexp(unit(gen), e) * (gen() & 1 ? -1 : 1));
        break;
      }
      case 1:  // any x, results across the whole range
        x = random_positive<T>(gen);
        y = exponent_for(x, gen);
        break;
      case 2: {  // x near 1, large y
        int e = std::uniform_int_distribution<int>(1, digits)(gen);
        x = static_cast<T>(1 + std::ldexp(unit(gen), -e) * (gen() & 1 ? -0.5 : 1));
        y = exponent_for(x, gen);
        break;
      }
      default:  // negative x, integer y (the rare path)
        x = -random_positive<T>(gen);
        y = std::trunc(exponent_for(x < 0 ? -x : x, gen) / 8);
        break;
    }
    s.x.push_back(x);
    s.y.push_back(y);
    s.exact.push_back(tav::test::mpfr_pow_value(x, y));
  }
  return s;
}

struct worst {
  double error = 0;
  double x = 0, y = 0;
};

// Runs table entry `index` on the sample; the error is in ulps, or relative for EP.
template <class T>
worst measure(tav::vml::kernel_fn<T> kernel, const sample<T>& s, bool relative) {
  int n = static_cast<int>(s.x.size());
  std::vector<T> r(n);
  kernel(n, s.x.data(), s.y.data(), r.data());
  worst w;
  for (int i = 0; i < n; ++i) {
    double e;
    if (relative) {
      long double m = std::fabs(s.exact[i]);
      if (m < std::numeric_limits<T>::min() || m > std::numeric_limits<T>::max()) {
        e = tav::test::ulp_error(r[i], s.exact[i]) == 0 ? 0 : 1;  // outside: exact or flushed
        if (m < std::numeric_limits<T>::min() && std::fabs(r[i]) < std::numeric_limits<T>::min())
          e = 0;
      } else {
        e = static_cast<double>(std::fabs(r[i] - s.exact[i]) / m);
      }
    } else {
      e = tav::test::ulp_error(r[i], s.exact[i]);
    }
    if (!(e <= w.error)) w = {e, static_cast<double>(s.x[i]), static_cast<double>(s.y[i])};
  }
  return w;
}

template <class T>
void check_all_paths(const tav::vml::kernel_fn<T>* table, const double (&bounds)[3],
                     const char* name) {
  sample<T> s = make_sample<T>(argument_count(), 20261121);
  const char* accuracy[3] = {"LA", "HA", "EP"};
  for (const tav::test::vml_slot& p : tav::test::runnable_vml_slots()) {
    for (int a = 0; a < 3; ++a) {
      worst w = measure(table[p.slot + 10 * a], s, a == 2);
      std::printf("%s %s %s: max %s %.4g at x = %a, y = %a\n", name, p.tag, accuracy[a],
                  a == 2 ? "relative error" : "ulp error", w.error, w.x, w.y);
      // The cnr_def family builds LA only, which also stands in its HA slot.
      double bound = a == 1 && p.slot == 1 ? bounds[0] : bounds[a];
      EXPECT_LE(w.error, bound) << name << " " << p.tag << " " << accuracy[a]
                                    << " x = " << w.x << " y = " << w.y;
    }
  }
}

TEST(PowAccuracy, DoubleEveryPath) {
  // LA within 4 ulp, HA within 0.52 ulp, EP relative 2^-26 (2^-12 for single).
  check_all_paths<double>(tav_vml_kernel_dPow_ttab, {4.0, 0.52, 0x1p-26}, "vdPow");
}

TEST(PowAccuracy, SingleEveryPath) {
  check_all_paths<float>(tav_vml_kernel_sPow_ttab, {4.0, 0.52, 0x1p-12}, "vsPow");
}

}  // namespace
