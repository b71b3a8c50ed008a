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

// B̃ as the pack routines lay it out: row l of the sliver is NR consecutive elements, each real
// b_copies times. The sliver streams from L2 (the panel is kb x nb); every `rows_per_request`
// rows the kernel asks for the row `ahead` rows on, so each 64-byte line is requested about once
// (a request every row cost 5% in L1 on Zen 3), 16 lines early: some 200 cycles at the FMA
// rate, many L2 latencies.
template <class E, int NR>
struct packed_b {
  static constexpr int parts = element<E>::complex ? 2 : 1;
  static constexpr int copies = b_copies<E>();
  static constexpr int row_bytes = NR * static_cast<int>(sizeof(E)) * copies;
  static constexpr int rows_per_request = row_bytes >= 64 ? 1 : 64 / row_bytes;
  static constexpr int ahead = 16 * rows_per_request;
  const E* p;
  // Part `part` (0 real, 1 imaginary) of element j of the current row, in every lane of V.
  template <class V>
  typename V::reg lanes_of(int j, int part) const {
    const real_of<E>* e = reinterpret_cast<const real_of<E>*>(p) + (j * parts + part) * copies;
    if constexpr (copies == 1) return V::broadcast_load(e);
    else return V::load(e);
  }
  void request_ahead() const { __builtin_prefetch(p + ahead * NR * copies, 0, 3); }
  void next() { p += NR * copies; }
};

// B read in place, without conjugation: element (l, j) of the sliver at p + l + j·ld, or at
// p + l·ld + j when op(B) is a transpose. One of the two steps is a constant 1, so the
// unrolled k loop addresses its columns (or rows) off a few registers instead of a register per
// (row, column) pair, which spilled.
template <class E, bool Trans>
struct strided_b {
  const E* p;
  index ld;
  static constexpr int rows_per_request = 1;
  template <class V>
  typename V::reg lanes_of(int j, int part) const {
    const E* e = Trans ? p + j : p + j * ld;
    return V::broadcast_load(reinterpret_cast<const real_of<E>*>(e) + part);
  }
  void request_ahead() const {}
  void next() { p += Trans ? ld : 1; }
};

// Runs row(l) for l = 0, 1, ..., kc - 1 in order, letting B request its lines ahead once per
// group of B::rows_per_request rows (a group unrolled whole; groups of fewer than 4 rows
// unrolled to 4 per loop turn, more than that made the compiler spill accumulators). Forced
// inline, with the row too: the accumulators must stay in registers across the calls.
template <class B, class Row>
[[gnu::always_inline]] inline void for_each_row(index kc, B& b, Row row) {
  constexpr int G = B::rows_per_request, turns = G >= 4 ? 1 : 4 / G;
  index l = 0;
#pragma unroll(turns)
  for (; l + G <= kc; l += G) {
    b.request_ahead();
#pragma unroll
    for (int g = 0; g < G; ++g) row();
  }
  for (; l < kc; ++l) row();
}

// Brings a tile's columns of C towards L1 ahead of the kernel call that updates it, so the update
// at the end of the k loop does not wait on memory: one request per 64-byte line of each column,
// only addresses inside the mm x nn tile.
template <class E>
inline void prefetch_tile(const E* c, index ldc, index mm, index nn) {
  for (index j = 0; j < nn; ++j) prefetch_span(c + j * ldc, mm);
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
  reg acc[MV][NR];
#pragma unroll
  for (int j = 0; j < NR; ++j)
#pragma unroll
    for (int v = 0; v < MV; ++v) acc[v][j] = V::zero();
  const auto row = [&]() __attribute__((always_inline)) {
    reg av[MV];
#pragma unroll
    for (int v = 0; v < MV; ++v) av[v] = V::load(a + v * W);
#pragma unroll
    for (int j = 0; j < NR; ++j) {
      const reg bj = b.template lanes_of<V>(j, 0);
#pragma unroll
      for (int v = 0; v < MV; ++v) acc[v][j] = V::mul_add(av[v], bj, acc[v][j]);
    }
    a += a_step;
    b.next();
  };
  for_each_row(kc, b, row);
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
  reg acc_r[MV][NR], acc_i[MV][NR];
#pragma unroll
  for (int j = 0; j < NR; ++j)
#pragma unroll
    for (int v = 0; v < MV; ++v) acc_r[v][j] = V::zero(), acc_i[v][j] = V::zero();
  const auto row = [&]() __attribute__((always_inline)) {
    reg av[MV];
#pragma unroll
    for (int v = 0; v < MV; ++v) av[v] = V::load(ar + v * W);
#pragma unroll
    for (int j = 0; j < NR; ++j) {
      // Each part in every lane straight from memory, where a pair loaded once would cost two
      // shuffles per column. The imaginary part only after the real part's products, so that
      // one register holds both in turn (6x2 double on avx2 otherwise spilled accumulators).
      const reg br = b.template lanes_of<V>(j, 0);
#pragma unroll
      for (int v = 0; v < MV; ++v) acc_r[v][j] = V::mul_add(av[v], br, acc_r[v][j]);
      const reg bi = b.template lanes_of<V>(j, 1);
#pragma unroll
      for (int v = 0; v < MV; ++v) acc_i[v][j] = V::mul_add(av[v], bi, acc_i[v][j]);
    }
    ar += 2 * a_step;
    b.next();
  };
  for_each_row(kc, b, row);
  // s = alpha·p = alpha_re·p + (-alpha_im, alpha_im)·swap(p). The factors ±1 and ±alpha_im are
  // exact, so each sum rounds as acc_r + (-(ai·bi), ar·bi) and alpha_re·p + alpha_im·(-p_im, p_re).
  const reg sign = V::alternate(R(-1), R(1));
  const reg xr = V::broadcast(alpha.re), xi = V::alternate(-alpha.im, alpha.im);
  const bool full = mm == MR && nn == NR;
  R t[2 * MR * NR];
#pragma unroll
  for (int j = 0; j < NR; ++j)
#pragma unroll
    for (int v = 0; v < MV; ++v) {
      const reg p = V::mul_add(sign, V::swap_pairs(acc_i[v][j]), acc_r[v][j]);
      const reg s = V::mul_add(xi, V::swap_pairs(p), V::mul(xr, p));
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
