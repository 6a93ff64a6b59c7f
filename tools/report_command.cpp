#include "tools/report_command.h"

#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/import_document.h"
#include "tools/option_values.h"
#include "tools/output_file.h"
#include "tools/report/report.h"
#include "tools/temporary_folder.h"

namespace {

constexpr int kExitLosses = 4;  // with --strict, when anything was found

struct ReportOptions {
  std::vector<std::string> files;
  bool json = false, strict = false, quiet = false, list = false;
};

// Escape sequences, or nothing where the output is not a terminal.
struct Colours {
  const char *place = "", *lost = "", *changed = "", *name = "", *end = "";
};

Colours ColoursFor(std::FILE* stream) {
  if (isatty(fileno(stream)) == 0) return {};
  return {"\x1b[1m", "\x1b[31m", "\x1b[33m", "\x1b[2m", "\x1b[0m"};
}

const char* Shown(Severity severity) { return severity == Severity::kLost ? "lost" : "changed"; }

std::string Plural(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void PrintList(OutputFile& output) {
  std::size_t width = 0;
  for (const LossKind& loss : kLosses) width = std::max(width, loss.name.size());
  for (const LossKind& loss : kLosses) {
    std::string line(loss.name);
    line.resize(width + 2, ' ');
    std::string severity = Shown(loss.severity);
    severity.resize(9, ' ');
    output.WriteLine(line + severity + std::string(loss.sentence));
  }
}

void PrintFinding(OutputFile& output, const Colours& colours, const std::string& file, const Finding& finding) {
  const bool lost = finding.kind->severity == Severity::kLost;
  std::string line = colours.place + file + ":" + std::to_string(finding.line) + ":" + colours.end + " ";
  if (!finding.element.empty()) {
    line += finding.element;
    if (!finding.id.empty()) line += " \"" + finding.id + "\"";
    line += ": ";
  }
  line += finding.sentence + " " + (lost ? colours.lost : colours.changed) + "[" + std::string(finding.kind->name) +
          "]" + colours.end;
  output.WriteLine(line);
}

// The names with their counts, the most frequent first.
void PrintSummary(OutputFile& output, const Colours& colours, const std::string& file, const LossReport& report) {
  std::map<const LossKind*, std::size_t> counts;
  std::size_t lost = 0;
  for (const Finding& finding : report.findings) {
    ++counts[finding.kind];
    lost += finding.kind->severity == Severity::kLost;
  }
  if (counts.empty()) {
    output.WriteLine(colours.place + file + ":" + colours.end + " nothing found");
    return;
  }
  output.WriteLine(colours.place + file + ":" + colours.end + " " + Plural(report.findings.size(), "finding") + ", " +
                   std::to_string(lost) + " lost, " + std::to_string(report.findings.size() - lost) + " changed");
  std::vector<std::pair<const LossKind*, std::size_t>> rows(counts.begin(), counts.end());
  std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
  for (const auto& [kind, count] : rows) {
    std::string number = std::to_string(count);
    number.insert(0, number.size() < 7 ? 7 - number.size() : 0, ' ');
    output.WriteLine(number + "  " + std::string(kind->name));
  }
}

int ReportFile(OutputFile& output, const ReportOptions& options, const std::string& path, const std::string& file) {
  const LossReport report = ReportLosses(path);
  if (!report.failure.empty()) {
    if (options.json) output.WriteLine(SummaryJson(file, report));
    Complain(file + ": " + report.failure);
    return kExitNotImported;
  }
  const Colours colours = options.json ? Colours() : ColoursFor(output.Stream());
  if (!options.quiet) {
    for (const Finding& finding : report.findings) {
      if (options.json) {
        output.WriteLine(FindingJson(file, finding));
      } else {
        PrintFinding(output, colours, file, finding);
      }
    }
  }
  if (options.json) {
    output.WriteLine(SummaryJson(file, report));
  } else {
    PrintSummary(output, colours, file, report);
  }
  return options.strict && !report.findings.empty() ? kExitLosses : kExitDone;
}

int ReportStandardInput(OutputFile& output, const ReportOptions& options) {
  ImportOptions import;
  import.file = "-";
  const ImportedDocument document(import);
  if (document.Status() != kExitDone) return document.Status();
  return ReportFile(output, options, document.Path(), document.ShownName());
}

int RunReport(const ReportOptions& options) {
  OutputFile output;
  output.Open("-");
  int status = kExitDone;
  if (options.list) PrintList(output);
  for (const std::string& file : options.files) {
    const int one = file == "-" ? ReportStandardInput(output, options) : ReportFile(output, options, file, file);
    // A file that could not be read weighs more than losses.
    if (one != kExitDone && status != kExitNotImported) status = one;
  }
  if (!output.Close()) {
    Complain(output.Name() + ": " + std::strerror(errno));
    status = kExitNotImported;
  }
  return status;
}

}  // namespace

void AddReportCommand(CLI::App& app, int& status) {
  CLI::App* report = app.add_subcommand("report", "Tells what an import loses or changes, each with its line");
  auto options = std::make_shared<ReportOptions>();
  report->add_option("files", options->files, "The documents; - reads one from standard input")->type_name("FILE.svg");
  report->add_flag("--json", options->json, "Prints a line of JSON for each finding and one more for each file");
  report->add_flag("--strict", options->strict, "Ends with 4 when anything was found");
  report->add_flag("-q,--quiet", options->quiet, "Prints the summary of each file only");
  report->add_flag("--list", options->list, "Prints every kind of finding: its name, lost or changed, its sentence");
  report->footer(
      "A finding says that something in the document does not reach the drawing (lost) or reaches it in another form "
      "(changed). The document is looked at; the filter is not run. docs/losses.md has a section for each name, with "
      "the reason and a way round.\n\n"
      "Exit status: 0 looked at, 1 a file could not be read, 2 wrong arguments, 4 losses found and --strict given.\n\n"
      "Examples:\n"
      "  svgimport report drawing.svg\n"
      "  svgimport report --quiet *.svg\n"
      "  svgimport report --json drawing.svg | jq -r .name | sort | uniq -c\n"
      "  svgimport report --strict - < drawing.svg");
  report->callback([options, &status] {
    if (options->files.empty() && !options->list) {
      throw CLI::RequiredError("FILE.svg");
    }
    status = RunReport(*options);
  });
}
