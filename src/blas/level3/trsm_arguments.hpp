// How the level-3 routines beside the matrix product read their arguments: character codes
// without regard to case, the transpose of real data, and the routine name for reports.
#pragma once

#include <complex>
#include <type_traits>

#include "common/scalar_traits.hpp"

namespace tav::blas {

// Upper-case form of a BLAS character argument (bit 0x20 cleared), so 'n' reads as 'N'.
inline char upper_char(char c) { return static_cast<char>(c & ~0x20); }

// 'N', 'T' or 'C' from a transpose argument; for real types 'C' is 'T'.
template <class T>
char decode_trans(char transa) {
  const char t = upper_char(transa);
  if (t == 'N') return 'N';
  return is_complex_v<T> && t == 'C' ? 'C' : 'T';
}

// A routine name for reports, the element type's letter before the operation: "DTRSM", "ZHERK".
template <class T>
struct routine_name {
  char text[8] = {};
  explicit routine_name(const char* operation) {
    if constexpr (std::is_same_v<T, float>)
      text[0] = 'S';
    else if constexpr (std::is_same_v<T, double>)
      text[0] = 'D';
    else if constexpr (std::is_same_v<T, std::complex<float>>)
      text[0] = 'C';
    else
      text[0] = 'Z';
    for (int i = 0; i < 6 && operation[i] != 0; ++i) text[i + 1] = operation[i];
  }
};

}  // namespace tav::blas
