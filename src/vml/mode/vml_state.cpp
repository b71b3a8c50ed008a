// The per-thread vector-math state and the rules by which the mode word and the callback change.
#include "vml/mode/vml_state.hpp"

#include "service/cpu/cpu_state.hpp"
#include "vml/mode/mode_environment.hpp"

namespace tav::vml {
namespace {

// The groups that a mode change may replace. The precision-control group 0xF0 is absent on
// purpose: only the environment sets it. Bits outside every group are never stored.
constexpr unsigned settable_groups[] = {VML_ACCURACY_MASK, VML_ERRMODE_MASK, VML_FTZDAZ_MASK,
                                        VML_TRAP_EXCEPTIONS_MASK};

// Every write of the mode word goes through here, so that kernel_slot always matches it.
void store_mode(unsigned mode) {
  state.mode = mode;
  const int cpu_type = service::stored_vml_type.load(std::memory_order_relaxed);
  state.kernel_slot = cpu_type < 0 ? 0 : table_index(mode, cpu_type) + 1;
}

}  // namespace

unsigned first_mode() {
  store_mode(mode_from_environment());
  return state.mode;
}

int first_table_index() {
  const int index = table_index(current_mode(), service::vml_cpu_type());
  state.kernel_slot = index + 1;
  return index;
}

unsigned change_mode(unsigned request) {
  const unsigned previous = current_mode();
  unsigned mode = previous;
  for (const unsigned group : settable_groups)
    if ((request & group) != 0) mode = (mode & ~group) | (request & group);
  store_mode(mode);
  return previous;
}

int error_status() { return state.status; }

int set_error_status(int status) {
  const int previous = state.status;
  state.status = status;
  return previous;
}

tav_vml_error_callback error_callback() { return state.callback; }

tav_vml_error_callback set_error_callback(tav_vml_error_callback callback) {
  const tav_vml_error_callback previous = state.callback;
  state.callback = callback;
  // The whole word goes through the group rule, so clearing the callback bit when it is the only
  // error-mode bit leaves an empty error group in the request, and the group keeps 0x1000.
  const unsigned mode = current_mode();
  change_mode(callback != nullptr ? mode | VML_ERRMODE_CALLBACK : mode & ~VML_ERRMODE_CALLBACK);
  return previous;
}

void adopt_caller_settings(unsigned mode, tav_vml_error_callback callback) {
  store_mode(mode);
  state.callback = callback;
}

const void* interface_input() { return state.interface_input; }

void set_interface_input(const void* input) { state.interface_input = input; }

}  // namespace tav::vml
