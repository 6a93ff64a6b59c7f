#include "platform/host_path.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/platform/scratch_folder.h"

namespace {

// What the file of this path holds; "(closed)" when it can't be opened.
std::string ContentOf(std::u16string_view path) {
  std::uint64_t size;
  const int descriptor = OpenHostFileForReading(path, &size);
  if (descriptor == -1) return "(closed)";
  char block[64];
  const ssize_t count = read(descriptor, block, sizeof block);
  close(descriptor);
  return std::string(block, count > 0 ? static_cast<std::size_t>(count) : 0);
}

}  // namespace

TEST(HostPath, AFileIsFoundByEitherSeparator) {
  const ScratchFolder folder;
  folder.Write("a.txt", "content");
  std::u16string path = folder.Wide() + u"/a.txt";
  EXPECT_EQ(ContentOf(path), "content");
  for (char16_t& unit : path) {
    if (unit == u'/') unit = u'\\';
  }
  EXPECT_EQ(ContentOf(path), "content");
  EXPECT_EQ(ContentOf(folder.Wide() + u"\\a.txt"), "content");
  EXPECT_TRUE(HostFileExists(path));
  EXPECT_EQ(NativeNameOfExistingFile(path), (folder.Path() / "a.txt").string());
}

TEST(HostPath, ANameWithABackslashInItComesFirst) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.Path() / "b");
  folder.Write("b/c.txt", "behind the separator");
  EXPECT_EQ(ContentOf(folder.Wide() + u"/b\\c.txt"), "behind the separator");
  folder.Write("b\\c.txt", "as it stands");
  EXPECT_EQ(ContentOf(folder.Wide() + u"/b\\c.txt"), "as it stands");
}

TEST(HostPath, AUtf8NameThatCameThroughTheNarrowCodePageIsFound) {
  const ScratchFolder folder;
  folder.Write("\xC3\xA4.txt", "umlaut");
  EXPECT_EQ(ContentOf(folder.Wide() + u"/\u00E4.txt"), "umlaut");
  EXPECT_EQ(ContentOf(folder.Wide() + u"\\\u00C3\u00A4.txt"), "umlaut");
  EXPECT_EQ(NativeNameOfExistingFile(folder.Wide() + u"/\u00C3\u00A4.txt"), (folder.Path() / "\xC3\xA4.txt").string());
  folder.Write("\xC3\x83\xC2\xA4.txt", "the longer way");
  EXPECT_EQ(ContentOf(folder.Wide() + u"/\u00C3\u00A4.txt"), "the longer way");
}

TEST(HostPath, ANarrowNameThatIsNoUtf8IsFound) {
  const ScratchFolder folder;
  folder.Write("\xE4\x80.txt", "narrow");
  EXPECT_EQ(ContentOf(folder.Wide() + u"/\u00E4\u20AC.txt"), "narrow");
}

TEST(HostPath, ASpellingThatLosesACharacterIsNotTried) {
  const ScratchFolder folder;
  folder.Write("?.txt", "another");
  folder.Write("\xEF\xBF\xBD.txt", "another");
  EXPECT_EQ(ContentOf(folder.Wide() + u"/\u4E00.txt"), "(closed)");
  const char16_t half = 0xD83D;
  EXPECT_EQ(ContentOf(folder.Wide() + u"/" + half + u".txt"), "(closed)");
  EXPECT_EQ(ContentOf(folder.Wide() + u"/?.txt"), "another");
}

TEST(HostPath, ANulNamesNothing) {
  const ScratchFolder folder;
  folder.Write("a.txt", "content");
  const std::u16string path = folder.Wide() + u"/a.txt" + u'\0' + u".png";
  EXPECT_EQ(ContentOf(path), "(closed)");
  EXPECT_FALSE(HostFileExists(path));
  EXPECT_EQ(NativeNameOfExistingFile(path), "");
  EXPECT_EQ(NativeNameOfNewFile(path), "");
  EXPECT_EQ(OpenHostFileForWriting(path), -1);
  EXPECT_EQ(folder.Read("a.txt"), "content");
}

TEST(HostPath, WhatIsAbsentOrEmptyIsNotFound) {
  const ScratchFolder folder;
  EXPECT_EQ(ContentOf(folder.Wide() + u"/a.txt"), "(closed)");
  EXPECT_FALSE(HostFileExists(folder.Wide() + u"/a.txt"));
  EXPECT_EQ(NativeNameOfExistingFile(folder.Wide() + u"/a.txt"), "");
  EXPECT_EQ(ContentOf(u""), "(closed)");
  EXPECT_FALSE(HostFileExists(u""));
  EXPECT_EQ(NativeNameOfNewFile(u""), "");
}

