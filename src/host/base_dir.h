// A folder name in both widths, with what kind of folder it is. A class of the host's whose inline members every module
// that includes this header carries and exports; the import itself does not use it.
#pragma once

#include <cstdint>
#include <string>

#include "host/export.h"

class CBaseDir {
 public:
  enum path_type : std::int32_t { kUnknownPath = 0 };

  CBaseDir() = default;
  HOST_INLINE CBaseDir(const CBaseDir& other)
      : widePath(other.widePath), narrowPath(other.narrowPath), type(other.type), word(other.word) {}
  HOST_INLINE CBaseDir& operator=(const CBaseDir& other) {
    widePath = other.widePath;
    narrowPath = other.narrowPath;
    type = other.type;
    word = other.word;
    return *this;
  }

  HOST_INLINE operator const char*() const { return narrowPath.c_str(); }
  HOST_INLINE operator const char16_t*() const { return widePath.c_str(); }
  HOST_INLINE operator std::string() const { return narrowPath; }
  HOST_INLINE operator std::u16string() const { return widePath; }
  HOST_INLINE path_type GetType() const { return type; }

  std::u16string widePath;
  std::string narrowPath;
  path_type type = kUnknownPath;
  std::uint32_t word = 0;
};
