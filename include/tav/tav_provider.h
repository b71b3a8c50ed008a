/* The provider interface: the flat functions a managed numerics package binds to by name. */
#ifndef TAV_PROVIDER_H
#define TAV_PROVIDER_H

#include <tav/tav_export.h>

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

TAV_END_DECLS

#endif
