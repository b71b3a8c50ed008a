// The serial driver's decisions that depend on the shape alone: the strategy a product takes and
// the blocking factors kb, mb, nb of its packed panels.
#pragma once

#include "blas/level3/kernels/gemm_element.hpp"
#include "blas/level3/kernels/gemm_params.hpp"

namespace tav::TAV_PATH_NS::gemm {

// Panel sizes in elements: Ã holds mb x kb of op(A), B̃ holds kb x nb of op(B). ku, the unroll of
// the k loop, is 1, so "rounded up to a multiple of ku" changes nothing. kb never exceeds kb_max.
struct blocking {
  index kb, mb, nb;
};

// kb: short k is taken whole (at least 128), 256 < k < 384 is halved into two equal blocks, long
// k goes in blocks of kb_long (192 on avx2), so an Ã sliver (mr x kb) stays in L1 while the
// kernel sweeps B̃. mb: all of m up to the path's mb rows (5000). nb: up to nb_real columns (192
// on avx2; nb_complex, 96, for complex elements, whose panel of kb x nb is twice the bytes;
// divided by b_copies where B̃ repeats its reals), 24 when k < 48 so that short panels are not
// packed far ahead. The limits are the path's own unless a benchmark passes others.
template <class E>
constexpr blocking blocking_for(index m, index n, index k,
                                const serial_limits& l = this_path.serial) {
  constexpr register_block rb = block_for<E>();
  const index nb_cap = (element<E>::complex ? l.nb_complex : l.nb_real) / b_copies<E>();
  blocking f{};
  f.kb = k <= 256 ? max_of(k, 128) : k < 384 ? k / 2 : l.kb_long;
  f.mb = round_up(min_of(max_of(rb.mr, m), l.mb), rb.mr);
  f.nb = round_up(min_of(max_of(rb.nr, n), k < 48 ? 24 : nb_cap), rb.nr);
  return f;
}

// The strategies of the serial driver. nocopy_6x6: a 6 x 6 A held whole, no copies. small:
// no heap buffers; A is packed one sliver at a time on the stack and B read in place. pst: only
// op(A) is packed (whole mb x kb blocks), B read in place. driver: Goto and van de Geijn, both
// operands packed. scale_only: C := beta·C without reading A or B.
enum class serial_route { done, nocopy_6x6, small, pst, driver, scale_only };

struct serial_shape {
  int transa, transb;  // 0 'N', 1 'T', 2 'C'
  index m, n, k;
  bool alpha_zero;  // alpha == 0 exactly; a NaN alpha is not zero
  bool beta_zero;
};

// pst reads B in place: that pays when a transposed A has fewer rows than two register blocks
// (B̃ would be used by at most two slivers of A) or when fewer than two register blocks of
// columns remain (B̃ would be packed for almost no reuse).
template <class E>
constexpr serial_route route_serial(const serial_shape& s) {
  constexpr register_block rb = block_for<E>();
  const index small_m = 2 * rb.mr, small_n = 2 * rb.nr;
  const bool a_plain = s.transa == 0, b_plain = s.transb == 0;
  auto small_route = [&] {
    return s.m == 6 && s.k == 6 && a_plain && b_plain ? serial_route::nocopy_6x6
                                                       : serial_route::small;
  };
  auto general = [&] {
    if (s.alpha_zero) return serial_route::scale_only;
    if (!a_plain && b_plain) return s.m < small_m ? serial_route::pst : serial_route::driver;
    return s.n >= small_n ? serial_route::driver : serial_route::pst;
  };
  if (s.m < 1 || s.n < 1) return serial_route::done;
  if (s.m == s.k && (s.m == 9 || s.m == 12) && s.beta_zero) return small_route();
  if (s.k <= 128 && !s.alpha_zero) {
    if (s.m * s.n / (s.m + s.n) < 11) {
      if (s.m <= 100) return small_route();
      if (s.n < 4 && s.k < 4) return serial_route::small;
      return general();
    }
    if (s.k < 7 && s.m < 41 && s.n < 41 && (a_plain || !b_plain)) return small_route();
  }
  if (s.alpha_zero) return general();
  const index small_plain = this_path.serial.small_plain;
  const index small_trans = this_path.serial.small_trans;
  if (a_plain) {
    if (s.m < small_plain) return small_route();
    return s.n >= small_plain ? general() : serial_route::small;
  }
  if (s.m < small_trans) return small_route();
  return s.n < small_trans ? serial_route::small : general();
}

}  // namespace tav::TAV_PATH_NS::gemm
