// The provider's axpy, scale, dot product (unconjugated) and matrix product in the four
// precisions, exact on small integers.
#include <tav/tav.h>
#include <gtest/gtest.h>

#include <vector>

#include "c_elements.hpp"

namespace {

using namespace tav::test;

template <class C>
struct provider {
  static constexpr auto axpy = by_c_type<C>(s_axpy, d_axpy, c_axpy, z_axpy);
  static constexpr auto scale = by_c_type<C>(s_scale, d_scale, c_scale, z_scale);
  static constexpr auto dot =
      by_c_type<C>(s_dot_product, d_dot_product, c_dot_product, z_dot_product);
  static constexpr auto multiply =
      by_c_type<C>(s_matrix_multiply, d_matrix_multiply, c_matrix_multiply, z_matrix_multiply);
};

// The stored matrix that op (111, 112, 113) turns into the rows x cols matrix `x`.
template <class C>
std::vector<C> stored_for(int op, const std::vector<C>& x, int rows, int cols) {
  if (op == TAV_CBLAS_NO_TRANS) return x;
  std::vector<C> s(x.size());
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < cols; ++j)
      s[static_cast<size_t>(j + i * cols)] =
          from_std<C>(op_at(op == TAV_CBLAS_CONJ_TRANS ? 'C' : 'T', x.data(), rows, j, i));
  return s;
}

template <class C>
class ProviderBlas : public testing::Test {};
using element_types = testing::Types<float, double, tav_complex8, tav_complex16>;
TYPED_TEST_SUITE(ProviderBlas, element_types);

TYPED_TEST(ProviderBlas, VectorFunctionsMatchPlainLoops) {
  using C = TypeParam;
  using P = provider<C>;
  const int n = 11;
  const std::vector<C> x = small_integers<C>(n, 1), y0 = small_integers<C>(n, 2);
  const C alpha = make<C>(2, -3);
  std::vector<C> y = y0, want_axpy = y0, scaled = x, want_scaled = x;
  std_t<C> want_dot = 0;
  for (int i = 0; i < n; ++i) {
    want_axpy[i] = from_std<C>(to_std(alpha) * to_std(x[i]) + to_std(y0[i]));
    want_scaled[i] = from_std<C>(to_std(alpha) * to_std(x[i]));
    want_dot += to_std(x[i]) * to_std(y0[i]);  // x unconjugated
  }
  P::axpy(n, x.data(), y.data(), alpha);
  P::scale(n, scaled.data(), alpha);
  EXPECT_TRUE(same_values(y, want_axpy));
  EXPECT_TRUE(same_values(scaled, want_scaled));
  EXPECT_EQ(to_std(P::dot(n, x.data(), y0.data())), want_dot);
}

TYPED_TEST(ProviderBlas, EmptyVectorsTouchNothing) {
  using C = TypeParam;
  using P = provider<C>;
  const std::vector<C> x0 = small_integers<C>(4, 3), y0 = small_integers<C>(4, 4);
  std::vector<C> x = x0, y = y0;
  P::axpy(0, x.data(), y.data(), make<C>(5, 1));
  P::scale(0, x.data(), make<C>(5, 1));
  EXPECT_EQ(to_std(P::dot(0, x.data(), y.data())), std_t<C>(0));
  EXPECT_TRUE(same_bits(x, x0));
  EXPECT_TRUE(same_bits(y, y0));
}

// Every transpose pair against the product of the explicit matrices: op(a) is m x k and op(b)
// k x n whatever is stored, and each stored array is packed.
TYPED_TEST(ProviderBlas, TransposedOperandsEqualExplicitTransposes) {
  using C = TypeParam;
  using P = provider<C>;
  const int m = 3, n = 4, k = 5;
  const std::vector<C> op_a = small_integers<C>(m * k, 5), op_b = small_integers<C>(k * n, 6);
  const std::vector<C> c0 = small_integers<C>(m * n, 7);
  const C alpha = make<C>(-1, 2), beta = make<C>(2, 1);
  std::vector<C> want = c0;
  reference_gemm('N', 'N', m, n, k, alpha, op_a.data(), m, op_b.data(), k, beta, want.data(), m);
  for (int ta : {TAV_CBLAS_NO_TRANS, TAV_CBLAS_TRANS, TAV_CBLAS_CONJ_TRANS})
    for (int tb : {TAV_CBLAS_NO_TRANS, TAV_CBLAS_TRANS, TAV_CBLAS_CONJ_TRANS}) {
      std::vector<C> c = c0;
      P::multiply(ta, tb, m, n, k, stored_for(ta, op_a, m, k).data(),
                  stored_for(tb, op_b, k, n).data(), c.data(), alpha, beta);
      EXPECT_TRUE(same_values(c, want)) << ta << " " << tb;
    }
}

}  // namespace
