// Parsing of the threading variables: digit-only numbers, the dynamic word and the domain list.
#include "service/threads/env_parsing.hpp"

#include <climits>

namespace tav::service {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Blanks, commas, semicolons, colons and both quotes end an item of the domain list.
bool is_list_separator(char c) {
  return c == ' ' || c == ',' || c == ';' || c == ':' || c == '"' || c == '\'';
}

// The item names, at the index of their domain number.
constexpr std::string_view domain_names[domain_count] = {
    "TAV_DOMAIN_ALL", "TAV_DOMAIN_BLAS", "TAV_DOMAIN_FFT", "TAV_DOMAIN_VML", "TAV_DOMAIN_PARDISO"};

int domain_of(std::string_view name) {
  for (int domain = 0; domain < domain_count; ++domain)
    if (domain_names[domain] == name) return domain;
  return unset;
}

// The length of the run at the start of `text` whose characters satisfy `keep`.
template <typename Predicate>
std::size_t run_length(std::string_view text, Predicate keep) {
  std::size_t length = 0;
  while (length < text.size() && keep(text[length])) ++length;
  return length;
}

}  // namespace

std::string_view bounded_value(const char* text) {
  if (text == nullptr) return {};
  std::string_view value(text);
  return value.substr(0, env_value_limit);
}

int digits_value(std::string_view text) {
  if (text.empty()) return digits_empty;
  long long value = 0;
  for (char c : text) {
    if (!is_digit(c)) return digits_invalid;
    value = value * 10 + (c - '0');
    if (value > INT_MAX) value = INT_MAX;  // keeps going only to check the remaining digits
  }
  return static_cast<int>(value);
}

int thread_count_value(std::string_view text) {
  int value = digits_value(text);
  if (value == digits_invalid) return 1;
  return value > 0 ? value : unset;
}

int stripes_value(std::string_view text) {
  int value = digits_value(text);
  return value >= 0 ? value : unset;
}

int processes_per_node_value(std::string_view text) {
  int value = digits_value(text);
  return value > 0 ? value : unset;
}

int mpi_thread_level_value(std::string_view text) {
  int value = digits_value(text);
  if (value == digits_empty) return unset;
  return value >= 0 && value < 4 ? value : 0;
}

int dynamic_value(std::string_view text) {
  auto blank_or_quote = [](char c) { return c == ' ' || c == '"' || c == '\''; };
  text.remove_prefix(run_length(text, blank_or_quote));
  auto word_char = [&](char c) { return !blank_or_quote(c); };
  std::string_view word = text.substr(0, run_length(text, word_char));
  return word == "FALSE" || word == "false" ? 0 : 1;
}

std::array<int, domain_count> domain_list_values(std::string_view text) {
  std::array<int, domain_count> values;
  values.fill(unset);
  auto separator = [](char c) { return is_list_separator(c); };
  auto name_char = [](char c) { return !is_list_separator(c) && c != '='; };
  auto name_gap = [](char c) { return c == ' ' || c == '='; };
  auto value_char = [](char c) { return !is_list_separator(c); };
  while (true) {
    text.remove_prefix(run_length(text, separator));
    if (text.empty()) return values;
    // An item: name, then blanks or "=", then a value that runs to the next separator.
    std::string_view name = text.substr(0, run_length(text, name_char));
    text.remove_prefix(name.size());
    text.remove_prefix(run_length(text, name_gap));
    std::string_view value_text = text.substr(0, run_length(text, value_char));
    text.remove_prefix(value_text.size());
    int domain = domain_of(name);
    if (domain == unset || values[domain] != unset) continue;
    int value = digits_value(value_text);
    if (value < 0) value = 1;  // an empty value or one with a non-digit counts as 1
    if (value >= 1) values[domain] = value;
  }
}

}  // namespace tav::service
