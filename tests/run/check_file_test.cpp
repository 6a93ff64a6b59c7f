#include <cstring>
#include <filesystem>
#include <fstream>

#include "document/definitions.h"
#include "host/font_manager.h"
#include "platform/narrow_text.h"
#include "tests/support/host_journal.h"

namespace {

constexpr double kPointScale = 0.035277777777777776;
constexpr double kPixelScale = 0.02822222222222222;

bool SameMatrix(const TM& a, const TM& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

class CheckFileCall : public FilterTest {
 protected:
  static int CheckPath(const std::string& path) { return CheckFile(0, 0, WideFromUtf8(path).c_str()); }

  double HeightOf(std::string_view attributes) {
    EXPECT_EQ(Check("<svg " + std::string(attributes) + "><g/></svg>"), 1);
    return run.DocHeight;
  }
};

using CheckFileRefusal = CheckFileCall;

}  // namespace

TEST_F(CheckFileCall, AsksTheHostInThisOrder) {
  HostJournal journal;
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(Without(journal.Take(), "MemInitBaseT"), (Lines{
                                                         "GetIntTavlor(ZENTAL,Units,1,1)=1",
                                                         "GetIntTavlor(ZENTAL,debug,0,1)=0",
                                                         "GetIntTavlor(KORBIN,mode,0,1)=0",
                                                         "GetIntTavlor(KORBIN,DoOverPrint,1,1)=1",
                                                         "GetIntTavlor(KORBIN,DoLayers,1,1)=1",
                                                         "GetIntTavlor(KORBIN,DoGroups,1,1)=1",
                                                         "GetIntTavlor(ZENTAL,defaultWR,1,1)=1",
                                                         "GetUnits()=300",
                                                         "CFontReplacement::CFontReplacement(svg)",
                                                         "HourGlass(1)",
                                                         "HourGlass(0)",
                                                         "ShowPasteStringChanges(0)",
                                                     }));
}

TEST_F(CheckFileCall, MakesTheThreeTablesAndFillsThemBetweenTheTwoReadsOfSettings) {
  HostJournal journal;
  ASSERT_EQ(Check(Document("<defs><pattern id='p'/></defs>")), 1);
  Lines lines = journal.Take();
  lines.erase(lines.begin(), lines.begin() + FindLine(lines, "GetIntTavlor(ZENTAL,Units"));
  lines.resize(FindLine(lines, "GetIntTavlor(ZENTAL,debug"));
  const std::string one = std::to_string(sizeof(DefinitionRecord)), two = std::to_string(2 * sizeof(DefinitionRecord));
  EXPECT_EQ(lines, (Lines{"GetIntTavlor(ZENTAL,Units,1,1)=1", "MemInitBaseT::Allocate(" + one + ")",
                          "MemInitBaseT::Allocate(" + one + ")", "MemInitBaseT::Allocate(" + one + ")",
                          "MemInitBaseT::Reallocate(" + two + ")"}));
}

TEST_F(CheckFileCall, LooksAtNeitherOfItsFirstTwoArguments) {
  ASSERT_EQ(Check(Document("<g/>")), 1);
  ASSERT_EQ(CloseFile(), 0);
  EXPECT_EQ(CheckFile(~std::uintptr_t{0}, ~std::uintptr_t{0}, WideFromUtf8(documentPath).c_str()), 1);
}

TEST_F(CheckFileCall, QueuesFiveOpeningCommandsOfWhichTheSecondIsAFillAgain) {
  ASSERT_EQ(Check(Document("<rect width='1' height='1'/>")), 1);
  EXPECT_EQ(Drain(), (Lines{"FILL 0", "FILL 0", "CNST 2", "MLIM 200", "WRUL 0"}));
}

TEST_F(CheckFileCall, SetsTheFrameUpWithAJoinThatIsNotTheStreams) {
  GraphicsState& frame = run.graphics.Frame(0);
  frame.currentMatrix = frame.gradientMatrix = {2, 3, 4, 5, 6, 7};
  frame.opacity = 128.0;
  frame.lineJoin = 2;
  frame.fill.colour = frame.outline.colour = 0x123456;
  run.graphics.defaultMatrix = {2, 3, 4, 5, 6, 7};
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_TRUE(SameMatrix(frame.currentMatrix, kIdentity));
  EXPECT_TRUE(SameMatrix(frame.gradientMatrix, kIdentity));
  EXPECT_TRUE(SameMatrix(run.graphics.defaultMatrix, kIdentity));
  EXPECT_EQ(frame.opacity, 1.0);
  EXPECT_EQ(frame.lineJoin, 1);
  EXPECT_EQ(frame.fill.colour, 0);
  EXPECT_EQ(frame.outline.colour, 0);
}

TEST_F(CheckFileCall, SetsTheCurrentFrameUpButTheJoinInTheFirst) {
  run.graphics.Select(0);
  PushGraphicsState();
  run.graphics.Frame(0).lineJoin = run.graphics.Frame(1).lineJoin = 2;
  run.graphics.Frame(0).opacity = run.graphics.Frame(1).opacity = 128.0;
  run.graphics.Frame(0).fill.colour = run.graphics.Frame(1).fill.colour = 5;
  run.graphics.Frame(0).outline.colour = run.graphics.Frame(1).outline.colour = 5;
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(run.graphics.frameIndex, 1);
  EXPECT_EQ(run.graphics.Frame(0).lineJoin, 1);
  EXPECT_EQ(run.graphics.Frame(1).lineJoin, 2);
  EXPECT_EQ(run.graphics.Frame(0).opacity, 128.0);
  EXPECT_EQ(run.graphics.Frame(1).opacity, 1.0);
  EXPECT_EQ(run.graphics.Frame(0).fill.colour, 5);
  EXPECT_EQ(run.graphics.Frame(1).fill.colour, 0);
  EXPECT_EQ(run.graphics.Frame(0).outline.colour, 5);
  EXPECT_EQ(run.graphics.Frame(1).outline.colour, 0);
}

TEST_F(CheckFileCall, ForgetsAnOpenPathItsControlPointAndTheAnchor) {
  run.path.PathOpen = 1;
  run.path.lastControl = {3.0, 4.0};
  run.text.TextAnchor = 3;
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(run.path.PathOpen, 0u);
  EXPECT_EQ(run.path.lastControl, (Point{0.0, 0.0}));
  EXPECT_EQ(run.text.TextAnchor, 1);
}

TEST_F(CheckFileCall, KeepsTheFolderOfTheFileWithItsSeparator) {
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(run.BaseDirectory, WideFromUtf8(folder));
}

TEST_F(CheckFileCall, TakesAPathWithBackslashes) {
  std::ofstream(folder + "drawing.svg") << Document("<g/>");
  std::string base = folder;
  for (char& c : base) {
    if (c == '/') c = '\\';
  }
  ASSERT_EQ(CheckPath(base + "drawing.svg"), 1);
  EXPECT_EQ(run.BaseDirectory, WideFromUtf8(base));
}

TEST_F(CheckFileCall, TakesAPathFarLongerThanTheHostsOwnPaths) {
  std::string deep = folder;
  while (deep.size() < 600) deep += std::string(100, 'd') + '/';
  std::filesystem::create_directories(deep);
  std::ofstream(deep + "drawing.svg") << Document("<g/>");
  ASSERT_EQ(CheckPath(deep + "drawing.svg"), 1);
  EXPECT_EQ(run.BaseDirectory, WideFromUtf8(deep));
}

TEST_F(CheckFileCall, CountsTheChildrenAndLeavesTheCursorAtTheFirst) {
  ASSERT_EQ(Check(Document("<defs/><!-- c --><g/>")), 1);
  EXPECT_EQ(run.NodeCount, 3);
  EXPECT_EQ(run.NodeCursor, 0);
  EXPECT_EQ(run.CursorPrimed, 0u);
}

TEST_F(CheckFileCall, ReadsTheDefinitionsOfEveryTopLevelDefsAndOfNothingElse) {
  ASSERT_EQ(Check(Document("<svg:defs><pattern/></svg:defs><Defs><pattern/></Defs><defs><pattern/></defs><def/>")), 1);
  EXPECT_EQ(run.definitions.PatternDefs.count, 3);  // two and the blank one
}

TEST_F(CheckFileCall, KeepsAFontReplacementThatIsThere) {
  run.FontReplacementObject = std::make_unique<CFontReplacement>("svg");
  HostJournal journal;
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(Only(journal.Take(), "CFontReplacement"), Lines());
}

TEST_F(CheckFileCall, LinksTheFontManagerOnceInTheLifeOfTheInstance) {
  EXPECT_EQ(UsingFontManager(), 0);
  EXPECT_EQ(GetFontManager(), nullptr);
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(UsingFontManager(), 1);
  EXPECT_NE(GetFontManager(), nullptr);
  ASSERT_EQ(CloseFile(), 0);
  EXPECT_EQ(UsingFontManager(), 1);
  EXPECT_EQ(GetFontManager(), nullptr);
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(GetFontManager(), nullptr);
}

// --- The document's height

TEST_F(CheckFileCall, HeightIsTheLeadingNumberOfTheRootsAttribute) {
  struct Row {
    const char* attributes;
    double height;
  };
  const Row rows[] = {
      {"height='297mm'", 297.0}, {"height='100%'", 100.0},   {"height=' 12.5px'", 12.5}, {"height='1e2'", 100.0},
      {"height='-5'", -5.0},     {"height='auto'", 0.0},     {"height=''", 0.0},         {"", 0.0},
      {"Height='7'", 0.0},       {"viewBox='0 0 3 4'", 0.0}, {"width='50'", 0.0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.attributes);
    ResetImportRun();
    EXPECT_EQ(HeightOf(row.attributes), row.height);
  }
}

// --- What is refused, and what it leaves

TEST_F(CheckFileRefusal, AFileThatCannotBeReadChangesNothingButTheHeight) {
  std::filesystem::create_directory(folder + "folder.svg");
  std::ofstream(folder + "empty.svg").flush();
  for (const std::string& name : {std::string("absent.svg"), std::string("folder.svg"), std::string("empty.svg")}) {
    SCOPED_TRACE(name);
    ResetImportRun();
    HostJournal journal;
    EXPECT_EQ(CheckPath(folder + name), 0);
    EXPECT_EQ(journal.Take(), Lines());
    EXPECT_EQ(run.DocHeight, 480.0);
    EXPECT_EQ(run.UnitScale, kPointScale);
    EXPECT_EQ(run.BaseDirectory, u"");
    EXPECT_EQ(run.file.FileBuffer, nullptr);
    EXPECT_EQ(run.DomDocument, nullptr);
  }
}

TEST_F(CheckFileRefusal, ANullPath) {
  EXPECT_EQ(CheckFile(0, 0, nullptr), 0);
  EXPECT_EQ(run.DocHeight, 480.0);
  EXPECT_EQ(run.UnitScale, kPointScale);
}

TEST_F(CheckFileRefusal, ATextThatIsNoDocumentKeepsScaleAndFolderAndMakesNoTables) {
  SetHostUnits(301);
  HostJournal journal;
  EXPECT_EQ(Check("<svg height='7'><g></svg>"), 0);
  EXPECT_EQ(journal.Take(), (Lines{"GetIntTavlor(ZENTAL,Units,1,1)=1"}));
  EXPECT_EQ(run.UnitScale, kPixelScale);
  EXPECT_EQ(run.BaseDirectory, WideFromUtf8(folder));
  EXPECT_EQ(run.DocHeight, 480.0);
  EXPECT_EQ(run.RootNode, nullptr);
  EXPECT_EQ(run.DomDocument, nullptr);
  EXPECT_EQ(run.definitions.PatternDefs.records, nullptr);
  EXPECT_EQ(run.UnitsForced, 0);
  EXPECT_TRUE(ShownMessages().empty());
}

TEST_F(CheckFileRefusal, ARootWithoutChildrenKeepsHeightAndTables) {
  for (const char* root : {"<svg height='7'/>", "<svg height='7'> \n </svg>"}) {
    SCOPED_TRACE(root);
    ResetImportRun();
    EXPECT_EQ(Check(root), 0);
    EXPECT_EQ(run.DocHeight, 7.0);
    EXPECT_NE(run.RootNode, nullptr);
    EXPECT_NE(run.definitions.PatternDefs.records, nullptr);
    EXPECT_NE(run.definitions.ClipDefs.records, nullptr);
    EXPECT_NE(run.definitions.GradientDefs.records, nullptr);
    EXPECT_EQ(run.FontManagerLinked, 0);
    EXPECT_EQ(run.commands.count, 0u);
  }
}

TEST_F(CheckFileRefusal, ARootWithACommentAloneIsADocument) { EXPECT_EQ(Check("<svg><!-- c --></svg>"), 1); }
