// The kernel and cost tables of vsPow, vdPow, vcPow and vzPow. Rows LA, HA, EP of ten slots;
// slots 2 and 4 hold the next lower family's kernel (see kernel_family.hpp) and a slot whose
// accuracy variant its family does not build holds the variant it does build (Y8: LA; EX and
// E2: HA; see pow_variants.hpp).
#include <complex>

#include "vml/kernels/kernel_family.hpp"
#include "vml/tables/function_tables.hpp"

#define TAV_POW_DECLARE(t, T, acc, flags) \
  extern "C" void TAV_VML_KERNEL_JOIN(t##Pow, Z0, acc, flags)(int, const T*, const T*, T*);   \
  extern "C" void TAV_VML_KERNEL_JOIN(t##Pow, L9, acc, flags)(int, const T*, const T*, T*);   \
  extern "C" void TAV_VML_KERNEL_JOIN(t##Pow, E9, acc, flags)(int, const T*, const T*, T*);   \
  extern "C" void TAV_VML_KERNEL_JOIN(t##Pow, E7, acc, flags)(int, const T*, const T*, T*);   \
  extern "C" void TAV_VML_KERNEL_JOIN(t##Pow, B3, acc, flags)(int, const T*, const T*, T*)
#define TAV_POW_DECLARE_ONLY(t, T)                                                             \
  extern "C" void TAV_VML_KERNEL_JOIN(t##Pow, Y8, LA, ynn)(int, const T*, const T*, T*);     \
  extern "C" void TAV_VML_KERNEL_JOIN(t##Pow, EX, HA, ynn)(int, const T*, const T*, T*);     \
  extern "C" void TAV_VML_KERNEL_JOIN(t##Pow, E2, HA, ynn)(int, const T*, const T*, T*)
#define TAV_POW_DECLARE_ALL(t, T)        \
  TAV_POW_DECLARE(t, T, LA, ynn);        \
  TAV_POW_DECLARE(t, T, HA, ynn);        \
  TAV_POW_DECLARE(t, T, EP, nnn);        \
  TAV_POW_DECLARE_ONLY(t, T)

TAV_POW_DECLARE_ALL(s, float);
TAV_POW_DECLARE_ALL(d, double);
TAV_POW_DECLARE_ALL(c, std::complex<float>);
TAV_POW_DECLARE_ALL(z, std::complex<double>);

// One row: the families' kernels of accuracy `acc`, with the fixed stand-ins for Y8, EX and E2.
#define TAV_POW_ROW(t, acc, flags)                                                           \
  TAV_VML_KERNEL_JOIN(t##Pow, Z0, acc, flags), TAV_VML_KERNEL_JOIN(t##Pow, Y8, LA, ynn),     \
      TAV_VML_KERNEL_JOIN(t##Pow, Z0, acc, flags), TAV_VML_KERNEL_JOIN(t##Pow, L9, acc, flags), \
      TAV_VML_KERNEL_JOIN(t##Pow, L9, acc, flags), TAV_VML_KERNEL_JOIN(t##Pow, EX, HA, ynn), \
      TAV_VML_KERNEL_JOIN(t##Pow, E9, acc, flags), TAV_VML_KERNEL_JOIN(t##Pow, E7, acc, flags), \
      TAV_VML_KERNEL_JOIN(t##Pow, E2, HA, ynn), TAV_VML_KERNEL_JOIN(t##Pow, B3, acc, flags)
#define TAV_POW_TABLE(t, T)                                                        \
  extern "C" const ::tav::vml::kernel_fn<T> tav_vml_kernel_##t##Pow_ttab[30] = { \
      TAV_POW_ROW(t, LA, ynn), TAV_POW_ROW(t, HA, ynn), TAV_POW_ROW(t, EP, nnn)}

TAV_POW_TABLE(s, float);
TAV_POW_TABLE(d, double);
TAV_POW_TABLE(c, std::complex<float>);
TAV_POW_TABLE(z, std::complex<double>);

// Work per element for the threader. vdPow's figures are the reference; the others are vdPow's
// scaled by the time per element relative to vdPow of the same accuracy row, measured on the
// avx2 kernels at n = 1000 (bench/RESULTS.md, "Vector math: power"): vsPow on the families with
// AVX2 (E7, E2, B3: eight lanes per block) 0.43 (LA), 0.49 (HA), 0.25 (EP), on the others (float
// through the double formula) 0.77, 0.78, 1.08; vcPow and vzPow 100 (one extended-precision
// evaluation per element).
extern "C" const float tav_vml_kernel_dPow_ctab[30] = {
    131.654f, 3.0f, 91.29f, 43.34f, 40.18f, 33.8f,  23.571f, 11.319f, 7.198f, 4.699f,
    131.654f, 3.0f, 102.62f, 46.08f, 42.49f, 34.62f, 24.397f, 19.778f, 8.883f, 6.002f,
    131.654f, 3.0f, 73.01f, 27.17f, 23.1f,  20.49f, 13.304f, 10.204f, 4.342f, 3.08f};
extern "C" const float tav_vml_kernel_sPow_ctab[30] = {
    101.4f, 3.0f, 70.29f, 33.37f, 30.94f, 26.03f, 18.15f, 4.867f, 3.095f, 2.021f,
    102.7f, 3.0f, 80.04f, 35.94f, 33.14f, 27.0f, 19.03f, 9.691f, 4.353f, 2.941f,
    142.2f, 3.0f, 78.85f, 29.34f, 24.95f, 22.13f, 14.37f, 2.551f, 1.085f, 0.77f};
extern "C" const float tav_vml_kernel_cPow_ctab[30] = {
    1.317e+04f, 3.0f, 9129.0f, 4334.0f, 4018.0f, 3380.0f, 2357.0f, 1132.0f, 719.8f, 469.9f,
    1.317e+04f, 3.0f, 1.026e+04f, 4608.0f, 4249.0f, 3462.0f, 2440.0f, 1978.0f, 888.3f, 600.2f,
    1.317e+04f, 3.0f, 7301.0f, 2717.0f, 2310.0f, 2049.0f, 1330.0f, 1020.0f, 434.2f, 308.0f};
extern "C" const float tav_vml_kernel_zPow_ctab[30] = {
    1.317e+04f, 3.0f, 9129.0f, 4334.0f, 4018.0f, 3380.0f, 2357.0f, 1132.0f, 719.8f, 469.9f,
    1.317e+04f, 3.0f, 1.026e+04f, 4608.0f, 4249.0f, 3462.0f, 2440.0f, 1978.0f, 888.3f, 600.2f,
    1.317e+04f, 3.0f, 7301.0f, 2717.0f, 2310.0f, 2049.0f, 1330.0f, 1020.0f, 434.2f, 308.0f};