TEST(HostPath, OnlyRegularFilesAreOpened) {
  const ScratchFolder folder;
  EXPECT_EQ(ContentOf(folder.Wide()), "(closed)");
  EXPECT_TRUE(HostFileExists(folder.Wide()));
  ASSERT_EQ(mkfifo((folder.Path() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(ContentOf(folder.Wide() + u"/pipe"), "(closed)");  // and does not wait for a writer
  EXPECT_EQ(OpenHostFileForWriting(folder.Wide() + u"/pipe"), -1);
  std::uint64_t size;
  EXPECT_EQ(OpenHostFileForReading(u"/dev/zero", &size), -1);
}

TEST(HostPath, ReadingGoesThroughLinks) {
  const ScratchFolder folder;
  folder.Write("a.txt", "content");
  std::filesystem::create_symlink("a.txt", folder.Path() / "link");
  EXPECT_EQ(ContentOf(folder.Wide() + u"/link"), "content");
}

TEST(HostPath, WritingCreatesAPrivateFileOrEmptiesAnOldOne) {
  const ScratchFolder folder;
  const mode_t oldMask = umask(0);
  const int created = OpenHostFileForWriting(folder.Wide() + u"\\new.txt");
  umask(oldMask);
  ASSERT_NE(created, -1);
  struct stat status;
  ASSERT_EQ(fstat(created, &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
  EXPECT_EQ(write(created, "longer", 6), 6);
  close(created);
  EXPECT_EQ(folder.Read("new.txt"), "longer");
  const int emptied = OpenHostFileForWriting(folder.Wide() + u"/new.txt");
  ASSERT_NE(emptied, -1);
  EXPECT_EQ(write(emptied, "x", 1), 1);
  char back = 0;
  EXPECT_EQ(pread(emptied, &back, 1, 0), 1);
  EXPECT_EQ(back, 'x');
  close(emptied);
  EXPECT_EQ(folder.Read("new.txt"), "x");
}

TEST(HostPath, WritingDoesNotGoThroughALink) {
  const ScratchFolder folder;
  folder.Write("target.txt", "kept");
  std::filesystem::create_symlink("target.txt", folder.Path() / "link");
  std::filesystem::create_symlink("nowhere", folder.Path() / "dangling");
  EXPECT_EQ(OpenHostFileForWriting(folder.Wide() + u"/link"), -1);
  EXPECT_EQ(OpenHostFileForWriting(folder.Wide() + u"/dangling"), -1);
  EXPECT_EQ(folder.Read("target.txt"), "kept");
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "nowhere"));
}

TEST(HostPath, WritingCreatesNoFolder) {
  const ScratchFolder folder;
  EXPECT_EQ(OpenHostFileForWriting(folder.Wide() + u"/sub/new.txt"), -1);
  EXPECT_EQ(OpenHostFileForWriting(folder.Wide()), -1);
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "sub"));
}

TEST(HostPath, ANewFileBelongsIntoTheFolderThatExists) {
  const ScratchFolder folder;
  const std::string native = folder.Path().string();
  EXPECT_EQ(NativeNameOfNewFile(folder.Wide() + u"\\new.png"), native + "/new.png");
  EXPECT_EQ(NativeNameOfNewFile(folder.Wide() + u"/new.png"), native + "/new.png");
  EXPECT_EQ(NativeNameOfNewFile(folder.Wide() + u"/sub\\new.png"), "");
  EXPECT_EQ(NativeNameOfNewFile(u"new.png"), "new.png");
  std::filesystem::create_directory(folder.Path() / "\xC3\xA4");
  EXPECT_EQ(NativeNameOfNewFile(folder.Wide() + u"/\u00C3\u00A4/n.png"), native + "/\xC3\xA4/n.png");
}

TEST(HostPath, TheBaseDirectoryEndsBehindTheLastSeparator) {
  EXPECT_EQ(BaseDirectoryLength(u"c:\\a\\b.svg"), 5u);
  EXPECT_EQ(BaseDirectoryLength(u"/a/b.svg"), 3u);
  EXPECT_EQ(BaseDirectoryLength(u"/a\\b/c"), 5u);
  EXPECT_EQ(BaseDirectoryLength(u"a/b\\c"), 4u);
  EXPECT_EQ(BaseDirectoryLength(u"/a/"), 3u);
  EXPECT_EQ(BaseDirectoryLength(u"a.svg"), 0u);
  EXPECT_EQ(BaseDirectoryLength(u""), 0u);
}

TEST(HostPath, AbsoluteIsWhatHoldsAColonOrBeginsWithASeparator) {
  for (const std::u16string_view path : {u"c:\\a", u"a:b", u"file:x", u":", u"/a", u"\\a", u"\\\\server\\a", u"/"}) {
    EXPECT_TRUE(IsAbsoluteHostPath(path)) << ::testing::PrintToString(std::u16string(path));
  }
  for (const std::u16string_view path : {u"", u"a", u"a/b", u"a\\b", u"./a", u"../a", u" /a"}) {
    EXPECT_FALSE(IsAbsoluteHostPath(path)) << ::testing::PrintToString(std::u16string(path));
  }
}
