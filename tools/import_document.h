// One import by a command: what the host is told before it, the filter loaded for it, and the errors it can end with.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "run/import_command.h"
#include "tools/temporary_folder.h"

struct ImportOptions {
  std::string file;  // "-" is standard input
  std::vector<std::string> settings;
  int units = 300;
  std::string fonts = "any";
  std::string baseDir, imageFolder;
  std::string filter;
};

// Add the options of the host to a command, the first the document as well. `options` must live until the arguments are
// parsed.
void AddImportOptions(CLI::App& command, ImportOptions& options);
void AddHostOptions(CLI::App& command, ImportOptions& options);

// Prints "svgimport: " and the text to standard error.
void Complain(const std::string& text);

// A document on disk and the folder for what its import leaves behind, which goes with it.
class ImportedDocument {
 public:
  // Saves standard input if that is the document. On failure Status() is the exit status and the user has been told.
  explicit ImportedDocument(const ImportOptions& options);

  int Status() const { return status_; }
  // In the encoding of the operating system: the full path, and what the user calls it.
  const std::string& Path() const { return path_; }
  const std::string& ShownName() const { return shownName_; }

  // Brings the host into the state that the options ask for; to be called before Import.
  void PrepareHost() const;

  // Loads the filter, imports, and hands every record up to KEY_ENDF to `take`, which owns the payload. Answers the
  // exit status; the user has been told of any failure. An error thrown by `take` counts as one of the filter.
  // Throws std::bad_alloc, with everything closed, when the import runs out of memory; RunGuarded tells the user.
  int Import(const std::function<void(const ImportCommand&)>& take) const;
  // The same, with failures given to `tell`, as a status and the reason without the document's name, as they come.
  int Import(const std::function<void(const ImportCommand&)>& take,
             const std::function<void(int status, const std::string& reason)>& tell) const;

 private:
  const ImportOptions& options_;
  TemporaryFolder folder_;
  std::string path_, shownName_;
  int status_ = 0;
};
