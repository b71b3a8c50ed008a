// Seeded operands for the level-2 and level-3 tests (random and well-conditioned triangular
// matrices, NaN where nothing may be read, strided vectors in guard bands) and the gemm problem.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "blas/blas_internal.hpp"
#include "code_paths.hpp"
#include "guarded_buffer.hpp"
#include "reference.hpp"

namespace tav::test {

using element_types = testing::Types<float, double, std::complex<float>, std::complex<double>>;

// Error ratios (reference.hpp) at or above this fail.
constexpr long double ratio_limit = 30;

// Increments every vector operand is tried with.
inline const std::vector<int64_t> increments{1, 2, -1, -2};

template <class T>
bool same_bits(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

// An m x n guarded matrix with leading dimension m + extra, random in its m x n part.
template <class T>
guarded_matrix<T> random_matrix(int64_t m, int64_t n, int64_t extra, std::mt19937_64& rng) {
  guarded_matrix<T> a(m, n, m + extra);
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i) a(i, j) = random_value<T>(rng);
  return a;
}

// The logical vector v laid out with increment inc inside guard bands.
template <class T>
guarded_vector<T> strided(const std::vector<T>& v, int64_t inc) {
  guarded_vector<T> g(static_cast<int64_t>(v.size()), inc);
  for (size_t i = 0; i < v.size(); ++i) g[static_cast<int64_t>(i)] = v[i];
  return g;
}

// The worst error ratio of a strided result against its reference, n elements.
template <class T>
long double worst_ratio(const guarded_vector<T>& got, const std::vector<wide_value<T>>& want,
                        int64_t terms) {
  long double worst = 0;
  for (size_t i = 0; i < want.size(); ++i) {
    const long double r = error_ratio(got[static_cast<int64_t>(i)], want[i], terms);
    if (std::isnan(r)) return r;
    if (r > worst) worst = r;
  }
  return worst;
}

// The same over an m x n result, the reference stored column by column with leading dimension m;
// `skip(i, j)` leaves out elements that the routine does not own.
inline bool own_all(int64_t, int64_t) { return false; }

template <class T, class Skip = bool (*)(int64_t, int64_t)>
long double worst_ratio(const guarded_matrix<T>& got, const std::vector<wide_value<T>>& want,
                        int64_t terms, Skip skip = own_all) {
  long double worst = 0;
  for (int64_t j = 0; j < got.cols(); ++j)
    for (int64_t i = 0; i < got.rows(); ++i) {
      if (skip(i, j)) continue;
      const long double r =
          error_ratio(got(i, j), want[static_cast<size_t>(i + j * got.rows())], terms);
      if (std::isnan(r)) return r;
      if (r > worst) worst = r;
    }
  return worst;
}


enum class element { s, d, c, z };

inline std::string element_name(element e) {
  static const char* const names[] = {"float", "double", "complex_float", "complex_double"};
  return names[static_cast<int>(e)];
}

// How GoogleTest prints the type in a failing parameter.
inline void PrintTo(element e, std::ostream* os) { *os << element_name(e); }

// Calls body(T{}) with T the element type that `e` names.
template <class Body>
void with_element_type(element e, Body body) {
  if (e == element::s) body(float{});
  else if (e == element::d) body(double{});
  else if (e == element::c) body(std::complex<float>{});
  else body(std::complex<double>{});
}

inline auto all_elements() {
  return testing::Values(element::s, element::d, element::c, element::z);
}

// A scalar away from 0 and 1 with a nonzero imaginary part for the complex types.
template <class T>
T general_scalar() {
  if constexpr (std::is_floating_point_v<T>)
    return T(0.75);
  else
    return T(0.75, -0.5);
}

template <class T>
void fill_random(std::mt19937_64& g, int64_t m, int64_t n, T* a, int64_t ld) {
  for (int64_t j = 0; j < n; ++j) {
    for (int64_t i = 0; i < m; ++i) a[i + j * ld] = random_value<T>(g);
  }
}

template <class T>
void fill_random(std::mt19937_64& g, guarded_matrix<T>& a) {
  fill_random(g, a.rows(), a.cols(), a.data(), a.ld());
}

// The m x n elements of a guarded matrix, leading dimension m.
template <class T>
std::vector<T> contents(const guarded_matrix<T>& a) {
  std::vector<T> out(static_cast<size_t>(a.rows() * a.cols()));
  for (int64_t j = 0; j < a.cols(); ++j) {
    for (int64_t i = 0; i < a.rows(); ++i) out[static_cast<size_t>(i + j * a.rows())] = a(i, j);
  }
  return out;
}

// An order x order triangular matrix (leading dimension ld) that is well conditioned for either
// diag: off-diagonal entries of size at most 1/order, so the strict triangle has norm below 1,
// and a diagonal of modulus 2 to 3. Everything a triangular routine must not read holds NaN:
// the other triangle, the rows between order and ld, and the diagonal when diag is 'U'.
template <class T>
std::vector<T> triangular_matrix(std::mt19937_64& g, char uplo, char diag, int64_t order,
                                 int64_t ld) {
  std::vector<T> a(static_cast<size_t>(ld * (order > 0 ? order : 1)), nan_value<T>());
  const bool upper = (uplo & ~0x20) == 'U';
  const bool unit = (diag & ~0x20) == 'U';
  for (int64_t j = 0; j < order; ++j) {
    for (int64_t i = 0; i < order; ++i) {
      T& x = a[static_cast<size_t>(i + j * ld)];
      if (i == j) {
        if (!unit) x = T(2.5) + T(0.5) * random_value<T>(g);
      } else if (upper ? i < j : i > j) {
        x = random_value<T>(g) / T(static_cast<float>(order));
      }
    }
  }
  return a;
}

// ---- the matrix product ---------------------------------------------------------------------
// A scalar re + i·im; the real types take re alone.
template <class T>
T scalar(double re, double im) {
  if constexpr (std::is_floating_point_v<T>) return static_cast<T>(re);
  else return T(static_cast<typename T::value_type>(re), static_cast<typename T::value_type>(im));
}

template <class T>
struct gemm_reference {
  std::vector<T> want;  // leading dimension m
  std::vector<long double> bound;
};

// One product C := alpha·op(A)·op(B) + beta·C with random operands; lda, ldb, ldc exceed their
// minimum by `pad`.
template <class T>
struct gemm_problem {
  using real = decltype(std::real(T()));
  char transa, transb;
  int64_t m, n, k;
  T alpha, beta;
  int64_t lda, ldb, ldc;
  std::vector<T> a, b;
  guarded_matrix<T> c;
  std::vector<T> c0;  // C before the call, leading dimension m

