// A host of its own: what it defines is what the filter calls, and what the system does to it reaches the filter.

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tests/tools/tool_process.h"

namespace {

using Lines = std::vector<std::string>;

class OverridingHost : public tool_tests::ToolTest {
 protected:
  // What the host printed while it imported this text.
  Lines Host(const std::string& text, const std::string& mode = "plain") {
    const std::string document = folder.File("drawing.svg");
    host_tests::WriteText(document, text);
    return HostOfFile(document, mode);
  }
  Lines HostOfFile(const std::string& document, const std::string& mode) {
    const tool_tests::ToolResult result =
        Run("svgimport-overriding-host", {SVGIMPORT_LIB_DIR "/libsvgimport.so", document, mode});
    EXPECT_EQ(result.status, 0) << result.err;
    return result.Lines();
  }

  // Where the payloads came from, each place once.
  static std::set<std::string> Payloads(const Lines& lines) {
    std::set<std::string> places;
    for (const std::string& line : lines) {
      if (line.starts_with("payload")) places.insert(line);
    }
    return places;
  }
  static bool Has(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }
  // The lines from the first that is `from` to the end.
  static Lines From(const Lines& lines, const std::string& from) {
    return {std::find(lines.begin(), lines.end(), from), lines.end()};
  }
};

constexpr char kGroup[] = "<svg><g/></svg>";
constexpr char kSegment[] = "<svg><path d='M0,0 L1,1'/></svg>";

}  // namespace

TEST_F(OverridingHost, HasItsOwnFunctionsCalledInOrder) {
  EXPECT_EQ(Host(kGroup), (Lines{
                              "FindWindowPointer MemAllocClass own",
                              "loaded",
                              "GetIntTavlor ZENTAL Units",
                              "GetIntTavlor ZENTAL debug",
                              "GetIntTavlor KORBIN mode",
                              "GetIntTavlor KORBIN DoOverPrint",
                              "GetIntTavlor KORBIN DoLayers",
                              "GetIntTavlor KORBIN DoGroups",
                              "GetIntTavlor ZENTAL defaultWR",
                              "GetUnits",
                              "UdateUnits 300",
                              "HourGlass 1",
                              "HourGlass 0",
                              "ShowPasteStringChanges 0",
                              "CheckFile 1",
                              "key 12",
                              "key 12",
                              "key 5",
                              "key 21",
                              "key 23",
                              "key 36",
                              "key 8",
                              "key 10",
                              "ShowPasteStringChanges 1",
                              "UdateUnits 301",
                              "DBCollapseClipGroup",
                              "GetIntTavlor Grouping CollapseDatabase",
                              "WriteIntTavlor Grouping Discio Refresh ClipGroup 1",
                              "CloseFile 0",
                              "unloaded",
                          }));
}

// --- Where payloads come from

TEST_F(OverridingHost, HasPayloadsFromTheAllocatorOfItsWindow) {
  EXPECT_EQ(Payloads(Host(kSegment)), (std::set<std::string>{"payload from the program"}));
}

TEST_F(OverridingHost, HasPayloadsFromTheFilterWithoutAWindow) {
  const Lines lines = Host(kSegment, "no-window");
  EXPECT_EQ(Payloads(lines), (std::set<std::string>{"payload from the filter"}));
  EXPECT_TRUE(Has(lines, "unloaded"));
}

TEST_F(OverridingHost, HasPayloadsFromTheLibraryOnTheLoadersPathAndIsNotAskedForAWindow) {
  const char* const usual = getenv("LD_LIBRARY_PATH");
  const std::string kept = usual ? usual : "";
  setenv("LD_LIBRARY_PATH", SVGIMPORT_SERVICES_DIR "/memory", 1);
  const Lines lines = Host(kSegment);
  if (usual) {
    setenv("LD_LIBRARY_PATH", kept.c_str(), 1);
  } else {
    unsetenv("LD_LIBRARY_PATH");
  }
  EXPECT_EQ(Payloads(lines), (std::set<std::string>{"payload from tavmem.dll"}));
  EXPECT_FALSE(Has(lines, "FindWindowPointer MemAllocClass own"));
  EXPECT_TRUE(Has(lines, "unloaded"));
}

// --- The two reads of the file

TEST_F(OverridingHost, AFileThatGoesBetweenTheReadsIsImportedAsItWasFirstRead) {
  const Lines lines = Host(kGroup, "remove");
  EXPECT_TRUE(Has(lines, "CheckFile 1"));
  EXPECT_TRUE(Has(lines, "key 36"));
}

TEST_F(OverridingHost, AFileThatGoesBetweenTheReadsKeepsItsDoctypeAndIsRefused) {
  const std::string text = std::string("<!DOCTYPE svg>") + kGroup;
  EXPECT_TRUE(Has(Host(text), "CheckFile 1"));
  EXPECT_TRUE(Has(Host(text, "remove"), "CheckFile 0"));
}

TEST_F(OverridingHost, AFileThatIsEmptiedBetweenTheReadsIsRefused) {
  const Lines lines = Host(kGroup, "empty");
  EXPECT_EQ(From(lines, "loaded"),
            (Lines{"loaded", "GetIntTavlor ZENTAL Units", "CheckFile 0", "ShowPasteStringChanges 1",
                   "DBCollapseClipGroup", "GetIntTavlor Grouping CollapseDatabase",
                   "WriteIntTavlor Grouping Discio Refresh ClipGroup 1", "CloseFile 0", "unloaded"}));
}

TEST_F(OverridingHost, AFileThatIsNotFullyReadIsRefusedBeforeAnySettingIsRead) {
  const Lines lines = Host(kGroup, "short-read");
  ASSERT_GE(lines.size(), 3u);
  EXPECT_EQ(From(lines, "loaded")[1], "CheckFile 0");
}

TEST_F(OverridingHost, AFileIsReadInRequestsOf256MebibytesAtMost) {
  const std::string document = folder.File("huge.svg");
  struct Row {
    off_t size;
    Lines reads;
  };
  const Row rows[] = {
      {0x0FFFFFFF, {"read 268435455"}}, {0x10000000, {"read 268435456"}}, {0x10000001, {"read 268435456", "read 1"}}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.size);
    host_tests::WriteText(document, "");
    ASSERT_EQ(truncate(document.c_str(), row.size), 0);
    const Lines lines = HostOfFile(document, "huge");
    Lines reads;
    for (const std::string& line : lines) {
      if (line.starts_with("read ")) reads.push_back(line);
    }
    EXPECT_EQ(reads, row.reads);
    EXPECT_TRUE(Has(lines, "CheckFile 0"));
  }
}

// --- Memory

// The bytes have room, and the wide text, twice as large, has none.
TEST_F(OverridingHost, ATextThatFindsNoMemoryAsWideTextFailsWithItsStatus) {
  const std::string text = "<svg><!--" + std::string(100'000, 'x') + "--><g/></svg>";
  EXPECT_TRUE(Has(Host(text), "CheckFile 1"));
  const Lines lines = Host(text, "no-memory");
  EXPECT_TRUE(Has(lines, "failed IXMLDOMDocument: status 0x8007000E"));
  EXPECT_TRUE(Has(lines, "CloseFile 0"));
}

TEST_F(OverridingHost, AFileThatFindsNoMemoryIsRefusedBeforeAnySettingIsRead) {
  const Lines lines = Host("<svg><!--" + std::string(200'000, 'x') + "--><g/></svg>", "no-memory");
  ASSERT_GE(lines.size(), 3u);
  EXPECT_EQ(From(lines, "loaded")[1], "CheckFile 0");
}
