// The library's own case-insensitive character comparison, as its argument checks use it.
#pragma once

namespace tav::blas::interface {

// Only 'A'..'Z' fold: a locale's idea of case would make the checks depend on the environment.
constexpr int folded(char c) {
  return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : static_cast<unsigned char>(c);
}

// Whether the first characters of `a` and `b` are equal after folding, false when either pointer
// is null. Inline: a small product's call runs a dozen of these comparisons.
inline bool same_letter(const char* a, const char* b) {
  return a != nullptr && b != nullptr && folded(*a) == folded(*b);
}

}  // namespace tav::blas::interface

extern "C" {

// 1 when same_letter(a, b), 0 otherwise. The lengths that Fortran callers pass are ignored: only
// the first character counts.
int tav_serv_lsame(const char* a, const char* b, int len_a, int len_b);
}
