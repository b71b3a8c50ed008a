// The tav command-line tool: prints the library's configuration.
#include <cstdio>
#include <cstring>

#include "commands.hpp"

int main(int argc, char** argv) {
  const char* command = argc > 1 ? argv[1] : "info";
  if (std::strcmp(command, "info") == 0) return tav::tool::info();
  if (std::strcmp(command, "demo") == 0) return tav::tool::demo();
  std::fprintf(stderr, "usage: tav [info|demo]\n");
  return 2;
}
