// Reading numbers from text: the value to the last bit, where the reading stops, and what happens at the ends of the
// ranges. The C library's strtod, which rounds correctly, is the yardstick.
#include "run/number_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "platform/narrow_text.h"
#include "run/plain_number.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Scanned {
  double value;
  std::size_t consumed;
};

Scanned Scan(std::u16string_view text) {
  Scanned result = {-1.0, 999};
  result.value = ScanDouble(text, &result.consumed);
  return result;
}

// Equal to the bit, so that -0 is not 0.
testing::AssertionResult SameBits(double actual, double expected) {
  if (std::bit_cast<std::uint64_t>(actual) == std::bit_cast<std::uint64_t>(expected))
    return testing::AssertionSuccess();
  char text[128];
  std::snprintf(text, sizeof text, "%.17g (%a) instead of %.17g (%a)", actual, actual, expected, expected);
  return testing::AssertionFailure() << text;
}

// The whole text is one number, the one that strtod reads.
void ExpectAsStrtod(const std::string& text) {
  SCOPED_TRACE(text);
  const Scanned scanned = Scan(WideFromNarrow(text));
  EXPECT_TRUE(SameBits(scanned.value, std::strtod(text.c_str(), nullptr)));
  EXPECT_EQ(scanned.consumed, text.size());
}

std::string Digits(std::mt19937_64& random, std::size_t count) {
  std::string digits;
  while (digits.size() < count) digits += static_cast<char>('0' + random() % 10);
  return digits;
}

