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

// The one of four values that belongs to C element type C, for per-type tables of entries.
template <class C, class S, class D, class Cc, class Z>
constexpr auto by_c_type(S s, D d, Cc c, Z z) {
  if constexpr (std::is_same_v<C, float>) return s;
  else if constexpr (std::is_same_v<C, double>) return d;
  else if constexpr (std::is_same_v<C, tav_complex8>) return c;
  else return z;
}

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

// Element (i, j) of op(X) for column-major X; trans 'N', 'T' or 'C'.
template <class C>
std_t<C> op_at(char trans, const C* x, int ld, int i, int j) {
  if (trans == 'N') return to_std(x[i + j * ld]);
  std_t<C> v = to_std(x[j + i * ld]);
  if constexpr (!is_real_v<C>) {
    if (trans == 'C') v = std::conj(v);
  }
  return v;
}

// C := alpha·op(A)·op(B) + beta·C, column-major.
template <class C>
void reference_gemm(char transa, char transb, int m, int n, int k, C alpha, const C* a, int lda,
                    const C* b, int ldb, C beta, C* c, int ldc) {
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < m; ++i) {
      std_t<C> sum = 0;
      for (int l = 0; l < k; ++l) sum += op_at(transa, a, lda, i, l) * op_at(transb, b, ldb, l, j);
      c[i + j * ldc] = from_std<C>(to_std(alpha) * sum + to_std(beta) * to_std(c[i + j * ldc]));
    }
}

}  // namespace tav::test
