// The matrix-product benchmark cases, shared by bench/blas_gemm_bench, bench/blas_syrk_bench and
// `tav bench gemm`: large ?GEMM, small DGEMM through cblas_dgemm, skinny shapes, DTRSM and DSYRK,
// TAV and the peers interleaved in one process, printed as Markdown tables and optionally
// appended to a CSV file for plotting.
#pragma once

#include "support/peer_libraries.hpp"

namespace tav::bench {

// The whole benchmark: options and path tags from the command line (avx2 and def when none is
// named), each path in a child process. Returns main's exit status.
//   [avx2] [def] [--sections=peak,large,small,skinny,trsm,syrk] [--sizes=1024,2048] [--threads=1,2]
//   [--routines=DGEMM,SGEMM,ZGEMM,CGEMM] [--csv=FILE]
// The syrk section needs TAV's internal SYRK, which only a program linked against the static
// archive has: it passes `tav_syrk` and its own default sections.
int gemm_bench_main(int argc, char** argv, const char* default_sections = nullptr,
                    dsyrk_routine* tav_syrk = nullptr);

}  // namespace tav::bench
