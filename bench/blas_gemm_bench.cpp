// Matrix products against OpenBLAS and BLIS in one process, interleaved: ?GEMM at n = 1024 to
// 4096, small DGEMM through cblas_dgemm (calls per second), skinny shapes and DTRSM, on 1 and 2
// threads, with the FMA-loop peak beside them. TAV runs forced to the avx2 path (OpenBLAS on its
// own choice, the Haswell-class kernels on Zen 3) and to the def path (OpenBLAS on an SSE-class
// core), each in a process of its own. `tav bench gemm` runs the same.
//
//   blas_gemm_bench [avx2] [def] [--sections=peak,large,small,skinny,trsm] [--sizes=1024,2048]
//                   [--threads=1,2] [--routines=DGEMM,SGEMM,ZGEMM,CGEMM] [--csv=FILE]
#include "support/gemm_cases.hpp"

int main(int argc, char** argv) { return tav::bench::gemm_bench_main(argc, argv); }
