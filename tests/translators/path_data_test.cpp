#include "translators/path_data.h"

#include <cctype>
#include <cstdlib>
#include <random>
#include <string>

#include "tests/translators/translator_fixture.h"

namespace {

struct ScanCase {
  ScanFrom from;
  const char* in;
  const char* out;
  std::size_t consumed;
};

void ExpectScans(std::size_t (*scan)(ScanFrom, std::u16string_view, GrowingText&),
                 std::initializer_list<ScanCase> cases) {
  for (const ScanCase& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.in));
    GrowingText out(u"left from before");
    EXPECT_EQ(scan(c.from, WideFromNarrow(c.in), out), c.consumed);
    EXPECT_EQ(Utf8FromWide(out), c.out);
  }
}

constexpr ScanFrom kLetter = ScanFrom::Letter;
constexpr ScanFrom kNumber = ScanFrom::Number;

}  // namespace

// --- Pairs of numbers

TEST(ScanCoordinatePair, TheCommandLetterIsSkippedAndCounted) {
  ExpectScans(ScanCoordinatePair,
              {{kLetter, "L10 20", "10 20", 6}, {kNumber, "10 20", "10 20", 5}, {kLetter, "L", "", 1}});
}

TEST(ScanCoordinatePair, BlanksAndCommasSeparateInAnyNumberAndCommasBecomeBlanks) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "10,20", "10 20", 5},
                                   {kNumber, "10 , ,20", "10    20", 8},
                                   {kNumber, "  10 20", "10 20", 7},
                                   {kLetter, "L  10 20", "10 20", 8}});
}

TEST(ScanCoordinatePair, AMinusBehindACharacterBeginsTheSecondNumber) {
  ExpectScans(ScanCoordinatePair,
              {{kNumber, "10-20", "10 -20", 5}, {kNumber, "-10-20", "-10 -20", 6}, {kNumber, "--1", "- -1", 3}});
}

TEST(ScanCoordinatePair, AMinusBehindTheSecondNumberEndsItWithABlankAndIsLeft) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "1 2-3", "1 2 ", 3}, {kNumber, "1-2-3", "1 -2 ", 3}});
}

TEST(ScanCoordinatePair, AnExponentKeepsEveryMinusUpToTheEndOfItsNumber) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "1e-2 3", "1e-2 3", 6},
                                   {kNumber, "1E-2-3 4", "1E-2-3 4", 8},
                                   {kNumber, "1 2e-3-4", "1 2e-3-4", 8},
                                   // The flag of the first number doesn't hold for the second.
                                   {kNumber, "1e2 3-4", "1e2 3 ", 5}});
}

TEST(ScanCoordinatePair, APointNeverEndsANumber) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "1.5.5", "1.5.5", 5}, {kNumber, ".5.5 1.2.3", ".5.5 1.2.3", 10}});
}

TEST(ScanCoordinatePair, AsteriskSlashAndPlusAreNumberCharacters) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "*1/2+3 4", "*1/2+3 4", 8}});
}

TEST(ScanCoordinatePair, OneBlankOrCommaBehindThePairIsConsumed) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "1,2 ,3,4", "1 2 ", 4},
                                   {kNumber, "1,2,3,4", "1 2 ", 4},
                                   {kNumber, "1 2  3", "1 2 ", 4},
                                   {kNumber, "1 2", "1 2", 3}});
}

TEST(ScanCoordinatePair, AnyOtherCharacterEndsANumberAndIsLeft) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "10px20", "10", 2},
                                   {kNumber, "10 20px", "10 20", 5},
                                   {kNumber, "1 2L3 4", "1 2", 3},
                                   {kNumber, "x", "", 0},
                                   {kNumber, "", "", 0}});
}

TEST(ScanCoordinatePair, AUnitThatBeginsWithELeavesItsE) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "1em 2", "1e", 2}, {kNumber, "1 2ex", "1 2e", 4}});
}

TEST(ScanCoordinatePair, ALoneNumberComesWithItsSeparator) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "5", "5", 1}, {kNumber, "5, ", "5  ", 3}});
}

TEST(ScanCoordinatePair, ATabOrLineEndIsDroppedUncountedAndTheNumberGoesOn) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "1\t2 3", "12 3", 4},
                                   {kNumber, "1\n2\r3 4", "123 4", 5},
                                   {kNumber, "1 2\t3", "1 23", 4},
                                   {kNumber, "\t1 2", "1 2", 3},
                                   {kNumber, "1\t", "1", 1}});
}

