#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/headless_host/sample_images.h"
#include "tests/support/debug_log_folder.h"
#include "tests/tools/tool_process.h"

using namespace tool_tests;
using host_tests::ReadText;
using host_tests::WriteText;

namespace {

constexpr char kEmptyDrawing[] = "<svg xmlns=\"http://www.w3.org/2000/svg\" height=\"100\"><defs/></svg>";

constexpr char kOpening[] =
    "{\"key\":12,\"name\":\"KEY_FILL\",\"size\":0,\"value\":0}\n"
    "{\"key\":12,\"name\":\"KEY_FILL\",\"size\":0,\"value\":0}\n"
    "{\"key\":5,\"name\":\"KEY_CNST\",\"size\":0,\"value\":2}\n"
    "{\"key\":21,\"name\":\"KEY_MLIM\",\"size\":0,\"value\":200}\n"
    "{\"key\":23,\"name\":\"KEY_WRUL\",\"size\":0,\"value\":0}\n";
constexpr char kEnd[] = "{\"key\":10,\"name\":\"KEY_ENDF\",\"size\":0}\n";

class Dump : public ToolTest {
 protected:
  std::string Save(const std::string& name, std::string_view text) {
    WriteText(folder.File(name), text);
    return name;
  }

  ToolResult RunDump(std::vector<std::string> arguments, std::string_view input = {}) {
    arguments.insert(arguments.begin(), "dump");
    return Run("svgimport", std::move(arguments), input);
  }

  ToolResult DumpText(std::string_view text, std::vector<std::string> arguments = {}) {
    arguments.push_back(Save("drawing.svg", text));
    return RunDump(std::move(arguments));
  }

  // The reason given for a document that was refused: the one line on standard error without its beginning.
  std::string Reason(std::string_view text) {
    const ToolResult result = DumpText(text);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    const std::string head = "svgimport: drawing.svg: not imported: ";
    EXPECT_EQ(result.err.substr(0, head.size()), head);
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
    return result.err.size() < head.size() ? std::string()
                                           : result.err.substr(head.size(), result.err.size() - head.size() - 1);
  }

  static std::string ThrowingFilter() { return std::string(SVGIMPORT_LIB_DIR) + "/libsvgimport-throwing-filter.so"; }

  bool TemporaryFolderIsEmpty() const { return std::filesystem::is_empty(temporary.Path()); }
};

}  // namespace

TEST_F(Dump, ADrawingWithNothingToTranslateIsTheOpeningCommandsAndTheEnd) {
  const ToolResult result = DumpText(kEmptyDrawing);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, std::string(kOpening) + kEnd);
  EXPECT_EQ(result.err, "");
}

TEST_F(Dump, TheDocumentCanComeFromStandardInput) {
  const ToolResult result = RunDump({"-"}, kEmptyDrawing);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, std::string(kOpening) + kEnd);
}

