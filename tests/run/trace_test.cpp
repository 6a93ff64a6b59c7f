#include "run/trace.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "host/colour.h"
#include "host/polygon.h"
#include "host/transparency.h"
#include "operators/operator_machine.h"
#include "run/command_queue.h"
#include "tests/headless_host/sample_images.h"
#include "tests/support/debug_log_folder.h"
#include "tests/support/filter_test.h"

namespace {

ImportCommand Value(std::uint32_t key, std::uint32_t value) {
  ImportCommand record = {};
  record.key = key;
  record.value = static_cast<std::int32_t>(value);
  return record;
}

ImportCommand Payload(std::uint32_t key, void* payload) {
  ImportCommand record = {};
  record.key = key;
  record.data = payload;
  return record;
}

// The trace goes into a file in memory.
class Trace : public FilterTest {
 protected:
  Trace() : file_(memfd_create("trace", 0)) { run.trace.TraceHandle = file_; }
  ~Trace() override { close(file_); }

  // What was written since the last look.
  std::string Written() {
    std::string text;
    char block[256];
    lseek(file_, read_, SEEK_SET);
    for (ssize_t came; (came = read(file_, block, sizeof block)) > 0;)
      text.append(block, static_cast<std::size_t>(came));
    read_ += static_cast<off_t>(text.size());
    return text;
  }
  std::string LinesOf(const ImportCommand& record) {
    TraceCommand(record);
    return Written();
  }
  std::string NumberOf(double value) {
    TraceNumber(value);
    return Written();
  }

  int file_;

 private:
  off_t read_ = 0;
};

}  // namespace

// --- The lines of each command

