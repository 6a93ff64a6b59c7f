#include "tests/support/filter_test.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "headless_host/inspection.h"
#include "operators/operator_machine.h"
#include "platform/narrow_text.h"
#include "run/entry_points.h"

namespace {

std::string Utf8(std::u16string_view text) { return Utf8FromWide(text); }

std::string Pair(double x, double y) { return ShowNumber(x) + ',' + ShowNumber(y); }

std::string ColourText(const ColourView& colour) {
  std::string text;
  if (colour.componentCount == 0) text = colour.id == 0xFFFFFFFF ? "none" : "empty";
  if (colour.componentCount == 3) text = "rgb";
  if (colour.componentCount == 4) text = "cmyk";
  for (int i = 0; i < colour.componentCount; ++i) text += ' ' + ShowNumber(colour.components[i]);
  if (colour.tint) text += " tint " + ShowNumber(*colour.tint);
  if (colour.name) text += " name " + Utf8(*colour.name);
  if (colour.correction != 0) text += " correction " + std::to_string(colour.correction);
  return text;
}

std::string FillText(const FillDefinition& fill) {
  if (fill.fillType == kFlatFill) return "flat " + ShowNumber(fill.fillScale);
  if (fill.fillType == kPatternFill) return "pattern";
  std::string text = fill.fillType == kLinearFill ? "linear" : fill.fillType == kRadialFill ? "radial" : "unknown";
  if (fill.gradient.gradientForm != 1) return text + " two colours";
  for (std::uint32_t i = 0; i < fill.gradient.stopCount; ++i) {
    text += ' ' + std::to_string(fill.gradient.stopColours[i]) + '@' + std::to_string(fill.gradient.stopPositions[i]);
  }
  return text;
}

std::string TransparencyText(const CQXTransparency& transparency) {
  const TransparencyView view = ViewTransparency(transparency);
  if (view.type == kUniformTransparency) return std::to_string(view.opacity);
  std::string text = view.type == kLinearTransparency ? "linear" : "radial";
  for (const CTransMarker& marker : view.markers) {
    text += ' ' + std::to_string(marker.position) + ':' + std::to_string(marker.opacity);
  }
  return text;
}

std::string PolygonText(const POLYGON& polygon) {
  std::string text = std::to_string(polygon.flags) + " :";
  for (const PolygonSide& side : ViewSides(polygon)) {
    text += ' ' + Pair(side.x, side.y);
    if (side.flags & kSideCurve) text += '*';
    if (side.flags & kSideCloses) text += '!';
  }
  return text;
}

std::string ParagraphText(const ParagraphRecord& record) {
  const auto view = ViewParagraph(record.paragraph);
  if (!view) return "unknown";
  std::string text;
  for (const TextRunView& run : view->runs) {
    if (!text.empty()) text += ' ';
    text += '"' + Utf8(run.text) + '"';
  }
  return text;
}

struct Form {
  std::uint32_t key;
  const char* name;
  std::uint32_t size;  // that the record must have
};

constexpr Form kValues[] = {
    {KEY_CNST, "CNST", 0}, {KEY_EGRP, "EGRP", 0}, {KEY_FILL, "FILL", 0}, {KEY_LNST, "LNST", 0}, {KEY_MLIM, "MLIM", 0},
    {KEY_WRUL, "WRUL", 0}, {KEY_OUTL, "OUTL", 0}, {KEY_SGRP, "SGRP", 0}, {KEY_CLIP, "CLIP", 4}, {KEY_DOCP, "DOCP", 4},
    {KEY_THST, "THST", 0}, {KEY_ECGR, "ECGR", 0}, {KEY_SCGR, "SCGR", 0},
};

std::string WithSize(const std::string& name, std::uint32_t size, std::uint32_t expected) {
  return size == expected ? name : name + "/size=" + std::to_string(size);
}

}  // namespace

std::string ShowNumber(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.10g", value == 0.0 ? 0.0 : value);
  return text;
}

