// The provider's element-wise vector arithmetic: X_vector_add, _subtract, _multiply, _divide and
// _power forward (n, a, b, result) unchanged to v?Add, v?Sub, v?Mul, v?Div and v?Pow, whose mode,
// accuracy and error status apply; nothing is checked here.
#include <tav/tav_provider.h>
#include <tav/tav_vml.h>

#include "common/exports.hpp"

#define TAV_PROVIDER_VECTOR_FUNCTIONS(operation, Func)                                       \
  TAV_EXPORT void s_vector_##operation(int n, const float* a, const float* b, float* result) { \
    vs##Func(n, a, b, result);                                                               \
  }                                                                                          \
  TAV_EXPORT void d_vector_##operation(int n, const double* a, const double* b,              \
                                       double* result) {                                     \
    vd##Func(n, a, b, result);                                                               \
  }                                                                                          \
  TAV_EXPORT void c_vector_##operation(int n, const tav_complex8* a, const tav_complex8* b,  \
                                       tav_complex8* result) {                               \
    vc##Func(n, a, b, result);                                                               \
  }                                                                                          \
  TAV_EXPORT void z_vector_##operation(int n, const tav_complex16* a, const tav_complex16* b, \
                                       tav_complex16* result) {                              \
    vz##Func(n, a, b, result);                                                               \
  }

TAV_PROVIDER_VECTOR_FUNCTIONS(add, Add)
TAV_PROVIDER_VECTOR_FUNCTIONS(subtract, Sub)
TAV_PROVIDER_VECTOR_FUNCTIONS(multiply, Mul)
TAV_PROVIDER_VECTOR_FUNCTIONS(divide, Div)
TAV_PROVIDER_VECTOR_FUNCTIONS(power, Pow)
