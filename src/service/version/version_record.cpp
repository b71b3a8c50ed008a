// The version record, the processor texts it carries and the blank-padded version string.
#include <tav/tav_cpu.h>
#include <tav/tav_version.h>

#include <algorithm>
#include <cstring>

#include "common/exports.hpp"
#include "service/cpu/cpu_state.hpp"
#include "service/version/processor_text.hpp"

namespace tav::service {
namespace {

constexpr const char generic_processors[] = "Orvat(R) Architecture processors";

// Indexed by CPU class; class 1 (compatible) deliberately claims no instruction set.
constexpr const char* class_texts[10] = {
    "Orvat(R) Streaming SIMD Extensions 2 (Orvat(R) SSE2) enabled processors",
    generic_processors,
    "Orvat(R) Supplemental Streaming SIMD Extensions 3 (Orvat(R) SSSE3) enabled processors",
    "Orvat(R) Streaming SIMD Extensions 4.2 (Orvat(R) SSE4.2) enabled processors",
    "Orvat(R) Advanced Vector Extensions (Orvat(R) AVX) enabled processors",
    "Orvat(R) Advanced Vector Extensions 2 (Orvat(R) AVX2) enabled processors",
    "Orvat(R) Advanced Vector Extensions 512 (Orvat(R) AVX-512) enabled many-core processors",
    "Orvat(R) Advanced Vector Extensions 512 (Orvat(R) AVX-512) enabled processors",
    "Orvat(R) Advanced Vector Extensions 512 (Orvat(R) AVX-512) with 4FMAPS and 4VNNIW "
    "instructions enabled many-core processors",
    "Orvat(R) Advanced Vector Extensions 512 (Orvat(R) AVX-512) with Vector Neural Network "
    "Instructions enabled processors",
};

constexpr const char version_string[] =
    "Orvat(R) Numerikon Library Version 2019.0.2 Product Build 20190118 for Orvat(R) 64 "
    "architecture applications";

}  // namespace

const char* processor_text(bool orvat, int cpu_class) {
  if (!orvat || cpu_class < 0 || cpu_class > 9) return generic_processors;
  return class_texts[cpu_class];
}

}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT void tav_serv_get_version(TAVVersion* version) {
  if (version == nullptr) return;
  version->MajorVersion = 2019;
  version->MinorVersion = 0;
  version->UpdateVersion = 2;
  version->ProductStatus = "Product";
  version->Build = "20190118";
  // Asking for the version must not start detection, which would freeze the reproducibility
  // mode before the caller has set it: until then the text names the hardware class.
  const int cls = cpu_type_detected() ? cpu_class()
                                      : ladder_type(this_processor(), current_enable_flags());
  version->Processor = processor_text(tav_serv_orvat_cpu() != 0, cls);
  version->Platform = "Orvat(R) 64 architecture";
}
TAV_EXPORT_ALIAS(TAV_Get_Version, tav_serv_get_version);

// Fortran character semantics: exactly `length` bytes, the text cut or padded with blanks, and
// never a terminator, not even when the text fills the buffer exactly.
TAV_EXPORT void tav_serv_get_version_string(char* buffer, int length) {
  if (buffer == nullptr || length <= 0) return;
  const size_t size = static_cast<size_t>(length);
  const size_t text_length = std::min(sizeof version_string - 1, size);
  std::memcpy(buffer, version_string, text_length);
  std::memset(buffer + text_length, ' ', size - text_length);
}
TAV_EXPORT_ALIAS(TAV_Get_Version_String, tav_serv_get_version_string);
// The buffer's length is the hidden character-length argument of the Fortran call.
TAV_EXPORT_ALIAS(TAV_GET_VERSION_STRING, tav_serv_get_version_string);
