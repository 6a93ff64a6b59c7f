#include <cstring>
#include <new>

#include "headless_host/inspection.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

namespace {

class HostRelease : public HostTest {
 protected:
  const HostLiveCounts before = LiveCounts();

  static ImportCommand Command(std::uint32_t key, std::uint32_t size, void* data) {
    ImportCommand command = {key, size, {}};
    command.data = data;
    return command;
  }

  static void* Block(std::size_t size) {
    void* block = DefaultHostAllocator()->AllocateCleared(1, size);
    EXPECT_NE(block, nullptr);
    return block;
  }
};

}  // namespace

TEST_F(HostRelease, RecordsGoBackToTheAllocator) {
  ReleaseCommand(Command(KEY_LINE, 48, Block(sizeof(LineRecord))));
  ReleaseCommand(Command(KEY_BEZI, 108, Block(sizeof(BezierRecord))));
  ReleaseCommand(Command(KEY_FDEF, 1216, Block(sizeof(FillDefinition))));
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, ProgramsInOtherLanguagesReleaseByAddress) {
  const ImportCommand command = Command(KEY_LINE, 48, Block(sizeof(LineRecord)));
  EXPECT_NE(LiveCounts(), before);
  ReleaseImportCommand(&command);
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, AWidthGoesBackWhateverItsSize) {
  ReleaseCommand(Command(KEY_WIDT, 8, Block(sizeof(double))));
  ReleaseCommand(Command(KEY_WIDT, 0, Block(sizeof(double))));
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, ThePairOfAPatternGivesItsRecordBackOnce) {
  void* record = Block(sizeof(FillDefinition));
  ReleaseCommand(Command(KEY_PFDF, 1216, record));
  EXPECT_EQ(LiveCounts().blocks, before.blocks + 1);
  ReleaseCommand(Command(KEY_PFOL, 1216, record));
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, APolygonIsDestroyedInPlaceAndItsBlockGivenBack) {
  auto* polygon = new (Block(sizeof(POLYGON))) POLYGON;
  for (int i = 0; i < 40; ++i) polygon->add_side();
  ReleaseCommand(Command(KEY_PLYR, sizeof(POLYGON), polygon));
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, ObjectsAreDeletedThroughTheirClasses) {
  ReleaseCommand(Command(KEY_NFIL, 0, new CQXFullColor(0, kRgbSpace, kNoCorrection, kMatt)));
  auto* named = new CQXFullColor(0, kRgbSpace, kNoCorrection, kMatt);
  named->SetColorName(u"a name that is too long to be kept within the object itself");
  ReleaseCommand(Command(KEY_NOTL, 0, named));
  ReleaseCommand(Command(KEY_LYOT, 0, new CQXOverPrint));
  ReleaseCommand(Command(KEY_LIOT, 0, new CQXOverPrint));
  auto* fill = new CQXLinearSpotFill;
  fill->AddFromColorMarker({1, 2});
  ReleaseCommand(Command(KEY_SPFL, 0, fill));
  for (const int type : {1, 3, 4}) ReleaseCommand(Command(KEY_TSPY, 0, CQXTransparency::CreateTransparency(type)));
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, ABitmapGoesWithItsRecord) {
  auto* record = static_cast<GenericRecord*>(Block(sizeof(GenericRecord)));
  record->bitmap = NewQXBitmap();
  ReleaseCommand(Command(KEY_GNRC, sizeof(GenericRecord), record));
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, AParagraphGoesWithItsRecord) {
  ParagraphHandle handle;
  const ParagraphPosition position = {0.0, 0.0};
  SetOpenParagraphInfo(&handle, 0);
  OpenParagraph(4, &handle, &position, 0);
  edPasteString(u"text", 4, 2, nullptr, false);
  CloseParagraph(1, &handle);
  auto* record = static_cast<ParagraphRecord*>(Block(sizeof(ParagraphRecord)));
  record->paragraph = handle.paragraph;
  ReleaseCommand(Command(KEY_PARA, sizeof(ParagraphRecord), record));
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, ValuesAndEmptyRecordsHaveNothingToGiveBack) {
  ImportCommand fill = {KEY_FILL, 0, {}};
  fill.value = -1;
  ReleaseCommand(fill);
  ImportCommand clip = {KEY_CLIP, 4, {}};
  clip.value = 1;
  ReleaseCommand(clip);
  for (const std::uint32_t key : {KEY_NULL, KEY_PATH, KEY_ENDP, KEY_ENDF}) ReleaseCommand(Command(key, 0, nullptr));
  for (const std::uint32_t key :
       {KEY_LINE, KEY_WIDT, KEY_PLYR, KEY_PARA, KEY_GNRC, KEY_NFIL, KEY_LYOT, KEY_SPFL, KEY_TSPY, KEY_PFOL}) {
    ReleaseCommand(Command(key, 0, nullptr));
  }
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(HostRelease, WithoutARegisteredAllocatorBlocksAreThoseOfTheFallback) {
  RegisterHostWindow(kAllocatorWindowClass, AllocatorWindowTitle(), nullptr);
  // A word of 0 in front of the block, on the ordinary heap.
  auto* memory = static_cast<unsigned char*>(std::calloc(1, 8 + sizeof(LineRecord)));
  ReleaseCommand(Command(KEY_LINE, 48, memory + 8));
  EXPECT_EQ(LiveCounts(), before);
}
