#include "host/base_dir.h"

#include <gtest/gtest.h>

namespace {

CBaseDir Sample() {
  CBaseDir folder;
  folder.widePath = u"wide";
  folder.narrowPath = "narrow";
  folder.type = static_cast<CBaseDir::path_type>(3);
  folder.word = 7;
  return folder;
}

void ExpectSample(const CBaseDir& folder) {
  EXPECT_EQ(folder.widePath, u"wide");
  EXPECT_EQ(folder.narrowPath, "narrow");
  EXPECT_EQ(folder.type, static_cast<CBaseDir::path_type>(3));
  EXPECT_EQ(folder.word, 7u);
}

}  // namespace

TEST(BaseDir, CopiesAllOfItsParts) {
  const CBaseDir folder = Sample();
  const CBaseDir copy(folder);
  ExpectSample(copy);
  CBaseDir assigned;
  EXPECT_EQ(&(assigned = folder), &assigned);
  ExpectSample(assigned);
}

TEST(BaseDir, ConvertsToNarrowAndWideTextAndStrings) {
  const CBaseDir folder = Sample();
  EXPECT_STREQ(static_cast<const char*>(folder), "narrow");
  EXPECT_EQ(static_cast<const char16_t*>(folder), std::u16string_view(u"wide"));
  EXPECT_EQ(folder.operator std::string(), "narrow");
  EXPECT_EQ(folder.operator std::u16string(), u"wide");
}

TEST(BaseDir, TellsItsType) {
  EXPECT_EQ(Sample().GetType(), static_cast<CBaseDir::path_type>(3));
  EXPECT_EQ(CBaseDir().GetType(), CBaseDir::kUnknownPath);
}
