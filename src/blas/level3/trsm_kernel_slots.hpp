// The dispatch slots of the diagonal-block kernels of the triangular solve and product, and the
// call that runs one of them on the rows of a right-hand-side view.
#pragma once

#include <complex>

#include "blas/level3/trsm_kernel_types.hpp"
#include "blas/level3/trsm_operands.hpp"
#include "common/scalar_traits.hpp"
#include "service/dispatch/dispatched.hpp"

namespace tav::blas {

TAV_DISPATCHED(blas, xstrsm_block, triangular_block_kernel<float>);
TAV_DISPATCHED(blas, xdtrsm_block, triangular_block_kernel<double>);
TAV_DISPATCHED(blas, xctrsm_block, triangular_block_kernel<float>);
TAV_DISPATCHED(blas, xztrsm_block, triangular_block_kernel<double>);
TAV_DISPATCHED(blas, xstrmm_block, triangular_block_kernel<float>);
TAV_DISPATCHED(blas, xdtrmm_block, triangular_block_kernel<double>);
TAV_DISPATCHED(blas, xctrmm_block, triangular_block_kernel<float>);
TAV_DISPATCHED(blas, xztrmm_block, triangular_block_kernel<double>);

// The solve and product slots of each element type.
template <class T>
struct triangular_block_slots;

template <>
struct triangular_block_slots<float> {
  static constexpr auto& solve = xstrsm_block_dispatch;
  static constexpr auto& multiply = xstrmm_block_dispatch;
};
template <>
struct triangular_block_slots<double> {
  static constexpr auto& solve = xdtrsm_block_dispatch;
  static constexpr auto& multiply = xdtrmm_block_dispatch;
};
template <>
struct triangular_block_slots<std::complex<float>> {
  static constexpr auto& solve = xctrsm_block_dispatch;
  static constexpr auto& multiply = xctrmm_block_dispatch;
};
template <>
struct triangular_block_slots<std::complex<double>> {
  static constexpr auto& solve = xztrsm_block_dispatch;
  static constexpr auto& multiply = xztrmm_block_dispatch;
};

// Runs `slot` (a solve or product slot) on the kb-row view B1 with the packed block of op(A):
// the rows are visited top to bottom when op(A) is lower and bottom to top when upper, the order
// in which pack_diagonal_block lays out the triangle.
template <class T, class Slot>
void run_block_kernel(Slot& slot, const T* packed, T alpha, const rhs_view<T>& b1, bool lower) {
  using Real = real_t<T>;
  const index rs = b1.row_stride();
  T* first = lower ? b1.p : b1.p + (b1.rows - 1) * rs;
  slot(reinterpret_cast<const Real*>(packed), b1.rows, reinterpret_cast<const Real*>(&alpha),
       reinterpret_cast<Real*>(first), lower ? rs : -rs, b1.col_stride(), b1.cols);
}

}  // namespace tav::blas
