// LSAME, the character comparison of the BLAS and LAPACK argument checks, and its hidden form.
#include "blas/interface/lsame.hpp"

#include <tav/tav_blas.h>

#include "common/exports.hpp"

namespace {

// Only 'A'..'Z' fold: a locale's idea of case would make the checks depend on the environment.
int folded(char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : static_cast<unsigned char>(c); }

}  // namespace

extern "C" int tav_serv_lsame(const char* a, const char* b, int, int) {
  if (a == nullptr || b == nullptr) return 0;
  return folded(*a) == folded(*b) ? 1 : 0;
}

// Fortran callers append the two lengths after the pointers; C callers pass none. Neither is
// read, so one definition serves both.
TAV_EXPORT int LSAME(const char* ca, const char* cb) { return tav_serv_lsame(ca, cb, 1, 1); }
TAV_EXPORT_ALIAS(lsame, LSAME);
TAV_EXPORT_ALIAS(lsame_, LSAME);
TAV_EXPORT_ALIAS(tav_lapack__lsame_, LSAME);
