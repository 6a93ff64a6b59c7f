// A file or standard output that a tool prints to.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

class OutputFile {
 public:
  OutputFile() = default;
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Creates or truncates the file; "-" is standard output. False on failure, with errno set. With `buffering` _IOLBF
  // every line is written as it ends, so that none is lost in a crash.
  bool Open(const std::string& name, int buffering = _IOFBF);
  void WriteLine(std::string_view line);
  // Writes what is still in the buffer. False, with errno set, when anything could not be written since Open.
  bool Close();

  std::FILE* Stream() { return stream_; }
  // As it is to be shown to the user.
  std::string Name() const { return name_ == "-" ? "standard output" : name_; }

 private:
  std::string name_;
  std::FILE* stream_ = nullptr;
};
