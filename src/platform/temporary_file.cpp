#include "platform/temporary_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/host_path.h"
#include "platform/narrow_text.h"

namespace {

// Names are drawn anew when the one drawn is taken. So many tries fail only where something else is wrong.
constexpr int kTries = 100;

constexpr std::u16string_view kAlphabet = u"abcdefghijklmnopqrstuvwxyz0123456789";
constexpr std::size_t kRandomLength = 6;

int CreateExclusively(const std::string& name) {
  int descriptor;
  do {
    descriptor = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
  } while (descriptor == -1 && errno == EINTR);
  return descriptor;
}

bool AppendRandom(std::u16string& name) {
  unsigned char bytes[kRandomLength];
  if (getrandom(bytes, sizeof bytes, 0) != sizeof bytes) return false;
  for (const unsigned char byte : bytes) name.push_back(kAlphabet[byte % kAlphabet.size()]);
  return true;
}

}  // namespace

std::u16string TemporaryFolder() {
  const char* const variable = std::getenv("TMPDIR");
  std::string native = variable != nullptr && *variable != '\0' ? variable : "/tmp";
  if (native.back() != '/') native.push_back('/');
  std::u16string folder = WideFromUtf8(native);
  // A name that is no UTF-8 is brought back by the bytes of the code page.
  return Utf8FromWide(folder) == native ? folder : WideFromNarrow(native);
}

std::u16string CreateTemporaryFile(std::u16string_view folder, std::u16string_view prefix) {
  std::u16string start(folder);
  if (!start.empty() && BaseDirectoryLength(start) != start.size()) start.push_back(u'/');
  start += prefix;
  for (int i = 0; i < kTries; ++i) {
    std::u16string path = start;
    if (!AppendRandom(path)) return {};
    path += u".tmp";
    const std::string name = NativeNameOfNewFile(path);
    if (name.empty()) return {};
    const int descriptor = CreateExclusively(name);
    if (descriptor != -1) {
      close(descriptor);
      return path;
    }
    if (errno != EEXIST) return {};
  }
  return {};
}

int CreateReplacingFile(std::u16string_view path) {
  for (int i = 0; i < kTries; ++i) {
    const std::string name = NativeNameOfNewFile(path);
    if (name.empty()) return -1;
    const int descriptor = CreateExclusively(name);
    if (descriptor != -1) return descriptor;
    if (errno != EEXIST || unlink(name.c_str()) != 0) return -1;
  }
  return -1;
}

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written == -1 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool WriteReplacingFile(std::u16string_view path, std::string_view bytes) {
  const int descriptor = CreateReplacingFile(path);
  if (descriptor == -1) return false;
  const bool written = WriteAll(descriptor, bytes);
  return close(descriptor) == 0 && written;
}

bool RemoveHostFile(std::u16string_view path) {
  const std::string name = NativeNameOfExistingFile(path);
  return !name.empty() && unlink(name.c_str()) == 0;
}
