/* Processor classification and the code-path limit. */
#ifndef TAV_CPU_H
#define TAV_CPU_H

#include <tav/tav_export.h>

TAV_BEGIN_DECLS

/* CPU types after detection. */
#define TAV_CPU_DEF 0
#define TAV_CPU_COMPATIBLE 1
#define TAV_CPU_MC 2
#define TAV_CPU_MC3 3
#define TAV_CPU_AVX 4
#define TAV_CPU_AVX2 5
#define TAV_CPU_AVX512_TP 6
#define TAV_CPU_AVX512 7

/* Levels of the instruction limit. */
#define TAV_ENABLE_SSE4_2 0
#define TAV_ENABLE_AVX 1
#define TAV_ENABLE_AVX2 2
#define TAV_ENABLE_AVX512_TP 3
#define TAV_ENABLE_AVX512 4
#define TAV_ENABLE_AVX512_TP_E1 5
#define TAV_ENABLE_AVX512_E1 6

/* The CPU type 0 to 7, detected on the first call. */
int tav_serv_cpu_detect(void);
/* Lowers the highest code path detection may choose; 1 if applied, 0 otherwise. */
int tav_serv_enable_instructions(int level);
int TAV_Enable_Instructions(int level);
int TAV_ENABLE_INSTRUCTIONS(const int* level);

int tav_serv_orvat_cpu_true(void);
int tav_serv_orvat_cpu(void);
/* Fills the processor feature word once and returns it. */
unsigned long long __orvat_tav_features_init_x(void);

void tav_serv_inspector_suppress(void);
void tav_serv_inspector_unsuppress(void);
/* Ends the process with `status`. */
void tav_serv_exit(int status);

TAV_END_DECLS

#endif
