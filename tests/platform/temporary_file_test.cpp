#include "platform/temporary_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "tests/platform/scratch_folder.h"

namespace {

// Sets or clears TMPDIR, and puts back what it was.
class TemporaryVariable {
 public:
  explicit TemporaryVariable(const char* value) {
    const char* const old = std::getenv("TMPDIR");
    hadOld_ = old != nullptr;
    if (hadOld_) old_ = old;
    Set(value);
  }
  ~TemporaryVariable() { Set(hadOld_ ? old_.c_str() : nullptr); }
  TemporaryVariable(const TemporaryVariable&) = delete;
  TemporaryVariable& operator=(const TemporaryVariable&) = delete;

 private:
  static void Set(const char* value) {
    if (value != nullptr) {
      setenv("TMPDIR", value, 1);
    } else {
      unsetenv("TMPDIR");
    }
  }

  bool hadOld_;
  std::string old_;
};

unsigned ModeOf(const std::filesystem::path& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777u : 0;
}

}  // namespace

TEST(TemporaryFolder, IsWhatTheVariableNames) {
  const TemporaryVariable variable("/var/tmp");
  EXPECT_EQ(TemporaryFolder(), u"/var/tmp/");
}

TEST(TemporaryFolder, KeepsASeparatorAtTheEnd) {
  const TemporaryVariable variable("/var/tmp/");
  EXPECT_EQ(TemporaryFolder(), u"/var/tmp/");
}

TEST(TemporaryFolder, IsTheUsualOneWithoutTheVariable) {
  const TemporaryVariable variable(nullptr);
  EXPECT_EQ(TemporaryFolder(), u"/tmp/");
}

TEST(TemporaryFolder, IsTheUsualOneWhenTheVariableIsEmpty) {
  const TemporaryVariable variable("");
  EXPECT_EQ(TemporaryFolder(), u"/tmp/");
}

TEST(TemporaryFolder, OfAnyBytesCanBeUsed) {
  const ScratchFolder folder;
  for (const char* const name : {"\xC3\xA4", "\xE4\xFF"}) {
    std::filesystem::create_directory(folder.Path() / name);
    const TemporaryVariable variable((folder.Path() / name).c_str());
    EXPECT_FALSE(CreateTemporaryFile(TemporaryFolder(), u"X").empty());
    EXPECT_FALSE(std::filesystem::is_empty(folder.Path() / name));
  }
}

TEST(TemporaryFile, IsANewEmptyPrivateFile) {
  const ScratchFolder folder;
  const mode_t oldMask = umask(0);
  const std::u16string path = CreateTemporaryFile(folder.Wide(), u"IMG");
  umask(oldMask);
  const std::string native = Utf8FromWide(path);
  EXPECT_TRUE(std::filesystem::is_regular_file(native));
  EXPECT_EQ(std::filesystem::file_size(native), 0u);
  EXPECT_EQ(ModeOf(native), 0600u);
}

TEST(TemporaryFile, IsNamedByPrefixSixRandomUnitsAndTmp) {
  const ScratchFolder folder;
  const std::u16string path = CreateTemporaryFile(folder.Wide() + u"/", u"DEMO");
  const std::u16string start = folder.Wide() + u"/DEMO";
  ASSERT_EQ(path.substr(0, start.size()), start);
  const std::u16string rest = path.substr(start.size());
  ASSERT_EQ(rest.size(), 10u);
  EXPECT_EQ(rest.substr(6), u".tmp");
  EXPECT_EQ(rest.find_first_not_of(u"abcdefghijklmnopqrstuvwxyz0123456789"), 6u);
}

TEST(TemporaryFile, EachHasANameOfItsOwn) {
  const ScratchFolder folder;
  std::set<std::u16string> names;
  for (int i = 0; i < 200; ++i) names.insert(CreateTemporaryFile(folder.Wide(), u"IMG"));
  EXPECT_EQ(names.size(), 200u);
  EXPECT_EQ(names.count(u""), 0u);
}

TEST(TemporaryFile, TakesAFolderOfTheHost) {
  const ScratchFolder folder;
  std::u16string name = folder.Wide() + u"\\";
  EXPECT_EQ(CreateTemporaryFile(name, u"DEMO").find(name), 0u);
  EXPECT_FALSE(std::filesystem::is_empty(folder.Path()));
}

