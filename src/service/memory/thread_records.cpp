// Thread records: the thread-specific key and its clean-up, the registry of live records, the end
// of a record with its thread, and the exports that release cached buffers.
#include "service/memory/thread_records.hpp"

#include <pthread.h>
#include <tav/tav_memory.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "common/exports.hpp"
#include "service/memory/system_blocks.hpp"

namespace tav::service {
namespace {

enum key_status : int { key_absent, key_live, key_deleted };

std::mutex key_lock;
std::atomic<int> key_state{key_absent};
pthread_key_t record_key;

// The registry: a plain list, so that records stay reachable (and not leaked) at process exit.
std::mutex registry_lock;
thread_record* registry_head = nullptr;

void link_record(thread_record* record) {
  std::lock_guard guard(registry_lock);
  record->next = registry_head;
  if (registry_head != nullptr) registry_head->previous = record;
  registry_head = record;
}

void unlink_record(thread_record* record) {
  std::lock_guard guard(registry_lock);
  if (record->previous != nullptr) record->previous->next = record->next;
  else registry_head = record->next;
  if (record->next != nullptr) record->next->previous = record->previous;
}

// At thread exit: idle blocks go back to the system. A block still in use outlives the record,
// so its header is rewritten to the uncached form and its eventual release frees it directly.
void end_thread_record(void* value) {
  auto* record = static_cast<thread_record*>(value);
  unlink_record(record);
  {
    std::lock_guard guard(record->lock);
    release_idle_slots_locked(*record);
    for (cache_slot& slot : record->slots)
      if (slot.in_use) new (header_of(slot.aligned)) block_header(uncached_header(slot.block));
  }
  record->~thread_record();
  plain_release(record);
}

// The process clean-up hook: after it, threads that end no longer call into this library.
void delete_record_key() {
  key_state.store(key_deleted, std::memory_order_release);
  pthread_key_delete(record_key);
}

bool record_key_live() {
  int state = key_state.load(std::memory_order_acquire);
  if (state != key_absent) return state == key_live;
  std::lock_guard guard(key_lock);
  if (key_state.load(std::memory_order_relaxed) == key_absent &&
      pthread_key_create(&record_key, end_thread_record) == 0) {
    std::atexit(delete_record_key);
    key_state.store(key_live, std::memory_order_release);
  }
  return key_state.load(std::memory_order_relaxed) == key_live;
}

// The calling thread's record if it has one; never makes one.
thread_record* existing_record() {
  if (key_state.load(std::memory_order_acquire) != key_live) return nullptr;
  return static_cast<thread_record*>(pthread_getspecific(record_key));
}

}  // namespace

thread_record* own_record() {
  if (!record_key_live()) return nullptr;
  if (auto* record = static_cast<thread_record*>(pthread_getspecific(record_key))) return record;
  void* memory = plain_allocate(sizeof(thread_record));
  if (memory == nullptr) return nullptr;
  auto* record = new (memory) thread_record;
  if (pthread_setspecific(record_key, record) != 0) {
    record->~thread_record();
    plain_release(memory);
    return nullptr;
  }
  link_record(record);
  return record;
}

void release_idle_slots_locked(thread_record& record) {
  for (cache_slot& slot : record.slots) {
    if (!slot.idle()) continue;
    release_block(slot.block);
    slot = cache_slot{};
  }
}

}  // namespace tav::service

using namespace tav::service;

// Other threads' records are visited under the registry lock, so none can end meanwhile; each
// record's own lock keeps its thread's slots consistent, and slots in use are left alone.
TAV_EXPORT void tav_serv_free_buffers(void) {
  std::lock_guard guard(registry_lock);
  for (thread_record* record = registry_head; record != nullptr; record = record->next) {
    std::lock_guard record_guard(record->lock);
    release_idle_slots_locked(*record);
  }
}
TAV_EXPORT_ALIAS(TAV_Free_Buffers, tav_serv_free_buffers);
TAV_EXPORT_ALIAS(TAV_FREE_BUFFERS, tav_serv_free_buffers);

TAV_EXPORT void tav_serv_thread_free_buffers(void) {
  thread_record* record = existing_record();
  if (record == nullptr) return;
  std::lock_guard guard(record->lock);
  release_idle_slots_locked(*record);
}
TAV_EXPORT_ALIAS(TAV_Thread_Free_Buffers, tav_serv_thread_free_buffers);
TAV_EXPORT_ALIAS(TAV_THREAD_FREE_BUFFERS, tav_serv_thread_free_buffers);
