// Taking blocks from and returning them to the system functions chosen at the manager's start,
// with the high-bandwidth budget and the statistics kept in step.
#include "service/memory/system_blocks.hpp"

#include "service/memory/high_bandwidth.hpp"
#include "service/memory/manager_start.hpp"
#include "service/memory/statistics.hpp"

namespace tav::service {
namespace {

// High-bandwidth memory first; a refused or failed request leaves the budget as it was.
void* try_fast(size_t bytes) {
  if (!chosen_system_functions().high_bandwidth || !high_bandwidth_budget().take(bytes))
    return nullptr;
  void* start = fast_allocate(bytes);
  if (start == nullptr) high_bandwidth_budget().give_back(bytes);
  return start;
}

}  // namespace

system_block acquire_block(size_t bytes) {
  system_block block{try_fast(bytes), bytes, false};
  block.fast = block.start != nullptr;
  if (!block.fast) block.start = chosen_system_functions().allocate(bytes);
  if (block.start != nullptr) count_block(bytes);
  return block;
}

void release_block(const system_block& block) {
  if (block.fast) {
    fast_release(block.start);
    high_bandwidth_budget().give_back(block.bytes);
  } else {
    chosen_system_functions().release(block.start);
  }
  uncount_block(block.bytes);
}

void* plain_allocate(size_t bytes) { return chosen_system_functions().allocate(bytes); }

void plain_release(void* start) { chosen_system_functions().release(start); }

}  // namespace tav::service
