// The unchecked CBLAS level-1 entries: cblas_?axpy, cblas_?dot and cblas_?scal over the
// Fortran-style routines, and cblas_?dotu_sub over the internal dot product.
#include <tav/tav_cblas.h>

#include "blas/interface/fortran_wrappers.hpp"
#include "common/exports.hpp"

namespace tav::blas::interface {
namespace {

// The by-value arguments are the callee's own copies, so their addresses serve as the
// Fortran-style routine's by-reference arguments.
template <class T>
void cblas_axpy(int n, cblas_scalar_t<T> alpha, const c_type_t<T>* x, int incx, c_type_t<T>* y,
                int incy) {
  axpy_wrapper<T>(&n, scalar_address<T>(alpha), x, &incx, y, &incy);
}

template <class T>
T cblas_dot(int n, const T* x, int incx, const T* y, int incy) {
  return dot_wrapper<T>(&n, x, &incx, y, &incy);
}

template <class T>
void cblas_scal(int n, cblas_scalar_t<T> alpha, c_type_t<T>* x, int incx) {
  scal_wrapper<T>(&n, scalar_address<T>(alpha), x, &incx);
}

// No Fortran-style routine exists for the complex dot product, hence no verbose line either.
template <class T>
void cblas_dotu_sub(int n, const c_type_t<T>* x, int incx, const c_type_t<T>* y, int incy,
                    c_type_t<T>* result) {
  const index n64 = n, incx64 = incx, incy64 = incy;
  internal_entries<T>::dotu(elements<T>(result), &n64, elements<T>(x), &incx64, elements<T>(y),
                            &incy64);
}

}  // namespace
}  // namespace tav::blas::interface

using namespace tav::blas::interface;
using c8 = std::complex<float>;
using c16 = std::complex<double>;

TAV_EXPORT void cblas_saxpy(int n, float alpha, const float* x, int incx, float* y, int incy) {
  cblas_axpy<float>(n, alpha, x, incx, y, incy);
}
TAV_EXPORT void cblas_daxpy(int n, double alpha, const double* x, int incx, double* y, int incy) {
  cblas_axpy<double>(n, alpha, x, incx, y, incy);
}
TAV_EXPORT void cblas_caxpy(int n, const tav_complex8* alpha, const tav_complex8* x, int incx,
                            tav_complex8* y, int incy) {
  cblas_axpy<c8>(n, alpha, x, incx, y, incy);
}
TAV_EXPORT void cblas_zaxpy(int n, const tav_complex16* alpha, const tav_complex16* x, int incx,
                            tav_complex16* y, int incy) {
  cblas_axpy<c16>(n, alpha, x, incx, y, incy);
}

TAV_EXPORT float cblas_sdot(int n, const float* x, int incx, const float* y, int incy) {
  return cblas_dot<float>(n, x, incx, y, incy);
}
TAV_EXPORT double cblas_ddot(int n, const double* x, int incx, const double* y, int incy) {
  return cblas_dot<double>(n, x, incx, y, incy);
}
TAV_EXPORT void cblas_cdotu_sub(int n, const tav_complex8* x, int incx, const tav_complex8* y,
                                int incy, tav_complex8* result) {
  cblas_dotu_sub<c8>(n, x, incx, y, incy, result);
}
TAV_EXPORT void cblas_zdotu_sub(int n, const tav_complex16* x, int incx, const tav_complex16* y,
                                int incy, tav_complex16* result) {
  cblas_dotu_sub<c16>(n, x, incx, y, incy, result);
}

TAV_EXPORT void cblas_sscal(int n, float alpha, float* x, int incx) {
  cblas_scal<float>(n, alpha, x, incx);
}
TAV_EXPORT void cblas_dscal(int n, double alpha, double* x, int incx) {
  cblas_scal<double>(n, alpha, x, incx);
}
TAV_EXPORT void cblas_cscal(int n, const tav_complex8* alpha, tav_complex8* x, int incx) {
  cblas_scal<c8>(n, alpha, x, incx);
}
TAV_EXPORT void cblas_zscal(int n, const tav_complex16* alpha, tav_complex16* x, int incx) {
  cblas_scal<c16>(n, alpha, x, incx);
}
