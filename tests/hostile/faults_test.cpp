// Imports during which the surroundings fail: memory, disk, files and folders.

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <new>

#include "document/definitions.h"
#include "host/polygon.h"
#include "tests/hostile/hostile_fixture.h"
#include "tests/images/image_bench.h"

namespace {

// The host's allocator, of which one allocation fails.
class FailingAllocator : public HostAllocator {
 public:
  void* AllocateFirst(std::size_t size) override { return Fails(size) ? nullptr : host_->AllocateFirst(size); }
  void* Allocate(std::size_t size) override { return Fails(size) ? nullptr : host_->Allocate(size); }
  void* AllocateClearedFirst(std::size_t n, std::size_t size) override {
    return Fails(n * size) ? nullptr : host_->AllocateClearedFirst(n, size);
  }
  void* AllocateCleared(std::size_t n, std::size_t size) override {
    return Fails(n * size) ? nullptr : host_->AllocateCleared(n, size);
  }
  void Free(void* block) override { host_->Free(block); }
  void* ReallocateFirst(void* block, std::size_t size) override {
    return Fails(size) ? nullptr : host_->ReallocateFirst(block, size);
  }
  void* Reallocate(void* block, std::size_t size) override {
    return Fails(size) ? nullptr : host_->Reallocate(block, size);
  }
  std::size_t BlockSize(void* block) override { return host_->BlockSize(block); }
  int OutOfMemory(std::size_t) override { return 0; }
  int Reserved10() override { return 0; }
  bool Reserved11() override { return false; }

  // The n-th from here on fails.
  void Fail(std::size_t n) {
    left_ = n;
    failedSize = 0;
  }
  std::size_t failedSize = 0;  // what could not be had; 0 when none has failed

 private:
  bool Fails(std::size_t size) {
    if (left_ == 0 || --left_ != 0) return false;
    failedSize = size;
    return true;
  }

  HostAllocator* host_ = DefaultHostAllocator();
  std::size_t left_ = 0;
};

class Faults : public FilterTest {
 protected:
  Faults() {
    setenv("TMPDIR", folder.c_str(), 1);
    SetHostBaseDir(WideFromUtf8(folder));
  }

  // Imports and gives all records back; the keys of the records in the order in which they came. What an entry point
  // throws comes through, with the queue given back.
  std::vector<std::uint32_t> Keys(const std::string& document) {
    std::vector<std::uint32_t> keys;
    try {
      if (Check(document) != 1) return keys;
      do {
        const ImportCommand command = GetImportCommand();
        keys.push_back(command.key);
        ReleaseCommand(command);
      } while (keys.back() != KEY_ENDF);
    } catch (...) {
      while (run.commands.count > 0) ReleaseCommand(PopCommand(run.commands));
      throw;
    }
    return keys;
  }

  // Imports the elements again and again, with one allocation more going well each time.
  void FailEachAllocation(const std::string& elements, std::size_t least) {
    SCOPED_TRACE(elements);
    const std::string document = Document(elements);
    FailingAllocator allocator;
    RegisterHostWindow(kAllocatorWindowClass, AllocatorWindowTitle(), &allocator);
    ResetImportRun();
    const std::vector<std::uint32_t> whole = Keys(document);
    CloseFile();
    std::size_t failures = 0;
    for (std::size_t n = 1;; ++n) {
      ResetImportRun();
      const HostLiveCounts before = LiveCounts();
      const std::size_t messages = ShownMessages().size();
      allocator.Fail(n);
      try {
        const std::vector<std::uint32_t> keys = Keys(document);
        if (allocator.failedSize == 0) {
          EXPECT_EQ(keys, whole);
          break;
        }
        CheckLoss(allocator.failedSize, whole, keys, ShownMessages().size() - messages);
      } catch (const std::bad_alloc&) {
        EXPECT_NE(allocator.failedSize, 0u);
      }
      allocator.Fail(0);
      EXPECT_EQ(CloseFile(), 0);
      ResetImportRun();
      HostLiveCounts after = LiveCounts();
      after.paragraphs = before.paragraphs;  // one that is closed is the host's, who offers no way to take it back
      EXPECT_EQ(after, before) << n;
      ++failures;
      if (HasFailure()) break;
    }
    EXPECT_GE(failures, least);
    CloseFile();
    ResetImportRun();
    ResetHost();  // with its paragraphs, and its own allocator back in place
    ResetImportRun();
  }

