// The numbered messages: the built-in table, its replacement by a translated catalog file, and
// the printer tav_serv_print with the text fetcher tav_serv_get_msg.
#include <nl_types.h>
#include <tav/tav_error.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/exports.hpp"

namespace tav::service {
namespace {

// Message classes: 1 informational line, 2 warning or status text, 4 error. The printer ignores
// the class; it is kept so that every row matches its translated twin in a catalog file.
struct message_row {
  std::int32_t number;
  std::int32_t message_class;
  const char* text;
};

// Only the rows this library prints; the numbers are those of the full catalog (0 to 1415), so a
// catalog file written for it translates the same messages. Texts carry no final newline.
constexpr message_row message_table[] = {
    {0, 1, "\n"},
    {1, 4, "Orvat TAV FATAL ERROR: Cannot load %s."},
    {2, 4, "Orvat TAV FATAL ERROR: Cannot load %s or %s."},
    {3, 4, "Orvat TAV FATAL ERROR: Error on loading function %s."},
    {4, 2, "Orvat TAV WARNING: CPU type %d is not suitable for this processor."},
    {6, 4, "Orvat TAV ERROR: Parameter %d was incorrect on entry to %s."},
    {7, 4, "Orvat TAV INTERNAL ERROR: Condition %d detected in function %s."},
    {8, 4, "Orvat TAV INTERNAL ERROR: Insufficient workspace available in function %s."},
    {9, 4, "Orvat TAV ERROR: Incompatible optional parameters on entry to %s."},
    {1089, 4, "Orvat TAV INTERNAL ERROR: Not enough work memory in function %s"},
    {1207, 4, "Conditional numerical reproducibility mode is turned ON"},
    {1208, 4, "Conditional numerical reproducibility mode is turned OFF"},
    {1209, 4,
     "Orvat TAV WARNING: incorrect conditional numerical reproducibility mode, TAV_CBWR_AUTO is "
     "set"},
    {1210, 4,
     "Orvat TAV FATAL ERROR: This system does not meet the minimum requirements for use of the "
     "Orvat(R) Numerikon Library."},
    {1211, 4,
     "The processor must support the Orvat(R) Streaming SIMD 2 Extensions (Orvat(R) SSE2) "
     "instructions."},
    {1212, 4, "Orvat TAV INTERNAL ERROR: Issue accessing coprocessor %s."},
    {1213, 4, "Orvat TAV ERROR: CPU %d is not supported."},
    {1410, 2, "Error (VML_STATUS_BADSIZE) in %s: array size %d is not positive."},
    {1411, 2, "Error (VML_STATUS_BADMEM) in %s: NULL pointer is passed."},
    {1412, 2, "Error (VML_STATUS_ERRDOM) in %s: argument is out of domain."},
    {1413, 2, "Error (VML_STATUS_SING) in %s: argument caused singularity."},
    {1414, 2, "Error (VML_STATUS_OVERFLOW) in %s: argument caused overflow."},
    {1415, 2, "Error (VML_STATUS_UNDERFLOW) in %s: argument caused underflow."},
};

// "" for a row this library does not carry.
const char* internal_text(int number) {
  for (const message_row& row : message_table)
    if (row.number == number) return row.text;
  return "";
}

constexpr const char* catalog_name = "tav_msg.cat";

// catopen reports failure with the handle (nl_catd)-1.
bool opened(nl_catd handle) { return handle != reinterpret_cast<nl_catd>(-1); }

// Set until the first lookup has tried the catalog; neither flag is ever set again and the
// catalog is never closed, so a handle once published stays valid for the whole process.
std::atomic<bool> first_message{true};
std::atomic<bool> use_internal_texts{true};
nl_catd catalog = nullptr;

// catopen with flag 0 substitutes LANG for %L in NLSPATH. Catalogs are usually installed per
// language without the encoding, so a failed open is retried once with LANG cut at its first
// full stop ("de_DE.UTF-8" becomes "de_DE"); the shortened value stays in the environment.
void open_catalog() {
  nl_catd handle = catopen(catalog_name, 0);
  if (!opened(handle)) {
    const char* lang = std::getenv("LANG");
    if (lang != nullptr) {
      char shortened[64];
      std::strncpy(shortened, lang, sizeof shortened - 1);
      shortened[sizeof shortened - 1] = '\0';
      if (char* stop = std::strchr(shortened, '.')) {
        *stop = '\0';
        setenv("LANG", shortened, 1);
        handle = catopen(catalog_name, 0);
      }
    }
  }
  if (!opened(handle)) return;
  catalog = handle;
  use_internal_texts.store(false, std::memory_order_release);
}

// The printf format of message `number` (not 0): the catalog's text when the catalog opened on
// the first lookup, the built-in text otherwise.
const char* message_text(int number) {
  if (first_message.exchange(false, std::memory_order_acq_rel)) open_catalog();
  const char* text = internal_text(number);
  if (use_internal_texts.load(std::memory_order_acquire)) return text;
  // catgets returns the default for a message the catalog lacks.
  return catgets(catalog, 1, number, text);
}

constexpr int message_buffer_size = 512;

// tav_serv_get_msg hands out this buffer; the next formatting call overwrites it.
char get_msg_buffer[message_buffer_size];
// Message 0 (a lone newline in the table) reads as an empty text.
char empty_text[1] = "";

// Destination 1 is the error stream; the output stream stands in when there is none.
FILE* stream_for(int destination) {
  if (destination == 1 && stderr != nullptr) return stderr;
  return stdout;
}

}  // namespace
}  // namespace tav::service

// Each message is formatted in a buffer of its own call, so concurrent printers may interleave
// lines but never share a buffer; every message ends with exactly one newline, added here.
TAV_EXPORT int tav_serv_print(int destination, int number, int argument_count, ...) {
  using namespace tav::service;
  FILE* stream = stream_for(destination);
  if (number != 0) {
    char buffer[message_buffer_size];
    buffer[0] = '\0';
    std::va_list arguments;
    va_start(arguments, argument_count);
    int length = std::vsnprintf(buffer, sizeof buffer, message_text(number), arguments);
    va_end(arguments);
    // The text is still printed, cut at the buffer's end, after the report of its true length.
    if (length - 1 > message_buffer_size) {
      std::fprintf(stream, "%s", "\nTAV INTERNAL ERROR: message buffer overflow.");
      std::fprintf(stream, "\n       Lenght: %d   Buffer size: %d\n", length, message_buffer_size);
      std::fflush(stream);
    }
    std::fprintf(stream, "%s", buffer);
    std::fflush(nullptr);
  }
  std::fprintf(stream, "%s", "\n");
  return std::fflush(nullptr);
}

TAV_EXPORT char* tav_serv_get_msg(int number, int argument_count, ...) {
  using namespace tav::service;
  if (number == 0) return empty_text;
  const char* text = message_text(number);
  if (argument_count < 1) return const_cast<char*>(text);
  std::va_list arguments;
  va_start(arguments, argument_count);
  std::vsnprintf(get_msg_buffer, sizeof get_msg_buffer, text, arguments);
  va_end(arguments);
  return get_msg_buffer;
}
