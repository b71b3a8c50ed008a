// The machine's floating-point peak, measured: a loop of independent fused multiply-adds that
// keeps both FMA pipes busy, so the GEMM figures can be read as a share of what the core can do.
#pragma once

namespace tav::bench {

// Double-precision GFLOP/s of 256-bit FMAs (2 flops per lane) on `threads` threads at once,
// the median of a few timed bursts; 0 when the processor lacks AVX2 and FMA.
double fma_peak_gflops(int threads);

}  // namespace tav::bench
