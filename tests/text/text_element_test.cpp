#include "text/text_element.h"

#include <string>

#include "filter_limits.h"
#include "tests/text/text_fixture.h"

namespace {

using TextElement = TextTest;

// What a text without style sends ahead of its paragraph in a document of ImportBody, whose scale is 0.1: the style
// parser finds no stroke and sends the width of a hairline.
const Lines kHairline = {"THST 2", "WIDT 0.0001"};

// --- Characters

TEST_F(TextElement, CharactersOfTheSpansJoinThoseOfTheElementAtItsOwnPlace) {
  ImportTexts("<text x=\"1px\" y=\"2px\">a<tspan x=\"5px\" y=\"6px\">b</tspan></text>");
  ASSERT_EQ(Paragraphs().size(), 1u);
  EXPECT_EQ(Pasted(), Lines{"ab"});
  EXPECT_EQ(run.text.TextX, 1.0);
  EXPECT_EQ(run.text.TextY, 98.0);
}

TEST_F(TextElement, CharactersOfAllDescendantsJoin) {
  ImportText("", "a<tspan>b<title>c</title></tspan><![CDATA[<d>]]><!-- e -->f");
  EXPECT_EQ(Pasted(), Lines{"abc<d>f"});
}

TEST_F(TextElement, StyleOfASpanHasNoEffectOnTheText) {
  ImportText("font-family='Times' font-size='10px'",
             "a<tspan style='font-family:Courier;font-weight:bold' font-size='99'>b</tspan>");
  // 10 * 1000 * kScale
  EXPECT_EQ(Runs(), Lines{"ab|Times|" + ShowNumber(static_cast<float>(10.0 * 1000.0 * kScale))});
}

TEST_F(TextElement, WhiteSpaceInsideIsNeitherCollapsedNorTrimmed) {
  ImportText("xml:space='preserve'", " a  b\n\tc ");
  EXPECT_EQ(Pasted(), Lines{" a  b\n\tc "});
}

TEST_F(TextElement, NoCharactersGiveAParagraphWithAnEmptyPaste) {
  ImportText("", "");
  EXPECT_EQ(Pasted(), Lines{""});
}

TEST_F(TextElement, CharactersOfAUtf8FileArriveAsTheyAre) {
  struct Case {
    const char* name;
    const char* utf8;
    std::u16string characters;
  };
  const Case cases[] = {
      {"accents", "\xC3\xA9\xC3\xBC\xC3\x85", u"\u00E9\u00FC\u00C5"},
      {"a last byte that reads as a no-break space", "voil\xC3\xA0", u"voil\u00E0"},
      {"Greek", "\xCE\xB1\xCE\xA9", u"\u03B1\u03A9"},
      {"Cyrillic", "\xD0\x96", u"\u0416"},
      {"Chinese", "\xE6\xBC\xA2\xE5\xAD\x97", u"\u6F22\u5B57"},
      {"Japanese", "\xE3\x81\x82", u"\u3042"},
      {"emoji", "\xF0\x9F\x98\x80", u"\U0001F600"},
      {"the bytes 81, 8D, 8F, 90 and 9D, which the code page leaves unassigned",
       "\xC4\x81\xC4\x8D\xC4\x8F\xC4\x90\xC4\x9D", u"\u0101\u010D\u010F\u0110\u011D"},
      {"the signs of XML", "&lt;&amp;&gt;", u"<&>"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ImportText("", c.utf8);
    ASSERT_EQ(Paragraphs().size(), 1u);
    EXPECT_EQ(Paragraphs()[0].runs[0].text, c.characters);
  }
}

TEST_F(TextElement, BytesThatAreNotUtf8BecomeReplacementCharacters) {
  struct Case {
    const char* name;
    const char* bytes;
    std::u16string characters;
  };
  const Case cases[] = {
      {"Latin-1", "caf\xE9!", u"caf\uFFFD!"},
      {"a byte that only continues", "a\x80z", u"a\uFFFDz"},
      {"a byte that no sequence has", "a\xFFz", u"a\uFFFDz"},
      {"a sequence cut short by the end", "a\xC3", u"a\uFFFD"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ImportText("", c.bytes);
    ASSERT_EQ(Paragraphs().size(), 1u);
    EXPECT_EQ(Paragraphs()[0].runs[0].text, c.characters);
  }
}

// A reference names the character itself and not a byte of UTF-8: U+00E9 is the lone byte E9 of the code page, and
// U+03B1 is not in it.
TEST_F(TextElement, CharacterReferencesOutsideAsciiDoNotSurvive) {
  ImportText("", "&#65;&#xE9;&#x3B1;");
  EXPECT_EQ(Paragraphs().at(0).runs[0].text, u"A\uFFFD?");
}

TEST_F(TextElement, TextIsCutAt999Units) {
  for (const std::size_t units : {998u, 999u, 1000u}) {
    SCOPED_TRACE(units);
    ImportText("", std::string(units - 1, 'a') + 'z');
    const std::u16string text = Paragraphs().at(0).runs[0].text;
    EXPECT_EQ(text.size(), units == 1000 ? 999u : units);
    EXPECT_EQ(text.back(), units == 1000 ? u'a' : u'z');
  }
}

TEST_F(TextElement, UnitsAreCountedBehindTheDecoding) {
  std::string twoBytesEach;
  for (int i = 0; i < 999; ++i) twoBytesEach += "\xC3\xA9";
  ImportText("", twoBytesEach);
  EXPECT_EQ(Paragraphs().at(0).runs[0].text, std::u16string(999, u'\u00E9'));
}

TEST_F(TextElement, TheCutMayTakeTheSecondHalfOfAPair) {
  ImportText("", std::string(998, 'a') + "\xF0\x9F\x98\x80");
  EXPECT_EQ(Paragraphs().at(0).runs[0].text, std::u16string(998, u'a') + u'\xD83D');
}

// --- Order of the records

TEST_F(TextElement, ReplaysThePaintStateAndSendsTheWidthAheadOfTheParagraph) {
  EXPECT_EQ(ImportBody("<text>a</text>"), Replay() + kHairline + Lines{"PARA \"a\""});
}

TEST_F(TextElement, PresentationAttributesFollowTheStyleOneByOne) {
  const Lines lines = ImportBody(
      "<text stroke-width='2' stroke='#0000ff' fill='#00ff00' "
      "style='stroke:red;fill:blue;stroke-linecap:round'>a</text>");
  // red 0x0000FF, blue 0xFF0000, #00ff00 0x00FF00; none of the first three runs names a width.
  const Lines style = Lines{"OUTL 255"} + kHairline + Lines{"FILL 16711680", "LNST 2"};
  const Lines fill = kHairline + Lines{"FILL 65280"};
  const Lines stroke = Lines{"OUTL 16711680"} + kHairline;
  const Lines strokeWidth = {"THST 3", "WIDT 0.2"};
  EXPECT_EQ(lines, Replay() + style + fill + stroke + strokeWidth + Lines{"PARA \"a\""});
}

// The width behind a "none" stroke is read for this attribute alone.
TEST_F(TextElement, OnlyTheStrokeWidthAttributeForcesTheWidth) {
  struct Case {
    const char* attributes;
    Lines records;
  };
  const Case cases[] = {
      {"style='stroke:none;stroke-width:2'", {"THST 1"}},
      {"stroke='none;stroke-width:2'", {"THST 2", "WIDT 0.0001", "THST 1"}},
      {"fill='#000000;stroke:none;stroke-width:2'", {"THST 2", "WIDT 0.0001", "THST 1", "FILL 0"}},
      {"stroke-width='2;stroke:none'", {"THST 2", "WIDT 0.0001", "THST 1", "THST 3", "WIDT 0.2"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.attributes);
    ResetImportRun();
    EXPECT_EQ(ImportBody("<text " + std::string(c.attributes) + ">a</text>"),
              Replay() + c.records + Lines{"PARA \"a\""});
  }
}

TEST_F(TextElement, EmptyPresentationAttributesAreNotApplied) {
  EXPECT_EQ(ImportBody("<text fill='' stroke='' stroke-width=''>a</text>"), Replay() + kHairline + Lines{"PARA \"a\""});
}

TEST_F(TextElement, EndsItsFrameBehindTheParagraph) {
  // 0.5 * 255 cut is 127; the frame below holds 1.0, times 255 is 255.
  const Lines lines = ImportBody("<text style='fill-opacity:0.5'>a</text>");
  EXPECT_EQ(lines, (Replay() + kHairline + Lines{"TSPY 127", "PARA \"a\"", "TSPY 255"}));
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.graphics.saveDepth, 0);
}

TEST_F(TextElement, TransformEndsWithTheElement) {
  ImportTexts("<text transform='translate(50)'>a</text><text>b</text>");
  EXPECT_EQ(Paragraphs().at(0).position.x, 50.0 * kScale / 2.54 * 1000.0);
  EXPECT_EQ(Paragraphs().at(1).position.x, 0.0);
}

TEST_F(TextElement, ClipPathAndIdAreNotUsed) {
  const Lines lines = ImportBody(
      "<defs><clipPath id='c'><rect width='1' height='1'/></clipPath></defs>"
      "<text id='t' clip-path='url(#c)'>a</text>");
  EXPECT_EQ(lines, Replay() + kHairline + Lines{"PARA \"a\""});
}

// --- Children

TEST_F(TextElement, ShapesAndSpansAmongTheChildrenAreTranslated) {
  struct Case {
    const char* child;
    const char* record;  // that tells the child's translator
    std::size_t count;
  };
  const Case cases[] = {
      {"<rect width='1' height='1'/>", "PLYR", 1},
      {"<ellipse cx='5' cy='5' rx='2' ry='1'/>", "PLYR", 1},
      {"<circle r='2'/>", "PLYR", 1},
      {"<line x2='5'/>", "LINE", 1},
      {"<text>b</text>", "PARA", 2},
      {"<tspan>b</tspan>", "CNST 1", 2},  // a second replay
      {"<svg:rect width='1' height='1'/>", "PLYR", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.child);
    ResetImportRun();
    EXPECT_EQ(CountOf(ImportBody("<text>a" + std::string(c.child) + "</text>"), c.record), c.count);
  }
}

TEST_F(TextElement, OtherChildrenArePassedOver) {
  for (const char* child :
       {"<path d='M0 0 L5 5'/>", "<polygon points='0,0 5,0 5,5'/>", "<polyline points='0,0 5,0'/>",
        "<g><rect width='1' height='1'/></g>", "<image/>", "<defs/>", "<Rect width='1' height='1'/>",
        "<rectangle width='1' height='1'/>", "<rec width='1' height='1'/>", "<!-- rect -->"}) {
    SCOPED_TRACE(child);
    ResetImportRun();
    EXPECT_EQ(ImportBody("<text>a" + std::string(child) + "</text>"), Replay() + kHairline + Lines{"PARA \"a\""});
  }
}

TEST_F(TextElement, ChildrenComeBeforeTheTextAndUnderNoneOfItsAttributes) {
  const Lines lines = ImportBody(
      "<text transform='scale(7)' style='fill:red;stroke:red'>a<line x2='10' style='x:y'/>"
      "<line y2='10' style='x:y'/></text>");
  // Without "fill:" a line ends with the flat fill of its frame.
  const Lines first = Replay() + Lines{"PATH", "LINE 0,10 1,10", "ENDP", "FDEF flat 1"};
  const Lines second = Replay() + Lines{"PATH", "LINE 0,10 0,9", "ENDP", "FDEF flat 1"};
  const Lines style = Lines{"OUTL 255"} + kHairline + Lines{"FILL 255"};
  EXPECT_EQ(lines, Replay() + first + second + style + Lines{"PARA \"a\""});
}

TEST_F(TextElement, ANestedTextReplacesTheCharactersOfItsParent) {
  ImportTexts("<text x='1px' y='2px'>a<text x='3px' y='4px'>b</text>c</text>");
  EXPECT_EQ(Pasted(), (Lines{"b", "b"}));
  ASSERT_EQ(Paragraphs().size(), 2u);
  EXPECT_EQ(Paragraphs()[0].position.x, 3.0 / 2.54 * 1000.0);
  EXPECT_EQ(Paragraphs()[0].position.y, 96.0 / 2.54 * 1000.0);
  EXPECT_EQ(Paragraphs()[1].position.x, 1.0 / 2.54 * 1000.0);
  EXPECT_EQ(Paragraphs()[1].position.y, 98.0 / 2.54 * 1000.0);
}

TEST_F(TextElement, ANestedTextLeavesItsFontToAParentThatNamesNone) {
  ImportTexts("<text>a<text font-family='Courier' font-size='5pt'>b</text></text>");
  EXPECT_EQ(Runs(), (Lines{"b|Courier|5", "b|Courier|5"}));
}

TEST_F(TextElement, AParentsFontReplacesThatOfANestedText) {
  ImportTexts("<text font-family='Times'>a<text font-family='Courier' font-size='5pt'>b</text></text>");
  EXPECT_EQ(Runs(), (Lines{"b|Courier|5", "b|Times|5"}));
}

TEST_F(TextElement, AFontChangeWithoutANameInsideANestedTextLeavesItsParentNoName) {
  ImportTexts("<text>a<text font-family='Courier' font-size='5pt'>\\F|;b</text></text>");
  EXPECT_EQ(Runs(), (Lines{"b|Courier|5", "b||5"}));
}

// --- Font name

TEST_F(TextElement, FontFamilyGivesTheFirstNameWithoutItsQuotes) {
  struct Case {
    const char* family;
    const char* name;
  };
  const Case cases[] = {
      {"'Arial', sans-serif", "Arial"},
      {"&quot;Foo Bar&quot;,'x'", "Foo Bar"},
      {"Times", "Times"},
      {"T'i&quot;m'es", "Times"},
      {" Times ", " Times "},
      {"a;b", "a;b"},
      {",Times", ""},
      {"''", ""},
      {"", "arial"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.family);
    ImportText("font-family=\"" + std::string(c.family) + '"');
    EXPECT_EQ(FontName(), c.name);
  }
}

TEST_F(TextElement, EachElementStartsWithArial) {
  ImportTexts("<text font-family='Courier'>a</text><text>b</text>");
  EXPECT_EQ(FontName(), "arial");
}

TEST_F(TextElement, AStylesNameLeavesTheTailOfTheNameBefore) {
  struct Case {
    const char* attributes;
    const char* name;
  };
  const Case cases[] = {
      {"style='font-family:Sans'", "Sansl"},
      {"style='font-family:Sym'", "Symal"},
      {"style='font-family:Times'", "Times"},
      {"style='font-family:Verdana'", "Verdana"},
      {"style='font-family: Sans;fill:red'", "Sansl"},
      {"style='font-family:;fill:red'", "arial"},
      {"style=\"font-family:'Foo', x\"", "'Foo', x"},
      {"style='font-family:Sans' font-family='Times New Roman'", "Sanss New Roman"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.attributes);
    ImportText(c.attributes);
    EXPECT_EQ(FontName(), c.name);
  }
}

// "Times New Roman", then "arial" with its terminator at 5, then seven units over both.
TEST_F(TextElement, WhatOlderNamesLeftBehindTheTerminatorShowsBehindALongerName) {
  ImportTexts("<text font-family='Times New Roman'>a</text><text style='font-family:Verdana'>b</text>");
  EXPECT_EQ(FontName(), "Verdanaew Roman");
}

// The cut of "Arial Regular" leaves "Regular" behind the terminator at 5.
TEST_F(TextElement, WhatACutNameLeftShowsBehindALongerName) {
  SetHostFontMode(HostFontMode::kListed);
  SetListedFonts({u"Arial"}, u"Arial");
  ImportTexts("<text font-family='Arial Regular'>a</text><text style='font-family:Verdana'>b</text>");
  EXPECT_EQ(FontName(), "Verdanaegular");
}

TEST_F(TextElement, FontNamesAreKeptToTheRoomOfTheirBuffer) {
  static_assert(kMaxFontNameUnits == 531);
  for (const std::size_t units : {kMaxFontNameUnits - 1, kMaxFontNameUnits, kMaxFontNameUnits + 1}) {
    SCOPED_TRACE(units);
    const std::size_t kept = units < kMaxFontNameUnits ? units : kMaxFontNameUnits;
    ImportText("font-family='" + std::string(units, 'f') + "'");
    EXPECT_EQ(FontName(), std::string(kept, 'f'));
    ImportText("style='font-family:" + std::string(units, 'f') + "'");
    EXPECT_EQ(FontName(), std::string(kept, 'f'));
    ImportText("", "\\F" + std::string(units, 'f') + "|;a");
    EXPECT_EQ(FontName(), std::string(kept, 'f'));
  }
}

// --- Place

TEST_F(TextElement, TheLastUnitReadDecidesForBothCoordinates) {
  struct Case {
    const char* attributes;
    double x, y;
  };
  // The document is 100 high, so that y is 100 - 20 = 80 before the units.
  const Case cases[] = {
      {"x='10' y='20'", 10.0 * kScale, 80.0 * kScale},
      {"x='10mm' y='20mm'", 1.0, 8.0},
      {"x='10MM' y='20Mm'", 1.0, 8.0},
      {"x='3mm' y='94mm'", 0.3, 0.6},  // divided: a tenth of either is the next number up
      {"x='10pt' y='20pt'", 10.0, 80.0},
      {"x='10px' y='20px'", 10.0, 80.0},
      {"x='10in' y='20in'", 10.0, 80.0},
      {"x='10cm' y='20cm'", 10.0, 80.0},
      {"x='10pc' y='20pc'", 10.0, 80.0},
      {"x='10PT' y='20PT'", 10.0 * kScale, 80.0 * kScale},
      {"x='10em' y='20em'", 10.0 * kScale, 80.0 * kScale},
      {"x='10%' y='20%'", 10.0 * kScale, 80.0 * kScale},
      {"x='10mm' y='20'", 10.0 * kScale, 80.0 * kScale},
      {"x='10' y='20mm'", 1.0, 8.0},
      {"x='10mm' y='20pt'", 10.0, 80.0},
      {"x='10pt' y='20mm'", 1.0, 8.0},
      {"x='10mm'", 1.0, 10.0},
      {"x='10pt'", 10.0, 100.0},
      {"x='10mm' y=''", 1.0, 10.0},
      {"y='20mm'", 0.0, 8.0},
      {"y='20'", 0.0, 80.0 * kScale},
      {"", 0.0, 100.0 * kScale},
      {"x='none' y='none'", 0.0, 100.0 * kScale},
      {"x='1 5' y='2,5'", 1.0 * kScale, 98.0 * kScale},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.attributes);
    ImportText(c.attributes);
    EXPECT_EQ(run.text.TextX, c.x);
    EXPECT_EQ(run.text.TextY, c.y);
  }
}

TEST_F(TextElement, TheUnitOfAnElementDoesNotReachTheNext) {
  ImportTexts("<text x='10mm' y='20mm'>a</text><text>b</text>");
  EXPECT_EQ(run.text.TextY, 100.0 * kScale);
}

TEST_F(TextElement, TheAnchorGoesThroughTheMatrix) {
  ImportText("x='1px' y='10px' transform='matrix(2 3 5 7 11 13)'");
  EXPECT_EQ(run.text.TextX, 63.0);  // 10 * 5 + 1 * 2 + 11
  EXPECT_EQ(run.text.TextY, 14.0);  // 100 - (10 * 7 + 1 * 3 + 13)
}

TEST_F(TextElement, TheAnchorGoesThroughTheMatrixOfItsGroup) {
  ImportTexts("<g transform='translate(1 2)'><text x='1px' y='1px' transform='scale(10)'>a</text></g>");
  EXPECT_EQ(run.text.TextX, 11.0);
  EXPECT_EQ(run.text.TextY, 88.0);
}

// 10mm behind a translation by 5 is 15, and a tenth of it 1.5: the unit applies to what the matrix gave.
TEST_F(TextElement, UnitsApplyBehindTheMatrix) {
  ImportText("x='10mm' y='20mm' transform='translate(5 7)'");
  EXPECT_EQ(run.text.TextX, 1.5);
  EXPECT_EQ(run.text.TextY, 7.3);  // (100 - 27) / 10
}

TEST_F(TextElement, ARotationMovesTheAnchorAndDoesNotTurnTheText) {
  ImportText("x='10px' y='0px' transform='matrix(0 1 -1 0 0 0)'");
  EXPECT_EQ(run.text.TextX, 0.0);
  EXPECT_EQ(run.text.TextY, 90.0);
  const TM placement = Paragraphs().at(0).placement;
  EXPECT_EQ(placement.a, 1.0);
  EXPECT_EQ(placement.b, 0.0);
  EXPECT_EQ(placement.c, 0.0);
  EXPECT_EQ(placement.d, 1.0);
  EXPECT_EQ(placement.e, 0.0);
  EXPECT_EQ(placement.f, 0.0);
}

// --- Anchor

TEST_F(TextElement, AnchorIsDecidedByTheStartOfTheText) {
  struct Case {
    const char16_t* text;
    int anchor;  // after 9, which no text gives
  };
  const Case cases[] = {
      {u"start", 1},   {u"middle", 2}, {u"end", 3},    {u"startled", 1}, {u"middle;x", 2},
      {u"endless", 3}, {u"", 9},       {u"Middle", 9}, {u"START", 9},    {u"midd", 9},
      {u"star", 9},    {u"en", 9},     {u" end", 9},   {u"inherit", 9},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf8FromWide(c.text));
    run.text.TextAnchor = 9;
    ApplyTextAnchor(c.text);
    EXPECT_EQ(run.text.TextAnchor, c.anchor);
  }
}

TEST_F(TextElement, AnchorComesFromAttributeOrStyleAndTheAttributeWins) {
  struct Case {
    const char* attributes;
    int justification;
  };
  const Case cases[] = {
      {"", 0},
      {"text-anchor='middle'", 2},
      {"text-anchor='end'", 1},
      {"text-anchor='start'", 0},
      {"style='text-anchor: end'", 1},
      {"style='text-anchor:middle;fill:red'", 2},
      {"text-anchor='end' style='text-anchor:middle'", 1},
      {"text-anchor='x' style='text-anchor:middle'", 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.attributes);
    ImportText(c.attributes);
    EXPECT_EQ(Paragraphs().at(0).justification, c.justification);
  }
}

TEST_F(TextElement, AnchorOfAnImportBeginsAtStart) {
  run.text.TextAnchor = 2;
  ImportBody("<text>a</text>");
  EXPECT_EQ(Paragraphs().at(0).justification, 0);
}

TEST_F(TextElement, AnchorStaysFromOneElementToTheNext) {
  ImportTexts(
      "<text text-anchor='middle'>a</text><g><text>b</text></g><text text-anchor='start'>c</text><text>d</text>");
  EXPECT_EQ(Paragraphs().at(0).justification, 2);
  EXPECT_EQ(Paragraphs().at(1).justification, 2);
  EXPECT_EQ(Paragraphs().at(2).justification, 0);
  EXPECT_EQ(Paragraphs().at(3).justification, 0);
}

// --- Font size

TEST_F(TextElement, FontSizeOfTheAttribute) {
  struct Case {
    const char* size;
    double expected;
  };
  const Case cases[] = {
      {"12", 12.0 * 1000.0 * kScale},
      {"12px", 12.0 * 1000.0 * kScale},
      {"12PX", 12.0 * 1000.0 * kScale},
      {"12em", 12.0 * 1000.0 * kScale},
      {"12%", 12.0 * 1000.0 * kScale},
      {"12mm", 12.0 * 1000.0 / 25.4},
      {"12pt", 12.0},
      {"12in", 12.0},
      {"12cm", 12.0},
      {"12pc", 12.0},
      {"-12pt", -12.0},
      {"large", 0.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.size);
    ImportText("font-size='" + std::string(c.size) + "'");
    EXPECT_EQ(run.text.FontSize, c.expected);
    EXPECT_EQ(Paragraphs().at(0).height, static_cast<float>(c.expected));
  }
}

TEST_F(TextElement, FontSize12AtAScaleOfATenthIs1200) {
  ImportBody("<text font-size='12'>a</text>");
  EXPECT_EQ(run.text.FontSize, 1200.0);
}

TEST_F(TextElement, FontSizeOfTheStyleGoesByAnotherFormula) {
  struct Case {
    const char* size;
    double expected;
  };
  const Case cases[] = {
      {"12", 12.0 * 1000.0 / 2.54 * kScale * 0.7},
      {"12px", 12.0 * 1000.0 / 2.54 * kScale * 0.7},
      {"12mm", 12.0 * 1000.0 / 25.4 * 0.7},
      {"12pt", 12.0},
      {"12in", 12.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.size);
    ImportText("style='font-size:" + std::string(c.size) + "'");
    EXPECT_EQ(run.text.FontSize, c.expected);
    EXPECT_EQ(Paragraphs().at(0).height, static_cast<float>(c.expected));
  }
}

TEST_F(TextElement, FontSizeOfTheAttributeWins) {
  ImportText("font-size='5pt' style='font-size:7pt'");
  EXPECT_EQ(run.text.FontSize, 5.0);
}

TEST_F(TextElement, FontSizeStaysFromOneElementToTheNext) {
  ImportTexts(
      "<text>a</text><text font-size='5pt'>b</text><g><text>c</text></g><text style='font-size:7pt'>d</text>"
      "<text font-size=''>e</text>");
  EXPECT_EQ(Runs(), (Lines{"a|arial|0", "b|arial|5", "c|arial|5", "d|arial|7", "e|arial|7"}));
}

}  // namespace
