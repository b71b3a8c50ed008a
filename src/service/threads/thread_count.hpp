// The answer to "how many threads may this call use": the calling thread's own setting, then
// the rule over the process-wide settings.
#pragma once

namespace tav::service {

// The calling thread's own count, 0 when it never set one.
int local_thread_count();

// Stores `n` as the calling thread's own count and returns the previous one.
int exchange_local_thread_count(int n);

// Everything the rule looks at once the thread's own setting and the one-time reading are past.
struct count_inputs {
  int domain_count = -1;        // the domain's own setting; -1 for domains 0, -1 and unknown ones
  int global_count = -1;
  int openmp_max = 1;           // the OpenMP runtime's maximum thread count
  bool dynamic = true;
  bool in_parallel = false;     // the caller runs inside an OpenMP parallel region
  int physical_cores = 1;
  int processes_per_node = -1;  // -1 unknown
  int omp_num_threads = -1;     // OMP_NUM_THREADS as read, -1 when it gave none
  int mpi_thread_level = -1;
  int mpi_safe = -1;            // -1 never set, else 0 or 1
};

// The thread count for `inputs`, at least 1.
int thread_count(const count_inputs& inputs);

// The answer of tav_serv_domain_get_max_threads(domain).
int domain_max_threads(int domain);

}  // namespace tav::service
