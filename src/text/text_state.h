// What the text elements leave for one another and for the paragraph. All of it outlives a single element, and none of
// it is part of a frame.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "filter_limits.h"

struct FontRecord;

// The last font search.
struct FontMemo {
  bool searched = false;  // before the first search no name matches
  std::u16string lastAskedName;
  std::u16string lastResolvedName;
  FontRecord* lastFont = nullptr;
  std::uint32_t lastReplacedFontId = 0;
};

struct TextState {
  void SetFontName(std::u16string_view name) { WriteFontName(name)[0] = 0; }
  void OverwriteFontName(std::u16string_view name) { WriteFontName(name); }

  std::u16string TextBuffer;  // the characters of the element
  // The font asked for, NUL-terminated. A style writes a name over its start without a terminator, so that whatever
  // older names left in the buffer shows behind it: it is meant.
  char16_t FontName[kMaxFontNameUnits + 1] = {};
  double FontSize = 0.0;        // thousandths of an inch
  double TextX = 0.0;           // host units
  double TextY = 0.0;           // host units, upwards
  std::int32_t TextAnchor = 0;  // 1 start, 2 middle, 3 end
  FontMemo fontMemo;
  double lineSpacing = 0.0;  // nothing sets it
  bool UnicodeSeen = false;  // nothing reads it

 private:
  char16_t* WriteFontName(std::u16string_view name) {
    name = name.substr(0, kMaxFontNameUnits);
    name.copy(FontName, name.size());
    return FontName + name.size();
  }
};