std::string Describe(const ImportCommand& c) {
  for (const Form& form : kValues) {
    if (form.key == c.key) return WithSize(form.name, c.size, form.size) + ' ' + std::to_string(c.value);
  }
  switch (c.key) {
    case KEY_NULL:
      return WithSize("NULL", c.size, 0);
    case KEY_PATH:
      return WithSize("PATH", c.size, 0);
    case KEY_ENDP:
      return WithSize("ENDP", c.size, 0);
    case KEY_ENDF:
      return WithSize("ENDF", c.size, 0);
    case KEY_WIDT:
      return std::string(c.size == 8 ? "WIDT8" : WithSize("WIDT", c.size, 0)) + ' ' +
             ShowNumber(*static_cast<const double*>(c.data));
    case KEY_LINE: {
      const auto& line = *static_cast<const LineRecord*>(c.data);
      return WithSize("LINE", c.size, sizeof line) + ' ' + Pair(line.x0, line.y0) + ' ' + Pair(line.x1, line.y1);
    }
    case KEY_BEZI: {
      const auto& b = *static_cast<const BezierRecord*>(c.data);
      return WithSize("BEZI", c.size, sizeof b) + ' ' + Pair(b.x0, b.y0) + ' ' + Pair(b.x1, b.y1) + ' ' +
             Pair(b.x2, b.y2) + ' ' + Pair(b.x3, b.y3);
    }
    case KEY_PLYR:
      return WithSize("PLYR", c.size, sizeof(POLYGON)) + ' ' + PolygonText(*static_cast<const POLYGON*>(c.data));
    case KEY_FDEF:
      return WithSize("FDEF", c.size, sizeof(FillDefinition)) + ' ' + FillText(*static_cast<const FillDefinition*>(c.data));
    case KEY_PFDF:
      return WithSize("PFDF", c.size, sizeof(FillDefinition)) + ' ' + FillText(*static_cast<const FillDefinition*>(c.data));
    case KEY_PFOL:
      return WithSize("PFOL", c.size, sizeof(FillDefinition)) + ' ' + FillText(*static_cast<const FillDefinition*>(c.data));
    case KEY_TSPY:
      return WithSize("TSPY", c.size, 0) + ' ' + TransparencyText(*static_cast<const CQXTransparency*>(c.data));
    case KEY_PARA:
      return WithSize("PARA", c.size, sizeof(ParagraphRecord)) + ' ' +
             ParagraphText(*static_cast<const ParagraphRecord*>(c.data));
    case KEY_GNRC:
      return WithSize("GNRC", c.size, sizeof(GenericRecord));
    case KEY_NFIL:
      return WithSize("NFIL", c.size, 0) + ' ' + ColourText(ViewColour(*static_cast<const CQXFullColor*>(c.data)));
    case KEY_NOTL:
      return WithSize("NOTL", c.size, 0) + ' ' + ColourText(ViewColour(*static_cast<const CQXFullColor*>(c.data)));
    case KEY_LYOT:
      return WithSize("LYOT", c.size, 0) + ' ' + std::to_string(ViewOverPrint(*static_cast<const CQXOverPrint*>(c.data)).type);
    case KEY_LIOT:
      return WithSize("LIOT", c.size, 0) + ' ' + std::to_string(ViewOverPrint(*static_cast<const CQXOverPrint*>(c.data)).type);
    case KEY_SPFL:
      return WithSize("SPFL", c.size, 0);
    default:
      return "key " + std::to_string(c.key);
  }
}

FilterTest::FilterTest() {
  ResetHost();
  ResetImportRun();
  before_ = LiveCounts();
  std::string name = testing::TempDir() + "svgimport-XXXXXX";
  if (!mkdtemp(name.data())) std::abort();
  folder = name + "/";
}

// Whatever a test did, host and run end with nothing left of it.
FilterTest::~FilterTest() {
  Release();
  ResetImportRun();
  EXPECT_EQ(LiveCounts(), before_);
  std::filesystem::remove_all(folder);
}

void FilterTest::Release() {
  for (const ImportCommand& command : unreleased_) ReleaseCommand(command);
  unreleased_.clear();
}

