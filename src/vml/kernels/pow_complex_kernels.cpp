// The complex power kernels vcPow and vzPow per code path: blocks of elements through the
// vector formula a^b = e^(b·ln a) (complex_pow_block.hpp), and each element that the block test
// flags (zeros, infinities, NaNs, parts beyond the formula's range, results near or beyond the
// range, large angles) through the extended-precision routine of complex_pow.cpp, which also
// fixes every special value.
#include <complex>

#include "vml/kernels/kernel_family.hpp"
#include "vml/kernels/pow_variants.hpp"
#include "vml/pow/complex_pow.hpp"
#include "vml/pow/complex_pow_block.hpp"

namespace tav::TAV_PATH_NS::vml_pow {
namespace {

using pow_core::complex_form;

template <class Real>
inline void rare(long i, const Real* a, const Real* b, Real* r) {
  using C = std::complex<Real>;
  ::tav::vml::complex_pow_array(1, reinterpret_cast<const C*>(a) + i,
                                reinterpret_cast<const C*>(b) + i, reinterpret_cast<C*>(r) + i);
}

// Each block's results go to a local copy first, then to r, lane by lane from the rare routine
// where flagged: the rare routine reads the operands, which r may overwrite (r == a). The last
// partial block is padded with 1^0, so every element goes through the same formula. The rare
// routine reports no status.
template <class Real, complex_form f>
void complex_pow_kernel(int n, const std::complex<Real>* ca, const std::complex<Real>* cb,
                        std::complex<Real>* cr) {
  constexpr int w = pow_core::complex_block;
  const Real* a = reinterpret_cast<const Real*>(ca);
  const Real* b = reinterpret_cast<const Real*>(cb);
  Real* r = reinterpret_cast<Real*>(cr);
  Real xa[2 * w], ya[2 * w], out[2 * w];
  for (int i = 0; i < n; i += w) {
    const long base = 2L * i;
    const int count = n - i < w ? n - i : w;
    const Real *x = a + base, *y = b + base;
    if (count < w) {
      for (int k = 0; k < 2 * w; ++k) {
        xa[k] = k < 2 * count ? x[k] : Real(k % 2 == 0);
        ya[k] = k < 2 * count ? y[k] : Real(0);
      }
      x = xa;
      y = ya;
    }
    const int flags = pow_core::complex_pow_block<Real, f>(x, y, out);
    if (flags == 0 && count == w) {
      __builtin_memcpy(r + base, out, sizeof out);
      continue;
    }
    for (int lane = 0; lane < count; ++lane) {
      if (flags >> lane & 1) {
        rare(i + lane, a, b, r);
      } else {
        r[base + 2 * lane] = out[2 * lane];
        r[base + 2 * lane + 1] = out[2 * lane + 1];
      }
    }
  }
}

}  // namespace
}  // namespace tav::TAV_PATH_NS::vml_pow

#define TAV_CPOW_KERNEL(t, Real, acc, flags, form)                                                 \
  extern "C" void TAV_VML_KERNEL_NAME(t##Pow, acc, flags)(                                         \
      int n, const std::complex<Real>* a, const std::complex<Real>* b, std::complex<Real>* r) {    \
    tav::TAV_PATH_NS::vml_pow::complex_pow_kernel<Real, tav::TAV_PATH_NS::pow_core::form>(n, a, b, \
                                                                                          r);      \
  }

#if TAV_POW_HAS_HA
TAV_CPOW_KERNEL(c, float, HA, ynn, complex_form::plain)
TAV_CPOW_KERNEL(z, double, HA, ynn, complex_form::wide)
#endif
#if TAV_POW_HAS_LA
TAV_CPOW_KERNEL(c, float, LA, ynn, complex_form::plain)
TAV_CPOW_KERNEL(z, double, LA, ynn, complex_form::wide_low)
#endif
#if TAV_POW_HAS_EP
TAV_CPOW_KERNEL(c, float, EP, nnn, complex_form::plain)
TAV_CPOW_KERNEL(z, double, EP, nnn, complex_form::plain)
#endif
