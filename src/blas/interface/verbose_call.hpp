// The verbose record of one Fortran-style call: the switch read once per process, the clock
// started before the argument check, and the line written when the call is over.
#pragma once

#include <tav/tav_verbose.h>

#include <atomic>
#include <type_traits>

#include "service/timing/call_timing.hpp"

namespace tav::blas::interface {

// The wrappers' process-wide verbose word: -1 until the first call reads the service's switch,
// then 0 or 1 for the rest of the process, so that a call with verbose mode off costs one load.
inline std::atomic<int> verbose_word{-1};

inline bool verbose_on() {
  int word = verbose_word.load(std::memory_order_relaxed);
  if (word < 0) {
    // Two first calls may both read the switch; they store the same value.
    word = tav_serv_iface_verbose_mode() == 1 ? 1 : 0;
    verbose_word.store(word, std::memory_order_relaxed);
  }
  return word == 1;
}

// An integer argument as the line shows it: 0 for a null pointer.
inline int shown(const int* value) { return value != nullptr ? *value : 0; }
// An option argument as the line shows it: its first character, a blank for a null pointer.
inline char shown(const char* option) { return option != nullptr ? *option : ' '; }

class call_record {
 public:
  call_record() : on_(verbose_on()), start_(on_ ? tav_serv_iface_dsecnd() : 0.0) {}

  // Writes the line when verbose mode is on; `format` names the routine by a leading %c.
  template <class... Args>
  void finish(const char* format, const Args&... args) const {
    if (!on_) return;
    const double elapsed = tav_serv_iface_dsecnd() - start_;
    char line[line_capacity];
    tav_serv_snprintf_s(line, sizeof line, sizeof line - 1, format, vararg(args)...);
    tav_serv_iface_print_verbose_info(line, elapsed);
  }

 private:
  static constexpr int line_capacity = 200;

  // %p takes a void pointer and %c an int: the arguments are passed as those.
  template <class A>
  static auto vararg(const A& value) {
    if constexpr (std::is_pointer_v<A>) return static_cast<const void*>(value);
    else if constexpr (std::is_same_v<A, char>) return static_cast<int>(value);
    else return value;
  }

  bool on_;
  double start_;
};

}  // namespace tav::blas::interface
