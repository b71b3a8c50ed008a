// The per-thread vector-math state that the service calls, the error handler and the threader
// share: the mode word, the error status, the error callback and the interface input pointer.
#pragma once

#include <tav/tav_vml.h>

#include "vml/kernels/vml_kernel.hpp"

namespace tav::vml {

// Zero at thread start. A mode of 0 means that the thread has not read the environment yet; a
// stored mode always has an accuracy, so 0 never stands for a real setting. kernel_slot is 1 +
// table_index(mode, CPU type), or 0 while the mode or the CPU type is unknown: a vector call
// reads it instead of decoding the mode.
struct thread_state {
  unsigned mode;
  int kernel_slot;
  const void* interface_input;
  tav_vml_error_callback callback;
  int status;
};

// Initial-exec: every vector call reads the state, and the general-dynamic access of a shared
// object costs a __tls_get_addr call each time (15-25 ns per call at n = 1000 on the test machine).
// The 32 bytes fit the static TLS reserve that the C library keeps for libraries loaded with
// dlopen. Here rather than in the .cpp so that a vector call reads its kernel slot inline.
[[gnu::tls_model("initial-exec")]] inline thread_local constinit thread_state state{};

// Reads the thread's mode from the environment and stores it.
unsigned first_mode();

// The kernel-table index: vector-math CPU type plus 10·(accuracy − 1). An accuracy field outside
// LA, HA and EP (vmlSetMode stores any non-zero group) reads as HA.
inline int table_index(unsigned mode, int cpu_type) {
  unsigned accuracy = mode & VML_ACCURACY_MASK;
  if (accuracy < VML_LA || accuracy > VML_EP) accuracy = VML_HA;
  return cpu_type + path_slots * static_cast<int>(accuracy - 1);
}

// The table index of the thread's mode and the CPU type, reading the mode or detecting the CPU
// type first where that has not happened yet; stores the thread's kernel_slot.
int first_table_index();

// The thread's mode word. The first call in a thread reads it from the environment, so the
// result is never 0.
inline unsigned current_mode() { return state.mode != 0 ? state.mode : first_mode(); }

// Replaces each of the accuracy, error-mode, flush-to-zero and trap groups that is non-zero in
// `request`; zero groups and the precision-control group keep their setting. Returns the
// previous mode.
unsigned change_mode(unsigned request);

// The thread's error status, and its setter, which returns the previous status.
int error_status();
int set_error_status(int status);

// The thread's error callback (null when none). Setting a callback sets the callback bit of the
// error mode and setting null clears it, both through change_mode(). Returns the previous one.
tav_vml_error_callback error_callback();
tav_vml_error_callback set_error_callback(tav_vml_error_callback callback);

// A worker of a threaded call takes its caller's mode and callback as they are, without the
// rules of change_mode(): the worker must run exactly as the caller would.
void adopt_caller_settings(unsigned mode, tav_vml_error_callback callback);

// The start of the caller's first input array while a threaded call runs in this thread, else
// null; the error handler reports indices relative to it.
const void* interface_input();
void set_interface_input(const void* input);

}  // namespace tav::vml