TEST(ScanDouble, ReadsSignDigitsPointAndExponent) {
  struct Row {
    std::u16string_view text;
    double value;
  };
  const Row rows[] = {
      {u"0", 0.0},        {u"7", 7.0},       {u"+7", 7.0},        {u"-7", -7.0},    {u"007", 7.0},  {u"12.5", 12.5},
      {u".5", 0.5},       {u"-.5", -0.5},    {u"+.5", 0.5},       {u"5.", 5.0},     {u"-5.", -5.0}, {u"1e3", 1000.0},
      {u"1E3", 1000.0},   {u"1e+3", 1000.0}, {u"25e-2", 0.25},    {u"1.e2", 100.0}, {u".5e1", 5.0}, {u"-1.5e1", -15.},
      {u"1e003", 1000.0}, {u"1e-0", 1.0},    {u"0.0625", 0.0625}, {u"00.50", 0.5},  {u"0e5", 0.0},  {u"0.000e-5", 0.0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(NarrowFromWide(row.text));
    const Scanned scanned = Scan(row.text);
    EXPECT_TRUE(SameBits(scanned.value, row.value));
    EXPECT_EQ(scanned.consumed, row.text.size());
  }
}

TEST(ScanDouble, StopsAtTheFirstUnitThatCannotGoOn) {
  struct Row {
    std::u16string_view text;
    double value;
    std::size_t consumed;
  };
  const Row rows[] = {
      {u"12M", 12.0, 2},    {u"1.2.3", 1.2, 3}, {u"1-2", 1.0, 1},     {u"1+2", 1.0, 1},    {u"1,5", 1.0, 1},
      {u"1 5", 1.0, 1},     {u"3px", 3.0, 1},   {u"50%", 50.0, 2},    {u"1e", 1.0, 1},     {u"1e+", 1.0, 1},
      {u"1e-", 1.0, 1},     {u"1em", 1.0, 1},   {u"1e-x", 1.0, 1},    {u"1.e", 1.0, 2},    {u"1e5e5", 1e5, 3},
      {u"1e2.5", 100.0, 3}, {u"0x10", 0.0, 1},  {u"-0x10", -0.0, 2},  {u"1d3", 1.0, 1},    {u"5..", 5.0, 2},
      {u"1f", 1.0, 1},      {u"1_000", 1.0, 1}, {u"1\u0665", 1.0, 1}, {u"1\uFF12", 1., 1}, {u"1\u0130", 1., 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(NarrowFromWide(row.text));
    const Scanned scanned = Scan(row.text);
    EXPECT_TRUE(SameBits(scanned.value, row.value));
    EXPECT_EQ(scanned.consumed, row.consumed);
  }
}

TEST(ScanDouble, ConsumesNothingWhereNoNumberBegins) {
  for (const std::u16string_view text :
       {u"",          u"-",   u"+",   u".",    u"-.",  u"+.",     u"--1",   u"+-1", u"-+1",
        u"- 1",       u" 1",  u"\t1", u"e5",   u".e5", u"-e5",    u"x",     u"inf", u"-inf",
        u"+infinity", u"nan", u"NaN", u"-nan", u",5",  u"\u0665", u"\uFF15"}) {
    SCOPED_TRACE(NarrowFromWide(text));
    const Scanned scanned = Scan(text);
    EXPECT_TRUE(SameBits(scanned.value, 0.0));
    EXPECT_EQ(scanned.consumed, 0u);
  }
}

// Nothing behind the view is looked at, a digit included.
TEST(ScanDouble, StopsAtTheEndOfTheView) {
  const std::u16string text = u"12e345";
  EXPECT_EQ(Scan(std::u16string_view(text).substr(0, 1)).value, 1.0);
  EXPECT_EQ(Scan(std::u16string_view(text).substr(0, 3)).consumed, 2u);
  EXPECT_EQ(Scan(std::u16string_view(text).substr(0, 4)).value, 12e3);
}

TEST(ScanDouble, KeepsTheSignOfZero) {
  for (const std::u16string_view text :
       {u"-0", u"-0.0", u"-.0", u"-0e9", u"-0.", u"-0.00000000000000000000000000000"}) {
    EXPECT_TRUE(SameBits(Scan(text).value, -0.0)) << NarrowFromWide(text);
  }
  EXPECT_TRUE(SameBits(Scan(u"+0").value, 0.0));
}

TEST(ScanDouble, IsInfiniteAboveTheRangeOfADouble) {
  // The largest double is 1.7976931348623157e308; from 1.797693134862315808e308 on rounding goes up and out of range.
  ExpectAsStrtod("1.7976931348623157e308");
  ExpectAsStrtod("-1.7976931348623157e308");
  ExpectAsStrtod("1.797693134862315807e308");
  for (const char* text : {"1.797693134862315809e308", "1e309", "1e400", "9e99999", "1e999999999999999999999",
                           "1234567890e300", "0.00001e320", "00001e309", "+1e309"}) {
    SCOPED_TRACE(text);
    const std::u16string wide = WideFromNarrow(text);
    EXPECT_TRUE(SameBits(Scan(wide).value, kInfinity));
    EXPECT_EQ(Scan(wide).consumed, wide.size());
    const std::u16string negative = u"-" + (wide[0] == u'+' ? wide.substr(1) : wide);
    EXPECT_TRUE(SameBits(Scan(negative).value, -kInfinity));
  }
  EXPECT_TRUE(SameBits(Scan(std::u16string(400, u'9')).value, kInfinity));
}

TEST(ScanDouble, IsZeroWithItsSignBelowTheRangeOfADouble) {
  // The smallest double above zero is 4.94e-324; half of it, 2.47e-324, and less is zero.
  ExpectAsStrtod("4.9406564584124654e-324");
  ExpectAsStrtod("2.5e-324");
  ExpectAsStrtod("2.2250738585072011e-308");
  for (const char* text :
       {"2.4e-324", "1e-324", "1e-400", "9e-99999", "1e-999999999999999999999", "0.00001e-320", "123456e-340"}) {
    SCOPED_TRACE(text);
    const std::u16string wide = WideFromNarrow(text);
    EXPECT_TRUE(SameBits(Scan(wide).value, 0.0));
    EXPECT_EQ(Scan(wide).consumed, wide.size());
    EXPECT_TRUE(SameBits(Scan(u"-" + wide).value, -0.0));
  }
  EXPECT_TRUE(SameBits(Scan(u"." + std::u16string(400, u'0') + u"1").value, 0.0));
}

TEST(ScanDouble, IsZeroWhateverTheExponentOfZero) {
  for (const std::u16string_view text : {u"0e309", u"0e99999", u"0.000e99999999999999999999", u"0e-99999"}) {
    EXPECT_TRUE(SameBits(Scan(text).value, 0.0)) << NarrowFromWide(text);
    EXPECT_EQ(Scan(text).consumed, text.size());
  }
  EXPECT_TRUE(SameBits(Scan(u"-0e309").value, -0.0));
}

// 9007199254740992 is 2 to the 53rd, the last integer below which all are exact; 22 is the last exact power of ten.
TEST(ScanDouble, RoundsCorrectlyWhereDigitsOutgrowADouble) {
  for (const char* text : {"9007199254740991",
                           "9007199254740992",
                           "9007199254740993",
                           "9007199254740994",
                           "9007199254740995",
                           "0.9007199254740991",
                           "0.9007199254740993",
                           "900719925474099.3",
                           "9007199254740993e-22",
                           "9007199254740993e22",
                           "1.0000000000000000000000",
                           "1.00000000000000011102230246251565404236316680908203125",
                           "1.00000000000000011102230246251565404236316680908203124",
                           "1.00000000000000011102230246251565404236316680908203126",
                           "0.0000000000000000000001",
                           "0.00000000000000000000001",
                           "0.0000000000000000000003",
                           "9999999999999999999",
                           "18446744073709551615",
                           "18446744073709551616",
                           "18446744073709551617",
                           "00000000000000000000000000000000000001.5",
                           "3.141592653589793238462643383279502884197"}) {
    ExpectAsStrtod(text);
    ExpectAsStrtod("-" + std::string(text));
  }
}

TEST(ScanDouble, RoundsCorrectlyOnRandomDecimals) {
  std::mt19937_64 random(20240611);
  for (int i = 0; i < 50'000; ++i) {
    std::string text = random() % 3 == 0 ? "-" : "";
    const std::size_t whole = random() % 20;
    text += Digits(random, whole);
    if (random() % 4 != 0 || whole == 0) text += '.' + Digits(random, random() % 25 + (whole == 0));
    if (random() % 4 == 0) {
      text += random() % 2 ? 'e' : 'E';
      if (random() % 2) text += random() % 2 ? '-' : '+';
      text += std::to_string(random() % 340);
    }
    ExpectAsStrtod(text);
    if (HasFailure()) return;
  }
}

// Every finite double comes back from its seventeen digits.
TEST(ScanDouble, ReadsBackRandomBitPatterns) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 50'000; ++i) {
    const double value = std::bit_cast<double>(random());
    if (!std::isfinite(value)) continue;
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    ASSERT_TRUE(SameBits(Scan(WideFromNarrow(text)).value, value)) << text;
  }
}

