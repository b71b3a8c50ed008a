// Long-double references for the level-1 BLAS, with what the tests around them share: random
// vectors, the element positions of the increment convention, error bounds in units of eps,
// and the thread split and fixed-order sum that the threaded drivers promise.
#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

namespace tav::test {

template <class T>
struct level1_types {
  using real = T;
  using wide = long double;
};
template <class R>
struct level1_types<std::complex<R>> {
  using real = R;
  using wide = std::complex<long double>;
};
template <class T>
using real_of = typename level1_types<T>::real;
template <class T>
using wide_of = typename level1_types<T>::wide;

template <class T>
constexpr bool complex_v = !std::is_same_v<T, real_of<T>>;

template <class T>
wide_of<T> widen(const T& v) {
  if constexpr (complex_v<T>) return {v.real(), v.imag()};
  else return v;
}

// |re| + |im| in long double: the scale of error bounds for complex sums and products.
template <class W>
long double magnitude(const W& v) {
  if constexpr (std::is_arithmetic_v<W>) return std::fabs(static_cast<long double>(v));
  else return std::fabs(static_cast<long double>(v.real())) + std::fabs(static_cast<long double>(v.imag()));
}

template <class W>
bool has_nan(const W& v) {
  if constexpr (std::is_arithmetic_v<W>) return std::isnan(v);
  else return std::isnan(v.real()) || std::isnan(v.imag());
}

template <class W>
W conj_if(const W& v, bool conjugate) {
  if constexpr (std::is_arithmetic_v<W>) return v;
  else return conjugate ? std::conj(v) : v;
}

// Memory position of element i of an n-vector with increment inc: i·inc, or (n - 1 - i)·|inc|
// for inc < 0.
inline int64_t position(int64_t n, int64_t inc, int64_t i) {
  return inc < 0 ? (n - 1 - i) * -inc : i * inc;
}

// A long-double image of a strided vector's storage: element i is mem[position(n, inc, i)], so
// that a zero increment aliases every element to one, as in the routine under test.
template <class W>
struct ref_vector {
  std::vector<W> mem;
  int64_t n, inc;
  W& operator[](int64_t i) { return mem[static_cast<size_t>(position(n, inc, i))]; }
  const W& operator[](int64_t i) const { return mem[static_cast<size_t>(position(n, inc, i))]; }
};

template <class T>
ref_vector<wide_of<T>> widened(int64_t n, const T* base, int64_t inc) {
  const int64_t span = n > 0 ? 1 + (n - 1) * (inc < 0 ? -inc : inc) : 0;
  ref_vector<wide_of<T>> v{std::vector<wide_of<T>>(static_cast<size_t>(span)), n, inc};
  for (int64_t k = 0; k < span; ++k) v.mem[static_cast<size_t>(k)] = widen(base[k]);
  return v;
}

// The same vector with every element replaced by its magnitude: running a reference on
// magnitudes gives the sum of |terms| that bounds the rounding error of the real computation.
template <class W>
ref_vector<long double> magnitudes(const ref_vector<W>& v) {
  ref_vector<long double> m{std::vector<long double>(v.mem.size()), v.n, v.inc};
  for (size_t k = 0; k < v.mem.size(); ++k) m.mem[k] = magnitude(v.mem[k]);
  return m;
}

// ---- the operations, element by element in index order --------------------------------------

template <class W, class A>
void ref_axpy(const A& alpha, const ref_vector<W>& x, ref_vector<W>& y) {
  for (int64_t i = 0; i < x.n; ++i) y[i] += alpha * x[i];
}

template <class W>
W ref_dot(const ref_vector<W>& x, const ref_vector<W>& y, bool conjugate) {
  W sum = 0;
  for (int64_t i = 0; i < x.n; ++i) sum += conj_if(x[i], conjugate) * y[i];
  return sum;
}

template <class W, class A>
void ref_scal(const A& alpha, ref_vector<W>& x) {
  for (int64_t i = 0; i < x.n; ++i) x[i] = alpha * x[i];
}

// Norms in long double, whose range holds the square of any double.
template <class W>
std::complex<long double> widen_any(const W& v) {
  if constexpr (std::is_arithmetic_v<W>) return {static_cast<long double>(v), 0};
  else return {v.real(), v.imag()};
}

template <class W>
long double ref_nrm2(const ref_vector<W>& x) {
  long double sum = 0;
  for (int64_t i = 0; i < x.n; ++i) sum += std::norm(std::complex<long double>(widen_any(x[i])));
  return std::sqrt(sum);
}

template <class W>
long double ref_asum(const ref_vector<W>& x) {
  long double sum = 0;
  for (int64_t i = 0; i < x.n; ++i) sum += magnitude(x[i]);
  return sum;
}

// First index (1-based) of the largest |re| + |im|, strictly greater replacing, from element 1.
template <class W>
int64_t ref_iamax(const ref_vector<W>& x) {
  if (x.n < 1) return 0;
  int64_t best = 0;
  long double largest = magnitude(x[0]);
  for (int64_t i = 1; i < x.n; ++i) {
    if (magnitude(x[i]) > largest) {
      largest = magnitude(x[i]);
      best = i;
    }
  }
  return best + 1;
}

// (x, y) := (c·x + s·y, c·y - conj(s)·x).
template <class W, class S>
void ref_rot(ref_vector<W>& x, ref_vector<W>& y, long double c, const S& s) {
  for (int64_t i = 0; i < x.n; ++i) {
    const W xi = x[i], yi = y[i];
    x[i] = c * xi + s * yi;
    y[i] = c * yi - conj_if(s, true) * xi;
  }
}

// ---- the threaded drivers' promises ----------------------------------------------------------

struct part {
  int64_t start, length;
};

// Thread t of `team` takes q + 1 elements from t·(q + 1) when t < r, else q from t·q + r, with
// q = max(n div team, 1), r = max(n - team·q, 0), clipped to n.
inline part split_part(int64_t n, int t, int team) {
  const int64_t q = n / team > 1 ? n / team : 1;
  const int64_t r = n - team * q > 0 ? n - team * q : 0;
  part p = t < r ? part{t * (q + 1), q + 1} : part{t * q + r, q};
  if (p.start >= n) return {n, 0};
  if (p.start + p.length > n) p.length = n - p.start;
  return p;
}

// r_0 + ... + r_{p-1} in the promised order, written from the rule: with p - 1 >= 8, a0 = (r0, 0)
// and three zero two-lane accumulators take r_{1+8g} ... r_{8+8g} pairwise; then
// (a0 + a1) + (a2 + a3), low lane + high lane; the rest one at a time.
template <class T>
T rule_sum(const std::vector<T>& r) {
  const int p = static_cast<int>(r.size());
  if (p - 1 < 8) {
    T s = r[0];
    for (int k = 1; k < p; ++k) s += r[k];
    return s;
  }
  T a[4][2] = {{r[0], T(0)}, {T(0), T(0)}, {T(0), T(0)}, {T(0), T(0)}};
  int k = 1;
  for (; k + 8 <= p; k += 8) {
    for (int acc = 0; acc < 4; ++acc) {
      a[acc][0] += r[k + 2 * acc];
      a[acc][1] += r[k + 2 * acc + 1];
    }
  }
  T lane0 = (a[0][0] + a[1][0]) + (a[2][0] + a[3][0]);
  T lane1 = (a[0][1] + a[1][1]) + (a[2][1] + a[3][1]);
  T s = lane0 + lane1;
  for (; k < p; ++k) s += r[k];
  return s;
}

// ---- data and checks -------------------------------------------------------------------------

template <class T>
T random_value(std::mt19937_64& rng) {
  std::uniform_real_distribution<real_of<T>> u(-1, 1);
  if constexpr (complex_v<T>) {
    const real_of<T> re = u(rng);
    return T(re, u(rng));
  } else {
    return u(rng);
  }
}

// The unit roundoff of T's real type.
template <class T>
long double unit_roundoff() {
  return std::numeric_limits<real_of<T>>::epsilon() / 2;
}

// |got - want| <= units·u·scale in each part; a NaN wanted must come out NaN (and only then).
template <class T, class W>
bool close(const T& got, const W& want, long double scale, long double units) {
  const wide_of<T> g = widen(got);
  const wide_of<T> w = want;
  if (has_nan(w) || has_nan(g)) return has_nan(w) && has_nan(g);
  return magnitude(wide_of<T>(g - w)) <= units * unit_roundoff<T>() * scale;
}

}  // namespace tav::test
