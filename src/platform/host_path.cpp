#include "platform/host_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/narrow_text.h"

namespace {

constexpr char16_t kSeparators[] = u"/\\";

// Calls `take` with the native names of one spelling, until it returns true. Returns whether it did.
template <typename Take>
bool TrySpelling(std::u16string_view spelling, Take take) {
  const std::string utf8 = Utf8FromWide(spelling);
  const bool ascii = utf8.size() == spelling.size();  // which is the same in every encoding
  if ((ascii || WideFromUtf8(utf8) == spelling) && take(utf8)) return true;
  if (ascii) return false;
  const std::string narrow = NarrowFromWide(spelling);
  return narrow != utf8 && WideFromNarrow(narrow) == spelling && take(narrow);
}

// The same for all spellings of a path in turn.
template <typename Take>
bool TrySpellings(std::u16string_view path, Take take) {
  if (path.empty() || path.find(u'\0') != std::u16string_view::npos) return false;
  if (TrySpelling(path, take)) return true;
  std::u16string slashed(path);
  std::replace(slashed.begin(), slashed.end(), u'\\', u'/');
  return slashed != path && TrySpelling(slashed, take);
}

// Opens without waiting for the other end of a pipe. Returns -1 for anything but a regular file.
int OpenRegular(const std::string& name, int flags, std::uint64_t* size) {
  int descriptor;
  do {
    descriptor = open(name.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, S_IRUSR | S_IWUSR);
  } while (descriptor == -1 && errno == EINTR);
  if (descriptor == -1) return -1;
  struct stat status;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    *size = static_cast<std::uint64_t>(status.st_size);
    return descriptor;
  }
  close(descriptor);
  return -1;
}

}  // namespace

int OpenHostFileForReading(std::u16string_view path, std::uint64_t* size) {
  int descriptor = -1;
  TrySpellings(path, [&](const std::string& name) {
    descriptor = OpenRegular(name, O_RDONLY, size);
    return descriptor != -1;
  });
  return descriptor;
}

int OpenHostFileForWriting(std::u16string_view path) {
  std::string name = NativeNameOfExistingFile(path);
  if (name.empty()) name = NativeNameOfNewFile(path);
  if (name.empty()) return -1;
  std::uint64_t size;
  const int descriptor = OpenRegular(name, O_RDWR | O_CREAT | O_NOFOLLOW, &size);
  if (descriptor == -1) return -1;
  // Emptied only now that it is known to be a regular file.
  if (ftruncate(descriptor, 0) == 0) return descriptor;
  close(descriptor);
  return -1;
}

bool HostFileExists(std::u16string_view path) {
  return TrySpellings(path, [](const std::string& name) { return access(name.c_str(), F_OK) == 0; });
}

std::string NativeNameOfExistingFile(std::u16string_view path) {
  std::string found;
  TrySpellings(path, [&](const std::string& name) {
    if (access(name.c_str(), F_OK) != 0) return false;
    found = name;
    return true;
  });
  return found;
}

std::string NativeNameOfNewFile(std::u16string_view path) {
  std::string found;
  TrySpellings(path, [&](const std::string& name) {
    // A '\' that stands as it is ends the folder too: "/tmp\new.png" is no file named "tmp\new.png" in the root.
    const std::size_t separator = name.find_last_of("/\\");
    const std::string folder = separator == std::string::npos ? "." : name.substr(0, separator + 1);
    struct stat status;
    if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
    found = name;
    return true;
  });
  return found;
}

std::size_t BaseDirectoryLength(std::u16string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  return separator == std::u16string_view::npos ? 0 : separator + 1;
}

bool IsAbsoluteHostPath(std::u16string_view path) {
  return path.find(u':') != std::u16string_view::npos || path.find_first_of(kSeparators) == 0;
}
