#include "headless_host/file_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "headless_host/text.h"

namespace headless {
namespace {

class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int Get() const { return descriptor_; }

 private:
  int descriptor_;
};

// A regular file of this name, or -1. O_NONBLOCK keeps a pipe from holding the host up.
int OpenRegularFile(const std::string& name, std::uint64_t& size) {
  const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return -1;
  struct stat status;
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(descriptor);
    return -1;
  }
  size = static_cast<std::uint64_t>(status.st_size);
  return descriptor;
}

}  // namespace

std::vector<std::string> NativeCandidates(std::u16string_view path) {
  std::vector<std::string> candidates;
  if (path.empty() || path.find(u'\0') != path.npos) return candidates;
  auto add = [&](std::string candidate) {
    if (std::find(candidates.begin(), candidates.end(), candidate) == candidates.end()) {
      candidates.push_back(std::move(candidate));
    }
  };
  auto addBoth = [&](std::u16string_view text) {
    add(Utf8FromText(text));
    if (auto narrow = NarrowFromText(text)) add(std::move(*narrow));
  };
  addBoth(path);
  std::u16string slashed(path);
  std::replace(slashed.begin(), slashed.end(), u'\\', u'/');
  addBoth(slashed);
  return candidates;
}

std::optional<std::vector<unsigned char>> ReadHostFile(std::u16string_view path, std::uint64_t limit) {
  for (const std::string& candidate : NativeCandidates(path)) {
    std::uint64_t size = 0;
    const FileDescriptor file(OpenRegularFile(candidate, size));
    if (file.Get() < 0) continue;
    if (size > limit) return std::nullopt;
    std::vector<unsigned char> bytes(size);
    std::size_t filled = 0;
    while (filled < bytes.size()) {
      const ssize_t got = read(file.Get(), bytes.data() + filled, bytes.size() - filled);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
      filled += static_cast<std::size_t>(got);
    }
    if (filled != bytes.size()) return std::nullopt;
    return bytes;
  }
  return std::nullopt;
}

std::u16string_view LastPathComponent(std::u16string_view path) {
  const std::size_t separator = path.find_last_of(u"/\\");
  return separator == path.npos ? path : path.substr(separator + 1);
}

std::string SystemTemporaryFolder() {
  const char* variable = std::getenv("TMPDIR");
  std::string folder = variable != nullptr && *variable != '\0' ? variable : "/tmp";
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

}  // namespace headless
