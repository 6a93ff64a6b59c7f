#include "tools/report/report.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "tests/headless_host/host_fixture.h"
#include "tools/report/losses_table.h"

using host_tests::ReadText;
using host_tests::ScratchFolder;
using host_tests::WriteText;

namespace {

const std::string kFolder = std::string(SVGIMPORT_SOURCE_DIR) + "/tests/report/cases/";

// What each drawing must give, by the table beside them: "3 element-use, 5 view-box".
std::map<std::string, std::string> ExpectedFindings() {
  std::map<std::string, std::string> expected;
  std::istringstream table(ReadText(kFolder + "expected.txt"));
  for (std::string line; std::getline(table, line);) {
    const std::size_t colon = line.find(':');
    if (line.empty() || line[0] == '#' || colon == line.npos) continue;
    expected[line.substr(0, colon)] = colon + 2 < line.size() ? line.substr(colon + 2) : "";
  }
  return expected;
}

std::string Shown(const std::vector<Finding>& findings) {
  std::string shown;
  for (const Finding& finding : findings) {
    if (!shown.empty()) shown += ", ";
    shown += std::to_string(finding.line) + " " + std::string(finding.kind->name);
  }
  return shown;
}

std::string FindingsIn(std::string_view text) {
  const ScratchFolder folder;
  WriteText(folder.File("drawing.svg"), text);
  return Shown(ReportLosses(folder.File("drawing.svg")).findings);
}

Finding OnlyFindingIn(std::string_view text) {
  const ScratchFolder folder;
  WriteText(folder.File("drawing.svg"), text);
  std::vector<Finding> findings = ReportLosses(folder.File("drawing.svg")).findings;
  EXPECT_EQ(findings.size(), 1u) << Shown(findings);
  return findings.empty() ? Finding{Loss("not-imported"), 0, {}, {}, {}, {}} : findings[0];
}

}  // namespace

TEST(LossReport, FindsInEachDrawingWhatTheTableSays) {
  const auto expected = ExpectedFindings();
  EXPECT_GE(expected.size(), 200u);
  for (const auto& [name, findings] : expected) {
    const LossReport report = ReportLosses(kFolder + name + ".svg");
    EXPECT_EQ(report.failure, "") << name;
    EXPECT_EQ(Shown(report.findings), findings) << name;
  }
}

TEST(LossReport, HasADrawingForEachRowThatFindsIt) {
  const auto expected = ExpectedFindings();
  for (const LossKind& loss : kLosses) {
    const auto drawing = expected.find(std::string(loss.name));
    ASSERT_NE(drawing, expected.end()) << loss.name;
    EXPECT_NE((drawing->second + ",").find(" " + std::string(loss.name) + ","), std::string::npos) << loss.name;
  }
}

TEST(LossReport, HasALineInTheTableForEachDrawing) {
  const auto expected = ExpectedFindings();
  for (const auto& file : std::filesystem::directory_iterator(kFolder)) {
    if (file.path().extension() != ".svg") continue;
    EXPECT_TRUE(expected.contains(file.path().stem())) << file.path();
  }
}

TEST(LossReport, HasASectionOfItsDocumentForEachRowAndNoOther) {
  std::set<std::string> sections;
  std::istringstream document(ReadText(std::string(SVGIMPORT_SOURCE_DIR) + "/docs/losses.md"));
  for (std::string line; std::getline(document, line);) {
    if (!line.starts_with("### ")) continue;
    EXPECT_TRUE(sections.insert(line.substr(4)).second) << line;
  }
  for (const LossKind& loss : kLosses) EXPECT_EQ(sections.erase(std::string(loss.name)), 1u) << loss.name;
  EXPECT_TRUE(sections.empty()) << *sections.begin();
}

TEST(LossReport, HasNamesOnceAndSentencesWithKnownPlaceholders) {
  std::set<std::string_view> names;
  for (const LossKind& loss : kLosses) {
    EXPECT_TRUE(names.insert(loss.name).second) << loss.name;
    std::string rest(loss.sentence);
    for (const std::string place : {"{element}", "{detail}"}) {
      for (std::size_t at; (at = rest.find(place)) != rest.npos;) rest.erase(at, place.size());
    }
    EXPECT_EQ(rest.find_first_of("{}"), std::string::npos) << loss.name;
  }
}

TEST(LossReport, TellsElementIdDetailAndSentence) {
  const Finding finding = OnlyFindingIn(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" height=\"9\">\n"
      "<rect id=\"sky\" width=\"1\" height=\"1\"\n opacity=\"0.5\"/></svg>");
  EXPECT_EQ(finding.line, 3);
  EXPECT_EQ(finding.element, "rect");
  EXPECT_EQ(finding.id, "sky");
  EXPECT_EQ(finding.detail, "opacity=\"0.5\"");
  EXPECT_EQ(finding.sentence, "opacity=\"0.5\" is not read on rect");
  EXPECT_EQ(FindingJson("a.svg", finding),
            "{\"file\":\"a.svg\",\"line\":3,\"name\":\"attribute-not-read\",\"severity\":\"lost\",\"element\":\"rect\","
            "\"id\":\"sky\",\"detail\":\"opacity=\\\"0.5\\\"\",\"sentence\":\"opacity=\\\"0.5\\\" is not read on "
            "rect\"}");
}

TEST(LossReport, LinesBehindTheSixtyFiveThousandthAreRight) {
  std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\" height=\"9\">";
  text.append(70000, '\n');
  EXPECT_EQ(FindingsIn(text + "<use/></svg>"), "70001 element-use");
}

