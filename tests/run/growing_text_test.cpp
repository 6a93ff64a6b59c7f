#include "run/growing_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::u16string Read(GrowingText& text) { return text.data(); }

}  // namespace

TEST(GrowingText, StartsEmptyAndTerminated) {
  GrowingText text;
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.data()[0], 0);
}

TEST(GrowingText, KeepsItsUnitsAcrossTheEndOfItsInlineRoom) {
  // The room is 128 units, the terminator included.
  for (std::size_t size : {126u, 127u, 128u, 129u, 1000u}) {
    SCOPED_TRACE(size);
    std::u16string expected;
    for (std::size_t i = 0; i < size; ++i) expected += static_cast<char16_t>(u'a' + i % 26);
    GrowingText pushed;
    for (char16_t unit : expected) pushed.Push(unit);
    EXPECT_EQ(Read(pushed), expected);
    EXPECT_EQ(pushed.size(), size);
    GrowingText appended(expected);
    EXPECT_EQ(Read(appended), expected);
    appended.Append(expected);
    EXPECT_EQ(Read(appended), expected + expected);
  }
}

TEST(GrowingText, IsTerminatedAgainWhenCleared) {
  GrowingText text(std::u16string(200, u'x'));
  text.Clear();
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(Read(text), u"");
  text.Push(u'a');
  EXPECT_EQ(Read(text), u"a");
}
