#include "tests/tools/tool_process.h"

using namespace tool_tests;
using host_tests::WriteText;

namespace {

class Ops : public ToolTest {
 protected:
  ToolResult RunOps(std::string_view input, std::vector<std::string> arguments = {}) {
    return Run("svgimport-ops", std::move(arguments), input);
  }

  // With coordinates that can be read off: a document of 100 units, a unit being a centimetre.
  ToolResult RunPlain(std::string_view input) { return RunOps(input, {"--doc-height", "100", "--unit-scale", "1"}); }
};

}  // namespace

TEST_F(Ops, PrintsTheRecordsOfAPath) {
  const ToolResult result = RunPlain("0 0 M 10 20 L\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out,
            "{\"key\":28,\"name\":\"KEY_PATH\",\"size\":0}\n"
            "{\"key\":17,\"name\":\"KEY_LINE\",\"size\":48,\"points\":[[0,100],[10,80]]}\n");
  EXPECT_EQ(result.err, "");
}

TEST_F(Ops, TheDefaultsAreADocumentOf480Points) {
  // 480 * 2.54 / 72 is 16.9333...; one point down from there.
  const std::vector<std::string> lines = RunOps("0 0 M 0 1 L\n").LinesWith("KEY_LINE");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NE(lines[0].find("[[0,16.93333333333333"), std::string::npos);
}

TEST_F(Ops, NumbersOfOptionsAreReadToTheLastBit) {
  const std::vector<std::string> lines =
      RunOps("0 0 M 1 0 L\n", {"--doc-height", "0", "--unit-scale", "0.30000000000000004"}).LinesWith("KEY_LINE");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NE(lines[0].find("[0.30000000000000004,"), std::string::npos);
}

TEST_F(Ops, EachLineIsItsOwnPieceOfText) {
  const ToolResult result = RunPlain("0 0 M\n10 20\nL\n");
  EXPECT_EQ(result.LinesWith("KEY_LINE").size(), 1u);
}

TEST_F(Ops, ALastLineWithoutAnEndCounts) { EXPECT_EQ(RunPlain("0 0 M 1 1 L").LinesWith("KEY_LINE").size(), 1u); }

TEST_F(Ops, OperandsLeftArePrintedFromTheTop) {
  const ToolResult result = RunPlain("1.5 (a b) [1 2.5] /name\n");
  EXPECT_EQ(result.out,
            "{\"operand\":\"LiteralName\",\"value\":\"name\"}\n"
            "{\"operand\":\"Array\",\"value\":[1,2.5]}\n"
            "{\"operand\":\"String\",\"value\":\"a b\"}\n"
            "{\"operand\":\"Number\",\"value\":1.5}\n");
}

TEST_F(Ops, ALineWithTheMarkIsPushedWithoutBeingExecuted) {
  const ToolResult result = RunPlain("> 0 0 M\n");
  EXPECT_EQ(result.out,
            "{\"operand\":\"Name\",\"value\":\"M\"}\n"
            "{\"operand\":\"Number\",\"value\":0}\n"
            "{\"operand\":\"Number\",\"value\":0}\n");
}

TEST_F(Ops, NullRecordsOfTheQueueArePrinted) {
  const ToolResult result = RunPlain("0 0 M 10 10 0 0 1 20 0 A\n");
  const std::vector<std::string> lines = result.Lines();
  ASSERT_GE(lines.size(), 3u);
  EXPECT_EQ(result.LinesWith("KEY_PLYR").size(), 1u);
  EXPECT_EQ(lines.back(), "{\"key\":0,\"name\":\"KEY_NULL\",\"size\":0}");
}

TEST_F(Ops, SettingsReachTheMachine) {
  EXPECT_EQ(RunPlain("1 O\n").LinesWith("KEY_LYOT").size(), 1u);
  const ToolResult off = RunOps("1 O\n", {"--set", "KORBIN/DoOverPrint=0"});
  EXPECT_EQ(off.status, 0);
  EXPECT_EQ(off.out, "");
}

TEST_F(Ops, NoInputIsNoOutput) {
  const ToolResult result = RunOps("");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
}

