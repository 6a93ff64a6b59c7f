#include "run/settings.h"

#include "run/entry_points.h"
#include "tests/support/host_journal.h"

namespace {

constexpr double kPointScale = 0.035277777777777776;
constexpr double kPixelScale = 0.02822222222222222;

class Settings : public FilterTest {
 protected:
  double ScaleOf(int units, std::string_view rootAttributes) {
    SetHostSetting(u"ZENTAL", u"Units", units);
    EXPECT_EQ(Check("<svg " + std::string(rootAttributes) + "><g/></svg>"), 1);
    return run.UnitScale;
  }
};

constexpr char kClippedGroup[] =
    "<defs><clipPath id='c'><rect width='1' height='1'/></clipPath></defs>"
    "<g><rect width='5' height='5' clip-path='url(#c)'/></g>";

}  // namespace

// --- The factor from the document's numbers to centimetres

TEST_F(Settings, ScaleIsAPointAsTheFilterIsLoaded) { EXPECT_EQ(run.UnitScale, kPointScale); }

TEST_F(Settings, ScaleStaysAPointWhenUnitsIsNotOne) {
  for (int units : {0, 2, -1}) {
    SCOPED_TRACE(units);
    ResetImportRun();
    EXPECT_EQ(ScaleOf(units, "width='100'"), kPointScale);
  }
}

TEST_F(Settings, ScaleIsAPixelWhenUnitsIsOne) { EXPECT_EQ(ScaleOf(1, "width='100'"), kPixelScale); }

TEST_F(Settings, ScaleIsAPixelWhenTheStoreHasNoUnits) {
  ASSERT_EQ(Check("<svg><g/></svg>"), 1);
  EXPECT_EQ(run.UnitScale, kPixelScale);
}

TEST_F(Settings, MillimetresWinOverBothOthers) {
  EXPECT_EQ(ScaleOf(1, "width='100mm'"), 0.1);
  ResetImportRun();
  EXPECT_EQ(ScaleOf(0, "width='100mm'"), 0.1);
}

TEST_F(Settings, ScaleIsNotGivenBackOnceItHasBeenSet) {
  run.UnitScale = 0.1;
  EXPECT_EQ(ScaleOf(0, "width='100'"), 0.1);
}

// --- The host's units

TEST_F(Settings, Units301Become300ForTheTimeOfTheRun) {
  SetHostUnits(301);
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(HostUnits(), 300);
  EXPECT_EQ(run.UnitsForced, 1);
  CloseFile();
  EXPECT_EQ(HostUnits(), 301);
}

TEST_F(Settings, OtherUnitsAreLeftAlone) {
  for (int units : {299, 300, 302, 0}) {
    SCOPED_TRACE(units);
    ResetImportRun();
    SetHostUnits(units);
    HostJournal journal;
    ASSERT_EQ(Check(Document("<g/>")), 1);
    CloseFile();
    EXPECT_EQ(run.UnitsForced, 0);
    EXPECT_EQ(Only(journal.Take(), "UdateUnits"), Lines());
  }
}

TEST_F(Settings, UnitsAreUntouchedWhenTheDocumentIsRefused) {
  SetHostUnits(301);
  EXPECT_EQ(Check("<svg>"), 0);
  EXPECT_EQ(HostUnits(), 301);
  CloseFile();
  EXPECT_EQ(run.UnitsForced, 0);
}

TEST_F(Settings, UnitsStayForcedBehindCloseFile) {
  SetHostUnits(301);
  ASSERT_EQ(Check(Document("<g/>")), 1);
  CloseFile();
  SetHostUnits(5);
  CloseFile();
  EXPECT_EQ(HostUnits(), 301);
}

// --- What each setting does