// A number may be longer than any buffer.
TEST(ScanDouble, ReadsNumbersOfAnyLength) {
  ExpectAsStrtod(std::string(2000, '0') + "12.5" + std::string(2000, '0'));
  ExpectAsStrtod("0." + std::string(300, '0') + std::string(300, '7'));
  ExpectAsStrtod(std::string(300, '7') + "." + std::string(300, '7'));
  ExpectAsStrtod(std::string(1500, '7') + "e-1500");
  ExpectAsStrtod("." + std::string(1500, '0') + "7e1500");
}

// The plain form of the same: what it takes it takes alike, what it refuses it leaves alone.
struct Plain {
  bool taken;
  double value;
  std::size_t consumed;
};

Plain ScanPlain(std::u16string_view text) {
  Plain plain = {false, -1.0, 0};
  const char16_t* const end = ScanPlainDouble(text.data(), text.data() + text.size(), &plain.value);
  plain.taken = end != nullptr;
  if (end) plain.consumed = static_cast<std::size_t>(end - text.data());
  return plain;
}

TEST(ScanPlainDouble, ReadsAFewDigitsWithSignAndPoint) {
  for (const std::u16string_view text : {u"0", u"-0", u"12", u"-12.5", u".5", u"-.25", u"123.456", u"0.001", u"1,2",
                                         u"1 2", u"1-2", u"1.5.5", u"10L", u"3px"}) {
    SCOPED_TRACE(NarrowFromWide(text));
    const Scanned scanned = Scan(text);
    const Plain plain = ScanPlain(text);
    EXPECT_TRUE(plain.taken);
    EXPECT_TRUE(SameBits(plain.value, scanned.value));
    EXPECT_EQ(plain.consumed, scanned.consumed);
  }
}

