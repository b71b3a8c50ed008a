// The processor text of the version record for each CPU class and vendor.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "service/version/processor_text.hpp"

namespace {

using tav::service::processor_text;

constexpr const char* generic = "Orvat(R) Architecture processors";

TEST(ProcessorText, GenericForOtherVendorsAndTheCompatibleClass) {
  for (int type = -1; type <= 10; ++type) EXPECT_STREQ(processor_text(false, type), generic) << type;
  EXPECT_STREQ(processor_text(true, 1), generic);
  EXPECT_STREQ(processor_text(true, -1), generic);
  EXPECT_STREQ(processor_text(true, 10), generic);
}

TEST(ProcessorText, NamesTheInstructionSetClass) {
  EXPECT_STREQ(processor_text(true, 5),
               "Orvat(R) Advanced Vector Extensions 2 (Orvat(R) AVX2) enabled processors");
  EXPECT_STREQ(processor_text(true, 3),
               "Orvat(R) Streaming SIMD Extensions 4.2 (Orvat(R) SSE4.2) enabled processors");
}

TEST(ProcessorText, TellsEveryClassApartIncludingTheRefinedOnes) {
  std::set<std::string> texts;
  for (int type : {0, 2, 3, 4, 5, 6, 7, 8, 9}) {
    std::string text = processor_text(true, type);
    EXPECT_EQ(text.rfind("Orvat(R) ", 0), 0u) << text;
    EXPECT_NE(text.find("processors"), std::string::npos) << text;
    texts.insert(text);
  }
  EXPECT_EQ(texts.size(), 9u);
  EXPECT_EQ(texts.count(generic), 0u);
}

}  // namespace
