// The register-blocked micro-kernel: C(0:mm, 0:nn) += alpha·Ã·B̃ for one MR x kc sliver of A and
// one kc x NR sliver of B, real and complex, written once against the vector vocabulary. The A
// sliver is column l at a + l·a_step: packed (a_step = MR) or read in place from an
// untransposed A whose MR rows all exist (a_step = lda).
#pragma once

#include "blas/level3/kernels/gemm_element.hpp"
#include "common/simd.hpp"

namespace tav::TAV_PATH_NS::gemm {

// Elements of E per register: lanes of the real type, halved for complex pairs.
template <class E>
constexpr int lanes() {
  return simd<real_of<E>>::width / (element<E>::complex ? 2 : 1);
}

// B̃ as the pack routines lay it out: row l of the sliver is NR consecutive elements. The sliver
// streams from L2 (the panel is kb x nb); the row `ahead` steps on is requested early so that the
// broadcasts find it in L1.
template <class E, int NR>
struct packed_b {
  static constexpr int ahead = 8;
  const E* p;
  const E* at(int j) const { return p + j; }
  void next() {
    __builtin_prefetch(p + ahead * NR, 0, 3);
    p += NR;
  }
};

// B read in place: element (l, j) of the sliver at p + l·step_l + j·step_j (no conjugation).
template <class E>
struct strided_b {
  const E* p;
  index step_l, step_j;
  const E* at(int j) const { return p + j * step_j; }
  void next() { p += step_l; }
};

// Brings the tile's columns of C towards L1 while the k loop runs, so the update at its end does
// not wait on memory; only addresses inside the mm x nn tile are touched.
template <class E>
inline void prefetch_tile(const E* c, index ldc, index mm, index nn) {
  for (index j = 0; j < nn; ++j) {
    __builtin_prefetch(c + j * ldc, 0, 3);
    __builtin_prefetch(c + j * ldc + mm - 1, 0, 3);
  }
}

// The accumulators hold sum_l Ã(r, l)·B̃(l, j) in the order l = 0, 1, ..., kc - 1 for every
// element, whatever the tile position, so a product split over threads or strategies adds the
// same terms in the same order (bitwise equal on the paths without FMA contraction).
template <class R, int MR, int NR, class B>
void ukernel_real(index kc, R alpha, const R* a, index a_step, B b, R* c, index ldc, index mm,
                  index nn) {
  using V = simd<R>;
  using reg = typename V::reg;
  constexpr int W = V::width, MV = MR / W;
  static_assert(MR % W == 0, "mr must be a whole number of vectors");
  prefetch_tile(c, ldc, mm, nn);
  reg acc[MV][NR];
#pragma unroll
  for (int j = 0; j < NR; ++j)
#pragma unroll
    for (int v = 0; v < MV; ++v) acc[v][j] = V::zero();
#pragma unroll 2
  for (index l = 0; l < kc; ++l) {
    reg av[MV];
#pragma unroll
    for (int v = 0; v < MV; ++v) av[v] = V::load(a + v * W);
#pragma unroll
    for (int j = 0; j < NR; ++j) {
      const reg bj = V::broadcast_load(b.at(j));
#pragma unroll
      for (int v = 0; v < MV; ++v) acc[v][j] = V::mul_add(av[v], bj, acc[v][j]);
    }
    a += a_step;
    b.next();
  }
  const reg va = V::broadcast(alpha);
  if (mm == MR && nn == NR) {
#pragma unroll
    for (int j = 0; j < NR; ++j)
#pragma unroll
      for (int v = 0; v < MV; ++v) {
        R* cv = c + j * ldc + v * W;
        V::store(cv, V::mul_add(va, acc[v][j], V::load(cv)));
      }
    return;
  }
  // Edge tile: C(i, j) += (alpha·acc)(i, j) for i < mm, j < nn only.
  R t[MR * NR];
#pragma unroll
  for (int j = 0; j < NR; ++j)
#pragma unroll
    for (int v = 0; v < MV; ++v) V::store(t + j * MR + v * W, V::mul(va, acc[v][j]));
  for (index j = 0; j < nn; ++j)
    for (index i = 0; i < mm; ++i) c[i + j * ldc] = c[i + j * ldc] + t[i + j * MR];
}

// Complex elements stay interleaved (re, im) in the registers. With a = (ar, ai) in a lane pair
// and b = (br, bi) broadcast part by part, acc_r sums (ar·br, ai·br) and acc_i sums
// (ar·bi, ai·bi); then a·b = acc_r + (-(ai·bi), ar·bi) = acc_r + alternate(-1, 1)·swap(acc_i).
template <class R, int MR, int NR, class B>
void ukernel_complex(index kc, cpx<R> alpha, const cpx<R>* a, index a_step, B b, cpx<R>* c,
                     index ldc, index mm, index nn) {
  using V = simd<R>;
  using reg = typename V::reg;
  constexpr int W = V::width, MV = 2 * MR / W;
  static_assert((2 * MR) % W == 0, "mr must be a whole number of vectors");
  const R* ar = &a->re;
  prefetch_tile(c, ldc, mm, nn);
  reg acc_r[MV][NR], acc_i[MV][NR];
#pragma unroll
  for (int j = 0; j < NR; ++j)
#pragma unroll
    for (int v = 0; v < MV; ++v) acc_r[v][j] = V::zero(), acc_i[v][j] = V::zero();
  for (index l = 0; l < kc; ++l) {
    reg av[MV];
#pragma unroll
    for (int v = 0; v < MV; ++v) av[v] = V::load(ar + v * W);
#pragma unroll
    for (int j = 0; j < NR; ++j) {
      // Each part broadcast straight from memory: a load, where a pair loaded once would cost
      // two shuffles per column.
      const R* e = &b.at(j)->re;
      const reg br = V::broadcast_load(e), bi = V::broadcast_load(e + 1);
#pragma unroll
      for (int v = 0; v < MV; ++v) {
        acc_r[v][j] = V::mul_add(av[v], br, acc_r[v][j]);
        acc_i[v][j] = V::mul_add(av[v], bi, acc_i[v][j]);
      }
    }
    ar += 2 * a_step;
    b.next();
  }
  // s = alpha·p = alpha_re·p + alpha_im·(-p_im, p_re).
  const reg sign = V::alternate(R(-1), R(1));
  const reg xr = V::broadcast(alpha.re), xi = V::broadcast(alpha.im);
  const bool full = mm == MR && nn == NR;
  R t[2 * MR * NR];
#pragma unroll
  for (int j = 0; j < NR; ++j)
#pragma unroll
    for (int v = 0; v < MV; ++v) {
      const reg p = V::add(acc_r[v][j], V::mul(sign, V::swap_pairs(acc_i[v][j])));
      const reg s = V::mul_add(xi, V::mul(sign, V::swap_pairs(p)), V::mul(xr, p));
      if (full) {
        R* cv = &c[j * ldc].re + v * W;
        V::store(cv, V::add(V::load(cv), s));
      } else {
        V::store(t + 2 * j * MR + v * W, s);
      }
    }
  if (full) return;
  for (index j = 0; j < nn; ++j)
    for (index i = 0; i < mm; ++i) {
      cpx<R>& cij = c[i + j * ldc];
      cij.re = cij.re + t[2 * (i + j * MR)];
      cij.im = cij.im + t[2 * (i + j * MR) + 1];
    }
}

// One entry for the four element types: C(0:mm, 0:nn) += alpha·Ã·B̃.
template <class E, int MR, int NR, class B>
inline void ukernel(index kc, E alpha, const E* a, index a_step, B b, E* c, index ldc, index mm,
                    index nn) {
  if constexpr (element<E>::complex)
    ukernel_complex<real_of<E>, MR, NR>(kc, alpha, a, a_step, b, c, ldc, mm, nn);
  else
    ukernel_real<E, MR, NR>(kc, alpha, a, a_step, b, c, ldc, mm, nn);
}

}  // namespace tav::TAV_PATH_NS::gemm