TEST(ScanCoordinatePair, ADroppedTabLetsAMinusIntoTheFirstNumberButNotIntoTheSecond) {
  ExpectScans(ScanCoordinatePair, {{kNumber, "1\t-2 3", "1-2 3", 5}, {kNumber, "1 2\t-3", "1 2 ", 3}});
}

TEST(ScanCoordinatePair, ManyDigitsAreTaken) {
  const std::string digits(1000, '7');
  ExpectScans(ScanCoordinatePair, {{kNumber, (digits + " 1").c_str(), (digits + " 1").c_str(), 1002}});
}

// --- Single numbers

TEST(ScanNumber, TheCommandLetterIsSkippedAndCounted) {
  ExpectScans(ScanNumber, {{kLetter, "H10", "10", 3}, {kNumber, "10", "10", 2}, {kLetter, "H", "", 1}});
}

TEST(ScanNumber, BlanksInFrontAreCountedAndSeparatorsBehindAreLeft) {
  ExpectScans(ScanNumber, {{kNumber, "  10", "10", 4},
                           {kLetter, "H 10", "10", 4},
                           {kNumber, "10 20", "10", 2},
                           {kNumber, "10,20", "10", 2},
                           {kNumber, ",10", "", 0}});
}

TEST(ScanNumber, AMinusBehindACharacterEndsIt) {
  ExpectScans(ScanNumber, {{kNumber, "10-20", "10", 2}, {kNumber, "-10-20", "-10", 3}, {kNumber, "--1", "-", 1}});
}

TEST(ScanNumber, AMinusBehindAnExponentDoesNot) {
  ExpectScans(ScanNumber, {{kNumber, "1e-4", "1e-4", 4}, {kNumber, "1E-4-5", "1E-4-5", 6}});
}

TEST(ScanNumber, ASecondPointEndsIt) {
  ExpectScans(ScanNumber, {{kNumber, "1.5.5", "1.5", 3}, {kNumber, ".5.5", ".5", 2}});
}

TEST(ScanNumber, UnitsAreCutOff) {
  ExpectScans(ScanNumber, {{kNumber, "10px", "10", 2},
                           {kNumber, "10pt", "10", 2},
                           {kNumber, "10mm", "10", 2},
                           {kNumber, "10in", "10", 2},
                           {kNumber, "10cm", "10", 2},
                           {kNumber, "10%", "10", 2},
                           {kNumber, "1em", "1e", 2},
                           {kNumber, "1ex", "1e", 2}});
}

TEST(ScanNumber, AsteriskSlashAndPlusAreNumberCharacters) { ExpectScans(ScanNumber, {{kNumber, "*/+1", "*/+1", 4}}); }

TEST(ScanNumber, NothingNumericIsAnEmptyText) {
  ExpectScans(ScanNumber, {{kNumber, "abc", "", 0}, {kNumber, "", "", 0}});
}

TEST(ScanNumber, ATabOrLineEndIsDroppedUncountedAndTheNumberGoesOn) {
  ExpectScans(ScanNumber, {{kNumber, "1\t2", "12", 2}, {kNumber, "\n1\r2", "12", 2}, {kNumber, "1\n", "1", 1}});
}

TEST(ScanNumber, WhatStoodInFrontOfATabStillCountsBehindIt) {
  ExpectScans(ScanNumber, {{kNumber, "1\t-2", "1", 1}, {kNumber, "1.5\t.5", "1.5", 3}, {kNumber, "1e\t-2", "1e-2", 4}});
}

// --- The path element

namespace {

class PathData : public TranslatorTest {
 protected:
  Lines Path(std::string_view d) { return Fresh("<path d='" + std::string(d) + "'/>"); }

  // What the element must leave when its data is cut into this program: the program, the trailer and the path's end.
  void ExpectProgram(std::string_view d, std::string_view program) {
    SCOPED_TRACE(d);
    EXPECT_EQ(Path(d), MachinePath(std::string(program) + " Z2 0 0 M"));
  }
};

}  // namespace

