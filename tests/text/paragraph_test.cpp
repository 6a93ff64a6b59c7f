#include <cmath>
#include <optional>
#include <utility>

#include "tests/text/text_fixture.h"

namespace {

class Paragraph : public TextTest {
 protected:
  Paragraph() {
    StartMachine();
    run.text.SetFontName(u"arial");
    run.text.FontSize = 100.0;
    run.text.TextX = 1.0;
    run.text.TextY = 2.0;
  }

  // The message box of a failure, once.
  static void ExpectFailureMessage() {
    ASSERT_EQ(ShownMessages().size(), 1u);
    EXPECT_EQ(ShownMessages()[0].text, u"(*v*)Importing DXF failed!");
    EXPECT_EQ(ShownMessages()[0].caption, u"");
    EXPECT_EQ(ShownMessages()[0].flags, 0x2010u);
  }
};

constexpr char kOpenInfo[] = "SetOpenParagraphInfo(0)";
constexpr char kOpen[] = "OpenParagraph(4,0)=0";
constexpr char kMessage[] = "TMessageBox((*v*)Importing DXF failed!,8208)=1";  // 0x2010

TEST_F(Paragraph, OneRecordCarriesTagAndParagraph) {
  EXPECT_EQ(Compose(u"a"), Lines{"PARA \"a\""});
  EXPECT_EQ(Paragraphs().at(0).tag, PayloadOf<ParagraphRecord>(0).paragraphTag);
  EXPECT_EQ(Compose(u"b"), Lines{"PARA \"b\""});
  EXPECT_EQ(PayloadOf<ParagraphRecord>(0).paragraphTag, 2u);  // the host counts from 1
}

TEST_F(Paragraph, OpensAtTheAnchorInThousandthsOfAnInch) {
  Compose(u"a");
  EXPECT_EQ(Paragraphs().at(0).position.x, 1.0 / 2.54 * 1000.0);
  EXPECT_EQ(Paragraphs().at(0).position.y, 2.0 / 2.54 * 1000.0);
}

TEST_F(Paragraph, OriginHasThePrecisionOfASingleFloat) {
  Compose(u"a");
  EXPECT_EQ(Paragraphs().at(0).originX, static_cast<double>(static_cast<float>(1.0 / 2.54 * 1000.0)));
  EXPECT_EQ(Paragraphs().at(0).originY, static_cast<double>(static_cast<float>(2.0 / 2.54 * 1000.0)));
  EXPECT_NE(Paragraphs().at(0).originX, Paragraphs().at(0).position.x);
}

TEST_F(Paragraph, AnchorGivesJustification) {
  struct Case {
    std::int32_t anchor;
    std::optional<int> justification;
  };
  for (const Case& c : {Case{0, std::nullopt}, Case{1, 0}, Case{2, 2}, Case{3, 1}, Case{4, 0}, Case{-1, 0}}) {
    SCOPED_TRACE(c.anchor);
    run.text.TextAnchor = c.anchor;
    Compose(u"a");
    EXPECT_EQ(Paragraphs().at(0).justification, c.justification);
  }
}

// With no rotation sin is 0, and c, the third number, is minus 0.
TEST_F(Paragraph, PlacementIsTheIdentityWithANegativeZero) {
  Compose(u"a");
  const TM placement = Paragraphs().at(0).placement;
  EXPECT_EQ(placement.a, 1.0);
  EXPECT_EQ(placement.b, 0.0);
  EXPECT_FALSE(std::signbit(placement.b));
  EXPECT_EQ(placement.c, 0.0);
  EXPECT_TRUE(std::signbit(placement.c));
  EXPECT_EQ(placement.d, 1.0);
  EXPECT_EQ(placement.e, 0.0);
  EXPECT_EQ(placement.f, 0.0);
}

TEST_F(Paragraph, FixedValuesOfTheRecords) {
  Compose(u"a");
  const ParagraphView paragraph = Paragraphs().at(0);
  EXPECT_EQ(paragraph.paragraphOption, 0);
  EXPECT_EQ(paragraph.statusLimit, 1300);
  EXPECT_EQ(paragraph.listMeasure, 1300.0);
  EXPECT_EQ(paragraph.lineMode, 0x100u);
  EXPECT_EQ(paragraph.lineFlags, 0);
  EXPECT_EQ(paragraph.charScale, 1000);
  EXPECT_EQ(paragraph.fontCode, 0);  // the font has 1
  EXPECT_EQ(paragraph.compression, 0);
}

TEST_F(Paragraph, OfTheCompressionTheLow16BitsAreKept) {
  for (const auto& [answered, kept] : {std::pair{0x1234, 0x1234}, {0x12345, 0x2345}, {-1, 0xFFFF}}) {
    SetHostCompression(answered);
    Compose(u"a");
    EXPECT_EQ(Paragraphs().at(0).compression, kept);
  }
}

TEST_F(Paragraph, HeightIsTheFontSizeInSinglePrecision) {
  run.text.FontSize = 0.1;
  Compose(u"a");
  EXPECT_EQ(Paragraphs().at(0).height, static_cast<double>(0.1f));
  EXPECT_EQ(run.text.FontSize, 0.1);
}

// What the search for the font found in the records, or left there, is replaced behind it, and what was written ahead
// of it stands.
TEST_F(Paragraph, TheStateOfTheCharactersIsSetBehindTheSearchForTheFont) {
  SetHostFontMode(HostFontMode::kListed);
  FontManagerDouble manager({2});
  ParagraphStatus* status = nullptr;
  manager.whenAsked = [&] {
    status = GetCurrentParagraphStatusAddress();
    EXPECT_EQ(status->statusLimit, 1300);
    EXPECT_EQ(status->lines->listMeasure, 1300.0);
    EXPECT_EQ(status->textLine->originX, static_cast<double>(static_cast<float>(1.0 / 2.54 * 1000.0)));
    EXPECT_EQ(HostSetting(u"TexTCompose", u"PointJustify"), 0);
    status->character->fontCode = 7;
    status->character->charScale = 7;
    status->character->charOptionA = 7;
    status->character->charOptionB = 7;
    status->character->height = 7.0;
    status->character->heightCopy = 7.0;
    status->textLine->lineFlags = 7;
    status->textLine->lineMode = 0xAB12;
    status->textLine->compression = 7;
  };
  EXPECT_EQ(Compose(u"a"), Lines{"PARA \"a\""});
  ASSERT_NE(status, nullptr);
  EXPECT_EQ(status->character->fontCode, 0);
  EXPECT_EQ(status->character->charScale, 1000);
  EXPECT_EQ(status->character->charOptionA, 0);
  EXPECT_EQ(status->character->charOptionB, 0u);
  EXPECT_EQ(status->character->height, 100.0);
  EXPECT_EQ(status->character->heightCopy, 100.0);
  EXPECT_EQ(status->textLine->lineFlags, 0);
  EXPECT_EQ(status->textLine->lineMode, 0x112u);  // the low byte and bit 8
  EXPECT_EQ(status->textLine->compression, 0);    // as the host answers
}

// 0xA5A5A5A5 loses all but its second byte when the paragraph is opened, and then that byte too.
TEST_F(Paragraph, TheRecordsOfAnotherParagraphLeaveNothingBehind) {
  HostFailureSwitches().usedRecords = true;
  SetHostFontMode(HostFontMode::kListed);
  FontManagerDouble manager({2});
  const ParagraphStatus* status = nullptr;
  manager.whenAsked = [&] {
    status = GetCurrentParagraphStatusAddress();
    EXPECT_EQ(status->textLine->lineMode, 0xA500u);
    EXPECT_EQ(status->textLine->originY, static_cast<double>(static_cast<float>(2.0 / 2.54 * 1000.0)));
  };
  EXPECT_EQ(Compose(u"a"), Lines{"PARA \"a\""});
  ASSERT_NE(status, nullptr);
  const ParagraphView paragraph = Paragraphs().at(0);
  EXPECT_EQ(paragraph.paragraphOption, 0);
  EXPECT_EQ(paragraph.statusLimit, 1300);
  EXPECT_EQ(paragraph.listMeasure, 1300.0);
  EXPECT_EQ(paragraph.lineMode, 0x100u);
  EXPECT_EQ(paragraph.lineFlags, 0);
  EXPECT_EQ(paragraph.compression, 0);
  EXPECT_EQ(paragraph.charScale, 1000);
  EXPECT_EQ(paragraph.fontCode, 0);
  EXPECT_EQ(paragraph.height, 100.0);
  EXPECT_EQ(status->character->heightCopy, 100.0);
  EXPECT_EQ(status->character->charOptionA, 0);
  EXPECT_EQ(status->character->charOptionB, 0u);
  EXPECT_EQ(paragraph.placement.e, 0.0);
  EXPECT_EQ(paragraph.placement.f, 0.0);
}

TEST_F(Paragraph, TheSettingPointJustifyIsSwitchedOffForEachParagraph) {
  SetHostSetting(u"TexTCompose", u"PointJustify", 1);
  Compose(u"a");
  EXPECT_EQ(HostSetting(u"TexTCompose", u"PointJustify"), 0);
  SetHostSetting(u"TexTCompose", u"PointJustify", 1);
  Compose(u"b");
  EXPECT_EQ(HostSetting(u"TexTCompose", u"PointJustify"), 0);
}

TEST_F(Paragraph, NothingIsComposedWhenTheUserLeavesTextsOut) {
  HostFailureSwitches().skipText = true;
  MakeReplacementObject();
  HostJournal journal;
  EXPECT_EQ(Compose(u"a"), Lines{});
  EXPECT_EQ(ComposerCalls(journal), Lines{});
}

// --- Failures. A paragraph that a failure leaves behind is the host's, and goes with its reset.

TEST_F(Paragraph, AParagraphThatCannotBeOpenedShowsTheMessage) {
  HostFailureSwitches().openParagraph = true;
  HostJournal journal;
  EXPECT_EQ(Compose(u"a"), Lines{"NULL"});
  EXPECT_EQ(ComposerCalls(journal), (Lines{kOpenInfo, "OpenParagraph(4,0)=-1", kMessage}));
  ExpectFailureMessage();
}

TEST_F(Paragraph, AListFlagShowsTheMessageAndLeavesTheParagraphOpen) {
  HostFailureSwitches().listFlag = true;
  HostJournal journal;
  EXPECT_EQ(Compose(u"a"), Lines{"NULL"});
  EXPECT_EQ(ComposerCalls(journal), (Lines{kOpenInfo, kOpen, kMessage}));
  ExpectFailureMessage();
  const ParagraphStatus* status = GetCurrentParagraphStatusAddress();
  ASSERT_NE(status, nullptr);
  EXPECT_EQ(status->statusLimit, 1300);
  EXPECT_EQ(status->lines->listMeasure, 0.0);  // written only behind the test of the flag
  ResetHost();
}

TEST_F(Paragraph, AMissingFontAbandonsTheParagraphSilently) {
  SetHostFontMode(HostFontMode::kNone);
  HostJournal journal;
  EXPECT_EQ(Compose(u"a"), Lines{"NULL"});
  EXPECT_EQ(ComposerCalls(journal), (Lines{kOpenInfo, kOpen, "WriteIntTavlor(TexTCompose,PointJustify,0,1)",
                                           "SetTextLineJustifyMode(2)", "SetTextLineJustification(0)",
                                           "AddFont(0,2,arial,0,0)", "AddFont(0,2,arial,0,1)", "CloseParagraph(0)=0"}));
  EXPECT_TRUE(ShownMessages().empty());
}

TEST_F(Paragraph, AParagraphThatCannotBeClosedIsAbandonedBeforeTheMessage) {
  HostFailureSwitches().closeParagraph = true;
  HostJournal journal;
  EXPECT_EQ(Compose(u"a"), Lines{"NULL"});
  EXPECT_EQ(From("edCalcCompression", ComposerCalls(journal)),
            (Lines{"edCalcCompression()=0", "CloseParagraph(1)=-1", "CloseParagraph(0)=0", kMessage}));
  ExpectFailureMessage();
}

// The first block of a paragraph is the buffer of the pasted text, the second the record.
TEST_F(Paragraph, ARecordWithoutMemoryShowsTheMessageBehindTheClosedParagraph) {
  Compose(u"a");  // so that the queue has its memory
  FailAllocation(2);
  HostJournal journal;
  EXPECT_EQ(Compose(u"a"), Lines{"NULL"});
  FailAllocation(0);
  EXPECT_EQ(From("edCalcCompression", ComposerCalls(journal)),
            (Lines{"edCalcCompression()=0", "CloseParagraph(1)=0", kMessage}));
  ExpectFailureMessage();
  ResetHost();
}

TEST_F(Paragraph, AfterAFailureTheNextParagraphIsComposed) {
  HostFailureSwitches().openParagraph = true;
  Compose(u"a");
  HostFailureSwitches().openParagraph = false;
  EXPECT_EQ(Compose(u"b"), Lines{"PARA \"b\""});
}

class ParagraphFailure : public TextTest, public testing::WithParamInterface<bool HostFailures::*> {};

// A null record is never handed out, and the frame of the element has gone.
TEST_P(ParagraphFailure, CostsAnImportNothingButTheText) {
  HostFailureSwitches().*GetParam() = true;
  const Lines lines = ImportBody("<text>a</text><text>b</text><rect width='1' height='1'/>");
  EXPECT_EQ(CountOf(lines, "PARA"), 0u);
  EXPECT_EQ(CountOf(lines, "NULL"), 0u);
  EXPECT_EQ(CountOf(lines, "PLYR"), 1u);
  EXPECT_EQ(run.graphics.saveDepth, 0);
  ResetHost();
}

INSTANTIATE_TEST_SUITE_P(Each, ParagraphFailure,
                         testing::Values(&HostFailures::openParagraph, &HostFailures::closeParagraph,
                                         &HostFailures::listFlag, &HostFailures::skipText));

using ParagraphOfImport = TextTest;

TEST_F(ParagraphOfImport, AReplacementThatTheUserRefusesCostsAnImportTheTextAlone) {
  SetHostFontMode(HostFontMode::kNone);
  const Lines lines = ImportBody("<text>a</text><rect width='1' height='1'/>");
  EXPECT_EQ(CountOf(lines, "PARA"), 0u);
  EXPECT_EQ(CountOf(lines, "NULL"), 0u);
  EXPECT_EQ(CountOf(lines, "PLYR"), 1u);
  EXPECT_TRUE(ShownMessages().empty());
  EXPECT_EQ(run.graphics.saveDepth, 0);
}

}  // namespace
