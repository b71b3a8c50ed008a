// The process-wide processor state that other services read: the detection lock, the processor,
// the enable flags and the detected class.
#pragma once

#include <atomic>
#include <mutex>

#include "service/cpu/classify.hpp"

namespace tav::service {

// Serialises CPU detection and the reproducibility-mode setter.
std::mutex& detection_lock();

// The processor, read once (CPUID and XGETBV).
const processor& this_processor();

// The enable flags now in force (the instruction limit).
enable_flags current_enable_flags();

// Whether the CPU type has been detected and stored (it never changes afterwards).
bool cpu_type_detected();

// The class detection chose, 0 to 9 (before 8 and 9 are stored as 6 and 7); detects if needed.
int cpu_class();

// The vector-math CPU type once detection has stored it, else -1.
extern std::atomic<int> stored_vml_type;

// Detects the CPU type and returns the vector-math CPU type.
int detect_vml_cpu_type();

// The vector-math CPU type (0, 1, 3, 5, 6, 7, 8, 9); detects if needed. Inline:
// every vector call reads it.
inline int vml_cpu_type() {
  const int type = stored_vml_type.load(std::memory_order_relaxed);
  return type >= 0 ? type : detect_vml_cpu_type();
}

}  // namespace tav::service
