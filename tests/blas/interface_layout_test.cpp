// Results through the call interfaces in the four precisions (products and solves against a
// reference, row major against column major, level 1, quick returns) and the routines' names.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "interface_routines.hpp"

namespace {

using namespace tav::test;

template <class C>
class Interface : public testing::Test {};
using element_types = testing::Types<float, double, tav_complex8, tav_complex16>;
TYPED_TEST_SUITE(Interface, element_types);

constexpr int transpose_codes[] = {TAV_CBLAS_NO_TRANS, TAV_CBLAS_TRANS, TAV_CBLAS_CONJ_TRANS};

char letter_of(int code) {
  return code == TAV_CBLAS_NO_TRANS ? 'N' : code == TAV_CBLAS_TRANS ? 'T' : 'C';
}

// Leading dimensions above the row counts, so that a mixed-up one shows.
TYPED_TEST(Interface, GemmLayoutsAgreeWithReference) {
  using C = TypeParam;
  using R = routines<C>;
  const int m = 3, n = 4, k = 5;
  const C alpha = make<C>(2, -1), beta = make<C>(-1, 2), fill = make<C>(555, 555);
  for (int ta : transpose_codes)
    for (int tb : transpose_codes) {
      SCOPED_TRACE(std::string(1, letter_of(ta)) + letter_of(tb));
      const int rows_a = ta == TAV_CBLAS_NO_TRANS ? m : k, cols_a = m + k - rows_a;
      const int rows_b = tb == TAV_CBLAS_NO_TRANS ? k : n, cols_b = k + n - rows_b;
      const int lda = rows_a + 2, ldb = rows_b + 1, ldc = m + 3;
      const std::vector<C> a = small_integers<C>(static_cast<size_t>(lda * cols_a), 1);
      const std::vector<C> b = small_integers<C>(static_cast<size_t>(ldb * cols_b), 2);
      const std::vector<C> c0 = small_integers<C>(static_cast<size_t>(ldc * n), 3);

      std::vector<C> want = c0;
      reference_gemm(letter_of(ta), letter_of(tb), m, n, k, alpha, a.data(), lda, b.data(), ldb,
                     beta, want.data(), ldc);
      std::vector<C> fortran = c0, column = c0;
      const char tra = letter_of(ta), trb = letter_of(tb);
      R::gemm(&tra, &trb, &m, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta,
              fortran.data(), &ldc);
      R::cblas_gemm(TAV_CBLAS_COL_MAJOR, ta, tb, m, n, k, cblas_scalar(alpha), a.data(), lda,
                    b.data(), ldb, cblas_scalar(beta), column.data(), ldc);
      EXPECT_TRUE(same_values(fortran, want));
      EXPECT_TRUE(same_values(column, want));

      // The same matrices stored by rows, each leading dimension above its column count.
      const int lda_r = cols_a + 1, ldb_r = cols_b + 2, ldc_r = n + 1;
      const std::vector<C> a_r = to_row_major(a, rows_a, cols_a, lda, lda_r, fill);
      const std::vector<C> b_r = to_row_major(b, rows_b, cols_b, ldb, ldb_r, fill);
      std::vector<C> c_r = to_row_major(c0, m, n, ldc, ldc_r, fill);
      R::cblas_gemm(TAV_CBLAS_ROW_MAJOR, ta, tb, m, n, k, cblas_scalar(alpha), a_r.data(), lda_r,
                    b_r.data(), ldb_r, cblas_scalar(beta), c_r.data(), ldc_r);
      EXPECT_TRUE(same_values(c_r, to_row_major(want, m, n, ldc, ldc_r, fill)));
    }
}

TYPED_TEST(Interface, TrsmLayoutsAgreeWithReference) {
  using C = TypeParam;
  using R = routines<C>;
  const int m = 4, n = 5;
  const C alpha = make<C>(-2, 1), fill = make<C>(555, 555);
  for (int side : {TAV_CBLAS_LEFT, TAV_CBLAS_RIGHT})
    for (int uplo : {TAV_CBLAS_UPPER, TAV_CBLAS_LOWER})
      for (int ta : transpose_codes)
        for (int diag : {TAV_CBLAS_NON_UNIT, TAV_CBLAS_UNIT}) {
          const char s = side == TAV_CBLAS_LEFT ? 'L' : 'R';
          const char u = uplo == TAV_CBLAS_UPPER ? 'U' : 'L';
          const char t = letter_of(ta), d = diag == TAV_CBLAS_UNIT ? 'U' : 'N';
          SCOPED_TRACE((std::string{s, u, t, d}));
          const int order = side == TAV_CBLAS_LEFT ? m : n;
          const int lda = order + 1, ldb = m + 2;
          const std::vector<C> a = triangular<C>(order, lda, uplo == TAV_CBLAS_UPPER, 7);
          const std::vector<C> b0 = small_integers<C>(static_cast<size_t>(ldb * n), 8);

          std::vector<C> want = b0, fortran = b0, column = b0;
          reference_trsm(s, u, t, d, m, n, alpha, a.data(), lda, want.data(), ldb);
          R::trsm(&s, &u, &t, &d, &m, &n, &alpha, a.data(), &lda, fortran.data(), &ldb);
          R::cblas_trsm(TAV_CBLAS_COL_MAJOR, side, uplo, ta, diag, m, n, cblas_scalar(alpha),
                        a.data(), lda, column.data(), ldb);
          EXPECT_TRUE(same_values(fortran, want));
          EXPECT_TRUE(same_values(column, want));

          const int lda_r = order + 2, ldb_r = n + 1;
          const std::vector<C> a_r = to_row_major(a, order, order, lda, lda_r, fill);
          std::vector<C> b_r = to_row_major(b0, m, n, ldb, ldb_r, fill);
          R::cblas_trsm(TAV_CBLAS_ROW_MAJOR, side, uplo, ta, diag, m, n, cblas_scalar(alpha),
                        a_r.data(), lda_r, b_r.data(), ldb_r);
          EXPECT_TRUE(same_values(b_r, to_row_major(want, m, n, ldb, ldb_r, fill)));
        }
}

// m or n = 0 returns before C is read, whatever beta is; k = 0 still scales C by beta.
TYPED_TEST(Interface, GemmEmptyShapes) {
  using C = TypeParam;
  using R = routines<C>;
  const C alpha = make<C>(1), beta = make<C>(3, 1);
  const std::vector<C> c0 = small_integers<C>(12, 9), a = small_integers<C>(12, 10);
  for (auto [m, n] : {std::array{0, 3}, std::array{3, 0}}) {
    const int k = 2, ld = 4;
    std::vector<C> c = c0;
    R::gemm("N", "N", &m, &n, &k, &alpha, a.data(), &ld, a.data(), &ld, &beta, c.data(), &ld);
    R::cblas_gemm(TAV_CBLAS_ROW_MAJOR, TAV_CBLAS_NO_TRANS, TAV_CBLAS_NO_TRANS, m, n, k,
                  cblas_scalar(alpha), a.data(), ld, a.data(), ld, cblas_scalar(beta), c.data(),
                  ld);
    EXPECT_TRUE(same_bits(c, c0));
  }
  const int m = 3, n = 3, k = 0, ld = 4;
  std::vector<C> c = c0, want = c0;
  reference_gemm('N', 'N', m, n, k, alpha, a.data(), ld, a.data(), ld, beta, want.data(), ld);
  R::gemm("N", "N", &m, &n, &k, &alpha, a.data(), &ld, a.data(), &ld, &beta, c.data(), &ld);
  EXPECT_TRUE(same_values(c, want));
  EXPECT_FALSE(same_bits(c, c0));
}

// Element i of a strided vector, counted from the far end for a negative increment.
size_t position(int i, int n, int inc) {
  return static_cast<size_t>(inc >= 0 ? i * inc : (n - 1 - i) * -inc);
}

TYPED_TEST(Interface, AxpyAndScalThroughBothLayers) {
  using C = TypeParam;
  using R = routines<C>;
  const int n = 7;
  const C alpha = make<C>(3, -2);
  for (auto [incx, incy] : {std::array{1, 1}, std::array{2, -3}, std::array{-1, 2}}) {
    SCOPED_TRACE(std::to_string(incx) + "," + std::to_string(incy));
    const std::vector<C> x = small_integers<C>(static_cast<size_t>(n * 3), 11);
    const std::vector<C> y0 = small_integers<C>(static_cast<size_t>(n * 3), 12);
    std::vector<C> want = y0, fortran = y0, cblas = y0;
    for (int i = 0; i < n; ++i) {
      C& yi = want[position(i, n, incy)];
      yi = from_std<C>(to_std(alpha) * to_std(x[position(i, n, incx)]) + to_std(yi));
    }
    R::axpy(&n, &alpha, x.data(), &incx, fortran.data(), &incy);
    R::cblas_axpy(n, cblas_scalar(alpha), x.data(), incx, cblas.data(), incy);
    EXPECT_TRUE(same_values(fortran, want));
    EXPECT_TRUE(same_values(cblas, want));

    std::vector<C> scaled = y0, fortran_scaled = y0, cblas_scaled = y0;
    for (int i = 0; i < n; ++i) {
      C& yi = scaled[position(i, n, std::abs(incy))];
      yi = from_std<C>(to_std(alpha) * to_std(yi));
    }
    const int inc = std::abs(incy);
    R::scal(&n, &alpha, fortran_scaled.data(), &inc);
    R::cblas_scal(n, cblas_scalar(alpha), cblas_scaled.data(), inc);
    EXPECT_TRUE(same_values(fortran_scaled, scaled));
    EXPECT_TRUE(same_values(cblas_scaled, scaled));
  }
}

template <class C>
std_t<C> reference_dot(int n, const std::vector<C>& x, int incx, const std::vector<C>& y,
                       int incy) {
  std_t<C> sum = 0;
  for (int i = 0; i < n; ++i)
    sum += to_std(x[position(i, n, incx)]) * to_std(y[position(i, n, incy)]);
  return sum;
}

TYPED_TEST(Interface, DotProductsThroughBothLayers) {
  using C = TypeParam;
  const int n = 9;
  const std::vector<C> x = small_integers<C>(40, 13), y = small_integers<C>(40, 14);
  for (auto [incx, incy] : {std::array{1, 1}, std::array{3, -2}, std::array{-4, 1}}) {
    const std_t<C> want = reference_dot(n, x, incx, y, incy);
    if constexpr (std::is_same_v<C, float>) {
      EXPECT_EQ(SDOT(&n, x.data(), &incx, y.data(), &incy), want);
      EXPECT_EQ(cblas_sdot(n, x.data(), incx, y.data(), incy), want);
    } else if constexpr (std::is_same_v<C, double>) {
      EXPECT_EQ(DDOT(&n, x.data(), &incx, y.data(), &incy), want);
      EXPECT_EQ(cblas_ddot(n, x.data(), incx, y.data(), incy), want);
    } else {
      C got = make<C>(-99, -99);
      if constexpr (std::is_same_v<C, tav_complex8>)
        cblas_cdotu_sub(n, x.data(), incx, y.data(), incy, &got);
      else
        cblas_zdotu_sub(n, x.data(), incx, y.data(), incy, &got);
      EXPECT_EQ(to_std(got), want);
    }
  }
}

TEST(Names, EachRoutineIsOneFunctionUnderFourNames) {
  void* library = dlopen("libtav.so", RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(library, nullptr) << dlerror();
  std::vector<std::array<std::string, 4>> routines_by_name;
  for (const char* op : {"gemm", "trsm", "axpy", "scal", "dot"})
    for (char p : {'s', 'd', 'c', 'z'}) {
      if (std::string(op) == "dot" && (p == 'c' || p == 'z')) continue;
      std::string lower = std::string(1, p) + op, upper;
      for (char ch : lower) upper += static_cast<char>(ch - 'a' + 'A');
      routines_by_name.push_back({upper, lower, lower + "_", "tav_blas__" + lower});
    }
  routines_by_name.push_back({"LSAME", "lsame", "lsame_", "tav_lapack__lsame_"});
  for (const auto& names : routines_by_name) {
    void* first = dlsym(library, names[0].c_str());
    ASSERT_NE(first, nullptr) << names[0];
    for (const auto& name : names) EXPECT_EQ(dlsym(library, name.c_str()), first) << name;
  }
  dlclose(library);
}

}  // namespace