void FilterTest::StartMachine(double docHeight, double unitScale) {
  PrepareOperatorMachine();
  run.DocHeight = docHeight;
  run.UnitScale = unitScale;
  started_ = true;
}

void FilterTest::Feed(std::string_view text) {
  if (!started_) StartMachine();
  FeedOperatorText(WideFromNarrow(text), kExecute);
}

void FilterTest::FeedPushOnly(std::string_view text) {
  if (!started_) StartMachine();
  FeedOperatorText(WideFromNarrow(text), kPushOnly);
}

Lines FilterTest::Drain() {
  Lines lines;
  commands.clear();
  while (run.commands.count > 0) {
    commands.push_back(PopCommand(run.commands));
    unreleased_.push_back(commands.back());
    lines.push_back(Describe(commands.back()));
  }
  return lines;
}

Lines FilterTest::Run(std::string_view text) {
  Feed(text);
  return Drain();
}

Lines FilterTest::Operands() {
  Lines lines;
  for (std::size_t i = 0; i < run.operands.size(); ++i) {
    const Operand& operand = run.operands.FromTop(i);
    std::string line;
    switch (operand.kind) {
      case OperandKind::Number:
        line = "Number " + ShowNumber(operand.number);
        break;
      case OperandKind::String:
        line = "String " + Utf8(TextOf(operand));
        break;
      case OperandKind::Array:
        line = "Array";
        for (double value : ValuesOf(operand)) line += ' ' + ShowNumber(value);
        break;
      case OperandKind::Name:
        line = "Name " + Utf8(TextOf(operand));
        break;
      case OperandKind::LiteralName:
        line = "LiteralName " + Utf8(TextOf(operand));
        break;
    }
    lines.push_back(line);
  }
  return lines;
}

int FilterTest::Check(std::string_view document) {
  documentPath = folder + "drawing.svg";
  std::ofstream(documentPath, std::ios::binary) << document;
  return CheckFile(0, 0, WideFromUtf8(documentPath).c_str());
}

Lines FilterTest::ImportAll(std::string_view document) {
  Lines lines;
  commands.clear();
  const int checked = Check(document);
  EXPECT_EQ(checked, 1);
  if (checked != 1) return lines;
  do {
    commands.push_back(GetImportCommand());
    unreleased_.push_back(commands.back());
    lines.push_back(Describe(commands.back()));
  } while (commands.back().key != KEY_ENDF);
  return lines;
}

Lines FilterTest::Import(std::string_view document) {
  Lines lines = ImportAll(document);
  const Lines opening = {"FILL 0", "FILL 0", "CNST 2", "MLIM 200", "WRUL 0"};
  EXPECT_GE(lines.size(), opening.size() + 1);
  if (lines.size() <= opening.size()) return lines;
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + 5), opening);
  EXPECT_EQ(lines.back(), "ENDF");
  commands.erase(commands.begin(), commands.begin() + 5);
  commands.pop_back();
  return Lines(lines.begin() + 5, lines.end() - 1);
}

std::string FilterTest::Document(std::string_view elements) {
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:svg=\"http://www.w3.org/2000/svg\" "
         "xmlns:xlink=\"http://www.w3.org/1999/xlink\" xmlns:inkscape=\"http://example.org/inkscape\" "
         "width=\"1mm\" height=\"100\">" +
         std::string(elements) + "</svg>";
}

Lines FilterTest::ImportBody(std::string_view elements) { return Import(Document(elements)); }

Lines FilterTest::Replay() { return {"WIDT 0", "THST 0", "OUTL 0", "FILL 0", "WRUL 1", "LNST 0", "CNST 1"}; }

Lines operator+(Lines lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

std::size_t CountOf(const Lines& lines, std::string_view start) {
  std::size_t count = 0;
  for (const std::string& line : lines) count += line.starts_with(start);
  return count;
}

std::size_t FindLine(const Lines& lines, std::string_view start) {
  std::size_t i = 0;
  while (i < lines.size() && !lines[i].starts_with(start)) ++i;
  return i;
}
