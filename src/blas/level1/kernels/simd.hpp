// The vector vocabulary of the level-1 kernels: the path's widest register (`wide`) and a 128-bit
// register holding one complex element (`one_complex`), each with the operations the kernels use.
#pragma once

#include <immintrin.h>

#include <cstdint>

#ifndef __SSE2__
#error "the level-1 kernels need SSE2, which every x86-64 processor has"
#endif

namespace tav::TAV_PATH_NS::level1 {

using index = int64_t;

template <class Real>
struct wide;
template <class Real>
struct one_complex;

#if defined(__AVX512F__)

// Only AVX-512F forms here: the avx512_tp path has no DQ, BW or VL.
template <>
struct wide<double> {
  using reg = __m512d;
  static constexpr index width = 8;
  static reg load(const double* p) { return _mm512_loadu_pd(p); }
  static void store(double* p, reg v) { _mm512_storeu_pd(p, v); }
  static reg broadcast(double a) { return _mm512_set1_pd(a); }
  static reg zero() { return _mm512_setzero_pd(); }
  static reg add(reg a, reg b) { return _mm512_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm512_mul_pd(a, b); }
  static reg mul_add(reg a, reg b, reg c) { return _mm512_fmadd_pd(a, b, c); }
  static reg swap_pairs(reg v) { return _mm512_permute_pd(v, 0x55); }
  static reg alternate(double even, double odd) {
    return _mm512_set_pd(odd, even, odd, even, odd, even, odd, even);
  }
};

template <>
struct wide<float> {
  using reg = __m512;
  static constexpr index width = 16;
  static reg load(const float* p) { return _mm512_loadu_ps(p); }
  static void store(float* p, reg v) { _mm512_storeu_ps(p, v); }
  static reg broadcast(float a) { return _mm512_set1_ps(a); }
  static reg zero() { return _mm512_setzero_ps(); }
  static reg add(reg a, reg b) { return _mm512_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm512_mul_ps(a, b); }
  static reg mul_add(reg a, reg b, reg c) { return _mm512_fmadd_ps(a, b, c); }
  static reg swap_pairs(reg v) { return _mm512_permute_ps(v, 0xb1); }
  static reg alternate(float even, float odd) {
    return _mm512_set_ps(odd, even, odd, even, odd, even, odd, even, odd, even, odd, even, odd,
                         even, odd, even);
  }
};

#elif defined(__AVX__)

template <>
struct wide<double> {
  using reg = __m256d;
  static constexpr index width = 4;
  static reg load(const double* p) { return _mm256_loadu_pd(p); }
  static void store(double* p, reg v) { _mm256_storeu_pd(p, v); }
  static reg broadcast(double a) { return _mm256_set1_pd(a); }
  static reg zero() { return _mm256_setzero_pd(); }
  static reg add(reg a, reg b) { return _mm256_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_pd(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm256_fmadd_pd(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm256_add_pd(_mm256_mul_pd(a, b), c); }
#endif
  static reg swap_pairs(reg v) { return _mm256_permute_pd(v, 0x5); }
  static reg alternate(double even, double odd) { return _mm256_set_pd(odd, even, odd, even); }
};

template <>
struct wide<float> {
  using reg = __m256;
  static constexpr index width = 8;
  static reg load(const float* p) { return _mm256_loadu_ps(p); }
  static void store(float* p, reg v) { _mm256_storeu_ps(p, v); }
  static reg broadcast(float a) { return _mm256_set1_ps(a); }
  static reg zero() { return _mm256_setzero_ps(); }
  static reg add(reg a, reg b) { return _mm256_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_ps(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm256_fmadd_ps(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm256_add_ps(_mm256_mul_ps(a, b), c); }
#endif
  static reg swap_pairs(reg v) { return _mm256_permute_ps(v, 0xb1); }
  static reg alternate(float even, float odd) {
    return _mm256_set_ps(odd, even, odd, even, odd, even, odd, even);
  }
};

#endif

// The 128-bit forms: one complex double, or one complex float in the low half (upper lanes
// zero after a load). On the SSE paths they are the wide registers as well.
template <>
struct one_complex<double> {
  using reg = __m128d;
  static constexpr index width = 2;
  static reg load(const double* p) { return _mm_loadu_pd(p); }
  static void store(double* p, reg v) { _mm_storeu_pd(p, v); }
  static reg broadcast(double a) { return _mm_set1_pd(a); }
  static reg zero() { return _mm_setzero_pd(); }
  static reg add(reg a, reg b) { return _mm_add_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_pd(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm_fmadd_pd(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_pd(_mm_mul_pd(a, b), c); }
#endif
  static reg swap_pairs(reg v) { return _mm_shuffle_pd(v, v, 1); }
  static reg alternate(double even, double odd) { return _mm_set_pd(odd, even); }
};

template <>
struct one_complex<float> {
  using reg = __m128;
  static constexpr index width = 2;
  static reg load(const float* p) {
    return _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(p)));
  }
  static void store(float* p, reg v) { _mm_store_sd(reinterpret_cast<double*>(p), _mm_castps_pd(v)); }
  static reg broadcast(float a) { return _mm_set1_ps(a); }
  static reg zero() { return _mm_setzero_ps(); }
  static reg add(reg a, reg b) { return _mm_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_ps(a, b); }
#if defined(__FMA__)
  static reg mul_add(reg a, reg b, reg c) { return _mm_fmadd_ps(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_ps(_mm_mul_ps(a, b), c); }
#endif
  static reg swap_pairs(reg v) { return _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1)); }
  static reg alternate(float even, float odd) { return _mm_set_ps(odd, even, odd, even); }
};

#if !defined(__AVX__)

template <>
struct wide<double> : one_complex<double> {};

template <>
struct wide<float> {
  using reg = __m128;
  static constexpr index width = 4;
  static reg load(const float* p) { return _mm_loadu_ps(p); }
  static void store(float* p, reg v) { _mm_storeu_ps(p, v); }
  static reg broadcast(float a) { return _mm_set1_ps(a); }
  static reg zero() { return _mm_setzero_ps(); }
  static reg add(reg a, reg b) { return _mm_add_ps(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_ps(a, b); }
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_ps(_mm_mul_ps(a, b), c); }
  static reg swap_pairs(reg v) { return _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1)); }
  static reg alternate(float even, float odd) { return _mm_set_ps(odd, even, odd, even); }
};

#endif

// Sums of the even lanes and of the odd lanes of v, each in lane order: the fixed order that
// makes a kernel's result depend only on its inputs. For complex data these are the real-part
// and imaginary-part sums; a real sum is even + odd.
template <class V, class Real>
void pair_sums(typename V::reg v, Real& even, Real& odd) {
  Real lanes[V::width];
  V::store(lanes, v);
  even = lanes[0];
  odd = lanes[1];
  for (index k = 2; k < V::width; k += 2) {
    even += lanes[k];
    odd += lanes[k + 1];
  }
}

// Pointer to element 0 of an n-vector stored with increment inc (BLAS convention: for inc < 0
// element 0 is the last in memory); element i is then at first + i·inc·stride reals.
template <class Real>
Real* first_element(Real* x, index n, index inc, index stride) {
  return inc < 0 ? x - (n - 1) * inc * stride : x;
}

}  // namespace tav::TAV_PATH_NS::level1
