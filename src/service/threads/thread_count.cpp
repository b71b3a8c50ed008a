// The thread-count query: the per-thread setting under a thread-specific key, then domain,
// global and OpenMP counts, lowered by the dynamic switch and the MPI rules.
#include "service/threads/thread_count.hpp"

#include <omp.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <new>

#include "service/threads/settings_store.hpp"
#include "service/threads/thread_settings.hpp"

namespace tav::service {
namespace {

pthread_key_t key;
std::atomic<bool> key_created{false};

// Thread exit: the setting dies with its thread.
void release_setting(void* setting) { delete static_cast<int*>(setting); }

// Unload or process end: the key goes, so that no thread ends later by calling a clean-up
// that was unmapped with the library.
struct key_release {
  ~key_release() {
    if (!key_created.exchange(false, std::memory_order_acq_rel)) return;
    release_setting(pthread_getspecific(key));
    pthread_key_delete(key);
  }
} key_release_at_exit;

bool ensure_key() {
  if (key_created.load(std::memory_order_acquire)) return true;
  std::lock_guard guard(settings_lock());
  if (key_created.load(std::memory_order_relaxed)) return true;
  if (pthread_key_create(&key, release_setting) != 0) return false;
  key_created.store(true, std::memory_order_release);
  return true;
}

}  // namespace

int local_thread_count() {
  if (!key_created.load(std::memory_order_acquire)) return 0;
  const int* setting = static_cast<const int*>(pthread_getspecific(key));
  return setting != nullptr ? *setting : 0;
}

int exchange_local_thread_count(int n) {
  if (!ensure_key()) return 0;
  int* setting = static_cast<int*>(pthread_getspecific(key));
  if (setting == nullptr) {
    // Without memory for one integer the setting cannot be kept; the thread stays at 0.
    setting = new (std::nothrow) int(0);
    if (setting == nullptr || pthread_setspecific(key, setting) != 0) {
      delete setting;
      return 0;
    }
  }
  int previous = *setting;
  *setting = n;
  return previous;
}

int thread_count(const count_inputs& in) {
  // A call made from inside a parallel region must not multiply the team.
  if (in.dynamic && in.in_parallel) return 1;
  bool from_openmp = in.domain_count <= 0 && in.global_count <= 0;
  int count = in.domain_count > 0  ? in.domain_count
              : in.global_count > 0 ? in.global_count
                                    : in.openmp_max;
  // Hyper-threads share a core's arithmetic units; dense kernels gain nothing from them.
  if (in.dynamic) count = std::min(count, in.physical_cores);
  if (in.mpi_safe == unset) {
    // Several ranks on one node each taking every core would oversubscribe it. This applies
    // only when nobody chose a count: neither a call, nor TAV_* variables, nor OMP_NUM_THREADS.
    bool ranks_share_node = in.processes_per_node > 0 && from_openmp && in.omp_num_threads <= 0;
    if (ranks_share_node) {
      // Below MPI_THREAD_FUNNELED the rank may not run threads at all.
      count = in.mpi_thread_level > 0
                  ? std::min(count, std::max(in.physical_cores / in.processes_per_node, 1))
                  : 1;
    }
  } else if (in.mpi_safe == 0) {
    count = 1;
  }
  return std::max(count, 1);
}

int domain_max_threads(int domain) {
  int own = local_thread_count();
  if (own > 0) return own;
  read_settings_once();
  const thread_settings_store& s = settings();
  constexpr auto relaxed = std::memory_order_relaxed;
  count_inputs in;
  if (domain >= 1 && domain < domain_count) in.domain_count = s.counts[domain].load(relaxed);
  in.global_count = s.counts[0].load(relaxed);
  in.openmp_max = omp_get_max_threads();
  in.dynamic = s.dynamic.load(relaxed) == 1;
  in.in_parallel = omp_in_parallel() != 0;
  in.physical_cores = hardware().physical;
  in.processes_per_node = s.processes_per_node.load(relaxed);
  in.omp_num_threads = s.omp_num_threads.load(relaxed);
  in.mpi_thread_level = s.mpi_thread_level.load(relaxed);
  in.mpi_safe = s.mpi_safe.load(relaxed);
  return thread_count(in);
}

}  // namespace tav::service
