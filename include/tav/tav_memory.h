/* The memory manager: aligned allocation, per-thread buffer cache, statistics. */
#ifndef TAV_MEMORY_H
#define TAV_MEMORY_H

#include <stddef.h>
#include <tav/tav_export.h>

TAV_BEGIN_DECLS

/* System allocator hooks; replace them before the first allocation to route all memory. */
extern void* (*i_malloc)(size_t size);
extern void (*i_free)(void* pointer);
extern void* (*i_realloc)(void* pointer, size_t size);
extern void* (*i_calloc)(size_t count, size_t size);

/* Cached form used by the library's own routines. */
void* tav_serv_allocate(size_t size, int alignment);
void tav_serv_deallocate(void* pointer);

/* Uncached form; alignment is a power of two of 64 or more, else 64 is used. */
void* tav_serv_malloc(size_t size, int alignment);
void tav_serv_free(void* pointer);
void* tav_serv_calloc(size_t count, size_t size, int alignment);
void* tav_serv_realloc(void* pointer, size_t size, int alignment);
void* TAV_malloc(size_t size, int alignment);
void TAV_free(void* pointer);
void* TAV_calloc(size_t count, size_t size, int alignment);
void* TAV_realloc(void* pointer, size_t size, int alignment);

void tav_serv_free_buffers(void);
void TAV_Free_Buffers(void);
void TAV_FREE_BUFFERS(void);
void tav_serv_thread_free_buffers(void);
void TAV_Thread_Free_Buffers(void);
void TAV_THREAD_FREE_BUFFERS(void);

int tav_serv_disable_fast_mm(void);
int TAV_Disable_Fast_MM(void);
int TAV_DISABLE_FAST_MM(void);
int tav_serv_get_fast_mm_status(void);

long long tav_serv_mem_stat(int* allocated_buffers);
long long TAV_Mem_Stat(int* allocated_buffers);
long long TAV_MEM_STAT(int* allocated_buffers);

#define TAV_PEAK_MEM_DISABLE 0
#define TAV_PEAK_MEM_ENABLE 1
#define TAV_PEAK_MEM 2
#define TAV_PEAK_MEM_RESET (-1)
long long tav_serv_peak_mem_usage(int mode);
long long TAV_Peak_Mem_Usage(int mode);
long long TAV_PEAK_MEM_USAGE(const int* mode);

long long tav_serv_check_fast_memory_size(void);

TAV_END_DECLS

#endif
