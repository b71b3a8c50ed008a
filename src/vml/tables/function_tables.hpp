// The kernel table and the cost table of each vector function: tav_vml_kernel_dAdd_ttab holds the
// 30 kernels of vdAdd, tav_vml_kernel_dAdd_ctab their cost figures (work per element, used by the
// threader to choose a thread count), both indexed as vml_kernel.hpp says.
#pragma once

#include "vml/kernels/vml_kernel.hpp"

#define TAV_VML_FUNCTION_TABLES(t, T, Func)                                                  \
  extern "C" const ::tav::vml::kernel_fn<T> tav_vml_kernel_##t##Func##_ttab[::tav::vml::table_size]; \
  extern "C" const float tav_vml_kernel_##t##Func##_ctab[::tav::vml::table_size]

#define TAV_VML_FUNCTION_TABLES_4(Func)                  \
  TAV_VML_FUNCTION_TABLES(s, float, Func);               \
  TAV_VML_FUNCTION_TABLES(d, double, Func);              \
  TAV_VML_FUNCTION_TABLES(c, std::complex<float>, Func); \
  TAV_VML_FUNCTION_TABLES(z, std::complex<double>, Func)

TAV_VML_FUNCTION_TABLES_4(Add);
TAV_VML_FUNCTION_TABLES_4(Sub);
TAV_VML_FUNCTION_TABLES_4(Mul);
TAV_VML_FUNCTION_TABLES_4(Div);
TAV_VML_FUNCTION_TABLES_4(Pow);
