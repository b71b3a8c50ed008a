// Checks shared by the level-1 tests: one case of axpy, dot or scal on random guarded vectors
// against the long-double reference, for any callable that performs the operation (a per-path
// kernel or a driver), each returning an empty string or what went wrong.
#pragma once

#include <cstring>
#include <random>
#include <sstream>
#include <string>

#include "guarded_buffer.hpp"
#include "reference.hpp"

namespace tav::test {

// Random values at the vector's elements, the sentinel everywhere else.
template <class T>
guarded_vector<T> random_vector(int64_t n, int64_t inc, std::mt19937_64& rng) {
  guarded_vector<T> v(n, inc);
  for (int64_t i = 0; i < n; ++i) v[i] = random_value<T>(rng);
  return v;
}

template <class T>
bool same_bits(const guarded_vector<T>& a, const guarded_vector<T>& b) {
  for (int64_t i = 0; i < a.size(); ++i)
    if (std::memcmp(&a[i], &b[i], sizeof(T)) != 0) return false;
  return true;
}

inline std::string failure(const char* what, int64_t n, int64_t incx, int64_t incy,
                           const std::string& detail) {
  std::ostringstream text;
  text << what << " n=" << n << " incx=" << incx << " incy=" << incy << ": " << detail;
  return text.str();
}

// Elementwise results: within `units` roundoffs of the magnitude bound, element by element;
// a zero increment makes one element take n updates, so its bound grows with n.
template <class T, class W>
std::string compare_elements(const char* what, int64_t n, int64_t incx, int64_t incy,
                             guarded_vector<T>& got, const ref_vector<W>& want,
                             const ref_vector<long double>& bound, long double units) {
  for (int64_t i = 0; i < n; ++i) {
    if (!close(got[i], want[i], bound[i], units)) {
      std::ostringstream detail;
      detail << "element " << i << " is " << got[i] << ", want " << want[i];
      return failure(what, n, incx, incy, detail.str());
    }
  }
  if (!got.intact()) return failure(what, n, incx, incy, "wrote outside its elements");
  return {};
}

// axpy(n, alpha, x, incx, y, incy) with y := alpha·x + y.
template <class T, class Axpy>
std::string check_axpy(int64_t n, int64_t incx, int64_t incy, std::mt19937_64& rng, Axpy axpy) {
  guarded_vector<T> x = random_vector<T>(n, incx, rng), y = random_vector<T>(n, incy, rng);
  const guarded_vector<T> x0 = x;
  const T alpha = random_value<T>(rng);
  auto want = widened(n, y.data(), incy);
  auto bound = magnitudes(want);
  ref_axpy(widen(alpha), widened(n, x.data(), incx), want);
  ref_axpy(magnitude(widen(alpha)), magnitudes(widened(n, x.data(), incx)), bound);
  axpy(n, alpha, x.data(), incx, y.data(), incy);
  if (!same_bits(x, x0) || !x.intact()) return failure("axpy", n, incx, incy, "x changed");
  return compare_elements("axpy", n, incx, incy, y, want, bound, incy == 0 ? 4.0L * n : 4.0L);
}

// dot(n, x, incx, y, incy) returning sum x_i·y_i, or sum conj(x_i)·y_i.
template <class T, class Dot>
std::string check_dot(int64_t n, int64_t incx, int64_t incy, bool conjugate,
                      std::mt19937_64& rng, Dot dot) {
  guarded_vector<T> x = random_vector<T>(n, incx, rng), y = random_vector<T>(n, incy, rng);
  const auto wx = widened(n, x.data(), incx), wy = widened(n, y.data(), incy);
  const T got = dot(n, x.data(), incx, y.data(), incy);
  const wide_t<T> want = ref_dot(wx, wy, conjugate);
  const long double scale = ref_dot(magnitudes(wx), magnitudes(wy), false);
  if (!close(got, want, scale, 2.0L * n + 4)) {
    std::ostringstream detail;
    detail << (conjugate ? "dotc " : "dot ") << got << ", want " << want;
    return failure("dot", n, incx, incy, detail.str());
  }
  if (!x.intact() || !y.intact()) return failure("dot", n, incx, incy, "guard changed");
  return {};
}

// scal(n, alpha, x, inc) with x := alpha·x, alpha of type A (T, or the real type on complex x).
template <class T, class A, class Scal>
std::string check_scal(int64_t n, int64_t inc, std::mt19937_64& rng, Scal scal) {
  guarded_vector<T> x = random_vector<T>(n, inc, rng);
  // |alpha| = 1.001 keeps alpha^n (a zero increment scales one element n times) in range.
  A alpha = random_value<A>(rng);
  alpha = alpha / static_cast<real_of<T>>(std::abs(alpha)) * real_of<T>(1.001);
  auto want = widened(n, x.data(), inc);
  auto bound = magnitudes(want);
  ref_scal(widen(alpha), want);
  ref_scal(magnitude(widen(alpha)), bound);
  scal(n, alpha, x.data(), inc);
  return compare_elements("scal", n, inc, 0, x, want, bound, inc == 0 ? 4.0L * n : 4.0L);
}

}  // namespace tav::test
