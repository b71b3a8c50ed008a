// Reads a thread's first vector-math mode from TAV_VML_MODE: "VML_<name>" tokens joined by ",".
#include "vml/mode/mode_environment.hpp"

#include <tav/tav_vml.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

namespace tav::vml {
namespace {

constexpr char mode_variable[] = "TAV_VML_MODE";
constexpr unsigned default_mode = VML_HA | VML_ERRMODE_DEFAULT;

// The value is copied into a buffer of this size: characters past the first 255 are not seen.
constexpr std::size_t value_buffer_size = 256;

struct mode_token {
  std::string_view name;  // the text after "VML_"
  unsigned value;
};

// "DOUBLE_CONSISTEN" is one letter short of the constant's name and is matched over its own 16
// characters, so "VML_DOUBLE_CONSISTENT" is not a token and makes the whole value ignored.
constexpr mode_token tokens[] = {
    {"LA", VML_LA},
    {"HA", VML_HA},
    {"EP", VML_EP},
    {"DEFAULT_PRECISION", VML_DEFAULT_PRECISION},
    {"FLOAT_CONSISTENT", VML_FLOAT_CONSISTENT},
    {"DOUBLE_CONSISTEN", VML_DOUBLE_CONSISTENT},
    {"RESTORE", VML_RESTORE},
    {"ERRMODE_IGNORE", VML_ERRMODE_IGNORE},
    {"ERRMODE_ERRNO", VML_ERRMODE_ERRNO},
    {"ERRMODE_STDERR", VML_ERRMODE_STDERR},
    {"ERRMODE_EXCEPT", VML_ERRMODE_EXCEPT},
    {"ERRMODE_CALLBACK", VML_ERRMODE_CALLBACK},
    {"ERRMODE_NOERR", VML_ERRMODE_NOERR},
    {"ERRMODE_DEFAULT", VML_ERRMODE_DEFAULT},
    {"TRAP_INVALID", VML_TRAP_INVALID},
    {"TRAP_DIVBYZERO", VML_TRAP_DIVBYZERO},
    {"TRAP_OVERFLOW", VML_TRAP_OVERFLOW},
    {"TRAP_UNDERFLOW", VML_TRAP_UNDERFLOW},
};

// The name that `text` starts with over the name's length and that ends at "," or at the end
// of the text; null when there is none. Matching is case-sensitive.
const mode_token* find_token(const char* text) {
  for (const mode_token& token : tokens) {
    if (std::strncmp(text, token.name.data(), token.name.size()) != 0) continue;
    const char next = text[token.name.size()];
    if (next == ',' || next == '\0') return &token;
  }
  return nullptr;
}

// The OR of the values of the tokens in `text`; nothing as soon as one token fails. Every token
// must start with "VML_", including the one after a final ",", so a trailing comma, an empty
// value and a separator other than "," all fail.
std::optional<unsigned> parse_tokens(const char* text) {
  unsigned mode = 0;
  const char* cursor = text;
  for (;;) {
    if (std::strncmp(cursor, "VML_", 4) != 0) return std::nullopt;
    cursor += 4;
    const mode_token* token = find_token(cursor);
    if (token == nullptr) return std::nullopt;
    mode |= token->value;
    cursor += token->name.size();
    if (*cursor == '\0') return mode;
    ++cursor;  // the "," that find_token() saw
  }
}

}  // namespace

unsigned mode_from_environment() {
  const char* value = std::getenv(mode_variable);
  if (value == nullptr) return default_mode;
  char buffer[value_buffer_size];
  std::strncpy(buffer, value, sizeof buffer - 1);
  buffer[sizeof buffer - 1] = '\0';

  const std::optional<unsigned> parsed = parse_tokens(buffer);
  if (!parsed) return default_mode;
  unsigned mode = *parsed;
  if ((mode & VML_ACCURACY_MASK) == 0) mode |= VML_HA;
  if ((mode & VML_ERRMODE_MASK) == 0) mode |= VML_ERRMODE_DEFAULT;
  return mode;
}

}  // namespace tav::vml