TEST(ScanPlainDouble, RefusesEveryOtherFormAndLeavesTheValueAlone) {
  for (const std::u16string_view text : {u"", u"-", u"+", u".", u"-.", u"x", u" 1", u"1e5", u"1E5", u"1.5e-3", u"inf",
                                         u"nan", u"12345678901234567890123", u"0.12345678901234567890123"}) {
    SCOPED_TRACE(NarrowFromWide(text));
    for (const std::size_t blanks : {0, 20}) {
      const Plain plain = ScanPlain(std::u16string(text) + std::u16string(blanks, u' '));
      EXPECT_FALSE(plain.taken);
      EXPECT_EQ(plain.value, -1.0);
    }
  }
}

// Numbers with much text behind them are read another way. No unit but an ASCII digit goes on with a number, whatever
// its low byte is.
TEST(ScanPlainDouble, ReadsShortNumbersAlikeWhateverStandsBehindThem) {
  constexpr std::string_view kDigits = "9038271645";
  for (std::size_t whole = 0; whole <= 6; ++whole) {
    for (std::size_t decimals = 0; decimals <= 10; ++decimals) {
      if (whole + decimals == 0) continue;
      for (const std::string_view sign : {"", "-", "+"}) {
        std::string number(sign);
        number += kDigits.substr(10 - whole);
        if (decimals > 0 || whole % 2 == 0) number += '.';
        number += kDigits.substr(0, decimals);
        for (const char16_t next : {u' ', u',', u'-', u'L', u'.', u'/', u':', u'+', u'\0', u'\u0130', u'\u3030',
                                    u'\u8039', u'\uFF10', u'\uFF2E'}) {
          if (next == u'.' && number.find('.') == std::string::npos) continue;
          SCOPED_TRACE(number + " " + std::to_string(next));
          const Plain plain = ScanPlain(WideFromNarrow(number) + next + std::u16string(30, u'7'));
          EXPECT_TRUE(plain.taken);
          EXPECT_EQ(plain.consumed, number.size());
          EXPECT_TRUE(SameBits(plain.value, std::strtod(number.c_str(), nullptr)));
        }
        for (const char16_t exponent : {u'e', u'E'}) {
          EXPECT_FALSE(ScanPlain(WideFromNarrow(number) + exponent + std::u16string(30, u'7')).taken) << number;
        }
      }
    }
  }
}

TEST(ScanPlainDouble, AgreesWithTheGeneralFormOnRandomTexts) {
  std::mt19937_64 random(99);
  constexpr std::u16string_view kUnits = u"00123456789..-+eE x";
  for (int i = 0; i < 100'000; ++i) {
    std::u16string text;
    for (std::size_t length = random() % 26; length > 0; --length) text += kUnits[random() % kUnits.size()];
    const Plain plain = ScanPlain(text);
    if (!plain.taken) {
      ASSERT_EQ(plain.consumed, 0u) << NarrowFromWide(text);
      continue;
    }
    const Scanned scanned = Scan(text);
    ASSERT_TRUE(SameBits(plain.value, scanned.value)) << NarrowFromWide(text);
    ASSERT_EQ(plain.consumed, scanned.consumed) << NarrowFromWide(text);
  }
}

TEST(LeadingNumber, SkipsWhiteSpaceInFront) {
  EXPECT_EQ(LeadingNumber(u"12.5mm"), 12.5);
  EXPECT_EQ(LeadingNumber(u" \t\n\v\f\r-3e1 7"), -30.0);
  EXPECT_EQ(LeadingNumber(u""), 0.0);
  EXPECT_EQ(LeadingNumber(u"   "), 0.0);
  EXPECT_EQ(LeadingNumber(u"x5"), 0.0);
}

// The blanks of other scripts, and controls below 9, are no white space here.
TEST(LeadingNumber, StopsAtOtherBlanks) {
  EXPECT_EQ(LeadingNumber(u"\u00A05"), 0.0);
  EXPECT_EQ(LeadingNumber(u"\u20035"), 0.0);
  EXPECT_EQ(LeadingNumber(u"\u00085"), 0.0);
  EXPECT_EQ(LeadingNumber(u"\u000E5"), 0.0);
}

