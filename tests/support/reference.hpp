// Long-double references for the BLAS tests. Every product, from the level-1 dot to the level-3
// updates, is one sum of terms alpha·op(X)·op(Y) (wide_sum); the triangular, symmetric and
// Hermitian routines expand their stored triangle to a full matrix first. Each result comes with
// the sum of the magnitudes of its terms, which scales the rounding error of the same result
// computed in the element's own precision (Higham, Accuracy and Stability, 3.1 and 3.5).
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <random>
#include <type_traits>
#include <tuple>
#include <utility>
#include <vector>

namespace tav::test {

// ---- element vocabulary ----------------------------------------------------------------------

template <class T>
struct element_traits {
  using real = T;
  using wide = long double;
};
template <class R>
struct element_traits<std::complex<R>> {
  using real = R;
  using wide = std::complex<long double>;
};
template <class T>
using real_of = typename element_traits<T>::real;
// The long-double counterpart of an element type: long double or std::complex<long double>.
template <class T>
using wide_t = typename element_traits<T>::wide;
template <class T>
constexpr bool complex_v = !std::is_same_v<T, real_of<T>>;

// The one of four values that belongs to element type T (float, double, complex float, complex
// double), for per-type tables of entries.
template <class T, class S, class D, class C, class Z>
constexpr auto by_type(S s, D d, C c, Z z) {
  if constexpr (std::is_same_v<T, float>) return s;
  else if constexpr (std::is_same_v<T, double>) return d;
  else if constexpr (std::is_same_v<T, std::complex<float>>) return c;
  else return z;
}

template <class T>
wide_t<T> widen(const T& v) {
  if constexpr (complex_v<T>) return {v.real(), v.imag()};
  else return v;
}

template <class T>
T narrow(const wide_t<T>& x) {
  if constexpr (complex_v<T>)
    return T(static_cast<real_of<T>>(x.real()), static_cast<real_of<T>>(x.imag()));
  else return static_cast<T>(x);
}

// |re| + |im| in long double: the scale of error bounds for complex sums and products.
template <class W>
long double magnitude(const W& v) {
  if constexpr (std::is_arithmetic_v<W>) return std::fabs(static_cast<long double>(v));
  else
    return std::fabs(static_cast<long double>(v.real())) +
           std::fabs(static_cast<long double>(v.imag()));
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

// x·y by the textbook formula: the library's kernels multiply that way too, and it avoids the
// slow library call that C99 Annex G recovery of infinities needs.
template <class W>
W wide_mul(const W& x, const W& y) {
  if constexpr (std::is_arithmetic_v<W>) return x * y;
  else
    return W(x.real() * y.real() - x.imag() * y.imag(), x.real() * y.imag() + x.imag() * y.real());
}

// NaN in every part.
template <class T>
T nan_value() {
  const real_of<T> nan = std::numeric_limits<real_of<T>>::quiet_NaN();
  if constexpr (complex_v<T>) return T(nan, nan);
  else return nan;
}

// Uniform in [-1, 1) in each part.
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

template <class T>
std::vector<T> random_vector(int64_t n, std::mt19937_64& rng) {
  std::vector<T> v(static_cast<size_t>(n > 0 ? n : 0));
  for (T& e : v) e = random_value<T>(rng);
  return v;
}

template <class T>
long double eps_of() {
  return std::numeric_limits<real_of<T>>::epsilon();
}

// The unit roundoff of T's real type.
template <class T>
long double unit_roundoff() {
  return eps_of<T>() / 2;
}

// Element (i, j) of op(X) for X column-major with leading dimension ld; trans 'N', 'T' or 'C'
// (either case).
template <class T>
wide_t<T> op_element(char trans, const T* x, int64_t ld, int64_t i, int64_t j) {
  const char t = static_cast<char>(trans & ~0x20);
  if (t == 'N') return widen(x[i + j * ld]);
  return conj_if(widen(x[j + i * ld]), t == 'C');
}

// ---- level 1: vectors with increments ---------------------------------------------------------

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
ref_vector<wide_t<T>> widened(int64_t n, const T* base, int64_t inc) {
  const int64_t span = n > 0 ? 1 + (n - 1) * (inc < 0 ? -inc : inc) : 0;
  ref_vector<wide_t<T>> v{std::vector<wide_t<T>>(static_cast<size_t>(span)), n, inc};
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

// The operations element by element in index order.
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

// In long double, whose range holds the square of any double.
template <class W>
long double ref_nrm2(const ref_vector<W>& x) {
  long double sum = 0;
  for (int64_t i = 0; i < x.n; ++i) sum += std::norm(std::complex<long double>(x[i]));
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
  int64_t best = 0;
  for (int64_t i = 1; i < x.n; ++i)
    if (magnitude(x[i]) > magnitude(x[best])) best = i;
  return x.n < 1 ? 0 : best + 1;
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

// |got - want| <= units·u·scale in each part; a NaN wanted must come out NaN (and only then).
template <class T, class W>
bool close(const T& got, const W& want, long double scale, long double units) {
  const wide_t<T> g = widen(got);
  const wide_t<T> w = want;
  if (has_nan(w) || has_nan(g)) return has_nan(w) && has_nan(g);
  return magnitude(wide_t<T>(g - w)) <= units * unit_roundoff<T>() * scale;
}

// The threaded level-1 drivers' promises. Thread t of `team` takes q + 1 elements from t·(q + 1)
// when t < r, else q from t·q + r, with q = max(n div team, 1), r = max(n - team·q, 0), clipped
// to n.
struct part {
  int64_t start, length;
};

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
  T s = r[0];
  int k = 1;
  if (p - 1 >= 8) {
    T a[4][2] = {{r[0], T(0)}, {T(0), T(0)}, {T(0), T(0)}, {T(0), T(0)}};
    for (; k + 8 <= p; k += 8)
      for (int acc = 0; acc < 4; ++acc) {
        a[acc][0] += r[k + 2 * acc];
        a[acc][1] += r[k + 2 * acc + 1];
      }
    s = ((a[0][0] + a[1][0]) + (a[2][0] + a[3][0])) + ((a[0][1] + a[1][1]) + (a[2][1] + a[3][1]));
  }
  for (; k < p; ++k) s += r[k];
  return s;
}

// ---- matrices: one sum of products, and full matrices behind stored triangles -----------------

// A long-double result and the sum of the magnitudes of its terms.
template <class T>
struct wide_value {
  wide_t<T> exact;
  long double scale;
};

// One term alpha·opx(X)·opy(Y); X and Y column-major with leading dimensions ldx, ldy.
template <class T>
struct product_term {
  T alpha;
  char opx;
  const T* x;
  int64_t ldx;
  char opy;
  const T* y;
  int64_t ldy;
};

// sum_t alpha_t·opx(X_t)·opy(Y_t) + beta·C over the m x n result (leading dimension m) with inner
// dimension k. A zero alpha drops its term without reading X or Y; beta = 0 does not read C.
template <class T>
std::vector<wide_value<T>> wide_sum(int64_t m, int64_t n, int64_t k,
                                    const std::vector<product_term<T>>& terms, T beta, const T* c,
                                    int64_t ldc) {
  std::vector<wide_value<T>> out(static_cast<size_t>(m > 0 && n > 0 ? m * n : 0));
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i) {
      wide_t<T> sum = 0;
      long double scale = 0;
      for (const product_term<T>& t : terms) {
        if (t.alpha == T(0)) continue;
        wide_t<T> part = 0;
        long double size = 0;
        for (int64_t l = 0; l < k; ++l) {
          const wide_t<T> p = op_element(t.opx, t.x, t.ldx, i, l),
                          q = op_element(t.opy, t.y, t.ldy, l, j);
          part += wide_mul(p, q);
          size += magnitude(p) * magnitude(q);
        }
        sum += wide_mul(widen(t.alpha), part);
        scale += magnitude(widen(t.alpha)) * size;
      }
      if (beta != T(0)) {
        const wide_t<T> old = widen(c[i + j * ldc]);
        sum += wide_mul(widen(beta), old);
        scale += magnitude(widen(beta)) * magnitude(old);
      }
      out[static_cast<size_t>(i + j * m)] = {sum, scale};
    }
  return out;
}

// |computed - exact| in units of (terms + 2)·eps·scale; below 1 for a correct summation. NaN gives
// NaN, which fails every comparison.
template <class T>
long double error_ratio(const T& computed, const wide_value<T>& v, int64_t terms) {
  const long double err = magnitude(widen(computed) - v.exact);
  if (err == 0) return 0;
  return err / (static_cast<long double>(terms + 2) * eps_of<T>() * v.scale);
}

// A dense column-major matrix of logical elements: element (i, j) at data[i + j·ld].
template <class T>
struct dense {
  int64_t rows, cols, ld;
  std::vector<T> data;
  const T& operator()(int64_t i, int64_t j) const { return data[static_cast<size_t>(i + j * ld)]; }
};

// The full n x n matrix behind the triangle `uplo` of a: symmetric, or Hermitian with a real
// diagonal (the imaginary part of the stored diagonal is ignored).
template <class T>
dense<T> full_symmetric(bool hermitian, char uplo, int64_t n, const T* a, int64_t lda) {
  dense<T> f{n, n, n > 0 ? n : 1, std::vector<T>(static_cast<size_t>(n * n))};
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < n; ++i) {
      const bool stored = (uplo & ~0x20) == 'U' ? i <= j : i >= j;
      T v = stored ? a[i + j * lda] : conj_if(a[j + i * lda], hermitian);
      if constexpr (complex_v<T>)
        if (hermitian && i == j) v = T(v.real(), 0);
      f.data[static_cast<size_t>(i + j * n)] = v;
    }
  return f;
}

// The full n x n matrix of the triangle `uplo` of a with zeros elsewhere and, for diag 'U', ones
// on the diagonal (the stored diagonal ignored): neither the other triangle nor a unit diagonal
// is read.
template <class T>
dense<T> full_triangular(char uplo, char diag, int64_t n, const T* a, int64_t lda) {
  dense<T> f{n, n, n > 0 ? n : 1, std::vector<T>(static_cast<size_t>(n * n), T(0))};
  const bool upper = (uplo & ~0x20) == 'U', unit = (diag & ~0x20) == 'U';
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < n; ++i) {
      if (i == j) f.data[static_cast<size_t>(i + j * n)] = unit ? T(1) : a[i + j * lda];
      else if (upper ? i < j : i > j) f.data[static_cast<size_t>(i + j * n)] = a[i + j * lda];
    }
  return f;
}

