// Moves the leading rows of a least-squares right-hand-side block into the solution array.
#pragma once

#include <cstdint>

namespace tav::provider {

// x(i, j) = b(i, j) for i < rows_x, j < columns; b has leading dimension rows_b, x rows_x.
template <class T>
void copyBtoX(int rows_b, int rows_x, int columns, const T* b, T* x) {
  for (int j = 0; j < columns; ++j)
    for (int i = 0; i < rows_x; ++i)
      x[static_cast<int64_t>(j) * rows_x + i] = b[static_cast<int64_t>(j) * rows_b + i];
}

}  // namespace tav::provider
