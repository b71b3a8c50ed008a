// The sequential copy and transpose of every code path this processor runs, called through the
// per-path entries: all letters, sizes 1..20 and odd larger ones, leading dimensions and element
// strides beyond the minimum, pure and scaling alpha, NaN alpha, stores that bypass the cache.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

#include "blas/omatcopy/omatcopy2_seq_fn.hpp"
#include "common/path_naming.hpp"
#include "omatcopy_cases.hpp"

extern "C" {
tav::blas::omatcopy2_seq_fn<float> TAV_PATH_VARIANTS(blas, somatcopy2_seq);
tav::blas::omatcopy2_seq_fn<double> TAV_PATH_VARIANTS(blas, domatcopy2_seq);
tav::blas::omatcopy2_seq_fn<tav_complex8> TAV_PATH_VARIANTS(blas, comatcopy2_seq);
tav::blas::omatcopy2_seq_fn<tav_complex16> TAV_PATH_VARIANTS(blas, zomatcopy2_seq);
}

namespace {

using namespace tav::test::omatcopy;
using tav::test::omatcopy::index;  // not the C library's index()
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

// The eight variants of each type in path-id order.
template <class T>
struct variants;
template <>
struct variants<float> {
  static constexpr entry_fn<float>* table[8] = {TAV_PATH_VARIANTS(blas, somatcopy2_seq)};
};
template <>
struct variants<double> {
  static constexpr entry_fn<double>* table[8] = {TAV_PATH_VARIANTS(blas, domatcopy2_seq)};
};
template <>
struct variants<cfloat> {
  static constexpr entry_fn<cfloat>* table[8] = {TAV_PATH_VARIANTS(blas, comatcopy2_seq)};
};
template <>
struct variants<cdouble> {
  static constexpr entry_fn<cdouble>* table[8] = {TAV_PATH_VARIANTS(blas, zomatcopy2_seq)};
};

const char* const path_names[8] = {"def", "cnr_def", "mc",        "mc3",
                                   "avx", "avx2",    "avx512_tp", "avx512"};

bool runs_here(int path) {
  __builtin_cpu_init();
  switch (path) {
    case 2: return __builtin_cpu_supports("ssse3");
    case 3: return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
    case 4: return __builtin_cpu_supports("avx") && __builtin_cpu_supports("sse4.2");
    case 5: return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    case 6: return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx2");
    case 7:
      return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
             __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
    default: return true;
  }
}

// Path `path`'s entry for T, with the std::complex operands of the tests.
template <class T>
auto entry_of(int path) {
  return [fn = variants<T>::table[path]](char ordering, char trans, index rows, index cols, T alpha,
                                         const T* a, index lda, index sa, T* b, index ldb, index sb,
                                         bool stream) {
    fn(ordering, trans, rows, cols, as_c(alpha), as_c(a), lda, sa, as_c(b), ldb, sb, stream);
  };
}

template <class T>
T scaling_alpha() {
  if constexpr (is_complex<T>)
    return T(0.75f, -1.3f);
  else
    return T(1.7f);
}

template <class T>
T nan_alpha() {
  return T(std::numeric_limits<real_t<T>>::quiet_NaN());
}

class OmatcopyPath : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (!runs_here(GetParam())) GTEST_SKIP() << path_names[GetParam()] << " does not run here";
  }
};

template <class T>
void every_letter_small_sizes(int path) {
  for (const char* o = "RC"; *o; ++o)
    for (const char* t = "NTCR"; *t; ++t)
      for (index rows = 1; rows <= 20; ++rows)
        for (index cols = 1; cols <= 20; ++cols) {
          const call c{*o, *t, rows, cols};
          ASSERT_TRUE(check_call(entry_of<T>(path), c, T(1)));
          ASSERT_TRUE(check_call(entry_of<T>(path), c, scaling_alpha<T>()));
        }
}

TEST_P(OmatcopyPath, EveryLetterSizesOneToTwenty) {
  every_letter_small_sizes<float>(GetParam());
  every_letter_small_sizes<double>(GetParam());
  every_letter_small_sizes<cfloat>(GetParam());
  every_letter_small_sizes<cdouble>(GetParam());
}

// Each shape once per letter pair and alpha, with the leading dimensions taking turns: tight,
// A wider, B wider. Lower-case letters on two shapes.
template <class T>
void larger_shapes_and_leading_dimensions(int path) {
  const std::pair<index, index> extras[3] = {{0, 0}, {3, 0}, {0, 5}};
  for (const char* o = "RC"; *o; ++o)
    for (const char* t = "NTCR"; *t; ++t)
      for (size_t k = 0; k < larger_shapes().size(); ++k) {
        const auto& [rows, cols] = larger_shapes()[k];
        const auto& [lda_extra, ldb_extra] = extras[k % 3];
        const call c{*o, *t, rows, cols, lda_extra, ldb_extra};
        ASSERT_TRUE(check_call(entry_of<T>(path), c, T(1)));
        ASSERT_TRUE(check_call(entry_of<T>(path), c, scaling_alpha<T>()));
      }
  for (const char* o = "rc"; *o; ++o)
    for (const char* t = "ntcr"; *t; ++t)
      for (const call& c : {call{*o, *t, 37, 53, 2, 1}, call{*o, *t, 4, 4}}) {
        ASSERT_TRUE(check_call(entry_of<T>(path), c, T(1)));
        ASSERT_TRUE(check_call(entry_of<T>(path), c, scaling_alpha<T>()));
      }
}

