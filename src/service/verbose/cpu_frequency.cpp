// The maximum clock frequency from cpufreq, CPUID leaf 0x16 or /proc/cpuinfo.
#include "service/verbose/cpu_frequency.hpp"

#include <cpuid.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tav::service {
namespace {

// cpuinfo_max_freq holds kHz.
double sysfs_ghz() {
  std::FILE* file = std::fopen("/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "r");
  if (file == nullptr) return 0;
  double khz = 0;
  if (std::fscanf(file, "%lf", &khz) != 1) khz = 0;
  std::fclose(file);
  return khz > 0 ? khz * 1e-6 : 0;
}

// Leaf 0x16 gives the base (EAX) and maximum (EBX) frequency in MHz; virtual machines often
// report the leaf with zeros.
double cpuid_ghz() {
  if (__get_cpuid_max(0, nullptr) < 0x16) return 0;
  unsigned base = 0, max = 0, bus = 0, unused = 0;
  __cpuid_count(0x16, 0, base, max, bus, unused);
  return max * 1e-3;
}

double cpuinfo_ghz() {
  std::FILE* file = std::fopen("/proc/cpuinfo", "r");
  if (file == nullptr) return 0;
  char line[512];
  double mhz = -1;
  while (mhz < 0 && std::fgets(line, sizeof line, file) != nullptr) mhz = cpuinfo_line_mhz(line);
  std::fclose(file);
  return mhz > 0 ? mhz * 1e-3 : 0;
}

}  // namespace

double cpuinfo_line_mhz(const char* line) {
  constexpr char key[] = "cpu MHz";
  if (std::strncmp(line, key, sizeof key - 1) != 0) return -1;
  const char* colon = std::strchr(line, ':');
  if (colon == nullptr) return -1;
  char* end = nullptr;
  double mhz = std::strtod(colon + 1, &end);
  return end == colon + 1 ? -1 : mhz;
}

double max_cpu_frequency_ghz() {
  double ghz = sysfs_ghz();
  if (ghz <= 0) ghz = cpuid_ghz();
  if (ghz <= 0) ghz = cpuinfo_ghz();
  return ghz;
}

}  // namespace tav::service
