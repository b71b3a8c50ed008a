// Conversion of pivot vectors between the caller's 0-based and LAPACK's 1-based numbering.
#pragma once

namespace tav::provider {

// Adds 1 to each of the first n entries; nothing when n <= 0.
inline void shift_ipiv_up(int n, int* ipiv) {
  for (int i = 0; i < n; ++i) ++ipiv[i];
}

// Subtracts 1 from each of the first n entries; nothing when n <= 0.
inline void shift_ipiv_down(int n, int* ipiv) {
  for (int i = 0; i < n; ++i) --ipiv[i];
}

}  // namespace tav::provider
