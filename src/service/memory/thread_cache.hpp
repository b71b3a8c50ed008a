// Requests served from the calling thread's cache slots.
#pragma once

#include <cstddef>

#include "service/memory/block_layout.hpp"

namespace tav::service {

// A pointer of `size` bytes aligned to `alignment` (already a valid alignment) from the calling
// thread's cache; requests the cache cannot hold go uncached. Null on failure.
void* cached_allocate(size_t size, size_t alignment);

// Marks the slot named by a cached pointer's header free again; its block stays in the cache.
void cached_release(const block_header& header);

// The size requested for the cached pointer with this header.
size_t cached_size(const block_header& header);

}  // namespace tav::service
