// The rule that maps a CPU type and the reproducibility branch to a code path.
#pragma once

namespace tav::service {

// Path ids, in the order of every dispatch table.
enum path_id : int {
  path_def = 0,
  path_cnr_def = 1,
  path_mc = 2,
  path_mc3 = 3,
  path_avx = 4,
  path_avx2 = 5,
  path_avx512_tp = 6,
  path_avx512 = 7,
};
inline constexpr int path_count = 8;

// Types 0 and 1 take def and type 2 takes mc while reproducibility is off (branch 1), cnr_def
// otherwise; types 3 to 7 take the path of the same number. -1 for any other type.
constexpr int path_for(int cpu_type, int branch) {
  if (cpu_type == 0 || cpu_type == 1) return branch == 1 ? path_def : path_cnr_def;
  if (cpu_type == 2) return branch == 1 ? path_mc : path_cnr_def;
  if (cpu_type >= 3 && cpu_type <= 7) return cpu_type;
  return -1;
}

const char* path_tag(int id);

}  // namespace tav::service
