// The buffer slots of a thread's cache and the rule that picks the slot for a request.
#pragma once

#include <cstddef>

#include "service/memory/block_layout.hpp"

namespace tav::service {

inline constexpr int cache_slots = 5;

struct cache_slot {
  system_block block;       // capacity + bookkeeping bytes from the system
  void* aligned = nullptr;  // the pointer handed out for the current request
  size_t size = 0;          // the current request's size
  size_t capacity = 0;      // size + alignment of the request the block was made for; 0 is empty
  bool in_use = false;

  bool holds_block() const { return capacity != 0; }
  bool idle() const { return holds_block() && !in_use; }
};

enum class slot_action {
  take,      // an idle slot large enough: hand out its block
  create,    // an empty slot: make a block of the needed capacity in it
  replace,   // an idle slot too small: free its block and make one of the needed capacity
  uncached,  // nothing fits: serve the request outside the cache
};

struct slot_choice {
  slot_action action;
  int index;  // the slot acted on; -1 with `uncached`
};

// `need` is the request's size plus its alignment. An idle slot of exactly that capacity is taken
// at once; else the idle slot with the smallest larger capacity (the first of equals); else an
// empty slot while fewer than all are used; else the first idle slot that is too small is
// replaced; else the request goes uncached.
constexpr slot_choice choose_slot(const cache_slot (&slots)[cache_slots], size_t need) {
  int smallest_larger = -1;
  int first_smaller = -1;
  int first_empty = -1;
  for (int i = 0; i < cache_slots; ++i) {
    const cache_slot& slot = slots[i];
    if (!slot.holds_block()) {
      if (first_empty < 0) first_empty = i;
    } else if (!slot.in_use) {
      if (slot.capacity == need) return {slot_action::take, i};
      if (slot.capacity > need) {
        if (smallest_larger < 0 || slot.capacity < slots[smallest_larger].capacity)
          smallest_larger = i;
      } else if (first_smaller < 0) {
        first_smaller = i;
      }
    }
  }
  if (smallest_larger >= 0) return {slot_action::take, smallest_larger};
  if (first_empty >= 0) return {slot_action::create, first_empty};
  if (first_smaller >= 0) return {slot_action::replace, first_smaller};
  return {slot_action::uncached, -1};
}

}  // namespace tav::service
