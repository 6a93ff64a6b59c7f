#include "host/composer.h"

#include <cstring>
#include <string>
#include <vector>

#include "headless_host/inspection.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

namespace {

class HostComposer : public HostTest {
 protected:
  int Open(double x = 1.0, double y = 2.0) {
    const ParagraphPosition position = {x, y};
    SetOpenParagraphInfo(&handle, 0);
    return OpenParagraph(4, &handle, &position, 0);
  }

  ParagraphHandle handle;
};

FontRecord* Find(const char16_t* name) { return AddFont(0, 2, name, 0, 0); }

}  // namespace

TEST_F(HostComposer, TagsAreRunningNumbersFromOne) {
  for (const std::uint32_t tag : {1u, 2u, 3u}) {
    ASSERT_GE(Open(), 0);
    EXPECT_EQ(std::uint32_t{handle.tag}, tag);
    CloseParagraph(1, &handle);
  }
  ResetHost();
  Open();
  EXPECT_EQ(std::uint32_t{handle.tag}, 1u);
}

TEST_F(HostComposer, AnOpenParagraphHasItsRecordsWiredTogether) {
  EXPECT_EQ(GetCurrentParagraphStatusAddress(), nullptr);
  Open();
  ParagraphStatus* status = GetCurrentParagraphStatusAddress();
  ASSERT_NE(status, nullptr);
  EXPECT_EQ(static_cast<ParagraphStatus*>(handle.status), status);
  EXPECT_NE(static_cast<paragraphStruct*>(status->paragraphInfo), nullptr);
  EXPECT_NE(static_cast<list_s*>(status->lines), nullptr);
  EXPECT_NE(static_cast<CharacterState*>(status->character), nullptr);
  EXPECT_NE(static_cast<TextLine*>(status->textLine), nullptr);
  EXPECT_NE(static_cast<void*>(status->wrapA), nullptr);
  EXPECT_EQ(status->lines->listFlag, 0);
  EXPECT_EQ(status->character->font, nullptr);
}

TEST_F(HostComposer, AClosedParagraphShowsAllThatWasWrittenIntoIt) {
  Open(100.5, 200.5);
  ParagraphStatus* status = GetCurrentParagraphStatusAddress();
  status->paragraphInfo->paragraphOption = 11;
  status->statusLimit = 1300;
  status->lines->listMeasure = 1300.5;
  status->textLine->lineMode = 0x100;
  status->textLine->lineFlags = 3;
  status->textLine->compression = 9;
  status->textLine->originX = 5.5;
  status->textLine->originY = 6.5;
  status->character->charScale = 1000;
  status->character->fontCode = 77;
  status->character->height = 12.5;
  status->character->replacedFontId = 0x89ABCDEF;
  SetTextLineJustification(status->paragraphInfo, status->lines, 2);
  ComposedParagraph* composed = handle.paragraph;
  ASSERT_GE(CloseParagraph(1, &handle), 0);
  EXPECT_EQ(GetCurrentParagraphStatusAddress(), nullptr);
  composed->placement = {1, 2, 3, 4, 5, 6};

  const auto view = ViewParagraph(composed);
  ASSERT_TRUE(view);
  EXPECT_EQ(view->tag, 1u);
  EXPECT_EQ(view->position.x, 100.5);
  EXPECT_EQ(view->position.y, 200.5);
  EXPECT_EQ(view->justification, 2);
  EXPECT_EQ(view->originX, 5.5);
  EXPECT_EQ(view->originY, 6.5);
  EXPECT_EQ(view->height, 12.5);
  EXPECT_EQ(view->charScale, 1000);
  EXPECT_EQ(view->fontCode, 77);
  EXPECT_EQ(view->replacedFontId, 0x89ABCDEFu);
  EXPECT_EQ(view->compression, 9);
  EXPECT_EQ(view->lineFlags, 3);
  EXPECT_EQ(view->lineMode, 0x100u);
  EXPECT_EQ(view->listMeasure, 1300.5);
  EXPECT_EQ(view->statusLimit, 1300);
  EXPECT_EQ(view->paragraphOption, 11);
  EXPECT_EQ(view->placement.e, 5.0);
  EXPECT_TRUE(view->runs.empty());
}

