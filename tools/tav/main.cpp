// The tav command-line tool: without a command it prints the library's configuration and then
// demonstrates each subsystem with a checked call.
#include <cstdio>
#include <cstring>

#include "commands.hpp"

int main(int argc, char** argv) {
  if (argc == 1) {
    const int status = tav::tool::info();
    if (status != 0) return status;
    std::printf("\n");
    return tav::tool::demo();
  }
  const char* command = argv[1];
  if (std::strcmp(command, "info") == 0) return tav::tool::info();
  if (std::strcmp(command, "demo") == 0) return tav::tool::demo();
  if (std::strcmp(command, "bench") == 0 && argc > 2 && std::strcmp(argv[2], "gemm") == 0)
    return tav::tool::bench_gemm(argc - 2, argv + 2);
  if (std::strcmp(command, "bench") == 0 && argc > 2 && std::strcmp(argv[2], "vml") == 0)
    return tav::tool::bench_vml(argc - 2, argv + 2);
  std::fprintf(stderr, "usage: tav [info|demo|bench gemm|bench vml] (none: info, then demo)\n");
  return 2;
}
