// TAV_?omatcopy through the dispatcher: every letter, size class and alpha against the reference,
// the split of the parallel form, the variant each forced CPU type selects, and parallel results
// equal to sequential ones.
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <complex>
#include <cstdio>
#include <limits>
#include <string>

#include "blas/omatcopy/omatcopy.hpp"
#include "blas/omatcopy/omatcopy_slots.hpp"
#include "blas/omatcopy/omatcopy_split.hpp"
#include "child_process.hpp"
#include "code_paths.hpp"
#include "omatcopy_cases.hpp"

namespace {

using namespace tav::test::omatcopy;
using tav::test::omatcopy::index;  // not the C library's index()
using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

// The public entry for T, in the runner's signature (element strides are always 1).
template <class T>
auto public_entry() {
  return [](char ordering, char trans, index rows, index cols, T alpha, const T* a, index lda,
            index, T* b, index ldb, index, bool) {
    const size_t r = static_cast<size_t>(rows), c = static_cast<size_t>(cols);
    const size_t la = static_cast<size_t>(lda), lb = static_cast<size_t>(ldb);
    if constexpr (std::is_same_v<T, float>)
      TAV_Somatcopy(ordering, trans, r, c, alpha, a, la, b, lb);
    if constexpr (std::is_same_v<T, double>)
      TAV_Domatcopy(ordering, trans, r, c, alpha, a, la, b, lb);
    if constexpr (std::is_same_v<T, cfloat>)
      TAV_Comatcopy(ordering, trans, r, c, as_c(alpha), as_c(a), la, as_c(b), lb);
    if constexpr (std::is_same_v<T, cdouble>)
      TAV_Zomatcopy(ordering, trans, r, c, as_c(alpha), as_c(a), la, as_c(b), lb);
  };
}

// The internal template over std::complex, as the library's own callers use it.
template <class T>
auto internal_entry() {
  return [](char ordering, char trans, index rows, index cols, T alpha, const T* a, index lda,
            index, T* b, index ldb, index,
            bool) { tav::blas::omatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb); };
}

template <class T>
void letters_sizes_and_alpha(const char* name) {
  SCOPED_TRACE(name);
  const T nan(std::numeric_limits<real_of<T>>::quiet_NaN());
  T scaled;
  if constexpr (complex_v<T>)
    scaled = T(-0.5f, 2.25f);
  else
    scaled = T(2);
  for (const char* o = "RCrc"; *o; ++o)
    for (const char* t = "NTCRntcr"; *t; ++t)
      for (const auto& [rows, cols] :
           {std::pair<index, index>{1, 1}, {17, 17}, {100, 100}, {16, 300}, {21, 37}})
        for (const T alpha : {T(1), scaled, nan})
          for (index extra : {0, 1})  // tight, so that a copy may take B as one block, or not
            ASSERT_TRUE(check_call(public_entry<T>(), call{*o, *t, rows, cols, extra, 2 * extra},
                                   alpha));
  for (const call& c :
       {call{'X', 'N', 5, 5}, call{'R', 'x', 5, 5}, call{'C', 'N', 0, 5}, call{'R', 'T', 5, 0}})
    ASSERT_TRUE(check_untouched(public_entry<T>(), c, T(1)));
  ASSERT_TRUE(check_call(internal_entry<T>(), call{'C', 'C', 19, 23, 0, 3}, scaled));
}

TEST(Omatcopy, EveryTypeThroughThePublicEntries) {
  letters_sizes_and_alpha<float>("float");
  letters_sizes_and_alpha<double>("double");
  letters_sizes_and_alpha<cfloat>("complex float");
  letters_sizes_and_alpha<cdouble>("complex double");
}

// ---- the split of the parallel form ---------------------------------------------------------

using tav::blas::omatcopy_block;
using tav::blas::omatcopy_share;

bool operator==(const omatcopy_block& x, const omatcopy_block& y) {
  return x.row0 == y.row0 && x.rows == y.rows && x.col0 == y.col0 && x.cols == y.cols;
}

// Two-dimensional splits (powers of two) halve the longer side, rows first on a tie; the
// one-dimensional split gives extra columns to the last threads.
TEST(OmatcopyShare, SplitsAsDesigned) {
  const struct {
    index team, t, rows, cols;
    omatcopy_block expected;
  } cases[] = {
      {2, 0, 4, 8, {0, 4, 0, 4}},   {2, 1, 4, 8, {0, 4, 4, 4}},   // the columns are longer
      {4, 2, 8, 8, {4, 4, 0, 4}},   {4, 1, 8, 8, {0, 4, 4, 4}},   // 4 x 8, then 4 x 4
      {8, 5, 16, 2, {10, 2, 0, 2}},                                // rows only
      {3, 0, 7, 10, {0, 7, 0, 3}},  {3, 1, 7, 10, {0, 7, 3, 3}},  {3, 2, 7, 10, {0, 7, 6, 4}},
      // More threads than elements: 2 columns over 8 threads, the last two work.
      {8, 5, 2, 2, {0, 2, 0, 0}},   {8, 6, 2, 2, {0, 2, 0, 1}},   {8, 7, 2, 2, {0, 2, 1, 1}},
  };
  for (const auto& c : cases)
    EXPECT_TRUE(omatcopy_share(c.team, c.t, c.rows, c.cols) == c.expected)
        << c.team << " threads, thread " << c.t << ", " << c.rows << " x " << c.cols;
}

