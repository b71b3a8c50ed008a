// Requests served by a system block of their own, and the release of any pointer the manager
// handed out.
#pragma once

#include <cstddef>

namespace tav::service {

// A pointer of `size` bytes aligned to `alignment` (already a valid alignment) in a block of its
// own: size + alignment + header bytes. Null on failure or when the sum overflows.
void* uncached_allocate(size_t size, size_t alignment);

// Releases a pointer from either form, as its header says; null is ignored.
void release_pointer(void* pointer);

}  // namespace tav::service
