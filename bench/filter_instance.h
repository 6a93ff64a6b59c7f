// A freshly loaded filter, as a host has one for each import.
#pragma once

#include <cstdint>
#include <string>

#include "run/import_command.h"

class FilterInstance {
 public:
  // Throws std::runtime_error when the library cannot be loaded.
  FilterInstance();
  ~FilterInstance();
  FilterInstance(const FilterInstance&) = delete;
  FilterInstance& operator=(const FilterInstance&) = delete;

  struct Result {
    bool accepted = false;
    std::uint64_t records = 0;
  };
  // Reads, translates, drains and releases every record.
  Result Import(const std::u16string& path);

 private:
  void* library_;
  CheckFileFunction* checkFile_;
  GetImportCommandFunction* getImportCommand_;
  CloseFileFunction* closeFile_;
};
