// The process-wide threading settings and the once-per-process reading of the environment that
// completes them.
#pragma once

#include <atomic>
#include <mutex>

namespace tav::service {

// Every process-wide setting starts here; a call or the environment replaces it.
constexpr int unset = -1;

// Domains 0 all, 1 BLAS, 2 FFT, 3 vector math, 4 the sparse-solver domain.
constexpr int domain_count = 5;

// Plain integers as far as the rules go; atomics so that a setter racing with a query is seen
// either way without a data race.
struct thread_settings_store {
  std::atomic<int> counts[domain_count] = {unset, unset, unset, unset, unset};  // [0]: global
  std::atomic<int> dynamic{unset};             // 0 or 1 once read
  std::atomic<int> stripes{unset};             // TAV_NUM_STRIPES
  std::atomic<int> omp_num_threads{unset};     // OMP_NUM_THREADS as the library reads it
  std::atomic<int> processes_per_node{unset};  // from TAV_MPI_PPN or a launcher
  std::atomic<int> mpi_thread_level{unset};    // 0 to 3
  std::atomic<int> mpi_safe{unset};            // 0 or 1 once a call has set it
};

// The one store; inline, so that a per-call check reads a setting without a call.
extern thread_settings_store settings_instance;
inline thread_settings_store& settings() { return settings_instance; }

// Serialises the one-time reading and the creation of the per-thread key.
std::mutex& settings_lock();

// Reads the environment and counts the hardware, once per process; later calls return at once.
// Values set by calls before the first reading are kept.
void read_settings_once();

}  // namespace tav::service
