// `tav bench gemm`: the matrix-product benchmark of bench/, against the peers this machine has.
#include "commands.hpp"
#include "support/gemm_cases.hpp"

namespace tav::tool {

int bench_gemm(int argc, char** argv) { return tav::bench::gemm_bench_main(argc, argv); }

}  // namespace tav::tool
