#include "tools/import_document.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include "headless_host/headless_host.h"
#include "headless_host/text.h"
#include "tools/diagnosis.h"
#include "tools/filter_library.h"
#include "tools/option_values.h"

namespace {

// How the filter says that a document did not fit into memory.
constexpr const char* kNoMemoryStatus = "status 0x8007000E";

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

}  // namespace

void Complain(const std::string& text) { std::fprintf(stderr, "svgimport: %s\n", text.c_str()); }

void AddImportOptions(CLI::App& command, ImportOptions& options) {
  command.add_option("file", options.file, "The document; - reads it from standard input")
      ->type_name("FILE.svg")
      ->required();
  AddHostOptions(command, options);
}

void AddHostOptions(CLI::App& command, ImportOptions& options) {
  AddSettingsOption(command, options.settings);
  command
      .add_option("--units", options.units,
                  "The host's units code at the start; an import changes 301 to 300 while it runs")
      ->type_name("N")
      ->capture_default_str();
  command
      .add_option(
          "--fonts", options.fonts,
          "The fonts of the text composer: any (every name is found), system (those of this system), none (no font is "
          "found and no replacement offered)")
      ->type_name("any|system|none")
      ->check(CLI::IsMember({"any", "system", "none"}).description(""))
      ->capture_default_str();
  command
      .add_option("--base-dir", options.baseDir,
                  "The host's base folder, where the images of patterns are left; without it a folder that is removed "
                  "at the end")
      ->type_name("DIR");
  command
      .add_option(
          "--image-folder", options.imageFolder,
          "Answers the dialog for a missing image with the file of its name in this folder; without it the dialog is "
          "cancelled")
      ->type_name("DIR");
  command.add_option("--filter", options.filter, "Another build of the filter; without it the one beside this program")
      ->type_name("LIBRARY");
}

ImportedDocument::ImportedDocument(const ImportOptions& options)
    : options_(options), path_(AbsolutePath(options.file)), shownName_(options.file) {
  if (folder_.Path().empty()) {
    Complain(std::string("no folder for temporary files: ") + std::strerror(errno));
    status_ = kExitUsage;
    return;
  }
  if (options.file != "-") return;
  path_ = folder_.Path() + "/document.svg";
  shownName_ = "standard input";
  if (SaveStandardInput(path_)) return;
  Complain(shownName_ + ": " + std::strerror(errno));
  status_ = kExitNotImported;
}

void ImportedDocument::PrepareHost() const {
  ResetHost();
  StoreSettings(options_.settings);
  SetHostUnits(options_.units);
  SetHostFontMode(FontModeNamed(options_.fonts));
  SetHostImageFolder(options_.imageFolder);
  SetHostBaseDir(headless::TextFromNativePath(options_.baseDir.empty() ? folder_.Path() : options_.baseDir));
  AddGeneratedFolder(headless::TextFromNativePath(folder_.Path()));
}

int ImportedDocument::Import(const std::function<void(const ImportCommand&)>& take) const {
  return Import(take, [this](int status, const std::string& reason) {
    if (status == kExitUsage) {
      Complain(reason);
    } else {
      Complain(shownName_ + (status == kExitNotImported ? ": not imported: " : ": ") + reason);
    }
  });
}

int ImportedDocument::Import(const std::function<void(const ImportCommand&)>& take,
                             const std::function<void(int status, const std::string& reason)>& tell) const {
  const FilterLibrary filter(options_.filter);
  if (!filter.Failure().empty()) {
    tell(kExitUsage, "the filter cannot be loaded: " + filter.Failure());
    return kExitUsage;
  }
  int status = kExitDone;
  bool outOfMemory = false;
  const auto withoutErrors = [&](const auto& part) {
    try {
      part();
    } catch (const std::bad_alloc&) {
      outOfMemory = true;
    } catch (const std::exception& error) {
      const std::string text = error.what();
      if (text.ends_with(kNoMemoryStatus)) {
        outOfMemory = true;
        return;
      }
      status = kExitError;
      tell(status, text);
    }
  };
  withoutErrors([&] {
    if (filter.checkFile(0, 0, headless::TextFromNativePath(path_).c_str()) == 0) {
      status = kExitNotImported;
      return;
    }
    ImportCommand command;
    do {
      command = filter.getImportCommand();
      take(command);
    } while (command.key != KEY_ENDF);
  });
  withoutErrors([&] { filter.closeFile(); });
  // An exception of our own: one of the filter's must be gone before the filter is.
  if (outOfMemory) throw std::bad_alloc();
  if (status == kExitNotImported) tell(status, DiagnoseDocument(path_));
  return status;
}
