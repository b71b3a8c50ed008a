// What the level-1 kernels add to the vector vocabulary: a 128-bit register holding one complex
// element (`one_complex`), the fixed-order sums of even and odd lanes, and the first element of a
// vector stored with a negative increment.
#pragma once

#include <cstdint>

#include "common/simd.hpp"

namespace tav::TAV_PATH_NS::level1 {

using index = int64_t;

// One complex double fills a 128-bit register; one complex float its low half, the upper lanes
// zero after a load. On the SSE paths simd<double> is this register as well.
template <class Real>
struct one_complex : simd128<Real> {};

template <>
struct one_complex<float> : simd128<float> {
  static constexpr int width = 2;
  static reg load(const float* p) {
    return _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(p)));
  }
  static void store(float* p, reg v) { _mm_store_sd(reinterpret_cast<double*>(p), _mm_castps_pd(v)); }
};

// Sums of the even lanes and of the odd lanes of v, each in lane order: the fixed order that
// makes a kernel's result depend only on its inputs. For complex data these are the real-part
// and imaginary-part sums; a real sum is even + odd.
template <class V, class Real>
void pair_sums(typename V::reg v, Real& even, Real& odd) {
  even = lane_sum<V, Real>(v, 0, 2);
  odd = lane_sum<V, Real>(v, 1, 2);
}

// Pointer to element 0 of an n-vector stored with increment inc (BLAS convention: for inc < 0
// element 0 is the last in memory); element i is then at first + i·inc·stride reals.
template <class Real>
Real* first_element(Real* x, index n, index inc, index stride) {
  return inc < 0 ? x - (n - 1) * inc * stride : x;
}

}  // namespace tav::TAV_PATH_NS::level1