TEST_F(PathData, PathIsOpenedOnceAndEndedWithAFlatFill) {
  // (10, 20) is 1, 10 - 2 in host units; no record tells of a path without any style.
  EXPECT_EQ(Path("M10 20 L30 40 M50 60 L70 80"),
            Records("PATH", "LINE 1,8 3,6", "LINE 5,4 7,2", "ENDP", "FDEF flat 1"));
}

TEST_F(PathData, EachLetterWritesItsOperator) {
  const struct {
    const char* d;
    const char* program;
  } cases[] = {
      {"M1 2 L3 4", "1 2 M 3 4 L"},
      {"M1 2 l3 4", "1 2 M 3 4 l"},
      {"m1 2 m3 4 L5 5", "1 2 m 3 4 m 5 5 L"},
      {"M1 2 H3", "1 2 M 3 H"},
      {"M1 2 h3", "1 2 M 3 h"},
      {"M1 2 V3", "1 2 M 3 V"},
      {"M1 2 v3", "1 2 M 3 v"},
      {"M1 2 C3 4 5 6 7 9", "1 2 M 3 4 5 6 7 9 C"},
      {"M1 2 c3 4 5 6 7 9", "1 2 M 3 4 5 6 7 9 c"},
      {"M1 2 S3 4 5 7", "1 2 M 3 4 5 7 Sc"},
      {"M1 2 s3 4 5 7", "1 2 M 3 4 5 7 sc"},
      {"M1 2 L9 5 T3 4", "1 2 M 9 5 L 3 4 Tp"},
      {"M1 2 L9 5 t3 4", "1 2 M 9 5 L 3 4 tp"},
      {"M1 2 Q30 4 5 60", "1 2 M 30 4 5 60 Q"},
      {"M1 2 q30 4 5 60", "1 2 M 30 4 5 60 q"},
      {"M1 2 A5 6 7 0 1 9 8", "1 2 M 5 6 7 0 1 9 8 A"},
      {"M1 2 a5 6 7 1 0 9 8", "1 2 M 5 6 7 1 0 9 8 a"},
      {"M1 2 L9 5 L3 8 Z", "1 2 M 9 5 L 3 8 L Z"},
      {"M1 2 L9 5 L3 8 z", "1 2 M 9 5 L 3 8 L Z"},
  };
  for (const auto& c : cases) {
    ExpectProgram(c.d, c.program);
    // A tab in front of a letter changes nothing.
    std::string tabbed;
    for (const char* unit = c.d; *unit; ++unit) {
      if (std::isalpha(static_cast<unsigned char>(*unit))) tabbed += "&#9;";
      tabbed += *unit;
    }
    ExpectProgram(tabbed + "&#9;", c.program);
  }
}

TEST_F(PathData, NumbersBehindAMoveAreLines) {
  ExpectProgram("M10 20 30 40", "10 20 M 30 40 L");
  ExpectProgram("m1 2 3 4", "1 2 m 3 4 l");
  EXPECT_EQ(Path("M10 20 30 40"), Records("PATH", "LINE 1,8 3,6", "ENDP", "FDEF flat 1"));
}

TEST_F(PathData, NumbersBehindACommandRepeatIt) {
  const struct {
    const char* d;
    const char* program;
  } cases[] = {
      {"M0 0 L1 2 3 4 5 6", "0 0 M 1 2 L 3 4 L 5 6 L"},
      {"M5 5 H10 20", "5 5 M 10 H 20 H"},
      {"M5 5 v10 20", "5 5 M 10 v 20 v"},
      {"M0 0 C1 1 2 2 3 3 4 4 5 5 6 6 ", "0 0 M 1 1 2 2 3 3 C 4 4 5 5 6 6 C"},
      {"M0 0 s1 1 2 3 4 5 6 7", "0 0 M 1 1 2 3 sc 4 5 6 7 sc"},
      {"M0 1 L9 5 T3 4 5 6", "0 1 M 9 5 L 3 4 Tp 5 6 Tp"},
      {"M3 4 Q30 4 5 60 70 8 9 10", "3 4 M 30 4 5 60 Q 70 8 9 10 Q"},
      {"M3 4 a5 6 7 0 1 9 8 6 5 4 1 0 2 3", "3 4 M 5 6 7 0 1 9 8 a 6 5 4 1 0 2 3 a"},
  };
  for (const auto& c : cases) ExpectProgram(c.d, c.program);
}

