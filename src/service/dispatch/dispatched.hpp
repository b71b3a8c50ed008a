// The one dispatch facility: a process-wide slot per entry, filled on first call with the variant
// of the path that the CPU type and reproducibility branch select, then one load and one call.
#pragma once

#include <atomic>
#include <type_traits>

#include "common/path_naming.hpp"

namespace tav::service {

// Brackets the first resolution of a slot: detects the CPU, reads the branch and returns the
// path id; an impossible CPU type prints message 1213 and ends the process with status 1.
int begin_resolution();
void end_resolution();

template <class Signature>
class dispatched;

template <class R, class... Args>
class dispatched<R(Args...)> {
 public:
  using function = R (*)(Args...);

  constexpr dispatched(function def, function cnr_def, function mc, function mc3, function avx,
                       function avx2, function avx512_tp, function avx512)
      : variants_{def, cnr_def, mc, mc3, avx, avx2, avx512_tp, avx512} {}

  R operator()(Args... args) {
    function chosen = slot_.load(std::memory_order_acquire);
    if (chosen == nullptr) chosen = resolve();
    return chosen(args...);
  }

  // The variant this slot calls, resolving it if needed.
  function target() {
    function chosen = slot_.load(std::memory_order_acquire);
    return chosen != nullptr ? chosen : resolve();
  }

 private:
  function resolve() {
    function chosen = variants_[begin_resolution()];
    slot_.store(chosen, std::memory_order_release);
    end_resolution();
    return chosen;
  }

  std::atomic<function> slot_{nullptr};
  const function variants_[8];
};

}  // namespace tav::service

// Declares the eight per-path variants of tav_<component>_<name>, of function type `signature`,
// and defines the slot `<name>_dispatch` that calls them:
//   TAV_DISPATCHED(blas, xdgemm, gemm_fn);  ...  xdgemm_dispatch(args...);
#define TAV_DISPATCHED(component, name, signature)                                   \
  extern "C" std::type_identity_t<signature> TAV_PATH_VARIANTS(component, name);                           \
  inline constinit ::tav::service::dispatched<signature> name##_dispatch {           \
    TAV_PATH_VARIANTS(component, name)                                               \
  }
