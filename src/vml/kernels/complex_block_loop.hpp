// The loop every complex multiply and divide kernel runs: four elements at a time in vector
// registers, computed by a branch-free formula unless a test of the four flags an operand that
// the formula does not handle (a non-finite part, a part outside the formula's range, a zero
// divisor); then the four are redone one by one, the flagged ones by the function's scalar
// rare-path routine, which returns a status for the error handler.
#pragma once

#include <complex>

#include "vml/kernels/complex_lanes.hpp"
#include "vml/kernels/kernel_family.hpp"
#include "vml/kernels/vml_kernel.hpp"

namespace tav::TAV_PATH_NS::vml {

// Op supplies special(a, b, c, d) (the test, a mask), fast(a, b, c, d, re, im) (the formula),
// both for doubles and for lanes, on the parts of (a + bi) and (c + di) widened to double; and
// rare(x, y, r) (the scalar routine on one element given as pointers to its real parts).
template <class Op, class Real>
void one_by_one(int begin, int end, const Real* x, const Real* y, Real* z,
                const std::complex<Real>* a, const std::complex<Real>* b, std::complex<Real>* r,
                const char* name) {
  for (int j = begin; j < end; ++j) {
    // All parts are read before the result is written, so arrays that alias (r == a) stay
    // correct.
    const long k = 2L * j;  // n may exceed 2^30
    const double xr = x[k], xi = x[k + 1], yr = y[k], yi = y[k + 1];
    if (!Op::special(xr, xi, yr, yi)) {
      double re, im;
      Op::fast(xr, xi, yr, yi, re, im);
      z[k] = static_cast<Real>(re);
      z[k + 1] = static_cast<Real>(im);
    } else if (const int code = Op::rare(x + k, y + k, z + k)) {
      ::tav::vml::report_error<std::complex<Real>>(code, j, a, b, r, nullptr, name);
    }
  }
}

template <class Op, class Real>
void complex_blocks(int n, const std::complex<Real>* a, const std::complex<Real>* b,
                    std::complex<Real>* r, const char* name) {
  const Real* x = reinterpret_cast<const Real*>(a);
  const Real* y = reinterpret_cast<const Real*>(b);
  Real* z = reinterpret_cast<Real*>(r);
  int i = 0;
  for (; i <= n - lane_count; i += lane_count) {
    lanes xr, xi, yr, yi;
    load_parts(x + 2L * i, xr, xi);
    load_parts(y + 2L * i, yr, yi);
    if (any(Op::special(xr, xi, yr, yi))) {
      one_by_one<Op>(i, i + lane_count, x, y, z, a, b, r, name);
      continue;
    }
    lanes re, im;
    Op::fast(xr, xi, yr, yi, re, im);
    store_parts(z + 2L * i, re, im);
  }
  one_by_one<Op>(i, n, x, y, z, a, b, r, name);
}

}  // namespace tav::TAV_PATH_NS::vml

// Defines the kernel tav_vml_kernel_<function>_<FAM>HAynn of a complex operation Op.
#define TAV_VML_COMPLEX_KERNEL(function, Real, Op)                                              \
  extern "C" void TAV_VML_KERNEL_NAME(function, HA, ynn)(                                       \
      int n, const std::complex<Real>* a, const std::complex<Real>* b, std::complex<Real>* r) { \
    ::tav::TAV_PATH_NS::vml::complex_blocks<Op>(n, a, b, r, "v" #function);                     \
  }
