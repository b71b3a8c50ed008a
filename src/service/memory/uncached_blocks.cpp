// Uncached blocks, the release of every pointer, and the uncached exports with calloc and realloc.
#include "service/memory/uncached_blocks.hpp"

#include <tav/tav_memory.h>

#include <algorithm>
#include <cstring>

#include "common/exports.hpp"
#include "service/memory/manager_start.hpp"
#include "service/memory/system_blocks.hpp"
#include "service/memory/thread_cache.hpp"

namespace tav::service {
namespace {

// The bytes a pointer may hold: the request for a cached pointer; for an uncached one, all bytes
// from the pointer to the end of its block, of which the request is the first part.
size_t usable_bytes(void* pointer) {
  const block_header& header = *header_of(pointer);
  if (header.kind == block_kind::cached) return cached_size(header);
  return static_cast<size_t>(static_cast<char*>(header.origin) + header.extent -
                             static_cast<char*>(pointer));
}

// A request of the uncached form: size 0 gives null, and the first request starts the manager.
void* uncached_request(size_t size, int alignment) {
  if (size == 0) return nullptr;
  start_memory_manager();
  return uncached_allocate(size, effective_alignment(alignment));
}

}  // namespace

void* uncached_allocate(size_t size, size_t alignment) {
  size_t bytes = 0;
  if (__builtin_add_overflow(size, alignment + uncached_header_bytes, &bytes)) return nullptr;
  system_block block = acquire_block(bytes);
  if (block.start == nullptr) return nullptr;
  return place_pointer(block.start, uncached_header_bytes, alignment, uncached_header(block));
}

void release_pointer(void* pointer) {
  if (pointer == nullptr) return;
  const block_header& header = *header_of(pointer);
  if (header.kind == block_kind::cached) cached_release(header);
  else release_block(uncached_block(header));
}

}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT void* tav_serv_malloc(size_t size, int alignment) {
  return uncached_request(size, alignment);
}
TAV_EXPORT_ALIAS(TAV_malloc, tav_serv_malloc);

// Either form's pointer may be released by either name: its header says which form it is.
TAV_EXPORT void tav_serv_free(void* pointer) { release_pointer(pointer); }
TAV_EXPORT_ALIAS(TAV_free, tav_serv_free);

TAV_EXPORT void* tav_serv_calloc(size_t count, size_t size, int alignment) {
  size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes)) return nullptr;
  void* pointer = uncached_request(bytes, alignment);
  if (pointer != nullptr) std::memset(pointer, 0, bytes);
  return pointer;
}
TAV_EXPORT_ALIAS(TAV_calloc, tav_serv_calloc);

// A new block always: keeping the old one in place could not honour a changed alignment. The old
// pointer stays valid when the new block cannot be had.
TAV_EXPORT void* tav_serv_realloc(void* pointer, size_t size, int alignment) {
  if (pointer == nullptr) return uncached_request(size, alignment);
  if (size == 0) {
    release_pointer(pointer);
    return nullptr;
  }
  void* moved = uncached_request(size, alignment);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, pointer, std::min(size, usable_bytes(pointer)));
  release_pointer(pointer);
  return moved;
}
TAV_EXPORT_ALIAS(TAV_realloc, tav_serv_realloc);
