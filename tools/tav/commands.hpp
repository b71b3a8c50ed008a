// The subcommands of the tav tool.
#pragma once

namespace tav::tool {

// Prints the version, the CPU type and code path, features, threads, modes and memory status.
int info();

}  // namespace tav::tool
