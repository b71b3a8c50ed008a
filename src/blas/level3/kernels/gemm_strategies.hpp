// The strategies of the serial matrix product C := alpha·op(A)·op(B) + beta·C, each a loop nest
// around the one micro-kernel; C has already been scaled by beta when they run.
#pragma once

#include <tav/tav_error.h>
#include <tav/tav_memory.h>

#include "blas/level3/kernels/gemm_blocking.hpp"
#include "blas/level3/kernels/gemm_pack.hpp"
#include "blas/level3/kernels/gemm_ukernel.hpp"

namespace tav::TAV_PATH_NS::gemm {

template <class E>
struct problem {
  operand<E> a, b;
  index m, n, k;
  E alpha, beta;
  E* c;
  index ldc;
};

// The problem as the serial entries receive it: everything by address, transposition letters
// read by their first byte.
template <class E>
problem<E> problem_of(const char* transa, const char* transb, const index* m, const index* n,
                      const index* k, const E* alpha, const E* a, const index* lda, const E* b,
                      const index* ldb, const E* beta, E* c, const index* ldc) {
  constexpr bool complex = element<E>::complex;
  const int ta = decode_trans(transa), tb = decode_trans(transb);
  return {{a, *lda, ta != 0, complex && ta == 2}, {b, *ldb, tb != 0, complex && tb == 2},
          *m, *n, *k, *alpha, *beta, c, *ldc};
}

// A packing buffer from the memory manager, returned on every exit.
class pack_buffer {
 public:
  explicit pack_buffer(size_t bytes) : p_(tav_serv_allocate(bytes, 128)) {}
  ~pack_buffer() { tav_serv_deallocate(p_); }
  pack_buffer(const pack_buffer&) = delete;
  pack_buffer& operator=(const pack_buffer&) = delete;
  template <class E>
  E* as() const {
    return static_cast<E*>(p_);
  }

 private:
  void* p_;
};

// The routine name a failed allocation is reported under.
template <class E>
constexpr const char* routine_name() {
  if constexpr (is_same_v<E, float>) return "SGEMM";
  else if constexpr (is_same_v<E, double>) return "DGEMM";
  else if constexpr (is_same_v<E, cpx<float>>) return "CGEMM";
  else return "ZGEMM";
}

// The part of the m x n block C that a product updates. whole_c: all of it. triangle_of_c: the
// elements (i, j) with i - j >= diagonal (lower) or i - j <= diagonal (upper), which is how the
// rank updates cut a panel of columns along the diagonal of the whole matrix.
struct whole_c {
  static constexpr bool whole = true;
  static index first_row(index) { return 0; }
  static index end_row(index, index m) { return m; }
};

struct triangle_of_c {
  static constexpr bool whole = false;
  bool lower;
  index diagonal;

