// The matrix-product benchmark cases, shared by bench/blas_gemm_bench and `tav bench gemm`: large
// ?GEMM, small DGEMM through cblas_dgemm, skinny shapes and DTRSM, TAV and the peers interleaved
// in one process, printed as Markdown tables and optionally appended to a CSV file for plotting.
#pragma once

namespace tav::bench {

// The whole benchmark: options and path tags from the command line (avx2 and def when none is
// named), each path in a child process. Returns main's exit status.
//   [avx2] [def] [--sections=peak,large,small,skinny,trsm] [--sizes=1024,2048] [--threads=1,2]
//   [--routines=DGEMM,SGEMM,ZGEMM,CGEMM] [--csv=FILE]
int gemm_bench_main(int argc, char** argv);

}  // namespace tav::bench
