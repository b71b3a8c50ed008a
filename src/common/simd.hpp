// The vector vocabulary of every per-path kernel: simd<R> is the widest register of float or
// double that the path's flags allow; simd128<R> and, on the AVX paths, simd256<R> the registers
// of those sizes, each with the same operations.
// Included only by kernel files, whose path namespace gives every path its own copy.
#pragma once

#include <immintrin.h>

#include <cstdint>

#ifndef TAV_PATH_NS
#error "simd.hpp belongs to the per-path kernels"
#endif
#ifndef __SSE2__
#error "the kernels need SSE2, which every x86-64 processor has"
#endif

namespace tav::TAV_PATH_NS {

// Each register type offers: width (lanes), zero, load/store (unaligned), stream (a store that
// bypasses the caches; 64-byte aligned address for the widest forms), broadcast (of a value),
// broadcast_load (of the element at an address, one load without a shuffle), add, mul,
// mul_add(a, b, c) = a·b + c (one rounding where the path has FMA, two otherwise), swap_pairs
// (exchanges the lanes of each pair: re <-> im) and alternate(even, odd) (a constant whose even
// lanes hold `even`); the 128- and 256-bit forms also bit_xor.
template <class R>
struct simd128;

template <>
struct simd128<double> {
  using reg = __m128d;
  static constexpr int width = 2;
  static reg zero() { return _mm_setzero_pd(); }
  static reg load(const double* p) { return _mm_loadu_pd(p); }
  static void store(double* p, reg v) { _mm_storeu_pd(p, v); }
  static void stream(double* p, reg v) { _mm_stream_pd(p, v); }
  static reg broadcast(double x) { return _mm_set1_pd(x); }
  static reg broadcast_load(const double* p) { return _mm_load1_pd(p); }
  static reg add(reg a, reg b) { return _mm_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_pd(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm_fmadd_pd(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_pd(_mm_mul_pd(a, b), c); }
#endif
  static reg bit_xor(reg a, reg b) { return _mm_xor_pd(a, b); }
  static reg swap_pairs(reg v) { return _mm_shuffle_pd(v, v, 1); }
  static reg alternate(double e, double o) { return _mm_set_pd(o, e); }
};

template <>
struct simd128<float> {
  using reg = __m128;
  static constexpr int width = 4;
  static reg zero() { return _mm_setzero_ps(); }
  static reg load(const float* p) { return _mm_loadu_ps(p); }
  static void store(float* p, reg v) { _mm_storeu_ps(p, v); }
  static void stream(float* p, reg v) { _mm_stream_ps(p, v); }
  static reg broadcast(float x) { return _mm_set1_ps(x); }
  static reg broadcast_load(const float* p) { return _mm_load1_ps(p); }
  static reg add(reg a, reg b) { return _mm_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_ps(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm_fmadd_ps(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_ps(_mm_mul_ps(a, b), c); }
#endif
  static reg bit_xor(reg a, reg b) { return _mm_xor_ps(a, b); }
  static reg swap_pairs(reg v) { return _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1)); }
  static reg alternate(float e, float o) { return _mm_set_ps(o, e, o, e); }
};

#if defined(__AVX__)

template <class R>
struct simd256;

template <>
struct simd256<double> {
  using reg = __m256d;
  static constexpr int width = 4;
  static reg zero() { return _mm256_setzero_pd(); }
  static reg load(const double* p) { return _mm256_loadu_pd(p); }
  static void store(double* p, reg v) { _mm256_storeu_pd(p, v); }
  static void stream(double* p, reg v) { _mm256_stream_pd(p, v); }
  static reg broadcast(double x) { return _mm256_set1_pd(x); }
  static reg broadcast_load(const double* p) { return _mm256_broadcast_sd(p); }
  static reg add(reg a, reg b) { return _mm256_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_pd(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm256_fmadd_pd(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm256_add_pd(_mm256_mul_pd(a, b), c); }
#endif
  static reg bit_xor(reg a, reg b) { return _mm256_xor_pd(a, b); }
  static reg swap_pairs(reg v) { return _mm256_permute_pd(v, 0x5); }
  static reg alternate(double e, double o) { return _mm256_set_pd(o, e, o, e); }
};

template <>
struct simd256<float> {
  using reg = __m256;
  static constexpr int width = 8;
  static reg zero() { return _mm256_setzero_ps(); }
  static reg load(const float* p) { return _mm256_loadu_ps(p); }
  static void store(float* p, reg v) { _mm256_storeu_ps(p, v); }
  static void stream(float* p, reg v) { _mm256_stream_ps(p, v); }
  static reg broadcast(float x) { return _mm256_set1_ps(x); }
  static reg broadcast_load(const float* p) { return _mm256_broadcast_ss(p); }
  static reg add(reg a, reg b) { return _mm256_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_ps(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm256_fmadd_ps(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm256_add_ps(_mm256_mul_ps(a, b), c); }
#endif
  static reg bit_xor(reg a, reg b) { return _mm256_xor_ps(a, b); }
  static reg swap_pairs(reg v) { return _mm256_permute_ps(v, 0xb1); }
  static reg alternate(float e, float o) { return _mm256_set_ps(o, e, o, e, o, e, o, e); }
};

#endif

template <class R>
struct simd;

#if defined(__AVX512F__)

// AVX-512F forms only: the avx512_tp path has no DQ, BW or VL.
template <>
struct simd<double> {
  using reg = __m512d;
  static constexpr int width = 8;
  static reg zero() { return _mm512_setzero_pd(); }
  static reg load(const double* p) { return _mm512_loadu_pd(p); }
  static void store(double* p, reg v) { _mm512_storeu_pd(p, v); }
  static void stream(double* p, reg v) { _mm512_stream_pd(p, v); }
  static reg broadcast(double x) { return _mm512_set1_pd(x); }
  static reg broadcast_load(const double* p) { return _mm512_set1_pd(*p); }
  static reg add(reg a, reg b) { return _mm512_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm512_mul_pd(a, b); }
  static reg mul_add(reg a, reg b, reg c) { return _mm512_fmadd_pd(a, b, c); }
  static reg swap_pairs(reg v) { return _mm512_permute_pd(v, 0x55); }
  static reg alternate(double e, double o) { return _mm512_set_pd(o, e, o, e, o, e, o, e); }
};

template <>
struct simd<float> {
  using reg = __m512;
  static constexpr int width = 16;
  static reg zero() { return _mm512_setzero_ps(); }
  static reg load(const float* p) { return _mm512_loadu_ps(p); }
  static void store(float* p, reg v) { _mm512_storeu_ps(p, v); }
  static void stream(float* p, reg v) { _mm512_stream_ps(p, v); }
  static reg broadcast(float x) { return _mm512_set1_ps(x); }
  static reg broadcast_load(const float* p) { return _mm512_set1_ps(*p); }
  static reg add(reg a, reg b) { return _mm512_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm512_mul_ps(a, b); }
  static reg mul_add(reg a, reg b, reg c) { return _mm512_fmadd_ps(a, b, c); }
  static reg swap_pairs(reg v) { return _mm512_permute_ps(v, 0xb1); }
  static reg alternate(float e, float o) {
    return _mm512_set_ps(o, e, o, e, o, e, o, e, o, e, o, e, o, e, o, e);
  }
};

#elif defined(__AVX__)

template <class R>
struct simd : simd256<R> {};

#else

template <class R>
struct simd : simd128<R> {};

#endif

// a·b + c on one lane, rounded as a lane of simd<R>::mul_add is, so that a remainder element
// gets the value it would get inside a register.
inline double mul_add(double a, double b, double c) {
#if defined(__FMA__)
  return __builtin_fma(a, b, c);
#else
  return a * b + c;
#endif
}

inline float mul_add(float a, float b, float c) {
#if defined(__FMA__)
  return __builtin_fmaf(a, b, c);
#else
  return a * b + c;
#endif
}

// Sum of lanes first, first + step, ... of v in lane order: a fixed order for a fixed path.
template <class V, class R>
R lane_sum(typename V::reg v, int first, int step) {
  R lanes[V::width];
  V::store(lanes, v);
  R sum = lanes[first];
  for (int k = first + step; k < V::width; k += step) sum += lanes[k];
  return sum;
}

}  // namespace tav::TAV_PATH_NS