// A after the interchanges of laswp, one at a time as LAPACK defines them.
template <class T>
dense<T> swap_rows(dense<T> a, int64_t k1, int64_t k2, const std::vector<int64_t>& ipiv,
                   int64_t incx) {
  const int64_t step = incx > 0 ? incx : -incx;
  for (int64_t s = 0; s <= k2 - k1; ++s) {
    const int64_t i = incx > 0 ? k1 + s : k2 - s;
    const int64_t p = ipiv[static_cast<size_t>(k1 - 1 + (i - k1) * step)];
    for (int64_t j = 0; j < a.cols; ++j)
      std::swap(a.data[static_cast<size_t>(i - 1 + j * a.ld)],
                a.data[static_cast<size_t>(p - 1 + j * a.ld)]);
  }
  return a;
}

// ---- level 2 ----------------------------------------------------------------------------------

// y := alpha·op(A)·x + beta·y over logical (unstrided) x and y; m = 0 or n = 0 leaves y as it is.
template <class T>
std::vector<wide_value<T>> reference_gemv(char trans, int64_t m, int64_t n, T alpha, const T* a,
                                          int64_t lda, const std::vector<T>& x, T beta,
                                          const std::vector<T>& y) {
  const bool plain = (trans & ~0x20) == 'N';
  const int64_t rows = plain ? m : n, inner = plain ? n : m;
  if (m <= 0 || n <= 0) {
    std::vector<wide_value<T>> out;
    for (const T& e : y) out.push_back({widen(e), magnitude(widen(e))});
    return out;
  }
  return wide_sum<T>(rows, 1, inner, {{alpha, trans, a, lda, 'N', x.data(), inner}}, beta,
                     y.data(), rows);
}

