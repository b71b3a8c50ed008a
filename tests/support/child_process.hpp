// Runs a scenario of the test binary in a fresh child process, for behaviour that depends on
// settings the library reads once per process (environment, CPU detection, first calls).
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tav::test {

struct child_result {
  int exit_code = -1;  // exit status when the child exited normally, else -1
  int signal = 0;      // the signal that ended the child, else 0
  std::string out;     // everything the child wrote to its standard output
  std::string err;     // and to its standard error
};

using env_list = std::vector<std::pair<std::string, std::string>>;

// Runs scenario `name` of this executable with the parent's environment less every TAV_*,
// OMP_* and LANG variable, plus `env`. `args` reach the scenario through scenario_args().
// A non-empty `working_directory` is the child's working directory, the parent's otherwise.
child_result run_child(const std::string& name, const env_list& env = {},
                       const std::vector<std::string>& args = {},
                       const std::string& working_directory = {});

void register_scenario(const char* name, void (*body)());
const std::vector<std::string>& scenario_args();

// Runs the scenario named on the command line, if any; returns true when it did.
bool run_scenario_from_command_line(int argc, char** argv);

}  // namespace tav::test

// Defines a scenario: a function run only in a child process started by run_child(#name).
#define TAV_SCENARIO(name)                                                          \
  static void name();                                                               \
  [[maybe_unused]] static const bool name##_registered =                            \
      (::tav::test::register_scenario(#name, name), true);                          \
  static void name()
