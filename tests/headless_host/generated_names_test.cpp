#include "headless_host/file_access.h"
#include "headless_host/text.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

namespace {

class HostGeneratedNames : public HostTest {
 protected:
  HostGeneratedNames() {
    HideGeneratedNames(true);
    SetHostBaseDir(u"/base/dir");
  }

  const std::u16string temporary = headless::TextFromNativePath(headless::SystemTemporaryFolder());
};

}  // namespace

TEST_F(HostGeneratedNames, TheRandomPartIsHiddenInTheTemporaryAndTheBaseFolder) {
  EXPECT_EQ(ShownPath(temporary + u"/IMGa1B2c3.png"), temporary + u"/IMGXXXXXX.png");
  EXPECT_EQ(ShownPath(u"/base/dir/DEMOa1B2c3.png"), u"/base/dir/DEMOXXXXXX.png");
  SetHostBaseDir(u"/base/dir/");
  EXPECT_EQ(ShownPath(u"/base/dir/DEMOa1B2c3.png"), u"/base/dir/DEMOXXXXXX.png");
}

TEST_F(HostGeneratedNames, EitherSeparatorWillDo) {
  EXPECT_EQ(ShownPath(u"\\base\\dir\\IMGa1B2c3.jpg"), u"\\base\\dir\\IMGXXXXXX.jpg");
}

TEST_F(HostGeneratedNames, ANameThatWasCutIsHiddenAsFarAsItGoes) {
  EXPECT_EQ(ShownPath(u"/base/dir/DEMOa1B"), u"/base/dir/DEMOXXX");
}

TEST_F(HostGeneratedNames, OtherNamesAreShownAsTheyAre) {
  for (const char16_t* path : {u"/base/dir/DEMOa1B2c34.png", u"/base/dir/DEMOa1B2c.png", u"/base/dir/DEMO",
                               u"/base/dir/", u"/base/dir/XIMGa1B2c3.png", u"/base/dir/IMGa1B2-3.png",
                               u"/home/IMGa1B2c3.png", u"/base/dir/deeper/IMGa1B2c3.png", u"IMGa1B2c3.png", u""}) {
    EXPECT_EQ(ShownPath(path), path);
  }
}

TEST_F(HostGeneratedNames, AGeneratedFolderIsHiddenWhereverAPathBeginsWithIt) {
  AddGeneratedFolder(u"/tmp/run-abc123");
  EXPECT_EQ(ShownPath(u"/tmp/run-abc123"), u"/tmp/run-XXXXXX");
  EXPECT_EQ(ShownPath(u"\\tmp\\run-abc123\\a.png"), u"\\tmp\\run-XXXXXX\\a.png");
  EXPECT_EQ(ShownPath(u"/tmp/run-abc1234/a.png"), u"/tmp/run-abc1234/a.png");
  SetHostBaseDir(u"/tmp/run-abc123");
  EXPECT_EQ(ShownPath(u"/tmp/run-abc123/DEMOa1B2c3.png"), u"/tmp/run-XXXXXX/DEMOXXXXXX.png");
}

TEST_F(HostGeneratedNames, NothingIsHiddenUnlessItWasAskedFor) {
  HideGeneratedNames(false);
  EXPECT_EQ(ShownPath(u"/base/dir/DEMOa1B2c3.png"), u"/base/dir/DEMOa1B2c3.png");
}
