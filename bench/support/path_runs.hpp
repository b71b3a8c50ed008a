// Runs a benchmark once per TAV code path, each in a child process of its own, because the
// CPU-type override that selects the path is read once per process.
#pragma once

namespace tav::bench {

struct path_choice {
  const char* tag;
  const char* cpu_type;  // the CPU-type override that selects the path
};

// Takes path tags from the command line (default: avx2 and def), prints the section heading
// "## <title> (<date>, <host>)" and the preface, then runs `run` for each path in a child.
// Returns main's exit status: 2 for an unknown tag, 1 when a child failed.
int run_on_paths(int argc, char** argv, const char* title, const char* preface,
                 void (*run)(const path_choice&));

}  // namespace tav::bench
