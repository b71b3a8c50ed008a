// The internal matrix-product entry's choice among its routes, from the shape alone.
#pragma once

#include "common/scalar_traits.hpp"

namespace tav::blas {

enum class gemm_route {
  quick_return,           // m <= 0 or n <= 0: C untouched
  row_gemv,               // m = 1: C(0, :) by one gemv over op(B)
  column_by_column_gemv,  // the avx512_tp small shape: one gemv per column of C
  column_gemv,            // n = 1: C(:, 0) by one gemv with op(A)
  rank1_update,           // k = 1, n > 1: C := beta·C + alpha·x·y^T by gemmger
  general,                // the threading decision and the per-path serial driver
};

struct gemm_shape {
  int transa, transb;  // 0 'N', 1 'T', 2 'C', -1 other (see decode_trans)
  index m, n, k, lda, ldb, ldc;
  bool complex;  // complex elements: 'C' conjugates, which gemv's vector and gemmger cannot
};

// 'N' 0, 'T' 1, 'C' 2 after clearing bit 0x20 of the first byte; anything else -1.
inline int decode_trans(const char* t) {
  const char c = static_cast<char>(*t & ~0x20);
  return c == 'N' ? 0 : c == 'T' ? 1 : c == 'C' ? 2 : -1;
}

// `code_path` returns the dispatcher's path id (6 is avx512_tp); it is asked only for the shape
// that depends on it, so a quick return never resolves a dispatch slot.
gemm_route route_gemm(const gemm_shape& s, int (*code_path)());

}  // namespace tav::blas