TEST_F(PathData, MinusSignsAloneSeparate) {
  ExpectProgram("M1-2-3-4", "1 -2 M -3 -4 L");
  ExpectProgram("M1-2l-3-4-5-6", "1 -2 M -3 -4 l -5 -6 l");
}

TEST_F(PathData, AnExponentIsOneNumber) {
  ExpectProgram("M0 0 L1e-2 3", "0 0 M 0.01 3 L");
  ExpectProgram("M0 0 L1E1,2e+1", "0 0 M 10 20 L");
}

TEST_F(PathData, GluedDecimalsOfAPairAreCutByTheMachine) {
  // The pair is the one text ".5.5", of which the machine makes the numbers .5 and 5.
  EXPECT_EQ(Path("M0 0L.5.5"), Records("PATH", "LINE 0,10 0.05,9.5", "ENDP", "FDEF flat 1"));
}

TEST_F(PathData, GluedDecimalsOfASingleNumberAreCutByTheScanner) {
  // "H.5.5": the scan ends at the second point, and a point repeats no command.
  ExpectProgram("M3 4H.5.5 L9 9", "3 4 M .5 H");
}

TEST_F(PathData, APointOrPlusRepeatsNoCommandAndStops) {
  ExpectProgram("M0 0 L1 1 .5 .5 L9 9", "0 0 M 1 1 L");
  ExpectProgram("M0 0 L1 1 +5 5 L9 9", "0 0 M 1 1 L");
}

TEST_F(PathData, ACommaWhereACommandIsDueStops) {
  ExpectProgram("M5 5 H10,20 L9 9", "5 5 M 10 H");
  ExpectProgram("M1,2 ,3,4 L9 9", "1 2 M");
  // One comma belongs to the pair in front of it.
  ExpectProgram("M1,2,3,4,5,6", "1 2 M 3 4 L 5 6 L");
}

TEST_F(PathData, AnUnknownLetterStopsAndWhatStandsInFrontOfItStays) {
  for (const char* letter : {"X", "B", "b", "R", "e", "E", "%", "#", "_"}) {
    ExpectProgram("M0 0 L1 1 " + std::string(letter) + "2 2 L3 3", "0 0 M 1 1 L");
  }
}

TEST_F(PathData, ANumberBehindACloseRepeatsTheCommandBeforeTheClose) {
  ExpectProgram("M1 1 Z 2 2", "1 1 M Z 2 2 L");
  ExpectProgram("M1 1 Z2 2", "1 1 M Z 2 2 L");
  ExpectProgram("M1 1 L5 1 L5 5 H7 z 3", "1 1 M 5 1 L 5 5 L 7 H Z 3 H");
}

TEST_F(PathData, ACloseConsumesOneCharacter) {
  ExpectProgram("M1 1L5 1L5 5zZM7 7L8 8", "1 1 M 5 1 L 5 5 L Z Z 7 7 M 8 8 L");
}

TEST_F(PathData, CommandsBehindASmoothCurveKeepTheirMeaning) {
  // The letter that tells a smooth curve from a stroke stays behind all later operators.
  ExpectProgram("M1 1 S2 2 3 4 L4 4", "1 1 M 2 2 3 4 Sc 4 4 Lc");
  ExpectProgram("M1 1 S2 2 3 4 M9 9 H4 v5 c1 2 3 4 5 6 Q30 4 5 60 a5 6 7 1 0 9 8 T4 4",
                "1 1 M 2 2 3 4 Sc 9 9 M 4 H 5 v 1 2 3 4 5 6 c 30 4 5 60 Q 5 6 7 1 0 9 8 a 4 4 Tp");
  ExpectProgram("M1 1 L9 5 t2 2 c1 2 3 4 5 6 s1 2 3 4 h5 m4 4 l3 3",
                "1 1 M 9 5 L 2 2 tp 1 2 3 4 5 6 c 1 2 3 4 sc 5 h 4 4 m 3 3 l");
}

