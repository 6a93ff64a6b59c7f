// The bench of all tests of the filter: a fresh host and a fresh run for each test, the operator machine fed by hand or whole
// documents imported, and every record shown as one short line.
//
// A line is the command's name without "KEY_", then its content:
//   FILL 255            a value, signed
//   WIDT 0.5            a width; "WIDT8 0.5" when the record's size is 8 and not 0
//   LINE 0,100 10,100   points of a segment; BEZI has four
//   PLYR 1 : 0,0 1,0 1,1!   flags, then the sides; "*" marks a curve side, "!" one that closes the outline
//   FDEF flat 1         flat fill and its scale; "FDEF linear ..." and "FDEF radial ..." show stops as colour@position
//   TSPY 127            uniform; "TSPY linear 0:100 99:50" shows markers as position:opacity
//   CLIP 1              with the size 4 that it must have; any other size is shown as "CLIP/size=N 1"
//   NFIL, NOTL, ...     colours as "rgb 1 2 3", "cmyk 0 0 0 1" or "none", with name and correction behind
//   NULL                a null record
// Numbers have at most ten digits; -0 shows as 0.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "headless_host/headless_host.h"
#include "headless_host/inspection.h"
#include "run/import_command.h"
#include "run/import_run.h"

using Lines = std::vector<std::string>;

std::string Describe(const ImportCommand& command);
std::string ShowNumber(double value);

class FilterTest : public testing::Test {
 protected:
  FilterTest();
  ~FilterTest() override;

  // --- The operator machine

  // As CheckFile leaves it, with these measures: by default one user unit is one host unit and y becomes 100 - y.
  void StartMachine(double docHeight = 100.0, double unitScale = 1.0);
  // Feeds one text and executes its operators. The text is ASCII.
  void Feed(std::string_view text);
  void FeedPushOnly(std::string_view text);
  // Takes all records off the queue. They stay readable through `commands` to the end of the test.
  Lines Drain();
  // StartMachine() if that has not been done, then Feed and Drain.
  Lines Run(std::string_view text);
  // The operand stack from the top: "Number 1", "String abc", "Array 1 2", "Name L", "LiteralName x".
  Lines Operands();

  // --- Whole documents

  // Writes the text into a file and calls CheckFile; returns what that returned.
  int Check(std::string_view document);
  // Calls CheckFile, which must succeed, and GetImportCommand up to KEY_ENDF. All records, the five opening ones included.
  Lines ImportAll(std::string_view document);
  // The same without the opening records and without KEY_ENDF.
  Lines Import(std::string_view document);
  // Imports a document with these elements in its root. One user unit is 0.1 host units, and y becomes 10 - y / 10, since the root says
  // width="1mm" height="100". The prefixes svg, xlink and inkscape are declared.
  Lines ImportBody(std::string_view elements);
  static std::string Document(std::string_view elements);
  // What a shape replays of an untouched frame, with the setting defaultWR at 1: WIDT 0, THST 0, OUTL 0, FILL 0, WRUL 1, LNST 0,
  // CNST 1.
  static Lines Replay();

  // The records of the last Drain or import, in the order of its lines.
  std::vector<ImportCommand> commands;
  // The record behind the line with this number, and its payload.
  template <class Payload>
  const Payload& PayloadOf(std::size_t line) const {
    return *static_cast<const Payload*>(commands.at(line).data);
  }

  // A folder of the test's own, removed at its end, with a "/" behind it.
  std::string folder;
  // The document of the last Check or import.
  std::string documentPath;

 private:
  void Release();

  bool started_ = false;
  std::vector<ImportCommand> unreleased_;
  HostLiveCounts before_;
};

// `lines` with those of `more` behind them.
Lines operator+(Lines lines, const Lines& more);
// How many lines begin with this text.
std::size_t CountOf(const Lines& lines, std::string_view start);
// The first line that begins with this text; the number of lines when there is none.
std::size_t FindLine(const Lines& lines, std::string_view start);
