// Colour names of style texts.
#pragma once

#include <cstdint>
#include <string_view>

// The colour, 0x00BBGGRR, of the name that `text` begins with; the name ends at the first ";" or with the text. A name
// is matched without regard to case as a beginning of a row's name, first row first within the group of its first
// letter: "bl" is black. 0 when nothing matches.
std::int32_t LookupColourName(std::u16string_view text);
