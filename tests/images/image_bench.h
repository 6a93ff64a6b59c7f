// The bench of the image tests: a temporary folder, a base folder of the host and pictures of the test's own.
#pragma once

#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "host/bitmap.h"
#include "platform/narrow_text.h"
#include "tests/headless_host/sample_images.h"
#include "tests/support/filter_test.h"

using FileNames = std::set<std::string>;

inline std::string EncodeBase64(std::string_view bytes) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = i; j < i + 3; ++j) group = (group << 8) | (j < bytes.size() ? bytes[j] & 0xFF : 0);
    for (std::size_t j = 0; j < 4; ++j) {
      text += i + j <= bytes.size() ? kAlphabet[(group >> (18 - 6 * j)) & 63] : '=';
    }
  }
  return text;
}

inline std::string TextOf(std::span<const unsigned char> bytes) { return {bytes.begin(), bytes.end()}; }

inline std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteFile(const std::string& name, std::string_view bytes) {
  std::ofstream(name, std::ios::binary) << bytes;
}

inline FileNames FilesIn(const std::string& folder) {
  FileNames names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename().string());
  return names;
}

// The rights of a file, such as 0600; 0 when there is none.
inline unsigned ModeOf(const std::string& name) {
  struct stat status;
  return stat(name.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

// The path of the tile in a pattern's fill.
inline std::string TilePathOf(const FillDefinition& fill) {
  char16_t path[kTilePathUnits];
  std::memcpy(path, reinterpret_cast<const unsigned char*>(&fill) + 112, sizeof path);
  return Utf8FromWide(path);
}

// Calls back for every call that reaches the host, at the time of the call, with its line of the journal.
class HostCallWatch {
 public:
  explicit HostCallWatch(std::function<void(std::string_view)> onCall) : onCall_(std::move(onCall)) {
    cookie_io_functions_t functions = {};
    functions.write = [](void* cookie, const char* text, std::size_t size) -> ssize_t {
      static_cast<HostCallWatch*>(cookie)->onCall_({text, size});
      return static_cast<ssize_t>(size);
    };
    file_ = fopencookie(this, "w", functions);
    setvbuf(file_, nullptr, _IOLBF, 1 << 16);
    StartJournal(file_);
  }
  ~HostCallWatch() {
    StopJournal();
    std::fclose(file_);
  }
  HostCallWatch(const HostCallWatch&) = delete;
  HostCallWatch& operator=(const HostCallWatch&) = delete;

 private:
  std::function<void(std::string_view)> onCall_;
  std::FILE* file_;
};

// Makes a folder the working folder for as long as this lives.
class WorkingFolder {
 public:
  explicit WorkingFolder(const std::string& folder) : former_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder);
  }
  ~WorkingFolder() { std::filesystem::current_path(former_); }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

 private:
  std::filesystem::path former_;
};

class ImageTest : public FilterTest {
 protected:
  ImageTest() : temporaryFolder(folder + "temporary/"), baseFolder(folder + "base/") {
    std::filesystem::create_directory(temporaryFolder);
    std::filesystem::create_directory(baseFolder);
    if (const char* value = std::getenv("TMPDIR")) formerTemporaryFolder_ = value;
    setenv("TMPDIR", temporaryFolder.c_str(), 1);
    SetHostBaseDir(WideFromUtf8(baseFolder));
  }
  ~ImageTest() override {
    if (formerTemporaryFolder_) {
      setenv("TMPDIR", formerTemporaryFolder_->c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
  }

  // A PNG of two pixels by three, all of this colour.
  static std::string Png(std::array<unsigned char, 4> colour = {1, 2, 3, 255}) {
    return TextOf(sample_images::PngOfOneColour(2, 3, colour));
  }
  static std::string Jpeg() { return TextOf(sample_images::kRedJpeg); }
  static std::string DataUri(std::string_view format, std::string_view bytes) {
    return "data:image/" + std::string(format) + ";base64," + EncodeBase64(bytes);
  }
  static std::string Image(std::string_view reference, std::string_view attributes = "") {
    return "<image xlink:href=\"" + std::string(reference) + "\" " + std::string(attributes) + "/>";
  }

  BitmapView BitmapOf(std::size_t line) {
    EXPECT_EQ(commands.at(line).key, KEY_GNRC);
    return ViewBitmap(*PayloadOf<GenericRecord>(line).bitmap);
  }

  // What TMPDIR names, and what LoadBaseDir answers, both with a "/" behind them.
  std::string temporaryFolder, baseFolder;

 private:
  std::optional<std::string> formerTemporaryFolder_;
};
