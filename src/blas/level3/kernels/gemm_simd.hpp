// The vector vocabulary of the matrix-product kernels, chosen by the compiler's ISA macros: the
// widest register of the path for float and double, with a portable two-lane form elsewhere.
#pragma once

#include "blas/level3/kernels/gemm_element.hpp"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace tav::TAV_PATH_NS::gemm {

// simd<R>: reg, width (lanes), zero, load/store (unaligned), broadcast (of a value),
// broadcast_load (of the element at an address, a load with no shuffle), add, mul,
// mul_add(a, b, c) = a·b + c (one rounding only where the path has FMA), swap_pairs (exchange the
// lanes of each pair: re <-> im), alternate(even, odd) (a constant with even lanes `even`).
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

template <>
struct simd<double> {
  using reg = __m256d;
  static constexpr int width = 4;
  static reg zero() { return _mm256_setzero_pd(); }
  static reg load(const double* p) { return _mm256_loadu_pd(p); }
  static void store(double* p, reg v) { _mm256_storeu_pd(p, v); }
  static reg broadcast(double x) { return _mm256_set1_pd(x); }
  static reg broadcast_load(const double* p) { return _mm256_broadcast_sd(p); }
  static reg add(reg a, reg b) { return _mm256_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_pd(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm256_fmadd_pd(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm256_add_pd(_mm256_mul_pd(a, b), c); }
#endif
  static reg swap_pairs(reg v) { return _mm256_permute_pd(v, 0x5); }
  static reg alternate(double e, double o) { return _mm256_set_pd(o, e, o, e); }
};

template <>
struct simd<float> {
  using reg = __m256;
  static constexpr int width = 8;
  static reg zero() { return _mm256_setzero_ps(); }
  static reg load(const float* p) { return _mm256_loadu_ps(p); }
  static void store(float* p, reg v) { _mm256_storeu_ps(p, v); }
  static reg broadcast(float x) { return _mm256_set1_ps(x); }
  static reg broadcast_load(const float* p) { return _mm256_broadcast_ss(p); }
  static reg add(reg a, reg b) { return _mm256_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_ps(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm256_fmadd_ps(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm256_add_ps(_mm256_mul_ps(a, b), c); }
#endif
  static reg swap_pairs(reg v) { return _mm256_permute_ps(v, 0xb1); }
  static reg alternate(float e, float o) { return _mm256_set_ps(o, e, o, e, o, e, o, e); }
};

#elif defined(__SSE2__)

template <>
struct simd<double> {
  using reg = __m128d;
  static constexpr int width = 2;
  static reg zero() { return _mm_setzero_pd(); }
  static reg load(const double* p) { return _mm_loadu_pd(p); }
  static void store(double* p, reg v) { _mm_storeu_pd(p, v); }
  static reg broadcast(double x) { return _mm_set1_pd(x); }
  static reg broadcast_load(const double* p) { return _mm_load1_pd(p); }
  static reg add(reg a, reg b) { return _mm_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_pd(a, b); }
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_pd(_mm_mul_pd(a, b), c); }
  static reg swap_pairs(reg v) { return _mm_shuffle_pd(v, v, 1); }
  static reg alternate(double e, double o) { return _mm_set_pd(o, e); }
};

template <>
struct simd<float> {
  using reg = __m128;
  static constexpr int width = 4;
  static reg zero() { return _mm_setzero_ps(); }
  static reg load(const float* p) { return _mm_loadu_ps(p); }
  static void store(float* p, reg v) { _mm_storeu_ps(p, v); }
  static reg broadcast(float x) { return _mm_set1_ps(x); }
  static reg broadcast_load(const float* p) { return _mm_load1_ps(p); }
  static reg add(reg a, reg b) { return _mm_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_ps(a, b); }
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_ps(_mm_mul_ps(a, b), c); }
  static reg swap_pairs(reg v) { return _mm_shuffle_ps(v, v, 0xb1); }
  static reg alternate(float e, float o) { return _mm_set_ps(o, e, o, e); }
};

#else

// Portable form: 16 bytes of lanes in an array, so the complex kernels still see whole pairs.
template <class R>
struct simd {
  static constexpr int width = static_cast<int>(16 / sizeof(R));
  struct reg {
    R lane[width];
  };
  static reg zero() { return reg{}; }
  static reg load(const R* p) {
    reg r;
    for (int i = 0; i < width; ++i) r.lane[i] = p[i];
    return r;
  }
  static void store(R* p, reg v) {
    for (int i = 0; i < width; ++i) p[i] = v.lane[i];
  }
  static reg broadcast(R x) {
    reg r;
    for (int i = 0; i < width; ++i) r.lane[i] = x;
    return r;
  }
  static reg broadcast_load(const R* p) { return broadcast(*p); }
  static reg add(reg a, reg b) {
    for (int i = 0; i < width; ++i) a.lane[i] = a.lane[i] + b.lane[i];
    return a;
  }
  static reg mul(reg a, reg b) {
    for (int i = 0; i < width; ++i) a.lane[i] = a.lane[i] * b.lane[i];
    return a;
  }
  static reg mul_add(reg a, reg b, reg c) { return add(mul(a, b), c); }
  static reg swap_pairs(reg v) {
    for (int i = 0; i < width; i += 2) {
      R t = v.lane[i];
      v.lane[i] = v.lane[i + 1];
      v.lane[i + 1] = t;
    }
    return v;
  }
  static reg alternate(R e, R o) {
    reg r;
    for (int i = 0; i < width; i += 2) r.lane[i] = e, r.lane[i + 1] = o;
    return r;
  }
};

#endif

// Elements of E per register: lanes of the real type, halved for complex pairs.
template <class E>
constexpr int lanes() {
  return simd<real_of<E>>::width / (element<E>::complex ? 2 : 1);
}

}  // namespace tav::TAV_PATH_NS::gemm
