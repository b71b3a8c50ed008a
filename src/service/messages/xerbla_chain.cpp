// The replaceable xerbla chain: cdecl_xerbla -> xerbla -> xerbla_ -> XERBLA_ -> XERBLA -> default.
#include <tav/tav_error.h>

#include "common/exports.hpp"

// Each link calls the next by its exported name through the PLT, so a program that defines one
// of these names takes over every report that reaches the links above it. noinline keeps the
// compiler from folding a link into its caller, which would bypass an application's definition;
// the library is linked without -Bsymbolic, so the calls stay bound at run time.

TAV_EXPORT __attribute__((noinline)) void cdecl_xerbla(const char* name, const int* info,
                                                       int name_length) {
  xerbla(name, info, name_length);
}

TAV_EXPORT __attribute__((noinline)) void xerbla(const char* name, const int* info,
                                                 int name_length) {
  xerbla_(name, info, name_length);
}

TAV_EXPORT __attribute__((noinline)) void xerbla_(const char* name, const int* info,
                                                  int name_length) {
  XERBLA_(name, info, name_length);
}

TAV_EXPORT __attribute__((noinline)) void XERBLA_(const char* name, const int* info,
                                                  int name_length) {
  XERBLA(name, info, name_length);
}

TAV_EXPORT __attribute__((noinline)) void XERBLA(const char* name, const int* info,
                                                 int name_length) {
  tav_serv_default_xerbla(name, info, name_length);
}
