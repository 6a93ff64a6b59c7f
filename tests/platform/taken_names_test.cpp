// Names that are always taken. The test program has a getrandom and an unlink of its own in front of the C library's,
// so that a test decides which names are drawn and which files come back.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "platform/temporary_file.h"
#include "tests/platform/scratch_folder.h"

namespace {

using DrawFunction = ssize_t (*)(void*, std::size_t, unsigned);
using UnlinkFunction = int (*)(const char*);

// Answer in place of the system as long as they are there.
DrawFunction standInDraw = nullptr;
UnlinkFunction standInUnlink = nullptr;

int UnlinkOfTheSystem(const char* path) {
  static const auto next = reinterpret_cast<UnlinkFunction>(dlsym(RTLD_NEXT, "unlink"));
  return next(path);
}

}  // namespace

extern "C" ssize_t getrandom(void* to, std::size_t size, unsigned flags) {
  if (standInDraw) return standInDraw(to, size, flags);
  static const auto next = reinterpret_cast<DrawFunction>(dlsym(RTLD_NEXT, "getrandom"));
  return next(to, size, flags);
}

extern "C" int unlink(const char* path) noexcept {
  return standInUnlink ? standInUnlink(path) : UnlinkOfTheSystem(path);
}

namespace {

class TakenNames : public testing::Test {
 protected:
  TakenNames() { count = 0; }
  ~TakenNames() override {
    standInDraw = nullptr;
    standInUnlink = nullptr;
  }

  // Gives "aaaaaa", and from the draw on that `other` tells "bbbbbb".
  static ssize_t Draw(void* to, std::size_t size, unsigned) {
    std::memset(to, ++count < other ? 0 : 1, size);
    return static_cast<ssize_t>(size);
  }
  // Leaves the file, as if somebody put it back at once, up to the time that `other` tells.
  static int Remove(const char* path) { return ++count < other ? 0 : UnlinkOfTheSystem(path); }

  static inline int count = 0;
  static inline int other = 0;
  ScratchFolder folder_;
};

}  // namespace

TEST_F(TakenNames, TheHundredthNameIsDrawn) {
  folder_.Write("IMGaaaaaa.tmp", "old");
  other = 100;
  standInDraw = Draw;
  const std::u16string path = CreateTemporaryFile(folder_.Wide(), u"IMG");
  standInDraw = nullptr;
  EXPECT_EQ(path, folder_.Wide() + u"/IMGbbbbbb.tmp");
  EXPECT_EQ(count, 100);
  EXPECT_EQ(folder_.Read("IMGaaaaaa.tmp"), "old");
}

TEST_F(TakenNames, BehindAHundredThereIsNoFile) {
  folder_.Write("IMGaaaaaa.tmp", "old");
  other = 101;
  standInDraw = Draw;
  const std::u16string path = CreateTemporaryFile(folder_.Wide(), u"IMG");
  standInDraw = nullptr;
  EXPECT_EQ(path, u"");
  EXPECT_EQ(count, 100);
  EXPECT_EQ(folder_.Read("IMGaaaaaa.tmp"), "old");
  EXPECT_FALSE(std::filesystem::exists(folder_.Path() / "IMGbbbbbb.tmp"));
}

TEST_F(TakenNames, AFileThatComesBackIsReplacedAtTheHundredthTry) {
  folder_.Write("new.png", "old");
  other = 99;  // the first try finds the file
  standInUnlink = Remove;
  const int descriptor = CreateReplacingFile(folder_.Wide() + u"/new.png");
  standInUnlink = nullptr;
  EXPECT_NE(descriptor, -1);
  close(descriptor);
  EXPECT_EQ(count, 99);
  EXPECT_EQ(folder_.Read("new.png"), "");
}

TEST_F(TakenNames, AFileThatComesBackAHundredTimesIsNotReplaced) {
  folder_.Write("new.png", "old");
  other = 101;
  standInUnlink = Remove;
  const int descriptor = CreateReplacingFile(folder_.Wide() + u"/new.png");
  standInUnlink = nullptr;
  EXPECT_EQ(descriptor, -1);
  EXPECT_EQ(count, 100);
  EXPECT_EQ(folder_.Read("new.png"), "old");
}
