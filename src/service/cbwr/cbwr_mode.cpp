// The process-wide reproducibility mode: TAV_CBWR read once, the getters, the setter and their
// exported forms.
#include <tav/tav_cbwr.h>
#include <tav/tav_error.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "common/exports.hpp"
#include "service/cbwr/cbwr_rules.hpp"
#include "service/cpu/cpu_state.hpp"

namespace tav::service {
namespace {

// Written only under the detection lock. Once non-zero it changes only through the setter, which
// also holds the lock, so readers that see a non-zero word may use it without the lock.
std::atomic<int> mode_word{0};
// Guarded by the detection lock.
int mode_source = cbwr_source_unread;

constexpr int branch_bits = 63;
constexpr size_t value_bound = 128;

// Reads TAV_CBWR once and stores its branch; the caller holds the detection lock.
void read_environment_locked() {
  const char* raw = std::getenv("TAV_CBWR");
  char value[value_bound + 1] = {};
  if (raw != nullptr) std::strncpy(value, raw, value_bound);
  cbwr_environment_choice choice =
      cbwr_branch_from_environment(this_processor(), raw != nullptr ? value : nullptr);
  if (choice.fell_back) tav_serv_print(0, 1209, 0);
  mode_word.store(choice.branch, std::memory_order_release);
  mode_source = cbwr_source_environment;
}

// The branch, reading the environment first while the mode is unset; the caller holds the lock.
int branch_locked() {
  if (mode_word.load(std::memory_order_relaxed) == 0 && mode_source == cbwr_source_unread)
    read_environment_locked();
  return mode_word.load(std::memory_order_relaxed) & branch_bits;
}

constexpr bool valid_which(int which) { return which == TAV_CBWR_BRANCH || which == TAV_CBWR_ALL; }

}  // namespace
}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT int tav_serv_cbwr_get(int which) {
  if (!valid_which(which)) return TAV_CBWR_ERR_INVALID_INPUT;
  int word = mode_word.load(std::memory_order_acquire);
  if (word != 0) return word & branch_bits;
  std::lock_guard guard(detection_lock());
  return branch_locked();
}
TAV_EXPORT_ALIAS(TAV_CBWR_Get, tav_serv_cbwr_get);
TAV_EXPORT int TAV_CBWR_GET(const int* which) { return tav_serv_cbwr_get(*which); }

// For CPU detection, which already holds the detection lock.
TAV_EXPORT int tav_serv_cbwr_get_nolock(int which) {
  if (!valid_which(which)) return TAV_CBWR_ERR_INVALID_INPUT;
  return branch_locked();
}

TAV_EXPORT int tav_serv_cbwr_get_auto_branch(void) {
  return auto_branch(this_processor(), cpu_class());
}
TAV_EXPORT_ALIAS(TAV_CBWR_Get_Auto_Branch, tav_serv_cbwr_get_auto_branch);
TAV_EXPORT_ALIAS(TAV_CBWR_GET_AUTO_BRANCH, tav_serv_cbwr_get_auto_branch);

TAV_EXPORT int tav_serv_cbwr_set(int mode) {
  std::lock_guard guard(detection_lock());
  cbwr_state state{mode_word.load(std::memory_order_relaxed), mode_source};
  int status = cbwr_apply_set(this_processor(), cpu_type_detected(), mode, state);
  mode_word.store(state.word, std::memory_order_release);
  mode_source = state.source;
  return status;
}
TAV_EXPORT_ALIAS(TAV_CBWR_Set, tav_serv_cbwr_set);
TAV_EXPORT int TAV_CBWR_SET(const int* mode) { return tav_serv_cbwr_set(*mode); }
