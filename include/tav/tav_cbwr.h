/* Conditional numerical reproducibility: the branch that fixes which code path kernels take. */
#ifndef TAV_CBWR_H
#define TAV_CBWR_H

#include <tav/tav_export.h>

TAV_BEGIN_DECLS

#define TAV_CBWR_BRANCH 1
#define TAV_CBWR_ALL (-1)

#define TAV_CBWR_UNSET_ALL 0
#define TAV_CBWR_OFF 1
#define TAV_CBWR_AUTO 2
#define TAV_CBWR_COMPATIBLE 3
#define TAV_CBWR_SSE2 4
#define TAV_CBWR_SSSE3 6
#define TAV_CBWR_SSE4_1 7
#define TAV_CBWR_SSE4_2 8
#define TAV_CBWR_AVX 9
#define TAV_CBWR_AVX2 10
#define TAV_CBWR_AVX512_TP 11
#define TAV_CBWR_AVX512 12
#define TAV_CBWR_AVX512_TP_E1 13
#define TAV_CBWR_AVX512_E1 14

#define TAV_CBWR_SUCCESS 0
#define TAV_CBWR_ERR_INVALID_SETTINGS (-1)
#define TAV_CBWR_ERR_INVALID_INPUT (-2)
#define TAV_CBWR_ERR_UNSUPPORTED_BRANCH (-3)
#define TAV_CBWR_ERR_UNKNOWN_BRANCH (-4)
#define TAV_CBWR_ERR_MODE_CHANGE_FAILURE (-8)

int tav_serv_cbwr_get(int which);
int tav_serv_cbwr_get_nolock(int which);
int tav_serv_cbwr_get_auto_branch(void);
int tav_serv_cbwr_set(int mode);

int TAV_CBWR_Get(int which);
int TAV_CBWR_GET(const int* which);
int TAV_CBWR_Get_Auto_Branch(void);
int TAV_CBWR_GET_AUTO_BRANCH(void);
int TAV_CBWR_Set(int mode);
int TAV_CBWR_SET(const int* mode);

TAV_END_DECLS

#endif