TEST(LossReport, LinesBehindADoctypeOfSeveralLinesAreTheFilesOwn) {
  EXPECT_EQ(FindingsIn("<!DOCTYPE svg\n PUBLIC 'a'\n 'b'>\n<svg height='9'>\n<use/>\n</svg>"), "5 element-use");
  EXPECT_EQ(FindingsIn("<!DOCTYPE svg\n PUBLIC 'a'\n 'b'>\n<svg height='9'>\n<g></svg>"), "5 not-imported");
  EXPECT_EQ(FindingsIn("<!DOCTYPE svg><svg height='9'>\n<use/></svg>"), "2 element-use");
}

TEST(LossReport, MarkupInCommentsAndCharacterDataCountsForNothing) {
  EXPECT_EQ(FindingsIn("<?p <use/> ?><!-- <use/>\n --><svg height='9'>\n<!--<use/>--><desc><![CDATA[<use/>]]></desc>\n"
                       "<use id='&lt;&#10;' a='>'\nb=\"'\"/><g\n\nmask='url(#m)'/></svg>"),
            "4 element-use, 7 property-mask");
}

TEST(LossReport, CarriageReturnsEndLines) {
  EXPECT_EQ(FindingsIn("<svg height='9'>\r\n<g/>\r\n<use/>\r<use/></svg>"), "3 element-use, 4 element-use");
}

TEST(LossReport, AFindingOfAGroupStandsOnceHoweverManyShapesItConcerns) {
  EXPECT_EQ(FindingsIn("<svg height='9'><g fill-rule='evenodd'>\n<path d='M0 0' style='fill:red'/>\n"
                       "<path d='M0 0' style='fill:red'/></g></svg>"),
            "1 inheritance-lost");
}

TEST(LossReport, ADefinitionIsLookedAtOnceHoweverManyShapesUseIt) {
  EXPECT_EQ(FindingsIn("<svg height='9'><defs><linearGradient id='a' gradientUnits='userSpaceOnUse' x2='1'>\n<stop/>\n"
                       "</linearGradient></defs><circle r='1' fill='url(#a)'/><circle r='1' fill='url(#a)'/></svg>"),
            "1 gradient-own-stops");
}

TEST(LossReport, DefinitionsInAGroupCountOnlyForWhatComesBehindThem) {
  const std::string gradient = "<defs><linearGradient id='a' gradientUnits='userSpaceOnUse' x2='1'/></defs>\n";
  const std::string shape = "<circle r='1' fill='url(#a)'/>\n";
  EXPECT_EQ(FindingsIn("<svg height='9'><g>\n" + gradient + shape + "</g></svg>"), "");
  EXPECT_EQ(FindingsIn("<svg height='9'><g>\n" + shape + gradient + "</g></svg>"), "2 paint-reference");
  EXPECT_EQ(FindingsIn("<svg height='9'>\n" + shape + gradient + "</svg>"), "");
}

TEST(LossReport, AClipThatLeadsBackToItselfEnds) {
  EXPECT_EQ(FindingsIn("<svg height='9'><defs><clipPath id='a'><rect width='1' height='1' clip-path='url(#a)'/>"
                       "</clipPath></defs><rect width='1' height='1' clip-path='url(#a)'/></svg>"),
            "");
}

TEST(LossReport, RefusesWhatTheFilterRefuses) {
  const auto nested = [](int depth) {
    std::string text = "<svg height='9'>";
    for (int i = 1; i < depth; ++i) text += "<g>";
    for (int i = 1; i < depth; ++i) text += "</g>";
    return text + "</svg>";
  };
  EXPECT_EQ(FindingsIn(nested(256)), "");
  EXPECT_EQ(FindingsIn(nested(257)), "1 not-imported");
  EXPECT_EQ(FindingsIn(""), "1 not-imported");
  EXPECT_EQ(FindingsIn("<svg height='9'/>"), "1 not-imported");
  EXPECT_EQ(FindingsIn("<svg height='9'>&nbsp;</svg>"), "1 not-imported");
  EXPECT_EQ(FindingsIn("<svg height='9'><a:g/></svg>"), "1 not-imported");
  EXPECT_EQ(FindingsIn("<?xml version='1.1'?><svg height='9'><g/></svg>"), "1 not-imported");
}

TEST(LossReport, TakesAnyTextForANamespaceAsTheFilterDoes) {
  EXPECT_EQ(FindingsIn("<svg xmlns:a='&amp;#38;ns;' height='9'><g/></svg>"), "");
}

TEST(LossReport, SaysWhyAFileCannotBeRead) {
  const ScratchFolder folder;
  EXPECT_EQ(ReportLosses(folder.File("none.svg")).failure, "the file does not exist");
  EXPECT_EQ(ReportLosses(folder.Path()).failure, "it is a directory");
  EXPECT_EQ(SummaryJson("none.svg", ReportLosses(folder.File("none.svg"))),
            "{\"file\":\"none.svg\",\"error\":\"the file does not exist\"}");
}

TEST(LossReport, SummaryCountsByNameAndSeverity) {
  const ScratchFolder folder;
  WriteText(folder.File("a.svg"), "<svg><use/><use/></svg>");
  EXPECT_EQ(SummaryJson("a.svg", ReportLosses(folder.File("a.svg"))),
            "{\"file\":\"a.svg\",\"findings\":3,\"lost\":2,\"changed\":1,\"counts\":{\"element-use\":2,"
            "\"no-root-height\":1}}");
}

TEST(LossReport, LongDetailsAreCutBetweenCharacters) {
  std::string id(116, 'x');
  id += "\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC";
  const Finding finding =
      OnlyFindingIn("<svg xmlns:xlink='http://www.w3.org/1999/xlink' height='9'><use xlink:href='" + id + "'/></svg>");
  EXPECT_EQ(finding.detail, std::string(116, 'x') + "...");
}
