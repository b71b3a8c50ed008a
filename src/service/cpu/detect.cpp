// CPU detection: the once-per-process classification under the detection lock, the CPU-type
// override variable, TAV_ENABLE_INSTRUCTIONS and the exported processor services.
#include <tav/tav_cbwr.h>
#include <tav/tav_cpu.h>
#include <tav/tav_error.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "common/exports.hpp"
#include "service/cpu/cpu_state.hpp"
#include "service/cpu/features.hpp"

namespace tav::service {

constinit std::atomic<int> stored_vml_type{-1};

namespace {

std::atomic<int> stored_cpu_type{-1};
int detected_class = -1;

enable_flags flags;
bool limit_set_by_call = false;
int env_limit = -1;

// The CPU-type override: -2 not read yet, -1 absent, else the forced class 0 to 9.
int forced_type = -2;

// The override variable's name, scrambled: byte i is XOR-ed with 0xA5 + i.
std::string override_variable_name() {
  static constexpr unsigned char scrambled[] = {0xf1, 0xe7, 0xf1, 0xf7, 0xed, 0xef, 0xe9, 0xf9, 0xea,
                                                0xf1, 0xec, 0xe0, 0xe4, 0xed, 0xe7, 0xed, 0xe5, 0xf3};
  std::string name;
  for (size_t i = 0; i < sizeof scrambled; ++i)
    name.push_back(static_cast<char>(scrambled[i] ^ static_cast<unsigned char>(0xA5 + i)));
  return name;
}

// Reads the override once; an integer outside 0 to 9 is fatal (message 1213, status 1).
int read_forced_type() {
  if (forced_type != -2) return forced_type;
  forced_type = -1;
  const char* value = std::getenv(override_variable_name().c_str());
  if (value == nullptr || *value == '\0') return forced_type;
  char* end = nullptr;
  errno = 0;
  long parsed = std::strtol(value, &end, 10);
  if (*end != '\0' || errno != 0) return forced_type;
  if (parsed < 0 || parsed > 9) {
    tav_serv_print(0, 1213, 1, static_cast<int>(parsed));
    tav_serv_exit(1);
  }
  forced_type = static_cast<int>(parsed);
  return forced_type;
}

int enable_instructions_unlocked(int level) {
  limit_set_by_call = true;
  return apply_enable_level(this_processor(), read_forced_type() >= 0, level, flags);
}

// Reads TAV_ENABLE_INSTRUCTIONS once, unless a call has set a limit, and applies it.
void apply_environment_limit() {
  if (limit_set_by_call) return;
  const char* value = std::getenv("TAV_ENABLE_INSTRUCTIONS");
  if (value != nullptr && *value != '\0') {
    char text[31];
    std::strncpy(text, value, 30);
    text[30] = '\0';
    env_limit = parse_enable_instructions(text);
  }
  enable_instructions_unlocked(env_limit);
}

// Hardware classification; without SSE2 prints the minimum-requirements messages.
int hardware_type() {
  apply_environment_limit();
  int type = ladder_type(this_processor(), flags);
  if (type < 0) {
    tav_serv_print(0, 1210, 0);
    tav_serv_print(0, 1211, 0);
  }
  return type;
}

// The path-library table: a type is valid when both names of its pair are present.
constexpr const char* path_libraries[10][2] = {
    {"libtav_def.so", "libtav_vml_def.so"},     {"libtav_def.so", "libtav_vml_def.so"},
    {"libtav_mc.so", "libtav_vml_mc.so"},       {"libtav_mc3.so", "libtav_vml_mc3.so"},
    {"libtav_avx.so", "libtav_vml_avx.so"},     {"libtav_avx2.so", "libtav_vml_avx2.so"},
    {"libtav_avx512_tp.so", "libtav_vml_avx512_tp.so"}, {"libtav_avx512.so", "libtav_vml_avx512.so"},
    {"libtav_avx512_tp.so", "libtav_vml_avx512_tp.so"}, {"libtav_avx512.so", "libtav_vml_avx512.so"},
};

constexpr bool valid_type(int type) {
  return type >= 0 && type <= 9 && path_libraries[type][0] != nullptr && path_libraries[type][1] != nullptr;
}

int classify_locked() {
  int branch = tav_serv_cbwr_get_nolock(TAV_CBWR_BRANCH);
  int type = read_forced_type();
  if (type < 0 && branch > 2) {
    apply_environment_limit();
    int target = cbwr_target_type(branch);
    type = valid_type(target) ? target_type(this_processor(), flags, target) : -1;
    if (type < 0) tav_serv_print(0, 1209, 0);
  }
  if (type < 0) type = hardware_type();
  return type;
}

}  // namespace

std::mutex& detection_lock() {
  static std::mutex lock;
  return lock;
}

const processor& this_processor() {
  static const processor cpu{read_orvat_vendor(), read_feature_word(), read_vnni()};
  return cpu;
}

enable_flags current_enable_flags() {
  std::lock_guard guard(detection_lock());
  return flags;
}

bool cpu_type_detected() { return stored_cpu_type.load(std::memory_order_acquire) >= 0; }

int cpu_class() {
  tav_serv_cpu_detect();
  return detected_class;
}

int detect_vml_cpu_type() {
  tav_serv_cpu_detect();
  return stored_vml_type.load(std::memory_order_relaxed);
}

}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT int tav_serv_cpu_detect(void) {
  int type = stored_cpu_type.load(std::memory_order_acquire);
  if (type >= 0) return type;
  std::lock_guard guard(detection_lock());
  type = stored_cpu_type.load(std::memory_order_relaxed);
  if (type >= 0) return type;
  int chosen = classify_locked();
  if (chosen < 0) tav_serv_exit(1);
  if (!valid_type(chosen)) {
    tav_serv_print(0, 1213, 1, chosen);
    tav_serv_exit(1);
  }
  detected_class = chosen;
  type = stored_type(chosen);
  stored_vml_type.store(vml_type(type), std::memory_order_relaxed);
  stored_cpu_type.store(type, std::memory_order_release);
  return type;
}

TAV_EXPORT int tav_serv_enable_instructions(int level) {
  std::lock_guard guard(detection_lock());
  return enable_instructions_unlocked(level);
}
TAV_EXPORT_ALIAS(TAV_Enable_Instructions, tav_serv_enable_instructions);
TAV_EXPORT int TAV_ENABLE_INSTRUCTIONS(const int* level) { return tav_serv_enable_instructions(*level); }

TAV_EXPORT int tav_serv_orvat_cpu_true(void) { return this_processor().orvat ? 1 : 0; }
TAV_EXPORT_ALIAS(tav_serv_orvat_cpu, tav_serv_orvat_cpu_true);

TAV_EXPORT unsigned long long __orvat_tav_features_init_x(void) { return this_processor().features; }

// Hooks for analysis tools around a slot's first resolution; nothing to do in this build.
TAV_EXPORT void tav_serv_inspector_suppress(void) {}
TAV_EXPORT void tav_serv_inspector_unsuppress(void) {}

TAV_EXPORT void tav_serv_exit(int status) { std::exit(status); }