TEST_F(HostComposer, JustificationIsUnknownUntilItIsSet) {
  Open();
  EXPECT_EQ(ViewParagraph(handle.paragraph)->justification, std::nullopt);
}

TEST_F(HostComposer, EveryPasteIsARunInTheFontAndHeightThenInForce) {
  Open();
  CharacterState* character = GetCurrentParagraphStatusAddress()->character;
  edPasteString(u"bare", 4, 2, nullptr, false);
  character->font = Find(u"Serif");
  character->height = 10.0;
  edPasteString(u"one two", 3, 2, nullptr, false);
  character->font = Find(u"Sans");
  character->height = 20.0;
  edPasteString(u"", 0, 2, nullptr, false);
  edPasteString(u"x", -1, 2, nullptr, false);
  const auto runs = ViewParagraph(handle.paragraph)->runs;
  ASSERT_EQ(runs.size(), 4u);
  EXPECT_EQ(runs[0].font, std::nullopt);
  EXPECT_EQ(runs[1].text, u"one");
  EXPECT_EQ(runs[1].font, u"Serif");
  EXPECT_EQ(runs[1].height, 10.0);
  EXPECT_EQ(runs[2].text, u"");
  EXPECT_EQ(runs[2].font, u"Sans");
  EXPECT_EQ(runs[2].height, 20.0);
  EXPECT_EQ(runs[3].text, u"");
}

TEST_F(HostComposer, AClosedParagraphKeepsItsText) {
  Open();
  const std::u16string longText(999, u'x');
  edPasteString(longText.c_str(), 999, 2, nullptr, false);
  GetCurrentParagraphStatusAddress()->character->font = Find(u"Serif");
  edPasteString(u"end", 3, 2, nullptr, false);
  CloseParagraph(1, &handle);
  const auto runs = ViewParagraph(handle.paragraph)->runs;
  ASSERT_EQ(runs.size(), 2u);
  EXPECT_EQ(runs[0].text, longText);
  EXPECT_EQ(runs[0].font, std::nullopt);
  EXPECT_EQ(runs[1].text, u"end");
  EXPECT_EQ(runs[1].font, u"Serif");
  EXPECT_GE(ParagraphBytes(handle.paragraph), sizeof(ComposedParagraph) + 1002 * sizeof(char16_t));
  EXPECT_EQ(ParagraphBytes(nullptr), 0u);
}

TEST_F(HostComposer, TheRecordsOfTheLastClosedParagraphCanStillBeRead) {
  Open();
  const ParagraphStatus* status = GetCurrentParagraphStatusAddress();
  status->character->charScale = 700;
  CloseParagraph(1, &handle);
  CloseParagraph(1, &handle);
  EXPECT_EQ(status->character->charScale, 700);
}

TEST_F(HostComposer, AParagraphThatStaysOpenKeepsItsRecordsBesideAnother) {
  Open();
  const ParagraphHandle first = handle;
  GetCurrentParagraphStatusAddress()->character->charScale = 700;
  Open();
  GetCurrentParagraphStatusAddress()->character->charScale = 800;
  CloseParagraph(1, &handle);
  EXPECT_EQ(ViewParagraph(first.paragraph)->charScale, 700);
  first.status->character->charScale = 900;
  ParagraphHandle closing = first;
  ASSERT_GE(CloseParagraph(1, &closing), 0);
  EXPECT_EQ(ViewParagraph(first.paragraph)->charScale, 900);
  EXPECT_EQ(ViewParagraph(handle.paragraph)->charScale, 800);
}

TEST_F(HostComposer, EachOfManyParagraphsIsFoundUntilItGoes) {
  constexpr std::size_t kCount = 1000, kStep = 387;  // without a common divisor, so that the steps reach all
  std::vector<ParagraphHandle> handles;
  for (std::size_t i = 0; i < kCount; ++i) {
    Open();
    CloseParagraph(1, &handle);
    handles.push_back(handle);
  }
  std::vector<bool> there(kCount, true);
  for (std::size_t gone = 0; gone < kCount; ++gone) {
    const std::size_t i = gone * kStep % kCount;
    const ComposedParagraph* address = handles[i].paragraph;
    ASSERT_GE(CloseParagraph(0, &handles[i]), 0);
    there[i] = false;
    EXPECT_FALSE(ViewParagraph(address));
    if (gone % 50 != 0) continue;
    for (std::size_t other = 0; other < kCount; ++other) {
      if (!there[other]) continue;
      const auto view = ViewParagraph(handles[other].paragraph);
      ASSERT_TRUE(view) << other;
      EXPECT_EQ(view->tag, other + 1);
    }
  }
  EXPECT_EQ(LiveCounts().paragraphs, 0u);
}

