// The process-wide processor state that other services read: the detection lock, the processor,
// the enable flags and the detected class.
#pragma once

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

// The vector-math CPU type (0, 1, 3, 5, 6, 7, 8, 9); detects if needed.
int vml_cpu_type();

}  // namespace tav::service
