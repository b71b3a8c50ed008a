// The working directory the process had when the library was loaded.
#pragma once

namespace tav::service {

// The directory recorded at load time, with "/" appended ("/home/user/" or "//" for the root),
// so that a relative file name can be joined to it by plain concatenation. Valid once the
// library has loaded.
const char* working_directory();

}  // namespace tav::service
