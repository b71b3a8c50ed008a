// The tags of the code paths, for messages and reports.
#include "service/dispatch/path_rule.hpp"

namespace tav::service {

const char* path_tag(int id) {
  static constexpr const char* tags[path_count] = {"def", "cnr_def", "mc", "mc3",
                                                   "avx", "avx2", "avx512_tp", "avx512"};
  return id >= 0 && id < path_count ? tags[id] : "?";
}

}  // namespace tav::service
