// The subcommands of the tav tool.
#pragma once

namespace tav::tool {

// Prints the version, the CPU type and code path, features, threads, modes and memory status.
int info();

// Runs a matrix product, a dot product and each vector function through the provider and checks
// them; 0 when all agree.
int demo();

// `tav bench gemm [avx2] [def] [--sections=...] [--sizes=...] [--threads=...] [--routines=...]
// [--csv=FILE]`: the matrix-product benchmark against the peers; argv[0] is "gemm".
int bench_gemm(int argc, char** argv);

// `tav bench vml [avx2] [def]`: the vector-arithmetic speed table; argv[0] is "vml".
int bench_vml(int argc, char** argv);

}  // namespace tav::tool
