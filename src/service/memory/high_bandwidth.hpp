// High-bandwidth memory: whether to look for it, loading its library at run time, the budget
// that limits it, and taking and returning blocks of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "service/cpu/features.hpp"

namespace tav::service {

// Only processors of the many-core AVX-512 class carry high-bandwidth memory, and the loader can
// add a shared library only to a process whose C library is itself a shared object.
constexpr bool high_bandwidth_candidate(uint64_t features, bool libc_dynamic) {
  return libc_dynamic && has(features, feature_mask::avx512_tp);
}

// The library reports its version as major * 10^6 + minor * 10^3 + patch; 1.1.0 is the oldest
// with the page-size allocation call.
inline constexpr int oldest_memkind_version = 1001000;

constexpr bool memkind_acceptable(int version, bool has_allocate, bool has_free) {
  return version >= oldest_memkind_version && has_allocate && has_free;
}

// The files tried in order: beside this library, beside the executable, then the bare name for
// the loader's own search. An empty directory (unknown) is skipped.
std::vector<std::string> memkind_candidates(const std::string& library_directory,
                                            const std::string& executable_directory);

// The budget of high-bandwidth bytes; negative means unlimited, 0 means none. Every block taken
// is subtracted from it and added back when freed.
class fast_budget {
 public:
  void reset(long long bytes);
  // Subtracts `bytes` when they fit (always under an unlimited budget); false otherwise.
  bool take(size_t bytes);
  void give_back(size_t bytes);
  long long remaining();

 private:
  std::mutex lock_;
  long long remaining_ = -1;
};

fast_budget& high_bandwidth_budget();

// Loads the library when the processor and the C library allow it; true when high-bandwidth
// memory can be used. Called once, at the manager's start.
bool open_high_bandwidth(uint64_t features);

// A block of high-bandwidth memory, on 2 MiB pages if possible, else on 4096-byte pages; null
// when neither is available.
void* fast_allocate(size_t bytes);
void fast_release(void* start);

}  // namespace tav::service
