#include "host/allocator_link.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "host/application.h"
#include "run/host_memory.h"
#include "tests/host/services/memory_service.h"
#include "tests/support/host_journal.h"
#include "tests/support/recording_allocator.h"
#include "tests/support/shared_object.h"

namespace {

constexpr char kService[] = SVGIMPORT_SERVICES_DIR "/memory/tavmem.dll";
constexpr char kEmptyService[] = SVGIMPORT_SERVICES_DIR "/empty/tavmem.dll";

// "MemAllocWnd" and a process id in lower-case hexadecimal.
std::u16string TitleFor(unsigned processId) {
  char title[32];
  std::snprintf(title, sizeof title, "MemAllocWnd%x", processId);
  return std::u16string(title, title + std::char_traits<char>::length(title));
}

class AllocatorSearch : public FilterTest {
 protected:
  void UnregisterAllocator() { RegisterHostWindow(u"MemAllocClass", TitleFor(OwnId()), nullptr); }
  static unsigned OwnId() { return static_cast<unsigned>(getpid()); }

  // A whole import of which every record is given back at once. `headers` receives the words in front of the blocks of
  // the filter's own allocator.
  Lines ImportAndRelease() {
    const bool isFallback = GetHostAllocator() == &run.allocator.fallback;
    Lines lines;
    EXPECT_EQ(Check(Document(kDrawing)), 1);
    ImportCommand record;
    do {
      record = GetImportCommand();
      lines.push_back(Describe(record));
      if (isFallback && record.size > 4) headers.push_back(static_cast<std::uint64_t*>(record.data)[-1]);
      ReleaseCommand(record);
    } while (record.key != KEY_ENDF);
    CloseFile();
    return lines;
  }

  std::vector<std::uint64_t> headers;

  static constexpr char kDrawing[] =
      "<rect style='fill:red;stroke:blue' width='1' height='1'/><path d='M0,0 L1,1 C1,2 3,4 5,6'/><text>abc</text>";
};

}  // namespace

// --- The window

TEST_F(AllocatorSearch, TakesThePointerOfTheWindowWhoseTitleHoldsTheProcessId) {
  RecordingAllocator allocator;
  RegisterHostWindow(u"MemAllocClass", TitleFor(OwnId()), &allocator);
  HostJournal journal;
  HostAllocatorLink link;
  FindHostAllocator(link);
  EXPECT_EQ(link.iface, &allocator);
  EXPECT_EQ(link.fallback.active, &allocator);  // whose hook the fallback asks when it finds no memory
  EXPECT_EQ(link.library, nullptr);
  const std::u16string title = TitleFor(OwnId());
  EXPECT_EQ(journal.Take(),
            (Lines{"FindWindowPointer(MemAllocClass," + std::string(title.begin(), title.end()) + ")"}));
}

TEST_F(AllocatorSearch, PassesOverTheWindowOfAnotherProcess) {
  RecordingAllocator allocator;
  UnregisterAllocator();
  RegisterHostWindow(u"MemAllocClass", TitleFor(OwnId() + 1), &allocator);
  RegisterHostWindow(u"MemAllocClass", u"MemAllocWnd", &allocator);
  RegisterHostWindow(u"OtherClass", TitleFor(OwnId()), &allocator);
  HostAllocatorLink link;
  FindHostAllocator(link);
  EXPECT_EQ(link.iface, &link.fallback);
}

TEST_F(AllocatorSearch, IsMadeOnceForAllAsTheFilterIsLoaded) {
  HostJournal journal;
  ResetImportRun();
  EXPECT_EQ(CountOf(journal.Take(), "FindWindowPointer"), 1u);
  EXPECT_EQ(GetHostAllocator(), DefaultHostAllocator());
  RecordingAllocator later;
  RegisterHostWindow(u"MemAllocClass", TitleFor(OwnId()), &later);
  EXPECT_EQ(GetHostAllocator(), DefaultHostAllocator());
  RegisterHostWindow(u"MemAllocClass", TitleFor(OwnId()), DefaultHostAllocator());
  ImportBody(kDrawing);
  EXPECT_EQ(CountOf(journal.Take(), "FindWindowPointer"), 0u);
}

// --- The fallback

TEST_F(AllocatorSearch, TheFallbacksClearedFormsEachGoThroughTheirPlainOne) {
  struct Counting : FallbackAllocator {
    void* AllocateFirst(std::size_t size) override { return ++first, std::calloc(1, size); }
    void* Allocate(std::size_t size) override { return ++second, std::calloc(1, size); }
    int first = 0;
    int second = 0;
  } allocator;
  std::free(allocator.AllocateClearedFirst(3, 5));
  EXPECT_EQ(allocator.first, 1);
  EXPECT_EQ(allocator.second, 0);
  std::free(allocator.AllocateCleared(3, 5));
  EXPECT_EQ(allocator.first, 1);
  EXPECT_EQ(allocator.second, 1);
}

