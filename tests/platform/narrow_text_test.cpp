#include "platform/narrow_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string AllBytes() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes.push_back(static_cast<char>(byte));
  return bytes;
}

}  // namespace

TEST(NarrowText, BytesAreWindows1252) {
  // The row of 80 to 9F, which is where the code page differs from the first 256 characters.
  const std::u16string row =
      u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
      u"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";
  EXPECT_EQ(WideFromNarrow(AllBytes().substr(0x80, 0x20)), row);
  EXPECT_EQ(WideFromNarrow("\xA0\xE4\xFF"), u"\u00A0\u00E4\u00FF");
  EXPECT_EQ(WideFromNarrow("aZ~\x7F\t"), u"aZ~\u007F\t");
}

TEST(NarrowText, EveryByteSurvivesTheRoundTrip) {
  const std::string bytes = AllBytes();
  EXPECT_EQ(NarrowFromWide(WideFromNarrow(bytes)), bytes);
  for (const char byte : bytes) EXPECT_EQ(NarrowFromWide(WideFromNarrow({&byte, 1})), std::string(1, byte));
}

TEST(NarrowText, AUnitOutsideTheCodePageIsAQuestionMark) {
  EXPECT_EQ(NarrowFromWide(u"a\u4E00\u0100\u0080\uFFFFb"), "a????b");
  EXPECT_EQ(NarrowFromWide(u"\U0001F600"), "??");
}

TEST(NarrowText, SpecialBytesAreFoundAtEachPlaceOfABlock) {
  for (std::size_t length = 1; length < 40; ++length) {
    for (std::size_t place = 0; place < length; ++place) {
      std::string narrow(length, 'x');
      std::u16string wide(length, u'x');
      narrow[place] = '\x80';
      wide[place] = u'\u20AC';
      EXPECT_EQ(WideFromNarrow(narrow), wide);
      EXPECT_EQ(NarrowFromWide(wide), narrow);
      wide[place] = u'\u8078';  // the low byte of this is a letter
      narrow[place] = '?';
      EXPECT_EQ(NarrowFromWide(wide), narrow);
    }
  }
}

TEST(NarrowText, IsWrittenInPlaceAndAppended) {
  char16_t wide[] = u"begun xx.";
  WidenNarrow("\x80!", wide + 6);
  WidenNarrow("", wide + 8);
  EXPECT_EQ(std::u16string_view(wide), u"begun \u20AC!.");
  std::string narrow = "begun ";
  AppendNarrowFromWide(narrow, u"\u20AC!");
  AppendNarrowFromWide(narrow, u"");
  EXPECT_EQ(narrow, "begun \x80!");
}

TEST(Utf8, GoesBothWaysAtEveryLength) {
  const std::u16string wide = u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF";
  const std::string utf8 = "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
  EXPECT_EQ(Utf8FromWide(wide), utf8);
  EXPECT_EQ(WideFromUtf8(utf8), wide);
  const std::string nul("a\0b", 3);
  EXPECT_EQ(Utf8FromWide(WideFromUtf8(nul)), nul);
}

TEST(Utf8, HalfASurrogatePairBecomesTheReplacement) {
  const char16_t high = 0xD83D;
  const char16_t low = 0xDE00;
  EXPECT_EQ(Utf8FromWide(std::u16string{high, low}), "\xF0\x9F\x98\x80");
  EXPECT_EQ(Utf8FromWide(std::u16string{high}), "\xEF\xBF\xBD");
  EXPECT_EQ(Utf8FromWide(std::u16string{low}), "\xEF\xBF\xBD");
  EXPECT_EQ(Utf8FromWide(std::u16string{high, u'x'}), "\xEF\xBF\xBDx");
  EXPECT_EQ(Utf8FromWide(std::u16string{low, high}), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(Utf8FromWide(std::u16string{high, high, low}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

TEST(Utf8, EachLongestIllFormedPieceIsOneReplacement) {
  EXPECT_EQ(WideFromUtf8("a\x80z"), u"a\uFFFDz");
  EXPECT_EQ(WideFromUtf8("\xBF\xBF"), u"\uFFFD\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xC0\xAF"), u"\uFFFD\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xC1\xBF"), u"\uFFFD\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xE0\x80\xAF"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xF0\x8F\xBF\xBF"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xF5\x80\xFF"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF"
                         "A"),
            u"\uFFFD\uFFFD\uFFFD\uFFFDA");
  EXPECT_EQ(WideFromUtf8("\xC3"), u"\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xE4\xB8"), u"\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xF0\x9F\x98"), u"\uFFFD");
  EXPECT_EQ(WideFromUtf8("\xE4\xB8x"), u"\uFFFDx");
}
