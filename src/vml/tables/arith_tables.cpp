// Kernel and cost tables of the arithmetic functions (Add, Sub, Mul, Div for s, d, c, z). Each
// result is one IEEE operation or a formula correct to the last bit or two, so one high-accuracy
// kernel per family serves all three rows.
#include <complex>
#include <type_traits>

#include "vml/kernels/kernel_family.hpp"
#include "vml/tables/function_tables.hpp"

// Cost figures: the threader's estimate of the work per element. vdAdd's rows are the reference
// (the eighth slot of the EP row is 0.432 where the others have 0.433); every other function has
// vdAdd's rows times k, its time per element relative to vdAdd, measured at n = 1000 on the avx2
// path (bench/RESULTS.md, "Vector math: arithmetic"). Slot 1 keeps 3.0 in every row.
#define TAV_VML_COST_ROW(k, eighth)                                                            \
  1.79f * (k), 3.0f, 4.17f * (k), 1.62f * (k), 1.56f * (k), 0.98f * (k), 0.719f * (k),      \
      (eighth) * (k), 0.432f * (k), 0.254f * (k)

// One function: its eight built kernels, and tables whose three rows (LA, HA, EP) hold the
// high-accuracy kernel of each slot's family.
#define TAV_VML_ARITH_TABLES(t, T, Func, k)                                                      \
  extern "C" std::remove_pointer_t<tav::vml::kernel_fn<T>> TAV_VML_KERNEL_BUILDS(t##Func, HA, ynn); \
  extern "C" const tav::vml::kernel_fn<T> tav_vml_kernel_##t##Func##_ttab[tav::vml::table_size] = { \
      TAV_VML_KERNEL_ROW(t##Func, HA, ynn), TAV_VML_KERNEL_ROW(t##Func, HA, ynn),                \
      TAV_VML_KERNEL_ROW(t##Func, HA, ynn)};                                                     \
  extern "C" const float tav_vml_kernel_##t##Func##_ctab[tav::vml::table_size] = {              \
      TAV_VML_COST_ROW(k, 0.433f), TAV_VML_COST_ROW(k, 0.433f), TAV_VML_COST_ROW(k, 0.432f)}

TAV_VML_ARITH_TABLES(d, double, Add, 1.0f);
TAV_VML_ARITH_TABLES(d, double, Sub, 1.0f);
TAV_VML_ARITH_TABLES(d, double, Mul, 1.0f);
TAV_VML_ARITH_TABLES(d, double, Div, 5.5f);
TAV_VML_ARITH_TABLES(s, float, Add, 0.5f);
TAV_VML_ARITH_TABLES(s, float, Sub, 0.5f);
TAV_VML_ARITH_TABLES(s, float, Mul, 0.5f);
TAV_VML_ARITH_TABLES(s, float, Div, 1.5f);
TAV_VML_ARITH_TABLES(c, std::complex<float>, Add, 1.0f);
TAV_VML_ARITH_TABLES(c, std::complex<float>, Sub, 1.0f);
TAV_VML_ARITH_TABLES(c, std::complex<float>, Mul, 15.0f);
TAV_VML_ARITH_TABLES(c, std::complex<float>, Div, 25.0f);
TAV_VML_ARITH_TABLES(z, std::complex<double>, Add, 2.0f);
TAV_VML_ARITH_TABLES(z, std::complex<double>, Sub, 2.0f);
TAV_VML_ARITH_TABLES(z, std::complex<double>, Mul, 25.0f);
TAV_VML_ARITH_TABLES(z, std::complex<double>, Div, 90.0f);
