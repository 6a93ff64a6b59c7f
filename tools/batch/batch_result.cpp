#include "tools/batch/batch_result.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "tools/json_values.h"

namespace {

constexpr std::string_view kBeforeName = "{\"file\":\"";
constexpr std::string_view kBeforeStatus = ",\"status\":\"";

// Where the text that begins at `from` behind its first quote ends, as the place of its last quote.
std::size_t EndOfJsonText(std::string_view line, std::size_t from) {
  for (std::size_t i = from; i < line.size(); ++i) {
    if (line[i] == '\\') {
      ++i;
    } else if (line[i] == '"') {
      return i;
    }
  }
  return line.npos;
}

struct LineBuffer {
  char* text = nullptr;
  std::size_t size = 0;
  ~LineBuffer() { std::free(text); }
};

}  // namespace

const char* BatchStatusName(BatchResult::Status status) {
  static constexpr const char* kNames[kBatchStatusCount] = {"accepted", "refused", "failed"};
  return kNames[status];
}

std::string BatchResultLine(const BatchResult& result) {
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  const auto text = [&](const char* key, const std::string& bytes) {
    if (bytes.empty()) return;
    writer.Key(key);
    WriteBytes(writer, bytes);
  };
  const auto counts = [&](const char* key, const std::map<std::string, std::uint64_t>& numbers) {
    if (numbers.empty()) return;
    writer.Key(key);
    writer.StartObject();
    for (const auto& [name, count] : numbers) {
      writer.Key(name.c_str());
      writer.Uint64(count);
    }
    writer.EndObject();
  };
  writer.StartObject();
  text("file", result.file);
  text("status", BatchStatusName(result.status));
  text("reason", result.reason);
  writer.Key("records");
  writer.Uint64(result.records);
  writer.Key("seconds");
  WriteNumber(writer, std::round(result.seconds * 1e6) / 1e6);
  writer.Key("bytes");
  writer.Uint64(result.bytes);
  counts("commands", result.commands);
  counts("losses", result.losses);
  text("dump", result.dump);
  text("picture", result.picture);
  text("printed", result.printed);
  writer.EndObject();
  return buffer.GetString();
}

ResultFile::~ResultFile() { Close(); }

bool ResultFile::Open(const std::string& name, bool resume, std::string& failure) {
  if (name == "-") {
    stream_ = stdout;
    return true;
  }
  const int descriptor = open(name.c_str(), O_CREAT | O_CLOEXEC | (resume ? O_RDWR : O_WRONLY | O_TRUNC), 0666);
  if (descriptor >= 0) stream_ = fdopen(descriptor, resume ? "r+" : "w");
  if (stream_ == nullptr) {
    failure = std::strerror(errno);
    if (descriptor >= 0) close(descriptor);
    return false;
  }
  return !resume || LearnResults(failure);
}

bool ResultFile::LearnResults(std::string& failure) {
  LineBuffer buffer;
  off_t end = 0;
  ssize_t got;
  for (int number = 1; (got = getline(&buffer.text, &buffer.size, stream_)) > 0; ++number) {
    const std::string_view line(buffer.text, static_cast<std::size_t>(got));
    const std::string_view head = line.substr(0, kBeforeName.size());
    const bool whole = line.back() == '\n';
    if (whole ? head != kBeforeName : !kBeforeName.starts_with(head)) {
      failure = "line " + std::to_string(number) + " is not the result of a batch";
      return false;
    }
    if (!whole) break;
    end += got;
    const std::size_t nameEnd = EndOfJsonText(line, kBeforeName.size());
    if (nameEnd == line.npos) continue;
    const std::string_view rest = line.substr(nameEnd + 1);
    for (std::size_t i = 0; i < kBatchStatusCount; ++i) {
      const std::string status = BatchStatusName(static_cast<BatchResult::Status>(i)) + std::string("\"");
      if (!rest.starts_with(kBeforeStatus) || !rest.substr(kBeforeStatus.size()).starts_with(status)) continue;
      if (had_.emplace(line.substr(kBeforeName.size(), nameEnd - kBeforeName.size())).second) ++hadCounts_[i];
    }
  }
  if (std::ferror(stream_) != 0 || ftruncate(fileno(stream_), end) != 0 || std::fseek(stream_, end, SEEK_SET) != 0) {
    failure = std::strerror(errno);
    return false;
  }
  return true;
}

bool ResultFile::Had(const std::string& file) const { return !had_.empty() && had_.contains(JsonOfBytes(file)); }

bool ResultFile::Write(const BatchResult& result) {
  const std::string line = BatchResultLine(result) + '\n';
  return std::fwrite(line.data(), 1, line.size(), stream_) == line.size() && std::fflush(stream_) == 0;
}

bool ResultFile::Close() {
  if (stream_ == nullptr || stream_ == stdout) return true;
  std::FILE* stream = stream_;
  stream_ = nullptr;
  return std::fclose(stream) == 0;
}
