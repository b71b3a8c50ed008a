// The library's own case-insensitive character comparison, as its argument checks use it.
#pragma once

extern "C" {

// 1 when the first characters of `a` and `b` are equal after folding ASCII upper case to lower
// case, 0 otherwise or when either pointer is null. The lengths that Fortran callers pass are
// ignored: only the first character counts.
int tav_serv_lsame(const char* a, const char* b, int len_a, int len_b);
}
