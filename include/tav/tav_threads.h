/* Thread-count control: global, per-domain and per-thread settings and the dynamic switch. */
#ifndef TAV_THREADS_H
#define TAV_THREADS_H

#include <tav/tav_export.h>

TAV_BEGIN_DECLS

#define TAV_DOMAIN_ALL 0
#define TAV_DOMAIN_BLAS 1
#define TAV_DOMAIN_FFT 2
#define TAV_DOMAIN_VML 3
#define TAV_DOMAIN_PARDISO 4

void tav_serv_set_num_threads(int n);
int tav_serv_domain_set_num_threads(int n, int domain);
int tav_serv_set_num_threads_local(int n);
void tav_serv_set_dynamic(int flag);
void tav_serv_mpi_safe(int flag);
int tav_serv_get_max_threads(void);
int tav_serv_domain_get_max_threads(int domain);
int tav_serv_get_dynamic(void);

/* C forms take values; the upper-case Fortran forms take references. */
void TAV_Set_Num_Threads(int n);
void TAV_SET_NUM_THREADS(const int* n);
int TAV_Domain_Set_Num_Threads(int n, int domain);
int TAV_DOMAIN_SET_NUM_THREADS(const int* n, const int* domain);
int TAV_Set_Num_Threads_Local(int n);
int TAV_SET_NUM_THREADS_LOCAL(const int* n);
void TAV_Set_Dynamic(int flag);
void TAV_SET_DYNAMIC(const int* flag);
int TAV_Get_Max_Threads(void);
int TAV_GET_MAX_THREADS(void);
int TAV_Domain_Get_Max_Threads(int domain);
int TAV_DOMAIN_GET_MAX_THREADS(const int* domain);
int TAV_Get_Dynamic(void);
int TAV_GET_DYNAMIC(void);

TAV_END_DECLS

#endif
