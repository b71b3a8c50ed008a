// The per-thread cache records: one per thread, found through a thread-specific key, and listed
// in a registry so that a release of all caches can reach every thread's record.
#pragma once

#include <mutex>

#include "service/memory/slot_choice.hpp"

namespace tav::service {

struct thread_record {
  // Held by the owning thread while it changes a slot, and by any thread that releases the
  // record's idle slots, so neither sees a slot half-changed. Uncontended in the common case.
  std::mutex lock;
  cache_slot slots[cache_slots];
  thread_record* previous = nullptr;  // registry links, under the registry lock
  thread_record* next = nullptr;
};

// The calling thread's record, made on first use; null when it cannot be made. The manager must
// have started.
thread_record* own_record();

// Returns the blocks of the record's idle slots to the system; the record's lock is held.
void release_idle_slots_locked(thread_record& record);

}  // namespace tav::service