TEST_F(Dump, TheRecordsCanGoToAFile) {
  const ToolResult result = DumpText(kEmptyDrawing, {"-o", "out.jsonl"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(ReadText(folder.File("out.jsonl")), std::string(kOpening) + kEnd);
}

TEST_F(Dump, OptionsEndAtTwoDashes) {
  Save("-x.svg", kEmptyDrawing);
  EXPECT_EQ(RunDump({"--", "-x.svg"}).status, 0);
  EXPECT_EQ(RunDump({"-x.svg"}).status, 2);
}

TEST_F(Dump, AFileNameMayBeAnyBytes) {
  Save("\xE9.svg", kEmptyDrawing);
  Save("\xC3\xA9.svg", kEmptyDrawing);
  EXPECT_EQ(RunDump({"\xE9.svg"}).status, 0);
  EXPECT_EQ(RunDump({"\xC3\xA9.svg"}).status, 0);
}

TEST_F(Dump, NothingIsLeftInTheTemporaryFolder) {
  DumpText(kEmptyDrawing);
  EXPECT_TRUE(TemporaryFolderIsEmpty());
  RunDump({"-"}, kEmptyDrawing);
  EXPECT_TRUE(TemporaryFolderIsEmpty());
  RunDump({"-"}, "no drawing");
  EXPECT_TRUE(TemporaryFolderIsEmpty());
}

TEST_F(Dump, ASettingLeavesTheDocumentBehindIt) {
  Save("drawing.svg", kEmptyDrawing);
  EXPECT_EQ(RunDump({"--set", "ZENTAL/Units=0", "--set", "ZENTAL/groups=1", "drawing.svg"}).status, 0);
}

TEST_F(Dump, WrongArgumentsAreStatus2) {
  Save("drawing.svg", kEmptyDrawing);
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"--no-such-option", "drawing.svg"},
      {"drawing.svg", "another.svg"},
      {"--fonts", "some", "drawing.svg"},
      {"--units", "metres", "drawing.svg"},
      {"--set", "ZENTAL/Units", "drawing.svg"},
      {"--set", "ZENTAL=1", "drawing.svg"},
      {"--set", "/Units=1", "drawing.svg"},
      {"--set", "ZENTAL/=1", "drawing.svg"},
      {"--set", "ZENTAL/Units=", "drawing.svg"},
      {"--set", "ZENTAL/Units=1x", "drawing.svg"},
      {"--set", "ZENTAL/Units=2147483648", "drawing.svg"},
      {"--filter", "missing.so", "drawing.svg"},
      {"-o", "missing/out", "drawing.svg"},
      {"--host-calls", "missing/out", "drawing.svg"},
  };
  for (const std::vector<std::string>& arguments : wrong) {
    const ToolResult result = RunDump(arguments);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(result.out, "") << testing::PrintToString(arguments);
    EXPECT_NE(result.err, "") << testing::PrintToString(arguments);
  }
}

TEST_F(Dump, TheToolNeedsACommandThatItKnows) {
  EXPECT_EQ(Run("svgimport", {}).status, 2);
  EXPECT_EQ(Run("svgimport", {"import"}).status, 2);
}

TEST_F(Dump, HelpAndVersionGoToStandardOutput) {
  EXPECT_EQ(Run("svgimport", {"--version"}).out, "svgimport 0.1.0\n");
  EXPECT_EQ(Run("svgimport", {"-V"}).out, "svgimport 0.1.0\n");
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--help"}, {"-h"}, {"dump", "--help"}, {"dump", "-h"}}) {
    const ToolResult result = Run("svgimport", arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("svgimport dump drawing.svg"), std::string::npos);
    EXPECT_EQ(result.err, "");
  }
}

