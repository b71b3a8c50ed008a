// `tav demo`: one matrix product, one dot product and each element-wise vector function through
// the provider functions, each checked against a plain loop computed here.
#include <tav/tav.h>

#include <cmath>
#include <cstdio>

#include "commands.hpp"

namespace tav::tool {
namespace {

constexpr int m = 3, n = 2, k = 4;

// Agreement within a few roundings of the largest magnitude involved.
bool close(double got, double want, double scale) {
  return std::fabs(got - want) <= 1e-13 * (scale > 1 ? scale : 1);
}

bool matrix_product() {
  // Column-major A (m x k) and B (k x n), filled with simple fractions.
  double a[m * k], b[k * n], c[m * n];
  for (int i = 0; i < m * k; ++i) a[i] = 0.5 * (i % 5) - 1;
  for (int i = 0; i < k * n; ++i) b[i] = 0.25 * (i % 7) + 0.5;
  for (double& x : c) x = 1;
  const double alpha = 2, beta = -1;
  d_matrix_multiply(TAV_CBLAS_NO_TRANS, TAV_CBLAS_NO_TRANS, m, n, k, a, b, c, alpha, beta);

  std::printf("matrix product C = 2*A*B - C (%d x %d, A %d x %d):\n", m, n, m, k);
  bool ok = true;
  for (int i = 0; i < m; ++i) {
    std::printf("  ");
    for (int j = 0; j < n; ++j) {
      double sum = 0, magnitude = 0;
      for (int l = 0; l < k; ++l) {
        sum += a[i + l * m] * b[l + j * k];
        magnitude += std::fabs(a[i + l * m] * b[l + j * k]);
      }
      const double want = alpha * sum + beta * 1;
      ok = ok && close(c[i + j * m], want, std::fabs(alpha) * magnitude + 1);
      std::printf(" %10.4f", c[i + j * m]);
    }
    std::printf("\n");
  }
  std::printf("  %s\n", ok ? "ok" : "MISMATCH");
  return ok;
}

bool dot_product() {
  constexpr int length = 5;
  tav_complex16 x[length], y[length];
  double want_re = 0, want_im = 0, magnitude = 0;
  for (int i = 0; i < length; ++i) {
    x[i] = {1.0 + i, 0.5 * i};
    y[i] = {2.0 - i, 1.0};
    // (a + bi)(c + di) = (ac - bd) + (ad + bc)i, without conjugation.
    want_re += x[i].real * y[i].real - x[i].imag * y[i].imag;
    want_im += x[i].real * y[i].imag + x[i].imag * y[i].real;
    magnitude += std::hypot(x[i].real, x[i].imag) * std::hypot(y[i].real, y[i].imag);
  }
  const tav_complex16 got = z_dot_product(length, x, y);
  const bool ok = close(got.real, want_re, magnitude) && close(got.imag, want_im, magnitude);
  std::printf("dot product sum x_i*y_i (%d complex elements): %.4f%+.4fi\n  %s\n", length,
              got.real, got.imag, ok ? "ok" : "MISMATCH");
  return ok;
}

// One call of each element-wise vector function, every result checked against the operation
// done here.
bool vector_functions() {
  constexpr int length = 4;
  const double a[length] = {1.5, -2, 3, 0.25}, b[length] = {2, 4, -0.5, 3};
  struct {
    const char* name;
    void (*call)(int, const double*, const double*, double*);
    double (*want)(double, double);
  } const functions[] = {
      {"add", d_vector_add, [](double x, double y) { return x + y; }},
      {"subtract", d_vector_subtract, [](double x, double y) { return x - y; }},
      {"multiply", d_vector_multiply, [](double x, double y) { return x * y; }},
      {"divide", d_vector_divide, [](double x, double y) { return x / y; }},
      {"power", d_vector_power, [](double x, double y) { return std::pow(x, y); }},
  };
  bool all_ok = true;
  std::printf("vector functions on a = (1.5, -2, 3, 0.25), b = (2, 4, -0.5, 3):\n");
  for (const auto& f : functions) {
    double r[length];
    f.call(length, a, b, r);
    bool ok = true;
    std::printf("  %-9s", f.name);
    for (int i = 0; i < length; ++i) {
      const double want = f.want(a[i], b[i]);
      ok = ok && (std::isnan(want) ? std::isnan(r[i]) : close(r[i], want, std::fabs(want)));
      std::printf(" %10.4f", r[i]);
    }
    std::printf("  %s\n", ok ? "ok" : "MISMATCH");
    all_ok = all_ok && ok;
  }
  return all_ok;
}

}  // namespace

int demo() {
  const bool product_ok = matrix_product();
  const bool dot_ok = dot_product();
  const bool vector_ok = vector_functions();
  return product_ok && dot_ok && vector_ok ? 0 : 1;
}

}  // namespace tav::tool
