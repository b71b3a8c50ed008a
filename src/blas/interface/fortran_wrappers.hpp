// The Fortran-style BLAS wrappers, written once for the four element types: argument check and
// report (gemm, trsm), widening to the internal routine's 64-bit integers, and the verbose line.
#pragma once

#include <tav/tav_error.h>

#include "blas/interface/argument_checks.hpp"
#include "blas/interface/element_types.hpp"
#include "blas/interface/internal_entries.hpp"
#include "blas/interface/verbose_call.hpp"

namespace tav::blas::interface {

// Sign-extends a 32-bit argument; a null pointer reads as 0, which every routine takes as an
// empty problem.
inline index widened(const int* value) { return value != nullptr ? *value : 0; }

// Reports through the exported chain (xerbla, then xerbla_, XERBLA_, XERBLA), so that an
// application defining one of those names receives the report. `padded_name` has six characters.
inline void report_bad_argument(const char* padded_name, int position) {
  const int info = position;
  xerbla(padded_name, &info, 6);
}

// Checked: the caller (a CBLAS entry) has checked the arguments already, with the same result.
template <class T, bool Checked = false>
void gemm_wrapper(const char* transa, const char* transb, const int* m, const int* n,
                  const int* k, const c_type_t<T>* alpha, const c_type_t<T>* a, const int* lda,
                  const c_type_t<T>* b, const int* ldb, const c_type_t<T>* beta, c_type_t<T>* c,
                  const int* ldc) {
  tav_serv_set_xerbla_interface(cdecl_xerbla);
  verbose_call(
      [](auto transa, auto transb, auto m, auto n, auto k, auto alpha, auto a, auto lda, auto b,
         auto ldb, auto beta, auto c, auto ldc) {
        const index m64 = widened(m), n64 = widened(n), k64 = widened(k);
        const index lda64 = widened(lda), ldb64 = widened(ldb), ldc64 = widened(ldc);
        if constexpr (!Checked) {
          if (const int bad = gemm_bad_argument(transa, transb, m64, n64, k64, lda64, ldb64, ldc64))
            return report_bad_argument(routine_names<T>::gemm, bad);
        }
        internal_entries<T>::gemm(transa, transb, &m64, &n64, &k64, elements<T>(alpha),
                                  elements<T>(a), &lda64, elements<T>(b), &ldb64, elements<T>(beta),
                                  elements<T>(c), &ldc64);
      },
      [](double elapsed, auto transa, auto transb, auto m, auto n, auto k, auto alpha, auto a,
         auto lda, auto b, auto ldb, auto beta, auto c, auto ldc) {
        write_line(elapsed, "%cGEMM(%c,%c,%d,%d,%d,%p,%p,%d,%p,%d,%p,%p,%d)",
                   routine_names<T>::letter, shown(transa), shown(transb), shown(m), shown(n),
                   shown(k), alpha, a, shown(lda), b, shown(ldb), beta, c, shown(ldc));
      },
      transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

template <class T>
void trsm_wrapper(const char* side, const char* uplo, const char* transa, const char* diag,
                  const int* m, const int* n, const c_type_t<T>* alpha, const c_type_t<T>* a,
                  const int* lda, c_type_t<T>* b, const int* ldb) {
  tav_serv_set_xerbla_interface(cdecl_xerbla);
  verbose_call(
      [](auto side, auto uplo, auto transa, auto diag, auto m, auto n, auto alpha, auto a,
         auto lda, auto b, auto ldb) {
        const index m64 = widened(m), n64 = widened(n), lda64 = widened(lda),
                    ldb64 = widened(ldb);
        if (const int bad = trsm_bad_argument(side, uplo, transa, diag, m64, n64, lda64, ldb64))
          report_bad_argument(routine_names<T>::trsm, bad);
        else
          internal_entries<T>::trsm(side, uplo, transa, diag, &m64, &n64, elements<T>(alpha),
                                    elements<T>(a), &lda64, elements<T>(b), &ldb64);
      },
      [](double elapsed, auto side, auto uplo, auto transa, auto diag, auto m, auto n,
         auto alpha, auto a, auto lda, auto b, auto ldb) {
        write_line(elapsed, "%cTRSM(%c,%c,%c,%c,%d,%d,%p,%p,%d,%p,%d)", routine_names<T>::letter,
                   shown(side), shown(uplo), shown(transa), shown(diag), shown(m), shown(n),
                   alpha, a, shown(lda), b, shown(ldb));
      },
      side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}

// Level 1 checks nothing: a non-positive n and any increment are the internal routine's to handle.
template <class T>
void axpy_wrapper(const int* n, const c_type_t<T>* alpha, const c_type_t<T>* x, const int* incx,
                  c_type_t<T>* y, const int* incy) {
  verbose_call(
      [](auto n, auto alpha, auto x, auto incx, auto y, auto incy) {
        const index n64 = widened(n), incx64 = widened(incx), incy64 = widened(incy);
        internal_entries<T>::axpy(&n64, elements<T>(alpha), elements<T>(x), &incx64,
                                  elements<T>(y), &incy64);
      },
      [](double elapsed, auto n, auto alpha, auto x, auto incx, auto y, auto incy) {
        write_line(elapsed, "%cAXPY(%d,%p,%p,%d,%p,%d)", routine_names<T>::letter, shown(n),
                   alpha, x, shown(incx), y, shown(incy));
      },
      n, alpha, x, incx, y, incy);
}

template <class T>
T dot_wrapper(const int* n, const T* x, const int* incx, const T* y, const int* incy) {
  return verbose_call(
      [](auto n, auto x, auto incx, auto y, auto incy) {
        const index n64 = widened(n), incx64 = widened(incx), incy64 = widened(incy);
        return internal_entries<T>::dot(&n64, x, &incx64, y, &incy64);
      },
      [](double elapsed, auto n, auto x, auto incx, auto y, auto incy) {
        write_line(elapsed, "%cDOT(%d,%p,%d,%p,%d)", routine_names<T>::letter, shown(n), x,
                   shown(incx), y, shown(incy));
      },
      n, x, incx, y, incy);
}

template <class T>
void scal_wrapper(const int* n, const c_type_t<T>* alpha, c_type_t<T>* x, const int* incx) {
  verbose_call(
      [](auto n, auto alpha, auto x, auto incx) {
        const index n64 = widened(n), incx64 = widened(incx);
        internal_entries<T>::scal(&n64, elements<T>(alpha), elements<T>(x), &incx64);
      },
      [](double elapsed, auto n, auto alpha, auto x, auto incx) {
        write_line(elapsed, "%cSCAL(%d,%p,%p,%d)", routine_names<T>::letter, shown(n), alpha, x,
                   shown(incx));
      },
      n, alpha, x, incx);
}

}  // namespace tav::blas::interface