TEST_F(Settings, ReadsAreKeptAsTheyStand) {
  SetHostSetting(u"ZENTAL", u"debug", 2);
  SetHostSetting(u"KORBIN", u"DoOverPrint", 3);
  SetHostSetting(u"KORBIN", u"DoGroups", 4);
  SetHostSetting(u"ZENTAL", u"defaultWR", 5);
  ReadSettings();
  EXPECT_EQ(run.DebugMode, 2);
  EXPECT_EQ(run.OverprintEnabled, 3);
  EXPECT_EQ(run.GroupsEnabled, 4);
  EXPECT_EQ(run.DefaultWindingRule, 5);
}

TEST_F(Settings, WithoutGroupsTheClipGroupsStillAppear) {
  SetHostSetting(u"KORBIN", u"DoGroups", 0);
  const Lines lines = ImportBody(kClippedGroup);
  EXPECT_EQ(CountOf(lines, "SGRP"), 0u);
  EXPECT_EQ(CountOf(lines, "EGRP"), 0u);
  EXPECT_EQ(CountOf(lines, "SCGR"), 1u);
  EXPECT_EQ(CountOf(lines, "ECGR"), 1u);
}

TEST_F(Settings, GroupsAreSentOnlyWithTheValueOne) {
  SetHostSetting(u"KORBIN", u"DoGroups", 2);
  EXPECT_EQ(ImportBody("<g/>"), Lines());
  ResetImportRun();
  SetHostSetting(u"KORBIN", u"DoGroups", 1);
  EXPECT_EQ(ImportBody("<g/>"), (Lines{"SGRP 1", "EGRP 1"}));
}

TEST_F(Settings, OverprintIsSentOnlyWithTheValueOne) {
  EXPECT_EQ(Run("1 O 0 R"), (Lines{"LYOT 1", "LIOT 0"}));
  for (int value : {0, 2}) {
    SCOPED_TRACE(value);
    SetHostSetting(u"KORBIN", u"DoOverPrint", value);
    StartMachine();
    HostJournal journal;
    EXPECT_EQ(Run("1 O 0 R"), Lines());
    EXPECT_EQ(Only(journal.Take(), "CQXOverPrint"), Lines());
  }
}

TEST_F(Settings, ModeAndLayersAreReadAndHaveNoEffect) {
  const Lines usual = ImportBody(kClippedGroup);
  ResetImportRun();
  SetHostSetting(u"KORBIN", u"mode", 7);
  SetHostSetting(u"KORBIN", u"DoLayers", 0);
  EXPECT_EQ(ImportBody(kClippedGroup), usual);
}

TEST_F(Settings, DefaultWindingRuleGoesOutWithTheDefaultsOfAShapeWithoutStyle) {
  SetHostSetting(u"ZENTAL", u"defaultWR", 6);
  const Lines lines = ImportBody("<rect width='1' height='1'/>");
  EXPECT_EQ(CountOf(lines, "WRUL 6"), CountOf(lines, "WRUL"));
  EXPECT_GE(CountOf(lines, "WRUL 6"), 1u);
}

// --- What CloseFile reads and writes

TEST_F(Settings, ClipGroupRefreshIsWrittenUnlessCollapsingIsOff) {
  for (int collapse : {1, 2, -1}) {
    SCOPED_TRACE(collapse);
    ResetHost();
    SetHostSetting(u"Grouping", u"CollapseDatabase", collapse);
    CloseFile();
    EXPECT_EQ(HostSetting(u"Grouping", u"Discio Refresh ClipGroup"), 1);
  }
  ResetHost();
  SetHostSetting(u"Grouping", u"CollapseDatabase", 0);
  CloseFile();
  EXPECT_EQ(HostSetting(u"Grouping", u"Discio Refresh ClipGroup"), std::nullopt);
  EXPECT_EQ(HostInterfaceState().clipGroupCollapses, 1);
}

TEST_F(Settings, ClipGroupRefreshIsWrittenWhenTheStoreHasNoCollapsing) {
  CloseFile();
  EXPECT_EQ(HostSetting(u"Grouping", u"Discio Refresh ClipGroup"), 1);
}
