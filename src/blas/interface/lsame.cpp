// LSAME, the character comparison of the BLAS and LAPACK argument checks, and its hidden form.
#include "blas/interface/lsame.hpp"

#include <tav/tav_blas.h>

#include "common/exports.hpp"

extern "C" int tav_serv_lsame(const char* a, const char* b, int, int) {
  return tav::blas::interface::same_letter(a, b) ? 1 : 0;
}

// Fortran callers append the two lengths after the pointers; C callers pass none. Neither is
// read, so one definition serves both.
TAV_EXPORT int LSAME(const char* ca, const char* cb) { return tav_serv_lsame(ca, cb, 1, 1); }
TAV_EXPORT_ALIAS(lsame, LSAME);
TAV_EXPORT_ALIAS(lsame_, LSAME);
TAV_EXPORT_ALIAS(tav_lapack__lsame_, LSAME);
