// The tav command-line tool: prints the library's configuration.
#include <cstdio>
#include <cstring>

#include "commands.hpp"

int main(int argc, char** argv) {
  const char* command = argc > 1 ? argv[1] : "info";
  if (std::strcmp(command, "info") == 0) return tav::tool::info();
  if (std::strcmp(command, "demo") == 0) return tav::tool::demo();
  if (std::strcmp(command, "bench") == 0 && argc > 2 && std::strcmp(argv[2], "gemm") == 0)
    return tav::tool::bench_gemm(argc - 2, argv + 2);
  if (std::strcmp(command, "bench") == 0 && argc > 2 && std::strcmp(argv[2], "vml") == 0)
    return tav::tool::bench_vml(argc - 2, argv + 2);
  std::fprintf(stderr, "usage: tav [info|demo|bench gemm|bench vml]\n");
  return 2;
}
