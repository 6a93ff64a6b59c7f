// Another loader for comparison: librsvg, where its development package is installed.
#pragma once

#include <cstddef>

// Makes a handle from the bytes and frees it. False when the library refuses them.
using RsvgLoad = bool(const char* bytes, std::size_t size);

// Loads librsvg into this process; null in a build that did not find it. For processes that need it alone: it brings
// some thirty libraries, through all of which the dynamic loader goes whenever it looks for another. Throws
// std::runtime_error.
RsvgLoad* FindRsvg();