TEST_F(AllocatorSearch, FallsBackOnTheFiltersOwnAndTheImportRunsWhole) {
  UnregisterAllocator();
  ResetImportRun();
  EXPECT_EQ(GetHostAllocator(), &run.allocator.fallback);
  const std::size_t blocks = LiveCounts().blocks;
  const Lines lines = ImportAndRelease();
  EXPECT_EQ(LiveCounts().blocks, blocks);
  EXPECT_EQ(headers, std::vector<std::uint64_t>(headers.size(), 0));
  EXPECT_GE(headers.size(), 5u);  // polygon, line, curve, fill definition, paragraph

  RegisterHostWindow(u"MemAllocClass", TitleFor(OwnId()), DefaultHostAllocator());
  ResetImportRun();
  EXPECT_EQ(lines, ImportAndRelease());
}

// --- The library

TEST_F(AllocatorSearch, TakesTheLibraryFirstAndDoesNotLookForTheWindow) {
  SharedObject service(kService);
  const MemoryServiceState& state = *service.Find<MemoryServiceState>("memoryServiceState");
  HostJournal journal;
  ResetImportRun();
  EXPECT_EQ(journal.Take(), Lines());
  EXPECT_EQ(state.initialiseCalls, 1);
  EXPECT_EQ(state.resetCalls, 0);

  const std::size_t blocks = LiveCounts().blocks;
  ASSERT_EQ(Check(Document("<path d='M0,0 L1,1'/>")), 1);
  EXPECT_GT(state.liveBlocks, 0u);
  ImportCommand record;
  do {
    record = GetImportCommand();
    if (record.size > 4) GetHostAllocator()->Free(record.data);
    // A width, whose size is 0, comes from there too.
    if (record.key == KEY_WIDT && record.size == 0) GetHostAllocator()->Free(record.data);
    if (record.key == KEY_TSPY) ReleaseCommand(record);
  } while (record.key != KEY_ENDF);
  EXPECT_EQ(LiveCounts().blocks, blocks);
  CloseFile();
  EXPECT_EQ(state.liveBlocks, 0u);
  EXPECT_EQ(state.initialiseCalls, 1);
  ResetImportRun();  // as the filter is unloaded and loaded again
  EXPECT_EQ(state.resetCalls, 1);
  EXPECT_EQ(state.initialiseCalls, 2);
}

TEST_F(AllocatorSearch, ResetsAndFreesTheLibraryAtTheEnd) {
  SharedObject service(kService);
  const MemoryServiceState& state = *service.Find<MemoryServiceState>("memoryServiceState");
  {
    HostAllocatorLink link;
    FindHostAllocator(link);
    EXPECT_NE(link.library, nullptr);
    EXPECT_NE(link.iface, DefaultHostAllocator());
  }
  EXPECT_EQ(state.resetCalls, 1);
  service.Unload();
  EXPECT_FALSE(SharedObject::IsLoaded("tavmem.dll"));
}

TEST_F(AllocatorSearch, KeepsTheLibraryLoadedUntilTheEnd) {
  std::optional<SharedObject> service(kService);
  {
    HostAllocatorLink link;
    FindHostAllocator(link);
    service.reset();
    EXPECT_TRUE(SharedObject::IsLoaded("tavmem.dll"));
  }
  EXPECT_FALSE(SharedObject::IsLoaded("tavmem.dll"));
}

TEST_F(AllocatorSearch, GoesOnToTheWindowWhenTheLibraryHasNoAllocator) {
  SharedObject service(kService);
  MemoryServiceState& state = *service.Find<MemoryServiceState>("memoryServiceState");
  state.hasAllocator = false;
  {
    HostAllocatorLink link;
    FindHostAllocator(link);
    EXPECT_EQ(state.initialiseCalls, 1);
    EXPECT_EQ(link.iface, DefaultHostAllocator());
  }
  EXPECT_EQ(state.resetCalls, 1);
  service.Unload();
  EXPECT_FALSE(SharedObject::IsLoaded("tavmem.dll"));
}

TEST_F(AllocatorSearch, GoesOnToTheWindowWhenTheLibraryHasNoExports) {
  SharedObject service(kEmptyService);
  {
    HostAllocatorLink link;
    FindHostAllocator(link);
    EXPECT_EQ(link.iface, DefaultHostAllocator());
  }
  service.Unload();
  EXPECT_FALSE(SharedObject::IsLoaded("tavmem.dll"));
}
