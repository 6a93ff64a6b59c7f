// Searches and comparisons of short 16-bit texts: every length over the borders of words and blocks, and every place.

#include "platform/unit_scan.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr std::size_t kMostUnits = 20;

// So many different units, none of them a control or an 'x'.
std::u16string Letters(std::size_t count) {
  std::u16string text;
  for (std::size_t i = 0; i < count; ++i) text.push_back(static_cast<char16_t>(u'A' + i));
  return text;
}

}  // namespace

TEST(UnitScan, TextsAreTheSameOnlyIfEveryUnitIs) {
  for (std::size_t size = 0; size <= kMostUnits; ++size) {
    const std::u16string text = Letters(size);
    EXPECT_TRUE(IsSameText(text, std::u16string(text))) << size;
    EXPECT_FALSE(IsSameText(text, text + u"x")) << size;
    for (std::size_t i = 0; i < size; ++i) {
      std::u16string other = text;
      other[i] = static_cast<char16_t>(other[i] + 0x100);
      EXPECT_FALSE(IsSameText(text, other)) << size << ' ' << i;
    }
  }
}

TEST(UnitScan, AnEndIsFoundWhateverStandsInFrontOfIt) {
  const std::u16string text = Letters(kMostUnits);
  for (std::size_t size = 0; size <= kMostUnits; ++size) {
    std::u16string end = text.substr(kMostUnits - size);
    EXPECT_TRUE(EndsWithText(text, end)) << size;
    EXPECT_FALSE(EndsWithText(end, u"x" + end)) << size;
    if (size == 0) continue;
    end.front() = u'x';
    EXPECT_FALSE(EndsWithText(text, end)) << size;
  }
}

TEST(UnitScan, TheFirstOfAUnitFromAPlaceOnIsFound) {
  for (std::size_t size = 0; size <= kMostUnits; ++size) {
    std::u16string text = Letters(size);
    EXPECT_EQ(FindUnit(text, u'x', 0), std::u16string_view::npos) << size;
    for (std::size_t i = 0; i < size; ++i) {
      text = Letters(size);
      text[i] = u'x';
      text.back() = u'x';
      for (std::size_t start = 0; start <= i; ++start)
        EXPECT_EQ(FindUnit(text, u'x', start), i) << size << ' ' << start;
      EXPECT_EQ(FindUnit(text, u'x', i + 1), i + 1 < size ? size - 1 : std::u16string_view::npos) << size << ' ' << i;
    }
  }
  // A unit is more than its lower half.
  EXPECT_EQ(FindUnit(u"\u0178\u0178\u0178\u0178\u0178\u0178\u0178\u0178x", u'x', 0), 8u);
}

TEST(UnitScan, ControlsAreNeverPassedOver) {
  for (std::size_t size = 0; size <= kMostUnits; ++size) {
    EXPECT_FALSE(MayHoldControls(Letters(size))) << size;
    EXPECT_FALSE(MayHoldControls(std::u16string(size, u' '))) << size;
    EXPECT_FALSE(MayHoldControls(std::u16string(size, u'\u7FFF'))) << size;
    for (std::size_t i = 0; i < size; ++i) {
      for (const char16_t control : {u'\0', u'\n', u'\r', u'\u001F'}) {
        std::u16string text = Letters(size);
        text[i] = control;
        EXPECT_TRUE(MayHoldControls(text)) << size << ' ' << i;
      }
    }
  }
}
