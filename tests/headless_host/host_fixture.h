// A fresh host for each test, and a folder of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "headless_host/headless_host.h"

namespace host_tests {

class HostTest : public testing::Test {
 protected:
  HostTest() { ResetHost(); }
  ~HostTest() override { ResetHost(); }
};

class ScratchFolder {
 public:
  ScratchFolder() : path_(std::filesystem::temp_directory_path() / "scratch-XXXXXX") {
    std::string name = path_.string();
    if (mkdtemp(name.data()) != nullptr) path_ = name;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string File(const std::string& name) const { return (path_ / name).string(); }
  std::string Path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

inline std::string ReadText(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

inline void WriteText(const std::string& file, std::string_view text) { std::ofstream(file, std::ios::binary) << text; }

}  // namespace host_tests