// A number that is not plain to its end goes the way of the operator text, where the unit behind it is lost and what
// follows is a number of its own.
TEST_F(PathData, ANumberThatGoesOnBehindAnotherIsTwo) {
  ExpectProgram("M5 5L1 1.5.5", "5 5 M 1 1.5 5 L");
  ExpectProgram("M5 5L1 2+3", "5 5 M 1 2 3 L");
  ExpectProgram("M5 5L1 2/3", "5 5 M 1 2 3 L");
  ExpectProgram("M5 5L1 2*3", "5 5 M 1 2 3 L");
  ExpectProgram("M5 5H7+6", "5 5 M 7 6 H");
  ExpectProgram("M5 5V7/6", "5 5 M 7 6 V");
  ExpectProgram("M5 5h7*6", "5 5 M 7 6 h");
  ExpectProgram("M5 5C1 2 3 4 5 6+7", "5 5 M 1 2 3 4 5 6 7 C");
  ExpectProgram("M5 5S1 2 3 4/7", "5 5 M 1 2 3 4 7 Sc");
  ExpectProgram("M5 5Q30 2 3 4*7", "5 5 M 30 2 3 4 7 Q");
}

// Commands of all letters, with every way to part their numbers and with letters left out where they repeat.
TEST_F(PathData, RandomCommandsBecomeTheirProgram) {
  struct Command {
    char letter;
    int numbers;
    const char* name;
  };
  constexpr Command kCommands[] = {{'L', 2, "L"},  {'l', 2, "l"},  {'H', 1, "H"}, {'h', 1, "h"},  {'V', 1, "V"},
                                   {'v', 1, "v"},  {'C', 6, "C"},  {'c', 6, "c"}, {'S', 4, "Sc"}, {'s', 4, "sc"},
                                   {'T', 2, "Tp"}, {'t', 2, "tp"}, {'Q', 4, "Q"}, {'q', 4, "q"},  {'M', 2, "M"},
                                   {'m', 2, "m"},  {'A', 7, "A"},  {'a', 7, "a"}, {'z', 0, "Z"}};
  constexpr const char* kFractions[] = {"", "", ".5", ".25", ".125", ".", ".10"};
  std::mt19937 random(1);
  const auto below = [&random](unsigned n) { return static_cast<unsigned>(random()) % n; };
  for (int path = 0; path < 30; ++path) {
    std::string d = "M1 2";
    std::string program = "1 2 M";
    char last = 'M';
    for (int i = 0; i < 12; ++i) {
      const Command& command = kCommands[below(std::size(kCommands))];
      // Numbers behind a moveto would be lines, and a letter may be left out only behind a blank.
      const bool leftOut = command.letter == last && command.numbers > 0 && last != 'M' && last != 'm';
      d += leftOut ? " " : std::string(below(2), ' ') + command.letter + std::string(below(2), ' ');
      const bool arc = command.numbers == 7;
      for (int n = 0; n < command.numbers; ++n) {
        const bool flag = arc && (n == 3 || n == 4);
        const bool negative = !flag && below(3) == 0;
        const std::string number =
            flag ? std::to_string(below(2))
                 : (negative ? "-" : "") + std::to_string(below(40)) + kFractions[below(std::size(kFractions))];
        if (n > 0) {
          // Behind a pair one separator is taken, and behind the flags of an arc there may be blanks only; a "-" needs
          // none.
          constexpr const char* kSeparators[] = {" ", ",", ", ", " ,", "  "};
          const bool withinPair = arc ? n != 2 && n != 5 : n % 2 == 1;
          d += negative && below(2) == 0 ? "" : kSeparators[below(withinPair ? 5 : arc && n == 5 ? 1 : 2)];
        }
        d += number;
        program += ' ' + number;
      }
      program += std::string(" ") + command.name;
      last = command.letter;
    }
    ExpectProgram(d, program);
  }
}

TEST_F(PathData, CommandsNeedNoSeparators) {
  ExpectProgram("M0 0L10,0L10,10H5V20h-3v-4zm1 1l2 2", "0 0 M 10 0 L 10 10 L 5 H 20 V -3 h -4 v Z 1 1 m 2 2 l");
}

TEST_F(PathData, ControlsBetweenCommandsAreSkipped) {
  ExpectProgram("  &#9; M0 0 &#9;&#10;&#13; L1 1 &#9;  2 2   ", "0 0 M 1 1 L 2 2 L");
}

TEST_F(PathData, LineEndsAreBlanks) {
  ExpectProgram("M1&#10;2&#13;L3&#13;&#10;4 H5&#10;6", "1 2 M 3 4 L 5 H 6 H");
  ExpectProgram("M1\n2\nL3\n4", "1 2 M 3 4 L");
}

