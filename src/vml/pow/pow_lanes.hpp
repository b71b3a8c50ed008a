// The lane vocabulary of the power function: a register of doubles (four with AVX2 and FMA, two
// with SSE2 otherwise) with the arithmetic, bit operations, table reads and lane tests that the
// power formulas use. Included by the per-path kernels and by the baseline rare path; each gets
// its own copy in its own namespace.
#pragma once

#include <immintrin.h>

#include <cstdint>

#if defined(__AVX2__) && defined(__FMA__)
#include "common/simd.hpp"
#endif

#ifndef __SSE2__
#error "the power function needs SSE2, which every x86-64 processor has"
#endif

#ifdef TAV_PATH_NS
namespace tav::TAV_PATH_NS::pow_lanes {
#else
namespace tav::vml::pow_lanes {
#endif

#if defined(__AVX2__) && defined(__FMA__)

// AVX2 and FMA. The AVX-512 paths use this form as well: their 512-bit forms would need a
// machine with AVX-512 to be tested.
struct lanes {
  using reg = __m256d;
  using ireg = __m256i;
  static constexpr int width = 4;
  static constexpr bool fused = true;

  static reg load(const double* p) { return _mm256_loadu_pd(p); }
  static void store(double* p, reg v) { _mm256_storeu_pd(p, v); }
  static reg load(const float* p) { return _mm256_cvtps_pd(_mm_loadu_ps(p)); }
  static void store(float* p, reg v) { _mm_storeu_ps(p, _mm256_cvtpd_ps(v)); }
  static reg set(double a) { return _mm256_set1_pd(a); }

  static reg add(reg a, reg b) { return _mm256_add_pd(a, b); }
  static reg sub(reg a, reg b) { return _mm256_sub_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm256_mul_pd(a, b); }
  // a·b + c, rounded once.
  static reg mul_add(reg a, reg b, reg c) { return _mm256_fmadd_pd(a, b, c); }

  static ireg bits(reg a) { return _mm256_castpd_si256(a); }
  static reg from_bits(ireg a) { return _mm256_castsi256_pd(a); }
  static ireg iadd(ireg a, ireg b) { return _mm256_add_epi64(a, b); }
  static ireg isub(ireg a, ireg b) { return _mm256_sub_epi64(a, b); }
  static ireg iand(ireg a, ireg b) { return _mm256_and_si256(a, b); }
  static ireg iset(uint64_t a) { return _mm256_set1_epi64x(static_cast<long long>(a)); }
  template <int s>
  static ireg shl(ireg a) { return _mm256_slli_epi64(a, s); }
  template <int s>
  static ireg shr(ireg a) { return _mm256_srli_epi64(a, s); }
  // The signed top 12 bits of each 64-bit lane (bits >> 52, arithmetic), as doubles.
  static reg top12_signed(ireg a) {
    __m256i hi = _mm256_srai_epi32(a, 20);  // high dwords hold the shifted values
    __m256i packed = _mm256_permutevar8x32_epi32(hi, _mm256_setr_epi32(1, 3, 5, 7, 0, 0, 0, 0));
    return _mm256_cvtepi32_pd(_mm256_castsi256_si128(packed));
  }
  // Columns 0, 1, 2 of the 4-double rows table + 4·index per lane: one load per lane and a
  // transpose, cheaper than three gathers on Zen 3 (bench/RESULTS.md, "Vector math: power").
  static void rows3(const double* table, ireg index, reg& c0, reg& c1, reg& c2) {
    alignas(32) int64_t i[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(i), index);
    reg r0 = _mm256_loadu_pd(table + 4 * i[0]), r1 = _mm256_loadu_pd(table + 4 * i[1]);
    reg r2 = _mm256_loadu_pd(table + 4 * i[2]), r3 = _mm256_loadu_pd(table + 4 * i[3]);
    reg t0 = _mm256_unpacklo_pd(r0, r1), t1 = _mm256_unpackhi_pd(r0, r1);
    reg t2 = _mm256_unpacklo_pd(r2, r3), t3 = _mm256_unpackhi_pd(r2, r3);
    c0 = _mm256_permute2f128_pd(t0, t2, 0x20);
    c1 = _mm256_permute2f128_pd(t1, t3, 0x20);
    c2 = _mm256_permute2f128_pd(t0, t2, 0x31);
  }
  // Columns 0 and 1 of the 2-double rows table + 2·index per lane.
  static void rows2(const double* table, ireg index, reg& c0, reg& c1) {
    alignas(32) int64_t i[4];
    simd256<double>::store(i, index);
    simd256<double>::lookup_pairs(table, i, c0, c1);
  }

