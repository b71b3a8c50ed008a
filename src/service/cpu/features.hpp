// The processor feature word: which bit stands for what, and how CPUID and XGETBV fill it.
#pragma once

#include <cstdint>

namespace tav::service {

// Bits of the feature word. A bit is set only when the instructions it names can run, register
// state included (XGETBV), so each class test is a plain mask test.
namespace feature {
inline constexpr uint64_t sse2 = 1ull << 6;
inline constexpr uint64_t sse3 = 1ull << 7;
inline constexpr uint64_t ssse3 = 1ull << 8;      // with SSE3
inline constexpr uint64_t sse4_1 = 1ull << 9;
inline constexpr uint64_t sse4_2 = 1ull << 10;    // the x86-64-v2 set: SSE4.1/4.2, POPCNT, CX16, LAHF
inline constexpr uint64_t fma = 1ull << 13;
inline constexpr uint64_t avx = 1ull << 16;       // with YMM state enabled by the OS
inline constexpr uint64_t avx2 = 1ull << 18;
inline constexpr uint64_t bmi = 1ull << 19;       // BMI1 and BMI2
inline constexpr uint64_t f16c = 1ull << 20;
inline constexpr uint64_t lzcnt_movbe = 1ull << 23;
inline constexpr uint64_t avx512vl = 1ull << 24;
inline constexpr uint64_t avx512f = 1ull << 27;   // foundation and conflict detection, ZMM state
inline constexpr uint64_t avx512er = 1ull << 32;
inline constexpr uint64_t avx512pf = 1ull << 33;
inline constexpr uint64_t prefetchwt1 = 1ull << 34;
inline constexpr uint64_t avx512bw = 1ull << 37;
inline constexpr uint64_t avx512dq = 1ull << 38;
inline constexpr uint64_t avx5124fmaps = 1ull << 40;
inline constexpr uint64_t avx5124vnniw = 1ull << 41;
}  // namespace feature

// The class masks; a class is present when every bit of its mask is.
namespace feature_mask {
inline constexpr uint64_t sse2 = 0x40;
inline constexpr uint64_t ssse3 = 0x100;
inline constexpr uint64_t sse4_2 = 0x400;
inline constexpr uint64_t avx = 0x10000;
inline constexpr uint64_t avx2 = 0x9C2000;
inline constexpr uint64_t avx512 = 0x6009000000;
inline constexpr uint64_t avx512_tp = 0x708000000;
inline constexpr uint64_t avx512_tp_e1 = 0x30000000000;
}  // namespace feature_mask

static_assert(feature_mask::avx2 ==
              (feature::fma | feature::avx2 | feature::bmi | feature::f16c | feature::lzcnt_movbe));
static_assert(feature_mask::avx512 ==
              (feature::avx512f | feature::avx512vl | feature::avx512bw | feature::avx512dq));
static_assert(feature_mask::avx512_tp ==
              (feature::avx512f | feature::avx512er | feature::avx512pf | feature::prefetchwt1));
static_assert(feature_mask::avx512_tp_e1 == (feature::avx5124fmaps | feature::avx5124vnniw));

constexpr bool has(uint64_t features, uint64_t mask) { return (features & mask) == mask; }

// Reads the processor: the feature word, whether it is an Orvat processor, and VNNI.
uint64_t read_feature_word();
bool read_orvat_vendor();
bool read_vnni();

}  // namespace tav::service
