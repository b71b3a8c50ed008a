// The error handler that every vector-math kernel calls for an element that raised a condition:
// it records the status and, as the thread's mode word says, calls the callback, sets errno,
// prints the catalog message and raises the floating-point exception, then writes the (possibly
// replaced) result back.
#include <tav/tav_error.h>
#include <tav/tav_vml.h>

#include <cerrno>
#include <cfenv>
#include <complex>
#include <cstring>

#include "vml/kernels/vml_kernel.hpp"
#include "vml/mode/vml_state.hpp"

namespace tav::vml {
namespace {

// Catalog rows of the status texts: 1410 VML_STATUS_BADSIZE, 1411 VML_STATUS_BADMEM, then
// 1412 to 1415 for the data statuses 1 to 4.
constexpr int badsize_message = 1410;
constexpr int badmem_message = 1411;

constexpr bool argument_error(int code) {
  return code == VML_STATUS_BADSIZE || code == VML_STATUS_BADMEM;
}

// A null pointer gives EACCES (13) rather than EFAULT; programs written against this mapping
// test for 13, so it stays.
constexpr int errno_for(int code) {
  switch (code) {
    case VML_STATUS_BADMEM: return 13;
    case VML_STATUS_BADSIZE: return 22;
    case VML_STATUS_OK: return 0;
    case VML_STATUS_ERRDOM: return 33;
    case VML_STATUS_SING:
    case VML_STATUS_OVERFLOW:
    case VML_STATUS_UNDERFLOW: return 34;
    default: return 14;
  }
}

// The size in the VML_STATUS_BADSIZE text is whatever the reporter passed as the index.
void print_message(int code, const char* name, int index) {
  if (code == VML_STATUS_BADSIZE)
    tav_serv_print(1, badsize_message, 2, name, index);
  else if (code == VML_STATUS_BADMEM)
    tav_serv_print(1, badmem_message, 1, name);
  else if (code >= VML_STATUS_ERRDOM && code <= VML_STATUS_UNDERFLOW)
    tav_serv_print(1, badmem_message + code, 1, name);
}

// Raises the exception of the code; the trap bits of the mode unmask theirs first, so that the
// raise traps.
void raise_exception(int code, unsigned mode) {
  int exception = 0;
  switch (code) {
    case VML_STATUS_ERRDOM: exception = FE_INVALID; break;
    case VML_STATUS_SING: exception = FE_DIVBYZERO; break;
    case VML_STATUS_OVERFLOW: exception = FE_OVERFLOW; break;
    case VML_STATUS_UNDERFLOW: exception = FE_UNDERFLOW; break;
    default: return;
  }
  int traps = 0;
  if (mode & VML_TRAP_INVALID) traps |= FE_INVALID;
  if (mode & VML_TRAP_DIVBYZERO) traps |= FE_DIVBYZERO;
  if (mode & VML_TRAP_OVERFLOW) traps |= FE_OVERFLOW;
  if (mode & VML_TRAP_UNDERFLOW) traps |= FE_UNDERFLOW;
  if (traps & exception) feenableexcept(traps & exception);
  std::feraiseexcept(exception);
}

// The context holds every value as a double, imaginary parts separately.
void load(double& re, double& im, double x) {
  re = x;
  im = 0;
}
template <class Real>
void load(double& re, double& im, const std::complex<Real>& x) {
  re = x.real();
  im = x.imag();
}
void store(double& x, double re, double) { x = re; }
void store(float& x, double re, double) { x = static_cast<float>(re); }
template <class Real>
void store(std::complex<Real>& x, double re, double im) {
  x = std::complex<Real>(static_cast<Real>(re), static_cast<Real>(im));
}

}  // namespace

template <class T>
void report_error(int code, int index, const T* a1, const T* a2, T* r1, T* r2, const char* name) {
  const unsigned mode = current_mode();
  const unsigned error_mode = mode & VML_ERRMODE_MASK;
  if (error_mode == VML_ERRMODE_NOERR) return;
  set_error_status(code);
  if (error_mode == VML_ERRMODE_IGNORE) return;

  tav_vml_error_context context{};
  context.code = code;
  // In a threaded call the kernel sees a share of the caller's arrays.
  const T* whole = static_cast<const T*>(interface_input());
  context.index = whole != nullptr ? static_cast<int>(a1 - whole) + index : index;
  const size_t length = strnlen(name, sizeof context.function_name - 1);
  std::memcpy(context.function_name, name, length);
  context.function_name[length] = '\0';
  context.function_name_length = static_cast<int>(length);
  if (!argument_error(code)) {
    load(context.a1, context.a1_im, a1[index]);
    if (a2 != nullptr) load(context.a2, context.a2_im, a2[index]);
    load(context.r1, context.r1_im, r1[index]);
    if (r2 != nullptr) load(context.r2, context.r2_im, r2[index]);
  }

  if (mode & VML_ERRMODE_CALLBACK) {
    if (const tav_vml_error_callback callback = error_callback())
      if (callback(&context) != 0) return;
  }
  if (mode & (VML_ERRMODE_IGNORE | VML_ERRMODE_ERRNO | VML_ERRMODE_STDERR | VML_ERRMODE_EXCEPT |
              VML_ERRMODE_NOERR)) {
    if (mode & VML_ERRMODE_ERRNO) errno = errno_for(code);
    if (mode & VML_ERRMODE_STDERR) print_message(code, context.function_name, context.index);
    if (mode & VML_ERRMODE_EXCEPT) raise_exception(code, mode);
  }
  if (argument_error(code)) return;
  store(r1[index], context.r1, context.r1_im);
  if (r2 != nullptr) store(r2[index], context.r2, context.r2_im);
}

template void report_error<float>(int, int, const float*, const float*, float*, float*,
                                  const char*);
template void report_error<double>(int, int, const double*, const double*, double*, double*,
                                   const char*);
template void report_error<std::complex<float>>(int, int, const std::complex<float>*,
                                                const std::complex<float>*, std::complex<float>*,
                                                std::complex<float>*, const char*);
template void report_error<std::complex<double>>(int, int, const std::complex<double>*,
                                                 const std::complex<double>*,
                                                 std::complex<double>*, std::complex<double>*,
                                                 const char*);

}  // namespace tav::vml
