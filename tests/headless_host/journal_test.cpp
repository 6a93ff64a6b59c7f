#include <cmath>
#include <memory>

#include "headless_host/inspection.h"
#include "host/application.h"
#include "host/settings.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

namespace {

class HostJournal : public HostTest {
 protected:
  HostJournal() : file_(std::tmpfile()) { StartJournal(file_); }
  ~HostJournal() override {
    StopJournal();
    std::fclose(file_);
  }

  // What was written since the last look.
  std::string Lines() {
    std::fflush(file_);
    std::rewind(file_);
    std::string text;
    for (int c; (c = std::fgetc(file_)) != EOF;) text.push_back(static_cast<char>(c));
    std::string fresh = text.substr(seen_);
    seen_ = text.size();
    return fresh;
  }

 private:
  std::FILE* file_;
  std::size_t seen_ = 0;
};

}  // namespace

TEST_F(HostJournal, ACallIsALineWithArgumentsAndResultAndWithoutNullTexts) {
  GetIntTavlor(u"ZENTAL", u"Units", 1, kUserDataStore, nullptr);
  EXPECT_EQ(Lines(), "{\"call\":\"GetIntTavlor\",\"args\":[\"ZENTAL\",\"Units\",1,1],\"result\":1}\n");
}

TEST_F(HostJournal, CallsStandInTheirOrder) {
  HourGlass(1);
  GetUnits();
  UdateUnits(300);
  HourGlass(0);
  EXPECT_EQ(Lines(),
            "{\"call\":\"HourGlass\",\"args\":[1]}\n"
            "{\"call\":\"GetUnits\",\"args\":[],\"result\":300}\n"
            "{\"call\":\"UdateUnits\",\"args\":[300]}\n"
            "{\"call\":\"HourGlass\",\"args\":[0]}\n");
}

TEST_F(HostJournal, PointersAreLeftOutOfArgumentsAndResults) {
  AddFont(0, 2, u"Arial", 0, 1);
  FindWindowPointer(u"Class", u"Title");
  double matrix[6];
  SetToIdentityMatrix(matrix);
  EXPECT_EQ(Lines(),
            "{\"call\":\"AddFont\",\"args\":[0,2,\"Arial\",0,1]}\n"
            "{\"call\":\"FindWindowPointer\",\"args\":[\"Class\",\"Title\"]}\n"
            "{\"call\":\"SetToIdentityMatrix\",\"args\":[]}\n");
}

TEST_F(HostJournal, NumbersAreShortestAndSpecialOnesAreTexts) {
  IsDoubleEqual(0.1, -0.0, 1e-5);
  IsDoubleEqual(std::nan(""), INFINITY, -INFINITY);
  EXPECT_EQ(Lines(),
            "{\"call\":\"IsDoubleEqual\",\"args\":[0.1,-0,1e-05],\"result\":0}\n"
            "{\"call\":\"IsDoubleEqual\",\"args\":[\"NaN\",\"Infinity\",\"-Infinity\"],\"result\":0}\n");
}

TEST_F(HostJournal, TextsAreEscaped) {
  TMessageBox(nullptr, u"a\"b\\c\n\u00E9", nullptr, 16);
  EXPECT_EQ(Lines(), "{\"call\":\"TMessageBox\",\"args\":[\"a\\\"b\\\\c\\u000a\xC3\xA9\",16],\"result\":1}\n");
}

TEST_F(HostJournal, MethodsCarryTheirClassAndWhatIsPassedByValueIsWritten) {
  const std::unique_ptr<CQXTransparency> made(CQXTransparency::CreateTransparency(3));
  auto& shape = static_cast<CQXShapeTransparency&>(*made);
  shape.ChangeWorldToFillTm({1, 2, 3, 4, 5, 0.5});
  shape.AddOpacityMarker({99, 50});
  EXPECT_EQ(Lines(),
            "{\"call\":\"CQXTransparency::CreateTransparency\",\"args\":[3]}\n"
            "{\"call\":\"CQXShapeTransparency::ChangeWorldToFillTm\",\"args\":[[1,2,3,4,5,0.5]]}\n"
            "{\"call\":\"CQXShapeTransparency::AddOpacityMarker\",\"args\":[[99,50]],\"result\":1}\n");
}

