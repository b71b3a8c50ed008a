// Vector arithmetic speed: vdAdd, vdMul, vdDiv at n = 10^7 against the copy bandwidth and at
// n = 1000 against a vectorised loop; vzMul, vzDiv at n = 10^6 against std::complex; 1 and 2
// threads, TAV forced to the avx2 and the def path in processes of their own.
//
//   vml_arith_bench [avx2] [def]     (both when none is named)
#include "support/vml_arith_cases.hpp"

int main(int argc, char** argv) { return tav::bench::vml_arith_bench_main(argc, argv); }
