// The contract of every operator with the operand stack: what it takes, what it sends with all its operands there, and
// what becomes of it when they are missing or of a wrong kind. The work of the operators is tested by their own files.
#include <ostream>

#include "tests/support/filter_test.h"
#include "tests/support/machine_state.h"

namespace {

enum Short {
  kNoOperands,  // it takes none
  kNeedsAll,    // pops what there is and does nothing further
  kReadsZero,   // each missing operand is 0.0
};

struct Row {
  const char* token;
  std::vector<std::string> operands;  // as they stand in the text
  Short rule;
  Lines lines;             // with all operands there, those of the probe included
  const char* probe = "";  // a program fed behind the operator, where that leaves only state
  const char* setup = "";  // a program fed in front of it
  bool clears = false;     // it leaves the stack empty
  bool numbers = true;     // the operands are taken as numbers, whatever they are
};

void PrintTo(const Row& row, std::ostream* stream) { *stream << row.token; }

struct Outcome {
  Lines lines, operands;
  std::string state;
  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* stream) {
  *stream << testing::PrintToString(outcome.lines) << " leaving " << testing::PrintToString(outcome.operands) << ", "
          << outcome.state;
}

class OperatorRow : public FilterTest, public testing::WithParamInterface<Row> {
 protected:
  // A path is open, the pen is at 10, 20.
  void Begin() {
    ResetImportRun();
    StartMachine();
    Feed("10 20 M");
    Feed(GetParam().setup);
    Drain();
  }

