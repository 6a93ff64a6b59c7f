#include <stdexcept>
#include <utility>

#include "host/font_manager.h"
#include "run/command_queue.h"
#include "tests/support/fake_document.h"
#include "tests/support/host_journal.h"

namespace {

class CloseFileCall : public FilterTest {};

}  // namespace

TEST_F(CloseFileCall, GivesEverythingBackInThisOrder) {
  HostJournal journal;
  FakeDocument document;
  FakeNode& defs = document.root.Add(u"defs");
  FakeNode& gradient = defs.Add(u"radialGradient");
  FakeNode& pattern = defs.Add(u"pattern");
  FakeNode& clip = defs.Add(u"clipPath");
  FakeNode& shape = document.root.Add(u"rect");
  SetHostUnits(301);
  ASSERT_EQ(Check("x"), 1);
  journal.Take();
  for (FakeNode* node : {&document.root, &defs, &gradient, &pattern, &clip, &shape}) node->releaseLog = journal.File();

  EXPECT_EQ(CloseFile(), 0);
  EXPECT_EQ(journal.Take(), (Lines{
                                "ShowPasteStringChanges(1)",
                                "UdateUnits(301)",
                                "MemInitBaseT::Free()",  // five slots of the opening commands, and their table
                                "MemInitBaseT::Free()",
                                "MemInitBaseT::Free()",
                                "MemInitBaseT::Free()",
                                "MemInitBaseT::Free()",
                                "MemInitBaseT::Free()",
                                "release clipPath",
                                "MemInitBaseT::Free()",
                                "release pattern",
                                "MemInitBaseT::Free()",
                                "release radialGradient",
                                "MemInitBaseT::Free()",
                                "CFontReplacement::~CFontReplacement()",
                                "DBCollapseClipGroup()",
                                "GetIntTavlor(Grouping,CollapseDatabase,1,1)=1",
                                "WriteIntTavlor(Grouping,Discio Refresh ClipGroup,1,1)",
                                "release defs",
                                "release rect",
                                "release svg",
                            }));
}

TEST_F(CloseFileCall, LeavesPayloadsThatWereNeverPoppedAlone) {
  StartMachine();
  Feed("0 0 M 10 0 L");
  const ImportCommand line = *run.commands.slots[1];
  ASSERT_EQ(Describe(line), "LINE 0,100 10,100");
  CloseFile();
  EXPECT_EQ(run.commands.count, 0u);
  EXPECT_EQ(Describe(line), "LINE 0,100 10,100");
  ReleaseCommand(line);
}

TEST_F(CloseFileCall, EmptiesThePriorityQueueToo) {
  PushValue(KEY_FILL, 1);
  std::swap(run.commands, run.priority);
  CloseFile();
  EXPECT_EQ(run.priority.count, 0u);
  EXPECT_EQ(run.priority.capacity, 0u);
}

TEST_F(CloseFileCall, LeavesCursorCountsScaleAndFlagsBehind) {
  ImportBody("<defs><clipPath id='a'><rect width='1' height='1'/></clipPath></defs><rect clip-path='url(#a)'/>");
  const double height = run.DocHeight;
  SetHostUnits(301);
  run.UnitsForced = 1;
  CloseFile();
  EXPECT_EQ(run.NodeCursor, 2);
  EXPECT_EQ(run.NodeCount, 2);
  EXPECT_EQ(run.CursorPrimed, 1u);
  EXPECT_EQ(run.definitions.ClipDefs.count, 2);
  EXPECT_EQ(run.definitions.GradientDefs.count, 1);
  EXPECT_EQ(run.clip.clipPending, 1);
  EXPECT_EQ(run.UnitScale, 0.1);
  EXPECT_EQ(run.DocHeight, height);
  EXPECT_EQ(run.UnitsForced, 1);
  EXPECT_NE(run.DomDocument, nullptr);
  EXPECT_NE(run.file.FileBuffer, nullptr);
  EXPECT_EQ(run.RootNode, nullptr);
  EXPECT_TRUE(run.NodeList.empty());
}

TEST_F(CloseFileCall, DeletesFontReplacementAndLink) {
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(LiveCounts().fontReplacements, 1u);
  CloseFile();
  EXPECT_EQ(LiveCounts().fontReplacements, 0u);
  EXPECT_EQ(run.FontReplacementObject, nullptr);
  EXPECT_EQ(GetFontManager(), nullptr);
}

TEST_F(CloseFileCall, DoesTheHostsPartWithoutACheckFile) {
  HostJournal journal;
  EXPECT_EQ(CloseFile(), 0);
  EXPECT_EQ(journal.Take(), (Lines{
                                "ShowPasteStringChanges(1)",
                                "DBCollapseClipGroup()",
                                "GetIntTavlor(Grouping,CollapseDatabase,1,1)=1",
                                "WriteIntTavlor(Grouping,Discio Refresh ClipGroup,1,1)",
                            }));
}

TEST_F(CloseFileCall, ToleratesACheckFileThatFailedAtTheFirstReadWithoutTouchingADocument) {
  FakeDocument document;
  EXPECT_EQ(Check(""), 0);
  EXPECT_EQ(CloseFile(), 0);
  EXPECT_EQ(document.calls, std::vector<std::string>());
}

TEST_F(CloseFileCall, ToleratesACheckFileThatFailedAtTheLoad) {
  EXPECT_EQ(Check("<svg>"), 0);
  EXPECT_EQ(CloseFile(), 0);
}

TEST_F(CloseFileCall, ToleratesACheckFileThatFailedForWantOfChildren) {
  FakeDocument document;
  EXPECT_EQ(Check("x"), 0);
  EXPECT_EQ(document.root.references, 1);
  EXPECT_EQ(CloseFile(), 0);
  EXPECT_EQ(document.root.references, 0);
  EXPECT_EQ(document.references, 1);  // the document itself stays for the life of the library
}

TEST_F(CloseFileCall, MayBeCalledTwice) {
  ImportBody("<defs><clipPath/></defs><g/>");
  EXPECT_EQ(CloseFile(), 0);
  EXPECT_EQ(CloseFile(), 0);
}

// --- One loaded instance serves one import

TEST_F(CloseFileCall, ASecondCheckFileFailsWhenTheOldCursorPassesTheEndOfTheNewList) {
  ImportBody("<g/><g/>");
  CloseFile();
  try {
    Check(Document("<g/><g/><g/>"));
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
  }
  // The walk began at node 2, where the old one had stopped.
  EXPECT_EQ(run.NodeCursor, 3);
}

TEST_F(CloseFileCall, ASecondCheckFileWorksWhenNothingWasTranslatedInBetween) {
  ASSERT_EQ(Check(Document("<g/><g/>")), 1);
  CloseFile();
  EXPECT_EQ(Check(Document("<g/>")), 1);
}

TEST_F(CloseFileCall, ASecondCheckFileWithoutOneLeavesTheFirstDocumentReadable) {
  ASSERT_EQ(Check(Document("<defs><clipPath id=\"c\"/></defs><g/>")), 1);
  IXMLDOMNode* const first = run.NodeList.At(1);
  ASSERT_EQ(Check(Document("<path/><rect/>")), 1);
  EXPECT_EQ(GetNodeName(first), u"g");
  EXPECT_EQ(run.documents.size(), 2u);
  CloseFile();
}
