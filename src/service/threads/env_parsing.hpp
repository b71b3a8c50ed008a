// The rules by which each threading variable's text becomes a setting, as pure functions.
#pragma once

#include <array>
#include <string_view>

#include "service/threads/settings_store.hpp"

namespace tav::service {

// Only the first 255 characters of a variable count.
constexpr std::size_t env_value_limit = 255;

// The text of a variable cut to env_value_limit; empty when `text` is null.
std::string_view bounded_value(const char* text);

// A text of decimal digits only: its value, saturated at INT_MAX. digits_empty for an empty
// text, digits_invalid when some character is not a digit.
constexpr int digits_empty = -2;
constexpr int digits_invalid = -1;
int digits_value(std::string_view text);

// Each function below returns the value a setting takes, or `unset` when the text leaves it alone.

// TAV_NUM_THREADS and OMP_NUM_THREADS: a positive number is taken, 0 and an empty text are not,
// any non-digit gives 1.
int thread_count_value(std::string_view text);

// TAV_NUM_STRIPES: a number of 0 or more; anything else is ignored.
int stripes_value(std::string_view text);

// TAV_MPI_PPN and the launchers' process counts: a positive number.
int processes_per_node_value(std::string_view text);

// The MPI thread level: 0 to 3 as given, 4 or more and any non-digit give 0.
int mpi_thread_level_value(std::string_view text);

// TAV_DYNAMIC: 0 when the first word is "FALSE" or "false", 1 otherwise (also when empty).
int dynamic_value(std::string_view text);

// TAV_DOMAIN_NUM_THREADS: per domain (index 0 is TAV_DOMAIN_ALL), the value of the first item
// for it that is 1 or more, else `unset`.
std::array<int, domain_count> domain_list_values(std::string_view text);

}  // namespace tav::service
