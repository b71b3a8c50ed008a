// Resolution of dispatch slots: the shared steps between a slot's first call and its variant.
#include <tav/tav_cbwr.h>
#include <tav/tav_cpu.h>
#include <tav/tav_error.h>

#include "service/dispatch/dispatched.hpp"
#include "service/dispatch/path_rule.hpp"

namespace tav::service {

int begin_resolution() {
  tav_serv_inspector_suppress();
  int type = tav_serv_cpu_detect();
  int id = path_for(type, tav_serv_cbwr_get(TAV_CBWR_BRANCH));
  if (id < 0) {
    tav_serv_print(0, 1213, 1, type);
    tav_serv_exit(1);
  }
  return id;
}

void end_resolution() { tav_serv_inspector_unsuppress(); }

}  // namespace tav::service
