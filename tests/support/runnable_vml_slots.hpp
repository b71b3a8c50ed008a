// The vector-math table slots whose code paths this processor can run, for unit tests that call
// every path's kernels through the tables directly.
#pragma once

#include <vector>

namespace tav::test {

struct vml_slot {
  const char* tag;  // the code path
  int slot;         // its vector-math CPU type, the table column that holds its family
};

inline std::vector<vml_slot> runnable_vml_slots() {
  __builtin_cpu_init();
  std::vector<vml_slot> out = {{"def", 0}, {"cnr_def", 1}};
  if (__builtin_cpu_supports("ssse3")) out.push_back({"mc", 3});
  if (__builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt")) out.push_back({"mc3", 5});
  if (__builtin_cpu_supports("avx")) out.push_back({"avx", 6});
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) out.push_back({"avx2", 7});
  return out;
}

}  // namespace tav::test