 private:
  // Without an error only a line, a curve and a paragraph get lost: the first two in silence, the third with a message.
  static void CheckLoss(std::size_t size, const std::vector<std::uint32_t>& whole,
                        const std::vector<std::uint32_t>& keys, std::size_t messages) {
    const std::size_t lost = whole.size() - keys.size();
    EXPECT_EQ(lost, 1u);
    const auto count = [](const std::vector<std::uint32_t>& in, std::uint32_t key) {
      return std::count(in.begin(), in.end(), key);
    };
    if (size == sizeof(ParagraphRecord) && messages == 1) {
      EXPECT_EQ(count(keys, KEY_PARA), count(whole, KEY_PARA) - 1);
    } else if (size == sizeof(LineRecord)) {
      EXPECT_EQ(count(keys, KEY_LINE), count(whole, KEY_LINE) - 1);
    } else {
      EXPECT_EQ(size, sizeof(BezierRecord));
      EXPECT_EQ(count(keys, KEY_BEZI), count(whole, KEY_BEZI) - 1);
    }
  }
};

// Makes every file of this process end at so many bytes.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) {
    former_ = std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &limit_);
    const rlimit small = {bytes, limit_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &limit_);
    std::signal(SIGXFSZ, former_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit limit_;
  void (*former_)(int);
};

std::string EmbeddedImage() {
  return "<image xlink:href='data:image/png;base64," +
         EncodeBase64(TextOf(sample_images::PngOfOneColour(20, 20, {1, 2, 3, 4}))) + "'/>";
}

}  // namespace

// --- Memory

TEST_F(Faults, OfEachAllocationOfShapes) {
  FailEachAllocation(
      "<g style='fill:red;stroke:#00f'><rect width='9' height='9' rx='2'/><circle r='3'/><ellipse rx='1'/>"
      "<line x2='5'/><polygon points='1,2 3,4 5,6'/><polyline points='1,2 3,4 5,6' opacity='.5'/></g>",
      50);
}

TEST_F(Faults, OfEachAllocationOfPaths) {
  FailEachAllocation(
      "<path d='M0 0L1 1H5V9C1 2 3 4 5 6S1 2 3 4Q30 40 50 60T7 8A5 6 7 0 1 8 9z' style='fill:red;"
      "stroke:blue;stroke-width:2;opacity:.5;stroke-miterlimit:3'/>",
      30);
}

TEST_F(Faults, OfEachAllocationOfClips) {
  FailEachAllocation(
      "<defs><clipPath id='c'><rect width='1' height='1'/><path d='M0 0L1 1' clip-path='url(#d)'/></clipPath>"
      "<clipPath id='d'><ellipse rx='1' ry='1'/></clipPath></defs><g clip-path='url(#c)'><path clip-path='url(#c)' "
      "d='M0 0L1 1'/></g>",
      50);
}

TEST_F(Faults, OfEachAllocationOfGradients) {
  FailEachAllocation(
      "<defs><linearGradient id='a' x2='5' xlink:href='#s'><radialGradient id='n'/></linearGradient>"
      "<radialGradient id='r' r='5' xlink:href='#s'/><linearGradient id='s'><stop offset='0' "
      "style='stop-color:#123456;stop-opacity:.5'/><stop offset='1'/></linearGradient></defs>"
      "<g><rect width='5' height='5' style='fill:url(#a)'/></g><path d='M0 0L1 1' style='fill:url(#r)'/>",
      40);
}

TEST_F(Faults, OfEachAllocationOfPatterns) {
  FailEachAllocation(
      "<defs><pattern id='p' width='3' height='4'><image width='1' height='1' xlink:href='none.png'/></pattern>"
      "</defs><rect width='5' height='5' style='fill:url(#p)'/>",
      10);
}

TEST_F(Faults, OfEachAllocationOfImages) { FailEachAllocation(EmbeddedImage() + "<image xlink:href='none.png'/>", 5); }

TEST_F(Faults, OfEachAllocationOfTexts) {
  FailEachAllocation("<text x='1' y='2' style='fill:red'>a\\H2;b\\Ftimes;;c<tspan>d</tspan></text><text/>", 20);
}

// --- Disk

TEST_F(Faults, AFullDiskCostsTheEmbeddedImageAlone) {
  ASSERT_EQ(Check(Document(EmbeddedImage() + "<path d='M0 0L1 1'/>")), 1);
  std::size_t bitmaps = 0, lines = 0;
  ImportCommand command;
  do {
    const FullDisk disk(10);
    command = GetImportCommand();
    bitmaps += command.key == KEY_GNRC;
    lines += command.key == KEY_LINE;
    ReleaseCommand(command);
  } while (command.key != KEY_ENDF);
  EXPECT_EQ(bitmaps, 0u);
  EXPECT_EQ(lines, 1u);
  EXPECT_EQ(FilesIn(folder), FileNames{"drawing.svg"});
  CloseFile();
}