TEST_P(OmatcopyPath, LargerShapesLowerCaseAndWideLeadingDimensions) {
  larger_shapes_and_leading_dimensions<float>(GetParam());
  larger_shapes_and_leading_dimensions<double>(GetParam());
  larger_shapes_and_leading_dimensions<cfloat>(GetParam());
  larger_shapes_and_leading_dimensions<cdouble>(GetParam());
}

template <class T>
void element_strides(int path) {
  for (const char* o = "RC"; *o; ++o)
    for (const char* t = "NTCR"; *t; ++t)
      for (const auto& [rows, cols] : {std::pair<index, index>{1, 1}, {5, 3}, {9, 14}, {33, 21}})
        for (const auto& [sa, sb] : {std::pair<index, index>{2, 1}, {1, 3}, {3, 2}}) {
          const call c{*o, *t, rows, cols, 1, 2, sa, sb};
          ASSERT_TRUE(check_call(entry_of<T>(path), c, T(1)));
          ASSERT_TRUE(check_call(entry_of<T>(path), c, scaling_alpha<T>()));
        }
}

TEST_P(OmatcopyPath, ElementStrides) {
  element_strides<float>(GetParam());
  element_strides<double>(GetParam());
  element_strides<cfloat>(GetParam());
  element_strides<cdouble>(GetParam());
}

template <class T>
void nan_alpha_fills_with_nan(int path) {
  for (const char* t = "NTCR"; *t; ++t) {
    const call c{'R', *t, 23, 9};
    ASSERT_TRUE(check_call(entry_of<T>(path), c, nan_alpha<T>()));
    const shape s = shape_of(c);
    std::vector<T> a(static_cast<size_t>(s.lda * s.a_lines), T(2));
    std::vector<T> b(static_cast<size_t>(s.ldb * s.b_lines));
    entry_of<T>(path)('R', *t, 23, 9, nan_alpha<T>(), a.data(), s.lda, 1, b.data(), s.ldb, 1,
                      false);
    for (const T& x : b) {
      if constexpr (is_complex<T>)
        ASSERT_TRUE(std::isnan(x.real()) && std::isnan(x.imag()));
      else
        ASSERT_TRUE(std::isnan(x));
    }
  }
}

TEST_P(OmatcopyPath, NaNAlphaScales) {
  nan_alpha_fills_with_nan<float>(GetParam());
  nan_alpha_fills_with_nan<double>(GetParam());
  nan_alpha_fills_with_nan<cfloat>(GetParam());
  nan_alpha_fills_with_nan<cdouble>(GetParam());
}

template <class T>
void leaves_b_untouched(int path) {
  for (const call& c :
       {call{'X', 'N', 5, 5}, call{'R', 'X', 5, 5}, call{'C', 'Q', 5, 5}, call{'r', ' ', 5, 5},
        call{'R', 'N', 0, 5}, call{'C', 'T', 5, 0}, call{'C', 'C', 0, 0}, call{'R', 'T', -3, 4}})
    ASSERT_TRUE(check_untouched(entry_of<T>(path), c, T(1)));
}

TEST_P(OmatcopyPath, UnknownLettersAndEmptyMatricesWriteNothing) {
  leaves_b_untouched<float>(GetParam());
  leaves_b_untouched<double>(GetParam());
  leaves_b_untouched<cfloat>(GetParam());
  leaves_b_untouched<cdouble>(GetParam());
}

// Stores that bypass the cache, on shapes beyond one tile: 320 x 512 puts every line of B on one
// alignment (whole cache lines) unless the leading dimension grows by one element.
template <class T>
void streaming_stores(int path) {
  for (const char* o = "RC"; *o; ++o)
    for (const char* t = "NTCR"; *t; ++t)
      for (call c : {call{*o, *t, 320, 512}, call{*o, *t, 320, 512, 0, 1}, call{*o, *t, 37, 613},
                     call{*o, *t, 1000, 4, 2, 0}}) {
        c.stream = true;
        ASSERT_TRUE(check_call(entry_of<T>(path), c, T(1)));
        ASSERT_TRUE(check_call(entry_of<T>(path), c, scaling_alpha<T>()));
      }
}

TEST_P(OmatcopyPath, StreamingStores) {
  streaming_stores<float>(GetParam());
  streaming_stores<double>(GetParam());
  streaming_stores<cfloat>(GetParam());
  streaming_stores<cdouble>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(EveryPath, OmatcopyPath, testing::Range(0, 8),
                         [](const testing::TestParamInfo<int>& info) {
                           return std::string(path_names[info.param]);
                         });

}  // namespace
