// The signature of the per-path sequential copy and transpose, shared by the dispatch slots and
// the per-path definitions: (ordering, trans, rows, cols, alpha, A, lda, stridea, B, ldb, strideb,
// stream), where stream asks for stores that bypass the cache.
#pragma once

#include <cstdint>

namespace tav::blas {

template <class T>
using omatcopy2_seq_fn = void(char, char, int64_t, int64_t, T, const T*, int64_t, int64_t, T*,
                              int64_t, int64_t, bool);

}  // namespace tav::blas