TEST(OmatcopyShare, SharesCoverTheMatrixOnce) {
  for (index team = 1; team <= 9; ++team)
    for (index rows : {1, 2, 3, 4, 8, 16, 17})
      for (index cols : {1, 2, 4, 5, 8, 32, 33}) {
        std::vector<int> hits(static_cast<size_t>(rows * cols), 0);
        for (index t = 0; t < team; ++t) {
          const omatcopy_block s = omatcopy_share(team, t, rows, cols);
          ASSERT_TRUE(s.row0 >= 0 && s.col0 >= 0 && s.rows >= 0 && s.cols >= 0);
          ASSERT_TRUE(s.row0 + s.rows <= rows && s.col0 + s.cols <= cols);
          for (index i = s.row0; i < s.row0 + s.rows; ++i)
            for (index j = s.col0; j < s.col0 + s.cols; ++j)
              ++hits[static_cast<size_t>(i * cols + j)];
        }
        for (int h : hits) ASSERT_EQ(h, 1) << team << " threads, " << rows << " x " << cols;
      }
}

// ---- forced CPU types and thread counts -----------------------------------------------------

const char* chosen_path() {
  using namespace tav::blas;
  omatcopy2_seq_fn<double>* const variants[8] = {TAV_PATH_VARIANTS(blas, domatcopy2_seq)};
  for (int k = 0; k < 8; ++k)
    if (tav::blas::domatcopy2_seq_dispatch.target() == variants[k]) return tav::test::path_tags[k];
  return "none";
}

// FNV-1a over the bytes of B for a battery of parallel-size calls of every type and letter pair.
template <class T>
void hash_outputs(uint64_t& hash) {
  for (const char* o = "RC"; *o; ++o)
    for (const char* t = "NTCR"; *t; ++t)
      for (const auto& [rows, cols] :
           {std::pair<index, index>{100, 100}, {128, 256}, {301, 77}, {64, 64}})
        for (const T alpha : {T(1), T(3)}) {
          const call c{*o, *t, rows, cols, 0, 3};
          if (!check_call(public_entry<T>(), c, alpha)) {
            std::printf("wrong result: %s\n", describe(c).c_str());
            return;
          }
          const shape s = shape_of(c);
          std::vector<T> a(static_cast<size_t>(s.lda * s.a_lines));
          for (size_t k = 0; k < a.size(); ++k) a[k] = operand<T>(static_cast<index>(k));
          std::vector<T> b(static_cast<size_t>(s.ldb * s.b_lines), T(0));
          public_entry<T>()(*o, *t, rows, cols, alpha, a.data(), s.lda, 1, b.data(), s.ldb, 1,
                            false);
          const unsigned char* bytes = reinterpret_cast<const unsigned char*>(b.data());
          for (size_t k = 0; k < b.size() * sizeof(T); ++k)
            hash = (hash ^ bytes[k]) * 1099511628211u;
        }
}

TAV_SCENARIO(omatcopy_battery) {
  uint64_t hash = 14695981039346656037u;
  hash_outputs<float>(hash);
  hash_outputs<double>(hash);
  hash_outputs<cfloat>(hash);
  hash_outputs<cdouble>(hash);
  std::printf("path=%s threads=%d hash=%016llx\n", chosen_path(),
              tav_serv_domain_get_max_threads(TAV_DOMAIN_ALL),
              static_cast<unsigned long long>(hash));
}

std::string field(const std::string& out, const std::string& name) {
  const size_t at = out.find(name + "=");
  if (at == std::string::npos) return {};
  const size_t start = at + name.size() + 1;
  return out.substr(start, out.find_first_of(" \n", start) - start);
}

struct forced_type {
  const char* type;
  const char* path;
};

class OmatcopyForcedType : public testing::TestWithParam<forced_type> {};

TEST_P(OmatcopyForcedType, SlotTakesThePathAndResultsMatchTheReference) {
  const auto r =
      tav::test::run_child("omatcopy_battery", {{"TAV_DEBUG_CPU_TYPE", GetParam().type}});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out.find("wrong"), std::string::npos) << r.out;
  EXPECT_EQ(field(r.out, "path"), GetParam().path) << r.out;
}

INSTANTIATE_TEST_SUITE_P(TypesThisMachineRuns, OmatcopyForcedType,
                         testing::Values(forced_type{"0", "def"}, forced_type{"1", "def"},
                                         forced_type{"2", "mc"}, forced_type{"3", "mc3"},
                                         forced_type{"4", "avx"}, forced_type{"5", "avx2"}));

TEST(OmatcopyThreads, TwoThreadsWriteWhatOneThreadWrites) {
  const auto one = tav::test::run_child("omatcopy_battery", {{"TAV_NUM_THREADS", "1"}});
  const auto two = tav::test::run_child("omatcopy_battery", {{"TAV_NUM_THREADS", "2"}});
  ASSERT_EQ(one.exit_code, 0) << one.err;
  ASSERT_EQ(two.exit_code, 0) << two.err;
  EXPECT_EQ(one.out.find("wrong"), std::string::npos) << one.out;
  EXPECT_EQ(two.out.find("wrong"), std::string::npos) << two.out;
  EXPECT_EQ(field(one.out, "threads"), "1");
  EXPECT_EQ(field(two.out, "threads"), "2");
  EXPECT_EQ(field(one.out, "hash"), field(two.out, "hash"));
  EXPECT_FALSE(field(one.out, "hash").empty());
}

TEST(OmatcopyThreads, ReproducibleModeTakesTheReproducibleVariant) {
  const auto r = tav::test::run_child("omatcopy_battery", {{"TAV_CBWR", "COMPATIBLE"}});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out.find("wrong"), std::string::npos) << r.out;
  EXPECT_EQ(field(r.out, "path"), "cnr_def");
}

}  // namespace
