// The text of verbose lines and of the verbose banner, as pure functions of the values shown.
#pragma once

#include <tav/tav_version.h>

#include <cstddef>

namespace tav::service {

// A fixed-capacity text: appends are cut at the capacity instead of allocating, so building a
// verbose line can neither throw nor fail.
struct verbose_text {
  static constexpr size_t capacity = 512;
  char data[capacity] = "";
  size_t size = 0;

  void append(const char* format, ...) __attribute__((format(printf, 2, 3)));
};

// The thread and memory settings that every line shows.
struct verbose_line_settings {
  int dynamic;
  int fast_mm;             // 1 while the memory manager's buffer cache is on
  int thread_number;       // OpenMP thread number of the caller
  int max_threads;         // the global maximum
  int domain_threads[4];   // BLAS, FFT, VML, PARDISO (domains 1 to 4)
};

// Elapsed time: "%.2fs" for none (as 0) and above 1 s, "%.2fms" above 1 ms, "%.2fus" above
// 1 us, else "%.0fns".
void append_elapsed(verbose_text& out, double seconds);

// " CNR:" and the branch name; codes without a name (0, 5, 14 and above) print as "?%x".
void append_cnr(verbose_text& out, int branch);

// Everything after the call's text: time, CNR, Dyn, FastMM, TID, NThr, and each domain whose
// count differs from the global one.
verbose_text verbose_suffix(double seconds, int branch, const verbose_line_settings& settings);

// The banner (without newline); `interface_kind` 0 means the integer interface is unknown.
verbose_text verbose_banner(const TAVVersion& version, double ghz, int interface_kind);

// TAV_VERBOSE parsed as a C integer in any base: 1 exactly when the whole value reads as 1.
int verbose_switch_from_text(const char* value);

}  // namespace tav::service