TEST_F(Faults, AFullDiskLeavesAPatternsFileShort) {
  const std::string image = EmbeddedImage();
  ASSERT_EQ(Check(Document("<defs><pattern id='p'>" + image + "</pattern></defs><rect style='fill:url(#p)'/>")), 1);
  std::size_t patterns = 0;
  ImportCommand command;
  do {
    const FullDisk disk(10);
    command = GetImportCommand();
    patterns += command.key == KEY_PFDF;
    ReleaseCommand(command);
  } while (command.key != KEY_ENDF);
  EXPECT_EQ(patterns, 1u);
  std::size_t pictures = 0;
  for (const std::string& name : FilesIn(folder)) {
    if (!name.ends_with(".png")) continue;
    ++pictures;
    EXPECT_EQ(std::filesystem::file_size(folder + name), 10u);
  }
  EXPECT_EQ(pictures, 1u);
  CloseFile();
}

TEST_F(Faults, WithoutATemporaryFolderTheImportGoesOn) {
  setenv("TMPDIR", (folder + "nowhere").c_str(), 1);
  EXPECT_EQ(Import(Document(EmbeddedImage() + "<path d='M0 0L1 1'/>")),
            (Lines{"PATH", "LINE 0,10 0.1,9.9", "ENDP", "FDEF flat 1"}));
  CloseFile();
}

TEST_F(Faults, AFileThatMayNotBeReadIsRefused) {
  // The superuser may read everything, so that the test becomes somebody else.
  std::filesystem::permissions(folder, std::filesystem::perms::all);
  const std::string path = folder + "drawing.svg";
  WriteFile(path, Document("<g/>"));
  std::filesystem::permissions(path, std::filesystem::perms::none);
  constexpr uid_t kNobody = 65534;
  const uid_t former = geteuid();
  if (former == 0) {
    ASSERT_EQ(seteuid(kNobody), 0);
  }
  EXPECT_EQ(CheckFile(0, 0, WideFromUtf8(path).c_str()), 0);
  if (former == 0) {
    ASSERT_EQ(seteuid(former), 0);
  }
  EXPECT_EQ(run.file.FileBuffer, nullptr);
  CloseFile();
}

TEST_F(Faults, WhatIsNoRegularFileIsRefused) {
  const std::string pipe = folder + "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path :
       {pipe, folder, std::string("/dev/zero"), std::string("/dev/null"), folder + "nowhere/a.svg"}) {
    SCOPED_TRACE(path);
    EXPECT_EQ(CheckFile(0, 0, WideFromUtf8(path).c_str()), 0);
    CloseFile();
    ResetImportRun();
  }
}

// --- A file that changes between the two reads. The setting "Units" is read in between.

namespace {

class ChangingFile : public Faults {
 protected:
  int CheckWithChange(const std::string& document, const std::function<void()>& change) {
    bool changed = false;
    const HostCallWatch watch([&](std::string_view call) {
      if (changed || call.find("\"Units\"") == call.npos) return;
      changed = true;
      change();
    });
    const int checked = Check(document);
    EXPECT_TRUE(changed);
    return checked;
  }
};

}  // namespace

TEST_F(ChangingFile, AFileCutShortInBetweenIsRefused) {
  const std::string document = Document("<path d='M0 0L1 1'/>");
  for (std::size_t length = 0; length < document.size(); ++length) {
    EXPECT_EQ(CheckWithChange(document, [&] { std::filesystem::resize_file(documentPath, length); }), 0) << length;
    CloseFile();
    ResetImportRun();
  }
}

TEST_F(ChangingFile, AFileThatGrowsInBetweenCountsAsItIsThen) {
  EXPECT_EQ(CheckWithChange(Document("<g/>"), [&] { std::filesystem::resize_file(documentPath, 1 << 20); }), 1);
  // The NULs behind the document end the text.
  EXPECT_EQ(run.file.FileBufferSize, (std::size_t{1} << 20) + 1);
  CloseFile();
}

TEST_F(ChangingFile, AFileThatGoesInBetweenIsImportedAsItWasReadFirst) {
  EXPECT_EQ(CheckWithChange(Document("<g/>"), [&] { std::filesystem::remove(documentPath); }), 1);
  CloseFile();
}

TEST_F(ChangingFile, APipeInTheFilesPlaceIsNotWaitedFor) {
  EXPECT_EQ(CheckWithChange(Document("<g/>"),
                            [&] {
                              std::filesystem::remove(documentPath);
                              ASSERT_EQ(mkfifo(documentPath.c_str(), 0600), 0);
                            }),
            1);
  CloseFile();
}
