// The vector-math table slots whose code paths this processor can run, for unit tests that call
// every path's kernels through the tables directly.
#pragma once

#include <vector>

#include "code_paths.hpp"

namespace tav::test {

struct vml_slot {
  const char* tag;  // the code path
  int slot;         // its vector-math CPU type, the table column that holds its family
};

inline std::vector<vml_slot> runnable_vml_slots() {
  static constexpr int column[6] = {0, 1, 3, 5, 6, 7};
  std::vector<vml_slot> out;
  for (int id = 0; id < 6; ++id)
    if (path_runs(id)) out.push_back({path_tags[id], column[id]});
  return out;
}

}  // namespace tav::test
