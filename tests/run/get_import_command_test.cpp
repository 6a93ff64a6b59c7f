#include <stdexcept>
#include <utility>

#include "run/command_queue.h"
#include "tests/support/fake_document.h"
#include "tests/support/filter_test.h"

namespace {

const Lines kOpening = {"FILL 0", "FILL 0", "CNST 2", "MLIM 200", "WRUL 0"};

class GetImportCommandCall : public FilterTest {
 protected:
  // The next `n` records as lines, given back at once.
  static Lines Next(std::size_t n) {
    Lines lines;
    for (; n > 0; --n) {
      const ImportCommand record = GetImportCommand();
      lines.push_back(Describe(record));
      ReleaseCommand(record);
    }
    return lines;
  }
};

}  // namespace

TEST_F(GetImportCommandCall, DefsAloneYieldTheOpeningCommandsAndThenTheEndForEver) {
  ASSERT_EQ(Check(Document("<defs><linearGradient id='a'/></defs>")), 1);
  EXPECT_EQ(Next(5), kOpening);
  EXPECT_EQ(Next(4), (Lines{"ENDF", "ENDF", "ENDF", "ENDF"}));
}

TEST_F(GetImportCommandCall, TheSixthCallTranslatesTheWholeDrawing) {
  ASSERT_EQ(Check(Document("<g/><g/><g/>")), 1);
  EXPECT_EQ(Next(5), kOpening);
  EXPECT_EQ(run.NodeCursor, 0);
  EXPECT_EQ(run.CursorPrimed, 0u);
  EXPECT_EQ(Next(1), (Lines{"SGRP 1"}));
  EXPECT_EQ(run.NodeCursor, 3);
  EXPECT_EQ(run.CursorPrimed, 1u);
  EXPECT_EQ(Next(6), (Lines{"EGRP 1", "SGRP 1", "EGRP 1", "SGRP 1", "EGRP 1", "ENDF"}));
}

TEST_F(GetImportCommandCall, TranslatesEachOfTheseElementsAtTheTopLevel) {
  for (const char* element : {
           "<path style='fill:none' d='M0,0 L1,1'/>",
           "<polygon style='fill:none' points='0,0 1,1 1,0'/>",
           "<polyline style='fill:none' points='0,0 1,1 1,0'/>",
           "<rect style='fill:none' width='1' height='1'/>",
           "<g/>",
           "<circle style='fill:none' r='1'/>",
           "<ellipse style='fill:none' rx='1' ry='2'/>",
           "<line style='fill:none' x1='0' y1='0' x2='1' y2='1'/>",
           "<text>a</text>",
       }) {
    SCOPED_TRACE(element);
    ResetImportRun();
    EXPECT_NE(ImportBody(element), Lines());
  }
}

TEST_F(GetImportCommandCall, TranslatesAnImageAtTheTopLevel) {
  ImportBody("<image xlink:href='absent.png' width='1' height='1'/>");
  EXPECT_EQ(AskedFiles().size(), 1u);
}

TEST_F(GetImportCommandCall, PassesOverEverythingElseAtTheTopLevel) {
  for (const char* element : {
           "<Path d='M0,0 L1,1'/>",
           "<RECT width='1' height='1'/>",
           "<rectangle width='1' height='1'/>",
           "<rec width='1' height='1'/>",
           "<title>a</title>",
           "<metadata>a</metadata>",
           "<style>rect{}</style>",
           "<use xlink:href='#a'/>",
           "<tspan>a</tspan>",
           "<linearGradient/>",
           "<clipPath><rect width='1' height='1'/></clipPath>",
           "<svg><rect width='1' height='1'/></svg>",
           "<inkscape:namedview inkscape:cy='5'><rect width='1' height='1'/></inkscape:namedview>",
           "<!-- <rect width='1' height='1'/> -->",
           "text",
           "<![CDATA[<rect/>]]>",
       }) {
    SCOPED_TRACE(element);
    ResetImportRun();
    EXPECT_EQ(ImportBody(element), Lines());
  }
}

TEST_F(GetImportCommandCall, MatchesTheLocalNameWhateverThePrefix) {
  const Lines plain = ImportBody("<path d='M0,0 L1,1'/>");
  EXPECT_NE(plain, Lines());
  ResetImportRun();
  EXPECT_EQ(ImportBody("<svg:path d='M0,0 L1,1'/>"), plain);
  ResetImportRun();
  EXPECT_EQ(ImportBody("<inkscape:path d='M0,0 L1,1'/>"), plain);
}

