// Error reports: the handler slot, the default handler, and the entries that report through them
// (tav_serv_xerbla, the CBLAS reports, the null-pointer checks).
#include <tav/tav_error.h>

#include <algorithm>
#include <atomic>
#include <cstring>

#include "common/exports.hpp"
#include "service/messages/report.hpp"

namespace tav::service {
namespace {

// Null until a handler is installed; null again after tav_serv_set_xerbla(nullptr). Installing
// is meant to happen before computations start, the atomic only keeps concurrent reports defined.
std::atomic<tav_xerbla_handler> installed_handler{nullptr};

// Routine names are cut at this many characters; the buffer keeps room for the terminator.
constexpr int routine_name_limit = 20;

// C callers pass terminated names; the bound guards against one that is not.
constexpr size_t name_length_bound = 4096;

// Reported for a null pointer found by tav_serv_check_ptr (printed as "not enough work memory").
constexpr int null_pointer_info = 1089;
// Reported for a failed scratch allocation (printed as "insufficient workspace").
constexpr int allocation_info = 1000;

int bounded_length(const char* name) {
  return name == nullptr ? 0 : static_cast<int>(strnlen(name, name_length_bound));
}

}  // namespace

void cblas_report(const char* name, int position) {
  int info = position;
  tav_serv_set_xerbla_interface(cdecl_xerbla);
  cdecl_xerbla(name, &info, bounded_length(name));
}

void cblas_report_malloc_error(const char* name) { cblas_report(name, allocation_info); }

}  // namespace tav::service

TAV_EXPORT void tav_serv_default_xerbla(const char* name, const int* info, int name_length) {
  using namespace tav::service;
  if (name == nullptr || info == nullptr || name_length < 0) return;
  // A Fortran name is not terminated, so at most name_length characters are read; strnlen also
  // stops at a terminator that comes earlier. Trailing blanks are kept.
  char routine[routine_name_limit + 2];
  size_t kept = strnlen(name, static_cast<size_t>(std::min(name_length, routine_name_limit)));
  std::memcpy(routine, name, kept);
  routine[kept] = '\0';

  // An empty line, then the message chosen by info: the four reserved codes first (each with
  // the name only), then internal conditions (0 and below, printed negated), then the 1-based
  // position of a bad argument.
  tav_serv_print(0, 0, 0);
  int code = *info;
  switch (code) {
    case allocation_info:
      tav_serv_print(0, 8, 1, routine);
      return;
    case 1001:  // incompatible optional parameters
      tav_serv_print(0, 9, 1, routine);
      return;
    case 1212:
      tav_serv_print(0, 1212, 1, routine);
      return;
    case null_pointer_info:
      tav_serv_print(0, 1089, 1, routine);
      return;
    default:
      break;
  }
  if (code <= 0) {
    // Negated in unsigned arithmetic: INT_MIN has no positive twin and prints as itself.
    int condition = static_cast<int>(0u - static_cast<unsigned>(code));
    tav_serv_print(0, 7, 2, condition, routine);
  } else {
    tav_serv_print(0, 6, 2, code, routine);
  }
}

TAV_EXPORT void tav_serv_xerbla(const char* name, const int* info, int name_length) {
  using namespace tav::service;
  if (name == nullptr || info == nullptr) return;
  tav_xerbla_handler handler = installed_handler.load(std::memory_order_acquire);
  if (handler == nullptr) handler = tav_serv_default_xerbla;
  handler(name, info, name_length);
}

// Returns the handler that was in force: the default one when the slot was empty.
TAV_EXPORT tav_xerbla_handler tav_serv_set_xerbla(tav_xerbla_handler handler) {
  using namespace tav::service;
  tav_xerbla_handler previous = installed_handler.exchange(handler, std::memory_order_acq_rel);
  return previous != nullptr ? previous : tav_serv_default_xerbla;
}

// Library layers call this to select their calling form of the handler; an application's own
// handler, installed earlier, wins. Every GEMM and TRSM call comes here: once a handler is in
// place a plain load answers, without the locked exchange that threads calling at once would
// contend on.
TAV_EXPORT void tav_serv_set_xerbla_interface(tav_xerbla_handler handler) {
  using namespace tav::service;
  if (installed_handler.load(std::memory_order_acquire) != nullptr) return;
  tav_xerbla_handler empty = nullptr;
  installed_handler.compare_exchange_strong(empty, handler, std::memory_order_acq_rel);
}

TAV_EXPORT void cblas_xerbla(const char* name, int position) {
  tav::service::cblas_report(name, position);
}

TAV_EXPORT void cblas_xerbla_malloc_error(const char* name) {
  tav::service::cblas_report_malloc_error(name);
}

TAV_EXPORT int tav_serv_check_ptr(const void* pointer, const char* name) {
  using namespace tav::service;
  if (pointer != nullptr) return 0;
  int info = null_pointer_info;
  tav_serv_xerbla(name, &info, bounded_length(name));
  return 1;
}

// The silent twin of tav_serv_check_ptr, for callers that report in their own way.
TAV_EXPORT int tav_serv_check_ptr_and_warn(const void* pointer, const char* name) {
  return pointer == nullptr ? 1 : 0;
}
