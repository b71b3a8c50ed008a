// The cached allocation: slot choice in the calling thread's record, and the cached exports.
#include "service/memory/thread_cache.hpp"

#include <tav/tav_memory.h>

#include "common/exports.hpp"
#include "service/memory/manager_start.hpp"
#include "service/memory/system_blocks.hpp"
#include "service/memory/thread_records.hpp"
#include "service/memory/uncached_blocks.hpp"

namespace tav::service {
namespace {

thread_record& owner_of(const block_header& header) {
  return *static_cast<thread_record*>(header.origin);
}

}  // namespace

void* cached_allocate(size_t size, size_t alignment) {
  thread_record* record = own_record();
  if (record == nullptr) return uncached_allocate(size, alignment);
  // size is at most 128 MiB and alignment at most 2^30, so the sums cannot overflow.
  const size_t need = size + alignment;
  std::unique_lock guard(record->lock);
  const slot_choice choice = choose_slot(record->slots, need);
  if (choice.action == slot_action::uncached) {
    guard.unlock();
    return uncached_allocate(size, alignment);
  }
  cache_slot& slot = record->slots[choice.index];
  if (choice.action == slot_action::replace) {
    release_block(slot.block);
    slot = cache_slot{};
  }
  if (choice.action != slot_action::take) {
    system_block block = acquire_block(need + cached_bookkeeping_bytes);
    if (block.start == nullptr) return nullptr;
    slot.block = block;
    slot.capacity = need;
  }
  slot.in_use = true;
  slot.size = size;
  slot.aligned = place_pointer(slot.block.start, cached_bookkeeping_bytes, alignment,
                               {record, static_cast<uint64_t>(choice.index), block_kind::cached});
  return slot.aligned;
}

void cached_release(const block_header& header) {
  thread_record& record = owner_of(header);
  std::lock_guard guard(record.lock);
  record.slots[header.extent].in_use = false;
}

size_t cached_size(const block_header& header) {
  thread_record& record = owner_of(header);
  std::lock_guard guard(record.lock);
  return record.slots[header.extent].size;
}

}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT void* tav_serv_allocate(size_t size, int alignment) {
  if (size == 0) return nullptr;
  start_memory_manager();
  const size_t aligned_to = effective_alignment(alignment);
  if (cache_disabled() || size > largest_cached_request) return uncached_allocate(size, aligned_to);
  return cached_allocate(size, aligned_to);
}

TAV_EXPORT void tav_serv_deallocate(void* pointer) { release_pointer(pointer); }
