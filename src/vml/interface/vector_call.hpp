// One vector-math call of the two-inputs-one-output shape, written once for every function and
// element type: argument checks and their reports, kernel selection by code path and accuracy,
// and the threaded run; the mode-taking twin wraps it in a mode change.
#pragma once

#include <tav/tav_error.h>
#include <tav/tav_vml.h>

#include <cstring>

#include "vml/kernels/vml_kernel.hpp"
#include "vml/mode/vml_state.hpp"
#include "vml/threader/threader_2i_1o.hpp"

namespace tav::vml {

// A function's kernel table and cost table, indexed alike.
template <class T>
struct function_tables {
  const kernel_fn<T>* kernels;
  const float* costs;
};

// Reports through the exported xerbla chain, so that a program's own xerbla_ receives it, and
// leaves the status.
[[gnu::cold, gnu::noinline]] inline void report_argument(const char* name, int position,
                                                         int status) {
  const int info = position;
  xerbla(name, &info, static_cast<int>(std::strlen(name)));
  set_error_status(status);
}

template <class T>
void run_indexed(int n, const T* a, const T* b, T* r, function_tables<T> tables, int index) {
  run_2i_1o(n, a, b, r, tables.kernels[index], tables.costs[index]);
}

// The first call in a thread (mode not read yet) or in the process (CPU type not detected).
template <class T>
[[gnu::noinline]] void run_first(int n, const T* a, const T* b, T* r, function_tables<T> tables) {
  run_indexed(n, a, b, r, tables, first_table_index());
}

// Every later call makes no call of its own before the kernel's: the checks and the thread's
// kernel slot are read inline, and the kernel runs as a tail call of the exported entry.
template <class T, class C>
[[gnu::always_inline]] inline void vector_call(int n, const C* a, const C* b, C* r,
                                               function_tables<T> tables, const char* name) {
  if (n < 0) return report_argument(name, 1, VML_STATUS_BADSIZE);
  if (n == 0) return;
  if (a == nullptr) return report_argument(name, 2, VML_STATUS_BADMEM);
  if (b == nullptr) return report_argument(name, 3, VML_STATUS_BADMEM);
  if (r == nullptr) return report_argument(name, 4, VML_STATUS_BADMEM);
  const T* x = reinterpret_cast<const T*>(a);
  const T* y = reinterpret_cast<const T*>(b);
  T* z = reinterpret_cast<T*>(r);
  const int slot = state.kernel_slot;
  if (slot == 0) return run_first(n, x, y, z, tables);
  run_indexed(n, x, y, z, tables, slot - 1);
}

// The twin applies its mode with the rules of vmlSetMode (zero groups keep the thread's
// setting) and afterwards sets the previous mode back the same way.
template <class T, class C>
void vector_call_with_mode(int n, const C* a, const C* b, C* r, unsigned mode,
                           function_tables<T> tables, const char* name) {
  const unsigned previous = change_mode(mode);
  vector_call(n, a, b, r, tables, name);
  change_mode(previous);
}

}  // namespace tav::vml