TEST_F(Trace, LinesOfTheCommandsThatShowNothingOfTheirOwn) {
  struct Row {
    std::uint32_t key;
    const char* text;
  };
  const Row rows[] = {
      {KEY_CNST, "KEY_CNST\r\n"},
      {KEY_ELLI, "KEY_ELLI\r\n"},
      {KEY_ENDF, "KEY_ENDF\r\n"},
      {KEY_GNRC, "KEY_GNRC\r\n"},
      {KEY_LIOT, "KEY_LIOT overprint stroke R command \r\n"},
      {KEY_LNST, "KEY_LNST\r\n"},
      {KEY_LYOT, "KEY_LYOT  AI overprint fill O cammand \r\n"},
      {KEY_MLIM, "KEY_MLIM\r\n"},
      {KEY_PARA, "KEY_PARA\r\n"},
      {KEY_QXON, "KEY_QXON\r\n"},
      {KEY_SPFL, "KEY_SPFL\r\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(LinesOf(Value(row.key, 5)), row.text);
}

TEST_F(Trace, WindingRuleAndPatternsPrintNothing) {
  FillDefinition fill = {};
  EXPECT_EQ(LinesOf(Value(KEY_WRUL, 1)), "");
  EXPECT_EQ(LinesOf(Payload(KEY_PFDF, &fill)), "");
  EXPECT_EQ(LinesOf(Payload(KEY_PFOL, &fill)), "");
  EXPECT_EQ(LinesOf(Value(9999, 0)), "");
}

TEST_F(Trace, LinesOfTheCommandsThatShowTheirValue) {
  struct Row {
    std::uint32_t key, value;
    const char* text;
  };
  const Row rows[] = {
      {KEY_CLIP, 0, "KEY_CLIP\r\n    Clip Path = 0\r\n"},
      {KEY_CLIP, 1, "KEY_CLIP\r\n    Clip Path = 1\r\n"},
      {KEY_CLIP, 7, "KEY_CLIP\r\n    Clip Path = 1\r\n"},
      {KEY_DOCP, 0, "KEY_DOCP\r\n    Clip Allow = 0\r\n"},
      {KEY_DOCP, 1, "KEY_DOCP\r\n    Clip Allow = 1\r\n"},
      {KEY_DOCP, 7, "KEY_DOCP\r\n    Clip Allow = 1\r\n"},
      {KEY_FILL, 0, "KEY_FILL\r\nFILL is solid\r\n"},
      {KEY_FILL, 0xFFFFFFFE, "KEY_FILL\r\nFILL is solid\r\n"},
      {KEY_FILL, 0xFFFFFFFF, "KEY_FILL\r\nFILL is INVISABLE\r\n"},
      {KEY_OUTL, 0, "KEY_OUTL\r\n"},
      {KEY_OUTL, 0xFFFFFFFE, "KEY_OUTL\r\n"},
      {KEY_OUTL, 0xFFFFFFFF, "KEY_OUTL\r\nOUTLINE is INVISABLE\r\n"},
      {KEY_PAGN, 12, "KEY_PAGN===12\r\n"},
      {KEY_THST, 0, "KEY_THST thickness ERROR\r\n"},
      {KEY_THST, 1, "KEY_THST thickness NONE\r\n"},
      {KEY_THST, 2, "KEY_THST thickness HAIR\r\n"},
      {KEY_THST, 3, "KEY_THST thickness THICK\r\n"},
      {KEY_THST, 4, "KEY_THST thickness ERROR\r\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(LinesOf(Value(row.key, row.value)), row.text);
}

TEST_F(Trace, LinesOfTheCommandsThatShowADepth) {
  run.graphics.saveDepth = 3;
  run.clip.groupDepth = 4;
  run.path.compoundDepth = 5;
  EXPECT_EQ(LinesOf(Value(KEY_SCGR, 1)), "KEY_SCGR-----------count=3\r\n");
  EXPECT_EQ(LinesOf(Value(KEY_ECGR, 1)), "KEY_ECGR-----------count=3\r\n");
  EXPECT_EQ(LinesOf(Value(KEY_SGRP, 1)), "KEY_SGRP  -----------count=4\r\n");
  EXPECT_EQ(LinesOf(Value(KEY_EGRP, 1)), "KEY_EGRP  -----------count=4\r\n");
  EXPECT_EQ(LinesOf(Value(KEY_PATH, 0)), "KEY_PATH     PathCount=5\r\n");
  EXPECT_EQ(LinesOf(Value(KEY_ENDP, 0)), "KEY_ENDP     PathCount=5\r\n");
  run.graphics.saveDepth = 0;
}

TEST_F(Trace, LinesOfTheSegments) {
  LineRecord line = {};
  line.x0 = 1.0;
  line.y0 = -2.5;
  line.x1 = 0.125;
  line.y1 = 2000000.0;
  EXPECT_EQ(LinesOf(Payload(KEY_LINE, &line)), "KEY_LINE 1.000000 -2.500000 0.125000 1.000000\r\n");
  BezierRecord bezier = {};
  bezier.x0 = 1.0;
  bezier.y0 = 2.0;
  bezier.x1 = 3.0;
  bezier.y1 = 4.0;
  bezier.x2 = 5.0;
  bezier.y2 = 6.0;
  bezier.x3 = 7.0;
  bezier.y3 = 8.0;
  EXPECT_EQ(LinesOf(Payload(KEY_BEZI, &bezier)),
            "KEY_BEZI\r\n1.000000 2.000000 3.000000 4.000000 5.000000 6.000000 7.000000 8.000000\r\n");
}

TEST_F(Trace, LinesOfAPolygonCountItsSides) {
  POLYGON polygon;
  EXPECT_EQ(LinesOf(Payload(KEY_PLYR, &polygon)), "KEY_PLYR\r\n0 Sides\r\n");
  for (int i = 0; i < 3; ++i) polygon.add_side();
  EXPECT_EQ(LinesOf(Payload(KEY_PLYR, &polygon)), "KEY_PLYR\r\n3 Sides\r\n");
}

TEST_F(Trace, LineOfAWidth) {
  double width = 0.5;
  EXPECT_EQ(LinesOf(Payload(KEY_WIDT, &width)), "KEY_WIDT   is   0.500000\r\n");
}

TEST_F(Trace, LineOfAFillDefinitionTellsFlatFromAllOthers) {
  FillDefinition fill = {};
  for (std::uint32_t type : {0u, 5u, 10u, 15u}) {
    fill.fillType = type;
    EXPECT_EQ(LinesOf(Payload(KEY_FDEF, &fill)), "KEY_FDEF  FT_FULL  GRADIENT \r\n");
  }
  fill.fillType = 1;
  EXPECT_EQ(LinesOf(Payload(KEY_FDEF, &fill)), "KEY_FDEF  FT_LAYER_COLOR \r\n");
}

TEST_F(Trace, LineOfATransparencyEndsInALetter) {
  const std::unique_ptr<CQXTransparency> uniform(CQXTransparency::CreateTransparency(kUniformTransparency));
  static_cast<CQXUniformTransparency&>(*uniform).opacity = 127;
  EXPECT_EQ(LinesOf(Payload(KEY_TSPY, uniform.get())), "KEY_TSPY  127c\r\n");
  const std::unique_ptr<CQXTransparency> linear(CQXTransparency::CreateTransparency(kLinearTransparency));
  EXPECT_EQ(LinesOf(Payload(KEY_TSPY, linear.get())), "KEY_TSPY  0c\r\n");
  const std::unique_ptr<CQXTransparency> radial(CQXTransparency::CreateTransparency(kRadialTransparency));
  EXPECT_EQ(LinesOf(Payload(KEY_TSPY, radial.get())), "KEY_TSPY  0c\r\n");
}

TEST_F(Trace, LinesOfAColourThatIsAbsent) {
  EXPECT_EQ(LinesOf(Payload(KEY_NFIL, nullptr)), "KEY_NFIL\r\n");
  EXPECT_EQ(LinesOf(Payload(KEY_NOTL, nullptr)), "KEY_NOTL\r\n");
}

TEST_F(Trace, LinesOfColours) {
  // Red: no cyan, all magenta and yellow.
  CQXFullColor process(0x0000FF, kRgbSpace, kNoCorrection, kMatt);
  process.SetColor(255.0, 0.0, 0.0, kRgbSpace);
  CQXFullColor invisible(0xFFFFFFFF, kRgbSpace, kNoCorrection, kMatt);
  CQXFullColor spot(1, kCmykSpace, kNamedColourCorrection, kMatt);
  spot.SetColor(0.125, 0.25, 0.5, 1.0, kCmykSpace);
  CQXFullColor foil(spot);
  foil.SetCartridge(1);
  const std::string colours[][2] = {
      {"KEY_NFIL\r\n", "KEY_NOTL\r\n"},
      {"     Process\r\n0.000000 1.000000 1.000000 0.000000\r\n",
       "     Invisable\r\n0.000000 0.000000 0.000000 0.000000\r\n"},
      {"     Process\r\n0.125000 0.250000 0.500000 1.000000\r\n",
       "     Spot\r\n0.125000 0.250000 0.500000 1.000000\r\n"},
  };
  const std::uint32_t keys[] = {KEY_NFIL, KEY_NOTL};
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(LinesOf(Payload(keys[i], &process)), colours[0][i] + colours[1][0]);
    EXPECT_EQ(LinesOf(Payload(keys[i], &invisible)), colours[0][i] + colours[1][1]);
    EXPECT_EQ(LinesOf(Payload(keys[i], &spot)), colours[0][i] + colours[2][0]);
    EXPECT_EQ(LinesOf(Payload(keys[i], &foil)), colours[0][i] + colours[2][1]);
  }
}

// --- Numbers

TEST_F(Trace, NumbersHaveSixDecimals) {
  EXPECT_EQ(NumberOf(0.0), "0.000000");
  EXPECT_EQ(NumberOf(-0.0), "-0.000000");
  EXPECT_EQ(NumberOf(1.0 / 3.0), "0.333333");
  EXPECT_EQ(NumberOf(-2.0 / 3.0), "-0.666667");
  EXPECT_EQ(NumberOf(1.9999996), "2.000000");
  EXPECT_EQ(NumberOf(123456.75), "123456.750000");
  EXPECT_EQ(NumberOf(1e-300), "0.000000");
}

TEST_F(Trace, NumbersAboveAMillionAreWrittenAsOne) {
  EXPECT_EQ(NumberOf(1000000.0), "1000000.000000");
  EXPECT_EQ(NumberOf(1000000.125), "1.000000");
  EXPECT_EQ(NumberOf(2000000.0), "1.000000");
  EXPECT_EQ(NumberOf(std::numeric_limits<double>::infinity()), "1.000000");
  EXPECT_EQ(NumberOf(-2000000.0), "-2000000.000000");
  // The smallest double: its 309 digits are all there.
  EXPECT_EQ(NumberOf(std::numeric_limits<double>::lowest()).size(), 1u + 309u + 7u);
}

// --- The latch

TEST_F(Trace, AFailedWriteSilencesAllThatFollow) {
  run.trace.TraceHandle = -1;
  TraceText("lost");
  EXPECT_EQ(run.trace.TraceFailed, 1u);
  run.trace.TraceHandle = file_;
  EXPECT_EQ(LinesOf(Value(KEY_ENDF, 0)), "");
  EXPECT_EQ(NumberOf(1.0), "");
}

TEST_F(Trace, AWriteThatFallsShortSilencesAllThatFollow) {
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit = {};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlim_t usual = std::exchange(limit.rlim_cur, 4);
  setrlimit(RLIMIT_FSIZE, &limit);
  TraceText("abcdef");
  limit.rlim_cur = usual;
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  TraceText("ghi");
  EXPECT_EQ(Written(), "abcd");
  EXPECT_EQ(run.trace.TraceFailed, 1u);
}

// --- The three logs

namespace {

class DebugLogs : public FilterTest {
 protected:
  DebugLogs() { SetHostSetting(u"ZENTAL", u"debug", 1); }

  DebugLogFolder logs;
};

const std::string kOpeningLines = "KEY_FILL\r\nFILL is solid\r\nKEY_FILL\r\nFILL is solid\r\nKEY_CNST\r\nKEY_MLIM\r\n";
const std::string kClosingLines = " Starting close file\r\n Collapse clip group\r\nEnding Close file\r\n";

}  // namespace

TEST_F(DebugLogs, HoldEveryRecordThatWasReturnedAndTheThreeLinesOfTheEnd) {
  logs.Make();
  ImportBody("<g/>");
  GetImportCommand();
  CloseFile();
  // The depths are those of the end of the translation.
  EXPECT_EQ(logs.Read("discio.txt"), kOpeningLines +
                                         "KEY_SGRP  -----------count=0\r\nKEY_EGRP  -----------count=0\r\nKEY_ENDF\r\n"
                                         "KEY_ENDF\r\n" +
                                         kClosingLines);
  EXPECT_EQ(logs.Read("test.txt"), "");
  EXPECT_EQ(logs.Read("parse.txt"), "");
  EXPECT_EQ(logs.CountOfFiles(), 3u);
}

// One of each: a path with curve and paints, a spot fill and the overprints by operators, the keys that nothing sends
// by hand, all else from a drawing. One user unit is 0.1 host units and y becomes 10 - y / 10. The operators leave one
// push, two groups and three compound paths open, and these are the counts on every line.
TEST_F(DebugLogs, HoldTheLinesOfEveryKey) {
  logs.Make();
  ASSERT_TRUE(sample_images::WriteBytes(folder + "a.png", sample_images::PngOfOneColour(1, 1, {1, 2, 3, 255})));
  ASSERT_EQ(Check(Document("<defs><linearGradient id='g'/><clipPath id='c'/>"
                           "<pattern id='p'><image xlink:href='a.png'/></pattern></defs>"
                           "<g style='stroke:#000000;stroke-width:2'/>"
                           "<text style='fill:none'>a</text>"
                           "<rect width='10' height='20' style='fill:url(#g);opacity:0.5'/>"
                           "<rect width='10' height='20' style='fill:url(#p)'/>"
                           "<image xlink:href='a.png' clip-path='url(#c)'/>")),
            1);
  run.namedGradients.push_back({u"spot", 0, 1, {{255, 0, 0, 51, 100, u""}}, {0.0}});
  FeedOperatorText(u"1 O 0 R 0.5 0.25 0.125 0 k 0 0 0 1 K 10 20 M 30 40 L 50 60 70 80 90 100 C B", kExecute);
  FeedOperatorText(u"0 (spot) 0 0 90 10 1 0 0 1 0 0 Bg gs u u *u *u *u", kExecute);
  PushCommand(KEY_ELLI);
  PushValue(KEY_PAGN, 12);
  PushCommand(KEY_QXON);
  ImportCommand record;
  do {
    record = GetImportCommand();
    ReleaseCommand(record);
  } while (record.key != KEY_ENDF);
  CloseFile();

  // The fill stays the colour of the k operator, which is solid, and so does the outline.
  const std::string replay =
      "KEY_WIDT   is   0.000000\r\nKEY_THST thickness ERROR\r\nKEY_OUTL\r\nKEY_FILL\r\nFILL is solid\r\n"
      "KEY_LNST\r\nKEY_CNST\r\n";
  const std::string expected = kOpeningLines +
                               "KEY_LYOT  AI overprint fill O cammand \r\n"
                               "KEY_LIOT overprint stroke R command \r\n"
                               "KEY_PATH     PathCount=3\r\n"
                               "KEY_LINE 1.000000 8.000000 3.000000 6.000000\r\n"
                               "KEY_BEZI\r\n3.000000 6.000000 5.000000 4.000000 7.000000 2.000000 9.000000 0.000000\r\n"
                               "KEY_NFIL\r\n     Process\r\n0.500000 0.250000 0.125000 0.000000\r\n"
                               "KEY_NOTL\r\n     Process\r\n0.000000 0.000000 0.000000 1.000000\r\n"
                               "KEY_ENDP     PathCount=3\r\n"
                               "KEY_FDEF  FT_LAYER_COLOR \r\n"
                               // Inks of 255 and 51 of 255.
                               "KEY_FILL\r\nFILL is solid\r\n"
                               "KEY_NFIL\r\n     Process\r\n1.000000 0.000000 0.000000 0.200000\r\n"
                               "KEY_SPFL\r\n"
                               "KEY_SGRP  -----------count=2\r\n"
                               "KEY_SGRP  -----------count=2\r\n"
                               "KEY_ELLI\r\n"
                               "KEY_PAGN===12\r\n"
                               "KEY_QXON\r\n"
                               // The group.
                               "KEY_SGRP  -----------count=2\r\n"
                               "KEY_OUTL\r\n"
                               "KEY_THST thickness THICK\r\n"
                               "KEY_WIDT   is   0.200000\r\n"
                               "KEY_EGRP  -----------count=2\r\n" +
                               // The text.
                               replay +
                               "KEY_THST thickness HAIR\r\n"
                               "KEY_WIDT   is   0.000100\r\n"
                               "KEY_FILL\r\nFILL is INVISABLE\r\n"
                               "KEY_PARA\r\n" +
                               // The gradient, half transparent, and the return to the opaque frame below.
                               replay +
                               "KEY_FILL\r\nFILL is solid\r\n"
                               "KEY_FDEF  FT_FULL  GRADIENT \r\n"
                               "KEY_TSPY  0c\r\n"
                               "KEY_TSPY  127c\r\n"
                               "KEY_PLYR\r\n4 Sides\r\n"
                               "KEY_TSPY  255c\r\n" +
                               // The pattern, whose own records print nothing.
                               replay +
                               "KEY_PLYR\r\n4 Sides\r\n"
                               // The image in its clip.
                               "KEY_SCGR-----------count=1\r\n"
                               "KEY_WIDT   is   0.000000\r\n"
                               "KEY_THST thickness NONE\r\n"
                               "KEY_FILL\r\nFILL is INVISABLE\r\n"
                               "KEY_OUTL\r\nOUTLINE is INVISABLE\r\n"
                               "KEY_CLIP\r\n    Clip Path = 1\r\n"
                               "KEY_CLIP\r\n    Clip Path = 0\r\n"
                               "KEY_DOCP\r\n    Clip Allow = 1\r\n"
                               "KEY_GNRC\r\n"
                               "KEY_DOCP\r\n    Clip Allow = 0\r\n"
                               "KEY_ECGR-----------count=1\r\n"
                               "KEY_ENDF\r\n" +
                               kClosingLines;
  EXPECT_EQ(logs.Read("discio.txt"), expected);
}

TEST_F(DebugLogs, LeaveOutANullRecordThatIsReturned) {
  logs.Make();
  ASSERT_EQ(Check(Document("<defs/>")), 1);
  Drain();
  PushCommand(KEY_NULL);
  PushCommand(KEY_NULL);
  EXPECT_EQ(GetImportCommand().key, KEY_NULL);
  EXPECT_EQ(logs.Read("discio.txt"), "");
}

TEST_F(DebugLogs, AreEmptiedByTheNextRun) {
  logs.Make();
  for (const char* name : {"test.txt", "parse.txt", "discio.txt"}) logs.Write(name, std::string(10000, 'x'));
  ImportBody("<defs/>");
  EXPECT_EQ(logs.Read("test.txt"), "");
  EXPECT_EQ(logs.Read("parse.txt"), "");
  EXPECT_EQ(logs.Read("discio.txt"), kOpeningLines + "KEY_ENDF\r\n");
}

TEST_F(DebugLogs, AreOpenBetweenCheckFileAndCloseFile) {
  logs.Make();
  ASSERT_EQ(Check(Document("<g/>")), 1);
  const TraceLog open = run.trace;
  EXPECT_EQ(open.TraceHandle, open.DiscioLog);
  for (int handle : {open.TestLog, open.ParseLog, open.DiscioLog}) {
    EXPECT_EQ(fcntl(handle, F_GETFL) & (O_ACCMODE | O_APPEND), O_RDWR);
  }
  CloseFile();
  for (int handle : {open.TestLog, open.ParseLog, open.DiscioLog}) EXPECT_EQ(fcntl(handle, F_GETFD), -1);
}

TEST_F(DebugLogs, MakeNoFolderAndCostNothingWithoutOne) {
  const std::string drawing = "<g><path style='stroke:red' d='M0,0 L1,1'/></g>";
  const Lines traced = ImportBody(drawing);
  EXPECT_EQ(run.trace.DiscioLog, -1);
  EXPECT_EQ(run.trace.TraceFailed, 1u);
  CloseFile();
  EXPECT_FALSE(logs.Exists());

  ResetImportRun();
  logs.Make();
  EXPECT_EQ(ImportBody(drawing), traced);
  CloseFile();

  ResetImportRun();
  SetHostSetting(u"ZENTAL", u"debug", 0);
  EXPECT_EQ(ImportBody(drawing), traced);
}

TEST_F(DebugLogs, AreNotTouchedUnlessDebugIsOne) {
  logs.Make();
  logs.Write("discio.txt", "old");
  for (int debug : {0, 2, -1}) {
    SCOPED_TRACE(debug);
    ResetImportRun();
    SetHostSetting(u"ZENTAL", u"debug", debug);
    ImportBody("<g/>");
    CloseFile();
    EXPECT_EQ(logs.Read("discio.txt"), "old");
    EXPECT_EQ(logs.CountOfFiles(), 1u);
  }
}

TEST_F(DebugLogs, AreLeftAloneAtTheEndUnlessDebugIsOne) {
  for (int debug : {0, 2, -1}) {
    SCOPED_TRACE(debug);
    ResetImportRun();
    SetHostSetting(u"ZENTAL", u"debug", debug);
    ImportBody("<g/>");
    const int log = memfd_create("log", MFD_CLOEXEC);
    ASSERT_GE(log, 0);
    run.trace.TestLog = run.trace.ParseLog = run.trace.DiscioLog = run.trace.TraceHandle = log;
    CloseFile();
    EXPECT_EQ(lseek(log, 0, SEEK_END), 0);  // open still, with nothing in it
    EXPECT_EQ(run.trace.TraceFailed, 0u);
    close(log);
    run.trace = TraceLog();
  }
}

TEST_F(DebugLogs, StartWithTheLatchOff) {
  logs.Make();
  run.trace.TraceFailed = 1;
  ImportBody("<defs/>");
  EXPECT_EQ(logs.Read("discio.txt"), kOpeningLines + "KEY_ENDF\r\n");
}

TEST_F(DebugLogs, LoseTheLinesOfTheEndWhenTheTraceHasFailed) {
  logs.Make();
  ImportBody("<defs/>");
  run.trace.TraceFailed = 1;
  const int log = run.trace.DiscioLog;
  CloseFile();
  EXPECT_EQ(logs.Read("discio.txt"), kOpeningLines + "KEY_ENDF\r\n");
  EXPECT_EQ(fcntl(log, F_GETFD), -1);
}

TEST_F(DebugLogs, AreNotOpenedThroughALink) {
  logs.Make();
  const std::string target = folder + "target.txt";
  std::ofstream(target) << "precious";
  std::filesystem::create_symlink(target, logs.File("discio.txt"));
  ImportBody("<defs/>");
  CloseFile();
  std::ifstream file(target);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "precious");
}

TEST_F(DebugLogs, AreNotOpenedWhenTheDocumentIsRefused) {
  logs.Make();
  EXPECT_EQ(Check("<svg>"), 0);
  CloseFile();
  EXPECT_EQ(logs.CountOfFiles(), 0u);
}
