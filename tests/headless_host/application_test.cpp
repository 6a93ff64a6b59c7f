#include "host/application.h"

#include <unistd.h>
#include <string>

#include "headless_host/text.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

using HostApplication = HostTest;

TEST_F(HostApplication, TranslationTakesTheMarkOff) {
  char16_t buffer[40];
  TString(u"(*v*)Search for file", buffer, 40);
  EXPECT_EQ(std::u16string(buffer), u"Search for file");
  TString(u"plain", buffer, 40);
  EXPECT_EQ(std::u16string(buffer), u"plain");
}

TEST_F(HostApplication, ATranslationIsCutToItsBuffer) {
  char16_t buffer[5] = {u'#', u'#', u'#', u'#', u'#'};
  TString(u"(*v*)abcdef", buffer, 4);
  EXPECT_EQ(std::u16string(buffer), u"abc");
  EXPECT_EQ(buffer[4], u'#');
  TString(u"(*v*)abcdef", buffer + 4, 0);
  EXPECT_EQ(buffer[4], u'#');
}

TEST_F(HostApplication, AMessageIsKeptAndAnsweredAtOnce) {
  EXPECT_EQ(TMessageBox(nullptr, u"CSD error", u"error", 0), 1);
  TMessageBox(nullptr, u"text", nullptr, 0x2010);
  ASSERT_EQ(ShownMessages().size(), 2u);
  EXPECT_EQ(ShownMessages()[0].text, u"CSD error");
  EXPECT_EQ(ShownMessages()[0].caption, u"error");
  EXPECT_EQ(ShownMessages()[1].caption, u"");
  EXPECT_EQ(ShownMessages()[1].flags, 0x2010u);
}

TEST_F(HostApplication, TheAllocatorIsRegisteredUnderTheProcessId) {
  char expected[40];
  std::snprintf(expected, sizeof expected, "MemAllocWnd%x", static_cast<unsigned>(getpid()));
  EXPECT_EQ(headless::Utf8FromText(AllocatorWindowTitle()), expected);
  EXPECT_EQ(FindWindowPointer(u"MemAllocClass", AllocatorWindowTitle().c_str()), DefaultHostAllocator());
  EXPECT_EQ(FindWindowPointer(u"MemAllocClass", u"MemAllocWnd"), nullptr);
  EXPECT_EQ(FindWindowPointer(u"OtherClass", AllocatorWindowTitle().c_str()), nullptr);
}

TEST_F(HostApplication, AWindowCanBeRegisteredAndUnregistered) {
  int extra = 0;
  RegisterHostWindow(u"Class", u"Title", &extra);
  EXPECT_EQ(FindWindowPointer(u"Class", u"Title"), &extra);
  RegisterHostWindow(u"Class", u"Title", nullptr);
  EXPECT_EQ(FindWindowPointer(u"Class", u"Title"), nullptr);
}

TEST_F(HostApplication, AResetRegistersTheAllocatorAgain) {
  RegisterHostWindow(kAllocatorWindowClass, AllocatorWindowTitle(), nullptr);
  EXPECT_EQ(FindWindowPointer(u"MemAllocClass", AllocatorWindowTitle().c_str()), nullptr);
  ResetHost();
  EXPECT_EQ(FindWindowPointer(u"MemAllocClass", AllocatorWindowTitle().c_str()), DefaultHostAllocator());
}

TEST_F(HostApplication, RemembersCursorRedrawAndCollapse) {
  EXPECT_FALSE(HostInterfaceState().hourGlass);
  EXPECT_TRUE(HostInterfaceState().redrawsAfterPaste);
  HourGlass(1);
  ShowPasteStringChanges(0);
  DBCollapseClipGroup();
  EXPECT_TRUE(HostInterfaceState().hourGlass);
  EXPECT_FALSE(HostInterfaceState().redrawsAfterPaste);
  EXPECT_EQ(HostInterfaceState().clipGroupCollapses, 1);
  HourGlass(0);
  ShowPasteStringChanges(1);
  EXPECT_FALSE(HostInterfaceState().hourGlass);
  EXPECT_EQ(HostInterfaceState().hourGlassCalls, 2);
  EXPECT_TRUE(HostInterfaceState().redrawsAfterPaste);
}

namespace {

class HostFileDialog : public HostTest {
 protected:
  int Ask(const std::u16string& file, int room = 260) {
    std::copy_n(file.c_str(), file.size() + 1, buffer);
    OpenFileDialog dialog = {nullptr, u"png", u"png", buffer, room, 0, u"Search"};
    return GetOpenFileName(&dialog);
  }

  char16_t buffer[260];
  ScratchFolder folder;
};

}  // namespace

TEST_F(HostFileDialog, CancelsWithoutAnImageFolder) {
  EXPECT_EQ(Ask(u"/missing/a.png"), 0);
  EXPECT_EQ(std::u16string(buffer), u"/missing/a.png");
  ASSERT_EQ(AskedFiles().size(), 1u);
  EXPECT_EQ(AskedFiles()[0].file, u"/missing/a.png");
  EXPECT_EQ(AskedFiles()[0].title, u"Search");
  EXPECT_FALSE(AskedFiles()[0].picked);
}

TEST_F(HostFileDialog, PicksTheFileOfTheNameBehindTheLastSeparator) {
  WriteText(folder.File("a.png"), "x");
  SetHostImageFolder(folder.Path());
  EXPECT_EQ(Ask(u"c:\\pictures\\a.png"), 1);
  EXPECT_EQ(headless::Utf8FromText(buffer), folder.File("a.png"));
  EXPECT_TRUE(AskedFiles().back().picked);
}

TEST_F(HostFileDialog, CancelsWhenTheFolderHasNoSuchFile) {
  SetHostImageFolder(folder.Path());
  EXPECT_EQ(Ask(u"/missing/b.png"), 0);
  EXPECT_EQ(Ask(u"/missing/"), 0);
}

TEST_F(HostFileDialog, CancelsWhenTheNameHasNoRoom) {
  WriteText(folder.File("a.png"), "x");
  SetHostImageFolder(folder.Path());
  const int length = static_cast<int>(folder.File("a.png").size());
  EXPECT_EQ(Ask(u"a.png", length), 0);
  EXPECT_EQ(std::u16string(buffer), u"a.png");
  EXPECT_EQ(Ask(u"a.png", length + 1), 1);
}

TEST_F(HostFileDialog, FindsAUtf8NameThatCameThroughTheNarrowCodePage) {
  WriteText(folder.File("\xC3\xA9.png"), "x");
  SetHostImageFolder(folder.Path());
  EXPECT_EQ(Ask(u"/missing/\u00C3\u00A9.png"), 1);
  EXPECT_EQ(headless::Utf8FromText(buffer), folder.File("\xC3\xA9.png"));
}
