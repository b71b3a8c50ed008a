// Complex division per code path, (a + bi)/(c + di) = ((ac + bd) + (bc − ad)i)/(c² + d²).
// Single precision evaluates the formula in double, where products and squares of floats are
// exact and cannot overflow, and rounds each part once more; double precision forms numerators
// and denominator as double-double pairs and divides them with one Newton correction.
#include <complex>

#include "vml/kernels/complex_block_loop.hpp"
#include "vml/kernels/complex_scaling.hpp"
#include "vml/kernels/complex_special_values.hpp"
#include "vml/kernels/double_double.hpp"

namespace tav::TAV_PATH_NS::vml {

// Single precision, called for non-finite parts and for divisors with a zero part. With d = 0
// the quotient is (a/c, b/c), with c = 0 it is (b/d, −a/d); a part whose numerator is an exact
// zero takes the plain formula's product sum instead, which carries the sign that the formula
// gives that zero.
int vcdiv_cout_rare(const float* x, const float* y, float* r) {
  const float a = x[0], b = x[1], c = y[0], d = y[1];
  if (!all_finite(x, y) || (c == 0 && d == 0)) return divide_nonfinite(x, y, r);
  if (d == 0) {
    r[0] = a == 0 ? a * c + b * d : a / c;
    r[1] = b == 0 ? b * c - a * d : b / c;
  } else {
    r[0] = b == 0 ? a * c + b * d : b / d;
    r[1] = a == 0 ? b * c - a * d : -a / d;
  }
  return 0;
}

namespace {

struct single_divide {
  template <class V>
  static auto special(V a, V b, V c, V d) {
    return not_finite(a) | not_finite(b) | not_finite(c) | not_finite(d) | mask_of(c == 0) |
           mask_of(d == 0);
  }
  template <class V>
  static void fast(V a, V b, V c, V d, V& re, V& im) {
    const V den = c * c + d * d;
    re = (a * c + b * d) / den;
    im = (b * c - a * d) / den;
  }
  static int rare(const float* x, const float* y, float* r) { return vcdiv_cout_rare(x, y, r); }
};

// Parts below 2^250 and a divisor with a part of at least 2^-250 keep numerators below 2^501,
// the denominator within [2^-500, 2^501) and the quotient below 2^1001. Tiny parts need no
// test: error terms that underflow lose bits below 2^-1074 only.
template <class V>
void double_divide_fast(V a, V b, V c, V d, V& re, V& im) {
  const double_double<V> den = dot2(c, c, d, d);
  re = divide(dot2(a, c, b, d), den);
  im = divide(dot2(b, c, -a, d), den);
}

}  // namespace

// Double precision outside the formula's range: a finite numerator over a non-zero finite
// divisor is scaled by powers of two (exact) into the range, divided and scaled back; the rest
// takes the special-value rules.
int vzdiv_cout_rare(const double* x, const double* y, double* r) {
  if (!all_finite(x, y) || (y[0] == 0 && y[1] == 0)) return divide_nonfinite(x, y, r);
  scaled_formula(x, y, r, -1, double_divide_fast<double>);
  return 0;
}

namespace {

struct double_divide {
  template <class V>
  static auto special(V a, V b, V c, V d) {
    return magnitude_at_least<250>(a) | magnitude_at_least<250>(b) | magnitude_at_least<250>(c) |
           magnitude_at_least<250>(d) |
           invert(magnitude_at_least<-250>(c) | magnitude_at_least<-250>(d));
  }
  template <class V>
  static void fast(V a, V b, V c, V d, V& re, V& im) {
    double_divide_fast(a, b, c, d, re, im);
  }
  static int rare(const double* x, const double* y, double* r) { return vzdiv_cout_rare(x, y, r); }
};

}  // namespace
}  // namespace tav::TAV_PATH_NS::vml

TAV_VML_COMPLEX_KERNEL(cDiv, float, tav::TAV_PATH_NS::vml::single_divide)
TAV_VML_COMPLEX_KERNEL(zDiv, double, tav::TAV_PATH_NS::vml::double_divide)
