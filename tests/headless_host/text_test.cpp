#include "headless_host/text.h"

#include <gtest/gtest.h>

using namespace headless;

TEST(HostText, WritesEveryLengthOfUtf8) {
  EXPECT_EQ(Utf8FromText(u"A\u00E9\u20AC\U0001F600"), "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(HostText, AnUnpairedSurrogateBecomesTheReplacementCharacter) {
  const char16_t text[] = {u'a', 0xD800, u'b', 0xDC00, 0xD83D, 0};
  EXPECT_EQ(Utf8FromText(text),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(HostText, ReadsEveryLengthOfUtf8) {
  EXPECT_EQ(TextFromUtf8("A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), u"A\u00E9\u20AC\U0001F600");
}

TEST(HostText, AnInvalidSequenceBecomesOneReplacementForEachMaximalPart) {
  EXPECT_EQ(TextFromUtf8("\xE2\x82"
                         "A"),
            u"\uFFFDA");                                                     // cut short: one part
  EXPECT_EQ(TextFromUtf8("\xC0\x80"), u"\uFFFD\uFFFD");                      // overlong: two bytes that begin nothing
  EXPECT_EQ(TextFromUtf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");            // a surrogate
  EXPECT_EQ(TextFromUtf8("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");  // above the last character
  EXPECT_EQ(TextFromUtf8("\xF0\x9F\x98"), u"\uFFFD");                        // cut short at the end
}

TEST(HostText, TellsUtf8FromOtherBytes) {
  EXPECT_TRUE(IsUtf8(""));
  EXPECT_TRUE(IsUtf8("\xC3\xA9"));
  EXPECT_FALSE(IsUtf8("caf\xE9"));
  EXPECT_FALSE(IsUtf8("\xC3"));
}

TEST(HostText, EveryByteSurvivesTheNarrowCodePageBothWays) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
  const std::u16string text = TextFromNarrow(bytes);
  ASSERT_EQ(text.size(), 256u);
  EXPECT_EQ(text[0x80], u'\u20AC');
  EXPECT_EQ(text[0x99], u'\u2122');
  EXPECT_EQ(text[0xE9], u'\u00E9');
  for (const int unassigned : {0x81, 0x8D, 0x8F, 0x90, 0x9D}) {
    EXPECT_EQ(text[static_cast<std::size_t>(unassigned)], unassigned);
  }
  EXPECT_EQ(NarrowFromText(text), bytes);
}

TEST(HostText, AUnitWithoutAByteHasNoNarrowText) {
  EXPECT_EQ(NarrowFromText(u"\u0394"), std::nullopt);
  EXPECT_EQ(NarrowFromText(u"\u0080"), std::nullopt);  // its byte stands for the euro sign
}

TEST(HostText, AFileNameIsUtf8OrElseNarrow) {
  EXPECT_EQ(TextFromNativePath("/\xC3\xA9"), u"/\u00E9");
  EXPECT_EQ(TextFromNativePath("/\xE9\x80"), u"/\u00E9\u20AC");
}
