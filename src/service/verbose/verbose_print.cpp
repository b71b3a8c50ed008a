// The verbose line printer: the banner once per process, then one line per instrumented call, to
// the output file or to standard output.
#include <omp.h>
#include <tav/tav_cbwr.h>
#include <tav/tav_memory.h>
#include <tav/tav_threads.h>
#include <tav/tav_verbose.h>
#include <tav/tav_version.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "common/exports.hpp"
#include "service/verbose/cpu_frequency.hpp"
#include "service/verbose/verbose_format.hpp"
#include "service/verbose/verbose_settings.hpp"

namespace tav::service {
namespace {

std::mutex stdout_lock;
std::mutex banner_lock;
std::atomic<bool> banner_printed{false};

// Appends to the output file, opened and closed per write so that other processes and the
// caller may move or truncate it; falls back to standard output with a warning.
__attribute__((format(printf, 1, 2))) void write_verbose(const char* format, ...) {
  char name[verbose_file_name_limit];
  copy_verbose_output_file(name);
  va_list args;
  va_start(args, format);
  std::FILE* file = name[0] != '\0' ? std::fopen(name, "a") : nullptr;
  if (file != nullptr) {
    std::vfprintf(file, format, args);
    std::fclose(file);
  } else {
    if (name[0] != '\0')
      std::fputs("TAV_VERBOSE WARNING: unable to open output file. Print to STDOUT\n", stderr);
    std::lock_guard guard(stdout_lock);
    std::vfprintf(stdout, format, args);
    std::fflush(stdout);
  }
  va_end(args);
}

void print_banner_once(int interface_kind) {
  if (banner_printed.load(std::memory_order_acquire)) return;
  std::lock_guard guard(banner_lock);
  if (banner_printed.load(std::memory_order_relaxed)) return;
  TAVVersion version;
  tav_serv_get_version(&version);
  write_verbose("%s\n", verbose_banner(version, max_cpu_frequency_ghz(), interface_kind).data);
  banner_printed.store(true, std::memory_order_release);
}

verbose_line_settings current_settings() {
  verbose_line_settings settings{};
  settings.dynamic = tav_serv_get_dynamic();
  settings.fast_mm = tav_serv_get_fast_mm_status() == 0 ? 1 : 0;
  settings.thread_number = omp_get_thread_num();
  settings.max_threads = tav_serv_get_max_threads();
  for (int d = 0; d < 4; ++d) settings.domain_threads[d] = tav_serv_domain_get_max_threads(d + 1);
  return settings;
}

}  // namespace
}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT void tav_serv_print_verbose_info(int interface_kind, const char* text, double seconds) {
  print_banner_once(interface_kind);
  verbose_text suffix = verbose_suffix(seconds, tav_serv_cbwr_get(TAV_CBWR_BRANCH), current_settings());
  write_verbose("TAV_VERBOSE %s %s\n", text != nullptr ? text : "", suffix.data);
}

TAV_EXPORT int tav_serv_iface_verbose_mode(void) { return tav_serv_verbose_mode(); }

TAV_EXPORT void tav_serv_iface_print_verbose_info(const char* text, double seconds) {
  tav_serv_print_verbose_info(TAV_IFACE_LP64, text, seconds);
}