TEST_F(PathData, ATabJoinsNumbersAndTheScanThenFallsBehindByOne) {
  // "H1 tab 2" is 12; of the four characters three are counted, so that the 2 is met again and repeats the H.
  ExpectProgram("M5 5 H1&#9;2", "5 5 M 12 H 2 H");
  // "L1 tab 2 3" is 12 3; the 3 met again is one number alone, and a line of one number is none.
  ExpectProgram("M0 0 L1&#9;2 3", "0 0 M 12 3 L");
}

TEST_F(PathData, ACommandWithTooFewNumbersDrawsNothingAndTheNextOneIsWhole) {
  ExpectProgram("M1 1 L5 M2 2 C1 1 2 2 L9 9", "1 1 M 2 2 M 9 9 L");
  ExpectProgram("M1 1 L L9 9", "1 1 M 9 9 L");
  ExpectProgram("M1 1 A5 5 0 L9 9", "1 1 M");  // The flags are looked for up to the end and swallow the line.
}

TEST_F(PathData, ALeftOverNumberWaitsForACommandThatIsShort) {
  // Of .5, 5 and 9 the first line takes two; the last line has one number of its own and takes the .5 before it.
  ExpectProgram("M0 0 L.5.5 9 L1 1 L7", "0 0 M .5 5 9 L 1 1 L 7 L");
  EXPECT_EQ(Path("M0 0 L.5.5 9 L1 1 L7").at(3), "LINE 0.1,9.9 0.05,9.3");
}

TEST_F(PathData, EverySpellingOfANumberIsReadToTheLastBit) {
  for (const char* text : {"7",
                           "-7",
                           "+7",
                           "007",
                           "-0",
                           "0.1",
                           ".1",
                           "-.1",
                           "1.",
                           "-1.",
                           "1.25",
                           "123456789",
                           "0.000001",
                           "1e3",
                           "1E3",
                           "1e+3",
                           "1e-3",
                           "-1.5e-7",
                           "1e22",
                           "1e23",
                           "9007199254740993",
                           "9007199254740992.5",
                           "0.30000000000000004",
                           "123456789012345678",
                           "12345678901234567890",
                           "123456789012345678901234567890.5",
                           "0.1234567890123456789012345",
                           "179769313486231570000",
                           "4.9e-324",
                           "2.2250738585072014e-308",
                           "8.41e21",
                           "1.7976931348623157e308",
                           "5e-324",
                           "1e-400",
                           "1e400",
                           "0.00000000000000000000000000000000000000000000000001",
                           "1844674407370955161.6",
                           "18446744073709551616"}) {
    SCOPED_TRACE(text);
    const double expected = std::strtod(text, nullptr);
    // With user units of 0.1 and an identity matrix a point is its number times 0.1.
    Path("M9 9L" + std::string(text) + " 9");
    EXPECT_EQ(PayloadOf<LineRecord>(1).x1, expected * 0.1);
    Path("M9 9H" + std::string(text));
    EXPECT_EQ(PayloadOf<LineRecord>(1).x1, expected * 0.1);
    Path("M9 9L9," + std::string(text) + "L5 5");
    EXPECT_EQ(PayloadOf<LineRecord>(1).y1, 10.0 - expected * 0.1);
  }
}

TEST_F(PathData, UnitsEndANumberAndThenTheData) { ExpectProgram("M1 1 L5px 5 L9 9", "1 1 M"); }

// --- The flags of arcs

TEST_F(PathData, ArcFlagsNeedNoSeparators) {
  const Lines expected = MachinePath("9 9 M 1 1 0 0 1 .5 5 a Z2 0 0 M");
  EXPECT_EQ(Path("M9 9a1,1 0 01.5.5"), expected);
  EXPECT_EQ(Path("M9 9a1,1 0 0 1 .5.5"), expected);
  EXPECT_EQ(CountOf(expected, "PLYR"), 1u);
}

TEST_F(PathData, ArcFlagsAreSingleDigits) {
  ExpectProgram("M0 0 A5 5 0 1020 0", "0 0 M 5 5 0 1 0 20 0 A");
  ExpectProgram("M0 0 A5 5 0 0120 0", "0 0 M 5 5 0 0 1 20 0 A");
}

TEST_F(PathData, AnyOtherDigitIsASetFlag) { ExpectProgram("M0 0 A5 5 0 2 9 8 0", "0 0 M 5 5 0 1 1 8 0 A"); }