TEST_F(HostJournal, AFullColourIsOneCallAndNotItsBaseAsWell) {
  {
    CQXFullColor colour(255, kRgbSpace, kNoCorrection, kMatt);
    colour.SetColor(255.0, 0.0, 0.5, kRgbSpace);
    colour.SetColorName(u"Gold");
    const CQXFullColor copy(colour);
    colour = copy;
  }
  EXPECT_EQ(Lines(),
            "{\"call\":\"CQXFullColor::CQXFullColor\",\"args\":[255,1,0,0]}\n"
            "{\"call\":\"CQXColor::SetColor\",\"args\":[255,0,0.5,1]}\n"
            "{\"call\":\"CQXFullColor::SetColorName\",\"args\":[\"Gold\"]}\n"
            "{\"call\":\"CQXFullColor::CQXFullColor\",\"args\":[]}\n"
            "{\"call\":\"CQXFullColor::operator=\",\"args\":[]}\n"
            "{\"call\":\"CQXFullColor::~CQXFullColor\",\"args\":[]}\n"
            "{\"call\":\"CQXFullColor::~CQXFullColor\",\"args\":[]}\n");
}

TEST_F(HostJournal, TheAllocatorIsJournaledByTheOperationCalled) {
  HostAllocator& allocator = *DefaultHostAllocator();
  void* block = allocator.Allocate(48);
  block = allocator.Reallocate(block, 100);
  allocator.Free(block);
  EXPECT_EQ(Lines(),
            "{\"call\":\"MemInitBaseT::Allocate\",\"args\":[48]}\n"
            "{\"call\":\"MemInitBaseT::Reallocate\",\"args\":[100]}\n"
            "{\"call\":\"MemInitBaseT::Free\",\"args\":[]}\n");
}

TEST_F(HostJournal, TheCallsOfAParagraph) {
  ParagraphHandle handle;
  const ParagraphPosition position = {1.0, 2.0};
  SetOpenParagraphInfo(&handle, 0);
  OpenParagraph(4, &handle, &position, 0);
  ParagraphStatus* status = GetCurrentParagraphStatusAddress();
  SetTextLineJustifyMode(status->paragraphInfo, status->lines, 2);
  SetTextLineJustification(status->paragraphInfo, status->lines, 1);
  edPasteString(u"abc", 2, 2, nullptr, false);
  WrapLine(status->textLine, status->wrapA, 0x20002, 0x20002, " -");
  edCalcCompression(status->lines);
  CloseParagraph(1, &handle);
  EXPECT_EQ(Lines(),
            "{\"call\":\"SetOpenParagraphInfo\",\"args\":[0]}\n"
            "{\"call\":\"OpenParagraph\",\"args\":[4,0],\"result\":0}\n"
            "{\"call\":\"GetCurrentParagraphStatusAddress\",\"args\":[]}\n"
            "{\"call\":\"SetTextLineJustifyMode\",\"args\":[2]}\n"
            "{\"call\":\"SetTextLineJustification\",\"args\":[1]}\n"
            "{\"call\":\"edPasteString\",\"args\":[\"ab\",2,2,false]}\n"
            "{\"call\":\"WrapLine\",\"args\":[131074,131074,\" -\"]}\n"
            "{\"call\":\"edCalcCompression\",\"args\":[],\"result\":0}\n"
            "{\"call\":\"CloseParagraph\",\"args\":[1],\"result\":0}\n");
}

TEST_F(HostJournal, TheHostsOwnCallsAreNotWritten) {
  auto* polygon = new (DefaultHostAllocator()->Allocate(sizeof(POLYGON))) POLYGON;
  polygon->add_side();
  Lines();
  EXPECT_EQ(ViewSides(*polygon).size(), 1u);
  const std::unique_ptr<CQXTransparency> made(CQXTransparency::CreateTransparency(1));
  Lines();
  ViewTransparency(*made);
  ImportCommand command = {KEY_PLYR, sizeof(POLYGON), {}};
  command.data = polygon;
  ReleaseCommand(command);
  EXPECT_EQ(Lines(), "");
  GetUnits();
  EXPECT_NE(Lines(), "");
}

TEST_F(HostJournal, AStoppedJournalWritesNothing) {
  StopJournal();
  GetUnits();
  EXPECT_EQ(Lines(), "");
}
