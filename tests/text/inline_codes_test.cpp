#include <string>

#include "tests/text/text_fixture.h"

namespace {

// Paragraphs in arial, 100 high, on a machine where an absolute height of 1 is 1000 / (2.54 / 1.27) = 500.
class InlineCodes : public TextTest {
 protected:
  InlineCodes() {
    StartMachine(100.0, 1.27);
    Prepare(u"arial");
  }
  void Prepare(std::u16string_view font) {
    run.text.SetFontName(font);
    run.text.FontSize = 100.0;
  }

  struct Case {
    const char16_t* text;
    const char* pasted;
  };
  // Each text comes out as one paste.
  template <std::size_t count>
  void ExpectPastes(const Case (&cases)[count]) {
    for (const Case& c : cases) {
      SCOPED_TRACE(Utf8FromWide(c.text));
      Compose(c.text);
      EXPECT_EQ(Pasted(), Lines{c.pasted});
    }
  }
};

TEST_F(InlineCodes, OrdinaryTextIsPastedAsItStands) {
  ExpectPastes({{u"abc", "abc"}, {u"a b\tc\n", "a b\tc\n"}, {u"", ""}, {u"a%b;c|d", "a%b;c|d"}, {u"100%", "100%"}});
}

TEST_F(InlineCodes, OpeningBracesAreDropped) { ExpectPastes({{u"{x}", "x"}, {u"a{b{{c", "abc"}, {u"{", ""}}); }

TEST_F(InlineCodes, AClosingBraceEndsTheText) {
  ExpectPastes({{u"a}b", "a"}, {u"}ab", ""}, {u"}", ""}, {u"a{b}c}d", "ab"}, {u"a}\\Hx;b", "a"}});
}

TEST_F(InlineCodes, ABackslashCodeForASign) {
  ExpectPastes(
      {{u"a\\\\b", "a\\b"}, {u"\\\\\\\\", "\\\\"}, {u"\\\\Pa", "\\Pa"}, {u"a\\Pb", "a\r\nb"}, {u"\\P", "\r\n"}});
}

TEST_F(InlineCodes, ABackslashInFrontOfAnyOtherUnitIsDropped) {
  ExpectPastes({{u"C:\\temp", "C:temp"},
                {u"\\a\\c\\h\\w\\t\\U", "achwtU"},
                {u"a\\}b", "a}b"},
                {u"\\{a", "{a"},
                {u"\\;\\%\\ ", ";% "},
                {u"\\%%d", "%%d"}});
}

TEST_F(InlineCodes, UnderlineAndOverlineAreDropped) {
  ExpectPastes({{u"\\La\\lb\\Oc\\od", "abcd"}, {u"a\\L", "a"}, {u"a\\l", "a"}, {u"a\\O", "a"}, {u"a\\o", "a"}});
}

TEST_F(InlineCodes, AColourIsDroppedAndTheUnitBehindItCopiedAsItStands) {
  ExpectPastes({{u"a\\C1;b", "ab"},
                {u"a\\C;b", "ab"},
                {u"\\C1;\\Lb", "\\Lb"},
                {u"\\C1;{b", "{b"},
                {u"\\C1;}b", "}b"},
                {u"\\C1;%%d", "%%d"},
                {u"\\C1;;b", ";b"}});
}

TEST_F(InlineCodes, ParagraphLineWidthAndTrackingAreDropped) {
  ExpectPastes({{u"a\\pi1,2;b", "ab"},
                {u"a\\A1;b", "ab"},
                {u"a\\W0.8;b", "ab"},
                {u"a\\T2;b", "ab"},
                {u"\\A1;\\Lb", "b"},    // what follows is read as ever
                {u"\\A;;b", ";b"},      //
                {u"\\A{}\\;b", "b"},    // what stands within is not
                {u"\\px;b", "px;b"}});  // any other unit than i makes it a plain p
}

TEST_F(InlineCodes, PercentCodesGiveTheirSigns) {
  // Units 248, 176 and 177.
  ExpectPastes({{u"%%c%%C", "\u00F8\u00F8"},
                {u"50%%d%%D", "50\u00B0\u00B0"},
                {u"%%p%%P5", "\u00B1\u00B15"},
                {u"%%d", "\u00B0"}});
}

TEST_F(InlineCodes, OtherPercentCodesGiveTheirUnit) {
  ExpectPastes({{u"a%%ub", "aub"},
                {u"%%%", "%"},
                {u"%%%c", "%c"},
                {u"%%%%%%", "%%"},
                {u"%%\\P", "\\P"},
                {u"%%{a", "{a"},
                {u"%%}a", "}a"}});
}

TEST_F(InlineCodes, ACodeCutShortByTheEndGivesNothing) {
  ExpectPastes({{u"a\\", "a"},
                {u"a\\C", "a"},
                {u"a\\C1", "a"},
                {u"a\\C1;", "a"},
                {u"a\\pi", "a"},
                {u"a\\pi1", "a"},
                {u"a\\A", "a"},
                {u"a\\A1", "a"},
                {u"a\\W", "a"},
                {u"a\\W1", "a"},
                {u"a\\T", "a"},
                {u"a\\T1", "a"},
                {u"a%%", "a"}});
}

TEST_F(InlineCodes, APlainPAtTheEndIsCopied) { ExpectPastes({{u"a\\p", "ap"}}); }

TEST_F(InlineCodes, AUnicodeCodeIsNotDecodedButRemembered) {
  EXPECT_FALSE(run.text.UnicodeSeen);
  Compose(u"u\\Ua");
  EXPECT_FALSE(run.text.UnicodeSeen);
  ExpectPastes({{u"\\u0041", "u0041"}, {u"a\\u", "au"}});
  EXPECT_TRUE(run.text.UnicodeSeen);
}

// --- Height

TEST_F(InlineCodes, AHeightWithAnXIsAFactor) {
  Compose(u"\\H2x;ab");
  EXPECT_EQ(Runs(), Lines{"ab|arial|200"});
  EXPECT_EQ(run.text.FontSize, 200.0);
}

TEST_F(InlineCodes, AHeightWithoutAnXIsAbsolute) {
  Compose(u"\\H3;ab");
  EXPECT_EQ(Runs(), Lines{"ab|arial|1500"});
  EXPECT_EQ(run.text.FontSize, 1500.0);
}

TEST_F(InlineCodes, AnAbsoluteHeightIsExactToTheLastBit) {
  run.UnitScale = kScale;
  Compose(u"\\H3;ab");
  EXPECT_EQ(run.text.FontSize, (1000.0 / (2.54 / kScale)) * 3.0);
  EXPECT_NE(run.text.FontSize, 3.0 * 1000.0 * kScale / 2.54);
}

TEST_F(InlineCodes, AHeightChangeFlushesTheTextBeforeIt) {
  Compose(u"a\\H2x;b\\H3x;c\\H1;d");
  EXPECT_EQ(Runs(), (Lines{"a|arial|100", "b|arial|200", "c|arial|600", "d|arial|500"}));
}

TEST_F(InlineCodes, NothingIsFlushedWhereTheBufferIsEmpty) {
  Compose(u"\\H2x;\\H2x;{\\L\\H2x;a");
  EXPECT_EQ(Runs(), Lines{"a|arial|800"});
}

TEST_F(InlineCodes, AHeightIsReadFromItsLeadingNumber) {
  struct HeightCase {
    const char16_t* text;
    double size;
  };
  const HeightCase cases[] = {{u"\\H.5x;", 50.0},   {u"\\H0.5x;", 50.0}, {u"\\H-1x;", -100.0}, {u"\\H2xyz;", 200.0},
                              {u"\\H2abx;", 200.0}, {u"\\Hx2;", 0.0},    {u"\\H;", 0.0},       {u"\\Hx;", 0.0},
                              {u"\\H2X;", 1000.0},  {u"\\H 2;", 1000.0}, {u"\\H1e1x;", 1000.0}};
  for (const HeightCase& c : cases) {
    SCOPED_TRACE(Utf8FromWide(c.text));
    Prepare(u"arial");
    Compose(c.text);
    EXPECT_EQ(run.text.FontSize, c.size);
    EXPECT_EQ(Runs(), Lines{"|arial|" + ShowNumber(c.size)});
  }
}

TEST_F(InlineCodes, NineteenUnitsOfAHeightAreKept) {
  struct HeightCase {
    const char* name;
    std::u16string kept;
    double size;
  };
  const HeightCase cases[] = {
      {"x as the 18th", std::u16string(16, u'0') + u"2x", 200.0},
      {"x as the 19th", std::u16string(17, u'0') + u"2x", 200.0},
      {"x as the 20th", std::u16string(18, u'0') + u"2x", 1000.0},
      {"a digit as the 20th", u"0x" + std::u16string(17, u'0') + u"2", 0.0},
      {"a last digit as the 19th", std::u16string(17, u'0') + u"12", 6000.0},
      {"a last digit as the 20th", std::u16string(18, u'0') + u"12", 500.0},
  };
  for (const HeightCase& c : cases) {
    SCOPED_TRACE(c.name);
    Prepare(u"arial");
    Compose(u"\\H" + c.kept + u";a");
    EXPECT_EQ(Runs(), Lines{"a|arial|" + ShowNumber(c.size)});
  }
}

TEST_F(InlineCodes, AHeightCutShortByTheEndIsApplied) {
  Compose(u"a\\H2x");
  EXPECT_EQ(Runs(), (Lines{"a|arial|100", "|arial|200"}));
  Compose(u"a\\H");
  EXPECT_EQ(Runs(), (Lines{"a|arial|200", "|arial|0"}));
}

TEST_F(InlineCodes, AHeightStaysForTheNextElement) {
  ImportTexts("<text font-size='10pt'>\\H2x;a</text><text>b</text>");
  EXPECT_EQ(Runs(), (Lines{"a|arial|20", "b|arial|20"}));
}

// --- Font

TEST_F(InlineCodes, AFontNameEndsAtABarAndTheRestOfTheCodeAtTheNextSemicolon) {
  Compose(u"a\\FTimes|b0|i1;b");
  EXPECT_EQ(Runs(), (Lines{"a|arial|100", "b|Times|100"}));
  Compose(u"a\\fSans Serif|;b");
  EXPECT_EQ(Runs(), (Lines{"a|Times|100", "b|Sans Serif|100"}));
}

TEST_F(InlineCodes, TextBehindAPlainFontCodeIsLostUpToTheNextSemicolon) {
  struct FontCase {
    const char16_t* text;
    Lines runs;
  };
  const FontCase cases[] = {
      {u"a\\FTimes;lost;b", {"a|arial|100", "b|Times|100"}}, {u"a\\FTimes;lost\\H2x;b", {"a|arial|100", "b|Times|100"}},
      {u"a\\FTimes;lost", {"a|arial|100", "|Times|100"}},    {u"a\\FTimes;;b", {"a|arial|100", "b|Times|100"}},
      {u"a\\FTimes|lost", {"a|arial|100", "|Times|100"}},    {u"a\\FTimes|;b;c", {"a|arial|100", "b;c|Times|100"}},
  };
  for (const FontCase& c : cases) {
    SCOPED_TRACE(Utf8FromWide(c.text));
    Prepare(u"arial");
    Compose(c.text);
    EXPECT_EQ(Runs(), c.runs);
    EXPECT_EQ(FontName(), "Times");
  }
}

TEST_F(InlineCodes, AFontCutShortByTheEndIsSelected) {
  for (const char16_t* text : {u"a\\FTimes", u"a\\FTimes;", u"a\\FTimes|", u"a\\fTimes|b0"}) {
    SCOPED_TRACE(Utf8FromWide(text));
    Prepare(u"arial");
    Compose(text);
    EXPECT_EQ(Runs(), (Lines{"a|arial|100", "|Times|100"}));
  }
}

TEST_F(InlineCodes, AFontWithoutANameFlushesAndSelectsNothing) {
  struct FontCase {
    const char16_t* text;
    const char* pasted;
  };
  const FontCase cases[] = {
      {u"a\\F;lost;b", "ab"}, {u"a\\F;;b", "ab"}, {u"a\\F|lost;b", "ab"}, {u"a\\f|;b", "ab"},
      {u"a\\F", "a"},         {u"a\\F;", "a"},    {u"a\\F;lost", "a"},    {u"a\\F;lost;\\Pb", "a\r\nb"}};
  for (const FontCase& c : cases) {
    SCOPED_TRACE(Utf8FromWide(c.text));
    Prepare(u"arial");
    HostJournal journal;
    Compose(c.text);
    EXPECT_EQ(Runs(), Lines{std::string(c.pasted) + "|arial|100"});
    EXPECT_LE(Only(journal.Take(), "AddFont").size(), 1u);
    EXPECT_EQ(FontName(), "");
  }
}

TEST_F(InlineCodes, NothingIsFlushedByAFontWhereTheBufferIsEmpty) {
  Compose(u"\\FTimes|;\\FSans|;a");
  EXPECT_EQ(Runs(), Lines{"a|Sans|100"});
}

TEST_F(InlineCodes, AFontChangeSetsTheCodeOfTheFontAgain) {
  Compose(u"a");
  EXPECT_EQ(Paragraphs().at(0).fontCode, 0);
  AddFont(0, 2, u"Coded", 0, 0)->fontCode = 42;
  Compose(u"a\\FCoded|;b");
  EXPECT_EQ(Paragraphs().at(0).fontCode, 42);
}

TEST_F(InlineCodes, AFontThatIsNotFoundLeavesTheOneInForce) {
  SetHostFontMode(HostFontMode::kListed);
  SetListedFonts({u"arial"}, u"");
  EXPECT_EQ(Compose(u"a\\FMissing|;b"), Lines{R"(PARA "a" "b")"});
  EXPECT_EQ(Runs(), (Lines{"a|arial|100", "b|arial|100"}));
  EXPECT_EQ(FontName(), "Missing");
  EXPECT_TRUE(ShownMessages().empty());
}

TEST_F(InlineCodes, AFontOfTheTextDoesNotReachTheNextElement) {
  ImportTexts("<text font-size='10pt'>\\FTimes|;a</text><text>b</text>");
  EXPECT_EQ(Runs(), (Lines{"a|Times|10", "b|arial|10"}));
}

// --- The end of the text

TEST_F(InlineCodes, TheLastPasteIsBrokenWithItsOwnCount) {
  struct WrapCase {
    const char16_t* text;
    const char* wrap;
  };
  // The count in both halves: 2 is 0x00020002.
  const WrapCase cases[] = {
      {u"ab", "WrapLine(131074,131074, -)"},
      {u"abc\\H2x;de", "WrapLine(131074,131074, -)"},
      {u"a\\P", "WrapLine(196611,196611, -)"},
      {u"", "WrapLine(0,0, -)"},
      {u"}ab", "WrapLine(0,0, -)"},
      {u"ab\\H2x;", "WrapLine(0,0, -)"},
  };
  for (const WrapCase& c : cases) {
    SCOPED_TRACE(Utf8FromWide(c.text));
    HostJournal journal;
    Compose(c.text);
    EXPECT_EQ(Only(journal.Take(), "WrapLine"), Lines{c.wrap});
  }
}

TEST_F(InlineCodes, ParagraphCodesBehindTheBraceLowerTheTextByTheSpacing) {
  struct SpacingCase {
    const char16_t* text;
    double y;  // from 10, with a spacing of 3
  };
  const SpacingCase cases[] = {
      {u"a", 10.0},          {u"a\\P", 10.0},     {u"a}", 10.0},     {u"a}P", 10.0},
      {u"a}\\", 10.0},       {u"a}\\p", 10.0},    {u"a}b\\P", 10.0}, {u"a}\\P", 7.0},
      {u"a}\\Pb", 7.0},      {u"a}\\Pb\\P", 7.0}, {u"a}\\P\\", 7.0}, {u"a}\\P\\P", 4.0},
      {u"a}\\P\\P\\P", 4.0}, {u"}\\P", 7.0},      {u"\\}\\P", 10.0}, {u"a}}\\P", 10.0},
  };
  for (const SpacingCase& c : cases) {
    SCOPED_TRACE(Utf8FromWide(c.text));
    run.text.TextY = 10.0;
    run.text.lineSpacing = 3.0;
    Compose(c.text);
    EXPECT_EQ(run.text.TextY, c.y);
  }
}

TEST_F(InlineCodes, TheSpacingIsZeroAsLongAsNobodySetsIt) {
  run.text.TextY = 10.0;
  Compose(u"a}\\P\\P");
  EXPECT_EQ(run.text.TextY, 10.0);
}

// --- Memory

TEST_F(InlineCodes, TheBufferHasTwoBytesForEachUnitAndTwentyMoreAndIsGivenBack) {
  const OpenedParagraph paragraph;
  HostJournal journal;
  PasteTextRuns(u"a{b}cde", paragraph.status());  // 7 units
  EXPECT_EQ(Only(journal.Take(), "MemInitBaseT"), (Lines{"MemInitBaseT::Allocate(34)", "MemInitBaseT::Free()"}));
}

TEST_F(InlineCodes, TheBufferHoldsTheLongestOutputOfEachCode) {
  std::u16string codes;
  for (int i = 0; i < 300; ++i) codes += u"\\P";
  Compose(codes);
  EXPECT_EQ(Paragraphs().at(0).runs[0].text.size(), 600u);
}

}  // namespace
