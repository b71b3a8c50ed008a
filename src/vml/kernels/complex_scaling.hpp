// Scaling of a complex operand by a power of two so that its larger part lies in [1, 2): the
// double-precision rare paths bring operands of any finite size into their formula's range.
#pragma once

#include "vml/kernels/complex_lanes.hpp"

namespace tav::TAV_PATH_NS::vml {

struct scaled_operand {
  double parts[2];
  int exponent;  // operand = parts · 2^exponent, up to parts that underflow in the scaling

  explicit scaled_operand(const double* x) {
    const double larger = magnitude(x[0]) > magnitude(x[1]) ? x[0] : x[1];
    exponent = larger == 0 ? 0 : __builtin_ilogb(larger);
    parts[0] = __builtin_scalbn(x[0], -exponent);
    parts[1] = __builtin_scalbn(x[1], -exponent);
  }
};

// Applies formula(a, b, c, d, re, im) to the scaled operands and scales the result back by
// 2^(ex + sign·ey): sign 1 for a product, -1 for a quotient.
template <class Formula>
void scaled_formula(const double* x, const double* y, double* r, int sign, Formula formula) {
  const scaled_operand sx(x), sy(y);
  formula(sx.parts[0], sx.parts[1], sy.parts[0], sy.parts[1], r[0], r[1]);
  const int exponent = sx.exponent + sign * sy.exponent;
  r[0] = __builtin_scalbn(r[0], exponent);
  r[1] = __builtin_scalbn(r[1], exponent);
}

}  // namespace tav::TAV_PATH_NS::vml
