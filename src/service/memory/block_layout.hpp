// The layout of the blocks the memory manager hands out: the alignment rule, the system block
// behind every pointer and the 24-byte header just below every pointer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

namespace tav::service {

inline constexpr size_t default_alignment = 64;

// An uncached block is size + alignment + this header; the pointer is the first multiple of the
// alignment at or above start + header, so the header always fits below it.
inline constexpr size_t uncached_header_bytes = 24;

// A cached block is its capacity (size + alignment) plus this bookkeeping area at the front; the
// pointer is the first aligned address at or above start + bookkeeping, so start + bookkeeping +
// (alignment - 1) + size stays inside the block, and the header sits in the bookkeeping area.
inline constexpr size_t cached_bookkeeping_bytes = 32;

// Requests above 128 MiB are never cached: holding such a block idle costs too much.
inline constexpr size_t largest_cached_request = 0x8000000;

// A power of two of 64 or more is honoured; anything else gives 64.
constexpr size_t effective_alignment(int alignment) {
  if (alignment < static_cast<int>(default_alignment)) return default_alignment;
  auto requested = static_cast<size_t>(alignment);
  return (requested & (requested - 1)) == 0 ? requested : default_alignment;
}

// The first multiple of `alignment` (a power of two) at or above `address`.
constexpr uintptr_t align_up(uintptr_t address, size_t alignment) {
  return (address + alignment - 1) & ~static_cast<uintptr_t>(alignment - 1);
}

// A block as the system allocator gave it; `fast` when it came from high-bandwidth memory, which
// must be returned there.
struct system_block {
  void* start = nullptr;
  size_t bytes = 0;
  bool fast = false;
};

// What a pointer's header says about it. The values are unlikely bit patterns, so that a stray
// pointer shows up in a debugger as an implausible kind.
enum class block_kind : uint64_t {
  uncached = 0x74617675'6e636163,       // "tavuncac"
  uncached_fast = 0x74617675'6e636866,  // "tavunchf"
  cached = 0x74617663'61636865,         // "tavcache"
};

// The 24 bytes just below every pointer the manager hands out. It lets a release tell a cached
// pointer from an uncached one without searching any thread's records.
struct block_header {
  // uncached: the system block's start; cached: the thread record that owns the slot.
  void* origin;
  // uncached: the system block's size in bytes; cached: the slot index in its record.
  uint64_t extent;
  block_kind kind;
};
static_assert(sizeof(block_header) == uncached_header_bytes);
static_assert(sizeof(block_header) <= cached_bookkeeping_bytes);

inline block_header* header_of(void* pointer) { return static_cast<block_header*>(pointer) - 1; }

// Places the pointer of a request inside `start`: the first multiple of `alignment` at or above
// start + reserved, and writes `header` just below it.
inline void* place_pointer(void* start, size_t reserved, size_t alignment,
                           const block_header& header) {
  auto address = align_up(reinterpret_cast<uintptr_t>(start) + reserved, alignment);
  void* pointer = reinterpret_cast<void*>(address);
  new (header_of(pointer)) block_header(header);
  return pointer;
}

// The system block an uncached pointer's header describes.
inline system_block uncached_block(const block_header& header) {
  return {header.origin, static_cast<size_t>(header.extent),
          header.kind == block_kind::uncached_fast};
}

// The header of an uncached pointer inside `block`.
inline block_header uncached_header(const system_block& block) {
  return {block.start, block.bytes, block.fast ? block_kind::uncached_fast : block_kind::uncached};
}

}  // namespace tav::service
