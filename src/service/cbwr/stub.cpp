// TEMPORARY stand-in until the reproducibility mode lands: the branch is always OFF.
#include <tav/tav_cbwr.h>

#include "common/exports.hpp"

TAV_EXPORT int tav_serv_cbwr_get(int which) { return 1; }
TAV_EXPORT int tav_serv_cbwr_get_nolock(int which) { return 1; }