// The target is the local name, and there are no attributes.
TEST_F(GetImportCommandCall, TakesAProcessingInstructionForTheElementThatItIsNamedAfter) {
  const Lines element = ImportBody("<g/>");
  EXPECT_EQ(element, (Lines{"SGRP 1", "EGRP 1"}));
  ResetImportRun();
  EXPECT_EQ(ImportBody("<?g fill='red'?>"), element);
}

TEST_F(GetImportCommandCall, ReadsOneAttributeOfANamedviewAndDropsIt) {
  FakeDocument document;
  FakeNode& view = document.root.Add(u"sodipodi:namedview").Set(u"inkscape:cy", u"5");
  ASSERT_EQ(Check("x"), 1);
  EXPECT_EQ(Next(6), kOpening + Lines{"ENDF"});
  view.namedItemStatus = kFailed;
  run.NodeCursor = 0;
  EXPECT_THROW(GetImportCommand(), DocumentError);
}

// --- Records that do not stand for a fact

TEST_F(GetImportCommandCall, DropsANullRecordAndLeavesOneMoreEndBehind) {
  ASSERT_EQ(Check(Document("<g/>")), 1);
  Drain();
  PushCommand(KEY_NULL);
  PushValue(KEY_FILL, 7);
  // The call that pops the null record goes on to translate and to queue the end.
  EXPECT_EQ(Next(1), (Lines{"FILL 7"}));
  EXPECT_EQ(run.commands.count, 3u);
  PushCommand(KEY_NULL);
  PushValue(KEY_FILL, 8);
  EXPECT_EQ(Next(5), (Lines{"SGRP 1", "EGRP 1", "ENDF", "FILL 8", "ENDF"}));
}

TEST_F(GetImportCommandCall, ReturnsTheSecondOfTwoNullRecords) {
  ASSERT_EQ(Check(Document("<defs/>")), 1);
  Drain();
  PushCommand(KEY_NULL);
  PushCommand(KEY_NULL);
  PushValue(KEY_FILL, 7);
  EXPECT_EQ(Next(4), (Lines{"NULL", "FILL 7", "ENDF", "ENDF"}));
}

TEST_F(GetImportCommandCall, ReturnsRecordsOfThePriorityQueueFirst) {
  ASSERT_EQ(Check(Document("<defs/>")), 1);
  Drain();
  PushValue(KEY_FILL, 1);
  PushValue(KEY_FILL, 2);
  std::swap(run.commands, run.priority);
  PushValue(KEY_FILL, 3);
  EXPECT_EQ(Next(4), (Lines{"FILL 1", "FILL 2", "FILL 3", "ENDF"}));
}

// The pop behind the translation looks there first as well.
TEST_F(GetImportCommandCall, ReturnsAPriorityRecordBehindANullOneBeforeTheDrawing) {
  ASSERT_EQ(Check(Document("<g/>")), 1);
  Drain();
  PushCommand(KEY_NULL);
  PushValue(KEY_FILL, 1);
  std::swap(run.commands, run.priority);
  EXPECT_EQ(Next(4), (Lines{"FILL 1", "SGRP 1", "EGRP 1", "ENDF"}));
}

// --- A list that is shorter than the document said

TEST_F(GetImportCommandCall, FailsPastTheEndOfTheListEachTime) {
  ASSERT_EQ(Check(Document("<g/>")), 1);
  Drain();
  run.NodeCount = 3;
  const auto expectFailure = [] {
    try {
      GetImportCommand();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
    }
    EXPECT_EQ(run.NodeCursor, 1);
  };
  expectFailure();
  // What had been translated before is still there.
  EXPECT_EQ(Next(2), (Lines{"SGRP 1", "EGRP 1"}));
  expectFailure();
}

// --- The file handle

TEST_F(GetImportCommandCall, FileHandleIsZeroAtEveryStage) {
  EXPECT_EQ(GetFileHandle(), 0);
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(GetFileHandle(), 0);
  Next(8);
  EXPECT_EQ(GetFileHandle(), 0);
  CloseFile();
  EXPECT_EQ(GetFileHandle(), 0);
}

TEST_F(GetImportCommandCall, FileHandleIsSignExtended) {
  run.InputHandle = -2;
  EXPECT_EQ(GetFileHandle(), std::intptr_t{-2});
}
