// The per-path constants of the matrix-product kernels: register blocks per element type, kernel
// interface version and the thresholds of the serial routing, in one table indexed by path id.
#pragma once

#include "blas/level3/kernels/gemm_element.hpp"

namespace tav::TAV_PATH_NS::gemm {

// An mr x nr block of C held in registers while the k loop runs; mr is a whole number of vectors
// (of real lanes for the real types, of complex pairs for the complex ones).
struct register_block {
  int mr;
  int nr;
};

// The serial driver's switches and panel caps (gemm_blocking.hpp). small_plain, small_trans: a
// product with m or n below this takes the small strategy, not the packed ones, for A plain and
// A transposed. kb_long: the k block once k >= 384. nb_real, nb_complex: the most columns of a
// B̃ panel. mb: the most rows of an Ã block.
struct serial_limits {
  int small_plain, small_trans;
  int kb_long;
  int nb_real, nb_complex;
  int mb;
};

struct path_params {
  register_block s, d, c, z;
  // 1: the caller threads the product itself; 2: thread counts come from the size formulas.
  int api_version;
  serial_limits serial;
};

// Register budgets: SSE2 and AVX have 16 registers and AVX-512 has 32; a real block needs
// mr/width·nr accumulators, a complex one twice that (products with the real and the imaginary
// part of b kept apart). 12x4 double on avx2 fills 12 accumulators + 3 loads + 1 broadcast, and
// so does 6x2 double complex, which reads B̃ (streamed from L2) at 2/3 the bytes per FMA of 4x3:
// its kernel ran 1 to 5 per cent faster on Zen 3, ZGEMM n = 1024 up to 2 per cent. For the same
// reason single complex takes 12x2 over 8x3: CGEMM n = 1024 and 2048 6 to 7 per cent faster, and
// every small and skinny shape measured as fast or faster. Single real 16x6 and 32x3 lost to 24x4.
//
// On def (SSE2) B̃ repeats each real once per lane (b_copies), so a row of B̃ has twice (double)
// or four times (float) the bytes of its values: tall blocks (8x2 double, 16x2 float, 4x1 and 8x1
// complex) read half the B̃ bytes per multiply of 4x4, 8x4, 2x2 and 4x2, and B̃ streams from L2.
// Against the square blocks, thread CPU time at n = 1024: SGEMM and CGEMM 14 to 16 per cent
// faster, ZGEMM 10, DGEMM 5 to 8; the skinny shapes as fast or faster; cblas_dgemm 4 x 4 and
// 8 x 8 10 per cent slower, 16 and 32 faster. On mc, whose double broadcast loads need no copies,
// the tall blocks gained nothing.
//
// Serial limits: the avx2 row is the reference, the others were measured against it by
// bench/gemm_constants_sweep.cpp (bench/RESULTS.md, "How the per-path constants were chosen").
// On def, with the other CPU busy, the packed driver was as fast as the small strategy from 24
// rows and columns and faster above; on a quiet machine every switch from 32 to 96 was within
// 1.5 per cent and 24 cost about 1 per cent, so 24, the smaller loss either way. cnr_def runs the
// same code. Elsewhere, and for kb and
// nb everywhere, no candidate beat the avx2 value by more than the noise, so it stays. The
// AVX-512 paths, which no machine here runs, keep the avx2 row.
inline constexpr path_params path_table[8] = {
    /* def       */ {{16, 2}, {8, 2}, {8, 1}, {4, 1}, 1, {24, 24, 192, 192, 96, 5000}},
    /* cnr_def   */ {{16, 2}, {8, 2}, {8, 1}, {4, 1}, 1, {24, 24, 192, 192, 96, 5000}},
    /* mc        */ {{8, 4}, {4, 4}, {4, 2}, {2, 2}, 1, {72, 56, 192, 192, 96, 5000}},
    /* mc3       */ {{8, 4}, {4, 4}, {4, 2}, {2, 2}, 1, {72, 56, 192, 192, 96, 5000}},
    /* avx       */ {{16, 4}, {8, 4}, {8, 2}, {4, 2}, 1, {72, 56, 192, 192, 96, 5000}},
    /* avx2      */ {{24, 4}, {12, 4}, {12, 2}, {6, 2}, 2, {72, 56, 192, 192, 96, 5000}},
    /* avx512_tp */ {{48, 8}, {24, 8}, {16, 6}, {8, 6}, 2, {72, 56, 192, 192, 96, 5000}},
    /* avx512    */ {{48, 8}, {24, 8}, {16, 6}, {8, 6}, 2, {72, 56, 192, 192, 96, 5000}},
};

inline constexpr path_params this_path = path_table[TAV_PATH_ID];

template <class E>
constexpr register_block block_for() {
  if constexpr (is_same_v<E, float>) return this_path.s;
  else if constexpr (is_same_v<E, double>) return this_path.d;
  else if constexpr (is_same_v<E, cpx<float>>) return this_path.c;
  else return this_path.z;
}

// Copies of each real of B̃ that the packing writes side by side. A broadcast of one element from
// memory into a register is a plain load on the AVX paths, and for double with SSE3 (movddup);
// otherwise it takes a shuffle beside the load, on the ports the multiplies and adds need. There
// B̃ holds each real once per lane of a register, so the kernel loads it ready to use.
// By path id: 4 and up have AVX, 2 (mc) and 3 (mc3) SSE3, 0 and 1 SSE2 only.
template <class E>
constexpr int b_copies() {
  constexpr int lanes_of_128 = static_cast<int>(16 / sizeof(real_of<E>));
  if (TAV_PATH_ID >= 4) return 1;
  if (TAV_PATH_ID >= 2 && lanes_of_128 == 2) return 1;
  return lanes_of_128;
}

// The k extent of a packed block never exceeds this (see kb in gemm_blocking.hpp).
inline constexpr index kb_max = this_path.serial.kb_long > 256 ? this_path.serial.kb_long : 256;

}  // namespace tav::TAV_PATH_NS::gemm
