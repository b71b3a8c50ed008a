// `tav bench vml`: the vector-arithmetic benchmark of bench/ (vml_arith_bench).
#include "commands.hpp"
#include "support/vml_arith_cases.hpp"

namespace tav::tool {

int bench_vml(int argc, char** argv) { return tav::bench::vml_arith_bench_main(argc, argv); }

}  // namespace tav::tool
