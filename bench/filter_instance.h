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
  // Reads, translates, drains and releases every record. `recordBytes`, if given, is raised by the memory that the
  // records and their payloads take, as the reference host's allocators handed it out.
  Result Import(const std::u16string& path, std::uint64_t* recordBytes = nullptr);

 private:
  void* library_;
  CheckFileFunction* checkFile_;
  GetImportCommandFunction* getImportCommand_;
  CloseFileFunction* closeFile_;
};
