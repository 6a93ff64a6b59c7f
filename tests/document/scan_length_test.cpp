#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "document/node_access.h"

namespace {

struct Length {
  std::u16string number;
  int unit;
  std::size_t consumed;
  bool operator==(const Length&) const = default;
};

Length Scan(std::u16string_view text) {
  GrowingText number(u"old");
  UnitCode unit = kPica;
  const std::size_t consumed = ScanLength(text, number, &unit);
  return {std::u16string(number), unit, consumed};
}

struct Row {
  std::u16string_view text;
  std::u16string_view number;
  int unit;
  std::size_t consumed;
};

template <std::size_t N>
void ExpectRows(const Row (&rows)[N]) {
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.text.begin(), row.text.end()));
    EXPECT_EQ(Scan(row.text), (Length{std::u16string(row.number), row.unit, row.consumed}));
  }
}

}  // namespace

TEST(ScanLength, KnowsEightUnitsOfWhichTwoAreNeverFound) {
  ExpectRows({
      {u"12", u"12", 0, 2},   {u"12mm", u"12", 1, 2}, {u"12MM", u"12", 1, 2},  {u"12mM", u"12", 1, 2},
      {u"12in", u"12", 2, 2}, {u"12In", u"12", 2, 2}, {u"12cm", u"12", 3, 2},  {u"12CM", u"12", 0, 2},
      {u"12pt", u"12", 4, 2}, {u"12PT", u"12", 0, 2}, {u"12px", u"12", 5, 2},  {u"12PX", u"12", 0, 2},
      {u"2em", u"2e", 0, 2},  {u"2ex", u"2e", 0, 2},  {u"12pc", u"12", 8, 2},  {u"12Pc", u"12", 0, 2},
      {u"12%", u"12", 0, 2},  {u"12m", u"12", 0, 2},  {u"12mmm", u"12", 1, 2}, {u"12xmm", u"12", 0, 2},
  });
}

TEST(ScanLength, TheNumberHoldsWhatItsLettersAllow) {
  ExpectRows({
      {u"1.5.2", u"1.5", 0, 3},
      {u".5.2", u".5", 0, 2},
      {u"3-4", u"3", 0, 1},
      {u"-3-4", u"-3", 0, 2},
      {u"--3", u"-", 0, 1},
      {u"1e-4", u"1e-4", 0, 4},
      {u"1E-4-5", u"1E-4-5", 0, 6},  // with an exponent no minus ends the number
      {u"e-4", u"e-4", 0, 3},
      {u"+3+4", u"+3+4", 0, 4},
      {u"1*2/3+4", u"1*2/3+4", 0, 7},
      {u"1,2", u"1", 0, 1},
      {u"a1", u"", 0, 0},
      {u"", u"", 0, 0},
      {u"mm", u"", 1, 0},
      {u"1)2", u"1", 0, 1},  // 41, the unit below the first that is taken
      {u"1:2", u"1", 0, 1},  // 58, the unit above the last
  });
}

TEST(ScanLength, CountsBlanksInFrontButNotBehind) {
  ExpectRows({
      {u"  12", u"12", 0, 4},
      {u"12  ", u"12", 0, 2},
      {u"12  px", u"12", 5, 2},
      {u"  12 px", u"12", 5, 4},
      {u" \u00A0"
       u"12",
       u"", 0, 1},
  });
}

TEST(ScanLength, TheNumberGoesOnAcrossATabOrALineEnd) {
  ExpectRows({
      {u"1\n2", u"12", 0, 2},
      {u"1\t2", u"12", 0, 2},
      {u"1\r\n2px", u"12", 5, 2},
      {u"\t1", u"1", 0, 1},
      {u"1\n  2", u"12", 0, 4},    // the blanks in front of the rest are counted
      {u"1 \n2", u"1", 0, 1},      // the blank ends it before
      {u"1.5\n.5", u"1.5", 0, 3},  // it is still one number with one point
      {u"1\n-2", u"1", 0, 1},
      {u"1\v2", u"1", 0, 1},
      {u"1\f2", u"1", 0, 1},
      {u"12\npx", u"12", 5, 2},
      {u"12 \npx", u"12", 0, 2},
  });
}
