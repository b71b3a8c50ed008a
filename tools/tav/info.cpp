// `tav info`: what the library found on this machine and the settings in force.
#include <tav/tav.h>

#include <cstdio>
#include <string>

#include "commands.hpp"
#include "service/cpu/classify.hpp"
#include "service/cpu/features.hpp"
#include "service/dispatch/path_rule.hpp"

namespace tav::tool {
namespace {

const char* branch_name(int branch) {
  static constexpr const char* names[] = {"unset", "OFF", "AUTO", "COMPATIBLE", "SSE2", "?",
                                          "SSSE3", "SSE4_1", "SSE4_2", "AVX", "AVX2", "AVX512_TP",
                                          "AVX512", "AVX512_TP_E1", "AVX512_E1"};
  return branch >= 0 && branch <= 14 ? names[branch] : "?";
}

std::string feature_groups(unsigned long long word) {
  using namespace service;
  static constexpr struct {
    uint64_t mask;
    const char* name;
  } groups[] = {{feature_mask::sse2, "SSE2"},
                {feature_mask::ssse3, "SSSE3"},
                {feature::sse4_1, "SSE4.1"},
                {feature_mask::sse4_2, "SSE4.2"},
                {feature_mask::avx, "AVX"},
                {feature_mask::avx2, "AVX2/FMA"},
                {feature_mask::avx512_tp, "AVX-512(many-core)"},
                {feature_mask::avx512_tp_e1, "4FMAPS/4VNNIW"},
                {feature_mask::avx512, "AVX-512"}};
  std::string text;
  for (const auto& g : groups)
    if (service::has(word, g.mask)) text += (text.empty() ? "" : " ") + std::string(g.name);
  return text.empty() ? "none" : text;
}

}  // namespace

int info() {
  char version[160];
  tav_serv_get_version_string(version, sizeof version - 1);
  version[sizeof version - 1] = '\0';
  std::string text = version;
  text.erase(text.find_last_not_of(' ') + 1);
  std::printf("%s\n\n", text.c_str());

  const int type = tav_serv_cpu_detect();
  const int branch = tav_serv_cbwr_get(TAV_CBWR_BRANCH);
  const unsigned long long word = __orvat_tav_features_init_x();
  const service::processor cpu{tav_serv_orvat_cpu_true() != 0, word, false};
  const int hardware_type = service::stored_type(service::ladder_type(cpu, {}));
  std::printf("Processor           %s processor, features: %s\n",
              cpu.orvat ? "Orvat" : "non-Orvat", feature_groups(word).c_str());
  std::printf("CPU type            %d, code path %s\n", type,
              service::path_tag(service::path_for(type, branch)));
  std::printf("Hardware alone      CPU type %d, code path %s\n", hardware_type,
              service::path_tag(service::path_for(hardware_type, branch)));
  if (!cpu.orvat) {
    // The vendor rule keeps other processors on def; say which path the override could pick.
    const int capable = service::stored_type(service::ladder_type({true, word, false}, {}));
    std::printf("Capable of          code path %s (TAV_DEBUG_CPU_TYPE=%d selects it)\n",
                service::path_tag(service::path_for(capable, 1)), capable);
  }
  std::printf("Reproducibility     %s (branch %d, auto target %d)\n", branch_name(branch), branch,
              tav_serv_cbwr_get_auto_branch());
  std::printf("Threads             all %d, BLAS %d, FFT %d, VML %d; dynamic %d\n",
              tav_serv_domain_get_max_threads(TAV_DOMAIN_ALL),
              tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS),
              tav_serv_domain_get_max_threads(TAV_DOMAIN_FFT),
              tav_serv_domain_get_max_threads(TAV_DOMAIN_VML), tav_serv_get_dynamic());
  std::printf("Verbose             %s\n", tav_serv_verbose_mode() == 1 ? "on" : "off");
  int buffers = 0;
  const long long bytes = tav_serv_mem_stat(&buffers);
  const long long fast_limit = tav_serv_check_fast_memory_size();
  std::printf("Memory manager      buffer cache %s, %lld bytes in %d buffers, "
              "high-bandwidth limit %lld\n",
              tav_serv_get_fast_mm_status() ? "off" : "on", bytes, buffers, fast_limit);
  std::printf("Vector-math mode    0x%X\n", vmlGetMode());
  return 0;
}

}  // namespace tav::tool
