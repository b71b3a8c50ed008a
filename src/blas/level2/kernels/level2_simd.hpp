// The vector vocabulary of the level-2 kernels: packs of float or double at the widest width the
// path's flags allow, and a one-lane multiply-add that rounds exactly as a vector lane does, so a
// remainder element gets the same result it would get inside a pack. Complex elements are handled
// as interleaved (re, im) lanes; swap_pairs exchanges the two lanes of each element.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace tav::TAV_PATH_NS {

using index = int64_t;

// a·b + c, rounded once where the path has FMA (as the packs are), twice otherwise.
inline double madd(double a, double b, double c) {
#ifdef __FMA__
  return __builtin_fma(a, b, c);
#else
  return a * b + c;
#endif
}

inline float madd(float a, float b, float c) {
#ifdef __FMA__
  return __builtin_fmaf(a, b, c);
#else
  return a * b + c;
#endif
}

template <class R>
struct pack;

#if defined(__AVX512F__)

template <>
struct pack<double> {
  using reg = __m512d;
  static constexpr int width = 8;
  static reg load(const double* p) { return _mm512_loadu_pd(p); }
  static void store(double* p, reg v) { _mm512_storeu_pd(p, v); }
  static reg set1(double v) { return _mm512_set1_pd(v); }
  static reg zero() { return _mm512_setzero_pd(); }
  static reg add(reg a, reg b) { return _mm512_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm512_mul_pd(a, b); }
  static reg madd(reg a, reg b, reg c) { return _mm512_fmadd_pd(a, b, c); }
  static reg swap_pairs(reg v) { return _mm512_permute_pd(v, 0x55); }
};

template <>
struct pack<float> {
  using reg = __m512;
  static constexpr int width = 16;
  static reg load(const float* p) { return _mm512_loadu_ps(p); }
  static void store(float* p, reg v) { _mm512_storeu_ps(p, v); }
  static reg set1(float v) { return _mm512_set1_ps(v); }
  static reg zero() { return _mm512_setzero_ps(); }
  static reg add(reg a, reg b) { return _mm512_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm512_mul_ps(a, b); }
  static reg madd(reg a, reg b, reg c) { return _mm512_fmadd_ps(a, b, c); }
  static reg swap_pairs(reg v) { return _mm512_permute_ps(v, 0xB1); }
};

#elif defined(__AVX__)

template <>
struct pack<double> {
  using reg = __m256d;
  static constexpr int width = 4;
  static reg load(const double* p) { return _mm256_loadu_pd(p); }
  static void store(double* p, reg v) { _mm256_storeu_pd(p, v); }
  static reg set1(double v) { return _mm256_set1_pd(v); }
  static reg zero() { return _mm256_setzero_pd(); }
  static reg add(reg a, reg b) { return _mm256_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_pd(a, b); }
#ifdef __FMA__
  static reg madd(reg a, reg b, reg c) { return _mm256_fmadd_pd(a, b, c); }
#else
  static reg madd(reg a, reg b, reg c) { return _mm256_add_pd(_mm256_mul_pd(a, b), c); }
#endif
  static reg swap_pairs(reg v) { return _mm256_permute_pd(v, 0x5); }
};

template <>
struct pack<float> {
  using reg = __m256;
  static constexpr int width = 8;
  static reg load(const float* p) { return _mm256_loadu_ps(p); }
  static void store(float* p, reg v) { _mm256_storeu_ps(p, v); }
  static reg set1(float v) { return _mm256_set1_ps(v); }
  static reg zero() { return _mm256_setzero_ps(); }
  static reg add(reg a, reg b) { return _mm256_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_ps(a, b); }
#ifdef __FMA__
  static reg madd(reg a, reg b, reg c) { return _mm256_fmadd_ps(a, b, c); }
#else
  static reg madd(reg a, reg b, reg c) { return _mm256_add_ps(_mm256_mul_ps(a, b), c); }
#endif
  static reg swap_pairs(reg v) { return _mm256_permute_ps(v, 0xB1); }
};

#else

template <>
struct pack<double> {
  using reg = __m128d;
  static constexpr int width = 2;
  static reg load(const double* p) { return _mm_loadu_pd(p); }
  static void store(double* p, reg v) { _mm_storeu_pd(p, v); }
  static reg set1(double v) { return _mm_set1_pd(v); }
  static reg zero() { return _mm_setzero_pd(); }
  static reg add(reg a, reg b) { return _mm_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_pd(a, b); }
  static reg madd(reg a, reg b, reg c) { return _mm_add_pd(_mm_mul_pd(a, b), c); }
  static reg swap_pairs(reg v) { return _mm_shuffle_pd(v, v, 1); }
};

template <>
struct pack<float> {
  using reg = __m128;
  static constexpr int width = 4;
  static reg load(const float* p) { return _mm_loadu_ps(p); }
  static void store(float* p, reg v) { _mm_storeu_ps(p, v); }
  static reg set1(float v) { return _mm_set1_ps(v); }
  static reg zero() { return _mm_setzero_ps(); }
  static reg add(reg a, reg b) { return _mm_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_ps(a, b); }
  static reg madd(reg a, reg b, reg c) { return _mm_add_ps(_mm_mul_ps(a, b), c); }
  static reg swap_pairs(reg v) { return _mm_shuffle_ps(v, v, 0xB1); }
};

#endif

// (-s, s, -s, s, ...): multiplied by swap_pairs(a) it gives the i·s part of a complex product,
// (a_re + i·a_im)·(i·s) = -a_im·s + i·a_re·s, lane by lane.
template <class R>
typename pack<R>::reg alternating(R s) {
  R lanes[pack<R>::width];
  for (int k = 0; k < pack<R>::width; ++k) lanes[k] = (k & 1) != 0 ? s : -s;
  return pack<R>::load(lanes);
}

// Sum of lanes first, first + step, ... in lane order: a fixed order for a fixed path.
template <class R>
R lane_sum(typename pack<R>::reg v, int first, int step) {
  R lanes[pack<R>::width];
  pack<R>::store(lanes, v);
  R sum = lanes[first];
  for (int k = first + step; k < pack<R>::width; k += step) sum += lanes[k];
  return sum;
}

// Rows per block, in elements: the kernels sweep every column over one block of rows before the
// next, so the block of the vector they reuse (y for 'N', x for 'T' and the rank-1 update)
// stays in L1/L2. On the test machine 4096 rows beat 1024 by 10-40% for double 2000 x 2000 and
// 4000 x 4000 gemv and ger (32 and 128 MB matrices), where 1024 rows cut each column into 8 KB
// streams; below 1000 x 1000 the two were within noise.
constexpr index row_block = 4096;
// A strided vector is gathered into a stack buffer of this many elements, one block at a time.
constexpr index gather_block = 1024;

// The smaller of two sizes (kernel files keep clear of std::min).
inline index smaller(index a, index b) { return a < b ? a : b; }

// Copies `count` elements of `reals` reals each, element i from from[i·step·reals], to a
// contiguous `to`; and back.
template <class R>
void gather(index count, int reals, const R* from, index step, R* to) {
  for (index i = 0; i < count; ++i)
    for (int r = 0; r < reals; ++r) to[i * reals + r] = from[i * step * reals + r];
}

template <class R>
void scatter(index count, int reals, const R* from, R* to, index step) {
  for (index i = 0; i < count; ++i)
    for (int r = 0; r < reals; ++r) to[i * step * reals + r] = from[i * reals + r];
}

}  // namespace tav::TAV_PATH_NS
