// What the threading service tells other subsystems beyond the exported thread-count queries:
// the stripe count and the hardware counts.
#pragma once

namespace tav::service {

// The machine as this process sees it, counted once per process.
struct hardware_counts {
  int logical = 1;            // processors in the affinity mask
  int physical = 1;           // distinct (package, core) pairs among them
  int packages = 1;           // distinct packages among them
  int cores_per_package = 1;  // physical / packages, at least 1
  bool hyper_threading = false;  // some core carries more than one allowed processor
};

// The hardware counts; the first use also reads the threading environment.
const hardware_counts& hardware();

// Whether dynamic threading is on (tav_serv_get_dynamic without the exported call).
bool dynamic_threading();

}  // namespace tav::service

// The stripe count of TAV_NUM_STRIPES (0 or more), or -1 when the variable gave none.
extern "C" int tav_serv_get_num_stripes(void);
