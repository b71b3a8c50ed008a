// What every vector-math kernel shares: its signature, the shape of the kernel and cost tables,
// and the error handler that it calls for each element that raised a condition.
#pragma once

#include <complex>

namespace tav::vml {

// Every function here reads two arrays of n elements and writes one; n is at least 1.
template <class T>
using kernel_fn = void (*)(int n, const T* a, const T* b, T* r);

// The tables are indexed by the vector-math CPU type (0 to 9) plus 10·(accuracy − 1):
// rows LA, HA, EP.
inline constexpr int path_slots = 10;
inline constexpr int table_size = 3 * path_slots;

// Reports element `index` of a kernel's arrays with status `code`; a1/a2 are the kernel's input
// arrays, r1/r2 its output arrays (r2 null for one output). The thread's mode decides what
// happens (status, errno, message, exception, callback); unless the code is an argument error,
// the handler writes the result of the context back to r1[index] (and r2[index]), so a callback
// may replace it. Instantiated for float, double, std::complex<float> and std::complex<double>.
template <class T>
void report_error(int code, int index, const T* a1, const T* a2, T* r1, T* r2, const char* name);

extern template void report_error<float>(int, int, const float*, const float*, float*, float*,
                                         const char*);
extern template void report_error<double>(int, int, const double*, const double*, double*,
                                          double*, const char*);
extern template void report_error<std::complex<float>>(int, int, const std::complex<float>*,
                                                       const std::complex<float>*,
                                                       std::complex<float>*, std::complex<float>*,
                                                       const char*);
extern template void report_error<std::complex<double>>(int, int, const std::complex<double>*,
                                                        const std::complex<double>*,
                                                        std::complex<double>*,
                                                        std::complex<double>*, const char*);

}  // namespace tav::vml