TEST_F(HostComposer, TextWithoutAnOpenParagraphGoesNowhere) {
  edPasteString(u"x", 1, 2, nullptr, false);
  EXPECT_EQ(LiveCounts().paragraphs, 0u);
}

TEST_F(HostComposer, AnAbandonedParagraphIsGone) {
  Open();
  const ComposedParagraph* composed = handle.paragraph;
  EXPECT_EQ(LiveCounts().paragraphs, 1u);
  EXPECT_GE(CloseParagraph(0, &handle), 0);
  EXPECT_EQ(LiveCounts().paragraphs, 0u);
  EXPECT_FALSE(ViewParagraph(composed));
  EXPECT_EQ(GetCurrentParagraphStatusAddress(), nullptr);
  EXPECT_LT(CloseParagraph(0, &handle), 0);
}

TEST_F(HostComposer, OpeningFailsOnDemand) {
  HostFailureSwitches().openParagraph = true;
  EXPECT_LT(Open(), 0);
  EXPECT_EQ(LiveCounts().paragraphs, 0u);
}

TEST_F(HostComposer, ClosingFailsOnDemandAndAbandoningStillWorks) {
  Open();
  HostFailureSwitches().closeParagraph = true;
  EXPECT_LT(CloseParagraph(1, &handle), 0);
  EXPECT_NE(GetCurrentParagraphStatusAddress(), nullptr);
  EXPECT_GE(CloseParagraph(0, &handle), 0);
  EXPECT_EQ(LiveCounts().paragraphs, 0u);
}

TEST_F(HostComposer, OpensWithTheListFlagOnDemand) {
  HostFailureSwitches().listFlag = true;
  Open();
  EXPECT_NE(GetCurrentParagraphStatusAddress()->lines->listFlag, 0);
}

TEST_F(HostComposer, OpensWithRecordsOfAnotherParagraphOnDemand) {
  HostFailureSwitches().usedRecords = true;
  Open(100.5, 200.5);
  const ParagraphStatus* status = GetCurrentParagraphStatusAddress();
  EXPECT_EQ(status->lines->listFlag, 0);
  EXPECT_EQ(status->character->font, nullptr);
  EXPECT_EQ(std::uint32_t{status->textLine->lineMode}, 0xA5A5A5A5u);
  EXPECT_EQ(std::uint16_t{status->character->fontCode}, 0xA5A5);
  EXPECT_EQ(static_cast<std::uint32_t>(status->statusLimit), 0xA5A5A5A5u);
  EXPECT_EQ(static_cast<std::uint32_t>(status->paragraphInfo->paragraphOption), 0xA5A5A5A5u);
  EXPECT_EQ(ViewParagraph(handle.paragraph)->position.x, 100.5);
}

TEST_F(HostComposer, AResetFreesParagraphsThatNobodyReleased) {
  Open();
  CloseParagraph(1, &handle);
  Open();
  EXPECT_EQ(LiveCounts().paragraphs, 2u);
  ResetHost();
  EXPECT_EQ(LiveCounts().paragraphs, 0u);
  EXPECT_EQ(GetCurrentParagraphStatusAddress(), nullptr);
}

TEST_F(HostComposer, AFontReplacementLeavesTextInUnlessTold) {
  const std::size_t before = LiveCounts().fontReplacements;
  const CFontReplacement usual("svg");
  EXPECT_EQ(usual.skipText, 0);
  EXPECT_EQ(LiveCounts().fontReplacements, before + 1);
  HostFailureSwitches().skipText = true;
  const CFontReplacement skipping("svg");
  EXPECT_EQ(skipping.skipText, 1);
}

using HostFonts = HostComposer;

TEST_F(HostFonts, EveryNameIsFoundAtTheStart) {
  FontRecord* font = Find(u"No Such Font");
  ASSERT_NE(font, nullptr);
  EXPECT_EQ(FontName(*font), u"No Such Font");
  EXPECT_EQ(Find(u"No Such Font"), font);
  EXPECT_NE(Find(u"Another"), font);
  EXPECT_NE(std::int32_t{font->fontClass}, 2);
  EXPECT_EQ(std::uint16_t{font->fontCode}, 1);
  EXPECT_EQ(std::uint16_t{Find(u"Another")->fontCode}, 1);
}

