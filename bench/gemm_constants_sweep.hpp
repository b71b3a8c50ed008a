// The interface between the constants sweep (gemm_constants_sweep.cpp, built once) and its
// per-path half (gemm_constants_sweep_path.cpp, built once per path): one product on a chosen
// strategy of the serial engine, with blocking limits chosen by the caller.
#pragma once

#include <cstdint>

namespace tav::bench {

enum class sweep_strategy { small, driver };

// C += A·B or C += Aᵀ·B, double or double complex (interleaved pairs), alpha = 1. kb_long and
// nb replace the path's k block for long k and its column cap of B̃ (nb_real or nb_complex,
// by the element type) when positive.
struct sweep_product {
  bool complex;
  sweep_strategy strategy;
  bool a_trans;
  int64_t m, n, k;
  const double* a;
  const double* b;
  double* c;
  int64_t kb_long, nb;
};

using sweep_gemm_fn = void(const sweep_product* q);

// Row `path` of the serial-limit table, in the table's order: small_plain, small_trans, kb_long,
// nb_real, nb_complex, mb.
inline constexpr int serial_limit_count = 6;
using sweep_limits_fn = void(int path, int* row);

}  // namespace tav::bench
