#include "tools/document_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "filter_limits.h"

std::optional<std::string> ReadDocumentBytes(const std::string& file, std::string& reason) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) {
    reason = errno == ENOENT ? "the file does not exist" : std::strerror(errno);
    return std::nullopt;
  }
  std::optional<std::string> bytes;
  struct stat status;
  if (fstat(descriptor, &status) != 0) {
    reason = std::strerror(errno);
  } else if (S_ISDIR(status.st_mode)) {
    reason = "it is a directory";
  } else if (!S_ISREG(status.st_mode)) {
    reason = "it is not a regular file";
  } else if (static_cast<std::uint64_t>(status.st_size) > kMaxDocumentBytes) {
    reason = "the file is longer than 2 GiB";
  } else {
    std::string& text = bytes.emplace(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t filled = 0;
    ssize_t got = 1;
    while (got > 0 && filled < text.size()) {
      got = read(descriptor, text.data() + filled, text.size() - filled);
      if (got > 0) filled += static_cast<std::size_t>(got);
    }
    text.resize(filled);
  }
  close(descriptor);
  return bytes;
}

BlankedDoctype BlankDoctype(std::string& text) {
  const std::size_t word = text.find("!DOCTYPE");
  if (word == text.npos) return {};
  const std::size_t before = text.rfind('<', word);
  const std::size_t start = before == text.npos ? word : before;
  const std::size_t end = std::min(text.find('>', word), text.size());
  const bool subset = text.find('[', word) < end;
  const auto countLines = [&](std::size_t from, std::size_t to) {
    return static_cast<int>(std::count(text.data() + from, text.data() + to, '\n'));
  };
  const int line = 1 + countLines(0, start);
  const int lostLines = countLines(start, end) - 1;
  for (std::size_t i = start; i < end; ++i) text[i] = ' ';
  if (end < text.size()) text[end] = '\n';
  return {start, std::min(end + 1, text.size()), subset, line, lostLines};
}

int MostAttributes(std::string_view text) {
  int most = 0;
  for (std::size_t at = text.find('<'); at != text.npos; at = text.find('<', at + 1)) {
    if (at + 1 < text.size() && (text[at + 1] == '!' || text[at + 1] == '?')) continue;
    int count = 0;
    char quote = 0;
    for (std::size_t i = at + 1; i < text.size() && text[i] != '<'; ++i) {
      if (quote != 0) {
        if (text[i] == quote) quote = 0;
      } else if (text[i] == '"' || text[i] == '\'') {
        quote = text[i];
      } else if (text[i] == '=') {
        ++count;
      } else if (text[i] == '>') {
        break;
      }
    }
    most = std::max(most, count);
  }
  return most;
}
