// What the two reads of a file ask of the system. The test program has a read of its own in front of the C library's,
// so that a test sees the requests and answers them without a file of that size.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "document/load.h"
#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"

using namespace std::string_view_literals;

namespace {

using ReadFunction = ssize_t (*)(int, void*, std::size_t);

// Answers in place of the system as long as it is there.
ReadFunction standIn = nullptr;

ssize_t ReadOfTheSystem(int descriptor, void* to, std::size_t size) {
  static const auto next = reinterpret_cast<ReadFunction>(dlsym(RTLD_NEXT, "read"));
  return next(descriptor, to, size);
}

}  // namespace

extern "C" ssize_t read(int descriptor, void* to, std::size_t size) {
  return standIn ? standIn(descriptor, to, size) : ReadOfTheSystem(descriptor, to, size);
}

// What a hardened build calls where it knows the room.
extern "C" ssize_t __read_chk(int descriptor, void* to, std::size_t size, std::size_t room) {
  if (size > room) std::abort();
  return read(descriptor, to, size);
}

namespace {

constexpr std::size_t kLargestRequest = 268'435'456;

class ReadRequest : public FilterTest {
 protected:
  ReadRequest() : path_(folder + "drawing.svg"), wide_(WideFromUtf8(path_)) {
    sizes.clear();
    places.clear();
  }
  ~ReadRequest() override { standIn = nullptr; }

  void Write(std::string_view text) { std::ofstream(path_, std::ios::binary) << text; }
  // Takes no room on the disk.
  void MakeFileOf(std::size_t size) {
    Write("");
    std::filesystem::resize_file(path_, size);
  }
  bool ReadFirst(ReadFunction answer) {
    standIn = answer;
    const bool read = ReadWholeFile(wide_.c_str());
    standIn = nullptr;
    return read;
  }
  bool ReadAgain(ReadFunction answer) {
    standIn = answer;
    const bool read = ReadForLoading(wide_.c_str());
    standIn = nullptr;
    return read;
  }
  static std::string_view Buffer() { return {run.file.FileBuffer.get(), run.file.FileBufferSize}; }

  // The request is brought whole, as far as the reader can tell; of all its bytes only the first is written.
  static ssize_t BringsAll(int, void* to, std::size_t size) {
    Note(to, size);
    *static_cast<char*>(to) = '\0';
    return static_cast<ssize_t>(size);
  }
  static ssize_t BringsAllButOneAtFirst(int descriptor, void* to, std::size_t size) {
    return BringsAll(descriptor, to, size) - (sizes.size() == 1 ? 1 : 0);
  }
  // Reads the file, less a byte of what it is asked for.
  static ssize_t ReadsAllButOne(int descriptor, void* to, std::size_t size) {
    Note(to, size);
    return ReadOfTheSystem(descriptor, to, size - 1);
  }
  static ssize_t Fails(int, void* to, std::size_t size) {
    Note(to, size);
    return -1;
  }

  // The requests that came.
  static inline std::vector<std::size_t> sizes;
  static inline std::vector<char*> places;

 private:
  static void Note(void* to, std::size_t size) {
    sizes.push_back(size);
    places.push_back(static_cast<char*>(to));
  }

  std::string path_;
  std::u16string wide_;
};

using Sizes = std::vector<std::size_t>;

}  // namespace

TEST_F(ReadRequest, AFileOfTheLargestRequestIsAskedForAtOnce) {
  MakeFileOf(kLargestRequest);
  EXPECT_TRUE(ReadFirst(BringsAll));
  EXPECT_EQ(sizes, Sizes{kLargestRequest});
  sizes.clear();
  EXPECT_TRUE(ReadAgain(BringsAll));
  EXPECT_EQ(sizes, Sizes{kLargestRequest});
}

TEST_F(ReadRequest, TheRestOfALargerFileIsAskedForNext) {
  MakeFileOf(kLargestRequest + 5);
  EXPECT_TRUE(ReadFirst(BringsAll));
  ASSERT_EQ(sizes, (Sizes{kLargestRequest, 5}));
  EXPECT_EQ(places[1], places[0] + kLargestRequest);
  sizes.clear();
  places.clear();
  EXPECT_TRUE(ReadAgain(BringsAll));
  ASSERT_EQ(sizes, (Sizes{kLargestRequest, 5}));
  EXPECT_EQ(places[1], places[0] + kLargestRequest);
  EXPECT_EQ(run.file.FileBufferSize, kLargestRequest + 6);
}

TEST_F(ReadRequest, AFileOfWhichARequestBringsLessIsRefused) {
  MakeFileOf(kLargestRequest + 5);
  EXPECT_FALSE(ReadFirst(BringsAllButOneAtFirst));
  // What is missing is not asked for again, and what comes next follows what came.
  ASSERT_EQ(sizes, (Sizes{kLargestRequest, 5}));
  EXPECT_EQ(places[1], places[0] + kLargestRequest - 1);
  EXPECT_EQ(run.file.FileBuffer, nullptr);

  Write("<svg/>");
  sizes.clear();
  EXPECT_FALSE(ReadFirst(ReadsAllButOne));
  EXPECT_EQ(sizes, Sizes{6});
  EXPECT_EQ(run.file.FileBuffer, nullptr);
}

TEST_F(ReadRequest, WhatTheSecondReadDoesNotBringIsNuls) {
  Write("<svg/>");
  ASSERT_TRUE(ReadFirst(ReadOfTheSystem));
  EXPECT_TRUE(ReadAgain(ReadsAllButOne));
  EXPECT_EQ(sizes, Sizes{6});
  EXPECT_EQ(Buffer(), "<svg/\0\0"sv);
}

TEST_F(ReadRequest, AFileThatCannotBeReadOnceItIsOpenIsRefused) {
  Write("<svg/>");
  EXPECT_FALSE(ReadFirst(Fails));
  EXPECT_EQ(sizes, Sizes{6});
  EXPECT_EQ(run.file.FileBuffer, nullptr);
}