TEST_F(Dump, AMissingFileADirectoryAndAnEmptyFileAreNamedAsSuch) {
  const ToolResult missing = RunDump({"missing.svg"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "svgimport: missing.svg: not imported: the file does not exist\n");
  ASSERT_EQ(mkdir(folder.File("d").c_str(), 0700), 0);
  EXPECT_EQ(RunDump({"d"}).err, "svgimport: d: not imported: it is a directory\n");
  EXPECT_EQ(Reason(""), "the file is empty");
}

TEST_F(Dump, AFileWithoutPermissionIsNamedAsSuch) {
  if (geteuid() == 0) GTEST_SKIP() << "the superuser may read everything";
  Save("drawing.svg", kEmptyDrawing);
  ASSERT_EQ(chmod(folder.File("drawing.svg").c_str(), 0), 0);
  EXPECT_EQ(RunDump({"drawing.svg"}).err, "svgimport: drawing.svg: not imported: Permission denied\n");
}

TEST_F(Dump, ByteOrderMarksAreNamedAsSuch) {
  using namespace std::string_view_literals;
  EXPECT_NE(Reason("\xFF\xFE<\0s\0v\0g\0"sv).find("UTF-16"), std::string::npos);
  EXPECT_NE(Reason("\xFE\xFF\0<\0s\0v\0g"sv).find("UTF-16"), std::string::npos);
  EXPECT_NE(Reason("\xEF\xBB\xBF<svg><g/></svg>").find("byte order mark"), std::string::npos);
}

TEST_F(Dump, ANulByteIsNamedWithItsPlace) {
  using namespace std::string_view_literals;
  EXPECT_NE(Reason("<svg>\0</svg>"sv).find("a NUL byte at offset 5"), std::string::npos);
}

TEST_F(Dump, ADoctypeWithASubsetIsNamedAsSuch) {
  EXPECT_NE(Reason("<!DOCTYPE svg [<!ENTITY a \"b\">]><svg><g/></svg>").find("DOCTYPE has an internal subset"),
            std::string::npos);
}

TEST_F(Dump, ASecondDoctypeIsNamedAsSuch) {
  EXPECT_NE(Reason("<!-- !DOCTYPE --><!DOCTYPE svg><svg><g/></svg>").find("DOCTYPE"), std::string::npos);
}

TEST_F(Dump, BadSyntaxIsNamedWithItsLine) {
  EXPECT_EQ(Reason("<svg>\n<g>\n</svg>").substr(0, 8), "line 3: ");
  EXPECT_EQ(Reason("<svg>\n<a:g/></svg>").substr(0, 8), "line 2: ");
  EXPECT_EQ(Reason("<svg>&undefined;</svg>").substr(0, 8), "line 1: ");
}

TEST_F(Dump, ARootWithoutContentIsNamedAsSuch) {
  EXPECT_EQ(Reason("<svg/>"), "the root element has no content");
  EXPECT_EQ(Reason("<svg>\n  </svg>"), "the root element has no content");
}

TEST_F(Dump, ElementsTooDeepAndTooManyAttributesAreNamedAsSuch) {
  std::string deep;
  for (int i = 0; i < 257; ++i) deep += "<g>";
  for (int i = 0; i < 257; ++i) deep += "</g>";
  EXPECT_EQ(Reason(deep), "elements are nested deeper than 256");
  std::string wide = "<svg";
  for (int i = 0; i <= 10000; ++i) wide += " a" + std::to_string(i) + "=\"\"";
  EXPECT_EQ(Reason(wide + "><g/></svg>"), "an element has more than 10000 attributes");
}

TEST_F(Dump, AnotherVersionOfXmlIsNamed) {
  EXPECT_EQ(Reason("<?xml version=\"1.1\"?><svg><g/></svg>"), "XML version 1.1");
}

TEST_F(Dump, AnErrorThatLeavesCheckFileIsStatus3AndTheFileIsClosed) {
  Save("check.svg", "");
  const ToolResult result = RunDump({"--filter", ThrowingFilter(), "check.svg"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "svgimport: check.svg: IXMLDOMDocument: status 0x80004005\nclosed\n");
}

TEST_F(Dump, WhatWasPrintedBeforeAnErrorStays) {
  Save("records.svg", "");
  const ToolResult result = RunDump({"--filter", ThrowingFilter(), "records.svg"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, "{\"key\":12,\"name\":\"KEY_FILL\",\"size\":0,\"value\":7}\n");
  EXPECT_EQ(result.err, "svgimport: records.svg: invalid vector<T> subscript\nclosed\n");
}

TEST_F(Dump, AnErrorThatLeavesCloseFileIsStatus3) {
  Save("close.svg", "");
  const ToolResult result = RunDump({"--filter", ThrowingFilter(), "close.svg"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.Lines().size(), 2u);
}

TEST_F(Dump, AFilterWithoutEntryPointsCannotBeLoaded) {
  Save("drawing.svg", kEmptyDrawing);
  const ToolResult result =
      RunDump({"--filter", std::string(SVGIMPORT_LIB_DIR) + "/libsvgimport-host.so", "drawing.svg"});
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("CheckFile"), std::string::npos);
}

TEST_F(Dump, OutputThatCannotBeWrittenIsStatus1) {
  redirectedOut = "/dev/full";
  const ToolResult result = DumpText(kEmptyDrawing);
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("standard output"), std::string::npos);
}

TEST_F(Dump, TheHostsCallsCanBeWrittenToAFile) {
  const ToolResult result = DumpText(kEmptyDrawing, {"--host-calls", "calls.jsonl"});
  EXPECT_EQ(result.out, std::string(kOpening) + kEnd);
  const std::string calls = ReadText(folder.File("calls.jsonl"));
  const char* const inOrder[] = {
      "{\"call\":\"GetIntTavlor\",\"args\":[\"ZENTAL\",\"Units\",1,1],\"result\":1}\n",
      "{\"call\":\"GetIntTavlor\",\"args\":[\"ZENTAL\",\"debug\",0,1],\"result\":0}\n",
      "{\"call\":\"GetUnits\",\"args\":[],\"result\":300}\n",
      "{\"call\":\"ShowPasteStringChanges\",\"args\":[0]}\n",
      "{\"call\":\"ShowPasteStringChanges\",\"args\":[1]}\n",
      "{\"call\":\"DBCollapseClipGroup\",\"args\":[]}\n",
      "{\"call\":\"WriteIntTavlor\",\"args\":[\"Grouping\",\"Discio Refresh ClipGroup\",1,1]}\n"};
  std::size_t at = 0;
  for (const char* line : inOrder) {
    at = calls.find(line, at);
    ASSERT_NE(at, calls.npos) << line;
  }
}

TEST_F(Dump, TheHostsCallsCanGoToStandardOutputAmongTheRecords) {
  const ToolResult result = DumpText(kEmptyDrawing, {"--host-calls", "-"});
  EXPECT_EQ(result.LinesWith("\"key\":").size(), 6u);
  EXPECT_EQ(result.LinesWith("\"call\":\"GetUnits\"").size(), 1u);
  EXPECT_EQ(result.LinesWith("\"call\"").size() + 6, result.Lines().size());
}

TEST_F(Dump, UnitsAreWhatTheHostAnswersAtTheStart) {
  const ToolResult result = DumpText(kEmptyDrawing, {"--units", "301", "--host-calls", "-"});
  const std::vector<std::string> calls = result.LinesWith("UdateUnits");
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0], "{\"call\":\"UdateUnits\",\"args\":[300]}");
  EXPECT_EQ(calls[1], "{\"call\":\"UdateUnits\",\"args\":[301]}");
}

