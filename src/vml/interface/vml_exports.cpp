// The exported vector functions v?Add, v?Sub, v?Mul, v?Div and v?Pow: each under its C name,
// its two Fortran names (arguments by reference) and the mode-taking twin vm? with its Fortran
// names, all forwarding to one call template with the function's tables.
#include <tav/tav_types.h>
#include <tav/tav_vml.h>

#include <complex>

#include "common/exports.hpp"
#include "vml/interface/vector_call.hpp"
#include "vml/tables/function_tables.hpp"

using tav::vml::function_tables;
using tav::vml::vector_call;
using tav::vml::vector_call_with_mode;

// One function: the C name v<t><Func> and its Fortran names, the twin vm<t><Func> and its
// Fortran names. C is the element type of the public header, T the library's.
#define TAV_VML_EXPORTS(t, Func, UPPER, lower, C, T)                                             \
  static constexpr function_tables<T> t##Func##_tables{tav_vml_kernel_##t##Func##_ttab,         \
                                                       tav_vml_kernel_##t##Func##_ctab};        \
  TAV_EXPORT void v##t##Func(int n, const C* a, const C* b, C* r) {                             \
    vector_call(n, a, b, r, t##Func##_tables, "v" #t #Func);                                    \
  }                                                                                             \
  TAV_EXPORT void vm##t##Func(int n, const C* a, const C* b, C* r, unsigned int mode) {         \
    vector_call_with_mode(n, a, b, r, mode, t##Func##_tables, "v" #t #Func);                    \
  }                                                                                             \
  TAV_EXPORT void V##UPPER##_(const int* n, const C* a, const C* b, C* r) {                     \
    vector_call(*n, a, b, r, t##Func##_tables, "v" #t #Func);                                   \
  }                                                                                             \
  TAV_EXPORT void VM##UPPER##_(const int* n, const C* a, const C* b, C* r,                      \
                               const unsigned int* mode) {                                      \
    vector_call_with_mode(*n, a, b, r, *mode, t##Func##_tables, "v" #t #Func);                  \
  }                                                                                             \
  TAV_EXPORT_ALIAS(v##lower##_, V##UPPER##_);                                                   \
  TAV_EXPORT_ALIAS(vm##lower##_, VM##UPPER##_)

#define TAV_VML_EXPORTS_4(Func, FUNC, func)                                        \
  TAV_VML_EXPORTS(s, Func, S##FUNC, s##func, float, float);                        \
  TAV_VML_EXPORTS(d, Func, D##FUNC, d##func, double, double);                      \
  TAV_VML_EXPORTS(c, Func, C##FUNC, c##func, tav_complex8, std::complex<float>);   \
  TAV_VML_EXPORTS(z, Func, Z##FUNC, z##func, tav_complex16, std::complex<double>)

TAV_VML_EXPORTS_4(Add, ADD, add);
TAV_VML_EXPORTS_4(Sub, SUB, sub);
TAV_VML_EXPORTS_4(Mul, MUL, mul);
TAV_VML_EXPORTS_4(Div, DIV, div);
TAV_VML_EXPORTS_4(Pow, POW, pow);
