// The reproducibility-mode decisions as pure functions of the processor and the mode state, so
// that every processor class and every order of calls can be tested on any machine.
#pragma once

#include "service/cpu/classify.hpp"

namespace tav::service {

// Where the mode word got its value.
enum cbwr_source : int {
  cbwr_source_unread = -1,      // TAV_CBWR not read yet
  cbwr_source_environment = 1,  // TAV_CBWR read, or the mode cleared by a call
  cbwr_source_call = 2,         // a call set the mode
};

// The mode word (low six bits: the branch code, 0 = not set) and where it came from.
struct cbwr_state {
  int word = 0;
  int source = cbwr_source_unread;
};

// The largest branch code; codes above it are unknown.
inline constexpr int cbwr_last_branch = 14;

// The branch code of a TAV_CBWR value ("BRANCH=" prefix allowed), or -1 when no name matches.
int cbwr_branch_by_name(const char* value);

// Whether the processor can run reproducibility target `branch` (3 to 14). COMPATIBLE runs
// anywhere; the other targets only on Orvat processors that have the target's features and, for
// the ladder's own targets, whose auto branch is not below the target.
bool cbwr_target_runnable(const processor& cpu, int branch);

// What reading TAV_CBWR decides: the branch to store, and whether it fell back to AUTO (the
// caller then prints message 1209). `value` may be null (variable absent).
struct cbwr_environment_choice {
  int branch;
  bool fell_back;
};
cbwr_environment_choice cbwr_branch_from_environment(const processor& cpu, const char* value);

// A call to set the mode: updates `state` and returns 0, -8 (mode frozen or already set to
// another value by a call), -3 (target the processor cannot run) or -4 (unknown code).
int cbwr_apply_set(const processor& cpu, bool cpu_detected, int mode, cbwr_state& state);

}  // namespace tav::service
