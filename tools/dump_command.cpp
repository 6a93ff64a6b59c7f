#include "tools/dump_command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "headless_host/headless_host.h"
#include "tools/guarded_child.h"
#include "tools/import_document.h"
#include "tools/option_values.h"
#include "tools/output_file.h"
#include "tools/record_json.h"

namespace {

struct DumpOptions {
  ImportOptions import;
  Limits limits;
  std::string output = "-";
  std::string hostCalls;
  bool freshNames = false;
};

// Imports the document into the open files, `calls` being null where the calls go nowhere or among the records.
int WriteRecords(const DumpOptions& options, const ImportedDocument& document, OutputFile& output, OutputFile* calls) {
  document.PrepareHost();
  HideGeneratedNames(!options.freshNames);
  if (!options.hostCalls.empty()) StartJournal((calls != nullptr ? *calls : output).Stream());
  RecordJson json;
  int status = document.Import([&](const ImportCommand& command) {
    output.WriteLine(json.Line(command));
    ReleaseCommand(command);
  });
  StopJournal();

  for (OutputFile* file : {&output, calls}) {
    if (file == nullptr || file->Close()) continue;
    Complain(file->Name() + ": " + std::strerror(errno));
    if (status == kExitDone) status = kExitNotImported;
  }
  return status;
}

int Dump(const DumpOptions& options) {
  OutputFile output;
  if (!output.Open(options.output, _IOLBF)) {
    Complain(options.output + ": " + std::strerror(errno));
    return kExitUsage;
  }
  std::unique_ptr<OutputFile> calls;
  if (!options.hostCalls.empty() && options.hostCalls != options.output) {
    calls = std::make_unique<OutputFile>();
    if (!calls->Open(options.hostCalls, _IOLBF)) {
      Complain(options.hostCalls + ": " + std::strerror(errno));
      return kExitUsage;
    }
  }
  const ImportedDocument document(options.import);
  if (document.Status() != kExitDone) return document.Status();
  return RunGuarded(options.limits, document.ShownName(),
                    [&] { return WriteRecords(options, document, output, calls.get()); });
}

}  // namespace

void AddDumpCommand(CLI::App& app, int& status) {
  CLI::App* dump =
      app.add_subcommand("dump", "Imports a document and prints every record of the command stream as a line of JSON");
  auto options = std::make_shared<DumpOptions>();
  AddImportOptions(*dump, options->import);
  dump->add_option("-o,--output", options->output, "Where the records go; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  dump->add_option("--host-calls", options->hostCalls,
                   "Writes every call of the filter into the host as a line of JSON; - is standard output")
      ->type_name("FILE");
  dump->add_flag("--fresh-names", options->freshNames,
                 "Prints the names of temporary files as they are; without it their random part is XXXXXX");
  AddLimitOptions(*dump, options->limits);
  dump->footer(
      "The import runs in a process of its own. Exit status: 0 imported, 1 not imported or not written, 2 wrong "
      "arguments or files, 3 an error left the filter, or the import crashed or went beyond a limit.\n\n"
      "Examples:\n"
      "  svgimport dump drawing.svg\n"
      "  svgimport dump --set ZENTAL/Units=0 --fonts none drawing.svg -o drawing.jsonl\n"
      "  svgimport dump --host-calls calls.jsonl - < drawing.svg");
  dump->callback([options, &status] { status = Dump(*options); });
}
