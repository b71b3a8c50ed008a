// The load-time start-up of the library: recording the working directory.
#include "service/startup/working_directory.hpp"

#include <dlfcn.h>
#include <tav/tav_cpu.h>
#include <tav/tav_error.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace tav::service {
namespace {

// "<cwd>/", allocated once at load and kept for the life of the process. A constant-initialised
// pointer, so nothing but the constructor below runs when the library loads.
char* recorded_directory = nullptr;

// The file the library was loaded from, as the dynamic loader names it.
const char* own_file_name() {
  Dl_info self{};
  if (dladdr(reinterpret_cast<const void*>(&own_file_name), &self) == 0 ||
      self.dli_fname == nullptr)
    return "";
  return self.dli_fname;
}

// getcwd with a null buffer allocates what the path needs, so only an unreadable directory
// (removed, or out of reach) fails here; the load then ends the process with message 1, status 2.
__attribute__((constructor)) void record_working_directory() {
  char* directory = getcwd(nullptr, 0);
  char* with_slash = nullptr;
  if (directory != nullptr)
    with_slash = static_cast<char*>(std::realloc(directory, std::strlen(directory) + 2));
  if (with_slash == nullptr) {
    tav_serv_print(0, 1, 1, own_file_name());
    tav_serv_exit(2);
  }
  std::strcat(with_slash, "/");
  recorded_directory = with_slash;
}

}  // namespace

const char* working_directory() { return recorded_directory; }

}  // namespace tav::service
