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
// scaled by the time per element relative to vdPow of the same slot and accuracy row. vsPow:
// measured on the avx2 kernels at n = 1000 (bench/RESULTS.md, "Vector math: power"), on the
// families with AVX2 (E7, E2, B3: eight lanes per block) 0.43 (LA), 0.49 (HA), 0.25 (EP), on the
// others (float through the double formula) 0.77, 0.78, 1.08. vcPow and vzPow: measured per
// family through the kernel tables (bench/vml_pow_kernels_bench, bench/RESULTS.md, "Vector math:
// complex power"): per slot, the mean of two sets of medians of three runs, to two digits; a
// family that builds one variant has its one ratio in every row (Y8, EX, E2), and E2 and B3,
// which this machine cannot run, take E7's (the same 256-bit code).
extern "C" const float tav_vml_kernel_dPow_ctab[30] = {
    131.654f, 3.0f, 91.29f, 43.34f, 40.18f, 33.8f,  23.571f, 11.319f, 7.198f, 4.699f,
    131.654f, 3.0f, 102.62f, 46.08f, 42.49f, 34.62f, 24.397f, 19.778f, 8.883f, 6.002f,
    131.654f, 3.0f, 73.01f, 27.17f, 23.1f,  20.49f, 13.304f, 10.204f, 4.342f, 3.08f};
extern "C" const float tav_vml_kernel_sPow_ctab[30] = {
    101.4f, 3.0f, 70.29f, 33.37f, 30.94f, 26.03f, 18.15f, 4.867f, 3.095f, 2.021f,
    102.7f, 3.0f, 80.04f, 35.94f, 33.14f, 27.0f, 19.03f, 9.691f, 4.353f, 2.941f,
    142.2f, 3.0f, 78.85f, 29.34f, 24.95f, 22.13f, 14.37f, 2.551f, 1.085f, 0.77f};
extern "C" const float tav_vml_kernel_cPow_ctab[30] = {
    250.1f, 3.0f, 173.5f, 78.01f, 72.32f, 64.22f, 47.14f, 24.9f, 17.28f, 10.34f,
    237.0f, 3.0f, 184.7f, 82.94f, 76.48f, 65.78f, 46.35f, 47.47f, 21.32f, 14.4f,
    342.3f, 3.0f, 189.8f, 65.21f, 55.44f, 38.93f, 42.57f, 27.55f, 10.42f, 8.316f};
extern "C" const float tav_vml_kernel_zPow_ctab[30] = {
    737.3f, 3.0f, 511.2f, 238.4f, 221.0f, 189.3f, 136.7f, 55.46f, 37.43f, 23.03f,
    724.1f, 3.0f, 564.4f, 262.7f, 242.2f, 193.9f, 131.7f, 102.8f, 46.19f, 31.21f,
    329.1f, 3.0f, 182.5f, 76.08f, 64.68f, 114.7f, 41.24f, 29.59f, 22.58f, 8.932f};
