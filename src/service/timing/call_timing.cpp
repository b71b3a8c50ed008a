// The clock and the bounded formatter of the verbose lines (hidden C entries).
#include "service/timing/call_timing.hpp"

#include <time.h>

#include <cstdarg>
#include <cstdio>

// The monotonic clock never steps back when the wall clock is reset, so an elapsed time is
// never negative.
extern "C" double tav_serv_iface_dsecnd(void) {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

extern "C" int tav_serv_snprintf_s(char* buffer, size_t buffer_size, size_t count,
                                   const char* format, ...) {
  if (buffer == nullptr || buffer_size == 0) return -1;
  // Room for `count` characters and the terminator, within the buffer.
  const size_t limit = count < buffer_size - 1 ? count + 1 : buffer_size;
  va_list args;
  va_start(args, format);
  const int length = std::vsnprintf(buffer, limit, format, args);
  va_end(args);
  if (length < 0) {
    buffer[0] = '\0';
    return -1;
  }
  return static_cast<size_t>(length) < limit ? length : -1;
}
