// The exported thread-count setters and queries, with their upper-case and Fortran forms.
#include <tav/tav_threads.h>

#include "common/exports.hpp"
#include "service/threads/settings_store.hpp"
#include "service/threads/thread_count.hpp"
#include "service/threads/thread_settings.hpp"

using namespace tav::service;

TAV_EXPORT void tav_serv_set_num_threads(int n) {
  if (n > 0) settings().counts[TAV_DOMAIN_ALL].store(n, std::memory_order_relaxed);
}
TAV_EXPORT_ALIAS(TAV_Set_Num_Threads, tav_serv_set_num_threads);
TAV_EXPORT void TAV_SET_NUM_THREADS(const int* n) { tav_serv_set_num_threads(*n); }

// 0 is a valid count here: it hands the domain back to the global count.
TAV_EXPORT int tav_serv_domain_set_num_threads(int n, int domain) {
  if (n < 0 || domain < 0 || domain >= domain_count) return 0;
  settings().counts[domain].store(n, std::memory_order_relaxed);
  return 1;
}
TAV_EXPORT_ALIAS(TAV_Domain_Set_Num_Threads, tav_serv_domain_set_num_threads);
TAV_EXPORT int TAV_DOMAIN_SET_NUM_THREADS(const int* n, const int* domain) {
  return tav_serv_domain_set_num_threads(*n, *domain);
}

TAV_EXPORT int tav_serv_set_num_threads_local(int n) { return exchange_local_thread_count(n); }
TAV_EXPORT_ALIAS(TAV_Set_Num_Threads_Local, tav_serv_set_num_threads_local);
TAV_EXPORT int TAV_SET_NUM_THREADS_LOCAL(const int* n) { return exchange_local_thread_count(*n); }

TAV_EXPORT void tav_serv_set_dynamic(int flag) {
  settings().dynamic.store(flag != 0 ? 1 : 0, std::memory_order_relaxed);
}
TAV_EXPORT_ALIAS(TAV_Set_Dynamic, tav_serv_set_dynamic);
TAV_EXPORT void TAV_SET_DYNAMIC(const int* flag) { tav_serv_set_dynamic(*flag); }

TAV_EXPORT void tav_serv_mpi_safe(int flag) {
  settings().mpi_safe.store(flag == 1 ? 1 : 0, std::memory_order_relaxed);
}

TAV_EXPORT int tav_serv_domain_get_max_threads(int domain) { return domain_max_threads(domain); }
TAV_EXPORT_ALIAS(TAV_Domain_Get_Max_Threads, tav_serv_domain_get_max_threads);
TAV_EXPORT int TAV_DOMAIN_GET_MAX_THREADS(const int* domain) { return domain_max_threads(*domain); }

// Domain -1 names no domain: only the global count and OpenMP's count take part.
TAV_EXPORT int tav_serv_get_max_threads(void) { return domain_max_threads(-1); }
TAV_EXPORT_ALIAS(TAV_Get_Max_Threads, tav_serv_get_max_threads);
TAV_EXPORT_ALIAS(TAV_GET_MAX_THREADS, tav_serv_get_max_threads);

TAV_EXPORT int tav_serv_get_dynamic(void) { return dynamic_threading() ? 1 : 0; }
TAV_EXPORT_ALIAS(TAV_Get_Dynamic, tav_serv_get_dynamic);
TAV_EXPORT_ALIAS(TAV_GET_DYNAMIC, tav_serv_get_dynamic);