TEST_F(Dump, SettingsReachTheFilter) {
  const std::string drawing = "<svg height=\"100\"><g><path d=\"M 0 0 L 10 10\"/></g></svg>";
  EXPECT_EQ(DumpText(drawing).LinesWith("KEY_SGRP").size(), 1u);
  const ToolResult without = DumpText(drawing, {"--set", "KORBIN/DoGroups=0", "--set", "ZENTAL/Units=0"});
  EXPECT_EQ(without.LinesWith("KEY_SGRP").size(), 0u);
  // A point is 2.54 / 72 centimetres.
  ASSERT_EQ(without.LinesWith("KEY_LINE").size(), 1u);
  EXPECT_NE(without.LinesWith("KEY_LINE")[0].find("\"points\":[[0,3.5277777777777777],"), std::string::npos);
}

TEST_F(Dump, TheTraceIsWrittenWhereItsFolderExists) {
  const std::string drawing = "<svg height=\"100\"><g opacity=\"0.5\"><line x2=\"1\" y2=\"2\"/></g></svg>";
  const ToolResult untraced = DumpText(drawing);
  EXPECT_EQ(untraced.status, 0);
  const DebugLogFolder logs;
  EXPECT_EQ(DumpText(drawing, {"--set", "ZENTAL/debug=1"}).out, untraced.out);
  EXPECT_FALSE(logs.Exists());
  logs.Make();
  EXPECT_EQ(DumpText(drawing, {"--set", "ZENTAL/debug=0"}).out, untraced.out);
  EXPECT_EQ(logs.CountOfFiles(), 0u);
  const ToolResult traced = DumpText(drawing, {"--set", "ZENTAL/debug=1", "--set", "ZENTAL/Units=0"});
  EXPECT_EQ(traced.status, 0);
  EXPECT_EQ(traced.err, "");
  EXPECT_EQ(logs.CountOfFiles(), 3u);
  // A unit is a point, 2.54 / 72 = 0.035278 centimetres: y 100 is at 3.527778, and y 2 under it at 3.457222. The width
  // of the group's attribute is that of a hairline of 1.
  EXPECT_EQ(logs.Read("discio.txt"),
            "KEY_FILL\r\nFILL is solid\r\nKEY_FILL\r\nFILL is solid\r\nKEY_CNST\r\nKEY_MLIM\r\n"
            "KEY_SGRP  -----------count=0\r\nKEY_TSPY  127c\r\nKEY_THST thickness HAIR\r\n"
            "KEY_WIDT   is   0.035278\r\nKEY_PATH     PathCount=0\r\n"
            "KEY_LINE 0.000000 3.527778 0.035278 3.457222\r\nKEY_ENDP     PathCount=0\r\n"
            "KEY_FDEF  FT_LAYER_COLOR \r\nKEY_EGRP  -----------count=0\r\nKEY_TSPY  255c\r\nKEY_ENDF\r\n"
            " Starting close file\r\n Collapse clip group\r\nEnding Close file\r\n");
  EXPECT_EQ(logs.Read("test.txt"), "");
  EXPECT_EQ(logs.Read("parse.txt"), "");
}