// A := beta·A + alpha·x·op(y)^T + alpha2·y2·op(x2)^T over the whole m x n matrix, op = conj when
// `conj`; beta = 0 ignores A. With alpha2 = 0 it is the rank-1 update.
template <class T>
std::vector<wide_value<T>> reference_ger(bool conj, int64_t m, int64_t n, T alpha,
                                         const std::vector<T>& x, const std::vector<T>& y, T alpha2,
                                         const std::vector<T>& y2, const std::vector<T>& x2, T beta,
                                         const T* a, int64_t lda) {
  const char op = conj ? 'C' : 'T';
  return wide_sum<T>(m, n, 1,
                     {{alpha, 'N', x.data(), m, op, y.data(), n},
                      {alpha2, 'N', y2.data(), m, op, x2.data(), n}},
                     beta, a, lda);
}

// ---- level 3 ----------------------------------------------------------------------------------

// Writes the rounded results into c (leading dimension ldc) and returns their bounds (leading
// dimension m) for gemm_error_ratio.
template <class T>
std::vector<long double> store(int64_t m, int64_t n, const std::vector<wide_value<T>>& v, T* c,
                               int64_t ldc) {
  std::vector<long double> bound(v.size());
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i) {
      const wide_value<T>& e = v[static_cast<size_t>(i + j * m)];
      c[i + j * ldc] = narrow<T>(e.exact);
      bound[static_cast<size_t>(i + j * m)] = e.scale;
    }
  return bound;
}

