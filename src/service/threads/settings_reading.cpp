// The process-wide threading settings and their one-time completion from the environment and
// the hardware.
#include <cstdlib>

#include "service/threads/env_parsing.hpp"
#include "service/threads/hardware_topology.hpp"
#include "service/threads/settings_store.hpp"
#include "service/threads/thread_settings.hpp"

namespace tav::service {

constinit thread_settings_store settings_instance;

namespace {

thread_settings_store& store = settings_instance;

// Set with release once everything below is filled; a reader that sees it with acquire sees all.
std::atomic<bool> settings_read{false};
hardware_counts machine;

std::string_view variable(const char* name) { return bounded_value(std::getenv(name)); }

// The environment fills only what no call has set yet; the exchange keeps a setter's value
// that lands while the environment is being read.
void store_if_unset(std::atomic<int>& setting, int value) {
  if (value == unset) return;
  int expected = unset;
  setting.compare_exchange_strong(expected, value, std::memory_order_relaxed);
}

// The first launcher variable with a positive count gives the processes per node.
int processes_per_node() {
  for (const char* name : {"TAV_MPI_PPN", "OMPI_COMM_WORLD_LOCAL_SIZE", "MPI_LOCALNRANKS"}) {
    int value = processes_per_node_value(variable(name));
    if (value != unset) return value;
  }
  return unset;
}

// The order matters: TAV_NUM_THREADS is read before the domain list, so that it wins over the
// list's TAV_DOMAIN_ALL item.
void read_environment() {
  store_if_unset(store.counts[0], thread_count_value(variable("TAV_NUM_THREADS")));
  store_if_unset(store.stripes, stripes_value(variable("TAV_NUM_STRIPES")));
  std::array<int, domain_count> items = domain_list_values(variable("TAV_DOMAIN_NUM_THREADS"));
  for (int domain = 0; domain < domain_count; ++domain)
    store_if_unset(store.counts[domain], items[domain]);
  store_if_unset(store.dynamic, dynamic_value(variable("TAV_DYNAMIC")));
  store_if_unset(store.omp_num_threads, thread_count_value(variable("OMP_NUM_THREADS")));
  store_if_unset(store.processes_per_node, processes_per_node());
  // The MPI thread level, 0 (single) to 3 (multiple), as the MPI library exports it.
  int level = mpi_thread_level_value(variable("OMPI_MPI_THREAD_LEVEL"));
  store_if_unset(store.mpi_thread_level, level);
}

}  // namespace

std::mutex& settings_lock() {
  static std::mutex lock;
  return lock;
}

void read_settings_once() {
  if (settings_read.load(std::memory_order_acquire)) return;
  std::lock_guard guard(settings_lock());
  if (settings_read.load(std::memory_order_relaxed)) return;
  read_environment();
  machine = machine_hardware();
  settings_read.store(true, std::memory_order_release);
}

const hardware_counts& hardware() {
  read_settings_once();
  return machine;
}

bool dynamic_threading() {
  read_settings_once();
  return store.dynamic.load(std::memory_order_relaxed) != 0;
}

}  // namespace tav::service

int tav_serv_get_num_stripes(void) {
  tav::service::read_settings_once();
  return tav::service::settings().stripes.load(std::memory_order_relaxed);
}
