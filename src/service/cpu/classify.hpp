// Processor classification as pure functions of (vendor flag, feature word, enable flags, branch),
// so that every processor class can be tested on any machine.
#pragma once

#include <cstdint>

namespace tav::service {

// The seven enable flags; a cleared flag forbids detection from choosing the class it names.
struct enable_flags {
  bool sse4_2 = true;
  bool avx = true;
  bool avx2 = true;
  bool avx512 = true;
  bool avx512_e1 = true;
  bool avx512_tp = true;
  bool avx512_tp_e1 = true;
};

// The processor as detection sees it.
struct processor {
  bool orvat = false;
  uint64_t features = 0;
  bool vnni = false;
};

// Hardware classification: 0 to 9 (8 and 9 are the E1 refinements of 6 and 7), or -1 without SSE2.
int ladder_type(const processor& cpu, const enable_flags& flags);

// Whether the processor has the features of CPU class `type` (0 to 9).
bool supports_type(const processor& cpu, int type);

// The CPU class that a reproducibility branch targets (its low six bits), or -1.
int cbwr_target_type(int branch);

// The class detection settles on under a target branch: the target class, lowered by the
// enable flags where they forbid it; -1 when the processor cannot run the target at all.
int target_type(const processor& cpu, const enable_flags& flags, int target);

// Parses TAV_ENABLE_INSTRUCTIONS: the level 0 to 6, or -1 for anything else.
int parse_enable_instructions(const char* value);

// Applies an instruction limit to `flags`; returns 1 if applied, 0 if refused (flags unchanged).
int apply_enable_level(const processor& cpu, bool type_forced, int level, enable_flags& flags);

// Types 8 and 9 are stored as 6 and 7.
constexpr int stored_type(int type) { return type == 8 ? 6 : type == 9 ? 7 : type; }

// The vector-math CPU type of a stored CPU type: 0, 1, 3, 5, 6, 7, 8, 9 for 0 to 7.
constexpr int vml_type(int type) { return type < 2 ? type : type == 2 ? 3 : type + 2; }

// The auto reproducibility branch for a processor of class `type` (0 to 9).
int auto_branch(const processor& cpu, int type);

}  // namespace tav::service