TEST_F(Dump, TextOutsideAsciiIsTheSameInTheRuns) {
  // Accents, Greek, Chinese and an emoji, which takes two units.
  const std::string text = "\xC3\xA9 \xC3\x9F \xCE\xB1\xCE\xA9 \xE6\xBC\xA2\xE5\xAD\x97 \xF0\x9F\x98\x80";
  const std::vector<std::string> paragraphs =
      DumpText("<svg height=\"100\"><text>" + text + "</text></svg>").LinesWith("KEY_PARA");
  ASSERT_EQ(paragraphs.size(), 1u);
  EXPECT_NE(paragraphs[0].find("\"runs\":[{\"text\":\"" + text + "\",\"font\":\"arial\""), std::string::npos)
      << paragraphs[0];
}

TEST_F(Dump, FontsAreThoseOfTheMode) {
  const std::string drawing =
      "<svg height=\"100\"><text x=\"1\" y=\"2\" style=\"font-family:No Such Font;font-size:12px\">abc</text></svg>";
  const std::vector<std::string> any = DumpText(drawing).LinesWith("KEY_PARA");
  ASSERT_EQ(any.size(), 1u);
  EXPECT_NE(any[0].find("\"text\":\"abc\",\"font\":\"No Such Font\""), std::string::npos);
  EXPECT_EQ(DumpText(drawing, {"--fonts", "none"}).LinesWith("KEY_PARA").size(), 0u);
  for (const std::string& line : DumpText(drawing, {"--fonts", "system"}).LinesWith("KEY_PARA")) {
    EXPECT_EQ(line.find("No Such Font"), line.npos);
  }
}

TEST_F(Dump, AMissingImageIsTakenFromTheImageFolder) {
  ASSERT_EQ(mkdir(folder.File("images").c_str(), 0700), 0);
  ASSERT_TRUE(
      sample_images::WriteBytes(folder.File("images/a.png"), sample_images::PngOfOneColour(1, 1, {1, 2, 3, 4})));
  const std::string drawing =
      "<svg height=\"100\"><image x=\"1\" y=\"2\" width=\"3\" height=\"4\" xlink:href=\"missing/a.png\" "
      "xmlns:xlink=\"http://www.w3.org/1999/xlink\"/></svg>";
  EXPECT_EQ(DumpText(drawing).LinesWith("KEY_GNRC").size(), 0u);
  const std::vector<std::string> found =
      DumpText(drawing, {"--image-folder", folder.File("images")}).LinesWith("KEY_GNRC");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_NE(found[0].find("\"path\":\"" + folder.File("images/a.png") + "\""), std::string::npos);
}

