// Documents that are large in one respect. Each must come to its end with the work that its size explains, counted in
// records, frames and bytes.

#include "filter_limits.h"
#include "tests/hostile/hostile_fixture.h"

#include <sys/resource.h>

#include <filesystem>

namespace {

using LargeDocument = HostileTest;

// The most memory that the process ever had, in bytes.
std::size_t PeakBytes() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

std::string Filled(std::size_t size) { return std::string(size, 'a'); }

// A flat path: KEY_PATH, KEY_LINE, KEY_ENDP, KEY_FDEF.
constexpr std::size_t kPathRecords = 4;
constexpr char kPath[] = "<path d='M0 0L1 1'/>";

}  // namespace

TEST_F(LargeDocument, ElementsNest256Deep) {
  // The root is the first; each group sends its two brackets.
  EXPECT_EQ(CountBodyRecords(Repeated("<g>", 254) + kPath + Repeated("</g>", 254)), 2 * 254 + kPathRecords);
}

TEST_F(LargeDocument, ElementsNested257DeepAreRefused) {
  static_assert(kMaxElementDepth == 256);
  EXPECT_EQ(Check(Document(Repeated("<g>", 256) + Repeated("</g>", 256))), 0);
  EXPECT_EQ(run.commands.count, 0u);
}

TEST_F(LargeDocument, AMillionLevelsAreRefused) {
  EXPECT_EQ(Check(Document(Repeated("<g>", 1'000'000))), 0);
  EXPECT_EQ(run.commands.count, 0u);
}

TEST_F(LargeDocument, AMillionAttributesOfOneElementAreRefused) {
  std::string attributes;
  for (int i = 0; i < 1'000'000; ++i) attributes += " a" + std::to_string(i) + "=''";
  EXPECT_EQ(Check(Document("<path" + attributes + "/>")), 0);
  EXPECT_EQ(run.commands.count, 0u);
}

TEST_F(LargeDocument, AMillionAttributesOfManyElementsAreRead) {
  std::string attributes;
  for (int i = 0; i < 10'000; ++i) attributes += " a" + std::to_string(i) + "=''";
  EXPECT_EQ(CountBodyRecords(Repeated("<g" + attributes + "/>", Many(100, 10))), 2 * Many(100, 10));
}

TEST_F(LargeDocument, AMillionSiblingsSendTheirBracketsEach) {
  const std::size_t siblings = Many(1'000'000, 100'000);
  EXPECT_EQ(CountBodyRecords(Repeated("<g/>", siblings)), 2 * siblings);
}

TEST_F(LargeDocument, AMillionSiblingsInAGroupUseOneFrame) {
  const std::size_t siblings = Many(1'000'000, 100'000);
  EXPECT_EQ(CountBodyRecords("<g>" + Repeated("<title/>", siblings) + "</g>"), 2u);
}

TEST_F(LargeDocument, AnAttributeOf200Megabytes) {
  const std::size_t size = Many(200'000'000, 10'000'000);
  const std::size_t before = PeakBytes();
  EXPECT_EQ(CountBodyRecords("<path d='M0 0L1 1' id='" + Filled(size) + "'/>"), kPathRecords);
  // The test's own text three times over while it is put together; the file's two bytes, the wide text's two, the
  // parser's and the tree's two.
  if (!kWatchedBuild) {
    EXPECT_LE(PeakBytes() - before, 11 * size);
  }
}

TEST_F(LargeDocument, AStyleOfManyMegabytesIsSearchedOncePerProperty) {
  const std::size_t size = Many(20'000'000, 1'000'000);
  EXPECT_EQ(CountBodyRecords("<path d='M0 0L1 1' style='" + Filled(size) + ";stroke-linecap:round'/>"),
            Replay().size() + 1 + kPathRecords);
  EXPECT_EQ(keys[KEY_LNST], 2u);
}

TEST_F(LargeDocument, AMillionTransformFunctionsMakeOneMatrix) {
  const std::size_t functions = Many(1'000'000, 100'000);
  const Lines lines = ImportBody("<path transform='" + Repeated("scale(1) ", functions) + "scale(2)' d='M0 0L1 1'/>");
  // One user unit is 0.1, and y is turned: 10 - y / 10.
  EXPECT_EQ(lines, (Lines{"PATH", "LINE 0,10 0.2,9.8", "ENDP", "FDEF flat 1"}));
}

TEST_F(LargeDocument, IdsOfAMillionCharactersAreKeptTo49) {
  static_assert(kMaxIdUnits == 49);
  const std::string id = Filled(1'000'000);
  // The reference is longer than what is kept of the id, so that neither table has it; what is cut finds it.
  CountBodyRecords("<defs><linearGradient id='" + id + "'/><clipPath id='" + id + "'/></defs><path clip-path='url(#" +
                   id + ")' style='fill:url(#" + id + ")' d='M0 0L1 1'/><path style='fill:url(#" + Filled(49) +
                   ")' d='M0 0L1 1'/>");
  EXPECT_EQ(keys[KEY_SCGR], 0u);
  EXPECT_EQ(keys[KEY_TSPY], 1u);
}

TEST_F(LargeDocument, ATextOfAMillionCharactersIsCut) {
  CountBodyRecords("<text>" + Filled(1'000'000) + "</text>");
  EXPECT_EQ(keys[KEY_PARA], 1u);
  EXPECT_EQ(run.text.TextBuffer, std::u16string(kMaxTextUnits, u'a'));
}

TEST_F(LargeDocument, ATextOfAMillionPiecesIsJoinedOnce) {
  const std::size_t pieces = Many(1'000'000, 100'000);
  CountBodyRecords("<text>" + Repeated("a<!---->", pieces) + "</text>");
  EXPECT_EQ(keys[KEY_PARA], 1u);
  EXPECT_EQ(run.text.TextBuffer, std::u16string(kMaxTextUnits, u'a'));
}

TEST_F(LargeDocument, AHundredMegabytesOfBase64AreDecodedAndTheirFileRemoved) {
  ASSERT_EQ(setenv("TMPDIR", folder.c_str(), 1), 0);
  const std::size_t size = Many(100'000'000, 4'000'000);
  const std::size_t before = PeakBytes();
  // Zeros, which are no picture.
  EXPECT_EQ(CountBodyRecords("<image xlink:href='data:image/png;base64," + std::string(size, 'A') + "'/>"), 0u);
  if (!kWatchedBuild) {
    EXPECT_LE(PeakBytes() - before, 13 * size);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);  // the document
}

TEST_F(LargeDocument, ImagePathsOf100000CharactersFindNothing) {
  static_assert(kHostPathUnits == 260);
  // Eight directories are looked into, each by a name that no system takes.
  CountBodyRecords("<image xlink:href='" + Filled(100'000) + ".png'/><image xlink:href='" + Repeated("../", 33'333) +
                   "x.png'/><image xlink:href='/" + Repeated("d/", 50'000) + "x.png'/>");
  EXPECT_EQ(keys[KEY_GNRC], 0u);
  // The dialog was given no more than it has room for.
  ASSERT_EQ(AskedFiles().size(), 3u);
  for (const AskedFile& asked : AskedFiles()) EXPECT_EQ(asked.file.size(), kHostPathUnits - 1);
}
