// Another loader for comparison: librsvg, where its development package is installed.
#pragma once

#include <string_view>

// True in a build that found the library.
bool HasRsvg();

// Makes a handle from the bytes and frees it. False when the library refuses them or is not there.
bool LoadWithRsvg(std::string_view bytes);
