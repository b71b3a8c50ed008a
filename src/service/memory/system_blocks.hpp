// Blocks from the system functions the manager chose at its start, counted in the statistics.
#pragma once

#include <cstddef>

#include "service/memory/block_layout.hpp"

namespace tav::service {

// A counted block of `bytes`: high-bandwidth memory while the budget allows, else the chosen
// allocate function. A failed request gives a block with a null start and counts nothing.
system_block acquire_block(size_t bytes);
void release_block(const system_block& block);

// Uncounted memory for the manager's own records, from the same system functions.
void* plain_allocate(size_t bytes);
void plain_release(void* start);

}  // namespace tav::service