TEST_F(Ops, TheTableOfNamedGradientsComesFromAFile) {
  WriteText(
      folder.File("gradients.json"),
      R"([{"name":"other"},{"name":"é","type":1,"spotFill":0,)"
      R"("stops":[{"cmyk":[0,55,255,0],"tint":100,"colourName":"A"},{"cmyk":[10,0,0,100]}],"positions":[0,100]}])");
  // flag, name, anchor, angle, length, matrix, offset
  const ToolResult result = RunOps("1 (é) 0 0 0 10 1 0 0 1 0 0 Bg\n", {"--named-gradients", "gradients.json"});
  EXPECT_EQ(result.status, 0);
  ASSERT_EQ(result.Lines().size(), 2u);
  EXPECT_EQ(result.Lines()[0], "{\"key\":12,\"name\":\"KEY_FILL\",\"size\":0,\"value\":0}");
  const std::string fill = result.Lines()[1];
  EXPECT_NE(fill.find("\"fillType\":5"), fill.npos);
  // 255 less ink and black: stop 0, then stop 1.
  EXPECT_NE(fill.find("\"colourA\":[255,200,0],\"colourB\":[145,155,155]"), fill.npos);
}

TEST_F(Ops, ANamedGradientCanBeASpotFill) {
  WriteText(folder.File("gradients.json"),
            R"([{"name":"n","spotFill":1,"stops":[{"cmyk":[1,2,3,4],"tint":10,"colourName":"Gold"},)"
            R"({"tint":20},{"tint":30}],"positions":[10,20,30]}])");
  const ToolResult result = RunOps("1 (n) 0 0 0 10 1 0 0 1 0 0 Bg\n", {"--named-gradients", "gradients.json"});
  const std::vector<std::string> fills = result.LinesWith("KEY_SPFL");
  ASSERT_EQ(fills.size(), 1u);
  // Positions are summed as they go.
  EXPECT_NE(fills[0].find("\"markers\":[[10,10],[30,20],[60,30]]"), std::string::npos);
  const std::vector<std::string> colours = result.LinesWith("KEY_NFIL");
  ASSERT_EQ(colours.size(), 1u);
  EXPECT_NE(colours[0].find("\"id\":67305985"), std::string::npos);  // 0x04030201
  EXPECT_NE(colours[0].find("\"name\":\"Gold\""), std::string::npos);
}

TEST_F(Ops, ABadFileOfNamedGradientsIsStatus2) {
  const char* const bad[] = {"",
                             "{}",
                             "[",
                             "[1]",
                             R"([{"name":1}])",
                             R"([{"type":"x"}])",
                             R"([{"stops":1}])",
                             R"([{"stops":[1],"positions":[1]}])",
                             R"([{"stops":[{"cmyk":[1,2,3]}],"positions":[1]}])",
                             R"([{"stops":[{"cmyk":[1,2,3,-4]}],"positions":[1]}])",
                             R"([{"stops":[{"cmyk":[1,2,3,"4"]}],"positions":[1]}])",
                             R"([{"stops":[{}],"positions":["1"]}])",
                             R"([{"stops":[{}],"positions":[1,2]}])"};
  for (const char* text : bad) {
    WriteText(folder.File("gradients.json"), text);
    const ToolResult result = RunOps("", {"--named-gradients", "gradients.json"});
    EXPECT_EQ(result.status, 2) << text;
    EXPECT_EQ(result.err.find("svgimport-ops: gradients.json: "), 0u) << result.err;
  }
  EXPECT_EQ(RunOps("", {"--named-gradients", "missing.json"}).status, 2);
}

TEST_F(Ops, WrongArgumentsAreStatus2) {
  const std::vector<std::vector<std::string>> wrong = {
      {"file"},      {"--no-such-option"}, {"--doc-height", "tall"}, {"--doc-height", "1x"}, {"--unit-scale", "nan"},
      {"--set", "x"}};
  for (const std::vector<std::string>& arguments : wrong) {
    const ToolResult result = RunOps("", arguments);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(result.out, "");
  }
}

TEST_F(Ops, HelpAndVersionGoToStandardOutput) {
  EXPECT_EQ(RunOps("", {"-V"}).out, "svgimport-ops 0.1.0\n");
  EXPECT_NE(RunOps("", {"--help"}).out.find("Examples:"), std::string::npos);
}
