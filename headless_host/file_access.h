// How the reference host finds and reads a file that the filter names by a host path.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace headless {

// The names under which the operating system may know the path, in the order in which they are tried: as it stands,
// then with every `\` as `/`, each first as UTF-8 and then in the narrow code page. None for a path with a NUL in it.
std::vector<std::string> NativeCandidates(std::u16string_view path);

// The bytes of the first candidate that is a regular file that can be opened; nothing on failure or when the file is
// longer than `limit` bytes.
std::optional<std::vector<unsigned char>> ReadHostFile(std::u16string_view path, std::uint64_t limit);

// What stands behind the last `/` or `\`.
std::u16string_view LastPathComponent(std::u16string_view path);

// The folder for temporary files, without a separator at its end.
std::string SystemTemporaryFolder();

}  // namespace headless
