/* Out-of-place matrix copy and transpose, B := alpha·op(A). */
#ifndef TAV_OMATCOPY_H
#define TAV_OMATCOPY_H

#include <stddef.h>
#include <tav/tav_export.h>
#include <tav/tav_types.h>

TAV_BEGIN_DECLS

/* ordering: 'R' row major or 'C' column major. trans: 'N' copy, 'T' transpose, 'C' conjugate
   transpose, 'R' conjugate without transpose ('C' is 'T' and 'R' is 'N' for the real types).
   Letters in either case. A is rows x cols in that ordering with leading dimension lda; B
   receives alpha·op(A) with leading dimension ldb. An unknown letter, rows = 0 or cols = 0 leave
   B untouched; nothing is reported. */
void TAV_Somatcopy(char ordering, char trans, size_t rows, size_t cols, float alpha,
                   const float* A, size_t lda, float* B, size_t ldb);
void TAV_Domatcopy(char ordering, char trans, size_t rows, size_t cols, double alpha,
                   const double* A, size_t lda, double* B, size_t ldb);
void TAV_Comatcopy(char ordering, char trans, size_t rows, size_t cols, tav_complex8 alpha,
                   const tav_complex8* A, size_t lda, tav_complex8* B, size_t ldb);
void TAV_Zomatcopy(char ordering, char trans, size_t rows, size_t cols, tav_complex16 alpha,
                   const tav_complex16* A, size_t lda, tav_complex16* B, size_t ldb);

TAV_END_DECLS

#endif
