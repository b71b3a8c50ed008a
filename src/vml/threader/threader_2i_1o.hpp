// The threader of the functions with two input arrays and one output array: it runs the chosen
// kernel on the whole array in the caller's thread, or splits the array into one contiguous
// share per thread of one parallel region, each worker running with the caller's mode and
// callback and reporting error indices relative to the caller's arrays.
#pragma once

#include <omp.h>

#include <atomic>
#include <cstdint>

#include "vml/kernels/vml_kernel.hpp"
#include "vml/mode/vml_state.hpp"
#include "vml/threader/thread_count.hpp"

namespace tav::vml {

// The parallel region on its own: a function that opens one asks the OpenMP runtime for the
// caller's thread number on entry, which serial calls need not pay.
template <class T>
[[gnu::noinline]] void run_2i_1o_threaded(int threads, int n, const T* a, const T* b, T* r,
                                          kernel_fn<T> kernel) {
  const unsigned mode = current_mode();
  const tav_vml_error_callback callback = error_callback();
  // The caller takes the status of the first worker that reports one: the lowest (worker, status)
  // pair, packed with the worker in the high half so that the smaller word is the earlier worker.
  std::atomic<uint64_t> first_report{~uint64_t{0}};
#pragma omp parallel num_threads(threads)
  {
    adopt_caller_settings(mode, callback);
    set_interface_input(a);
    set_error_status(VML_STATUS_OK);
    // Shares q = n / t and r = n mod t: worker i takes q + 1 elements from i·(q + 1) when i < r,
    // else q elements from i·q + r.
    const int t = omp_get_num_threads(), i = omp_get_thread_num();
    const int q = n / t, rest = n % t;
    const int count = i < rest ? q + 1 : q;
    const int start = i < rest ? i * (q + 1) : i * q + rest;
    if (count > 0) kernel(count, a + start, b + start, r + start);
    set_interface_input(nullptr);
    if (const int status = error_status(); status != VML_STATUS_OK) {
      const uint64_t report = uint64_t(i) << 32 | static_cast<uint32_t>(status);
      uint64_t seen = first_report.load(std::memory_order_relaxed);
      while (report < seen && !first_report.compare_exchange_weak(seen, report)) {
      }
    }
  }
  const uint64_t report = first_report.load(std::memory_order_relaxed);
  set_error_status(report == ~uint64_t{0} ? VML_STATUS_OK : static_cast<int>(uint32_t(report)));
}

// An array long enough to share: the thread count, then one thread's run or the region.
template <class T>
[[gnu::noinline]] void run_2i_1o_long(int n, const T* a, const T* b, T* r, kernel_fn<T> kernel,
                                      float cost) {
  const int threads = thread_count(n, cost);
  if (threads == 1)
    kernel(n, a, b, r);
  else
    run_2i_1o_threaded(threads, n, a, b, r, kernel);
}

// A short array, or one that dynamic threading keeps on one thread, goes to the kernel straight
// away.
template <class T>
void run_2i_1o(int n, const T* a, const T* b, T* r, kernel_fn<T> kernel, float cost) {
  if (n < threading_threshold || one_thread_by_work(n, cost))
    kernel(n, a, b, r);
  else
    run_2i_1o_long(n, a, b, r, kernel, cost);
}

}  // namespace tav::vml
