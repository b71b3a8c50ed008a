// Error-free transformations for the double-precision complex kernels: the sum and the product
// of two doubles as an unevaluated pair hi + lo (Knuth's two-sum; the product through a fused
// multiply-add where the path has one, else Dekker's splitting). Written once for scalars and
// for four-lane vectors.
#pragma once

#include "vml/kernels/complex_lanes.hpp"

namespace tav::TAV_PATH_NS::vml {

template <class V>
struct double_double {
  V hi, lo;
};

// hi + lo = a + b exactly (Knuth), for any a, b without overflow.
template <class V>
double_double<V> two_sum(V a, V b) {
  const V s = a + b;
  const V bb = s - a;
  return {s, (a - (s - bb)) + (b - bb)};
}

// hi + lo = a·b exactly, while the product's error term is a normal number: |a·b| ≥ 2^-969, and
// without FMA also |a|, |b| ≤ 2^995 for the splitting.
template <class V>
double_double<V> two_prod(V a, V b) {
  const V p = a * b;
#ifdef __FMA__
  return {p, fused(a, b, -p)};
#else
  // Dekker: split each factor into 26 high and 27 low bits, whose partial products are exact.
  const V splitter = V() + 134217729.0;  // 2^27 + 1, in every lane
  const V ta = splitter * a, tb = splitter * b;
  const V ah = ta - (ta - a), al = a - ah;
  const V bh = tb - (tb - b), bl = b - bh;
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
#endif
}

// a·b − c·d rounded to within half an ulp plus about 2^-104 of the products: the difference of
// the leading parts is exact when they cancel (Sterbenz) and the only rounding otherwise, and the
// error terms correct it. Where the products are exact the correction is +0 and is subtracted,
// so that a zero result keeps the sign of the plain formula's a·b − c·d.
template <class V>
V product_difference(V a, V b, V c, V d) {
  const double_double<V> p = two_prod(a, b), q = two_prod(c, d);
  return (p.hi - q.hi) - (q.lo - p.lo);
}

// a·b + c·d as a pair whose sum carries it to about 2^-104 relative to |a·b| + |c·d|: the two
// exact products summed with one two-sum (Ogita, Rump and Oishi's Dot2).
template <class V>
double_double<V> dot2(V a, V b, V c, V d) {
  const double_double<V> p = two_prod(a, b), q = two_prod(c, d);
  const double_double<V> s = two_sum(p.hi, q.hi);
  const V lo = s.lo + (p.lo + q.lo);
  // Adding a zero correction would turn a sum of -0 into +0; the sign of a zero result is that
  // of the plain formula's.
  const V hi = select(lo == 0, s.hi, s.hi + lo);
  return {hi, lo - (hi - s.hi)};
}

// (n.hi + n.lo) / (d.hi + d.lo), rounded once up to a few units of 2^-104: one Newton
// correction of the leading quotient with the exactly computed remainder.
template <class V>
V divide(double_double<V> n, double_double<V> d) {
  // Without contraction, so that every path rounds the correction alike.
#pragma clang fp contract(off)
  const V q = n.hi / d.hi;
  const double_double<V> qd = two_prod(q, d.hi);
  const V remainder = ((n.hi - qd.hi) - qd.lo + n.lo) - q * d.lo;
  return select(remainder == 0, q, q + remainder / d.hi);
}

}  // namespace tav::TAV_PATH_NS::vml
