// Packing of op(A) and op(B) into the contiguous slivers the micro-kernel streams through, after
// Goto and van de Geijn ("Anatomy of high-performance matrix multiplication", 2008).
#pragma once

#include "blas/level3/kernels/gemm_params.hpp"

namespace tav::TAV_PATH_NS::gemm {

// op(X) for a column-major X: element (i, j) is X(i, j), X(j, i) or conj(X(j, i)).
template <class E>
struct operand {
  const E* p;
  index ld;
  bool trans;
  bool conj;

  // The address of op(X)(i, j) before conjugation.
  const E* at(index i, index j) const { return trans ? p + j + i * ld : p + i + j * ld; }
};

template <class E, bool Conj>
inline E fetch(const E* p) {
  if constexpr (Conj) return conj(*p);
  else return *p;
}

// Ã: rows i0..i0+mm of op(A), columns l0..l0+kc, as ceil(mm/MR) slivers of MR x kc stored
// k-major (Ã_s[l·MR + r] = op(A)(i0 + s·MR + r, l0 + l)); rows past mm are zero, so an edge
// sliver contributes nothing to the rows the kernel does not store.
// copyan: op(A) = A, columns contiguous. Each of the kc columns is a separate stream far apart
// in memory, so while one sliver is copied the rows of the next are requested.
template <class E, int MR>
void copyan(const operand<E>& a, index i0, index mm, index l0, index kc, E* dst) {
  for (index s = 0; s < mm; s += MR, dst += MR * kc) {
    const index rows = min_of(MR, mm - s), next_rows = min_of(MR, mm - s - MR);
    const E* src = a.at(i0 + s, l0);
    for (index l = 0; l < kc; ++l, src += a.ld) {
      if (next_rows > 0) prefetch_span(src + MR, next_rows);
      E* d = dst + l * MR;
      if (rows == MR) {
        // One block move: the element loop stays scalar, its source and target could overlap.
        __builtin_memcpy(d, src, sizeof(E) * MR);
      } else {
        for (index r = 0; r < rows; ++r) d[r] = src[r];
        for (index r = rows; r < MR; ++r) d[r] = zero_of<E>();
      }
    }
  }
}

// copyat: op(A)(i, l) = A(l, i) or conj(A(l, i)); row i of op(A) is contiguous in A.
template <class E, int MR, bool Conj>
void copyat(const operand<E>& a, index i0, index mm, index l0, index kc, E* dst) {
  for (index s = 0; s < mm; s += MR, dst += MR * kc) {
    const index rows = min_of(MR, mm - s);
    for (index r = 0; r < rows; ++r) {
      const E* src = a.at(i0 + s + r, l0);
      for (index l = 0; l < kc; ++l) dst[l * MR + r] = fetch<E, Conj>(src + l);
    }
    for (index r = rows; r < MR; ++r)
      for (index l = 0; l < kc; ++l) dst[l * MR + r] = zero_of<E>();
  }
}

template <class E, int MR>
void pack_a(const operand<E>& a, index i0, index mm, index l0, index kc, E* dst) {
  if (!a.trans) copyan<E, MR>(a, i0, mm, l0, kc, dst);
  else if (a.conj) copyat<E, MR, true>(a, i0, mm, l0, kc, dst);
  else copyat<E, MR, false>(a, i0, mm, l0, kc, dst);
}

// Element (l, c) of a B̃ sliver at `slot`: each real b_copies<E>() times side by side.
template <class E>
inline void put_b(E* slot, E v) {
  constexpr int copies = b_copies<E>();
  if constexpr (copies == 1) {
    *slot = v;
  } else {
    real_of<E>* r = reinterpret_cast<real_of<E>*>(slot);
    for (int q = 0; q < copies; ++q) {
      if constexpr (element<E>::complex) r[q] = v.re, r[copies + q] = v.im;
      else r[q] = v;
    }
  }
}

// B̃: rows l0..l0+kc of op(B), columns j0..j0+nn, as ceil(nn/NR) slivers of kc x NR stored
// k-major (B̃_s[(l·NR + c)·copies] = op(B)(l0 + l, j0 + s·NR + c), see put_b); columns past nn
// are zero.
// copybn: op(B) = B, column j of op(B) contiguous in B.
template <class E, int NR>
void copybn(const operand<E>& b, index l0, index kc, index j0, index nn, E* dst) {
  constexpr int copies = b_copies<E>();
  for (index s = 0; s < nn; s += NR, dst += NR * kc * copies) {
    const index cols = min_of(NR, nn - s);
    for (index c = 0; c < cols; ++c) {
      // The column NR on, copied with the next sliver, is requested now: the columns are short
      // streams, over before the hardware would have found them.
      if (s + NR + c < nn) prefetch_span(b.at(l0, j0 + s + NR + c), kc);
      const E* src = b.at(l0, j0 + s + c);
      for (index l = 0; l < kc; ++l) put_b(dst + (l * NR + c) * copies, src[l]);
    }
    for (index c = cols; c < NR; ++c)
      for (index l = 0; l < kc; ++l) put_b(dst + (l * NR + c) * copies, zero_of<E>());
  }
}

// copybt: op(B)(l, j) = B(j, l) or conj(B(j, l)); row l of op(B) is contiguous in B.
template <class E, int NR, bool Conj>
void copybt(const operand<E>& b, index l0, index kc, index j0, index nn, E* dst) {
  constexpr int copies = b_copies<E>();
  for (index s = 0; s < nn; s += NR, dst += NR * kc * copies) {
    const index cols = min_of(NR, nn - s);
    const E* src = b.at(l0, j0 + s);
    for (index l = 0; l < kc; ++l, src += b.ld) {
      for (index c = 0; c < cols; ++c) put_b(dst + (l * NR + c) * copies, fetch<E, Conj>(src + c));
      for (index c = cols; c < NR; ++c) put_b(dst + (l * NR + c) * copies, zero_of<E>());
    }
  }
}

template <class E, int NR>
void pack_b(const operand<E>& b, index l0, index kc, index j0, index nn, E* dst) {
  if (!b.trans) copybn<E, NR>(b, l0, kc, j0, nn, dst);
  else if (b.conj) copybt<E, NR, true>(b, l0, kc, j0, nn, dst);
  else copybt<E, NR, false>(b, l0, kc, j0, nn, dst);
}

}  // namespace tav::TAV_PATH_NS::gemm
