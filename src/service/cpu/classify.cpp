// The detection ladder, the instruction limit and the reproducibility-target mapping.
#include "service/cpu/classify.hpp"

#include <cstring>

#include "service/cpu/features.hpp"

namespace tav::service {
namespace {

// What each class needs, by class number 0 to 9 (VNNI is asked separately for 9).
constexpr uint64_t class_mask(int type) {
  using namespace feature_mask;
  switch (type) {
    case 0:
    case 1: return sse2;
    case 2: return sse2 | ssse3;
    case 3: return sse2 | ssse3 | sse4_2;
    case 4: return sse2 | ssse3 | sse4_2 | avx;
    case 5: return sse2 | ssse3 | sse4_2 | avx | avx2;
    case 6: return sse2 | ssse3 | sse4_2 | avx | avx2 | avx512_tp;
    case 7: return sse2 | ssse3 | sse4_2 | avx | avx2 | avx512;
    case 8: return class_mask(6) | avx512_tp_e1;
    case 9: return class_mask(7);
    default: return ~0ull;
  }
}

}  // namespace

int ladder_type(const processor& cpu, const enable_flags& flags) {
  using namespace feature_mask;
  const uint64_t f = cpu.features;
  if (!has(f, sse2)) return -1;
  if (!cpu.orvat) return 0;
  if (flags.avx512 && has(f, avx | avx2 | avx512)) return flags.avx512_e1 && cpu.vnni ? 9 : 7;
  if (flags.avx512_tp && has(f, avx512_tp)) return flags.avx512_tp_e1 && has(f, avx512_tp_e1) ? 8 : 6;
  if (flags.avx2 && has(f, avx | avx2)) return 5;
  if (flags.avx && has(f, avx)) return 4;
  if (flags.sse4_2 && has(f, sse4_2)) return 3;
  if (has(f, ssse3)) return 2;
  return 0;
}

bool supports_type(const processor& cpu, int type) {
  if (type < 0 || type > 9) return false;
  return has(cpu.features, class_mask(type)) && (type != 9 || cpu.vnni);
}

int cbwr_target_type(int branch) {
  switch (branch & 63) {
    case 3: return 1;
    case 4:
    case 5: return 0;
    case 6:
    case 7: return 2;
    case 8: return 3;
    case 9: return 4;
    case 10: return 5;
    case 11: return 6;
    case 12: return 7;
    case 13: return 8;
    case 14: return 9;
    default: return -1;
  }
}

int target_type(const processor& cpu, const enable_flags& flags, int target) {
  if (!supports_type(cpu, target)) return -1;
  if (target <= 1) return target;
  // Classify a processor that has no more than the target's features: the ladder then stops at
  // the target unless an instruction limit forbids it, and never goes above it.
  processor limited = cpu;
  limited.features &= class_mask(target);
  limited.vnni = cpu.vnni && target == 9;
  limited.orvat = true;
  return ladder_type(limited, flags);
}

int parse_enable_instructions(const char* value) {
  static constexpr struct {
    const char* name;
    int level;
  } names[] = {{"AVX512_E1", 6}, {"AVX512_TP_E1", 5}, {"AVX512_TP", 3}, {"AVX512", 4},
               {"AVX2", 2},      {"AVX", 1},          {"SSE4_2", 0}};
  if (value == nullptr) return -1;
  for (const auto& n : names)
    if (std::strcmp(value, n.name) == 0) return n.level;
  return -1;
}

int apply_enable_level(const processor& cpu, bool type_forced, int level, enable_flags& flags) {
  using namespace feature_mask;
  if (!cpu.orvat || type_forced || level < 0 || level > 6) return 0;
  static constexpr uint64_t needs[] = {sse4_2, avx, avx2, avx512_tp, avx512, avx512_tp_e1, 0};
  if (!has(cpu.features, needs[level])) return 0;
  if (level == 6 && !cpu.vnni) return 0;
  //         level:   0  1  2  3  4  5  6
  static constexpr bool table[7][7] = {
      /* sse4_2 */ {1, 1, 1, 1, 1, 1, 1},
      /* avx */ {0, 1, 1, 1, 1, 1, 1},
      /* avx2 */ {0, 0, 1, 1, 1, 1, 1},
      /* avx512 */ {0, 0, 0, 0, 1, 0, 1},
      /* avx512_e1 */ {0, 0, 0, 0, 0, 0, 1},
      /* avx512_tp */ {0, 0, 0, 1, 0, 1, 0},
      /* avx512_tp_e1 */ {0, 0, 0, 0, 0, 1, 0},
  };
  flags = {table[0][level], table[1][level], table[2][level], table[3][level],
           table[4][level], table[5][level], table[6][level]};
  return 1;
}

int auto_branch(const processor& cpu, int type) {
  if (!cpu.orvat) return 2;
  switch (type) {
    case 0:
    case 1: return 4;
    case 2: return has(cpu.features, feature::sse4_1) ? 7 : 6;
    default: return type >= 3 && type <= 9 ? type + 5 : -4;
  }
}

}  // namespace tav::service