namespace {

std::string Base64(const sample_images::Bytes& bytes) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) group = (group << 8) | (i + k < bytes.size() ? bytes[i + k] : 0u);
    for (std::size_t k = 0; k < 4; ++k) {
      out.push_back(i + k > bytes.size() ? '=' : kAlphabet[(group >> (18 - 6 * k)) & 63]);
    }
  }
  return out;
}

std::string DrawingWithEmbeddedImages() {
  const std::string image = "<image x=\"0\" y=\"0\" width=\"3\" height=\"4\" xlink:href=\"data:image/png;base64," +
                            Base64(sample_images::PngOfOneColour(1, 1, {1, 2, 3, 4})) + "\"/>";
  return "<svg height=\"100\" xmlns:xlink=\"http://www.w3.org/1999/xlink\"><defs><pattern id=\"p\" x=\"0\" y=\"0\" "
         "width=\"3\" height=\"4\">" +
         image + "</pattern></defs>" + image + "<rect width=\"5\" height=\"6\" style=\"fill:url(#p)\"/></svg>";
}

}  // namespace

TEST_F(Dump, GeneratedNamesAreHiddenSoThatTwoRunsAreEqual) {
  const ToolResult first = DumpText(DrawingWithEmbeddedImages());
  ASSERT_EQ(first.LinesWith("KEY_GNRC").size(), 1u);
  ASSERT_EQ(first.LinesWith("KEY_PFOL").size(), 1u);
  EXPECT_NE(first.LinesWith("KEY_GNRC")[0].find("IMGXXXXXX.png\""), std::string::npos);
  EXPECT_NE(first.LinesWith("KEY_PFOL")[0].find("svgimport-XXXXXX/DEMOXXXXXX.png\""), std::string::npos);
  EXPECT_EQ(DumpText(DrawingWithEmbeddedImages()).out, first.out);
  EXPECT_TRUE(TemporaryFolderIsEmpty());
}

TEST_F(Dump, FreshNamesArePrintedAsTheyAre) {
  const ToolResult result = DumpText(DrawingWithEmbeddedImages(), {"--fresh-names"});
  EXPECT_EQ(result.out.find("XXXXXX"), std::string::npos);
}

TEST_F(Dump, ImagesOfPatternsAreLeftInTheBaseFolder) {
  ASSERT_EQ(mkdir(folder.File("base").c_str(), 0700), 0);
  const ToolResult result = DumpText(DrawingWithEmbeddedImages(), {"--base-dir", folder.File("base")});
  EXPECT_EQ(result.status, 0);
  int images = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.File("base"))) {
    if (entry.path().extension() == ".png" && entry.path().filename().string().starts_with("DEMO")) ++images;
  }
  EXPECT_EQ(images, 1);
}

TEST_F(Dump, AnImageIsFoundBesideADocumentNamedByARelativePath) {
  ASSERT_EQ(mkdir(folder.File("d").c_str(), 0700), 0);
  ASSERT_TRUE(sample_images::WriteBytes(folder.File("d/a.png"), sample_images::PngOfOneColour(1, 1, {1, 2, 3, 4})));
  Save("d/drawing.svg",
       "<svg height=\"100\"><image width=\"3\" height=\"4\" xlink:href=\"a.png\" "
       "xmlns:xlink=\"http://www.w3.org/1999/xlink\"/></svg>");
  EXPECT_EQ(RunDump({"d/drawing.svg"}).LinesWith("KEY_GNRC").size(), 1u);
}
