#include "tests/support/host_journal.h"

#include <string>

namespace {

// {"call":"NAME","args":[ARGUMENTS],"result":RESULT} as NAME(ARGUMENTS)=RESULT, without quotes. Other lines stay.
std::string Shorten(std::string line) {
  constexpr std::string_view kCall = "{\"call\":\"", kArguments = "\",\"args\":[", kResult = "],\"result\":";
  if (!line.starts_with(kCall)) return line;
  const std::size_t arguments = line.find(kArguments);
  const std::size_t end = line.rfind(']');
  std::string shown = line.substr(kCall.size(), arguments - kCall.size()) + '(';
  for (char c : line.substr(arguments + kArguments.size(), end - arguments - kArguments.size())) {
    if (c != '"') shown += c;
  }
  shown += ')';
  if (line.compare(end, kResult.size(), kResult) == 0) {
    shown += '=' + line.substr(end + kResult.size(), line.size() - end - kResult.size() - 1);
  }
  return shown;
}

}  // namespace

HostJournal::HostJournal() : file_(std::tmpfile()) { StartJournal(file_); }

HostJournal::~HostJournal() {
  StopJournal();
  std::fclose(file_);
}

Lines HostJournal::Take() {
  Lines lines(1);
  std::fseek(file_, taken_, SEEK_SET);
  for (int c; (c = std::fgetc(file_)) != EOF;) {
    if (c != '\n') {
      lines.back() += static_cast<char>(c);
    } else {
      lines.back() = Shorten(lines.back());
      lines.emplace_back();
    }
  }
  lines.pop_back();
  taken_ = std::ftell(file_);
  return lines;
}

Lines Only(const Lines& lines, std::string_view start) {
  Lines kept;
  for (const std::string& line : lines) {
    if (line.starts_with(start)) kept.push_back(line);
  }
  return kept;
}

Lines Without(const Lines& lines, std::string_view start) {
  Lines kept;
  for (const std::string& line : lines) {
    if (!line.starts_with(start)) kept.push_back(line);
  }
  return kept;
}
