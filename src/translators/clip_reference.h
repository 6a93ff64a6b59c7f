// The clip-path attribute.
#pragma once

#include <string_view>

// Translates the clip path that "url(#...)" names, in place and under the current matrix, and leaves the clip open for
// the element. Without a match only the end of the clip geometry goes out; without "url(#" nothing does.
void ApplyClipReference(std::u16string_view text);

// What an element sends behind itself when it has a clip-path, whatever became of it: KEY_DOCP 0, KEY_ECGR.
void CloseClippedElement();
