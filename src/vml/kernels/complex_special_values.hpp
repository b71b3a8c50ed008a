// Complex multiply and divide of operands with infinite or NaN parts, and division by zero:
// the recoveries that keep an infinite operand's infinity in the result where the plain formula
// would give NaN in both parts. One routine for both precisions.
#pragma once


namespace tav::TAV_PATH_NS::vml {

inline double copy_sign(double x, double sign) { return __builtin_copysign(x, sign); }
inline float copy_sign(float x, float sign) { return __builtin_copysignf(x, sign); }

// Classification by the compiler's quiet built-ins: no flag is raised.
template <class Real>
bool finite(Real x) {
  return __builtin_isfinite(x);
}
template <class Real>
bool is_nan(Real x) {
  return __builtin_isnan(x);
}
template <class Real>
bool is_infinite(Real x) {
  return __builtin_isinf(x);
}
template <class Real>
bool all_finite(const Real* x, const Real* y) {
  return finite(x[0]) && finite(x[1]) && finite(y[0]) && finite(y[1]);
}

template <class Real>
inline constexpr Real infinity = __builtin_huge_valf();

// Infinite part -> ±1, NaN part -> ±0, other parts unchanged.
template <class Real>
Real box_infinite(Real x) {
  return is_infinite(x) ? copy_sign(Real(1), x) : is_nan(x) ? copy_sign(Real(0), x) : x;
}
template <class Real>
Real nan_to_zero(Real x) {
  return is_nan(x) ? copy_sign(Real(0), x) : x;
}

// (a + bi)(c + di) with a non-finite part. When both operands are non-zero and one has an
// infinite part, the infinite operand's parts become ±1 (infinite) and ±0 (NaN), the other's NaN
// parts ±0, and the product of those, times infinity, gives the direction of the infinite result;
// otherwise the plain formula's NaNs stand.
template <class Real>
void multiply_nonfinite(const Real* x, const Real* y, Real* r) {
  Real a = x[0], b = x[1], c = y[0], d = y[1];
  const bool zero = (a == 0 && b == 0) || (c == 0 && d == 0);
  const bool x_infinite = is_infinite(a) || is_infinite(b);
  const bool y_infinite = is_infinite(c) || is_infinite(d);
  if (!zero && (x_infinite || y_infinite)) {
    a = x_infinite ? box_infinite(a) : nan_to_zero(a);
    b = x_infinite ? box_infinite(b) : nan_to_zero(b);
    c = y_infinite ? box_infinite(c) : nan_to_zero(c);
    d = y_infinite ? box_infinite(d) : nan_to_zero(d);
    r[0] = (a * c - b * d) * infinity<Real>;
    r[1] = (c * b + a * d) * infinity<Real>;
    return;
  }
  r[0] = a * c - b * d;
  r[1] = c * b + a * d;
}

// Status of a division by a zero divisor: a pole (VML_STATUS_SING) for a non-zero numerator,
// 0/0 (VML_STATUS_ERRDOM) for a zero one, none when the numerator holds a NaN.
template <class Real>
int zero_divisor_status(Real a, Real b) {
  if (is_nan(a) || is_nan(b)) return 0;
  return a == 0 && b == 0 ? 1 : 2;
}

// (a + bi)/(c + di) when a part is not finite or the divisor is zero; returns the status.
// A zero divisor gives infinity, signed as c, times the numerator (NaN when the numerator is zero
// too); for the rest the plain formula, and where it gives NaN in both parts the customary
// recoveries: an infinite numerator over a finite divisor is infinite in the direction of the
// numerator's boxed parts, a finite numerator over an infinite divisor is a signed zero.
template <class Real>
int divide_nonfinite(const Real* x, const Real* y, Real* r) {
  const Real a = x[0], b = x[1], c = y[0], d = y[1];
  if (c == 0 && d == 0) {
    if (a == 0 && b == 0) {
      r[0] = (a * c + b * d) * infinity<Real>;
      r[1] = (b * c - a * d) * infinity<Real>;
    } else {
      r[0] = copy_sign(infinity<Real>, c) * a;
      r[1] = copy_sign(infinity<Real>, c) * b;
    }
    return zero_divisor_status(a, b);
  }
  const Real den = c * c + d * d;
  Real re = (a * c + b * d) / den, im = (b * c - a * d) / den;
  if (is_nan(re) && is_nan(im)) {
    // Infinite parts -> ±1, all others -> ±0: the direction of the infinite operand.
    const auto box = [](Real v) { return copy_sign(is_infinite(v) ? Real(1) : Real(0), v); };
    if ((is_infinite(a) || is_infinite(b)) && finite(c) && finite(d)) {
      const Real ab = box(a), bb = box(b);
      re = infinity<Real> * (ab * c + bb * d);
      im = infinity<Real> * (bb * c - ab * d);
    } else if ((is_infinite(c) || is_infinite(d)) && finite(a) && finite(b)) {
      const Real cb = box(c), db = box(d);
      re = Real(0) * (a * cb + b * db);
      im = Real(0) * (b * cb - a * db);
    }
  }
  r[0] = re;
  r[1] = im;
  return 0;
}

}  // namespace tav::TAV_PATH_NS::vml