// C := alpha·op(A)·op(B) + beta·C with every sum in long double and one rounding per element.
// As the BLAS promises: beta == 0 does not read C, alpha == 0 does not read A or B, m or n == 0
// touches nothing. Returns the bound |alpha|·sum_l |op(A)_il|·|op(B)_lj| + |beta|·|C_ij| per
// element (column-major, leading dimension m).
template <class T>
std::vector<long double> reference_gemm(char transa, char transb, int64_t m, int64_t n, int64_t k,
                                        T alpha, const T* a, int64_t lda, const T* b, int64_t ldb,
                                        T beta, T* c, int64_t ldc) {
  return store(m, n, wide_sum<T>(m, n, k, {{alpha, transa, a, lda, transb, b, ldb}}, beta, c, ldc),
               c, ldc);
}

// B := alpha·op(A)·B (side 'L') or alpha·B·op(A) (side 'R') for a triangular A, with bounds for
// gemm_error_ratio with k = the order of A.
template <class T>
std::vector<long double> reference_trmm(char side, char uplo, char trans, char diag, int64_t m,
                                        int64_t n, T alpha, const T* a, int64_t lda, T* b,
                                        int64_t ldb) {
  const bool left = (side & ~0x20) == 'L';
  const int64_t order = left ? m : n;
  const dense<T> t = full_triangular(uplo, diag, order, a, lda);
  const std::vector<T> b0(b, b + (n > 0 ? (n - 1) * ldb + m : 0));
  const product_term<T> term =
      left ? product_term<T>{alpha, trans, t.data.data(), t.ld, 'N', b0.data(), ldb}
           : product_term<T>{alpha, 'N', b0.data(), ldb, trans, t.data.data(), t.ld};
  return store(m, n, wide_sum<T>(m, n, order, {term}, T(0), b, ldb), b, ldb);
}

// C := beta·C + sum_t alpha_t·X_t·op(Y_t) (trans 'N') or beta·C + sum_t alpha_t·op(X_t)·Y_t on
// the uplo triangle of the order-n C, op 'T' (symmetric) or 'C' (Hermitian, whose diagonal is
// then set real); each term is {alpha, X, ldx, Y, ldy}. The other triangle is left as it is; the
// bound is 0 there, so any change fails gemm_error_ratio. As the BLAS promise, an empty sum
// (alpha = 0 or k = 0) with beta = 1 leaves C alone, even a Hermitian diagonal. The bound (leading
// dimension n) is for gemm_error_ratio with k = the number of terms times k.
template <class T>
std::vector<long double> reference_rank_update(
    char uplo, char trans, char op, int64_t n, int64_t k,
    const std::vector<std::tuple<T, const T*, int64_t, const T*, int64_t>>& terms, T beta, T* c,
    int64_t ldc) {
  std::vector<long double> bound(static_cast<size_t>(n > 0 ? n * n : 0), 0.0L);
  const bool plain = (trans & ~0x20) == 'N', upper = (uplo & ~0x20) == 'U';
  std::vector<product_term<T>> products;
  bool empty_sum = true;
  for (const auto& [alpha, x, ldx, y, ldy] : terms) {
    products.push_back({alpha, plain ? 'N' : op, x, ldx, plain ? op : 'N', y, ldy});
    empty_sum = empty_sum && (alpha == T(0) || k <= 0);
  }
  if (empty_sum && beta == T(1)) return bound;
  const std::vector<wide_value<T>> v = wide_sum<T>(n, n, k, products, beta, c, ldc);
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = upper ? 0 : j; i < (upper ? j + 1 : n); ++i) {
      wide_t<T> sum = v[static_cast<size_t>(i + j * n)].exact;
      if constexpr (complex_v<T>)
        if (op == 'C' && i == j) sum = wide_t<T>(sum.real(), 0);
      c[i + j * ldc] = narrow<T>(sum);
      bound[static_cast<size_t>(i + j * n)] = v[static_cast<size_t>(i + j * n)].scale;
    }
  return bound;
}

