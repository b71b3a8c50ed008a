// Four complex elements in registers: their real and imaginary parts as four-double vectors
// (the compiler's vector extensions, lowered to whatever the path has: two SSE2 registers, one
// AVX register), loaded from and stored to interleaved arrays of either precision, with the
// bit tests, masks and selections that the block tests and the formulas use. The same helpers
// also take scalar doubles, so that one formula serves the vector loop and single elements.
#pragma once

#include <immintrin.h>

#include <cstdint>

// Functions that pass these vectors by value warn on paths without AVX that their calling
// convention differs from an AVX build's. They never cross paths (each path has its own copies
// in its own namespace), so the difference cannot matter.
#pragma clang diagnostic ignored "-Wpsabi"

namespace tav::TAV_PATH_NS::vml {

using lanes = double __attribute__((vector_size(32)));
using lane_bits = uint64_t __attribute__((vector_size(32)));
using lane_mask = int64_t __attribute__((vector_size(32)));
using float_lanes = float __attribute__((vector_size(16)));
using float_pairs = float __attribute__((vector_size(32)));

inline constexpr int lane_count = 4;

// Parts of elements 0 to 3 at p (interleaved re, im).
inline void load_parts(const double* p, lanes& re, lanes& im) {
  lanes low, high;
  __builtin_memcpy(&low, p, sizeof low);
  __builtin_memcpy(&high, p + 4, sizeof high);
  re = __builtin_shufflevector(low, high, 0, 2, 4, 6);
  im = __builtin_shufflevector(low, high, 1, 3, 5, 7);
}
inline void load_parts(const float* p, lanes& re, lanes& im) {
  float_pairs v;
  __builtin_memcpy(&v, p, sizeof v);
  re = __builtin_convertvector(__builtin_shufflevector(v, v, 0, 2, 4, 6), lanes);
  im = __builtin_convertvector(__builtin_shufflevector(v, v, 1, 3, 5, 7), lanes);
}

inline void store_parts(double* p, lanes re, lanes im) {
  const lanes low = __builtin_shufflevector(re, im, 0, 4, 1, 5);
  const lanes high = __builtin_shufflevector(re, im, 2, 6, 3, 7);
  __builtin_memcpy(p, &low, sizeof low);
  __builtin_memcpy(p + 4, &high, sizeof high);
}
inline void store_parts(float* p, lanes re, lanes im) {
  const float_lanes r = __builtin_convertvector(re, float_lanes);
  const float_lanes i = __builtin_convertvector(im, float_lanes);
  const float_pairs v = __builtin_shufflevector(r, i, 0, 4, 1, 5, 2, 6, 3, 7);
  __builtin_memcpy(p, &v, sizeof v);
}

// IEEE encoding without the sign, ordered like |x|.
inline uint64_t magnitude(double x) {
  return __builtin_bit_cast(uint64_t, x) & 0x7fffffffffffffffULL;
}
inline lane_bits magnitude(lanes x) {
  return __builtin_bit_cast(lane_bits, x) & 0x7fffffffffffffffULL;
}

// The signed integers of a value's width, for comparisons of magnitudes.
template <class V>
struct signed_bits;
template <>
struct signed_bits<double> {
  using type = int64_t;
};
template <>
struct signed_bits<lanes> {
  using type = lane_mask;
};

// Masks: int 0 or 1 for a scalar, so that tests combine with | and & without branches, and -1 or
// 0 per lane for vectors.
inline int mask_of(bool test) { return test; }
inline lane_mask mask_of(lane_mask test) { return test; }
inline int invert(int mask) { return mask ^ 1; }
inline lane_mask invert(lane_mask mask) { return ~mask; }

// |x| ≥ 2^e, NaN included, tested on the bits so that no flag is raised (signed comparisons of
// the magnitudes, which stay below 2^63).
template <int e, class V>
auto magnitude_at_least(V x) {
  constexpr int64_t bound = static_cast<int64_t>(1023 + e) << 52;
  return mask_of(__builtin_bit_cast(typename signed_bits<V>::type, magnitude(x)) >= bound);
}

// Infinite or NaN.
template <class V>
auto not_finite(V x) {
  return magnitude_at_least<1024>(x);
}

inline bool any(int mask) { return mask != 0; }
inline bool any(lane_mask mask) {
#ifdef __AVX__
  const __m256i m = __builtin_bit_cast(__m256i, mask);
  return !_mm256_testz_si256(m, m);
#else
  const int64_t __attribute__((vector_size(16))) halves = __builtin_shufflevector(mask, mask, 0, 1) |
                                                          __builtin_shufflevector(mask, mask, 2, 3);
  return _mm_movemask_pd(__builtin_bit_cast(__m128d, halves)) != 0;
#endif
}

// mask ? x : y, lane by lane.
inline double select(bool mask, double x, double y) { return mask ? x : y; }
inline lanes select(lane_mask mask, lanes x, lanes y) {
  const lane_mask chosen = (mask & __builtin_bit_cast(lane_mask, x)) |
                           (~mask & __builtin_bit_cast(lane_mask, y));
  return __builtin_bit_cast(lanes, chosen);
}

#ifdef __FMA__
// a·b + c rounded once.
inline double fused(double a, double b, double c) { return __builtin_fma(a, b, c); }
inline lanes fused(lanes a, lanes b, lanes c) {
  return __builtin_bit_cast(lanes, _mm256_fmadd_pd(__builtin_bit_cast(__m256d, a),
                                                   __builtin_bit_cast(__m256d, b),
                                                   __builtin_bit_cast(__m256d, c)));
}
#endif

}  // namespace tav::TAV_PATH_NS::vml
