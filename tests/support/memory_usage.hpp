// What the memory manager holds, as tav_serv_mem_stat counts it: bytes and buffers.
#pragma once

#include <tav/tav_memory.h>

namespace tav::test {

struct usage {
  long long bytes;
  int buffers;
  bool operator==(const usage&) const = default;
};

inline usage now() {
  usage u{};
  u.bytes = tav_serv_mem_stat(&u.buffers);
  return u;
}

}  // namespace tav::test
