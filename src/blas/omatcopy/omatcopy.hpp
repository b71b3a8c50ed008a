// The internal out-of-place copy and transpose, B := alpha·op(A), for the library's own callers:
// layout changes in LAPACKE, the LQ factorization and FFTs computed in two dimensions.
#pragma once

#include <tav/tav_types.h>

#include <complex>
#include <cstring>

#include "common/scalar_traits.hpp"

namespace tav::blas {

// ordering 'R' (row major) or 'C' (column major) and trans 'N', 'T', 'C' (conjugate transpose)
// or 'R' (conjugate), in either case; for the real types 'C' is 'T' and 'R' is 'N'. A is rows x
// cols in that ordering with leading dimension lda, B is op(A) with ldb; within a line the
// elements lie stridea (A) and strideb (B) apart. An unknown letter or an empty matrix writes
// nothing. T is float, double, tav_complex8 or tav_complex16.
template <class T>
void omatcopy2(char ordering, char trans, index rows, index cols, T alpha, const T* a, index lda,
               index stridea, T* b, index ldb, index strideb);

extern template void omatcopy2(char, char, index, index, float, const float*, index, index, float*,
                               index, index);
extern template void omatcopy2(char, char, index, index, double, const double*, index, index,
                               double*, index, index);
extern template void omatcopy2(char, char, index, index, tav_complex8, const tav_complex8*, index,
                               index, tav_complex8*, index, index);
extern template void omatcopy2(char, char, index, index, tav_complex16, const tav_complex16*, index,
                               index, tav_complex16*, index, index);

// The element type that omatcopy2 takes for T: std::complex maps onto the two-real structs of
// the same layout.
template <class T>
struct omatcopy_element {
  using type = T;
};
template <>
struct omatcopy_element<std::complex<float>> {
  using type = tav_complex8;
};
template <>
struct omatcopy_element<std::complex<double>> {
  using type = tav_complex16;
};

// The unit-stride form, for any of the six element types above.
template <class T>
void omatcopy(char ordering, char trans, index rows, index cols, T alpha, const T* a, index lda,
              T* b, index ldb) {
  using E = typename omatcopy_element<T>::type;
  static_assert(sizeof(E) == sizeof(T) && alignof(E) <= alignof(T));
  E e_alpha;
  std::memcpy(&e_alpha, &alpha, sizeof e_alpha);
  omatcopy2(ordering, trans, rows, cols, e_alpha, reinterpret_cast<const E*>(a), lda, 1,
            reinterpret_cast<E*>(b), ldb, 1);
}

}  // namespace tav::blas

// The entries behind TAV_?omatcopy: the same call with 64-bit sizes.
extern "C" {
void tav_trans_tav_somatcopy(char ordering, char trans, int64_t rows, int64_t cols, float alpha,
                             const float* a, int64_t lda, float* b, int64_t ldb);
void tav_trans_tav_domatcopy(char ordering, char trans, int64_t rows, int64_t cols, double alpha,
                             const double* a, int64_t lda, double* b, int64_t ldb);
void tav_trans_tav_comatcopy(char ordering, char trans, int64_t rows, int64_t cols,
                             tav_complex8 alpha, const tav_complex8* a, int64_t lda,
                             tav_complex8* b, int64_t ldb);
void tav_trans_tav_zomatcopy(char ordering, char trans, int64_t rows, int64_t cols,
                             tav_complex16 alpha, const tav_complex16* a, int64_t lda,
                             tav_complex16* b, int64_t ldb);
}
