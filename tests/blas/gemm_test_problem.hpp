// Shared pieces of the matrix-product tests: seeded operands with padded leading dimensions, C in
// a guarded buffer, and the comparison of one product against the long-double reference.
#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "guarded_buffer.hpp"
#include "reference_level3.hpp"

namespace tav::test {

using gemm_types = testing::Types<float, double, std::complex<float>, std::complex<double>>;

template <class T>
T random_element(std::mt19937_64& gen) {
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  if constexpr (std::is_floating_point_v<T>) return static_cast<T>(u(gen));
  else {
    using R = typename T::value_type;
    const R re = static_cast<R>(u(gen));
    return T(re, static_cast<R>(u(gen)));
  }
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
    for (T& x : a) x = random_element<T>(gen);
    for (T& x : b) x = random_element<T>(gen);
    c0.resize(static_cast<size_t>(m * n));
    for (int64_t j = 0; j < n; ++j)
      for (int64_t i = 0; i < m; ++i) c(i, j) = c0[static_cast<size_t>(i + j * m)] = random_element<T>(gen);
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

inline constexpr char trans_codes[] = {'N', 'T', 'C'};

}  // namespace tav::test
