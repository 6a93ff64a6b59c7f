#include "bench/drawings.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

std::vector<DrawingFile> ReadDrawings(std::size_t count) {
  constexpr char kFolder[] = "/usr/share/openclipart";
  constexpr std::uintmax_t kSizeLimit = 300'000;
  std::vector<std::filesystem::path> found;
  if (!std::filesystem::is_directory(kFolder)) return {};
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kFolder)) {
    if (entry.path().extension() == ".svg" && entry.is_regular_file() && entry.file_size() < kSizeLimit) {
      found.push_back(entry.path());
    }
  }
  std::sort(found.begin(), found.end());
  std::vector<DrawingFile> drawings;
  for (std::size_t i = 0; i < found.size() && drawings.size() < count; i += 2) {
    std::ifstream file(found[i], std::ios::binary);
    drawings.push_back({found[i].u16string(), {std::istreambuf_iterator<char>(file), {}}});
  }
  return drawings;
}
