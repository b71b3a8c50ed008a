// Every runnable path's diagonal-block kernels of trsm and trmm, called directly for the four
// types around the row block of 4, rows in either direction, against long double.
#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <tuple>

#include "blas/level3/trsm_kernel_slots.hpp"
#include "common/scalar_traits.hpp"
#include "code_paths.hpp"
#include "guarded_buffer.hpp"
#include "blas_test_data.hpp"
#include "reference.hpp"

namespace {

using namespace tav::blas;  // the kernel type and each family's variants
using namespace tav::test;

// The block kernel of `path` for T: the product (solve = false) or the solve.
template <class T>
triangular_block_kernel<real_of<T>>* block_kernel(int path, bool solve) {
  using Fs = triangular_block_kernel<float>*;
  using Fd = triangular_block_kernel<double>*;
  static constexpr Fs s[2][8] = {{TAV_PATH_VARIANTS(blas, xstrmm_block)},
                                 {TAV_PATH_VARIANTS(blas, xstrsm_block)}};
  static constexpr Fd d[2][8] = {{TAV_PATH_VARIANTS(blas, xdtrmm_block)},
                                 {TAV_PATH_VARIANTS(blas, xdtrsm_block)}};
  static constexpr Fs c[2][8] = {{TAV_PATH_VARIANTS(blas, xctrmm_block)},
                                 {TAV_PATH_VARIANTS(blas, xctrsm_block)}};
  static constexpr Fd z[2][8] = {{TAV_PATH_VARIANTS(blas, xztrmm_block)},
                                 {TAV_PATH_VARIANTS(blas, xztrsm_block)}};
  return by_type<T>(s[solve][path], d[solve][path], c[solve][path], z[solve][path]);
}

// A packed lower triangle of order kb as the drivers pack it: off-diagonal entries of size at
// most 1/kb, diagonal of modulus 2 to 3 (its reciprocal for a solve), identity padding, and
// the unused upper triangle NaN, which the kernels must not read.
template <class T>
std::vector<T> packed_triangle(std::mt19937_64& g, int64_t kb, bool solve) {
  const int64_t n = padded_order(kb);
  std::vector<T> l(static_cast<size_t>(n * n), nan_value<T>());
  for (int64_t c = 0; c < n; ++c) {
    for (int64_t r = c; r < n; ++r) {
      T& x = l[static_cast<size_t>(r + c * n)];
      if (c >= kb || r >= kb)
        x = r == c ? T(1) : T(0);
      else if (r == c)
        x = solve ? T(1) / (T(2.5) + T(0.5) * random_value<T>(g))
                  : T(2.5) + T(0.5) * random_value<T>(g);
      else
        x = random_value<T>(g) / T(static_cast<float>(kb));
    }
  }
  return l;
}

// The same operation in long double on row-major order r = 0..kb-1 of the right-hand sides:
// the solve x_r := (alpha·b_r - sum_{c<r} L(r, c)·x_c)·D(r) (D the stored reciprocal), or the
// product x_r := sum_{c<=r} L(r, c)·alpha·b_c.
template <class T>
std::vector<wide_t<T>> reference(const std::vector<T>& l, int64_t kb, T alpha, bool solve,
                                 const std::vector<T>& b) {
  const int64_t n = padded_order(kb);
  std::vector<wide_t<T>> x(b.size());
  const int64_t cols = static_cast<int64_t>(b.size()) / std::max<int64_t>(kb, 1);
  auto at = [&](int64_t r, int64_t c) { return widen(l[static_cast<size_t>(r + c * n)]); };
  for (int64_t j = 0; j < cols; ++j) {
    auto rhs = [&](int64_t r) { return widen(alpha) * widen(b[static_cast<size_t>(r + j * kb)]); };
    for (int64_t r = 0; r < kb; ++r) {
      wide_t<T> sum = solve ? rhs(r) : wide_t<T>(0);
      for (int64_t c = 0; c < r; ++c) {
        if (solve)
          sum -= at(r, c) * x[static_cast<size_t>(c + j * kb)];
        else
          sum += at(r, c) * rhs(c);
      }
      x[static_cast<size_t>(r + j * kb)] = solve ? sum * at(r, r) : sum + at(r, r) * rhs(r);
    }
  }
  return x;
}

using kernel_case = std::tuple<int, element, bool>;

class TriangularBlockKernel : public testing::TestWithParam<kernel_case> {
 protected:
  void SetUp() override {
    if (!path_runs(std::get<0>(GetParam())))
      GTEST_SKIP() << path_tags[std::get<0>(GetParam())] << " does not run here";
  }
};

TEST_P(TriangularBlockKernel, MatchesLongDouble) {
  const int path = std::get<0>(GetParam());
  const bool solve = std::get<2>(GetParam());
  with_element_type(std::get<1>(GetParam()), [&](auto tag) {
    using T = decltype(tag);
    using Real = tav::real_t<T>;
    auto* kernel = block_kernel<T>(path, solve);
    std::mt19937_64 g(42);
    for (const int64_t kb : {1, 3, 4, 5, 8, 17, 95, 96, 128}) {
      for (const int64_t cols : {1, 3, 4, 5, 9, 17}) {
        for (const bool reversed : {false, true}) {
          for (const bool transposed : {false, true}) {
            SCOPED_TRACE(testing::Message() << "kb=" << kb << " cols=" << cols << " reversed="
                                            << reversed << " transposed=" << transposed);
            const std::vector<T> l = packed_triangle<T>(g, kb, solve);
            // Row r, column j of the block in a column-major (or, transposed, row-major)
            // matrix with spare rows; a reversed walk starts at the last row.
            const int64_t rows = transposed ? cols : kb, ld = (transposed ? cols : kb) + 3;
            guarded_matrix<T> storage(rows, transposed ? kb : cols, ld);
            fill_random(g, storage);
            const int64_t rs = transposed ? ld : 1, cs = transposed ? 1 : ld;
            std::vector<T> b(static_cast<size_t>(kb * cols));
            auto element = [&](int64_t r, int64_t j) -> T& {
              const int64_t row = reversed ? kb - 1 - r : r;
              return storage.data()[row * rs + j * cs];
            };
            for (int64_t j = 0; j < cols; ++j) {
              for (int64_t r = 0; r < kb; ++r) b[static_cast<size_t>(r + j * kb)] = element(r, j);
            }
            const T alpha = general_scalar<T>();
            const std::vector<wide_t<T>> want = reference(l, kb, alpha, solve, b);
            T* first = &element(0, 0);
            kernel(reinterpret_cast<const Real*>(l.data()), kb,
                   reinterpret_cast<const Real*>(&alpha), reinterpret_cast<Real*>(first),
                   reversed ? -rs : rs, cs, cols);
            EXPECT_TRUE(storage.intact());
            long double largest = 0, worst = 0;
            for (int64_t j = 0; j < cols; ++j) {
              for (int64_t r = 0; r < kb; ++r) {
                const wide_t<T> w = want[static_cast<size_t>(r + j * kb)];
                largest = std::max(largest, magnitude(w));
                worst = std::max(worst, magnitude(widen(element(r, j)) - w));
              }
            }
            // Condition near 1: a few rounding errors per term of the order-kb recurrence.
            EXPECT_LE(worst, 30.0L * static_cast<long double>(kb) *
                                 std::numeric_limits<Real>::epsilon() * largest);
          }
        }
      }
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Level3, TriangularBlockKernel,
                         testing::Combine(testing::Range(0, 8), all_elements(), testing::Bool()),
                         [](const testing::TestParamInfo<kernel_case>& info) {
                           return std::string(path_tags[std::get<0>(info.param)]) + "_" +
                                  element_name(std::get<1>(info.param)) +
                                  (std::get<2>(info.param) ? "_solve" : "_product");
                         });

}  // namespace
