// The one dispatch facility: a process-wide slot per entry holding the function to call. It starts
// out holding a resolver of the same signature, which picks the variant of the path that the CPU
// type and reproducibility branch select, stores it and forwards the call; from then on every call
// is one load and one indirect call, without a test.
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
                       function avx2, function avx512_tp, function avx512, function resolver)
      : slot_{resolver}, variants_{def, cnr_def, mc, mc3, avx, avx2, avx512_tp, avx512} {}

  R operator()(Args... args) { return target()(args...); }

  // The function this slot calls: the chosen variant, or before the first call the resolver, which
  // forwards to it.
  function target() { return slot_.load(std::memory_order_acquire); }

  // The resolver of the slot `self`: the first call through the slot comes here.
  template <dispatched& self>
  [[gnu::cold]] static R resolve_and_call(Args... args) {
    return self.resolve()(args...);
  }

 private:
  [[gnu::noinline]] function resolve() {
    function chosen = variants_[begin_resolution()];
    slot_.store(chosen, std::memory_order_release);
    end_resolution();
    return chosen;
  }

  std::atomic<function> slot_;
  const function variants_[8];
};

}  // namespace tav::service

// Declares the eight per-path variants of tav_<component>_<name>, of function type `signature`,
// and defines the slot `<name>_dispatch` that calls them:
//   TAV_DISPATCHED(blas, xdgemm, gemm_fn);  ...  xdgemm_dispatch(args...);
#define TAV_DISPATCHED(component, name, signature)                                      \
  extern "C" std::type_identity_t<signature> TAV_PATH_VARIANTS(component, name);        \
  inline constinit ::tav::service::dispatched<signature> name##_dispatch {              \
    TAV_PATH_VARIANTS(component, name),                                                 \
        &::tav::service::dispatched<signature>::resolve_and_call<name##_dispatch>       \
  }
