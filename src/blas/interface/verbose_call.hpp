// Verbose mode of the Fortran-style calls: the switch read once per process, the clock started
// before the argument check, and the line written when the call is over.
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

// Writes one verbose line: `format` names the routine by a leading %c; %p takes a void pointer
// and %c an int, so the arguments are passed as those.
template <class... Args>
void write_line(double elapsed, const char* format, const Args&... args) {
  constexpr int line_capacity = 200;
  const auto vararg = [](const auto& value) {
    using A = std::decay_t<decltype(value)>;
    if constexpr (std::is_pointer_v<A>) return static_cast<const void*>(value);
    else if constexpr (std::is_same_v<A, char>) return static_cast<int>(value);
    else return value;
  };
  char line[line_capacity];
  tav_serv_snprintf_s(line, sizeof line, sizeof line - 1, format, vararg(args)...);
  tav_serv_iface_print_verbose_info(line, elapsed);
}

// The form of a call taken while the verbose word is not known to be 0: it reads the switch on
// the first call, and in verbose mode runs the clock around `call(args...)` and then has
// `line(elapsed, args...)` write. Kept out of line, so the quiet form needs no frame beyond the
// widened integers.
template <class Call, class Line, class... Args>
[[gnu::noinline, gnu::cold]] auto maybe_timed_call(Call call, Line line, Args... args) {
  if (!verbose_on()) return call(args...);
  const double start = tav_serv_iface_dsecnd();
  if constexpr (std::is_void_v<decltype(call(args...))>) {
    call(args...);
    line(tav_serv_iface_dsecnd() - start, args...);
  } else {
    const auto result = call(args...);
    line(tav_serv_iface_dsecnd() - start, args...);
    return result;
  }
}

// Runs `call(args...)` (argument check and internal routine); with verbose mode on, times it and
// writes the line that `line(elapsed, args...)` formats. `call` and `line` capture nothing and
// the arguments are the caller's pointers, so with the mode off this costs one load and a branch.
template <class Call, class Line, class... Args>
inline auto verbose_call(Call call, Line line, Args... args) {
  if (verbose_word.load(std::memory_order_relaxed) != 0) [[unlikely]]
    return maybe_timed_call(call, line, args...);
  return call(args...);
}

}  // namespace tav::blas::interface