TEST(TemporaryFile, InAFolderThatIsNotThereIsNone) {
  const ScratchFolder folder;
  EXPECT_EQ(CreateTemporaryFile(folder.Wide() + u"/sub", u"IMG"), u"");
  const std::u16string withNul = folder.Wide() + u'\0';
  EXPECT_EQ(CreateTemporaryFile(withNul, u"IMG"), u"");
  EXPECT_EQ(CreateTemporaryFile(u"/proc/self", u"IMG"), u"");
}

TEST(ReplacingFile, HoldsTheBytesAndIsPrivate) {
  const ScratchFolder folder;
  const std::string bytes("a\0b\xFF", 4);
  EXPECT_TRUE(WriteReplacingFile(folder.Wide() + u"\\new.png", bytes));
  EXPECT_EQ(folder.Read("new.png"), bytes);
  EXPECT_EQ(ModeOf(folder.Path() / "new.png"), 0600u);
  EXPECT_TRUE(WriteReplacingFile(folder.Wide() + u"/empty.png", ""));
  EXPECT_EQ(folder.Read("empty.png"), "");
}

TEST(ReplacingFile, OfManyBytesIsWritten) {
  const ScratchFolder folder;
  const std::string bytes(5'000'000, 'x');
  EXPECT_TRUE(WriteReplacingFile(folder.Wide() + u"/new.png", bytes));
  EXPECT_TRUE(folder.Read("new.png") == bytes);
}

TEST(ReplacingFile, TakesThePlaceOfAnOldFileWithoutWritingIntoIt) {
  const ScratchFolder folder;
  folder.Write("old.png", "the old content");
  std::filesystem::create_hard_link(folder.Path() / "old.png", folder.Path() / "elsewhere.png");
  std::filesystem::permissions(folder.Path() / "old.png", std::filesystem::perms::all);
  EXPECT_TRUE(WriteReplacingFile(folder.Wide() + u"/old.png", "new"));
  EXPECT_EQ(folder.Read("old.png"), "new");
  EXPECT_EQ(ModeOf(folder.Path() / "old.png"), 0600u);
  EXPECT_EQ(folder.Read("elsewhere.png"), "the old content");
}

TEST(ReplacingFile, TakesThePlaceOfALinkWithoutFollowingIt) {
  const ScratchFolder folder;
  folder.Write("target.png", "kept");
  for (const char* const target : {"target.png", "nowhere.png"}) {
    std::filesystem::create_symlink(target, folder.Path() / "link.png");
    EXPECT_TRUE(WriteReplacingFile(folder.Wide() + u"/link.png", "new"));
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(folder.Path() / "link.png")));
    std::filesystem::remove(folder.Path() / "link.png");
  }
  EXPECT_EQ(folder.Read("target.png"), "kept");
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "nowhere.png"));
}

TEST(ReplacingFile, DoesNotTakeThePlaceOfAFolder) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.Path() / "sub");
  EXPECT_FALSE(WriteReplacingFile(folder.Wide() + u"/sub", "x"));
  EXPECT_FALSE(WriteReplacingFile(folder.Wide() + u"/absent/new.png", "x"));
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path() / "sub"));
}

TEST(ReplacingFile, CanBeReadBackThroughItsDescriptor) {
  const ScratchFolder folder;
  const int descriptor = CreateReplacingFile(folder.Wide() + u"/new.png");
  ASSERT_NE(descriptor, -1);
  EXPECT_TRUE(WriteAll(descriptor, "abc"));
  char back[3] = {};
  EXPECT_EQ(pread(descriptor, back, 3, 0), 3);
  EXPECT_EQ(std::string(back, 3), "abc");
  close(descriptor);
}

TEST(WriteAll, FailsWhereNothingCanBeWritten) {
  EXPECT_FALSE(WriteAll(-1, "abc"));
  const int full = open("/dev/full", O_WRONLY);
  ASSERT_NE(full, -1);
  EXPECT_FALSE(WriteAll(full, "abc"));
  EXPECT_TRUE(WriteAll(full, ""));
  close(full);
}

TEST(RemoveHostFile, RemovesAFileByEitherSeparatorOnce) {
  const ScratchFolder folder;
  folder.Write("a.tmp", "x");
  EXPECT_TRUE(RemoveHostFile(folder.Wide() + u"\\a.tmp"));
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.tmp"));
  EXPECT_FALSE(RemoveHostFile(folder.Wide() + u"\\a.tmp"));
  EXPECT_FALSE(RemoveHostFile(u""));
  EXPECT_FALSE(RemoveHostFile(folder.Wide()));
}
