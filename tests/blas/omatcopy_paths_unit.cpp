// Every runnable path's sequential copy and transpose through the per-path entries: all letters,
// sizes, leading dimensions and strides, pure, scaling and NaN alpha, streaming stores.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

#include "blas/omatcopy/omatcopy_slots.hpp"
#include "code_paths.hpp"
#include "omatcopy_cases.hpp"

namespace {

using namespace tav::blas;  // each type's variants
using namespace tav::test::omatcopy;
using tav::test::omatcopy::index;  // not the C library's index()
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

// Path `path`'s entry for T, with the std::complex operands of the tests.
template <class T>
auto entry_of(int path) {
  static constexpr entry_fn<float>* s[8] = {TAV_PATH_VARIANTS(blas, somatcopy2_seq)};
  static constexpr entry_fn<double>* d[8] = {TAV_PATH_VARIANTS(blas, domatcopy2_seq)};
  static constexpr entry_fn<cfloat>* c[8] = {TAV_PATH_VARIANTS(blas, comatcopy2_seq)};
  static constexpr entry_fn<cdouble>* z[8] = {TAV_PATH_VARIANTS(blas, zomatcopy2_seq)};
  return [fn = tav::test::by_type<T>(s[path], d[path], c[path], z[path])](
             char ordering, char trans, index rows, index cols, T alpha, const T* a, index lda,
             index sa, T* b, index ldb, index sb, bool stream) {
    fn(ordering, trans, rows, cols, as_c(alpha), as_c(a), lda, sa, as_c(b), ldb, sb, stream);
  };
}

template <class T>
T scaling_alpha() {
  if constexpr (complex_v<T>)
    return T(0.75f, -1.3f);
  else
    return T(1.7f);
}

using OmatcopyPath = tav::test::path_test;

// Runs body(T{}) for the four element types.
template <class Body>
void for_each_type(Body body) {
  body(float{});
  body(double{});
  body(cfloat{});
  body(cdouble{});
}

// Checks case c with alpha 1 (a pure copy) and with a scaling alpha.
template <class T>
testing::AssertionResult check_both_alphas(int path, const call& c) {
  testing::AssertionResult pure = check_call(entry_of<T>(path), c, T(1));
  return pure ? check_call(entry_of<T>(path), c, scaling_alpha<T>()) : pure;
}

TEST_P(OmatcopyPath, EveryLetterSizesOneToTwenty) {
  for_each_type([path = GetParam()](auto tag) {
    using T = decltype(tag);
    for (const char* o = "RC"; *o; ++o)
      for (const char* t = "NTCR"; *t; ++t)
        for (index rows = 1; rows <= 20; ++rows)
          for (index cols = 1; cols <= 20; ++cols)
            ASSERT_TRUE(check_both_alphas<T>(path, call{*o, *t, rows, cols}));
  });
}

// Each shape once per letter pair and alpha, with the leading dimensions taking turns: tight,
// A wider, B wider. Lower-case letters on two shapes.
TEST_P(OmatcopyPath, LargerShapesLowerCaseAndWideLeadingDimensions) {
  for_each_type([path = GetParam()](auto tag) {
    using T = decltype(tag);
    const std::pair<index, index> extras[3] = {{0, 0}, {3, 0}, {0, 5}};
    for (const char* o = "RC"; *o; ++o)
      for (const char* t = "NTCR"; *t; ++t)
        for (size_t k = 0; k < larger_shapes().size(); ++k) {
          const auto& [rows, cols] = larger_shapes()[k];
          const auto& [lda_extra, ldb_extra] = extras[k % 3];
          ASSERT_TRUE(check_both_alphas<T>(path, call{*o, *t, rows, cols, lda_extra, ldb_extra}));
        }
    for (const char* o = "rc"; *o; ++o)
      for (const char* t = "ntcr"; *t; ++t)
        for (const call& c : {call{*o, *t, 37, 53, 2, 1}, call{*o, *t, 4, 4}})
          ASSERT_TRUE(check_both_alphas<T>(path, c));
  });
}

TEST_P(OmatcopyPath, ElementStrides) {
  for_each_type([path = GetParam()](auto tag) {
    using T = decltype(tag);
    for (const char* o = "RC"; *o; ++o)
      for (const char* t = "NTCR"; *t; ++t)
        for (const auto& [rows, cols] : {std::pair<index, index>{1, 1}, {5, 3}, {9, 14}, {33, 21}})
          for (const auto& [sa, sb] : {std::pair<index, index>{2, 1}, {1, 3}, {3, 2}})
            ASSERT_TRUE(check_both_alphas<T>(path, call{*o, *t, rows, cols, 1, 2, sa, sb}));
  });
}

TEST_P(OmatcopyPath, NaNAlphaScales) {
  for_each_type([path = GetParam()](auto tag) {
    using T = decltype(tag);
    const T nan(std::numeric_limits<real_of<T>>::quiet_NaN());
    for (const char* t = "NTCR"; *t; ++t) {
      const call c{'R', *t, 23, 9};
      ASSERT_TRUE(check_call(entry_of<T>(path), c, nan));
      const shape s = shape_of(c);
      std::vector<T> a(static_cast<size_t>(s.lda * s.a_lines), T(2));
      std::vector<T> b(static_cast<size_t>(s.ldb * s.b_lines));
      entry_of<T>(path)('R', *t, 23, 9, nan, a.data(), s.lda, 1, b.data(), s.ldb, 1, false);
      for (const T& x : b)
        ASSERT_TRUE(std::isnan(std::real(x)) && (!complex_v<T> || std::isnan(std::imag(x))));
    }
  });
}

TEST_P(OmatcopyPath, UnknownLettersAndEmptyMatricesWriteNothing) {
  for_each_type([path = GetParam()](auto tag) {
    using T = decltype(tag);
    for (const call& c :
         {call{'X', 'N', 5, 5}, call{'R', 'X', 5, 5}, call{'C', 'Q', 5, 5}, call{'r', ' ', 5, 5},
          call{'R', 'N', 0, 5}, call{'C', 'T', 5, 0}, call{'C', 'C', 0, 0}, call{'R', 'T', -3, 4}})
      ASSERT_TRUE(check_untouched(entry_of<T>(path), c, T(1)));
  });
}

// Stores that bypass the cache, on shapes beyond one tile: 320 x 512 puts every line of B on one
// alignment (whole cache lines) unless the leading dimension grows by one element.
TEST_P(OmatcopyPath, StreamingStores) {
  for_each_type([path = GetParam()](auto tag) {
    using T = decltype(tag);
    for (const char* o = "RC"; *o; ++o)
      for (const char* t = "NTCR"; *t; ++t)
        for (call c : {call{*o, *t, 320, 512}, call{*o, *t, 320, 512, 0, 1},
                       call{*o, *t, 37, 613}, call{*o, *t, 1000, 4, 2, 0}}) {
          c.stream = true;
          ASSERT_TRUE(check_both_alphas<T>(path, c));
        }
  });
}

INSTANTIATE_TEST_SUITE_P(EveryPath, OmatcopyPath, testing::Range(0, 8), tav::test::path_name);

}  // namespace
