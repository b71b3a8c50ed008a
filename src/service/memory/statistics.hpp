// The memory manager's statistics: bytes and buffers taken from the system, and the peak.
#pragma once

#include <cstddef>

namespace tav::service {

struct memory_statistics {
  long long bytes = 0;  // held from the system now, cached slots included
  int buffers = 0;
  bool peak_enabled = false;
  long long peak_bytes = 0;
  int peak_buffers = 0;  // the buffer count when the peak was reached
};

// Records a system block taken or given back; either may raise the peak while it is enabled.
void count_block(size_t bytes);
void uncount_block(size_t bytes);

memory_statistics statistics_snapshot();

}  // namespace tav::service