  // The rows [first_row, end_row) of column j that belong to the part.
  index first_row(index j) const { return lower ? max_of(index{0}, j + diagonal) : 0; }
  index end_row(index j, index m) const { return lower ? m : min_of(m, j + diagonal + 1); }
  // Of the mm x nn tile at (i, j): 1 when the part holds all of it, -1 when none, 0 otherwise.
  int covers(index i, index mm, index j, index nn) const {
    const index least = i - (j + nn - 1), most = i + mm - 1 - j;  // of row - column
    if (lower) return least >= diagonal ? 1 : most < diagonal ? -1 : 0;
    return most <= diagonal ? 1 : least > diagonal ? -1 : 0;
  }
};

// C := beta·C on the part; beta = 0 writes zeros without reading C (a NaN there does not survive).
template <class E, class Part = whole_c>
void scale_c(index m, index n, E beta, E* c, index ldc, const Part& part = {}) {
  if (is_one(beta)) return;
  const bool zero = is_zero(beta);
  for (index j = 0; j < n; ++j, c += ldc)
    for (index i = part.first_row(j); i < part.end_row(j, m); ++i)
      c[i] = zero ? zero_of<E>() : mul(beta, c[i]);
}

// The kernel call for the mm x nn tile at (i, j) of C: straight into C where the part holds the
// whole tile, skipped where it holds none, and where the diagonal crosses the tile into a zeroed
// H x NR block whose elements on the part are then added to C. Interior and crossed tiles lie on
// the same grid for any split of the columns, so each element is computed alike.
template <class E, int H, int NR, class B, class Part>
[[gnu::always_inline]] inline void update_tile(const Part& part, index i, index j, index kc,
                                               E alpha, const E* a, index a_step, B b, E* c,
                                               index ldc, index mm, index nn) {
  if constexpr (!Part::whole) {
    const int cover = part.covers(i, mm, j, nn);
    if (cover < 0) return;
    if (cover == 0) {
      E t[H * NR];
      for (E& e : t) e = zero_of<E>();
      ukernel<E, H, NR>(kc, alpha, a, a_step, b, t, H, H, NR);
      for (index jj = 0; jj < nn; ++jj) {
        const index first = max_of(index{0}, part.first_row(j + jj) - i);
        const index end = part.end_row(j + jj, i + mm) - i;
        E* cj = c + jj * ldc;
        for (index ii = first; ii < end; ++ii) cj[ii] = add(cj[ii], t[ii + jj * H]);
      }
      return;
    }
  }
  ukernel<E, H, NR>(kc, alpha, a, a_step, b, c, ldc, mm, nn);
}

// Calls f with the kc x NR sliver of op(B) at (pc, jc): read in place when it is whole and needs
// no conjugation, else packed (zero-padded, conjugated) into `scratch`. Forced inline, as are the
// small strategy's lambdas: a small product is a handful of kernel calls, and left to itself the
// compiler made each layer a call of its own (8 x 8 x 8 ran 10 per cent slower).
template <class E, int NR, class F>
[[gnu::always_inline]] inline void with_b_sliver(const operand<E>& b, index pc, index kc, index jc,
                                                 index nn, E* scratch, F f) {
  if (nn == NR && !b.conj) {
    if (b.trans) f(strided_b<E, true>{b.at(pc, jc), b.ld});
    else f(strided_b<E, false>{b.at(pc, jc), b.ld});
  } else {
    pack_b<E, NR>(b, pc, kc, jc, nn, scratch);
    f(packed_b<E, NR>{scratch});
  }
}

// C(0:mm, 0:nn) += alpha·Ã·B_sliver for the packed rows Ã (ceil(mm/MR) slivers of MR x kc).
template <class E, int MR, int NR, class B>
void sweep_rows(index kc, E alpha, const E* a, index mm, B b, E* c, index ldc, index nn) {
  for (index ir = 0; ir < mm; ir += MR) {
    prefetch_tile(c + ir, ldc, min_of(MR, mm - ir), nn);
    ukernel<E, MR, NR>(kc, alpha, a + ir * kc, MR, b, c + ir, ldc, min_of(MR, mm - ir), nn);
  }
}

// A register-block height as a type, for the dispatch below.
template <int H>
struct height {
  static constexpr int value = H;
};

// Calls f(height<H>) with the shortest register block H (whole vectors, at most MR) that covers
// `rows`, so a thin edge of rows does not pay for a full MR-row block of zeros.
template <class E, int H, int MR, class F>
[[gnu::always_inline]] inline void with_height(index rows, F f) {
  if constexpr (H >= MR) f(height<MR>{});
  else if (rows <= H) f(height<H>{});
  else with_height<E, H + lanes<E>(), MR>(rows, f);
}

// The rows of op(A) that the next sliver takes when `left` remain: MR, except that a tail of MR
// rows and at most one vector more is split in two. A one-vector block has NR accumulators, too
// few to cover the FMA latency, and runs at half the FMA rate at best; two blocks of several
// vectors do not.
template <class E, int MR>
constexpr index sliver_rows(index left) {
  constexpr int w = lanes<E>();
  if (MR >= 3 * w && left > MR && left <= MR + w) return MR - w;
  return min_of(MR, left);
}

// The elements of a 512 KiB L2.
template <class E>
constexpr index l2_elements = index{524288} / sizeof(E);

// The most elements an A sliver read in place may span (kc columns of lda): 64 KiB.
template <class E>
constexpr index in_place_span = index{65536} / sizeof(E);

// Small strategy: no heap buffers. Per k block, each sliver of rows of op(A) is read in place
// when A is untransposed and the sliver's rows fill whole vectors, and packed on the stack
// (at most MR x kb_max elements) otherwise; B is read in place where a sliver is whole.
template <class E, class Part = whole_c>
void run_small(const problem<E>& p, const Part& part = {}) {
  constexpr int MR = block_for<E>().mr, NR = block_for<E>().nr;
  const index kb = blocking_for<E>(p.m, p.n, p.k).kb;
  alignas(64) E a_sliver[MR * kb_max];
  alignas(64) E b_sliver[kb_max * NR * b_copies<E>()];
  for (index pc = 0; pc < p.k; pc += kb) {
    const index kc = min_of(kb, p.k - pc);
    for (index ic = 0, mm = 0; ic < p.m; ic += mm) {
      mm = sliver_rows<E, MR>(p.m - ic);
      with_height<E, lanes<E>(), MR>(mm, [&](auto h) __attribute__((always_inline)) {
        constexpr int H = decltype(h)::value;
        // In place only while the sliver's columns span few pages: far apart, each k step of
        // the kernel would touch a new page.
        const bool in_place = !p.a.trans && mm == H && p.a.ld * kc <= in_place_span<E>;
        if (!in_place) pack_a<E, H>(p.a, ic, mm, pc, kc, a_sliver);
        const E* a = in_place ? p.a.at(ic, pc) : a_sliver;
        const index a_step = in_place ? p.a.ld : H;
        // An untransposed A wider than L2 is kc columns far apart in memory: the rows of the
        // sliver after next are requested, a share of its columns per kernel call, so that its
        // packing does not wait on memory.
        const bool stream_a = !p.a.trans && p.a.ld * kc > l2_elements<E>;
        const index next_rows = stream_a ? min_of(MR, p.m - ic - 2 * MR) : 0;
        for (index jc = 0; jc < p.n; jc += NR) {
          const index nn = min_of(NR, p.n - jc);
          if (next_rows > 0) {
            const index share = (kc * NR + p.n - 1) / p.n, l = jc / NR * share;
            for (index t = l; t < min_of(kc, l + share); ++t)
              prefetch_span<1>(p.a.at(ic + 2 * MR, pc + t), next_rows);
          }
          const auto run = [&](auto b) __attribute__((always_inline)) {
            E* const tile = p.c + ic + jc * p.ldc;
            // A short k loop ends before a request for the tile could arrive.
            if (kc >= 32) prefetch_tile(tile, p.ldc, mm, nn);
            update_tile<E, H, NR>(part, ic, jc, kc, p.alpha, a, a_step, b, tile, p.ldc, mm, nn);
          };
          with_b_sliver<E, NR>(p.b, pc, kc, jc, nn, b_sliver, run);
        }
      });
    }
  }
}

// pst: op(A) packed in mb x kb blocks, each swept by the NR-column slivers of B read in place.
template <class E>
void pst(const problem<E>& p) {
  constexpr int MR = block_for<E>().mr, NR = block_for<E>().nr;
  const blocking f = blocking_for<E>(p.m, p.n, p.k);
  const pack_buffer a_block(sizeof(E) * static_cast<size_t>(f.mb * f.kb));
  if (a_block.as<E>() == nullptr) {
    tav_serv_check_ptr_and_warn(nullptr, routine_name<E>());
    run_small(p);
    return;
  }
  alignas(64) E b_sliver[kb_max * NR * b_copies<E>()];
  for (index ic = 0; ic < p.m; ic += f.mb) {
    const index mc = min_of(f.mb, p.m - ic);
    for (index pc = 0; pc < p.k; pc += f.kb) {
      const index kc = min_of(f.kb, p.k - pc);
      pack_a<E, MR>(p.a, ic, mc, pc, kc, a_block.as<E>());
      for (index jc = 0; jc < p.n; jc += NR) {
        const index nn = min_of(NR, p.n - jc);
        with_b_sliver<E, NR>(p.b, pc, kc, jc, nn, b_sliver, [&](auto b) {
          sweep_rows<E, MR, NR>(kc, p.alpha, a_block.as<E>(), mc, b, p.c + ic + jc * p.ldc,
                                p.ldc, nn);
        });
      }
    }
  }
}

// The position of a tile in the driver's order over an mc x nc block of C (row slivers of MR,
// and within each the columns NR at a time); past the last tile it requests nothing.
struct tile_cursor {
  index mc, nc, mr, nr;
  index ir = 0, jr = 0;
  template <class E>
  void request_and_advance(const E* c, index ldc) {
    if (ir >= mc) return;
    prefetch_tile(c + ir + jr * ldc, ldc, min_of(mr, mc - ir), min_of(nr, nc - jr));
    jr += nr;
    if (jr >= nc) jr = 0, ir += mr;
  }
};

// How many kernel calls ahead a tile of C is requested: a call takes about 12·kc FMAs (every
// register block holds 12 accumulators), and a tile from memory needs some 2000 cycles' notice
// when the kernel calls are short and C streams through at the memory's rate (k = 32: 12 tiles
// ahead ran 1.2x to 1.5x as fast as a request one row sweep ahead; bench/RESULTS.md, skinny).
// Long k keeps the lead at 2: a whole sweep ahead, the requests of one row sliver fell on a
// few L1 sets when ldc is a power of two and evicted the A sliver.
inline index tiles_ahead(index kc) { return max_of(index{2}, (index{384} + kc - 1) / kc); }

// The driver (Goto and van de Geijn): for each mb x kb block Ã of op(A) and each kb x nb panel
// B̃ of op(B), C_block += alpha·Ã·B̃ by MR x NR tiles. The loop over Ã's slivers is outside the
// loop over B̃'s, so one Ã sliver sits in L1 while B̃ (kb·nb elements) is read from L2. The
// blocking factors are the shape's (blocking_for) except in the benchmark that chose them.
template <class E, class Part>
void driver(const problem<E>& p, const Part& part, const blocking& f) {
  constexpr int MR = block_for<E>().mr, NR = block_for<E>().nr;
  const pack_buffer a_block(sizeof(E) * static_cast<size_t>(f.mb * f.kb));
  const pack_buffer b_panel(sizeof(E) * static_cast<size_t>(f.kb * f.nb * b_copies<E>()));
  if (a_block.as<E>() == nullptr || b_panel.as<E>() == nullptr) {
    tav_serv_check_ptr_and_warn(nullptr, routine_name<E>());
    run_small(p, part);
    return;
  }
  E* const at = a_block.as<E>();
  E* const bt = b_panel.as<E>();
  for (index ic = 0; ic < p.m; ic += f.mb) {
    const index mc = min_of(f.mb, p.m - ic);
    for (index pc = 0; pc < p.k; pc += f.kb) {
      const index kc = min_of(f.kb, p.k - pc);
      pack_a<E, MR>(p.a, ic, mc, pc, kc, at);
      for (index jc = 0; jc < p.n; jc += f.nb) {
        const index nc = min_of(f.nb, p.n - jc);
        // Only the row slivers that meet the part in these columns, neither packed for nor
        // requested otherwise: a triangle's panel far from the diagonal has few.
        const index r0 = max_of(index{0}, part.first_row(jc) - ic) / MR * MR;
        const index r1 = min_of(mc, part.end_row(jc + nc - 1, ic + mc) - ic);
        if (r1 <= r0) continue;
        pack_b<E, NR>(p.b, pc, kc, jc, nc, bt);
        // Tiles run row sliver by row sliver, NR columns at a time; `ahead` walks the same
        // order `lead` tiles in front and requests each tile before its kernel call.
        tile_cursor ahead{r1, nc, MR, NR, r0};
        const index lead = tiles_ahead(kc);
        for (index t = 0; t < lead; ++t) ahead.request_and_advance(p.c + ic + jc * p.ldc, p.ldc);
        for (index ir = r0; ir < r1; ir += MR) {
          const index mm = min_of(MR, r1 - ir);
          // The next sliver of Ã is requested towards L2, a share per kernel call: Ã (all of m)
          // outgrows L2, and a sliver fetched on demand held up its first kernel call 2.5 to 4
          // times the call's own time (ZGEMM and DGEMM, n = 1024 and 1536, avx2 path, Zen 3).
          const E* const next_a = at + (ir + MR) * kc;
          const index next_count = ir + MR < r1 ? MR * kc : 0;
          const index share = (next_count * NR + nc - 1) / nc;
          for (index jr = 0; jr < nc; jr += NR) {
            ahead.request_and_advance(p.c + ic + jc * p.ldc, p.ldc);
            const index from = jr / NR * share;
            if (from < next_count)
              prefetch_span<2>(next_a + from, min_of(share, next_count - from));
            update_tile<E, MR, NR>(part, ic + ir, jc + jr, kc, p.alpha, at + ir * kc, MR,
                                   packed_b<E, NR>{bt + jr * kc * b_copies<E>()},
                                   p.c + (ic + ir) + (jc + jr) * p.ldc, p.ldc, mm,
                                   min_of(NR, nc - jr));
          }
        }
      }
    }
  }
}

template <class E, class Part = whole_c>
void driver(const problem<E>& p, const Part& part = {}) {
  driver(p, part, blocking_for<E>(p.m, p.n, p.k));
}

// sum_l a_l·b_l accumulated as the micro-kernel does: real products in order; complex ones as
// the four real sums re·re, im·im, im·re, re·im combined at the end, so that the no-copy kernel
// and the packed strategies give the same bits wherever FMA contraction is off.
template <class E>
struct dot_sum {
  E s = zero_of<E>();
  void add_product(E a, E b) { s = add(s, mul(a, b)); }
  E value() const { return s; }
};

template <class R>
struct dot_sum<cpx<R>> {
  R rr = 0, ii = 0, ir = 0, ri = 0;
  void add_product(cpx<R> a, cpx<R> b) {
    rr = rr + a.re * b.re;
    ir = ir + a.im * b.re;
    ri = ri + a.re * b.im;
    ii = ii + a.im * b.im;
  }
  cpx<R> value() const { return {rr + -ii, ir + ri}; }
};

// C := alpha·A·B + beta·C for a 6 x 6 A and 6 x n B, both untransposed, without copies: each
// column of C is 6 sums of 6 products. BetaZero is the beta = 0 form, which does not read C; it
// still adds alpha·sum to a zero, as the strategies that zero C first do, so a zero result has
// the same sign either way.
template <class E, bool BetaZero>
void nocopy_anbn_meq6_keq6(const problem<E>& p) {
  E a[36];
  for (int l = 0; l < 6; ++l)
    for (int i = 0; i < 6; ++i) a[i + 6 * l] = p.a.p[i + l * p.a.ld];
  for (index j = 0; j < p.n; ++j) {
    const E* bj = p.b.p + j * p.b.ld;
    E* cj = p.c + j * p.ldc;
    for (int i = 0; i < 6; ++i) {
      dot_sum<E> acc;
      for (int l = 0; l < 6; ++l) acc.add_product(a[i + 6 * l], bj[l]);
      const E start = BetaZero ? zero_of<E>() : is_one(p.beta) ? cj[i] : mul(p.beta, cj[i]);
      cj[i] = add(start, mul(p.alpha, acc.value()));
    }
  }
}

}  // namespace tav::TAV_PATH_NS::gemm
