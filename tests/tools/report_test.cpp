#include "tests/tools/tool_process.h"

using namespace tool_tests;
using host_tests::WriteText;

namespace {

constexpr char kTwoLosses[] = "<svg height='9'>\n<use id='u' href='#a'/>\n<switch/></svg>";
constexpr char kNoLoss[] = "<svg height='9'>\n<g/></svg>";

class ReportCommand : public ToolTest {
 protected:
  ToolResult Report(std::vector<std::string> arguments, std::string_view input = {}) {
    WriteText(folder.File("two.svg"), kTwoLosses);
    WriteText(folder.File("none.svg"), kNoLoss);
    arguments.insert(arguments.begin(), "report");
    return Run("svgimport", std::move(arguments), input);
  }
};

}  // namespace

TEST_F(ReportCommand, PrintsALineForEachFindingAndASummary) {
  const ToolResult result = Report({"two.svg"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out,
            "two.svg:2: use \"u\": use is not read, and #a is not drawn again [element-use]\n"
            "two.svg:3: switch: switch is not read, and none of its children is drawn [element-switch]\n"
            "two.svg: 2 findings, 2 lost, 0 changed\n"
            "      1  element-use\n"
            "      1  element-switch\n");
}

TEST_F(ReportCommand, SaysSoWhenNothingWasFound) { EXPECT_EQ(Report({"none.svg"}).out, "none.svg: nothing found\n"); }

TEST_F(ReportCommand, QuietLeavesTheSummaryOnly) {
  EXPECT_EQ(Report({"-q", "two.svg", "none.svg"}).out,
            "two.svg: 2 findings, 2 lost, 0 changed\n"
            "      1  element-use\n"
            "      1  element-switch\n"
            "none.svg: nothing found\n");
}

TEST_F(ReportCommand, JsonHasALineForEachFindingAndOneForTheFile) {
  const ToolResult result = Report({"--json", "two.svg"});
  ASSERT_EQ(result.Lines().size(), 3u);
  EXPECT_EQ(result.LinesWith("{\"file\":\"two.svg\",\"line\":2,\"name\":\"element-use\"").size(), 1u);
  EXPECT_EQ(result.Lines()[2],
            "{\"file\":\"two.svg\",\"findings\":2,\"lost\":2,\"changed\":0,\"counts\":{\"element-switch\":1,"
            "\"element-use\":1}}");
}

TEST_F(ReportCommand, StrictEndsWithFourWhenAnythingWasFound) {
  EXPECT_EQ(Report({"--strict", "none.svg", "two.svg", "none.svg"}).status, 4);
  EXPECT_EQ(Report({"--strict", "none.svg"}).status, 0);
}

TEST_F(ReportCommand, AFileThatCannotBeReadEndsWithOneAndTheOthersAreLookedAt) {
  const ToolResult result = Report({"--strict", "missing.svg", "two.svg"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "svgimport: missing.svg: the file does not exist\n");
  EXPECT_EQ(result.LinesWith("two.svg:").size(), 3u);
  EXPECT_EQ(Report({"--json", "missing.svg"}).out,
            "{\"file\":\"missing.svg\",\"error\":\"the file does not exist\"}\n");
}

TEST_F(ReportCommand, ARefusedDocumentIsAFinding) {
  WriteText(folder.File("bad.svg"), "<svg>\n<g>\n</svg>");
  const ToolResult result = Report({"bad.svg"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.LinesWith("bad.svg:3: the document is not imported at all: line 3: ").size(), 1u);
}

TEST_F(ReportCommand, ReadsStandardInput) {
  const ToolResult result = Report({"-"}, kTwoLosses);
  EXPECT_EQ(result.LinesWith("standard input:2: use").size(), 1u);
  EXPECT_EQ(result.status, 0);
}

TEST_F(ReportCommand, ListsItsTable) {
  const ToolResult result = Report({"--list"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.LinesWith("element-use                     lost     use is not read, and {detail} is not drawn again")
          .size(),
      1u);
}

TEST_F(ReportCommand, WrongArgumentsEndWithTwo) {
  EXPECT_EQ(Report({}).status, 2);
  EXPECT_EQ(Report({"--no-such", "two.svg"}).status, 2);
}

TEST_F(ReportCommand, AFullDiskEndsWithOne) {
  redirectedOut = "/dev/full";
  const ToolResult result = Report({"two.svg"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "svgimport: standard output: No space left on device\n");
}