  // What the operator does behind these operands. The probe follows once the operands left have been noted.
  Outcome Execute(const std::vector<std::string>& operands, const char* bottom = "") {
    Begin();
    FeedPushOnly(bottom);
    for (const std::string& operand : operands) FeedPushOnly(operand);
    Feed(GetParam().token);
    Outcome outcome;
    outcome.operands = Operands();
    outcome.state = MachineState();
    Feed(GetParam().probe);
    outcome.lines = Drain();
    return outcome;
  }
};

// An expected line that ends in "..." is the beginning of one.
void ExpectLines(const Lines& actual, const Lines& expected) {
  EXPECT_EQ(actual.size(), expected.size()) << testing::PrintToString(actual);
  for (std::size_t i = 0; i < std::min(actual.size(), expected.size()); ++i) {
    if (expected[i].ends_with("...")) {
      EXPECT_TRUE(actual[i].starts_with(expected[i].substr(0, expected[i].size() - 3))) << actual[i];
    } else {
      EXPECT_EQ(actual[i], expected[i]);
    }
  }
}

TEST_P(OperatorRow, TakesItsOperandsAndNoMore) {
  const Outcome outcome = Execute(GetParam().operands, "77");
  ExpectLines(outcome.lines, GetParam().lines);
  EXPECT_EQ(outcome.operands, GetParam().clears ? Lines() : Lines({"Number 77"}));
}

TEST_P(OperatorRow, WorksWithNothingBelowItsOperands) {
  const Outcome outcome = Execute(GetParam().operands);
  ExpectLines(outcome.lines, GetParam().lines);
  EXPECT_EQ(outcome.operands, Lines());
}

TEST_P(OperatorRow, CopesWithMissingOperands) {
  const std::vector<std::string>& all = GetParam().operands;
  for (std::size_t missing = 1; missing <= all.size(); ++missing) {
    SCOPED_TRACE("missing: " + std::to_string(missing));
    const std::vector<std::string> present(all.begin() + static_cast<std::ptrdiff_t>(missing), all.end());
    if (GetParam().rule == kReadsZero) {
      std::vector<std::string> zeros(missing, "0");
      zeros.insert(zeros.end(), present.begin(), present.end());
      EXPECT_EQ(Execute(present), Execute(zeros));
      continue;
    }
    Begin();
    const std::string before = MachineState();
    for (const std::string& operand : present) FeedPushOnly(operand);
    Feed(GetParam().token);
    EXPECT_EQ(Drain(), Lines());
    EXPECT_EQ(Operands(), Lines());
    // The one thing that a curve changes before its operands are counted.
    if (std::string_view(GetParam().token).find_first_of("Cc") != std::string_view::npos) {
      run.path.lastControl = {10, 20};
    }
    EXPECT_EQ(MachineState(), before);
  }
}

// A text, a literal name, an array without numbers and an empty name all read as 0.0.
TEST_P(OperatorRow, ReadsOtherKindsAsNumbers) {
  if (!GetParam().numbers) return;
  const std::vector<std::string>& all = GetParam().operands;
  for (std::size_t i = 0; i < all.size(); ++i) {
    std::vector<std::string> operands = all;
    operands[i] = "0";
    const Outcome zero = Execute(operands, "77");
    for (const char* other : {"(9)", "/9", "[]", "-"}) {
      SCOPED_TRACE("operand " + std::to_string(i) + " is " + other);
      operands[i] = other;
      EXPECT_EQ(Execute(operands, "77"), zero);
    }
  }
}

std::string TestName(const testing::TestParamInfo<Row>& info) {
  std::string name;
  for (const char c : std::string_view(info.param.token)) {
    if (c == '@') {
      name += "At";
    } else if (c == '*') {
      name += "Star";
    } else if (c >= 'a' && c <= 'z') {
      name += c;
    } else if (c >= 'A' && c <= 'Z') {
      // Test names may be told apart without their case by the tools that run them.
      name += std::string("Big") + c;
    } else if (c != ' ') {
      name += c;
    }
  }
  return name;
}

const Lines kFlatEnd = {"ENDP", "FDEF flat 1"};

// The paint colours of an untouched frame are four inks of 0.
const Lines kFilled = Lines{"NFIL cmyk 0 0 0 0", "NOTL none"} + kFlatEnd;
const Lines kStroked = Lines{"NFIL none", "NOTL cmyk 0 0 0 0"} + kFlatEnd;
const Lines kFilledAndStroked = Lines{"NFIL cmyk 0 0 0 0", "NOTL cmyk 0 0 0 0"} + kFlatEnd;
const Lines kCloses = {"LINE 15,80 10,80"};

INSTANTIATE_TEST_SUITE_P(
    PathConstruction, OperatorRow,
    testing::Values(Row{"M", {"1", "2"}, kNeedsAll, {"LINE 1,98 3,96"}, " 3 4 L"},
                    Row{"m", {"1", "2"}, kNeedsAll, {"LINE 11,78 3,96"}, " 3 4 L"},
                    Row{"wMt", {"1", "2"}, kNeedsAll, {"LINE 1,98 3,96"}, " 3 4 L"},
                    Row{"L", {"3", "4"}, kNeedsAll, {"LINE 10,80 3,96"}},    //
                    Row{"l", {"3", "4"}, kNeedsAll, {"LINE 10,80 13,76"}},   //
                    Row{"wLt", {"3", "4"}, kNeedsAll, {"LINE 10,80 3,96"}},  //
                    Row{"H", {"3"}, kReadsZero, {"LINE 10,80 3,80"}},        //
                    Row{"h", {"3"}, kReadsZero, {"LINE 10,80 13,80"}},       //
                    Row{"V", {"3"}, kReadsZero, {"LINE 10,80 10,97"}},       //
                    Row{"v", {"3"}, kReadsZero, {"LINE 10,80 10,77"}},       //
                    Row{"C", {"1", "2", "3", "4", "5", "6"}, kNeedsAll, {"BEZI 10,80 1,98 3,96 5,94"}},
                    Row{"c", {"1", "2", "3", "4", "5", "6"}, kNeedsAll, {"BEZI 10,80 11,78 13,76 15,74"}},
                    Row{"wCto", {"1", "2", "3", "4", "5", "6"}, kNeedsAll, {"BEZI 10,80 1,98 3,96 5,94"}},
                    Row{"Sc", {"3", "4", "5", "6"}, kNeedsAll, {"BEZI 10,80 10,80 3,96 5,94"}},
                    Row{"sc", {"3", "4", "5", "6"}, kNeedsAll, {"BEZI 10,80 10,80 13,76 15,74"}},
                    // A polygon of length 5 + 5, which is one step.
                    Row{"Q", {"13", "24", "16", "28"}, kReadsZero, {"LINE 10,80 16,72"}},
                    Row{"q", {"3", "4", "6", "8"}, kReadsZero, {"LINE 10,80 16,72"}},
                    // The mirrored control is the pen: the controls lie one third of the way to the pen and to the end.
                    Row{"Tp", {"13", "23"}, kReadsZero, {"BEZI 10,80 10,80 11,79 13,77"}},
                    Row{"tp", {"3", "3"}, kReadsZero, {"BEZI 10,80 10,80 11,79 13,77"}},
                    // Its coordinates are not flipped.
                    Row{"Y", {"1", "2", "5", "6"}, kNeedsAll, {"BEZI 10,20 1,2 5,6 5,6"}},
                    Row{"y", {"1", "2", "5", "6"}, kNeedsAll, {"BEZI 10,20 1,2 5,6 5,6"}},
                    Row{"A", {"5", "5", "0", "0", "1", "20", "20"}, kNeedsAll, {"PLYR 3 : 10,80* ...", "NULL"}},
                    Row{"a", {"5", "5", "0", "0", "1", "10", "0"}, kNeedsAll, {"PLYR 3 : 10,80* ...", "NULL"}},
                    Row{"Z", {}, kNoOperands, kCloses, "", " 15 20 L"},    //
                    Row{"z", {}, kNoOperands, kCloses, "", " 15 20 L"},    //
                    Row{"@c", {}, kNoOperands, kCloses, "", " 15 20 L"},   //
                    Row{"wCp", {}, kNoOperands, kCloses, "", " 15 20 L"},  //
                    Row{"Z2", {}, kNoOperands, {"LINE 10.04,80 10,80"}, "", " 10.04 20 L"},
                    Row{"z2", {}, kNoOperands, {"LINE 10.04,80 10,80"}, "", " 10.04 20 L"}),
    TestName);

// An ellipse of no size: 37 samples in one place.
std::string Dot() {
  std::string line = "PLYR 3 :";
  for (int i = 0; i < 37; ++i) line += " 1,98*";
  return line;
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, OperatorRow,
    testing::Values(Row{"rect", {"4", "2", "1", "2", "0", "0"}, kReadsZero, {"PLYR 1 : 5,96 5,98 1,98 1,96"}},
                    Row{"E", {"1", "2", "0", "0"}, kReadsZero, {Dot()}},
                    Row{"wE", {"1", "2", "0", "0"}, kReadsZero, {Dot()}},
                    Row{"circle", {"1", "2", "0"}, kReadsZero, {Dot()}}),
    TestName);

INSTANTIATE_TEST_SUITE_P(Painting, OperatorRow,
                         testing::Values(Row{"f", {}, kNoOperands, kCloses + kFilled, "", " 15 20 L"},
                                         Row{"F", {}, kNoOperands, kCloses + kFilled, "", " 15 20 L"},
                                         Row{"fill", {}, kNoOperands, kCloses + kFilled, "", " 15 20 L"},
                                         Row{"Fillp", {}, kNoOperands, kCloses + kFilled, "", " 15 20 L"},
                                         Row{"S", {}, kNoOperands, kStroked, "", " 15 20 L"},
                                         Row{"s", {}, kNoOperands, kCloses + kStroked, "", " 15 20 L"},
                                         Row{"@", {}, kNoOperands, kCloses + kStroked, "", " 15 20 L"},
                                         Row{"B", {}, kNoOperands, kFilledAndStroked, "", " 15 20 L"},
                                         Row{"Pa", {}, kNoOperands, kFilledAndStroked, "", " 15 20 L"},
                                         Row{"@B", {}, kNoOperands, kFilledAndStroked, "", " 15 20 L"},
                                         Row{"b", {}, kNoOperands, kCloses + kFilledAndStroked, "", " 15 20 L"},
                                         Row{"@b", {}, kNoOperands, kCloses + kFilledAndStroked, "", " 15 20 L"},
                                         // The path is no longer open, so that a stroke finds none to end.
                                         Row{"N", {}, kNoOperands, {"NFIL none", "NOTL cmyk 0 0 0 0"}, " S"},
                                         Row{"n", {}, kNoOperands, {"NFIL none", "NOTL cmyk 0 0 0 0"}, " S"},
                                         Row{"newpath", {}, kNoOperands, {"NFIL none", "NOTL cmyk 0 0 0 0"}, " S"},
                                         Row{"*u", {}, kNoOperands, {}, " S"},  //
                                         Row{"*U", {}, kNoOperands, kStroked, "", " *u S"}),
                         TestName);

const Lines kCut = kFlatEnd + Lines{"SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1",
                                    "CLIP 0", "DOCP 1",  "THST 3", "WIDT8 0", "FILL 0",  "OUTL 0"};

INSTANTIATE_TEST_SUITE_P(
    ClippingAndState, OperatorRow,
    testing::Values(Row{"W", {}, kNoOperands, kCut, "", " gs"},   //
                    Row{"W*", {}, kNoOperands, kCut, "", " gs"},  //
                    Row{"wclip", {}, kNoOperands, kFlatEnd + Lines{"CLIP 0", "DOCP 1"}, "", "", true},
                    Row{"XXX", {}, kNoOperands, {"DOCP 1"}, "", " gs W"},
                    // A pop shows that there was a push: it drops the matrix.
                    Row{"gs", {}, kNoOperands, {"LINE 0,100 1,100"}, " 3 4 tr gr 0 0 M 1 0 L"},
                    Row{"gr", {}, kNoOperands, {"LINE 0,100 1,100"}, " 0 0 M 1 0 L", " gs 3 4 tr", true},
                    Row{"@rax", {}, kNoOperands, {"LINE 0,100 1,100"}, " 0 0 M 1 0 L", " gs 3 4 tr"},
                    Row{"tr", {"3", "4"}, kNeedsAll, {"LINE 3,96 4,96"}, " 0 0 M 1 0 L"},
                    Row{"wTl", {"3", "4"}, kNeedsAll, {"LINE 3,96 4,96"}, " 0 0 M 1 0 L"},
                    Row{"@sv", {}, kNoOperands, {"LINE 3,96 4,96"}, " 1 1 tr @rs 0 0 M 1 0 L", " 3 4 tr"},
                    Row{"wSav", {}, kNoOperands, {"LINE 3,96 4,96"}, " 1 1 tr @rs 0 0 M 1 0 L", " 3 4 tr"},
                    Row{"@rs", {}, kNoOperands, {"LINE 0,100 1,100"}, " 0 0 M 1 0 L", " @sv 3 4 tr"},
                    Row{"wRe", {}, kNoOperands, {"LINE 0,100 1,100"}, " 0 0 M 1 0 L", " @sv 3 4 tr"},
                    Row{"wDocm", {}, kNoOperands, {"LINE 0,100 1,100"}, " 0 0 M 1 0 L", " @sv 3 4 tr"},
                    Row{"u", {}, kNoOperands, {"SGRP 1"}}, Row{"U", {}, kNoOperands, {"EGRP 1"}, "", " u"}),
    TestName);

Lines FilledWith(const std::string& colour) { return Lines{"NFIL " + colour, "NOTL none"} + kFlatEnd; }
Lines StrokedWith(const std::string& colour) { return Lines{"NFIL none", "NOTL " + colour} + kFlatEnd; }

// Components as 0.2, 0.4, 0.6 on a scale of 255: 51, 102, 153.
INSTANTIATE_TEST_SUITE_P(
    Colours, OperatorRow,
    testing::Values(Row{"g", {"0.25"}, kNeedsAll, FilledWith("cmyk 0 0 0 0.75"), " f"},
                    Row{"wSg", {"0.25"}, kReadsZero, FilledWith("cmyk 0 0 0 0.75"), " f"},
                    Row{"G", {"0.25"}, kNeedsAll, StrokedWith("cmyk 0 0 0 0.75"), " S"},
                    Row{"k", {"0.1", "0.2", "0.3", "0.4"}, kReadsZero, FilledWith("cmyk 0.1 0.2 0.3 0.4"), " f"},
                    Row{"wCM", {"0.1", "0.2", "0.3", "0.4"}, kReadsZero, FilledWith("cmyk 0.1 0.2 0.3 0.4"), " f"},
                    Row{"K", {"0.1", "0.2", "0.3", "0.4"}, kReadsZero, StrokedWith("cmyk 0.1 0.2 0.3 0.4"), " S"},
                    Row{"wSr", {"0.2", "0.4", "0.6"}, kReadsZero, FilledWith("rgb 51 102 153"), " f"},
                    Row{"Xa", {"0.2", "0.4", "0.6"}, kReadsZero, FilledWith("rgb 51 102 153"), " f"},
                    Row{"XA", {"0.2", "0.4", "0.6"}, kReadsZero, StrokedWith("rgb 51 102 153"), " S"},
                    Row{"RG", {"0.2", "0.4", "0.6"}, kReadsZero, StrokedWith("rgb 51 102 153"), " S"},
                    // The factor is 1 - 0.5.
                    Row{"X",
                        {"0.2", "0.4", "0.6", "0.8", "(Moss)", "0.5"},
                        kReadsZero,
                        StrokedWith("cmyk 0.1 0.2 0.3 0.4 name Moss correction 5"),
                        " S",
                        "",
                        false,
                        false},
                    // (1 - r) * 0.5 and so on.
                    Row{"XX",
                        {"0.2", "0.4", "0.6", "(Moss)", "9", "0.5"},
                        kReadsZero,
                        StrokedWith("cmyk 0.4 0.3 0.2 0 name Moss correction 5"),
                        " S",
                        "",
                        false,
                        false},
                    Row{"@g", {}, kNoOperands, Lines{"NFIL cmyk 0 0 0 0", "NOTL none"}, " 1 2 3 x"},
                    Row{"O", {"1"}, kReadsZero, {"LYOT 1"}},                        //
                    Row{"R", {"1"}, kReadsZero, {"LIOT 1"}},                        //
                    Row{"w", {"2"}, kNeedsAll, {"WIDT 2"}},                         //
                    Row{"wPn", {"2", "8", "9"}, kReadsZero, {"WIDT 4"}},            // the square root of 2 * 8
                    Row{"J", {"1"}, kReadsZero, {"LNST 2"}},                        //
                    Row{"j", {"1"}, kReadsZero, {"CNST 0"}},                        //
                    Row{"d", {"[1 2]", "3"}, kNeedsAll, {}, "", "", false, false},  //
                    Row{"i", {"3"}, kNeedsAll, {}},                                 //
                    Row{"Xh", {"[1 0 0 1 0 0]", "3", "4"}, kNeedsAll, {}, "", "", false, false}),
    TestName);

INSTANTIATE_TEST_SUITE_P(
    Gradients, OperatorRow,
    testing::Values(Row{"@k", {"1", "2", "3", "4", "0"}, kReadsZero, {"FILL 0", "FDEF linear", "TSPY linear"}},
                    // The blank table of named gradients has a blank name in its first entry, which is linear.
                    Row{"Xm", {"1", "0", "0", "1", "5", "6"}, kReadsZero, {"FILL 0", "FDEF linear two colours"}},
                    Row{"Bm", {}, kNoOperands, {}, "", "", true},
                    Row{"BB", {}, kNoOperands, {"FDEF flat 0"}, "", "", true}),
    TestName);

// --- Operators that look at kinds, or whose shortness has a rule of its own

class OperatorOperands : public FilterTest {
 protected:
  // The colour of the fill object that the program leads to.
  std::string FillOf(std::string_view program) {
    ResetImportRun();
    StartMachine();
    Feed(program);
    Feed(" @g 0 0 M f");
    const Lines lines = Drain();
    EXPECT_EQ(Operands(), Lines());
    const std::size_t i = FindLine(lines, "NFIL ");
    return i < lines.size() ? lines[i].substr(5) : "missing";
  }
};

TEST_F(OperatorOperands, AverageFillTakesASecondSetAsFarAsItIsThere) {
  EXPECT_EQ(FillOf("0.5 0.6 0.7 0.8 0.1 0.2 0.3 0.4 9 wFt"), "cmyk 0.3 0.4 0.5 0.6");
  EXPECT_EQ(FillOf("0.6 0.7 0.8 0.1 0.2 0.3 0.4 9 wFt"), "cmyk 0.1 0.4 0.5 0.6");
  EXPECT_EQ(FillOf("0.8 0.1 0.2 0.3 0.4 9 wFt"), "cmyk 0.1 0.2 0.3 0.6");
  EXPECT_EQ(FillOf("0.1 0.2 0.3 0.4 9 wFt"), "cmyk 0.1 0.2 0.3 0.4");
  EXPECT_EQ(FillOf("0.2 0.3 0.4 9 wFt"), "cmyk 0 0.2 0.3 0.4");
  EXPECT_EQ(FillOf("9 wFt"), "cmyk 0 0 0 0");
  EXPECT_EQ(FillOf("wFt"), "cmyk 0 0 0 0");
  EXPECT_EQ(FillOf("(a) 0.6 0.7 0.8 0.1 0.2 [] 0.4 /d wFt"), "cmyk 0.05 0.4 0.35 0.6");
}

// With one operand alone that is the factor itself, and red, green and blue are 0.
TEST_F(OperatorOperands, NamedRgbFillReadsItsFactorFromTheSecondOperand) {
  EXPECT_EQ(FillOf("0.2 0.4 0.6 (Moss) 0.5 9 Xx"), "cmyk 0.4 0.3 0.2 0 name Moss correction 5");
  EXPECT_EQ(FillOf("0.6 (Moss) 0.5 9 Xx"), "cmyk 0.5 0.5 0.2 0 name Moss correction 5");
  EXPECT_EQ(FillOf("0.75 9 Xx"), "cmyk 0.25 0.25 0.25 0");
  EXPECT_EQ(FillOf("0.25 Xx"), "cmyk 0.25 0.25 0.25 0");
  EXPECT_EQ(FillOf("Xx"), "cmyk 0 0 0 0");
}

TEST_F(OperatorOperands, NamedFillPopsNothingBelowSixOperands) {
  const Lines painted = {"NFIL cmyk 0 0 0 0", "NOTL none"};
  EXPECT_EQ(Run("0.1 0.2 0.3 (n) 0.5 x"), painted);
  EXPECT_EQ(run.operands.size(), 5u);
  ClearOperands();
  EXPECT_EQ(Run("x"), painted);
  EXPECT_EQ(Run("7 0.2 0.4 0.6 0.8 (n) 0.5 x"), Lines({"NFIL cmyk 0.1 0.2 0.3 0.4 name n correction 5", "NOTL none"}));
  EXPECT_EQ(Operands(), Lines({"Number 7"}));
}

// An ink that is no number is 1.0, and a name that is no text is none.
TEST_F(OperatorOperands, NamedFillLooksAtKinds) {
  EXPECT_EQ(Run("(a) /b [1] 0.8 (n) 0.5 x"), Lines({"NFIL cmyk 0.5 0.5 0.5 0.4 name n correction 5", "NOTL none"}));
  ResetImportRun();
  StartMachine();
  EXPECT_EQ(Run("0.2 0.4 0.6 0.8 /n 0.5 x"), Lines({"NFIL cmyk 0.1 0.2 0.3 0.4", "NOTL none"}));
}

TEST_F(OperatorOperands, MeanNamedFillDropsFiveAndNeedsSix) {
  EXPECT_EQ(FillOf("0.2 0.4 0.6 0.8 (n) 0.5 1 2 3 4 5 @x"), "cmyk 0.1 0.2 0.3 0.4 name n correction 5");
  StartMachine();
  EXPECT_EQ(Run("0.4 0.6 0.8 (n) 0.5 1 2 3 4 5 @x"), Lines());
  EXPECT_EQ(run.operands.size(), 5u);
}

TEST_F(OperatorOperands, ColourTableRowWantsALiteralName) {
  EXPECT_EQ(Run("7 /3 get_csd"), Lines());
  ASSERT_EQ(ShownMessages().size(), 1u);
  EXPECT_EQ(ShownMessages()[0].text, u"CSD error");
  EXPECT_EQ(ShownMessages()[0].caption, u"error");
  EXPECT_EQ(Operands(), Lines({"Number 7"}));
  for (const char* program : {"3 get_csd", "(3) get_csd", "[3] get_csd", "- get_csd"}) {
    SCOPED_TRACE(program);
    Feed(program);
    EXPECT_EQ(Operands(), Lines({"Number 7"}));
    EXPECT_EQ(ShownMessages().size(), 1u);
  }
  ClearOperands();
  Feed("get_csd");
  EXPECT_EQ(ShownMessages().size(), 1u);
}

TEST_F(OperatorOperands, WidthOfMatrixTakesFourNumbersOrAnArrayAmongThem) {
  // flag sx sy angle, no array: sqrt(2 * 8).
  EXPECT_EQ(Run("7 0 2 8 0 @w"), Lines({"WIDT8 4"}));
  EXPECT_EQ(Operands(), Lines({"Number 7"}));
  // array flag sx sy angle: each axis doubled.
  EXPECT_EQ(Run("[2 0 0 2 0 0] 1 2 8 0 @w"), Lines({"WIDT8 8"}));
  EXPECT_EQ(Operands(), Lines({"Number 7"}));
  // sx sy angle array flag.
  EXPECT_EQ(Run("2 8 0 [2 0 0 2 0 0] 1 @w"), Lines({"WIDT8 8"}));
  EXPECT_EQ(Operands(), Lines({"Number 7"}));
  ClearOperands();
  EXPECT_EQ(Run("5 @w"), Lines());
  EXPECT_EQ(Run("@w"), Lines());
  EXPECT_EQ(Operands(), Lines());
}

TEST_F(OperatorOperands, GradientReadsTheRadialFormByItsKind) {
  EXPECT_EQ(Run("7 10 20 1 2 5 1 @k"), Lines({"FILL 0", "FDEF radial", "TSPY radial"}));
  EXPECT_EQ(Operands(), Lines({"Number 7"}));
}

// Whatever the operators left or failed to take, the stack is empty behind them.
TEST_F(OperatorOperands, StackIsClearedBehindImagesAndNamedGradients) {
  for (const char* program :
       {"1 (two) 3 4 5 6 7 8 9 10 11 12 13 14 image", "image", "1 image", "(none.png) 1 2 3 4 image",
        "1 2 3 4 5 6 7 8 9 10 11 12 13 14 Bg", "Bg", "1 Bg", "1 2 3 4 5 6 7 8 Bm", "(two) [3] BB", "(two) [3] wclip"}) {
    SCOPED_TRACE(program);
    Feed(program);
    EXPECT_EQ(Operands(), Lines());
    Drain();
  }
}

TEST_F(OperatorOperands, FailedImageSendsNothingAndStillClears) {
  EXPECT_EQ(Run("1 2 (none.png) 10 10 0 0 image"), Lines());
  EXPECT_EQ(Operands(), Lines());
}

TEST_F(OperatorOperands, NamedGradientMatrixOfAnUnknownNameTakesNothing) {
  StartMachine();
  run.paint.placement.gradientName = u"unknown";
  EXPECT_EQ(Run("1 0 0 1 5 6 Xm"), Lines());
  EXPECT_EQ(run.operands.size(), 6u);
}

TEST_F(OperatorOperands, PatternImageTakesNineOperands) {
  EXPECT_EQ(Run("7 1 2 3 4 (tile.png) 50 60 0 0 pfimg"), Lines({"PFDF pattern", "PFOL pattern"}));
  EXPECT_EQ(Operands(), Lines({"Number 7"}));
  ClearOperands();
  EXPECT_EQ(Run("50 60 0 0 pf"), Lines({"PFDF pattern", "PFOL pattern"}));
  EXPECT_EQ(Run("pf"), Lines({"PFDF pattern", "PFOL pattern"}));
}

TEST_F(OperatorOperands, ColoursReadASecondSetWhenTheTextHasEightTokens) {
  EXPECT_EQ(FillOf("0.1 0.2 0.3 0.4 0.5 0.6 0.7 Xa"), "cmyk 0.1 0.2 0.3 0.4");
  for (const char* token : {"XA", "RG"}) {
    ResetImportRun();
    StartMachine();
    Feed("0.1 0.2 0.3 0.4 0.5 0.6 0.7 " + std::string(token));
    EXPECT_EQ(Operands(), Lines());
    EXPECT_EQ(FindLine(Run(" 0 0 M S"), "NOTL cmyk 0.1 0.2 0.3 0.4"), 2u);
  }
  // Seven numbers that came with an earlier text do not count.
  StartMachine();
  FeedPushOnly("0.1 0.2 0.3 0.4 0.5 0.6 0.7");
  Feed(" Xa");
  EXPECT_EQ(run.operands.size(), 4u);
}

// The count of an array in the low 32 bits of a double is next to nothing, but not zero.
TEST_F(OperatorOperands, ArrayReadAsANumberIsItsCount) {
  Feed("[7 8 9] 5 M");
  EXPECT_EQ(run.path.userCurrent.x, 3 * 4.9406564584124654e-324);
  Drain();
}

}  // namespace
