// The example drawings against the command streams that stand beside them, which were computed apart from the program,
// and the sets of conformance cases where somebody keeps them beside the checkout.
#include <rapidjson/document.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "tests/tools/tool_process.h"

using namespace tool_tests;
using rapidjson::Value;

namespace {

constexpr double kTolerance = 1e-9;  // absolute below 1, relative above

std::string ExamplesFolder() { return SVGIMPORT_SOURCE_DIR "/examples"; }
std::string ConformanceFolder() { return SVGIMPORT_SOURCE_DIR "/../shared/conformance"; }

// The names, without the extension, of the example files that have it, in order.
std::vector<std::string> ExamplesWith(const std::string& extension) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(ExamplesFolder())) {
    if (entry.path().extension() == extension) names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

// The folders of the conformance cases; one empty name when there are none.
std::vector<std::string> ConformanceSets() {
  std::vector<std::string> names;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(ConformanceFolder(), ignored)) {
    if (entry.is_directory()) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  if (names.empty()) names.emplace_back();
  return names;
}

// "basic-shapes" as BasicShapes.
std::string TestName(const testing::TestParamInfo<std::string>& info) {
  if (info.param.empty()) return "None";
  std::string name;
  bool wordBegins = true;
  for (const char c : info.param) {
    const bool letterOrDigit = std::isalnum(static_cast<unsigned char>(c)) != 0;
    if (letterOrDigit) name += wordBegins ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    wordBegins = !letterOrDigit;
  }
  return name;
}

// What a dump may differ in from folder to folder: a picture is known by its path behind the examples folder, or by its
// bare name if it lies elsewhere.
std::string PictureName(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  const std::string head = ExamplesFolder() + "/";
  if (path.compare(0, head.size(), head) == 0) return path.substr(head.size());
  return std::filesystem::path(path).is_absolute() ? std::filesystem::path(path).filename().string() : path;
}

bool SameNumber(const Value& expected, const Value& got) {
  if (expected.IsInt64()) return got.IsNumber() && got.GetDouble() == expected.GetDouble();
  if (!got.IsNumber()) return false;
  const double a = expected.GetDouble(), b = got.GetDouble();
  return std::abs(a - b) <= kTolerance * std::max(1.0, std::abs(a));
}

// The place of the first difference, such as "fill.stops[1]"; empty when there is none.
std::string Difference(const Value& expected, const Value& got, const std::string& place) {
  if (expected.IsNumber()) return SameNumber(expected, got) ? "" : place;
  if (expected.GetType() != got.GetType()) return place;
  if (expected.IsArray()) {
    if (expected.Size() != got.Size()) return place + " (its length)";
    for (rapidjson::SizeType i = 0; i < expected.Size(); ++i) {
      const std::string found = Difference(expected[i], got[i], place + "[" + std::to_string(i) + "]");
      if (!found.empty()) return found;
    }
    return "";
  }
  if (!expected.IsObject()) return expected == got ? "" : place;

  const std::string head = place.empty() ? "" : place + ".";
  for (const auto& member : expected.GetObject()) {
    const std::string name = member.name.GetString();
    const std::string here = head + name;
    const auto other = got.FindMember(member.name);
    if (other == got.MemberEnd()) return here + " (missing)";
    if ((name == "path" || name == "tilePath") && other->value.IsString()) {
      if (PictureName(member.value.GetString()) != PictureName(other->value.GetString())) return here;
      continue;
    }
    const std::string found = Difference(member.value, other->value, here);
    if (!found.empty()) return found;
  }
  for (const auto& member : got.GetObject()) {
    if (!expected.HasMember(member.name)) return head + member.name.GetString() + " (not expected)";
  }
  return "";
}

// The place in which two lines of a dump differ; empty when they say the same.
std::string LineDifference(const std::string& expected, const std::string& got) {
  constexpr unsigned kFlags = rapidjson::kParseFullPrecisionFlag;
  rapidjson::Document a, b;
  if (a.Parse<kFlags>(expected.c_str()).HasParseError() || !a.IsObject())
    return "the expected line, which is no record";
  if (b.Parse<kFlags>(got.c_str()).HasParseError() || !b.IsObject()) return "the line, which is no record";
  return Difference(a, b, "");
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The first difference of two dumps, told with the records around it; empty when they are equal.
std::string FirstDifference(const std::vector<std::string>& expected, const std::vector<std::string>& got) {
  for (std::size_t i = 0; i < std::max(expected.size(), got.size()); ++i) {
    const bool bothHere = i < expected.size() && i < got.size();
    const std::string place = bothHere ? LineDifference(expected[i], got[i]) : "the end of the stream";
    if (place.empty()) continue;
    std::ostringstream text;
    text << "record " << i << " differs in " << place << '\n';
    for (std::size_t before = i < 3 ? 0 : i - 3; before < i; ++before)
      text << "    " << before << "  " << got[before] << '\n';
    text << "  - " << i << "  " << (i < expected.size() ? expected[i] : "nothing") << '\n';
    text << "  + " << i << "  " << (i < got.size() ? got[i] : "nothing") << '\n';
    return text.str();
  }
  return "";
}

// Runs the command and gives what it prints. Returns 0 if it ended well.
int Shell(const std::string& command, std::string* printed) {
  FILE* const run = popen(command.c_str(), "r");
  if (run == nullptr) return -1;
  char part[4096];
  for (std::size_t size; (size = std::fread(part, 1, sizeof part, run)) > 0;) printed->append(part, size);
  return pclose(run);
}

class Example : public ToolTest, public testing::WithParamInterface<std::string> {};

TEST_P(Example, DumpsTheExpectedStream) {
  const std::string drawing = ExamplesFolder() + "/" + GetParam();
  ASSERT_TRUE(std::filesystem::exists(drawing + ".jsonl")) << GetParam() << ".svg has no expected dump";
  const ToolResult result = Run("svgimport", {"dump", drawing + ".svg"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  const std::string difference = FirstDifference(LinesOf(host_tests::ReadText(drawing + ".jsonl")), result.Lines());
  EXPECT_TRUE(difference.empty()) << difference;
}

INSTANTIATE_TEST_SUITE_P(Drawings, Example, testing::ValuesIn(ExamplesWith(".svg")), TestName);

TEST(Examples, EveryDrawingHasItsDumpAndEveryDumpItsDrawing) {
  EXPECT_FALSE(ExamplesWith(".svg").empty());
  EXPECT_EQ(ExamplesWith(".svg"), ExamplesWith(".jsonl"));
}

// The comparison above leaves room for the last digit of a number, which no change of the program's speed may touch.
TEST(Examples, EveryStreamIsTheSameToTheBit) {
#ifndef __x86_64__
  GTEST_SKIP() << "on another processor the C library may round a sine otherwise";
#endif
  std::string differences;
  EXPECT_EQ(Shell("'" SVGIMPORT_SOURCE_DIR "/script/digests' '" SVGIMPORT_BIN_DIR "' 2>&1", &differences), 0)
      << differences;
}

// The comparison itself has to see what it is there for.
TEST(ExampleComparison, TellsWhereTwoRecordsDiffer) {
  const struct {
    const char *expected, *got, *place;
  } kCases[] = {
      {R"({"value":1})", R"({"value":1})", ""},
      {R"({"value":1})", R"({"value":2})", "value"},
      {R"({"value":4294967295})", R"({"value":4294967294})", "value"},
      {R"({"value":1})", R"({"value":1.0000000001})", "value"},
      {R"({"width":0.5})", R"({"width":0.5000000009})", ""},
      {R"({"width":0.5})", R"({"width":0.5000000011})", "width"},
      {R"({"width":1000.5})", R"({"width":1000.5000009})", ""},
      {R"({"width":1000.5})", R"({"width":1000.5000011})", "width"},
      {R"({"width":0.5})", R"({"width":"NaN"})", "width"},
      {R"({"points":[[1.5,2.5],[3.5,4.5]]})", R"({"points":[[1.5,2.5],[3.5,4.6]]})", "points[1][1]"},
      {R"({"points":[1.5]})", R"({"points":[1.5,2.5]})", "points (its length)"},
      {R"({"fill":{"angle":1.5}})", R"({"fill":{}})", "fill.angle (missing)"},
      {R"({"fill":{}})", R"({"fill":{"angle":1.5}})", "fill.angle (not expected)"},
      {R"({"value":1})", R"({"value":1,"width":0.5})", "width (not expected)"},
      {R"({"text":"a"})", R"({"text":"b"})", "text"},
      {R"({"tint":null})", R"({"tint":0})", "tint"},
      {R"({"path":"IMGXXXXXX.png"})", R"({"path":"\\tmp\\x\\IMGXXXXXX.png"})", ""},
      {R"({"path":"IMGXXXXXX.png"})", R"({"path":"\\tmp\\x\\IMGXXXXXX.jpg"})", "path"},
      {R"({"value":1})", "", "the line, which is no record"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(std::string(row.expected) + " against " + row.got);
    EXPECT_EQ(LineDifference(row.expected, row.got), row.place);
  }
}

TEST(ExampleComparison, TellsWhichStreamEndsFirst) {
  const std::string record = R"({"value":1})";
  EXPECT_EQ(FirstDifference({record}, {record}), "");
  EXPECT_EQ(FirstDifference({record}, {record, record}),
            "record 1 differs in the end of the stream\n    0  {\"value\":1}\n  - 1  nothing\n  + 1  {\"value\":1}\n");
  EXPECT_EQ(FirstDifference({record}, {}),
            "record 0 differs in the end of the stream\n  - 0  {\"value\":1}\n  + 0  nothing\n");
}

class Conformance : public testing::TestWithParam<std::string> {};

TEST_P(Conformance, AllCasesOfTheSetAreEqual) {
  if (GetParam().empty()) GTEST_SKIP() << "there are no conformance cases beside the checkout";
  const std::string command =
      "python3 '" + ConformanceFolder() + "/check.py' --bin '" SVGIMPORT_BIN_DIR "' '" + GetParam() + "' 2>&1";
  std::string report;
  EXPECT_EQ(Shell(command, &report), 0) << report;
}

INSTANTIATE_TEST_SUITE_P(Sets, Conformance, testing::ValuesIn(ConformanceSets()), TestName);

}  // namespace
