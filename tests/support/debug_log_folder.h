// The folder of the debug logs for one test. The logs have a fixed place that every process of the machine shares: one
// test at a time has it, and what was there before comes back at the end.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

class DebugLogFolder {
 public:
  // Waits for its turn. The folder does not exist then. The folder above is what is locked, so that no file of the lock
  // is left behind.
  DebugLogFolder() : lock_(open("/tmp", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    flock(lock_, LOCK_EX);
    kept_ = std::filesystem::exists(kFolder);
    if (kept_) std::filesystem::rename(kFolder, kAside);
  }
  ~DebugLogFolder() {
    std::filesystem::remove_all(kFolder);
    if (kept_) std::filesystem::rename(kAside, kFolder);
    close(lock_);
  }
  DebugLogFolder(const DebugLogFolder&) = delete;
  DebugLogFolder& operator=(const DebugLogFolder&) = delete;

  static void Make() { std::filesystem::create_directory(kFolder); }
  static bool Exists() { return std::filesystem::exists(kFolder); }
  static std::string File(const std::string& name) { return kFolder + ("/" + name); }
  static void Write(const std::string& name, std::string_view text) {
    std::ofstream(File(name), std::ios::binary) << text;
  }
  static std::string Read(const std::string& name) {
    std::ifstream file(File(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static std::size_t CountOfFiles() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(kFolder), {}));
  }

 private:
  static inline const std::string kFolder = "/tmp/svgimport";
  static inline const std::string kAside = "/tmp/svgimport-aside";

  int lock_;
  bool kept_;
};
