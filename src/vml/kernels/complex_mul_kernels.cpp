// Complex multiplication per code path, (a + bi)(c + di) = (ac − bd) + (bc + ad)i. Single
// precision forms the products in double, where they are exact, and rounds each part once more;
// double precision subtracts the exact products' leading parts and corrects with their error
// terms. Both stay within one unit in the last place per part.
#include <complex>

#include "vml/kernels/complex_block_loop.hpp"
#include "vml/kernels/complex_scaling.hpp"
#include "vml/kernels/complex_special_values.hpp"
#include "vml/kernels/double_double.hpp"

namespace tav::TAV_PATH_NS::vml {

// Single precision: the formula is exact in double for every finite operand, so only non-finite
// parts leave it.
int vcmul_cout_rare(const float* x, const float* y, float* r) {
  multiply_nonfinite(x, y, r);
  return 0;
}

namespace {

struct single_multiply {
  template <class V>
  static auto special(V a, V b, V c, V d) {
    return not_finite(a) | not_finite(b) | not_finite(c) | not_finite(d);
  }
  template <class V>
  static void fast(V a, V b, V c, V d, V& re, V& im) {
    re = a * c - b * d;
    im = c * b + a * d;
  }
  static int rare(const float* x, const float* y, float* r) { return vcmul_cout_rare(x, y, r); }
};

// Parts below 2^500 keep every product below 2^1000. Tiny parts need no test: a product's error
// term that underflows loses bits below 2^-1074 only, less than an ulp of any result it affects.
template <class V>
void double_multiply_fast(V a, V b, V c, V d, V& re, V& im) {
  re = product_difference(a, c, b, d);
  im = product_difference(b, c, -a, d);
}

}  // namespace

// Double precision outside the formula's range: finite operands are scaled by powers of two
// (exact), multiplied and scaled back; non-finite ones take the infinity recovery.
int vzmul_cout_rare(const double* x, const double* y, double* r) {
  if (!all_finite(x, y)) {
    multiply_nonfinite(x, y, r);
    return 0;
  }
  scaled_formula(x, y, r, 1, double_multiply_fast<double>);
  return 0;
}

namespace {

struct double_multiply {
  template <class V>
  static auto special(V a, V b, V c, V d) {
    return magnitude_at_least<500>(a) | magnitude_at_least<500>(b) | magnitude_at_least<500>(c) |
           magnitude_at_least<500>(d);
  }
  template <class V>
  static void fast(V a, V b, V c, V d, V& re, V& im) {
    double_multiply_fast(a, b, c, d, re, im);
  }
  static int rare(const double* x, const double* y, double* r) { return vzmul_cout_rare(x, y, r); }
};

}  // namespace
}  // namespace tav::TAV_PATH_NS::vml

TAV_VML_COMPLEX_KERNEL(cMul, float, tav::TAV_PATH_NS::vml::single_multiply)
TAV_VML_COMPLEX_KERNEL(zMul, double, tav::TAV_PATH_NS::vml::double_multiply)
