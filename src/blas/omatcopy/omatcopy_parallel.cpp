// The top level of the copy and transpose: small matrices run sequentially on the calling
// thread, larger ones in one parallel region whose threads take disjoint blocks of B.
#include <omp.h>
#include <tav/tav_threads.h>

#include "blas/omatcopy/omatcopy.hpp"
#include "blas/omatcopy/omatcopy2_seq_fn.hpp"
#include "blas/omatcopy/omatcopy_slots.hpp"
#include "blas/omatcopy/omatcopy_split.hpp"

namespace tav::blas {
namespace {

// The sequential form of the processor's code path.
omatcopy2_seq_fn<float>* sequential(float) { return somatcopy2_seq_dispatch.target(); }
omatcopy2_seq_fn<double>* sequential(double) { return domatcopy2_seq_dispatch.target(); }
omatcopy2_seq_fn<tav_complex8>* sequential(tav_complex8) {
  return comatcopy2_seq_dispatch.target();
}
omatcopy2_seq_fn<tav_complex16>* sequential(tav_complex16) {
  return zomatcopy2_seq_dispatch.target();
}

// Above 32 KiB of data (4096 doubles) with more than 16 rows and columns the work is shared.
constexpr index parallel_bytes = 32768;
constexpr index parallel_side = 16;

// Above 8 MiB of B the stores bypass the cache, and cache lines of B are no longer read before
// they are overwritten. One thread transposing n x n doubles (bench/RESULTS.md, "Out-of-place
// copy and transpose") ran the cached and the streamed call within 10 per cent of each other up
// to 8 MiB and streamed 1.3x faster at 16 MiB; below, B is left in the cache for the caller's next
// step.
constexpr index stream_bytes = index{8} << 20;

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// Element offsets of one row step and one column step of the rows x cols matrix, in A and in B.
struct steps {
  index a_row, a_col, b_row, b_col;
};

// A(r, c) lies at r·lda + c·sa in row-major ordering, r·sa + c·lda in column-major; B holds
// op(A), so with a transpose B(c, r) takes A(r, c) and B's row and column steps trade places.
steps element_steps(char ordering, char trans, index lda, index sa, index ldb, index sb) {
  const bool row_major = ordering == 'R';
  const bool transpose = trans == 'T' || trans == 'C';
  const bool b_rows_are_lines = row_major != transpose;
  return {row_major ? lda : sa, row_major ? sa : lda, b_rows_are_lines ? ldb : sb,
          b_rows_are_lines ? sb : ldb};
}

// tav_trans_tav_?omatcopy2_par: thread t of T runs the sequential form on its share of B.
template <class T>
void omatcopy2_par(omatcopy2_seq_fn<T>* seq, char ordering, char trans, index rows, index cols,
                   T alpha, const T* a, index lda, index sa, T* b, index ldb, index sb,
                   bool stream) {
  const int team = tav_serv_domain_get_max_threads(TAV_DOMAIN_ALL);
  if (team <= 1) {
    seq(ordering, trans, rows, cols, alpha, a, lda, sa, b, ldb, sb, stream);
    return;
  }
  const steps s = element_steps(ordering, trans, lda, sa, ldb, sb);
#pragma omp parallel num_threads(team)
  {
    const omatcopy_block share =
        omatcopy_share(omp_get_num_threads(), omp_get_thread_num(), rows, cols);
    if (share.rows > 0 && share.cols > 0) {
      seq(ordering, trans, share.rows, share.cols, alpha,
          a + share.row0 * s.a_row + share.col0 * s.a_col, lda, sa,
          b + share.row0 * s.b_row + share.col0 * s.b_col, ldb, sb, stream);
    }
  }
}

}  // namespace

template <class T>
void omatcopy2(char ordering, char trans, index rows, index cols, T alpha, const T* a, index lda,
               index stridea, T* b, index ldb, index strideb) {
  ordering = upper(ordering);
  trans = upper(trans);
  if (rows <= 0 || cols <= 0 || (ordering != 'R' && ordering != 'C')) return;
  if (trans != 'N' && trans != 'T' && trans != 'C' && trans != 'R') return;
  omatcopy2_seq_fn<T>* seq = sequential(T{});
  const index bytes = rows * cols * static_cast<index>(sizeof(T));
  if (rows > parallel_side && cols > parallel_side && bytes > parallel_bytes) {
    omatcopy2_par(seq, ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb,
                  bytes > stream_bytes);
    return;
  }
  seq(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb, false);
}

template void omatcopy2(char, char, index, index, float, const float*, index, index, float*, index,
                        index);
template void omatcopy2(char, char, index, index, double, const double*, index, index, double*,
                        index, index);
template void omatcopy2(char, char, index, index, tav_complex8, const tav_complex8*, index, index,
                        tav_complex8*, index, index);
template void omatcopy2(char, char, index, index, tav_complex16, const tav_complex16*, index, index,
                        tav_complex16*, index, index);

}  // namespace tav::blas
