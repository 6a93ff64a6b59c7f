#include "tools/dump_command.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "headless_host/headless_host.h"
#include "headless_host/text.h"
#include "tools/diagnosis.h"
#include "tools/filter_library.h"
#include "tools/option_values.h"
#include "tools/output_file.h"
#include "tools/record_json.h"
#include "tools/temporary_folder.h"

namespace {

struct DumpOptions {
  std::string file;
  std::string output = "-";
  std::vector<std::string> settings;
  int units = 300;
  std::string fonts = "any";
  std::string baseDir, imageFolder;
  std::string hostCalls;
  std::string filter;
  bool freshNames = false;
};

void Complain(const std::string& text) { std::fprintf(stderr, "svgimport: %s\n", text.c_str()); }

HostFontMode FontModeNamed(const std::string& name) {
  if (name == "system") return HostFontMode::kSystem;
  return name == "none" ? HostFontMode::kNone : HostFontMode::kAny;
}

// The filter takes the folder of the document from its path, so that the path must be a full one.
std::string AbsolutePath(const std::string& path) {
  if (path.starts_with('/')) return path;
  char folder[PATH_MAX];
  if (getcwd(folder, sizeof folder) == nullptr) return path;
  return std::string(folder) + "/" + path;
}

// Copies standard input to a new file. False on failure, with errno set.
bool SaveStandardInput(const std::string& file) {
  const int out = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (out < 0) return false;
  char block[1 << 16];
  ssize_t got;
  bool written = true;
  while (written && (got = read(STDIN_FILENO, block, sizeof block)) > 0) {
    for (ssize_t done = 0; written && done < got;) {
      const ssize_t now = write(out, block + done, static_cast<std::size_t>(got - done));
      written = now > 0;
      done += now;
    }
  }
  return close(out) == 0 && written && got == 0;
}

// Prints every record up to KEY_ENDF and gives each back. An error of the filter passes through.
void PrintRecords(const FilterLibrary& filter, OutputFile& output) {
  RecordJson json;
  ImportCommand command;
  do {
    command = filter.getImportCommand();
    output.WriteLine(json.Line(command));
    ReleaseCommand(command);
  } while (command.key != KEY_ENDF);
}

int Import(const FilterLibrary& filter, const std::string& path, const std::string& shownName, OutputFile& output) {
  int status = kExitDone;
  try {
    if (filter.checkFile(0, 0, headless::TextFromNativePath(path).c_str()) != 0) {
      PrintRecords(filter, output);
    } else {
      status = kExitNotImported;
    }
  } catch (const std::exception& error) {
    Complain(shownName + ": " + error.what());
    status = kExitError;
  }
  try {
    filter.closeFile();
  } catch (const std::exception& error) {
    Complain(shownName + ": " + error.what());
    status = kExitError;
  }
  if (status == kExitNotImported) Complain(shownName + ": not imported: " + DiagnoseDocument(path));
  return status;
}

void PrepareHost(const DumpOptions& options, const TemporaryFolder& folder) {
  ResetHost();
  StoreSettings(options.settings);
  SetHostUnits(options.units);
  SetHostFontMode(FontModeNamed(options.fonts));
  SetHostImageFolder(options.imageFolder);
  SetHostBaseDir(headless::TextFromNativePath(options.baseDir.empty() ? folder.Path() : options.baseDir));
  HideGeneratedNames(!options.freshNames);
  AddGeneratedFolder(headless::TextFromNativePath(folder.Path()));
}

int Dump(const DumpOptions& options) {
  OutputFile output;
  if (!output.Open(options.output)) {
    Complain(options.output + ": " + std::strerror(errno));
    return kExitUsage;
  }
  std::unique_ptr<OutputFile> calls;
  if (!options.hostCalls.empty() && options.hostCalls != options.output) {
    calls = std::make_unique<OutputFile>();
    if (!calls->Open(options.hostCalls)) {
      Complain(options.hostCalls + ": " + std::strerror(errno));
      return kExitUsage;
    }
  }

  const TemporaryFolder folder;
  if (folder.Path().empty()) {
    Complain(std::string("no folder for temporary files: ") + std::strerror(errno));
    return kExitUsage;
  }
  std::string path = AbsolutePath(options.file);
  std::string shownName = options.file;
  if (options.file == "-") {
    path = folder.Path() + "/document.svg";
    shownName = "standard input";
    if (!SaveStandardInput(path)) {
      Complain(shownName + ": " + std::strerror(errno));
      return kExitNotImported;
    }
  }

  PrepareHost(options, folder);
  if (!options.hostCalls.empty()) StartJournal((calls != nullptr ? *calls : output).Stream());
  int status = kExitUsage;
  {
    const FilterLibrary filter(options.filter);
    if (filter.Failure().empty()) {
      status = Import(filter, path, shownName, output);
    } else {
      Complain("the filter cannot be loaded: " + filter.Failure());
    }
  }
  StopJournal();

  for (OutputFile* file : {&output, calls.get()}) {
    if (file == nullptr || file->Close()) continue;
    Complain(file->Name() + ": " + std::strerror(errno));
    if (status == kExitDone) status = kExitNotImported;
  }
  return status;
}

}  // namespace

void AddDumpCommand(CLI::App& app, int& status) {
  CLI::App* dump =
      app.add_subcommand("dump", "Imports a document and prints every record of the command stream as a line of JSON");
  auto options = std::make_shared<DumpOptions>();
  dump->add_option("file", options->file, "The document; - reads it from standard input")
      ->type_name("FILE.svg")
      ->required();
  dump->add_option("-o,--output", options->output, "Where the records go; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  AddSettingsOption(*dump, options->settings);
  dump->add_option("--units", options->units,
                   "The host's units code at the start; an import changes 301 to 300 while it runs")
      ->type_name("N")
      ->capture_default_str();
  dump->add_option(
          "--fonts", options->fonts,
          "The fonts of the text composer: any (every name is found), system (those of this system), none (no font is "
          "found and no replacement offered)")
      ->type_name("any|system|none")
      ->check(CLI::IsMember({"any", "system", "none"}).description(""))
      ->capture_default_str();
  dump->add_option("--base-dir", options->baseDir,
                   "The host's base folder, where the images of patterns are left; without it a folder that is removed "
                   "at the end")
      ->type_name("DIR");
  dump->add_option(
          "--image-folder", options->imageFolder,
          "Answers the dialog for a missing image with the file of its name in this folder; without it the dialog is "
          "cancelled")
      ->type_name("DIR");
  dump->add_option("--host-calls", options->hostCalls,
                   "Writes every call of the filter into the host as a line of JSON; - is standard output")
      ->type_name("FILE");
  dump->add_option("--filter", options->filter, "Another build of the filter; without it the one beside this program")
      ->type_name("LIBRARY");
  dump->add_flag("--fresh-names", options->freshNames,
                 "Prints the names of temporary files as they are; without it their random part is XXXXXX");
  dump->footer(
      "Exit status: 0 imported, 1 not imported or not written, 2 wrong arguments or files, 3 an error left the "
      "filter.\n\n"
      "Examples:\n"
      "  svgimport dump drawing.svg\n"
      "  svgimport dump --set ZENTAL/Units=0 --fonts none drawing.svg -o drawing.jsonl\n"
      "  svgimport dump --host-calls calls.jsonl - < drawing.svg");
  dump->callback([options, &status] { status = Dump(*options); });
}
