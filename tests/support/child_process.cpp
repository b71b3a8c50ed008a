// Child-process runner: re-executes the test binary with a scenario name and captures its output.
#include "child_process.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>

extern char** environ;

namespace tav::test {
namespace {

std::map<std::string, void (*)()>& scenarios() {
  static std::map<std::string, void (*)()> table;
  return table;
}

std::vector<std::string>& current_args() {
  static std::vector<std::string> args;
  return args;
}

constexpr const char* kFlag = "--tav-child=";

bool inherited(const char* entry) {
  return std::strncmp(entry, "TAV_", 4) != 0 && std::strncmp(entry, "OMP_", 4) != 0 &&
         std::strncmp(entry, "LANG=", 5) != 0;
}

std::string read_all(int fd) {
  std::string text;
  lseek(fd, 0, SEEK_SET);
  char buffer[4096];
  ssize_t got;
  while ((got = read(fd, buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<size_t>(got));
  close(fd);
  return text;
}

int temporary_file() {
  char name[] = "/tmp/tav_child_XXXXXX";
  int fd = mkstemp(name);
  if (fd < 0) throw std::runtime_error("mkstemp failed");
  unlink(name);
  return fd;
}

}  // namespace

void register_scenario(const char* name, void (*body)()) { scenarios()[name] = body; }

const std::vector<std::string>& scenario_args() { return current_args(); }

child_result run_child(const std::string& name, const env_list& env,
                       const std::vector<std::string>& args, const std::string& working_directory) {
  std::vector<std::string> env_text;
  for (char** e = environ; *e; ++e)
    if (inherited(*e)) env_text.emplace_back(*e);
  for (const auto& [key, value] : env) env_text.push_back(key + "=" + value);
  std::vector<char*> envp;
  for (auto& s : env_text) envp.push_back(s.data());
  envp.push_back(nullptr);

  std::vector<std::string> arg_text{"/proc/self/exe", std::string(kFlag) + name};
  arg_text.insert(arg_text.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& s : arg_text) argv.push_back(s.data());
  argv.push_back(nullptr);

  int out = temporary_file();
  int err = temporary_file();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
  if (!working_directory.empty())
    posix_spawn_file_actions_addchdir_np(&actions, working_directory.c_str());
  std::fflush(nullptr);
  pid_t pid;
  int rc = posix_spawn(&pid, "/proc/self/exe", &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) throw std::runtime_error("posix_spawn failed");
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
  }
  child_result result;
  if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
  result.out = read_all(out);
  result.err = read_all(err);
  return result;
}

bool run_scenario_from_command_line(int argc, char** argv) {
  if (argc < 2 || std::strncmp(argv[1], kFlag, std::strlen(kFlag)) != 0) return false;
  const char* name = argv[1] + std::strlen(kFlag);
  auto found = scenarios().find(name);
  if (found == scenarios().end()) {
    std::fprintf(stderr, "no scenario %s\n", name);
    std::exit(127);
  }
  current_args().assign(argv + 2, argv + argc);
  found->second();
  std::fflush(nullptr);
  return true;
}

}  // namespace tav::test
