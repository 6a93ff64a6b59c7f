// The drawings of Debian's package openclipart-svg that the benchmark takes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct DrawingFile {
  std::u16string path;
  std::string bytes;
};

// Every other file below 300 kB of the sorted list until there are `count`; none when the package is missing.
std::vector<DrawingFile> ReadDrawings(std::size_t count);
