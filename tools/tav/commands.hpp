// The subcommands of the tav tool.
#pragma once

namespace tav::tool {

// Prints the version, the CPU type and code path, features, threads, modes and memory status.
int info();

// Runs a matrix product and a dot product through the provider and checks them; 0 when both agree.
int demo();

}  // namespace tav::tool
