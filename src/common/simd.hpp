// The vector vocabulary of every per-path kernel: simd<R> is the widest register of float or
// double that the path's flags allow; simd128<R> and, on the AVX paths, simd256<R> the registers
// of those sizes, each with the same operations.
// Included by kernel files, whose path namespace gives every path its own copy, and by the few
// sources built once at the baseline flags (the power function's rare path), whose copy sits in
// tav::baseline.
#pragma once

#include <immintrin.h>

#include <cstdint>

#ifndef __SSE2__
#error "the kernels need SSE2, which every x86-64 processor has"
#endif

#ifdef TAV_PATH_NS
namespace tav::TAV_PATH_NS {
#else
namespace tav::baseline {
#endif

// Each register type offers: width (lanes), zero, load/store (unaligned), stream (a store that
// bypasses the caches; 64-byte aligned address for the widest forms), broadcast (of a value),
// broadcast_load (of the element at an address, one load without a shuffle), add, mul,
// mul_add(a, b, c) = a·b + c and neg_mul_add(a, b, c) = c - a·b (one rounding where the path
// has FMA, two otherwise), swap_pairs
// (exchanges the lanes of each pair: re <-> im) and alternate(even, odd) (a constant whose even
// lanes hold `even`); the 128- and 256-bit forms also bit_xor and transpose (of the square of
// `width` registers: lane j of register i to lane i of register j), and those of double
// deinterleave and interleave (complex elements to their parts and back). The 128-bit form of
// double on every path, and the 256-bit forms with AVX2, add what the elementary functions use:
// sub, div, the bit patterns as integer lanes (ireg, bits, from_bits, integer add, sub, and,
// shifts, top12_signed), lane masks (not_within, mask_or, select, lane_bits) and table reads
// (lookup, lookup_pairs and lookup_rows3 from memory for double, permute within a register for
// float);
// the registers of double also load and store floats, converting each lane, and the 128-bit one
// gives its lane0 to scalar code. widen_low, widen_high and narrow convert between eight floats
// and two registers of doubles.
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
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm_fnmadd_pd(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_pd(_mm_mul_pd(a, b), c); }
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm_sub_pd(c, _mm_mul_pd(a, b)); }
#endif
  static reg bit_xor(reg a, reg b) { return _mm_xor_pd(a, b); }
  static reg swap_pairs(reg v) { return _mm_shuffle_pd(v, v, 1); }
  static reg alternate(double e, double o) { return _mm_set_pd(o, e); }
  static void transpose(reg* r) {
    const reg low = _mm_unpacklo_pd(r[0], r[1]);
    r[1] = _mm_unpackhi_pd(r[0], r[1]);
    r[0] = low;
  }
  // Interleaved pairs (re, im) in a, b to their even and odd lanes, and back.
  static void deinterleave(reg a, reg b, reg& even, reg& odd) {
    even = _mm_unpacklo_pd(a, b);
    odd = _mm_unpackhi_pd(a, b);
  }
  static void interleave(reg even, reg odd, reg& a, reg& b) { deinterleave(even, odd, a, b); }
  static reg sub(reg a, reg b) { return _mm_sub_pd(a, b); }
  static reg div(reg a, reg b) { return _mm_div_pd(a, b); }
  // Two floats in, two out, each lane converted.
  static reg load(const float* p) {
    return _mm_cvtps_pd(_mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(p))));
  }
  static void store(float* p, reg v) {
    _mm_store_sd(reinterpret_cast<double*>(p), _mm_castps_pd(_mm_cvtpd_ps(v)));
  }
  static double lane0(reg v) { return _mm_cvtsd_f64(v); }
  // Bit patterns as 64-bit integer lanes.
  using ireg = __m128i;
  static ireg bits(reg v) { return _mm_castpd_si128(v); }
  static reg from_bits(ireg v) { return _mm_castsi128_pd(v); }
  static int64_t lane0(ireg v) { return _mm_cvtsi128_si64(v); }
  static ireg iset(int64_t a) { return _mm_set1_epi64x(a); }
  static ireg iadd(ireg a, ireg b) { return _mm_add_epi64(a, b); }
  static ireg isub(ireg a, ireg b) { return _mm_sub_epi64(a, b); }
  static ireg iand(ireg a, ireg b) { return _mm_and_si128(a, b); }
  template <int s>
  static ireg shl(ireg a) {
    return _mm_slli_epi64(a, s);
  }
  template <int s>
  static ireg shr(ireg a) {
    return _mm_srli_epi64(a, s);
  }
  // The signed top 12 bits of each lane (bits >> 52, arithmetic), as doubles.
  static reg top12_signed(ireg a) {
    const __m128i high = _mm_srai_epi32(a, 20);  // the high dwords hold the shifted values
    return _mm_cvtepi32_pd(_mm_shuffle_epi32(high, _MM_SHUFFLE(3, 1, 3, 1)));
  }
  // Columns 0 and 1 of the rows of two at table + 2·index per lane; columns 0, 1 and 2 of the
  // rows of four at table + 4·index.
  static void lookup_pairs(const double* table, ireg index, reg& first, reg& second) {
    const reg r0 = _mm_loadu_pd(table + 2 * lane0(index));
    const reg r1 = _mm_loadu_pd(table + 2 * lane0(_mm_unpackhi_epi64(index, index)));
    first = _mm_unpacklo_pd(r0, r1);
    second = _mm_unpackhi_pd(r0, r1);
  }
  static void lookup_rows3(const double* table, ireg index, reg& c0, reg& c1, reg& c2) {
    const double* p0 = table + 4 * lane0(index);
    const double* p1 = table + 4 * lane0(_mm_unpackhi_epi64(index, index));
    const reg r0 = _mm_loadu_pd(p0), r1 = _mm_loadu_pd(p1);
    c0 = _mm_unpacklo_pd(r0, r1);
    c1 = _mm_unpackhi_pd(r0, r1);
    c2 = _mm_set_pd(p1[2], p0[2]);
  }
  // Lane masks: all ones where a lane is outside [lo, hi] or NaN; mask ? b : a per lane.
  static reg not_within(reg a, reg lo, reg hi) {
    return _mm_or_pd(_mm_cmpnge_pd(a, lo), _mm_cmpnle_pd(a, hi));
  }
  static reg mask_or(reg a, reg b) { return _mm_or_pd(a, b); }
  static reg select(reg mask, reg a, reg b) {
    return _mm_or_pd(_mm_andnot_pd(mask, a), _mm_and_pd(mask, b));
  }
  static int lane_bits(reg mask) { return _mm_movemask_pd(mask); }
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
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm_fnmadd_ps(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm_add_ps(_mm_mul_ps(a, b), c); }
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm_sub_ps(c, _mm_mul_ps(a, b)); }
#endif
  static reg bit_xor(reg a, reg b) { return _mm_xor_ps(a, b); }
  static reg swap_pairs(reg v) { return _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1)); }
  static reg alternate(float e, float o) { return _mm_set_ps(o, e, o, e); }
  static void transpose(reg* r) { _MM_TRANSPOSE4_PS(r[0], r[1], r[2], r[3]); }
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
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm256_fnmadd_pd(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm256_add_pd(_mm256_mul_pd(a, b), c); }
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm256_sub_pd(c, _mm256_mul_pd(a, b)); }
#endif
  static reg bit_xor(reg a, reg b) { return _mm256_xor_pd(a, b); }
  static reg swap_pairs(reg v) { return _mm256_permute_pd(v, 0x5); }
  static reg alternate(double e, double o) { return _mm256_set_pd(o, e, o, e); }
  static void transpose(reg* r) {
    const reg t0 = _mm256_unpacklo_pd(r[0], r[1]), t1 = _mm256_unpackhi_pd(r[0], r[1]);
    const reg t2 = _mm256_unpacklo_pd(r[2], r[3]), t3 = _mm256_unpackhi_pd(r[2], r[3]);
    r[0] = _mm256_permute2f128_pd(t0, t2, 0x20);
    r[1] = _mm256_permute2f128_pd(t1, t3, 0x20);
    r[2] = _mm256_permute2f128_pd(t0, t2, 0x31);
    r[3] = _mm256_permute2f128_pd(t1, t3, 0x31);
  }
  // Interleaved pairs (re, im) in a, b (elements 0-1, 2-3) to their even and odd lanes, and
  // back: the halves regrouped as (0, 2) and (1, 3), then unpacked.
  static void deinterleave(reg a, reg b, reg& even, reg& odd) {
    const reg p02 = _mm256_permute2f128_pd(a, b, 0x20), p13 = _mm256_permute2f128_pd(a, b, 0x31);
    even = _mm256_unpacklo_pd(p02, p13);
    odd = _mm256_unpackhi_pd(p02, p13);
  }
  static void interleave(reg even, reg odd, reg& a, reg& b) {
    const reg p02 = _mm256_unpacklo_pd(even, odd), p13 = _mm256_unpackhi_pd(even, odd);
    a = _mm256_permute2f128_pd(p02, p13, 0x20);
    b = _mm256_permute2f128_pd(p02, p13, 0x31);
  }