TEST_F(HostFonts, ARecordSurvivesAReset) {
  FontRecord* font = Find(u"Lasting");
  ResetHost();
  EXPECT_EQ(Find(u"Lasting"), font);
  EXPECT_EQ(FontName(*font), u"Lasting");
}

TEST_F(HostFonts, WithNoFontsNoneIsFoundForcedOrReplaced) {
  SetHostFontMode(HostFontMode::kNone);
  CFontReplacement replacement("svg");
  for (const int kind : {1, 2, 3}) {
    EXPECT_EQ(AddFont(0, kind, u"Arial", 0, 0), nullptr);
    EXPECT_EQ(AddFont(0, kind, u"Arial", 0, 1), nullptr);
  }
  EXPECT_EQ(ChooseReplacementFont(&replacement, u"Arial", -1, -1), nullptr);
}

TEST_F(HostFonts, OnlyListedFontsAreFoundFromTheList) {
  SetHostFontMode(HostFontMode::kListed);
  SetListedFonts({u"Arial", u"Serif"}, u"");
  CFontReplacement replacement("svg");
  EXPECT_EQ(FontName(*Find(u"Arial")), u"Arial");
  EXPECT_EQ(Find(u"arial"), nullptr);
  EXPECT_EQ(Find(u"Arial Regular"), nullptr);
  EXPECT_EQ(AddFont(0, 2, u"Other", 0, 1), nullptr);
  EXPECT_EQ(ChooseReplacementFont(&replacement, u"Other", -1, -1), nullptr);
  // What a font manager has activated is found.
  EXPECT_EQ(FontName(*AddFont(0, 3, u"Other", 0, 0)), u"Other");
  EXPECT_EQ(FontName(*AddFont(0, 1, u"Other", 0, 0)), u"Other");

  SetListedFonts({}, u"Stand-in");
  EXPECT_EQ(FontName(*AddFont(0, 2, u"Other", 0, 1)), u"Stand-in");
  EXPECT_EQ(FontName(*ChooseReplacementFont(&replacement, u"Other", -1, -1)), u"Stand-in");
}

TEST_F(HostFonts, TheFontsOfTheSystemAreThoseOfFontconfig) {
  SetHostFontMode(HostFontMode::kSystem);
  CFontReplacement replacement("svg");
  EXPECT_EQ(Find(u"No Such Family 4711"), nullptr);
  EXPECT_EQ(Find(u""), nullptr);
  const FontRecord* best = ChooseReplacementFont(&replacement, u"No Such Family 4711", -1, -1);
  if (best == nullptr) GTEST_SKIP() << "no fonts are installed";
  const std::u16string family(FontName(*best));
  EXPECT_NE(family, u"No Such Family 4711");
  EXPECT_EQ(Find(family.c_str()), best);
  EXPECT_EQ(AddFont(0, 2, u"No Such Family 4711", 0, 1), best);
}

TEST_F(HostFonts, SearchAndReplacementFailOnDemand) {
  CFontReplacement replacement("svg");
  HostFailureSwitches().addFont = true;
  EXPECT_EQ(AddFont(0, 2, u"Arial", 0, 1), nullptr);
  EXPECT_NE(ChooseReplacementFont(&replacement, u"Arial", -1, -1), nullptr);
  HostFailureSwitches().chooseReplacementFont = true;
  EXPECT_EQ(ChooseReplacementFont(&replacement, u"Arial", -1, -1), nullptr);
}

TEST_F(HostFonts, TheReplacedFontsNumberBelongsToTheName) {
  FontRecord* font = Find(u"Serif");
  const std::uint32_t id = GetReplacedFontID(u"Arial", -1, -1, font);
  EXPECT_NE(id, 0u);
  EXPECT_EQ(GetReplacedFontID(u"Arial", -1, -1, font), id);
  EXPECT_NE(GetReplacedFontID(u"Arial Black", -1, -1, font), id);
  EXPECT_NE(GetReplacedFontID(u"", -1, -1, font), 0u);
}
