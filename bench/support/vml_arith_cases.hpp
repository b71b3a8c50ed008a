// The vector-arithmetic benchmark cases, shared by bench/vml_arith_bench and `tav bench vml`:
// vdAdd, vdMul and vdDiv on long arrays against the machine's copy bandwidth and on in-cache
// arrays against a compiler-vectorised loop, and vzMul, vzDiv against a std::complex loop.
#pragma once

namespace tav::bench {

// The whole benchmark: path tags from the command line (avx2 and def when none is named), each
// path in a child process. Returns main's exit status.
int vml_arith_bench_main(int argc, char** argv);

}  // namespace tav::bench
