#include "tools/report/report.h"

#include <algorithm>
#include <map>
#include <optional>

#include "headless_host/text.h"
#include "tools/diagnosis.h"
#include "tools/document_bytes.h"
#include "tools/json_values.h"
#include "tools/report/survey.h"
#include "tools/report/svg_document.h"

namespace {

// The line that a reason of the parser begins with; 1 when there is none.
int LineOfReason(const std::string& reason) {
  const std::size_t word = reason.find("line ");
  return word == reason.npos ? 1 : std::max(1, static_cast<int>(LeadingNumberOf(reason.substr(word + 5))));
}

std::vector<Finding> FindingsOfRefused(const std::string& file, const std::string& bytes) {
  std::vector<Finding> findings;
  const auto add = [&](const LossKind* kind, int line, const std::string& detail) {
    std::string sentence(kind->sentence);
    const std::size_t place = sentence.find("{detail}");
    if (place != sentence.npos) sentence.replace(place, 8, detail);
    findings.push_back({kind, line, {}, {}, detail, std::move(sentence)});
  };
  const std::string reason = DiagnoseDocument(file);
  for (const std::string_view mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
    if (bytes.starts_with(mark)) add(Loss("byte-order-mark"), 1, {});
  }
  std::string text = bytes;
  const BlankedDoctype doctype = BlankDoctype(text);
  if (doctype.subset) {
    add(Loss("doctype-subset"), doctype.line, {});
  }
  add(Loss("not-imported"), LineOfReason(reason), reason);
  return findings;
}

// What came out of the file need not be UTF-8.
void WriteBytes(JsonWriter& writer, std::string_view bytes) {
  if (headless::IsUtf8(bytes)) {
    writer.String(bytes.data(), static_cast<rapidjson::SizeType>(bytes.size()));
  } else {
    WriteText(writer, headless::TextFromNarrow(bytes));
  }
}

void WriteMember(JsonWriter& writer, const char* name, std::string_view bytes) {
  if (bytes.empty()) return;
  writer.Key(name);
  WriteBytes(writer, bytes);
}

}  // namespace

LossReport ReportLosses(const std::string& file) {
  LossReport report;
  std::optional<std::string> bytes = ReadDocumentBytes(file, report.failure);
  if (!bytes) return report;
  const SvgDocument document = ParseSvgDocument(*bytes);
  if (document.refused) {
    report.findings = FindingsOfRefused(file, *bytes);
  } else {
    report.findings = Survey(document).Run();
  }
  std::stable_sort(report.findings.begin(), report.findings.end(), [](const Finding& a, const Finding& b) {
    return a.line != b.line ? a.line < b.line : a.kind < b.kind;
  });
  return report;
}

std::string FindingJson(const std::string& shownName, const Finding& finding) {
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  writer.StartObject();
  WriteMember(writer, "file", shownName);
  writer.Key("line");
  writer.Int(finding.line);
  WriteMember(writer, "name", finding.kind->name);
  WriteMember(writer, "severity", finding.kind->severity == Severity::kLost ? "lost" : "changed");
  WriteMember(writer, "element", finding.element);
  WriteMember(writer, "id", finding.id);
  WriteMember(writer, "detail", finding.detail);
  WriteMember(writer, "sentence", finding.sentence);
  writer.EndObject();
  return buffer.GetString();
}

std::string SummaryJson(const std::string& shownName, const LossReport& report) {
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  writer.StartObject();
  WriteMember(writer, "file", shownName);
  if (!report.failure.empty()) {
    WriteMember(writer, "error", report.failure);
    writer.EndObject();
    return buffer.GetString();
  }
  std::map<std::string_view, int> counts;
  int lost = 0;
  for (const Finding& finding : report.findings) {
    ++counts[finding.kind->name];
    lost += finding.kind->severity == Severity::kLost;
  }
  const int total = static_cast<int>(report.findings.size());
  writer.Key("findings");
  writer.Int(total);
  writer.Key("lost");
  writer.Int(lost);
  writer.Key("changed");
  writer.Int(total - lost);
  writer.Key("counts");
  writer.StartObject();
  for (const auto& [name, count] : counts) {
    writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
    writer.Int(count);
  }
  writer.EndObject();
  writer.EndObject();
  return buffer.GetString();
}
