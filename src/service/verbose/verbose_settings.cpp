// The verbose switch (TAV_VERBOSE or a call) and the verbose output file
// (TAV_VERBOSE_OUTPUT_FILE or a call), each read once and guarded by its own lock.
#include <tav/tav_verbose.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "common/exports.hpp"
#include "service/verbose/verbose_format.hpp"
#include "service/verbose/verbose_settings.hpp"

namespace tav::service {
namespace {

// -1 until TAV_VERBOSE is read or a call sets it, then 0 or 1.
std::atomic<int> verbose_switch{-1};
std::mutex switch_lock;

std::mutex file_lock;
// Both guarded by file_lock.
bool file_settled = false;  // the environment was read, or a call set the name
char output_file[verbose_file_name_limit] = "";

void warn(const char* text) { std::fprintf(stderr, "%s\n", text); }

// Keeps `name` if it is short enough and can be opened for appending (which creates the file);
// otherwise clears the name and warns. Returns 0 when kept, 1 when refused. Holds file_lock.
int accept_output_file_locked(const char* name) {
  size_t length = strnlen(name, verbose_file_name_limit);
  output_file[0] = '\0';
  if (length == 0 || length >= verbose_file_name_limit) {
    warn("TAV_VERBOSE WARNING: incorrect output filename: too long or empty");
    return 1;
  }
  std::FILE* file = std::fopen(name, "a");
  if (file == nullptr) {
    warn("TAV_VERBOSE WARNING: Unable to open verbose output file.");
    return 1;
  }
  std::fclose(file);
  std::memcpy(output_file, name, length + 1);
  return 0;
}

// An empty variable counts as absent: standard output, no warning.
void read_output_file_environment_locked() {
  file_settled = true;
  const char* value = std::getenv("TAV_VERBOSE_OUTPUT_FILE");
  if (value != nullptr && *value != '\0') accept_output_file_locked(value);
}

}  // namespace

void copy_verbose_output_file(char (&name)[verbose_file_name_limit]) {
  std::lock_guard guard(file_lock);
  if (!file_settled) read_output_file_environment_locked();
  std::memcpy(name, output_file, sizeof output_file);
}

}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT int tav_serv_verbose(int mode) {
  if (mode != 0 && mode != 1) return -1;
  std::lock_guard guard(switch_lock);
  verbose_switch.store(mode, std::memory_order_release);
  return mode;
}
TAV_EXPORT_ALIAS(TAV_Verbose, tav_serv_verbose);
TAV_EXPORT int TAV_VERBOSE(const int* mode) { return tav_serv_verbose(*mode); }

TAV_EXPORT int tav_serv_verbose_mode(void) {
  int value = verbose_switch.load(std::memory_order_acquire);
  if (value >= 0) return value;
  std::lock_guard guard(switch_lock);
  value = verbose_switch.load(std::memory_order_relaxed);
  if (value < 0) {
    value = verbose_switch_from_text(std::getenv("TAV_VERBOSE"));
    verbose_switch.store(value, std::memory_order_release);
  }
  return value;
}

TAV_EXPORT int tav_serv_verbose_output_file(const char* name) {
  std::lock_guard guard(file_lock);
  file_settled = true;
  return accept_output_file_locked(name != nullptr ? name : "");
}
TAV_EXPORT_ALIAS(TAV_Verbose_Output_File, tav_serv_verbose_output_file);
