/* The provider interface: the flat functions a managed numerics package binds to by name. */
#ifndef TAV_PROVIDER_H
#define TAV_PROVIDER_H

#include <tav/tav_export.h>
#include <tav/tav_types.h>

TAV_BEGIN_DECLS

/* Returned by provider functions whose scratch allocation failed. */
#define TAV_PROVIDER_ALLOCATION_FAILED (-999999)

void free_buffers(void);
void thread_free_buffers(void);
int disable_fast_mm(void);
long long mem_stat(int* allocated_buffers);
long long peak_mem_usage(int mode);

int query_capability(int capability);
void set_consistency_mode(int mode);
void set_vml_mode(unsigned int mode);
void set_max_threads(int threads);
void SetImprovedConsistency(void);

/* BLAS: vectors with increment 1; column-major matrices stored packed (leading dimension = row
   count); transa and transb are the codes 111 (no transpose), 112 (transpose) and 113
   (conjugate transpose). */
void s_axpy(int n, const float* x, float* y, float alpha);
void d_axpy(int n, const double* x, double* y, double alpha);
void c_axpy(int n, const tav_complex8* x, tav_complex8* y, tav_complex8 alpha);
void z_axpy(int n, const tav_complex16* x, tav_complex16* y, tav_complex16 alpha);
void s_scale(int n, float* x, float alpha);
void d_scale(int n, double* x, double alpha);
void c_scale(int n, tav_complex8* x, tav_complex8 alpha);
void z_scale(int n, tav_complex16* x, tav_complex16 alpha);
/* sum x_i*y_i, unconjugated */
float s_dot_product(int n, const float* x, const float* y);
double d_dot_product(int n, const double* x, const double* y);
tav_complex8 c_dot_product(int n, const tav_complex8* x, const tav_complex8* y);
tav_complex16 z_dot_product(int n, const tav_complex16* x, const tav_complex16* y);
/* c := alpha*op(a)*op(b) + beta*c with c m x n and op(a) m x k */
void s_matrix_multiply(int transa, int transb, int m, int n, int k, const float* a, const float* b,
                       float* c, float alpha, float beta);
void d_matrix_multiply(int transa, int transb, int m, int n, int k, const double* a,
                       const double* b, double* c, double alpha, double beta);
void c_matrix_multiply(int transa, int transb, int m, int n, int k, const tav_complex8* a,
                       const tav_complex8* b, tav_complex8* c, tav_complex8 alpha,
                       tav_complex8 beta);
void z_matrix_multiply(int transa, int transb, int m, int n, int k, const tav_complex16* a,
                       const tav_complex16* b, tav_complex16* c, tav_complex16 alpha,
                       tav_complex16 beta);

/* Vector arithmetic: result[i] = a[i] op b[i] for i < n, through v?Add, v?Sub, v?Mul, v?Div
   and v?Pow under the vector-math mode in force; the status stays in vmlGetErrStatus(). */
void s_vector_add(int n, const float* a, const float* b, float* result);
void d_vector_add(int n, const double* a, const double* b, double* result);
void c_vector_add(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* result);
void z_vector_add(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* result);
void s_vector_subtract(int n, const float* a, const float* b, float* result);
void d_vector_subtract(int n, const double* a, const double* b, double* result);
void c_vector_subtract(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* result);
void z_vector_subtract(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* result);
void s_vector_multiply(int n, const float* a, const float* b, float* result);
void d_vector_multiply(int n, const double* a, const double* b, double* result);
void c_vector_multiply(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* result);
void z_vector_multiply(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* result);
void s_vector_divide(int n, const float* a, const float* b, float* result);
void d_vector_divide(int n, const double* a, const double* b, double* result);
void c_vector_divide(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* result);
void z_vector_divide(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* result);
void s_vector_power(int n, const float* a, const float* b, float* result);
void d_vector_power(int n, const double* a, const double* b, double* result);
void c_vector_power(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* result);
void z_vector_power(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* result);

TAV_END_DECLS

#endif
