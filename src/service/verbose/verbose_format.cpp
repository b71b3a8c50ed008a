// Formatting of verbose lines and of the banner, and the reading of the verbose switch's text.
#include "service/verbose/verbose_format.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace tav::service {
namespace {

const char* branch_name(int branch) {
  switch (branch) {
    case 1: return "OFF";
    case 2: return "AUTO";
    case 3: return "COMPATIBLE";
    case 4: return "SSE2";
    case 6: return "SSSE3";
    case 7: return "SSE4_1";
    case 8: return "SSE4_2";
    case 9: return "AVX";
    case 10: return "AVX2";
    case 11: return "AVX512_TP";
    case 12: return "AVX512";
    case 13: return "AVX512_TP_E1";
    default: return nullptr;  // AVX512_E1 (14) has never had a name here; it shows as "?e"
  }
}

void append_interface(verbose_text& out, int interface_kind) {
  switch (interface_kind) {
    case 0: return;
    case 1: out.append(" lp64"); return;
    case 2: out.append(" ilp64"); return;
    case -1: out.append(" cdecl"); return;
    case -2: out.append(" stdcall"); return;
    default: out.append(" iface%x", static_cast<unsigned>(interface_kind)); return;
  }
}

constexpr const char* domain_names[4] = {"BLAS", "FFT", "VML", "PARDISO"};

}  // namespace

void verbose_text::append(const char* format, ...) {
  if (size + 1 >= capacity) return;
  va_list args;
  va_start(args, format);
  int written = std::vsnprintf(data + size, capacity - size, format, args);
  va_end(args);
  // vsnprintf returns the length it wanted; a cut text keeps room for the terminator.
  if (written > 0) size += std::min(static_cast<size_t>(written), capacity - size - 1);
}

void append_elapsed(verbose_text& out, double seconds) {
  if (!(seconds > 0)) out.append("%.2fs", 0.0);
  else if (seconds > 1) out.append("%.2fs", seconds);
  else if (seconds > 1e-3) out.append("%.2fms", seconds * 1e3);
  else if (seconds > 1e-6) out.append("%.2fus", seconds * 1e6);
  else out.append("%.0fns", seconds * 1e9);
}

void append_cnr(verbose_text& out, int branch) {
  const char* name = branch_name(branch);
  if (name != nullptr) out.append(" CNR:%s", name);
  else out.append(" CNR:?%x", static_cast<unsigned>(branch));
}

verbose_text verbose_suffix(double seconds, int branch, const verbose_line_settings& settings) {
  verbose_text out;
  append_elapsed(out, seconds);
  append_cnr(out, branch);
  out.append(" Dyn:%d FastMM:%d TID:%-2d NThr:%d", settings.dynamic, settings.fast_mm,
             settings.thread_number, settings.max_threads);
  for (int d = 0; d < 4; ++d)
    if (settings.domain_threads[d] != settings.max_threads)
      out.append(",%s:%d", domain_names[d], settings.domain_threads[d]);
  return out;
}

verbose_text verbose_banner(const TAVVersion& version, double ghz, int interface_kind) {
  verbose_text out;
  out.append("TAV_VERBOSE Orvat(R) TAV %d.%d", version.MajorVersion, version.MinorVersion);
  if (version.UpdateVersion > 0) out.append(" Update %d", version.UpdateVersion);
  out.append(" %s build %s for %s %s", version.ProductStatus, version.Build, version.Platform,
             version.Processor);
  out.append(", %s", "Lnx");
  out.append(" %.2fGHz", ghz);
  append_interface(out, interface_kind);
  out.append(" orvat_thread");
  return out;
}

int verbose_switch_from_text(const char* value) {
  if (value == nullptr) return 0;
  char* end = nullptr;
  long parsed = std::strtol(value, &end, 0);
  if (end == value || *end != '\0') return 0;
  return parsed == 1 ? 1 : 0;
}

}  // namespace tav::service
