#include "tools/output_file.h"

#include <cerrno>

OutputFile::~OutputFile() { Close(); }

bool OutputFile::Open(const std::string& name, int buffering) {
  name_ = name;
  stream_ = name == "-" ? stdout : std::fopen(name.c_str(), "we");
  if (stream_ == nullptr) return false;
  constexpr std::size_t kBufferBytes = std::size_t{1} << 16;
  std::setvbuf(stream_, nullptr, buffering, kBufferBytes);
  return true;
}

void OutputFile::WriteLine(std::string_view line) {
  std::fwrite(line.data(), 1, line.size(), stream_);
  std::fputc('\n', stream_);
}

bool OutputFile::Close() {
  if (stream_ == nullptr) return true;
  std::FILE* stream = stream_;
  stream_ = nullptr;
  const bool failedBefore = std::ferror(stream) != 0;
  const int before = errno;
  const bool failedNow = (stream == stdout ? std::fflush(stream) : std::fclose(stream)) != 0;
  if (failedBefore) errno = before;
  return !failedBefore && !failedNow;
}