  gemm_problem(char ta, char tb, int64_t m_, int64_t n_, int64_t k_, T alpha_, T beta_,
               int64_t pad = 3, uint64_t seed = 1)
      : transa(ta), transb(tb), m(m_), n(n_), k(k_), alpha(alpha_), beta(beta_),
        lda((ta == 'N' ? m_ : k_) + pad), ldb((tb == 'N' ? k_ : n_) + pad),
        ldc((m_ > 1 ? m_ : 1) + pad), c(m_, n_, (m_ > 1 ? m_ : 1) + pad) {
    std::mt19937_64 gen(seed * 7919 + static_cast<uint64_t>(m * 131 + n * 17 + k));
    a.resize(static_cast<size_t>(lda * (ta == 'N' ? (k > 0 ? k : 1) : (m > 0 ? m : 1))));
    b.resize(static_cast<size_t>(ldb * (tb == 'N' ? (n > 0 ? n : 1) : (k > 0 ? k : 1))));
    for (T& x : a) x = random_value<T>(gen);
    for (T& x : b) x = random_value<T>(gen);
    c0.resize(static_cast<size_t>(m * n));
    for (int64_t j = 0; j < n; ++j)
      for (int64_t i = 0; i < m; ++i)
        c(i, j) = c0[static_cast<size_t>(i + j * m)] = random_value<T>(gen);
  }

  std::string describe() const {
    return std::string(1, transa) + std::string(1, transb) + " m=" + std::to_string(m) +
           " n=" + std::to_string(n) + " k=" + std::to_string(k);
  }

  // The reference result (leading dimension m) and its error bound.
  auto reference() const {
    std::vector<T> want = c0;
    auto bound = reference_gemm<T>(transa, transb, m, n, k, alpha, a.data(), lda, b.data(), ldb,
                                   beta, want.data(), m);
    return gemm_reference<T>{std::move(want), std::move(bound)};
  }

  // Guards intact and within `limit` rounding units of the reference (see expect_matches).
  bool matches(const gemm_reference<T>& r, double limit = 2.0) const {
    return c.intact() &&
           gemm_error_ratio<T>(m, n, k, c.data(), ldc, r.want.data(), r.bound) <= limit;
  }

