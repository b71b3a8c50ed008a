// Fills the feature word from CPUID and XGETBV.
#include "service/cpu/features.hpp"

#include <cpuid.h>

namespace tav::service {
namespace {

struct registers {
  unsigned a = 0, b = 0, c = 0, d = 0;
};

registers cpuid(unsigned leaf, unsigned subleaf = 0) {
  registers r;
  if (__get_cpuid_max(leaf & 0x80000000u, nullptr) < leaf) return r;
  __cpuid_count(leaf, subleaf, r.a, r.b, r.c, r.d);
  return r;
}

uint64_t xcr0() {
  unsigned lo, hi;
  __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (static_cast<uint64_t>(hi) << 32) | lo;
}

constexpr bool bit(unsigned word, int n) { return (word >> n) & 1u; }

}  // namespace

uint64_t read_feature_word() {
  registers l1 = cpuid(1);
  registers l7 = cpuid(7);
  registers ext = cpuid(0x80000001u);
  uint64_t w = 0;
  auto set = [&w](bool present, uint64_t f) {
    if (present) w |= f;
  };
  set(bit(l1.d, 26), feature::sse2);
  set(bit(l1.c, 0), feature::sse3);
  set(bit(l1.c, 0) && bit(l1.c, 9), feature::ssse3);
  set(bit(l1.c, 19), feature::sse4_1);
  bool v2 = bit(l1.c, 0) && bit(l1.c, 9) && bit(l1.c, 19) && bit(l1.c, 20) && bit(l1.c, 23) &&
            bit(l1.c, 13) && bit(ext.c, 0);
  set(v2, feature::sse4_2);

  // AVX state needs OSXSAVE and the OS saving XMM and YMM; AVX-512 also opmask, ZMM_Hi256, Hi16_ZMM.
  bool osxsave = bit(l1.c, 27);
  uint64_t xcr = osxsave ? xcr0() : 0;
  bool ymm_state = (xcr & 0x6) == 0x6;
  bool zmm_state = (xcr & 0xE6) == 0xE6;
  if (!(v2 && bit(l1.c, 28) && ymm_state)) return w;
  w |= feature::avx;
  set(bit(l1.c, 12), feature::fma);
  set(bit(l7.b, 5), feature::avx2);
  set(bit(l7.b, 3) && bit(l7.b, 8), feature::bmi);
  set(bit(l1.c, 29), feature::f16c);
  set(bit(ext.c, 5) && bit(l1.c, 22), feature::lzcnt_movbe);
  if (!zmm_state || !bit(l7.b, 16) || !bit(l7.b, 28)) return w;
  w |= feature::avx512f;
  set(bit(l7.b, 31), feature::avx512vl);
  set(bit(l7.b, 30), feature::avx512bw);
  set(bit(l7.b, 17), feature::avx512dq);
  set(bit(l7.b, 27), feature::avx512er);
  set(bit(l7.b, 26), feature::avx512pf);
  set(bit(l7.c, 0), feature::prefetchwt1);
  set(bit(l7.d, 3), feature::avx5124fmaps);
  set(bit(l7.d, 2), feature::avx5124vnniw);
  return w;
}

bool read_orvat_vendor() {
  // The Orvat vendor identification of CPUID leaf 0 (EBX, EDX, ECX), kept scrambled.
  constexpr unsigned key = 0x5bd1e995u;
  constexpr unsigned ebx = 0x2ebf8cd2u ^ key, edx = 0x12b487fcu ^ key, ecx = 0x37b49dfbu ^ key;
  registers l0;
  __cpuid(0, l0.a, l0.b, l0.c, l0.d);
  return l0.b == ebx && l0.d == edx && l0.c == ecx;
}

bool read_vnni() { return bit(cpuid(7).c, 11); }

}  // namespace tav::service
