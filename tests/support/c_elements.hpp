// The C element types of the public interface (float, double, tav_complex8, tav_complex16) beside
// their std:: forms, with exact test data and the comparisons the interface tests make.
#pragma once

#include <tav/tav_types.h>

#include <complex>
#include <cstring>
#include <type_traits>
#include <vector>

namespace tav::test {

template <class C>
inline constexpr bool is_real_v = std::is_floating_point_v<C>;

// The std:: form of a C element type, for arithmetic in the references.
template <class C>
using std_t = std::conditional_t<
    is_real_v<C>, C,
    std::complex<std::conditional_t<std::is_same_v<C, tav_complex8>, float, double>>>;

template <class C>
C make(double re, double im = 0) {
  if constexpr (is_real_v<C>) return static_cast<C>(re);
  else return C{static_cast<decltype(C::real)>(re), static_cast<decltype(C::imag)>(im)};
}

template <class C>
std_t<C> to_std(const C& x) {
  if constexpr (is_real_v<C>) return x;
  else return std_t<C>(x.real, x.imag);
}

template <class C>
C from_std(const std_t<C>& x) {
  if constexpr (is_real_v<C>) return x;
  else return make<C>(x.real(), x.imag());
}

// For data that must not change at all.
template <class C>
bool same_bits(const std::vector<C>& x, const std::vector<C>& y) {
  return x.size() == y.size() && std::memcmp(x.data(), y.data(), x.size() * sizeof(C)) == 0;
}

// For computed results, where the sign of a zero depends on the order of operations.
template <class C>
bool same_values(const std::vector<C>& x, const std::vector<C>& y) {
  if (x.size() != y.size()) return false;
  for (size_t i = 0; i < x.size(); ++i)
    if (to_std(x[i]) != to_std(y[i])) return false;
  return true;
}

// n small integers from a fixed sequence, with an imaginary part for the complex types: every
// product and sum of a few of them is exact, so results compare for equality.
template <class C>
std::vector<C> small_integers(size_t n, int seed) {
  std::vector<C> v(n);
  for (size_t i = 0; i < n; ++i) {
    const int r = static_cast<int>((i * 7 + static_cast<size_t>(seed) * 13) % 9) - 4;
    const int s = static_cast<int>((i * 5 + static_cast<size_t>(seed) * 3) % 7) - 3;
    v[i] = make<C>(r, s);
  }
  return v;
}

}  // namespace tav::test
