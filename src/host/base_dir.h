// A folder name in both widths, with what kind of folder it is. A class of the host's whose inline members every module
// that includes this header carries and exports; the import itself does not use it.
#pragma once

#include <cstdint>
#include <string>

#include "host/export.h"

class HOST_VISIBLE CBaseDir {
 public:
  enum path_type : std::int32_t { kUnknownPath = 0 };

  CBaseDir() = default;
  __attribute__((used)) inline CBaseDir(const CBaseDir& other)
      : widePath(other.widePath), narrowPath(other.narrowPath), type(other.type), word(other.word) {}
  __attribute__((used)) inline CBaseDir& operator=(const CBaseDir& other) {
    widePath = other.widePath;
    narrowPath = other.narrowPath;
    type = other.type;
    word = other.word;
    return *this;
  }

  __attribute__((used)) inline operator const char*() const { return narrowPath.c_str(); }
  __attribute__((used)) inline operator const char16_t*() const { return widePath.c_str(); }
  __attribute__((used)) inline operator std::string() const { return narrowPath; }
  __attribute__((used)) inline operator std::u16string() const { return widePath; }
  __attribute__((used)) inline path_type GetType() const { return type; }

  std::u16string widePath;
  std::string narrowPath;
  path_type type = kUnknownPath;
  std::uint32_t word = 0;
};
