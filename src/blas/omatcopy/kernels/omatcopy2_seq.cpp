// The sequential out-of-place copy and transpose of one code path, B := alpha·op(A) with element
// strides, and its four per-path entries.
#include <type_traits>

#include "blas/omatcopy/kernels/omatcopy_copy.hpp"
#include "blas/omatcopy/kernels/omatcopy_element.hpp"
#include "blas/omatcopy/kernels/omatcopy_transpose.hpp"
#include "blas/omatcopy/omatcopy2_seq_fn.hpp"
#include "common/path_naming.hpp"

namespace tav::TAV_PATH_NS::omatcopy {
namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// omatcopy2_seq. With ordering 'R' A holds `rows` lines of `cols` elements, with 'C' `cols`
// lines of `rows`; 'N' and 'R' copy, 'T' and 'C' transpose, 'C' and 'R' conjugate. Any other
// letter, or an empty matrix, writes nothing. With `stream` the stores bypass the cache where B's
// alignment allows.
template <class T>
void omatcopy2_seq(char ordering, char trans, index rows, index cols, T alpha, const T* a,
                   index lda, index sa, T* b, index ldb, index sb, bool stream) {
  ordering = upper(ordering);
  trans = upper(trans);
  if (rows <= 0 || cols <= 0 || (ordering != 'R' && ordering != 'C')) return;
  const bool transpose = trans == 'T' || trans == 'C';
  if (!transpose && trans != 'N' && trans != 'R') return;
  const bool conj = trans == 'C' || trans == 'R';
  const index outer = ordering == 'R' ? rows : cols;
  const index inner = ordering == 'R' ? cols : rows;
  with_element_op(alpha, conj, [&](const auto& op) {
    if (transpose)
      transpose_lines(outer, inner, a, lda, sa, b, ldb, sb, op, stream);
    else
      copy_lines(outer, inner, a, lda, sa, b, ldb, sb, op, stream);
  });
  // Streaming stores are weakly ordered: drain them before B is handed back.
  if (stream) _mm_sfence();
}

}  // namespace
}  // namespace tav::TAV_PATH_NS::omatcopy

using tav::TAV_PATH_NS::omatcopy::omatcopy2_seq;

extern "C" void TAV_PATH_NAME(blas, somatcopy2_seq)(char ordering, char trans, int64_t rows,
                                                    int64_t cols, float alpha, const float* a,
                                                    int64_t lda, int64_t sa, float* b, int64_t ldb,
                                                    int64_t sb, bool stream) {
  omatcopy2_seq(ordering, trans, rows, cols, alpha, a, lda, sa, b, ldb, sb, stream);
}
extern "C" void TAV_PATH_NAME(blas, domatcopy2_seq)(char ordering, char trans, int64_t rows,
                                                    int64_t cols, double alpha, const double* a,
                                                    int64_t lda, int64_t sa, double* b, int64_t ldb,
                                                    int64_t sb, bool stream) {
  omatcopy2_seq(ordering, trans, rows, cols, alpha, a, lda, sa, b, ldb, sb, stream);
}
extern "C" void TAV_PATH_NAME(blas, comatcopy2_seq)(char ordering, char trans, int64_t rows,
                                                    int64_t cols, tav_complex8 alpha,
                                                    const tav_complex8* a, int64_t lda, int64_t sa,
                                                    tav_complex8* b, int64_t ldb, int64_t sb,
                                                    bool stream) {
  omatcopy2_seq(ordering, trans, rows, cols, alpha, a, lda, sa, b, ldb, sb, stream);
}
extern "C" void TAV_PATH_NAME(blas, zomatcopy2_seq)(char ordering, char trans, int64_t rows,
                                                    int64_t cols, tav_complex16 alpha,
                                                    const tav_complex16* a, int64_t lda, int64_t sa,
                                                    tav_complex16* b, int64_t ldb, int64_t sb,
                                                    bool stream) {
  omatcopy2_seq(ordering, trans, rows, cols, alpha, a, lda, sa, b, ldb, sb, stream);
}

// The definitions above and the dispatch slots agree on the signature.
static_assert(std::is_same_v<decltype(TAV_PATH_NAME(blas, somatcopy2_seq)),
                             tav::blas::omatcopy2_seq_fn<float>>);
static_assert(std::is_same_v<decltype(TAV_PATH_NAME(blas, domatcopy2_seq)),
                             tav::blas::omatcopy2_seq_fn<double>>);
static_assert(std::is_same_v<decltype(TAV_PATH_NAME(blas, comatcopy2_seq)),
                             tav::blas::omatcopy2_seq_fn<tav_complex8>>);
static_assert(std::is_same_v<decltype(TAV_PATH_NAME(blas, zomatcopy2_seq)),
                             tav::blas::omatcopy2_seq_fn<tav_complex16>>);
