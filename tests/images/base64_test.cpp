#include "images/base64.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/narrow_text.h"
#include "tests/images/image_bench.h"

using namespace std::string_literals;

TEST(Base64, DecodesTheTextsOfTheStandard) {
  const struct {
    const char16_t* text;
    const char* bytes;
  } cases[] = {
      {u"", ""},
      {u"Zg==", "f"},
      {u"Zm8=", "fo"},
      {u"Zm9v", "foo"},
      {u"Zm9vYg==", "foob"},
      {u"Zm9vYmE=", "fooba"},
      {u"Zm9vYmFy", "foobar"},
  };
  for (const auto& c : cases) EXPECT_EQ(DecodeBase64(c.text), c.bytes) << c.bytes;
}

TEST(Base64, EveryLetterOfTheAlphabetHasItsSextet) {
  // The 64 letters in order are the sextets 0 to 63: 000000 000001 000010 000011 is 00 10 83, and so on.
  std::string expected;
  for (unsigned sextet = 0; sextet < 64; sextet += 4) {
    const unsigned group = sextet << 18 | (sextet + 1) << 12 | (sextet + 2) << 6 | (sextet + 3);
    expected += {static_cast<char>(group >> 16), static_cast<char>(group >> 8), static_cast<char>(group)};
  }
  EXPECT_EQ(DecodeBase64(u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"), expected);
}

TEST(Base64, ThePaddingNeedNotBeThereAndIsNotCounted) {
  EXPECT_EQ(DecodeBase64(u"Zg"), "f");
  EXPECT_EQ(DecodeBase64(u"Zm8"), "fo");
  EXPECT_EQ(DecodeBase64(u"Zg="), "f");
  EXPECT_EQ(DecodeBase64(u"Zm9v===="), "foo");
}

TEST(Base64, ASingleSextetAtTheEndGivesNothing) {
  EXPECT_EQ(DecodeBase64(u"Z"), "");
  EXPECT_EQ(DecodeBase64(u"Zm9vZ"), "foo");
}

TEST(Base64, SextetsLeftOverAreFilledWithZero) {
  // "//" is 111111 111111: one byte of ones and four bits that are dropped. "///" holds two bytes.
  EXPECT_EQ(DecodeBase64(u"//"), "\xFF");
  EXPECT_EQ(DecodeBase64(u"///"), "\xFF\xFF");
}

TEST(Base64, EndsAtTheFirstEqualSign) {
  EXPECT_EQ(DecodeBase64(u"Zm9v=Zm9v"), "foo");
  EXPECT_EQ(DecodeBase64(u"Zm=9v"), "f");
  EXPECT_EQ(DecodeBase64(u"=Zm9v"), "");
}

TEST(Base64, EndsAtTheFirstUnitThatIsNeitherOfTheAlphabetNorWhiteSpace) {
  for (const char16_t unit : u"-_.,;:!%&#*@[`{\u007F\u0080\u00E9\u0141\uFF21\u0001"s) {
    EXPECT_EQ(DecodeBase64(u"Zm9v"s + unit + u"Zm9v"), "foo") << static_cast<int>(unit);
  }
  EXPECT_EQ(DecodeBase64(u"Zm9v\0Zm9v"s), "foo");
}

TEST(Base64, WhiteSpaceIsSkippedWhereverItStands) {
  EXPECT_EQ(DecodeBase64(u" Z\tm\n9\vv\fY\rmFy \r\n"), "foobar");
  EXPECT_EQ(DecodeBase64(u" \t\r\n"), "");
}

TEST(Base64, GivesEveryLengthBack) {
  std::string bytes;
  for (int i = 0; i < 300; ++i) {
    EXPECT_EQ(DecodeBase64(WideFromNarrow(EncodeBase64(bytes))), bytes) << i;
    bytes += static_cast<char>(i * 7);
  }
}
