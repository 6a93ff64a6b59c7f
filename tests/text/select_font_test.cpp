#include "tests/text/text_fixture.h"

namespace {

using FontsOfImport = TextTest;

// Fonts are looked for in a paragraph that the test has opened; the host knows the listed names alone.
class FontSearch : public TextTest {
 protected:
  FontSearch() {
    StartMachine();
    SetHostFontMode(HostFontMode::kListed);
  }

  static bool Select(std::u16string_view name) {
    run.text.SetFontName(name);
    return SelectFont();
  }
  std::string Selected() const {
    return paragraph.character().font ? Utf8FromWide(::FontName(*paragraph.character().font)) : "none";
  }

  OpenedParagraph paragraph;
};

TEST_F(FontSearch, AListedFontIsTakenAtOnce) {
  SetListedFonts({u"Sans"}, u"");
  FontManagerDouble manager({2, 4});
  HostJournal journal;
  EXPECT_TRUE(Select(u"Sans"));
  EXPECT_EQ(ComposerCalls(journal), Lines{"AddFont(0,2,Sans,0,0)"});
  EXPECT_EQ(Selected(), "Sans");
  EXPECT_EQ(FontName(), "Sans");
  EXPECT_EQ(manager.requests, Lines{});
}

// --- The name without its "Regular"

TEST_F(FontSearch, ANameThatEndsInRegularIsTriedWithoutIt) {
  SetListedFonts({u"Arial"}, u"");
  HostJournal journal;
  EXPECT_TRUE(Select(u"Arial Regular"));
  EXPECT_EQ(ComposerCalls(journal), (Lines{"AddFont(0,2,Arial Regular,0,0)", "AddFont(0,2,Arial,0,0)"}));
  EXPECT_EQ(Selected(), "Arial");
  EXPECT_EQ(FontName(), "Arial");
  EXPECT_EQ(run.text.fontMemo.lastAskedName, u"Arial");
  EXPECT_EQ(run.text.fontMemo.lastResolvedName, u"Arial");
}

TEST_F(FontSearch, TheMemoDoesNotKnowTheNameThatWasCut) {
  SetListedFonts({u"Arial"}, u"");
  Select(u"Arial Regular");
  HostJournal journal;
  Select(u"Arial Regular");
  EXPECT_EQ(ComposerCalls(journal).size(), 2u);
  Select(u"Arial");
  EXPECT_EQ(ComposerCalls(journal), Lines{});
}

TEST_F(FontSearch, AListedNameKeepsItsRegular) {
  SetListedFonts({u"Arial", u"Arial Regular"}, u"");
  Select(u"Arial Regular");
  EXPECT_EQ(Selected(), "Arial Regular");
}

TEST_F(FontSearch, OnlyFourUnitsAtTheirPlacesDecideTheCut) {
  struct Case {
    const char16_t* name;
    const char* second;  // the name of the second try
  };
  const Case cases[] = {
      {u"A Regular", "A"},          // 9 units
      {u"ArialxRegular", "Arial"},  // whatever stands for the blank
      {u"Arial Regu123", "Arial"},  // whatever stands behind the four
      {u" Regular", ""},            // 8 units are not enough
      {u"Regular", ""},
      {u"Arial regular", ""},  // case counts
      {u"Arial REGULAR", ""},
      {u"Arial Regular ", ""},  // at other places
      {u"Arial Regular1", ""},
      {u"Regu Arial", ""},
      {u"Arial Regola", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf8FromWide(c.name));
    HostJournal journal;
    EXPECT_FALSE(Select(c.name));
    const std::string name = Utf8FromWide(c.name), cut = c.second;
    const std::string last = cut.empty() ? name : cut;
    Lines tries = {"AddFont(0,2," + name + ",0,0)"};
    if (!cut.empty()) tries.push_back("AddFont(0,2," + cut + ",0,0)");
    tries.push_back("AddFont(0,2," + last + ",0,1)");  // nothing else is at hand than force
    EXPECT_EQ(ComposerCalls(journal), tries);
    EXPECT_EQ(FontName(), last);
  }
}

// --- The font manager

TEST_F(FontSearch, AFontThatTheManagerActivatesByNameIsAskedForAgain) {
  FontManagerDouble manager({2, 4});
  HostJournal journal;
  EXPECT_TRUE(Select(u"Sans"));
  EXPECT_EQ(manager.requests, Lines{"2 Sans 256"});
  EXPECT_EQ(ComposerCalls(journal), (Lines{"AddFont(0,2,Sans,0,0)", "AddFont(0,3,Sans,0,0)"}));
  EXPECT_EQ(Selected(), "Sans");
}

TEST_F(FontSearch, ARefusedNameIsAskedForAsTheDefault) {
  FontManagerDouble manager({4});
  HostJournal journal;
  EXPECT_TRUE(Select(u"Sans"));
  EXPECT_EQ(manager.requests, (Lines{"2 Sans 256", "4 Sans 256"}));
  EXPECT_EQ(ComposerCalls(journal), (Lines{"AddFont(0,2,Sans,0,0)", "AddFont(0,1,Sans,0,0)"}));
  EXPECT_EQ(Selected(), "Sans");
}

TEST_F(FontSearch, AManagerThatRefusesBothLeavesItToTheReplacement) {
  FontManagerDouble manager({});
  MakeReplacementObject();
  SetListedFonts({}, u"Other");
  HostJournal journal;
  EXPECT_TRUE(Select(u"Sans"));
  EXPECT_EQ(manager.requests, (Lines{"2 Sans 256", "4 Sans 256"}));
  EXPECT_EQ(Only(journal.Take(), "AddFont"), Lines{"AddFont(0,2,Sans,0,0)"});
  EXPECT_EQ(Selected(), "Other");
}

TEST_F(FontSearch, ActivatedFontsThatAreStillMissingLeaveItToTheReplacement) {
  SetHostFontMode(HostFontMode::kNone);
  FontManagerDouble manager({2, 4});
  MakeReplacementObject();
  HostJournal journal;
  EXPECT_FALSE(Select(u"Sans"));
  EXPECT_EQ(manager.requests, (Lines{"2 Sans 256", "4 Sans 256"}));
  EXPECT_EQ(ComposerCalls(journal), (Lines{"AddFont(0,2,Sans,0,0)", "AddFont(0,3,Sans,0,0)", "AddFont(0,1,Sans,0,0)",
                                           "ChooseReplacementFont(Sans,-1,-1)"}));
}

TEST_F(FontSearch, TheManagerIsAskedForTheCutName) {
  FontManagerDouble manager({2});
  EXPECT_TRUE(Select(u"Sans Regular"));
  EXPECT_EQ(manager.requests, Lines{"2 Sans 256"});
}

TEST_F(FontSearch, TheManagerIsGivenALongNameWhole) {
  FontManagerDouble manager({2});
  EXPECT_TRUE(Select(std::u16string(531, u'f')));
  EXPECT_EQ(manager.requests, Lines{"2 " + std::string(531, 'f') + " 256"});
}

TEST_F(FontSearch, AManagerThatIsNotLinkedIsNotAsked) {
  FontManagerDouble manager({2, 4});
  run.FontManagerLinked = 0;
  HostJournal journal;
  EXPECT_FALSE(Select(u"Sans"));
  EXPECT_EQ(manager.requests, Lines{});
  EXPECT_EQ(ComposerCalls(journal), (Lines{"AddFont(0,2,Sans,0,0)", "AddFont(0,2,Sans,0,1)"}));
}

// --- Replacement and force

TEST_F(FontSearch, AReplacementBringsItsNumber) {
  MakeReplacementObject();
  SetListedFonts({}, u"Other");
  HostJournal journal;
  EXPECT_TRUE(Select(u"Sans"));
  const std::uint32_t id = paragraph.character().replacedFontId;
  EXPECT_EQ(ComposerCalls(journal), (Lines{"AddFont(0,2,Sans,0,0)", "ChooseReplacementFont(Sans,-1,-1)",
                                           "GetReplacedFontID(Sans,-1,-1)=" + std::to_string(id)}));
  EXPECT_EQ(id, GetReplacedFontID(u"Sans", -1, -1, nullptr));
  EXPECT_EQ(Selected(), "Other");
  EXPECT_EQ(FontName(), "Sans");
}

TEST_F(FontSearch, WithoutAReplacementThereIsNoFont) {
  MakeReplacementObject();
  HostJournal journal;
  EXPECT_FALSE(Select(u"Sans"));
  EXPECT_EQ(ComposerCalls(journal), (Lines{"AddFont(0,2,Sans,0,0)", "ChooseReplacementFont(Sans,-1,-1)"}));
  EXPECT_EQ(Selected(), "none");
}

TEST_F(FontSearch, AChooserThatFailsGivesNoFont) {
  SetListedFonts({}, u"Other");
  MakeReplacementObject();
  HostFailureSwitches().chooseReplacementFont = true;
  EXPECT_FALSE(Select(u"Sans"));
}

TEST_F(FontSearch, WithoutAReplacementObjectAFontIsForcedUnderTheCodeInForce) {
  SetListedFonts({}, u"Other");
  paragraph.character().fontCode = 7;
  HostJournal journal;
  EXPECT_TRUE(Select(u"Sans"));
  EXPECT_EQ(ComposerCalls(journal), (Lines{"AddFont(0,2,Sans,0,0)", "AddFont(7,2,Sans,0,1)"}));
  EXPECT_EQ(Selected(), "Other");
  EXPECT_EQ(paragraph.character().replacedFontId, 0u);
}

TEST_F(FontSearch, AFontThatCannotBeForcedIsNone) {
  SetListedFonts({}, u"Other");
  HostFailureSwitches().addFont = true;
  EXPECT_FALSE(Select(u"Sans"));
  EXPECT_EQ(Selected(), "none");
}

// --- The code of the font

TEST_F(FontSearch, TheCodeOfAFontIsTakenUnlessItsClassIs2) {
  SetListedFonts({u"Class 1", u"Class 2", u"Class 3"}, u"");
  for (const std::int32_t fontClass : {1, 2, 3}) {
    SCOPED_TRACE(fontClass);
    const std::u16string name = u"Class " + std::u16string(1, static_cast<char16_t>(u'0' + fontClass));
    FontRecord* font = AddFont(0, 2, name.c_str(), 0, 0);
    font->fontClass = fontClass;
    font->fontCode = 42;
    for (const char* search : {"first", "from the memo"}) {
      SCOPED_TRACE(search);
      paragraph.character().fontCode = 7;
      EXPECT_TRUE(Select(name));
      EXPECT_EQ(paragraph.character().fontCode, fontClass == 2 ? 7 : 42);
    }
  }
}

// --- The memo

TEST_F(FontSearch, TheLastNameIsNotSearchedAgain) {
  MakeReplacementObject();
  SetListedFonts({}, u"Other");
  Select(u"Sans");
  const std::uint32_t id = paragraph.character().replacedFontId;
  paragraph.character().font = nullptr;
  paragraph.character().replacedFontId = 0;
  HostJournal journal;
  EXPECT_TRUE(Select(u"Sans"));
  EXPECT_EQ(ComposerCalls(journal), Lines{});
  EXPECT_EQ(Selected(), "Other");
  EXPECT_EQ(paragraph.character().replacedFontId, id);
  EXPECT_NE(id, 0u);
}

TEST_F(FontSearch, AMatchOfTheMemoRewritesTheName) {
  SetListedFonts({u"Sans"}, u"");
  Select(u"Sans");
  run.text.fontMemo.lastResolvedName = u"Resolved";
  EXPECT_TRUE(Select(u"Sans"));
  EXPECT_EQ(FontName(), "Resolved");
}

TEST_F(FontSearch, TheMemoComparesWholeNamesExactly) {
  SetListedFonts({u"Sans", u"sans", u"San", u"Sans "}, u"");
  Select(u"Sans");
  HostJournal journal;
  for (const char16_t* name : {u"sans", u"San", u"Sans "}) {
    Select(name);
    Select(u"Sans");
  }
  EXPECT_EQ(ComposerCalls(journal).size(), 6u);
}

TEST_F(FontSearch, TheMemoHoldsOneNameOnly) {
  SetListedFonts({u"Sans", u"Serif"}, u"");
  HostJournal journal;
  for (const char16_t* name : {u"Sans", u"Serif", u"Serif", u"Sans"}) Select(name);
  EXPECT_EQ(ComposerCalls(journal),
            (Lines{"AddFont(0,2,Sans,0,0)", "AddFont(0,2,Serif,0,0)", "AddFont(0,2,Sans,0,0)"}));
}

TEST_F(FontSearch, AFailedSearchIsNotRemembered) {
  SetListedFonts({u"Sans"}, u"");
  Select(u"Sans");
  EXPECT_FALSE(Select(u"Missing"));
  HostJournal journal;
  EXPECT_TRUE(Select(u"Sans"));
  EXPECT_EQ(ComposerCalls(journal), Lines{});
  EXPECT_FALSE(Select(u"Missing"));
  EXPECT_NE(ComposerCalls(journal), Lines{});
}

TEST_F(FontSearch, NoNameMatchesTheMemoBeforeTheFirstSearch) {
  HostJournal journal;
  EXPECT_FALSE(Select(u""));
  EXPECT_EQ(Only(journal.Take(), "AddFont(0,2,,0,0)").size(), 1u);
}

TEST_F(FontsOfImport, TwoElementsWithOneFontAskForItOnce) {
  HostJournal journal;
  ImportTexts(
      "<text font-family='Sans'>a</text><text>b</text><text font-family='Sans'>c</text>"
      "<g><text style='font-family:Sansl' font-family='Sansl'>d</text></g><text font-family='Sansl'>e</text>");
  EXPECT_EQ(Only(journal.Take(), "AddFont"), (Lines{"AddFont(0,2,Sans,0,0)", "AddFont(0,2,arial,0,0)",
                                                    "AddFont(0,2,Sans,0,0)", "AddFont(0,2,Sansl,0,0)"}));
}

// --- Height

TEST_F(FontSearch, TheHeightIsSetOnlyUnderAFont) {
  SetTextHeight(0.1);
  EXPECT_EQ(paragraph.character().height, 0.0);
  EXPECT_EQ(paragraph.character().heightCopy, 0.0);
  SetListedFonts({u"Sans"}, u"");
  Select(u"Sans");
  SetTextHeight(0.1);
  EXPECT_EQ(paragraph.character().height, static_cast<double>(0.1f));
  EXPECT_EQ(paragraph.character().heightCopy, static_cast<double>(0.1f));
}

// --- The font manager of an import

TEST_F(FontsOfImport, WithoutTheLibraryTheDefaultManagerGrantsEverything) {
  SetHostFontMode(HostFontMode::kNone);
  HostJournal journal;
  ImportTexts("<text font-family='Sans Regular'>a</text>");
  EXPECT_EQ(UsingFontManager(), 1);
  ASSERT_NE(GetFontManager(), nullptr);
  EXPECT_EQ(GetFontManager()->loaded, 0u);
  EXPECT_EQ(GetFontManager()->object, nullptr);
  EXPECT_EQ(GetFontManager()->operator->(), GetFontManager()->iface);
  EXPECT_EQ((*GetFontManager())->Operation14(0), 0x80000000u);
  EXPECT_EQ(From("AddFont", ComposerCalls(journal)),
            (Lines{"AddFont(0,2,Sans Regular,0,0)", "AddFont(0,2,Sans,0,0)", "AddFont(0,3,Sans,0,0)",
                   "AddFont(0,1,Sans,0,0)", "ChooseReplacementFont(Sans,-1,-1)", "CloseParagraph(0)=0"}));
}

// The default grants the request by name, so that the replacement is not asked for.
TEST_F(FontsOfImport, WithoutTheLibraryAMissingFontIsTakenAsActivated) {
  SetHostFontMode(HostFontMode::kListed);
  SetListedFonts({}, u"Other");
  ImportTexts("<text font-family='Sans' font-size='5pt'>a</text>");
  EXPECT_EQ(Runs(), Lines{"a|Sans|5"});
}

TEST_F(FontsOfImport, TheBusyCursorShowsWhileTheManagerIsLinked) {
  HostJournal journal;
  ImportTexts("<text>a</text>");
  EXPECT_EQ(Only(journal.Take(), "HourGlass"), (Lines{"HourGlass(1)", "HourGlass(0)"}));
}

TEST_F(FontsOfImport, AnImportAsksTheManagerInItsLink) {
  SetHostFontMode(HostFontMode::kListed);
  ResetImportRun();
  FontManagerDouble manager({2});
  run.FontManagerLinked = 0;
  HostJournal journal;
  Import(Document("<text font-family='Sans'>a</text>"));
  EXPECT_EQ(run.FontManagerLinked, 1);
  EXPECT_EQ(manager.requests, Lines{"2 Sans 256"});
  // The link existed, so that it was not made again.
  EXPECT_EQ(manager.otherCalls, Lines{});
  EXPECT_EQ(Only(journal.Take(), "HourGlass"), Lines{});
}

}  // namespace
