// Which of the eight code paths this processor can run, read from its own feature bits (the
// library's CPU type may be lower, since it looks at the vendor as well).
#pragma once

namespace tav {

// Each path needs its own instructions and those of the paths below it (cnr_def aside).
inline bool path_runs(int id) {
  __builtin_cpu_init();
  switch (id) {
    case 0:
    case 1: return true;
    case 2: return __builtin_cpu_supports("ssse3");
    case 3:
      return path_runs(2) && __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
    case 4: return path_runs(3) && __builtin_cpu_supports("avx");
    case 5:
      return path_runs(4) && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
             __builtin_cpu_supports("bmi2");
    case 6:
      return path_runs(5) && __builtin_cpu_supports("avx512f") &&
             __builtin_cpu_supports("avx512cd");
    case 7:
      return path_runs(5) && __builtin_cpu_supports("avx512f") &&
             __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
             __builtin_cpu_supports("avx512vl");
    default: return false;
  }
}

}  // namespace tav