#if defined(__AVX2__)
  static reg sub(reg a, reg b) { return _mm256_sub_pd(a, b); }
  static reg div(reg a, reg b) { return _mm256_div_pd(a, b); }
  // Bit patterns as 64-bit integer lanes.
  using ireg = __m256i;
  static ireg bits(reg v) { return _mm256_castpd_si256(v); }
  static reg from_bits(ireg v) { return _mm256_castsi256_pd(v); }
  static void store(int64_t* p, ireg v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static ireg iset(int64_t a) { return _mm256_set1_epi64x(a); }
  static ireg iadd(ireg a, ireg b) { return _mm256_add_epi64(a, b); }
  static ireg isub(ireg a, ireg b) { return _mm256_sub_epi64(a, b); }
  static ireg iand(ireg a, ireg b) { return _mm256_and_si256(a, b); }
  template <int s>
  static ireg shl(ireg a) { return _mm256_slli_epi64(a, s); }
  template <int s>
  static ireg shr(ireg a) {
    return _mm256_srli_epi64(a, s);
  }
  static reg top12_signed(ireg a) {
    const __m256i high = _mm256_srai_epi32(a, 20);
    const __m256i packed =
        _mm256_permutevar8x32_epi32(high, _mm256_setr_epi32(1, 3, 5, 7, 0, 0, 0, 0));
    return _mm256_cvtepi32_pd(_mm256_castsi256_si128(packed));
  }
  static reg load(const float* p) { return _mm256_cvtps_pd(_mm_loadu_ps(p)); }
  static void store(float* p, reg v) { _mm_storeu_ps(p, _mm256_cvtpd_ps(v)); }
  // table[index[k]] in lane k, and the two columns of a table of pairs: one load per lane.
  template <class I>
  static reg lookup(const double* table, const I* index) {
    return _mm256_setr_pd(table[index[0]], table[index[1]], table[index[2]], table[index[3]]);
  }
  template <class I>
  static void lookup_pairs(const double* table, const I* index, reg& first, reg& second) {
    reg r02 = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(table + 2 * index[0])),
                                   _mm_loadu_pd(table + 2 * index[2]), 1);
    reg r13 = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(table + 2 * index[1])),
                                   _mm_loadu_pd(table + 2 * index[3]), 1);
    first = _mm256_unpacklo_pd(r02, r13);
    second = _mm256_unpackhi_pd(r02, r13);
  }
  static void lookup_pairs(const double* table, ireg index, reg& first, reg& second) {
    alignas(32) int64_t i[4];
    store(i, index);
    lookup_pairs(table, i, first, second);
  }
  // One load per lane and a transpose, cheaper than three gathers on Zen 3 (bench/RESULTS.md,
  // "Vector math: power").
  static void lookup_rows3(const double* table, ireg index, reg& c0, reg& c1, reg& c2) {
    alignas(32) int64_t i[4];
    store(i, index);
    reg rows[4] = {load(table + 4 * i[0]), load(table + 4 * i[1]), load(table + 4 * i[2]),
                   load(table + 4 * i[3])};
    transpose(rows);
    c0 = rows[0];
    c1 = rows[1];
    c2 = rows[2];
  }
  // Lane masks: all ones where a lane is outside [lo, hi] or NaN; mask ? b : a per lane.
  static reg not_within(reg a, reg lo, reg hi) {
    return _mm256_or_pd(_mm256_cmp_pd(a, lo, _CMP_NGE_UQ), _mm256_cmp_pd(a, hi, _CMP_NLE_UQ));
  }
  static reg mask_or(reg a, reg b) { return _mm256_or_pd(a, b); }
  static reg select(reg mask, reg a, reg b) { return _mm256_blendv_pd(a, b, mask); }
  static int lane_bits(reg mask) { return _mm256_movemask_pd(mask); }
