// Provider controls of the memory manager.
#include <tav/tav_memory.h>
#include <tav/tav_provider.h>

#include "common/exports.hpp"

TAV_EXPORT void free_buffers(void) { TAV_Free_Buffers(); }

TAV_EXPORT void thread_free_buffers(void) { TAV_Thread_Free_Buffers(); }

TAV_EXPORT int disable_fast_mm(void) { return TAV_Disable_Fast_MM(); }

TAV_EXPORT long long mem_stat(int* allocated_buffers) { return TAV_Mem_Stat(allocated_buffers); }

TAV_EXPORT long long peak_mem_usage(int mode) { return TAV_Peak_Mem_Usage(mode); }