// Largest ratio |got - want| / ((k + 2)·eps·bound) over the m x n elements, the units in which a
// correct product stays below a small constant; NaN when the two disagree on which elements are
// finite, or for real types on which are NaN (complex Inf arithmetic may yield NaN or Inf).
// `want` and `bound` are column-major with leading dimension m, `got` with ldg.
template <class T>
long double gemm_error_ratio(int64_t m, int64_t n, int64_t k, const T* got, int64_t ldg,
                             const T* want, const std::vector<long double>& bound) {
  long double worst = 0;
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i) {
      const wide_t<T> g = widen(got[i + j * ldg]), w = widen(want[i + j * m]);
      const long double gm = magnitude(g), wm = magnitude(w);
      if (std::isfinite(gm) != std::isfinite(wm)) return NAN;
      if (!std::isfinite(gm)) {
        if (!complex_v<T> && std::isnan(gm) != std::isnan(wm)) return NAN;
        continue;
      }
      const long double diff = magnitude(g - w);
      if (diff == 0) continue;
      const long double unit =
          static_cast<long double>(k + 2) * eps_of<T>() * bound[static_cast<size_t>(i + j * m)];
      // A nonzero difference against a zero bound means a term that should not exist.
      worst = std::max(worst, unit > 0 ? diff / unit : INFINITY);
    }
  return worst;
}

// Residual of a triangular solve with solution X (m x n, leading dimension ldx) of the original
// right-hand sides B: max_j ||R(:, j)||_1 / (||op(A)||_1·||X||_1·order·eps), where
// R = op(A)·X - alpha·B (side 'L', order m) or X·op(A) - alpha·B (side 'R', order n), in long
// double. A backward-stable solve stays below a small constant (Higham, Accuracy and Stability,
// chapter 8); 0 for an empty problem.
template <class T>
long double trsm_residual_ratio(char side, char uplo, char trans, char diag, int64_t m, int64_t n,
                                T alpha, const T* a, int64_t lda, const T* x, int64_t ldx,
                                const T* b, int64_t ldb) {
  if (m <= 0 || n <= 0) return 0;
  const bool left = (side & ~0x20) == 'L';
  const int64_t order = left ? m : n;
  const dense<T> t = full_triangular(uplo, diag, order, a, lda);
  long double norm_a = 0, norm_x = 0, norm_r = 0;
  for (int64_t j = 0; j < order; ++j) {
    long double column = 0;
    for (int64_t i = 0; i < order; ++i)
      column += magnitude(op_element(trans, t.data.data(), t.ld, i, j));
    norm_a = std::max(norm_a, column);
  }
  const product_term<T> term = left
                                   ? product_term<T>{T(1), trans, t.data.data(), t.ld, 'N', x, ldx}
                                   : product_term<T>{T(1), 'N', x, ldx, trans, t.data.data(), t.ld};
  const std::vector<wide_value<T>> r = wide_sum<T>(m, n, order, {term}, T(0), x, ldx);
  for (int64_t j = 0; j < n; ++j) {
    long double column_x = 0, column_r = 0;
    for (int64_t i = 0; i < m; ++i) {
      column_x += magnitude(widen(x[i + j * ldx]));
      column_r +=
          magnitude(r[static_cast<size_t>(i + j * m)].exact - widen(alpha) * widen(b[i + j * ldb]));
    }
    norm_x = std::max(norm_x, column_x);
    norm_r = std::max(norm_r, column_r);
  }
  if (norm_r == 0) return 0;
  return norm_r / (norm_a * norm_x * static_cast<long double>(order) * eps_of<T>());
}

}  // namespace tav::test
