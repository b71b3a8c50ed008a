// The provider's capability query and its mode setters.
#include <tav/tav_cbwr.h>
#include <tav/tav_provider.h>
#include <tav/tav_threads.h>
#include <tav/tav_version.h>
#include <tav/tav_vml.h>

#include "common/exports.hpp"

TAV_EXPORT int query_capability(int capability) {
  TAVVersion version;
  switch (capability) {
    case 0x1: return -1;
    case 0x4:
    case 0x6:
    case 0x7: return 8;
    case 0x5: return 4;
    case 0x9:
    case 0x41:
    case 0x42:
    case 0x43:
    case 0x83:
    case 0x180:
    case 0x200: return 1;
    case 0x40: return 15;
    case 0x80: return 2;
    // The version numbers are read afresh for each question; nothing is cached here.
    case 0x20: TAV_Get_Version(&version); return version.MajorVersion;
    case 0x21: TAV_Get_Version(&version); return version.MinorVersion;
    case 0x22: TAV_Get_Version(&version); return version.UpdateVersion;
    // Asked about by the caller and answered "no" by this build: 0x0, 0x8, 0xA, 0x81, 0x82,
    // 0x100, 0x181, 0x201; every other code gets the same answer.
    default: return 0;
  }
}

// The status of the setters is not reported: a refused mode leaves the previous one in force.
TAV_EXPORT void set_consistency_mode(int mode) { TAV_CBWR_Set(mode); }

TAV_EXPORT void set_vml_mode(unsigned int mode) { vmlSetMode(mode); }

TAV_EXPORT void set_max_threads(int threads) { TAV_Set_Num_Threads(threads); }

TAV_EXPORT void SetImprovedConsistency(void) {
  TAV_CBWR_Set(TAV_CBWR_COMPATIBLE);
  vmlSetMode(VML_DOUBLE_CONSISTENT | VML_HA);
}
