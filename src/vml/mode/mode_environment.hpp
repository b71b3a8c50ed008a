// The mode word that a thread starts from, read from the environment variable TAV_VML_MODE.
#pragma once

namespace tav::vml {

// The OR of the comma-separated VML_* names in TAV_VML_MODE, with high accuracy added when no
// accuracy is named and the default error mode (errno, except, callback) when no error mode is;
// 0x1A02 when the variable is absent or any token in it is not a name.
unsigned mode_from_environment();

}  // namespace tav::vml