#endif
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
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm256_fnmadd_ps(a, b, c); }
#else
  static reg mul_add(reg a, reg b, reg c) { return _mm256_add_ps(_mm256_mul_ps(a, b), c); }
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm256_sub_ps(c, _mm256_mul_ps(a, b)); }
#endif
  static reg bit_xor(reg a, reg b) { return _mm256_xor_ps(a, b); }
  static reg swap_pairs(reg v) { return _mm256_permute_ps(v, 0xb1); }
  static reg alternate(float e, float o) { return _mm256_set_ps(o, e, o, e, o, e, o, e); }
  // Pairs of rows interleaved, then 2 x 2 blocks gathered within each half, then the halves.
  static void transpose(reg* r) {
    reg t[8], u[8];
    for (int i = 0; i < 8; i += 2) {
      t[i] = _mm256_unpacklo_ps(r[i], r[i + 1]);
      t[i + 1] = _mm256_unpackhi_ps(r[i], r[i + 1]);
    }
    for (int i = 0; i < 8; i += 4) {
      u[i] = _mm256_shuffle_ps(t[i], t[i + 2], _MM_SHUFFLE(1, 0, 1, 0));
      u[i + 1] = _mm256_shuffle_ps(t[i], t[i + 2], _MM_SHUFFLE(3, 2, 3, 2));
      u[i + 2] = _mm256_shuffle_ps(t[i + 1], t[i + 3], _MM_SHUFFLE(1, 0, 1, 0));
      u[i + 3] = _mm256_shuffle_ps(t[i + 1], t[i + 3], _MM_SHUFFLE(3, 2, 3, 2));
    }
    for (int i = 0; i < 4; ++i) {
      r[i] = _mm256_permute2f128_ps(u[i], u[i + 4], 0x20);
      r[i + 4] = _mm256_permute2f128_ps(u[i], u[i + 4], 0x31);
    }
  }
