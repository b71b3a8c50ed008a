// The reproducibility-mode decisions: TAV_CBWR names, target compatibility and the setter's rules.
#include "service/cbwr/cbwr_rules.hpp"

#include <cstring>

namespace tav::service {
namespace {

constexpr const char branch_prefix[] = "BRANCH=";

// The environment's names in the order they are compared. A name matches only when the value
// ends right after it, so the longer names that share a stem are listed first.
constexpr struct {
  const char* name;
  int branch;
} branch_names[] = {
    {"AUTO", 2},       {"COMPATIBLE", 3}, {"SSE2", 4},          {"SSE3", 4},
    {"SSSE3", 6},      {"SSE4_1", 7},     {"SSE4_2", 8},        {"AVX", 9},
    {"AVX2", 10},      {"AVX512_TP_E1", 13}, {"AVX512_TP", 11}, {"AVX512_E1", 14},
    {"AVX512", 12},
};

constexpr int auto_branch_code = 2;
constexpr int off_branch_code = 1;
constexpr int compatible_branch_code = 3;

}  // namespace

int cbwr_branch_by_name(const char* value) {
  if (value == nullptr) return -1;
  if (std::strncmp(value, branch_prefix, sizeof branch_prefix - 1) == 0)
    value += sizeof branch_prefix - 1;
  for (const auto& entry : branch_names) {
    size_t length = std::strlen(entry.name);
    if (std::strncmp(value, entry.name, length) == 0 && value[length] == '\0') return entry.branch;
  }
  return -1;
}

bool cbwr_target_runnable(const processor& cpu, int branch) {
  if (branch == compatible_branch_code) return true;
  if (!cpu.orvat) return false;
  int type = cbwr_target_type(branch);
  if (!supports_type(cpu, type)) return false;
  // The many-core classes (6, 8) sit beside the ladder and the E1 classes (8, 9) need their own
  // instructions, so their features alone decide. For the others the features are not enough:
  // SSE4_1 (7) and SSSE3 (6) share class 2, and only the auto branch, which asks for SSE4.1,
  // tells them apart. Numeric order of branch codes is the ladder's order once the features
  // are present: an AVX-512 class that supports 12 never has the many-core auto branch 11.
  if (type == 6 || type == 8 || type == 9) return true;
  const enable_flags all_enabled;
  int ladder_code = branch == 5 ? 4 : branch;  // 5 is an unnamed twin of SSE2 (class 0)
  return ladder_code <= auto_branch(cpu, ladder_type(cpu, all_enabled));
}

cbwr_environment_choice cbwr_branch_from_environment(const processor& cpu, const char* value) {
  // Absent, empty and unknown values all mean "off": a misspelt name must not silently change
  // which code path runs, and OFF is what an absent variable gives.
  int branch = cbwr_branch_by_name(value);
  if (branch < 0) return {off_branch_code, false};
  if (branch > auto_branch_code && !cbwr_target_runnable(cpu, branch)) return {auto_branch_code, true};
  return {branch, false};
}

int cbwr_apply_set(const processor& cpu, bool cpu_detected, int mode, cbwr_state& state) {
  constexpr int success = 0, unsupported = -3, unknown = -4, frozen = -8;
  if (cpu_detected || state.source == cbwr_source_call) return mode == state.word ? success : frozen;
  if (mode < 0 || mode > cbwr_last_branch) return unknown;
  if (mode == 0) {
    state = {0, cbwr_source_environment};
    return success;
  }
  if (mode > auto_branch_code && !cbwr_target_runnable(cpu, mode)) return unsupported;
  state = {mode, cbwr_source_call};
  return success;
}

}  // namespace tav::service