TEST(LeadingInteger, ReadsSignAndDigitsBehindWhiteSpace) {
  struct Row {
    std::u16string_view text;
    std::int32_t value;
    std::size_t consumed;
  };
  const Row rows[] = {
      {u"0", 0, 1},   {u"42", 42, 2},   {u"-42", -42, 3},  {u"+42", 42, 3}, {u"007", 7, 3},    {u" \t\r\n 12x", 12, 7},
      {u"1.9", 1, 1}, {u"-1.9", -1, 2}, {u"1e3", 1, 1},    {u"0x10", 0, 1}, {u"12 34", 12, 2}, {u"5-3", 5, 1},
      {u"", 0, 0},    {u"  ", 0, 0},    {u"-", 0, 0},      {u"  +", 0, 0},  {u"- 5", 0, 0},    {u"--5", 0, 0},
      {u"x", 0, 0},   {u".5", 0, 0},    {u"\u0665", 0, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(NarrowFromWide(row.text));
    std::size_t consumed = 999;
    EXPECT_EQ(LeadingInteger(row.text, &consumed), row.value);
    EXPECT_EQ(consumed, row.consumed);
  }
  EXPECT_EQ(LeadingInteger(u"  9"), 9);
}

TEST(LeadingInteger, StopsAtTheEndsOf32Bits) {
  struct Row {
    std::u16string_view text;
    std::int32_t value;
  };
  const Row rows[] = {
      {u"2147483646", 2147483646},           {u"2147483647", 2147483647},
      {u"2147483648", 2147483647},           {u"4294967295", 2147483647},
      {u"4294967296", 2147483647},           {u"4294967297", 2147483647},
      {u"-2147483647", -2147483647},         {u"-2147483648", INT32_MIN},
      {u"-2147483649", INT32_MIN},           {u"-4294967295", INT32_MIN},
      {u"-4294967296", INT32_MIN},           {u"9223372036854775807", 2147483647},
      {u"9223372036854775808", 2147483647},  {u"18446744073709551616", 2147483647},
      {u"18446744073709551617", 2147483647}, {u"-99999999999999999999999999", INT32_MIN},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(NarrowFromWide(row.text));
    std::size_t consumed = 0;
    EXPECT_EQ(LeadingInteger(row.text, &consumed), row.value);
    EXPECT_EQ(consumed, row.text.size());
  }
}

TEST(Truncate, CutsTowardsZero) {
  EXPECT_EQ(Truncate(0.0), 0);
  EXPECT_EQ(Truncate(-0.0), 0);
  EXPECT_EQ(Truncate(0.999999), 0);
  EXPECT_EQ(Truncate(-0.999999), 0);
  EXPECT_EQ(Truncate(1.0), 1);
  EXPECT_EQ(Truncate(1.999999), 1);
  EXPECT_EQ(Truncate(-1.999999), -1);
  EXPECT_EQ(Truncate(5e-324), 0);
}

TEST(Truncate, GivesTheLeastIntegerForWhatDoesNotFit) {
  EXPECT_EQ(Truncate(2147483646.999), 2147483646);
  EXPECT_EQ(Truncate(2147483647.0), 2147483647);
  EXPECT_EQ(Truncate(2147483647.999), 2147483647);
  EXPECT_EQ(Truncate(2147483648.0), INT32_MIN);
  EXPECT_EQ(Truncate(-2147483647.0), -2147483647);
  EXPECT_EQ(Truncate(-2147483648.0), INT32_MIN);
  EXPECT_EQ(Truncate(-2147483648.999), INT32_MIN);
  EXPECT_EQ(Truncate(-2147483649.0), INT32_MIN);
  EXPECT_EQ(Truncate(4294967296.0), INT32_MIN);
  EXPECT_EQ(Truncate(1e300), INT32_MIN);
  EXPECT_EQ(Truncate(-1e300), INT32_MIN);
  EXPECT_EQ(Truncate(kInfinity), INT32_MIN);
  EXPECT_EQ(Truncate(-kInfinity), INT32_MIN);
  EXPECT_EQ(Truncate(std::numeric_limits<double>::quiet_NaN()), INT32_MIN);
}

TEST(NumberUnits, OnlyTheBlankAnd9To13AreSpaces) {
  for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
    EXPECT_EQ(IsSpace(static_cast<char16_t>(unit)), unit == 32 || (unit >= 9 && unit <= 13)) << unit;
    EXPECT_EQ(IsDigit(static_cast<char16_t>(unit)), unit >= '0' && unit <= '9') << unit;
  }
}

}  // namespace