  // Sets C back to its starting contents.
  void reset_c() {
    for (int64_t j = 0; j < n; ++j)
      for (int64_t i = 0; i < m; ++i) c(i, j) = c0[static_cast<size_t>(i + j * m)];
  }
};

// Checks C after a call: guards intact and every element within a few rounding units of the
// reference (the ratio counts units of (k + 2)·eps·bound).
template <class T>
void expect_matches(const gemm_problem<T>& p, const gemm_reference<T>& r, double limit = 2.0) {
  EXPECT_TRUE(p.c.intact()) << p.describe();
  const long double ratio =
      gemm_error_ratio<T>(p.m, p.n, p.k, p.c.data(), p.ldc, r.want.data(), r.bound);
  EXPECT_LE(ratio, limit) << p.describe();
}

template <class T>
void expect_matches_reference(const gemm_problem<T>& p, double limit = 2.0) {
  expect_matches(p, p.reference(), limit);
}

template <class T>
bool bitwise_equal(const gemm_problem<T>& x, const gemm_problem<T>& y) {
  for (int64_t j = 0; j < x.n; ++j)
    for (int64_t i = 0; i < x.m; ++i)
      if (std::memcmp(&x.c(i, j), &y.c(i, j), sizeof(T)) != 0) return false;
  return true;
}

// The product through the internal entry, the one every route starts from.
template <class T>
void call_entry(gemm_problem<T>& p) {
  tav::blas::gemm<T>(p.transa, p.transb, p.m, p.n, p.k, p.alpha, p.a.data(), p.lda, p.b.data(),
                     p.ldb, p.beta, p.c.data(), p.ldc);
}

// beta = 0 never reads C (NaN there does not survive); alpha = 0 never reads A or B (NaN there)
// and leaves beta·C exactly. `call` computes a problem's product in place.
template <class T, class Call>
void expect_special_scalars_honoured(char ta, char tb, int64_t m, int64_t n, int64_t k, T beta,
                                     Call call) {
  const T nan = nan_value<T>();
  gemm_problem<T> zero_beta(ta, tb, m, n, k, scalar<T>(1.5, -0.5), T(0));
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i) zero_beta.c(i, j) = nan;
  call(zero_beta);
  expect_matches_reference(zero_beta);

  gemm_problem<T> zero_alpha(ta, tb, m, n, k, T(0), beta);
  for (T& x : zero_alpha.a) x = nan;
  for (T& x : zero_alpha.b) x = nan;
  call(zero_alpha);
  EXPECT_TRUE(zero_alpha.c.intact());
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i)
      EXPECT_EQ(zero_alpha.c(i, j), beta * zero_alpha.c0[static_cast<size_t>(i + j * m)])
          << zero_alpha.describe();
}

// A NaN in op(A)(i0, l) must reach row i0 of C alone (NaN there), and an Inf in op(B)(l, j0)
// column j0 alone (non-finite there), with i0 = m / 2, j0 = n - 1 and l = k / 3.
template <class T, class Call>
void expect_nan_and_inf_propagate(char ta, char tb, int64_t m, int64_t n, int64_t k, Call call) {
  using R = typename gemm_problem<T>::real;
  const int64_t i0 = m / 2, j0 = n - 1, l0 = k / 3;
  gemm_problem<T> p(ta, tb, m, n, k, scalar<T>(1, 0.5), scalar<T>(0.5, 0));
  p.a[static_cast<size_t>(ta == 'N' ? i0 + l0 * p.lda : l0 + i0 * p.lda)] =
      scalar<T>(std::numeric_limits<R>::quiet_NaN(), 0);
  p.b[static_cast<size_t>(tb == 'N' ? l0 + j0 * p.ldb : j0 + l0 * p.ldb)] =
      scalar<T>(std::numeric_limits<R>::infinity(), 0);
  call(p);
  EXPECT_TRUE(p.c.intact());
  for (int64_t j = 0; j < n; ++j)
    for (int64_t i = 0; i < m; ++i) {
      EXPECT_EQ(std::isfinite(std::abs(p.c(i, j))), i != i0 && j != j0)
          << p.describe() << " at " << i << "," << j;
      if (i == i0) EXPECT_TRUE(std::isnan(std::abs(p.c(i, j))) || std::isnan(std::real(p.c(i, j))));
    }
}

inline constexpr char trans_codes[] = {'N', 'T', 'C'};

}  // namespace tav::test
