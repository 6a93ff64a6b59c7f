// The filter as a host has it: a shared library loaded afresh for one import, and its entry points.
#pragma once

#include <string>

#include "run/import_command.h"

class FilterLibrary {
 public:
  // Loads the library at `path`, or, when that is empty, the one that was built or installed with the running program.
  explicit FilterLibrary(const std::string& path);
  // Unloads it. Nothing that came from its code, an exception included, may be alive.
  ~FilterLibrary();
  FilterLibrary(const FilterLibrary&) = delete;
  FilterLibrary& operator=(const FilterLibrary&) = delete;

  // Empty when the library is loaded; otherwise why not.
  const std::string& Failure() const { return failure_; }

  CheckFileFunction* checkFile = nullptr;
  GetImportCommandFunction* getImportCommand = nullptr;
  CloseFileFunction* closeFile = nullptr;

 private:
  void Open(const std::string& path);

  void* handle_ = nullptr;
  std::string failure_;
};
