#include "tools/batch/file_names.h"

#include <poll.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

bool EndsInSvg(const std::string& name) {
  constexpr std::string_view kEnd = ".svg";
  return name.size() >= kEnd.size() &&
         std::equal(kEnd.begin(), kEnd.end(), name.end() - static_cast<std::ptrdiff_t>(kEnd.size()),
                    [](char small, char c) { return c == small || (c >= 'A' && c <= 'Z' && c - 'A' + 'a' == small); });
}

}  // namespace

FileNames::FileNames(std::vector<std::string> operands, char separator)
    : operands_(std::move(operands)), separator_(separator) {
  std::reverse(operands_.begin(), operands_.end());
}

FileNames::Next FileNames::Take(std::string& file) {
  for (;;) {
    if (!pending_.empty()) {
      file = std::move(pending_.back());
      pending_.pop_back();
    } else if (inList_) {
      if (!TakeFromList(file)) {
        if (!listEnded_) return Next::kWait;
        inList_ = false;
        continue;
      }
    } else if (!operands_.empty()) {
      file = std::move(operands_.back());
      operands_.pop_back();
      if (file == "-") {
        inList_ = true;
        continue;
      }
    } else {
      return Next::kEnd;
    }
    if (!OpenFolder(file)) return Next::kFile;
  }
}

// True when the name is that of a folder, whose content is pending now.
bool FileNames::OpenFolder(const std::string& folder) {
  std::error_code failed;
  if (!std::filesystem::is_directory(folder, failed)) return false;
  std::filesystem::directory_iterator entries(folder, failed);
  if (failed) return false;
  const std::size_t first = pending_.size();
  for (; entries != std::filesystem::directory_iterator(); entries.increment(failed)) {
    const std::filesystem::directory_entry& entry = *entries;
    std::error_code ignored;
    // A link to a folder is not followed: it might lead back.
    const bool walked = entry.is_directory(ignored) ? !entry.is_symlink(ignored) : EndsInSvg(entry.path().native());
    if (walked) pending_.push_back(entry.path().native());
  }
  std::sort(pending_.begin() + static_cast<std::ptrdiff_t>(first), pending_.end(), std::greater<>());
  return true;
}

bool FileNames::TakeFromList(std::string& name) {
  for (;;) {
    const std::size_t end = list_.find(separator_, listAt_);
    if (end == list_.npos && !(listEnded_ && listAt_ < list_.size())) {
      list_.erase(0, listAt_);
      listAt_ = 0;
      return false;
    }
    name = list_.substr(listAt_, end - listAt_);
    listAt_ = end == list_.npos ? list_.size() : end + 1;
    if (name.empty()) continue;
    if (name.find('\0') != name.npos) {
      failure_ = "a name holds a NUL character; a list that is separated by them needs -0";
      list_.clear();
      listAt_ = 0;
      listEnded_ = true;
      return false;
    }
    // By itself the dash would mean the list again.
    if (name == "-") name = "./-";
    return true;
  }
}

void FileNames::ReadList() {
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  if (listEnded_ || poll(&input, 1, 0) <= 0) return;
  char block[1 << 16];
  const ssize_t got = read(STDIN_FILENO, block, sizeof block);
  if (got > 0) {
    list_.append(block, static_cast<std::size_t>(got));
  } else if (got == 0) {
    listEnded_ = true;
  } else if (errno != EINTR && errno != EAGAIN) {
    failure_ = std::strerror(errno);
    listEnded_ = true;
  }
}
