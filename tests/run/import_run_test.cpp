// The state as the filter is loaded.

#include "run/import_run.h"

#include "tests/support/filter_test.h"

namespace {

class ImportRunState : public FilterTest {
 protected:
  static void ExpectFresh() {
    EXPECT_EQ(run.DocHeight, 0.0);
    EXPECT_EQ(run.UnitScale, 0.035277777777777776);
    EXPECT_EQ(run.BaseDirectory, u"");
    EXPECT_EQ(run.file.FileBuffer, nullptr);
    EXPECT_EQ(run.file.FileBufferSize, 0u);
    EXPECT_EQ(run.DomDocument, nullptr);
    EXPECT_EQ(run.RootNode, nullptr);
    EXPECT_TRUE(run.NodeList.empty());
    EXPECT_EQ(run.NodeCount, 0);
    EXPECT_EQ(run.NodeCursor, 0);
    EXPECT_EQ(run.CurrentNode, nullptr);
    EXPECT_EQ(run.CursorPrimed, 0u);
    for (const DefinitionTable& table :
         {run.definitions.ClipDefs, run.definitions.GradientDefs, run.definitions.PatternDefs}) {
      EXPECT_EQ(table.records, nullptr);
      EXPECT_EQ(table.count, 1);
    }
    EXPECT_EQ(run.DebugMode, 0);
    EXPECT_EQ(run.OverprintEnabled, 0);
    EXPECT_EQ(run.GroupsEnabled, 0);
    EXPECT_EQ(run.DefaultWindingRule, 1);
    EXPECT_EQ(run.UnitsForced, 0);
    EXPECT_EQ(run.FontReplacementObject, nullptr);
    EXPECT_EQ(run.FontManagerLinked, 0);
    EXPECT_EQ(run.fontManager.link, nullptr);
    EXPECT_EQ(run.path.PathOpen, 0u);
    EXPECT_EQ(run.text.TextAnchor, 0);
    EXPECT_EQ(run.InputHandle, 0);
    EXPECT_EQ(run.commands.capacity, 0u);
    EXPECT_EQ(run.priority.capacity, 0u);
    EXPECT_EQ(run.graphics.frameIndex, 0);
    EXPECT_EQ(run.graphics.saveDepth, 0);
    EXPECT_EQ(run.clip.clipPending, 0);
    EXPECT_NE(run.allocator.iface, nullptr);
  }
};

}  // namespace

TEST_F(ImportRunState, IsFreshAsTheFilterIsLoaded) { ExpectFresh(); }

TEST_F(ImportRunState, IsFreshAgainBehindAReset) {
  SetHostUnits(301);
  ImportBody(
      "<defs><clipPath id='c'><rect width='1' height='1'/></clipPath><linearGradient id='g'/><pattern/></defs>"
      "<g><path clip-path='url(#c)' style='fill:url(#g)' d='M0,0 L1,1'/><text text-anchor='end'>a</text></g>");
  ResetImportRun();
  ExpectFresh();
}
