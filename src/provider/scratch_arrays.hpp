// Scratch arrays of the provider functions: owning handles over the memory manager's aligned
// blocks, and the guard that turns an allocation failure into the provider's status code.
#pragma once

#include <tav/tav_memory.h>
#include <tav/tav_provider.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace tav::provider {

// Deleter of every scratch handle: hands the block back to the memory manager.
struct array_free {
  void operator()(void* pointer) const { TAV_free(pointer); }
};

template <class T>
using array = std::unique_ptr<T[], array_free>;

// n elements, 64-byte aligned, uninitialised. A null block is thrown as a std::bad_alloc*, not
// as a std::bad_alloc: callers guarded by with_allocation_guard therefore see it pass through,
// as the managed caller of this interface expects.
template <class T>
array<T> array_new(int n) {
  const int64_t bytes = static_cast<int64_t>(n) * static_cast<int64_t>(sizeof(T));
  void* block = TAV_malloc(static_cast<size_t>(bytes), 64);
  if (block == nullptr) throw new std::bad_alloc();
  return array<T>(static_cast<T*>(block));
}

// array_new followed by a byte copy of n elements from `source`.
template <class T>
array<T> array_clone(int n, const T* source) {
  array<T> copy = array_new<T>(n);
  std::memcpy(copy.get(), source, static_cast<size_t>(n) * sizeof(T));
  return copy;
}

// Runs a provider body; a std::bad_alloc object thrown inside it (after the handles made so far
// have released their blocks) becomes TAV_PROVIDER_ALLOCATION_FAILED. Other exceptions pass.
template <class Body>
int with_allocation_guard(Body&& body) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return TAV_PROVIDER_ALLOCATION_FAILED;
  }
}

}  // namespace tav::provider