TEST_F(PathData, WhatStandsBetweenArcFlagsIsSkipped) {
  ExpectProgram("M0 0 A5 5 0,0,1 8,0", "0 0 M 5 5 0 0 1 8 0 A");
  ExpectProgram("M0 0 A5 5 0 x0-;y1 8 0", "0 0 M 5 5 0 0 1 8 0 A");
  ExpectProgram("M0 0 A5 5 0 L1 L0 8 0", "0 0 M 5 5 0 1 0 8 0 A");
}

TEST_F(PathData, ACommaBehindTheSecondArcFlagTakesThePlaceOfAnEndPointNumber) {
  // The end point is scanned from ",8,0": nothing, the separator, 8. So the arc has one operand too few.
  ExpectProgram("M0 0 A5 5 0 0,1,8,0", "0 0 M");
}

TEST_F(PathData, AnArcWithoutFlagsIsNoArc) {
  for (const char* d :
       {"M0 0 A5 5 0", "M0 0 A5 5 0 ", "M0 0 A5 5 0 1", "M0 0 A5 5 0 x", "M0 0 A", "M0 0 A5", "M0 0 A5 5"}) {
    ExpectProgram(d, "0 0 M");
  }
}

// --- The trailer

TEST_F(PathData, AFilledPathIsClosedAndAnUnfilledOneIsNot) {
  const Lines open = {"PATH", "LINE 0,10 1,10", "LINE 1,10 1,9", "ENDP", "FDEF flat 1"};
  const Lines closed = {"PATH", "LINE 0,10 1,10", "LINE 1,10 1,9", "LINE 1,9 0,10", "ENDP", "FDEF flat 1"};
  EXPECT_EQ(Path("M0 0 10 0 10 10"), open);
  EXPECT_EQ(Fresh("<path style='fill:red' d='M0 0 10 0 10 10'/>"),
            Replay() + Records("FILL 255") + closed + Records("FILL 0"));
  EXPECT_EQ(Fresh("<path style='fill:none' d='M0 0 10 0 10 10'/>"),
            Replay() + Records("FILL -1") + open + Records("FILL 0"));
}

TEST_F(PathData, ACloseInTheDataLeavesNothingToTheTrailer) {
  EXPECT_EQ(Fresh("<path style='fill:red' d='M0 0 10 0 10 10z'/>"),
            Replay() + Records("FILL 255", "PATH", "LINE 0,10 1,10", "LINE 1,10 1,9", "LINE 1,9 0,10", "ENDP",
                               "FDEF flat 1", "FILL 0"));
}

