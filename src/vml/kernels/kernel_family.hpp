// Kernel family tags of the vector-math kernels: which instruction-set level each two-letter tag
// stands for, which compiled path builds it, which tag serves each of the ten table slots, and
// the macros that form the kernel names tav_vml_kernel_<t><Func>_<FAM><ACC><flags>.
//
//   slot  tag  level                         built by path   reached from CPU type
//   0     Z0   x86-64 baseline (SSE2)        def             0
//   1     Y8   baseline, reproducible        cnr_def         1
//   2     U8   SSE3                          (none: slot holds Z0)   none
//   3     L9   SSSE3                         mc              2
//   4     H8   SSE4.1                        (none: slot holds L9)   none
//   5     EX   x86-64-v2 (SSE4.2, POPCNT)    mc3             3
//   6     E9   AVX                           avx             4
//   7     E7   x86-64-v3 (AVX2, FMA)         avx2            5
//   8     E2   AVX-512F/CD on v3             avx512_tp       6
//   9     B3   x86-64-v4 (AVX-512)           avx512          7
//
// No CPU type maps to slots 2 and 4 (the vector-math CPU types are 0, 1, 3, 5, 6, 7, 8, 9), so
// U8 and H8 get no build of their own; their slots hold the next lower level's kernel, which
// runs on any processor that could claim them.
#pragma once

// The family tag of the path being compiled.
#ifdef TAV_PATH_ID
#if TAV_PATH_ID == 0
#define TAV_VML_FAMILY Z0
#elif TAV_PATH_ID == 1
#define TAV_VML_FAMILY Y8
#elif TAV_PATH_ID == 2
#define TAV_VML_FAMILY L9
#elif TAV_PATH_ID == 3
#define TAV_VML_FAMILY EX
#elif TAV_PATH_ID == 4
#define TAV_VML_FAMILY E9
#elif TAV_PATH_ID == 5
#define TAV_VML_FAMILY E7
#elif TAV_PATH_ID == 6
#define TAV_VML_FAMILY E2
#elif TAV_PATH_ID == 7
#define TAV_VML_FAMILY B3
#else
#error "unknown code path"
#endif
#endif

#define TAV_VML_KERNEL_JOIN(function, family, accuracy, flags) \
  tav_vml_kernel_##function##_##family##accuracy##flags
#define TAV_VML_KERNEL_EXPAND(function, family, accuracy, flags) \
  TAV_VML_KERNEL_JOIN(function, family, accuracy, flags)

#ifdef TAV_VML_FAMILY
// In a kernel file: TAV_VML_KERNEL_NAME(dPow, HA, ynn) is tav_vml_kernel_dPow_E7HAynn in the
// avx2 objects.
#define TAV_VML_KERNEL_NAME(function, accuracy, flags) \
  TAV_VML_KERNEL_EXPAND(function, TAV_VML_FAMILY, accuracy, flags)
#endif

// The eight built kernels of one function and accuracy, in path-id order, for declarations.
#define TAV_VML_KERNEL_BUILDS(function, accuracy, flags)                                        \
  TAV_VML_KERNEL_JOIN(function, Z0, accuracy, flags), TAV_VML_KERNEL_JOIN(function, Y8, accuracy, flags), \
      TAV_VML_KERNEL_JOIN(function, L9, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, EX, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, E9, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, E7, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, E2, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, B3, accuracy, flags)

// One row of a kernel table: the ten slots of one accuracy, in slot order (see the table above).
#define TAV_VML_KERNEL_ROW(function, accuracy, flags)                                           \
  TAV_VML_KERNEL_JOIN(function, Z0, accuracy, flags), TAV_VML_KERNEL_JOIN(function, Y8, accuracy, flags), \
      TAV_VML_KERNEL_JOIN(function, Z0, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, L9, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, L9, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, EX, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, E9, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, E7, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, E2, accuracy, flags),                                       \
      TAV_VML_KERNEL_JOIN(function, B3, accuracy, flags)
