// The copy without transpose, B line = op(A line): one unrolled run over the whole matrix when it
// is a contiguous block, else line by line.
#pragma once

#include "blas/omatcopy/kernels/omatcopy_element.hpp"
#include "blas/omatcopy/kernels/omatcopy_vector.hpp"

namespace tav::TAV_PATH_NS::omatcopy {

// The unrolled copy of n consecutive elements, B[k] = op(A[k]), sixteen per step. Streaming
// stores start once B reaches their alignment within one cache line; elements before that are
// written one by one.
template <class T, class Op>
void copy_run(index n, const T* a, T* b, const Op& op, const row_op<T, Op>& rows, bool stream) {
  index k = 0;
  if (stream) {
    for (; k < n && k < line_elements<T> && !stream_aligned(b + k); ++k) b[k] = op(a[k]);
    stream = stream_aligned(b + k);
  }
  for (; k + 16 <= n; k += 16) {
    row4<T> r[4];
    for (int q = 0; q < 4; ++q) {
      r[q].load(a + k + 4 * q);
      rows(r[q]);
    }
    if (stream) {
      for (int q = 0; q < 4; ++q) r[q].stream(b + k + 4 * q);
    } else {
      for (int q = 0; q < 4; ++q) r[q].store(b + k + 4 * q);
    }
  }
  for (; k + 4 <= n; k += 4) {
    row4<T> r;
    r.load(a + k);
    rows(r);
    r.store(b + k);
  }
  for (; k < n; ++k) b[k] = op(a[k]);
}

// omatcopy2_n: `outer` lines of `inner` elements, B[line·ldb + j·sb] = op(A[line·lda + j·sa]).
// With unit strides, lda = ldb = inner and no scaling the lines form one block, copied in one run.
template <class T, class Op>
void copy_lines(index outer, index inner, const T* a, index lda, index sa, T* b, index ldb,
                index sb, const Op& op, bool stream) {
  if (sa == 1 && sb == 1) {
    const row_op<T, Op> rows(op);
    if (!Op::scale && lda == inner && ldb == inner) {
      copy_run(outer * inner, a, b, op, rows, stream);
      return;
    }
    for (index line = 0; line < outer; ++line)
      copy_run(inner, a + line * lda, b + line * ldb, op, rows, stream);
    return;
  }
  for (index line = 0; line < outer; ++line) {
    const T* a_line = a + line * lda;
    T* b_line = b + line * ldb;
    index j = 0;
    for (; j + 2 <= inner; j += 2) {
      const T x0 = op(a_line[j * sa]);
      const T x1 = op(a_line[(j + 1) * sa]);
      b_line[j * sb] = x0;
      b_line[(j + 1) * sb] = x1;
    }
    if (j < inner) b_line[j * sb] = op(a_line[j * sa]);
  }
}

}  // namespace tav::TAV_PATH_NS::omatcopy
