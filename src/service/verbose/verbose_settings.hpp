// The verbose output file as the line printer sees it.
#pragma once

#include <cstddef>

namespace tav::service {

// Names of this length or more are refused.
inline constexpr size_t verbose_file_name_limit = 4096;

// Copies the output file name into `name` (empty: standard output), reading
// TAV_VERBOSE_OUTPUT_FILE first if neither it nor a call has set the name yet.
void copy_verbose_output_file(char (&name)[verbose_file_name_limit]);

}  // namespace tav::service
