// Per-path child runs and the section heading shared by the benchmarks.
#include "support/path_runs.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <iterator>
#include <vector>

namespace tav::bench {
namespace {

constexpr path_choice paths[] = {{"avx2", "5"}, {"def", "0"}};

}  // namespace

int run_on_paths(int argc, char** argv, const char* title, const char* preface,
                 void (*run)(const path_choice&)) {
  std::vector<path_choice> chosen;
  for (int a = 1; a < argc; ++a) {
    bool known = false;
    for (const path_choice& p : paths)
      if (std::strcmp(argv[a], p.tag) == 0) chosen.push_back(p), known = true;
    if (!known) {
      std::fprintf(stderr, "usage: %s [avx2] [def]\n", argv[0]);
      return 2;
    }
  }
  if (chosen.empty()) chosen.assign(std::begin(paths), std::end(paths));

  char host[256] = "?";
  gethostname(host, sizeof host);
  const std::time_t now = std::time(nullptr);
  char date[64];
  std::strftime(date, sizeof date, "%Y-%m-%d %H:%M %Z", std::localtime(&now));
  std::printf("## %s (%s, %s)\n\n%s", title, date, host, preface);
  std::fflush(stdout);

  int status = 0;
  for (const path_choice& path : chosen) {
    const pid_t child = fork();
    if (child == 0) {
      run(path);
      _exit(0);
    }
    int child_status = 0;
    if (child < 0 || waitpid(child, &child_status, 0) != child || !WIFEXITED(child_status) ||
        WEXITSTATUS(child_status) != 0)
      status = 1;
  }
  return status;
}

}  // namespace tav::bench