TEST_F(PathData, ANearlyClosedPathIsClosedWithoutAFill) {
  // The gap is measured in user units under the identity: 0.04 closes, 0.06 does not.
  EXPECT_EQ(Path("M0 0 10 0 0.04 0"),
            Records("PATH", "LINE 0,10 1,10", "LINE 1,10 0.004,10", "LINE 0.004,10 0,10", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Path("M0 0 10 0 0.06 0"), Records("PATH", "LINE 0,10 1,10", "LINE 1,10 0.006,10", "ENDP", "FDEF flat 1"));
}

TEST_F(PathData, OnlyTheLastSubpathIsClosedByTheTrailer) {
  EXPECT_EQ(Fresh("<path style='fill:red' d='M0 0 10 0 10 10M20 0 30 0'/>"),
            Replay() + Records("FILL 255", "PATH", "LINE 0,10 1,10", "LINE 1,10 1,9", "LINE 2,10 3,10",
                               "LINE 3,10 2,10", "ENDP", "FDEF flat 1", "FILL 0"));
}

TEST_F(PathData, AFillGivenByAnEarlierShapeClosesOnePath) {
  const Lines lines =
      Fresh("<rect style='fill:red' width='1' height='1'/><path d='M0 0 10 0 10 10'/><path d='M0 0 10 0 10 10'/>");
  EXPECT_EQ(CountOf(lines, "LINE 1,9 0,10"), 1u);
  EXPECT_EQ(CountOf(lines, "PATH"), 2u);
  EXPECT_EQ(lines.at(FindLine(lines, "PATH") + 3), "LINE 1,9 0,10");
}

TEST_F(PathData, AnEmptyPathLeavesTheGivenFillToTheNext) {
  const Lines lines = Fresh("<path style='fill:red' d=''/><path d='M0 0 10 0 10 10'/>");
  EXPECT_EQ(CountOf(lines, "LINE 1,9 0,10"), 1u);
}

TEST_F(PathData, TheTrailerOpensAPathWhereTheDataDrewNone) {
  const Lines empty = {"PATH", "ENDP", "FDEF flat 1"};
  EXPECT_EQ(Path("10 20 L30 40"), empty);
  EXPECT_EQ(Path("-10 20"), empty);
  EXPECT_EQ(Path(".5 20"), empty);
  EXPECT_EQ(Path(" "), empty);
  EXPECT_EQ(Path("X"), empty);
  EXPECT_EQ(Path("z"), empty);
}

TEST_F(PathData, EmptyDataDrawsNothingAtAll) {
  EXPECT_EQ(Path(""), Records());
  EXPECT_EQ(Fresh("<path/>"), Records());
}

TEST_F(PathData, EmptyDataEndsAnOpenPathAllTheSame) {
  IXMLDOMNode* path = Load("<path style='fill:red'/>");
  Feed("0 0 M 10 0 L");
  TranslatePath(path);
  EXPECT_EQ(Drain(),
            (Records("PATH", "LINE 0,10 1,10") + Replay() + Records("FILL 255", "ENDP", "FDEF flat 1", "FILL 0")));
}

TEST_F(PathData, AMoveToTheOriginAtTheEndPutsThePenThere) {
  // A relative move of the next element counts from the origin, and not from (60, 60).
  EXPECT_EQ(Fresh("<path d='M50 50 60 60'/><path d='m10 10 10 0'/>"),
            Records("PATH", "LINE 5,5 6,4", "ENDP", "FDEF flat 1", "PATH", "LINE 1,9 2,9", "ENDP", "FDEF flat 1"));
}

// --- The element's steps

TEST_F(PathData, TransformClipStyleAndDataAreTakenInThisOrder) {
  // The clip is under the transform: its rect of 10 by 10 lies at (20, 0). The fill shows behind the clip's end.
  EXPECT_EQ(Fresh("<defs><clipPath id='c'><rect width='10' height='10'/></clipPath></defs>"
                  "<path d='M0 0 10 0' style='fill:none' clip-path='url(#c)' transform='translate(20)'/>"),
            Records("SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1") + Replay() +
                Records("PLYR 1 : 3,9 3,10 2,10 2,9", "CLIP 0", "DOCP 1") + Replay() +
                Records("FILL -1", "PATH", "LINE 2,10 3,10", "ENDP", "FILL 0", "DOCP 0", "ECGR 1"));
}

TEST_F(PathData, AStyleKeepsThePresentationAttributesOut) {
  EXPECT_EQ(Fresh("<path d='M0 0 10 0' style='fill:none' fill='red' stroke='red' fill-rule='evenodd'/>"),
            Replay() + Records("FILL -1", "PATH", "LINE 0,10 1,10", "ENDP", "FDEF flat 1", "FILL 0"));
}

TEST_F(PathData, PresentationAttributesCountWithoutAStyle) {
  EXPECT_EQ(Fresh("<path d='M0 0 10 0' style='' stroke='red' fill='none'/>"),
            Replay() + Records("OUTL 255", "THST 3", "WIDT 0.1", "FILL -1", "PATH", "LINE 0,10 1,10", "ENDP",
                               "FDEF flat 1", "FILL 0"));
}

TEST_F(PathData, ThePathsFrameEndsWithIt) {
  Load("<path d='M0 0 10 0' style='fill:red;opacity:0.5' transform='scale(2)'/>");
  TranslatePath(run.NodeList.At(0));
  Drain();
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.graphics.saveDepth, 0);
  EXPECT_EQ(CurrentFrame().currentMatrix.a, 1.0);
  EXPECT_EQ(CurrentFrame().fill.colour, 0);
  EXPECT_EQ(CurrentFrame().opacity, 1.0);
}

TEST_F(PathData, TheDocumentKeepsItsTextForASecondTranslation) {
  Load("<path d='M10 20 30 40'/>");
  TranslatePath(run.NodeList.At(0));
  const Lines once = Drain();
  TranslatePath(run.NodeList.At(0));
  EXPECT_EQ(Drain(), once);
}
