// The version record and the blank-padded version string at every buffer length.
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

const std::string text =
    "Orvat(R) Numerikon Library Version 2019.0.2 Product Build 20190118 for Orvat(R) 64 "
    "architecture applications";

// Calls `get` on a buffer of `length` bytes followed by guard bytes, and returns all of them.
std::string written(void (*get)(char*, int), int length) {
  std::vector<char> buffer(static_cast<size_t>(std::max(length, 0)) + 8, '#');
  get(buffer.data(), length);
  return std::string(buffer.begin(), buffer.end());
}

class VersionString : public testing::TestWithParam<void (*)(char*, int)> {};

TEST_P(VersionString, FillsExactlyTheBuffersLength) {
  auto get = GetParam();
  const int n = static_cast<int>(text.size());
  // Exact fit: no terminator, nothing written past the text.
  EXPECT_EQ(written(get, n), text + "########");
  // Longer: blanks up to the length, still no terminator.
  EXPECT_EQ(written(get, n + 5), text + "     ########");
  // Shorter: the text is cut.
  EXPECT_EQ(written(get, 10), text.substr(0, 10) + "########");
  EXPECT_EQ(written(get, 0), "########");
  EXPECT_EQ(written(get, -3), "########");
}

INSTANTIATE_TEST_SUITE_P(Forms, VersionString,
                         testing::Values(&tav_serv_get_version_string, &TAV_Get_Version_String,
                                         &TAV_GET_VERSION_STRING));

TEST(VersionRecord, HoldsTheReleaseFields) {
  for (auto get : {&tav_serv_get_version, &TAV_Get_Version}) {
    TAVVersion version{};
    get(&version);
    EXPECT_EQ(version.MajorVersion, 2019);
    EXPECT_EQ(version.MinorVersion, 0);
    EXPECT_EQ(version.UpdateVersion, 2);
    EXPECT_STREQ(version.ProductStatus, "Product");
    EXPECT_STREQ(version.Build, "20190118");
    EXPECT_STREQ(version.Platform, "Orvat(R) 64 architecture");
    if (!tav_serv_orvat_cpu_true()) EXPECT_STREQ(version.Processor, "Orvat(R) Architecture processors");
  }
}

}  // namespace
