// The complex power a^b = e^(b·ln a), ln a = ln|a| + i·arg a, evaluated in x87 extended
// precision (64-bit significand): for |b·ln a| below 2^10 the extended error stays near 2^-54
// relative to |a^b|, so each component not small against the larger one is within about one ulp
// after the final rounding.
#include "vml/pow/complex_pow.hpp"

#include <cmath>

namespace tav::vml {
namespace {

using wide = long double;

// Products where an exactly zero factor gives zero even against an infinite one, so that a real
// exponent of a real base keeps its zero imaginary part: (-inf)·0 contributes nothing.
wide strong_product(wide a, wide b) { return a == 0 || b == 0 ? 0 : a * b; }

template <class Real>
std::complex<Real> complex_pow(std::complex<Real> a, std::complex<Real> b) {
  wide ar = a.real(), ai = a.imag(), br = b.real(), bi = b.imag();
  if (br == 0 && bi == 0) return {1, 0};  // a^0 = 1 for every a, NaN included
  if (ar == 0 && ai == 0) {
    // 0^b: 0 when Re b > 0, complex infinity (+inf) when Re b < 0, undefined otherwise.
    if (br > 0) return {0, 0};
    if (br < 0) return {INFINITY, 0};
    return {NAN, NAN};
  }
  wide log_abs = std::log(ar * ar + ai * ai) / 2;  // no overflow in the extended range
  wide arg = std::atan2(ai, ar);
  wide w_re = strong_product(br, log_abs) - strong_product(bi, arg);
  wide w_im = strong_product(br, arg) + strong_product(bi, log_abs);
  wide magnitude = std::exp(w_re);
  if (w_im == 0) return {static_cast<Real>(magnitude), 0};
  return {static_cast<Real>(magnitude * std::cos(w_im)),
          static_cast<Real>(magnitude * std::sin(w_im))};
}

template <class Real>
void pow_array(int n, const std::complex<Real>* a, const std::complex<Real>* b,
               std::complex<Real>* r) {
  for (int i = 0; i < n; ++i) r[i] = complex_pow(a[i], b[i]);
}

}  // namespace

void complex_pow_array(int n, const std::complex<float>* a, const std::complex<float>* b,
                       std::complex<float>* r) {
  pow_array(n, a, b, r);
}
void complex_pow_array(int n, const std::complex<double>* a, const std::complex<double>* b,
                       std::complex<double>* r) {
  pow_array(n, a, b, r);
}

}  // namespace tav::vml
