// The processor's maximum clock frequency, shown in the verbose banner.
#pragma once

namespace tav::service {

// In GHz, from the first source that answers: the kernel's cpufreq limit for cpu0, CPUID leaf
// 0x16, the "cpu MHz" line of /proc/cpuinfo; 0 when none does.
double max_cpu_frequency_ghz();

// The MHz of a /proc/cpuinfo line if it is a "cpu MHz" line, else a negative number.
double cpuinfo_line_mhz(const char* line);

}  // namespace tav::service