#if defined(__AVX2__)
  static reg sub(reg a, reg b) { return _mm256_sub_ps(a, b); }
  // Bit patterns as 32-bit integer lanes.
  using ireg = __m256i;
  static ireg bits(reg v) { return _mm256_castps_si256(v); }
  static reg from_bits(ireg v) { return _mm256_castsi256_ps(v); }
  static reg from_int(ireg v) { return _mm256_cvtepi32_ps(v); }
  static void store(int32_t* p, ireg v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
  static ireg iset(int32_t a) { return _mm256_set1_epi32(a); }
  static ireg iadd(ireg a, ireg b) { return _mm256_add_epi32(a, b); }
  static ireg isub(ireg a, ireg b) { return _mm256_sub_epi32(a, b); }
  static ireg iand(ireg a, ireg b) { return _mm256_and_si256(a, b); }
  template <int s>
  static ireg shl(ireg a) { return _mm256_slli_epi32(a, s); }
  template <int s>
  static ireg shr(ireg a) { return _mm256_srli_epi32(a, s); }
  template <int s>
  static ireg sar(ireg a) { return _mm256_srai_epi32(a, s); }
  // table[index & 7] in each lane, from a register that holds the eight entries.
  static reg permute(reg table, ireg index) { return _mm256_permutevar8x32_ps(table, index); }
  static reg not_within(reg a, reg lo, reg hi) {
    return _mm256_or_ps(_mm256_cmp_ps(a, lo, _CMP_NGE_UQ), _mm256_cmp_ps(a, hi, _CMP_NLE_UQ));
  }
  static reg mask_or(reg a, reg b) { return _mm256_or_ps(a, b); }
  static reg select(reg mask, reg a, reg b) { return _mm256_blendv_ps(a, b, mask); }
  static int lane_bits(reg mask) { return _mm256_movemask_ps(mask); }
#endif
};

#if defined(__AVX2__)

// Eight floats as two registers of four doubles (lanes 0-3, 4-7) and back, rounding once.
inline __m256d widen_low(__m256 v) { return _mm256_cvtps_pd(_mm256_castps256_ps128(v)); }
inline __m256d widen_high(__m256 v) { return _mm256_cvtps_pd(_mm256_extractf128_ps(v, 1)); }
inline __m256 narrow(__m256d low, __m256d high) {
  return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm256_cvtpd_ps(low)), _mm256_cvtpd_ps(high),
                              1);
}
// The low 32 bits of each 64-bit lane of low and high, as eight 32-bit lanes.
inline __m256i narrow(__m256i low, __m256i high) {
  const __m256i pick = _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6);
  return _mm256_permute2x128_si256(_mm256_permutevar8x32_epi32(low, pick),
                                   _mm256_permutevar8x32_epi32(high, pick), 0x20);
}

#endif

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
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm512_fnmadd_pd(a, b, c); }
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
  static reg neg_mul_add(reg a, reg b, reg c) { return _mm512_fnmadd_ps(a, b, c); }
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

// Whether mul_add, of every register type, rounds once.
#if defined(__FMA__)
inline constexpr bool fused_mul_add = true;
#else
inline constexpr bool fused_mul_add = false;
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

}  // namespace tav::...