  // Lane masks, all ones where a lane is outside [lo, hi] or NaN.
  static reg not_within(reg a, reg lo, reg hi) {
    return _mm256_or_pd(_mm256_cmp_pd(a, lo, _CMP_NGE_UQ), _mm256_cmp_pd(a, hi, _CMP_NLE_UQ));
  }
  static reg mask_or(reg a, reg b) { return _mm256_or_pd(a, b); }
  static int lane_bits(reg mask) { return _mm256_movemask_pd(mask); }
  // mask ? b : a per lane.
  static reg select(reg mask, reg a, reg b) { return _mm256_blendv_pd(a, b, mask); }
};

#else

// SSE2 (the baseline, SSSE3, x86-64-v2 and AVX without FMA): two lanes, and products split by
// Dekker's method where an exact remainder is needed.
struct lanes {
  using reg = __m128d;
  using ireg = __m128i;
  static constexpr int width = 2;
  static constexpr bool fused = false;

  static reg load(const double* p) { return _mm_loadu_pd(p); }
  static void store(double* p, reg v) { _mm_storeu_pd(p, v); }
  static reg load(const float* p) {
    return _mm_cvtps_pd(_mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(p))));
  }
  static void store(float* p, reg v) {
    _mm_store_sd(reinterpret_cast<double*>(p), _mm_castps_pd(_mm_cvtpd_ps(v)));
  }
  static reg set(double a) { return _mm_set1_pd(a); }

  static reg add(reg a, reg b) { return _mm_add_pd(a, b); }
  static reg sub(reg a, reg b) { return _mm_sub_pd(a, b); }
  static reg mul(reg a, reg b) { return _mm_mul_pd(a, b); }
  // a·b + c with two roundings; used only where the formulas tolerate it.
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_pd(_mm_mul_pd(a, b), c); }

  static ireg bits(reg a) { return _mm_castpd_si128(a); }
  static reg from_bits(ireg a) { return _mm_castsi128_pd(a); }
  static ireg iadd(ireg a, ireg b) { return _mm_add_epi64(a, b); }
  static ireg isub(ireg a, ireg b) { return _mm_sub_epi64(a, b); }
  static ireg iand(ireg a, ireg b) { return _mm_and_si128(a, b); }
  static ireg iset(uint64_t a) { return _mm_set1_epi64x(static_cast<long long>(a)); }
  template <int s>
  static ireg shl(ireg a) { return _mm_slli_epi64(a, s); }
  template <int s>
  static ireg shr(ireg a) { return _mm_srli_epi64(a, s); }
  static reg top12_signed(ireg a) {
    __m128i hi = _mm_srai_epi32(a, 20);
    return _mm_cvtepi32_pd(_mm_shuffle_epi32(hi, _MM_SHUFFLE(3, 1, 3, 1)));
  }
  static void rows3(const double* table, ireg index, reg& c0, reg& c1, reg& c2) {
    const double* p0 = table + 4 * _mm_cvtsi128_si64(index);
    const double* p1 = table + 4 * _mm_cvtsi128_si64(_mm_unpackhi_epi64(index, index));
    reg a0 = _mm_loadu_pd(p0), a1 = _mm_loadu_pd(p1);
    c0 = _mm_unpacklo_pd(a0, a1);
    c1 = _mm_unpackhi_pd(a0, a1);
    c2 = _mm_set_pd(p1[2], p0[2]);
  }
  static void rows2(const double* table, ireg index, reg& c0, reg& c1) {
    reg a0 = _mm_loadu_pd(table + 2 * _mm_cvtsi128_si64(index));
    reg a1 = _mm_loadu_pd(table + 2 * _mm_cvtsi128_si64(_mm_unpackhi_epi64(index, index)));
    c0 = _mm_unpacklo_pd(a0, a1);
    c1 = _mm_unpackhi_pd(a0, a1);
  }

  static reg not_within(reg a, reg lo, reg hi) {
    return _mm_or_pd(_mm_cmpnge_pd(a, lo), _mm_cmpnle_pd(a, hi));
  }
  static reg mask_or(reg a, reg b) { return _mm_or_pd(a, b); }
  static int lane_bits(reg mask) { return _mm_movemask_pd(mask); }
  static reg select(reg mask, reg a, reg b) {
    return _mm_or_pd(_mm_andnot_pd(mask, a), _mm_and_pd(mask, b));
  }

  // Lane 0, for the scalar rare path.
  static double first(reg a) { return _mm_cvtsd_f64(a); }
  static int64_t first(ireg a) { return _mm_cvtsi128_si64(a); }
};

#endif

}  // namespace tav::...::pow_lanes
