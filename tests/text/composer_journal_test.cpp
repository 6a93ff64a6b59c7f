// Every call into the composer, with its arguments and in its order.
#include "tests/text/text_fixture.h"

namespace {

using ComposerJournal = TextTest;

TEST_F(ComposerJournal, AnElementWithAllItsAttributes) {
  HostJournal journal;
  ImportBody(
      "<text id='t' x='10mm' y='20mm' transform='translate(5 10)' font-family=\"'Sans', serif\" font-size='12' "
      "style='stroke:red;stroke-width:1;fill:blue;font-size:9;text-anchor:start' text-anchor='middle' fill='green' "
      "stroke='blue' stroke-width='2' clip-path='url(#c)'>ab\\H2x;cd\\FTimes|b0;e%%d</text>");
  const Lines expected = {
      "SetOpenParagraphInfo(0)",
      "OpenParagraph(4,0)=0",
      "WriteIntTavlor(TexTCompose,PointJustify,0,1)",
      "SetTextLineJustifyMode(2)",
      "SetTextLineJustification(2)",
      "AddFont(0,2,Sans,0,0)",
      "edPasteString(ab,2,2,false)",
      "edPasteString(cd,2,2,false)",
      "AddFont(0,2,Times,0,0)",
      "edPasteString(e\u00B0,2,2,false)",
      "WrapLine(131074,131074, -)",  // 2 units, in both halves
      "edCalcCompression()=0",
      "CloseParagraph(1)=0",
  };
  EXPECT_EQ(From("SetOpenParagraphInfo", ComposerCalls(journal)), expected);

  // x is (10 + 5) / 10 and y (100 - (20 + 10)) / 10, in centimetres; the size 12 * 1000 * 0.1.
  const ParagraphView paragraph = Paragraphs().at(0);
  EXPECT_EQ(paragraph.position.x, 1.5 / 2.54 * 1000.0);
  EXPECT_EQ(paragraph.position.y, 7.0 / 2.54 * 1000.0);
  EXPECT_EQ(paragraph.originX, static_cast<float>(1.5 / 2.54 * 1000.0));
  EXPECT_EQ(paragraph.originY, static_cast<float>(7.0 / 2.54 * 1000.0));
  EXPECT_EQ(Runs(), (Lines{"ab|Sans|1200", "cd|Sans|2400", "e\u00B0|Times|2400"}));
}

TEST_F(ComposerJournal, AnElementWithoutAttributes) {
  HostJournal journal;
  ImportTexts("<text>a</text>");
  EXPECT_EQ(From("SetOpenParagraphInfo", ComposerCalls(journal)),
            (Lines{"SetOpenParagraphInfo(0)", "OpenParagraph(4,0)=0", "WriteIntTavlor(TexTCompose,PointJustify,0,1)",
                   "SetTextLineJustifyMode(2)", "SetTextLineJustification(0)", "AddFont(0,2,arial,0,0)",
                   "edPasteString(a,1,2,false)", "WrapLine(65537,65537, -)", "edCalcCompression()=0",
                   "CloseParagraph(1)=0"}));
}

TEST_F(ComposerJournal, AnAnchorOf0AsksForNoJustification) {
  StartMachine();
  run.text.TextAnchor = 0;
  HostJournal journal;
  Compose(u"a");
  EXPECT_EQ(Only(journal.Take(), "SetTextLineJustif"), Lines{"SetTextLineJustifyMode(2)"});
}

TEST_F(ComposerJournal, AReplacementIsChosenBehindEverySearch) {
  SetHostFontMode(HostFontMode::kListed);
  SetListedFonts({}, u"Other");
  HostFailureSwitches().addFont = true;  // whatever the font manager has activated
  const std::uint32_t id = GetReplacedFontID(u"Sans", -1, -1, nullptr);
  HostJournal journal;
  ImportTexts("<text font-family='Sans Regular' font-size='5pt'>a</text>");
  EXPECT_EQ(From("AddFont", ComposerCalls(journal)),
            (Lines{"AddFont(0,2,Sans Regular,0,0)", "AddFont(0,2,Sans,0,0)", "AddFont(0,3,Sans,0,0)",
                   "AddFont(0,1,Sans,0,0)", "ChooseReplacementFont(Sans,-1,-1)",
                   "GetReplacedFontID(Sans,-1,-1)=" + std::to_string(id), "edPasteString(a,1,2,false)",
                   "WrapLine(65537,65537, -)", "edCalcCompression()=0", "CloseParagraph(1)=0"}));
  EXPECT_EQ(Runs(), Lines{"a|Other|5"});
  EXPECT_EQ(Paragraphs().at(0).replacedFontId, id);
}

TEST_F(ComposerJournal, OneParagraphIsOpenedAndClosedAfterTheOther) {
  HostJournal journal;
  ImportTexts("<text>a<text>b</text></text><text>c</text>");
  Lines brackets;
  for (const std::string& call : journal.Take()) {
    if (call.starts_with("OpenParagraph") || call.starts_with("CloseParagraph")) brackets.push_back(call);
  }
  const Lines one = {"OpenParagraph(4,0)=0", "CloseParagraph(1)=0"};
  EXPECT_EQ(brackets, one + one + one);
  EXPECT_EQ(GetCurrentParagraphStatusAddress(), nullptr);
}

}  // namespace
