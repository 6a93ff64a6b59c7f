#include "text/paragraph.h"

#include <cmath>
#include <cstring>

#include "host/application.h"
#include "host/composer.h"
#include "host/font_manager.h"
#include "host/settings.h"
#include "run/command_queue.h"
#include "run/host_memory.h"
#include "run/import_run.h"
#include "run/number_text.h"

using namespace std::string_view_literals;

namespace {

constexpr std::int32_t kMeasure = 1300;
constexpr std::int32_t kFullScale = 1000;
constexpr std::uint32_t kOpenLineMode = 0xFF00;
constexpr std::uint32_t kLineModeByte = 0xFF;
constexpr std::uint32_t kLineModeBit = 1u << 8;
constexpr unsigned kErrorBox = 0x2010;
constexpr double kRadiansPerDegree = 0.01745329252;
constexpr std::int32_t kFixedFontClass = 2;  // its code is not taken over

enum Justification { kLeft = 0, kRight = 1, kCentre = 2 };

double ThousandthsOfInch(double hostUnits) { return hostUnits / 2.54 * 1000.0; }

double SinglePrecision(double value) { return static_cast<float>(value); }

CharacterState& Character() { return *GetCurrentParagraphStatusAddress()->character; }

void Fail() {
  TMessageBox(nullptr, u"(*v*)Importing DXF failed!", nullptr, kErrorBox);
  PushCommand(KEY_NULL);
}

void Justify(const ParagraphStatus& status) {
  const std::int32_t anchor = run.text.TextAnchor;
  if (anchor == 0) return;
  const Justification value = anchor == 2 ? kCentre : anchor == 3 ? kRight : kLeft;
  SetTextLineJustification(status.paragraphInfo, status.lines, value);
}

// The rotation about the anchor. No element has one, so that this is the identity.
TM Placement(double degrees) {
  const TextState& text = run.text;
  const double c = std::cos(degrees * kRadiansPerDegree);
  const double s = std::sin(degrees * kRadiansPerDegree);
  return {c, s, -s, c, text.TextX - text.TextX * c + text.TextY * s, text.TextY - text.TextY * c - text.TextX * s};
}

// True when the font manager has made the font available.
bool RequestFont(std::uint8_t kind, std::u16string_view name) {
  FontRequest request;
  std::memset(&request, 0, sizeof request);
  request.kind = kind;
  name = name.substr(0, std::size(request.name) - 1);
  std::memcpy(reinterpret_cast<unsigned char*>(&request) + offsetof(FontRequest, name), name.data(),
              name.size() * sizeof(char16_t));
  request.option = 256;
  return run.fontManager.link &&
         run.fontManager.link->iface->Operation11(reinterpret_cast<std::uintptr_t>(&request)) == 0;
}

// "Name Regular" without the blank and "Regular"; false when the name has no such end.
bool CutRegular() {
  constexpr std::size_t kCut = 8;
  constexpr std::u16string_view kRegu = u"Regu";
  TextState& text = run.text;
  const std::u16string_view name(text.FontName);
  if (name.size() <= kCut || name.substr(name.size() - kCut + 1, kRegu.size()) != kRegu) return false;
  text.FontName[name.size() - kCut] = 0;
  return true;
}

// The steps from the asked name to some font; null when there is none. `replacedId` is written only by a replacement.
FontRecord* SearchFont(std::uint32_t* replacedId) {
  const char16_t* name = run.text.FontName;
  FontRecord* font = AddFont(0, 2, name, 0, 0);
  if (!font && CutRegular()) font = AddFont(0, 2, name, 0, 0);
  if (!font && run.FontManagerLinked && RequestFont(2, name)) font = AddFont(0, 3, name, 0, 0);
  if (!font && run.FontManagerLinked && RequestFont(4, name)) font = AddFont(0, 1, name, 0, 0);
  if (font) return font;
  CFontReplacement* replacement = run.FontReplacementObject.get();
  if (!replacement) return AddFont(Character().fontCode, 2, name, 0, 1);
  font = ChooseReplacementFont(replacement, name, -1, -1);
  if (font) *replacedId = GetReplacedFontID(name, -1, -1, font);
  return font;
}

// The decimal number of the kept text; "x" makes it a factor.
void ChangeHeight(std::u16string_view kept) {
  double& size = run.text.FontSize;
  const double value = LeadingNumber(kept);
  if (kept.find(u'x') != kept.npos) {
    size = size * value;
  } else {
    size = (1000.0 / (2.54 / run.UnitScale)) * value;
  }
}

// The pasted text on its way: gathered, and handed over whenever font or height change.
class RunBuffer {
 public:
  explicit RunBuffer(std::size_t units) : units_(static_cast<char16_t*>(AllocateHost(units * 2 + 20))) {}
  ~RunBuffer() { FreeHost(units_); }
  RunBuffer(const RunBuffer&) = delete;
  RunBuffer& operator=(const RunBuffer&) = delete;

  void Push(char16_t unit) { units_[count_++] = unit; }
  void Append(std::u16string_view text) {
    text.copy(units_ + count_, text.size());
    count_ += static_cast<int>(text.size());
  }
  int count() const { return count_; }
  void Paste() {
    units_[count_] = 0;
    edPasteString(units_, count_, 2, nullptr, false);
  }
  void Flush() {
    if (count_ > 0) Paste();
    count_ = 0;
  }

 private:
  char16_t* units_;
  int count_ = 0;
};

// Walks the text and carries its inline codes out.
class RunWriter {
 public:
  RunWriter(std::u16string_view text, RunBuffer& out) : text_(text), out_(out) {}
  // Ends at the end of the text or at the first "}".
  void Walk();
  // What is left of the text, from its "}" on.
  std::u16string_view Rest() const { return text_.substr(i_); }

 private:
  static bool IsSpecial(char16_t c) { return c == u'\\' || c == u'%' || c == u'{' || c == u'}'; }
  char16_t At(std::size_t i) const { return i < text_.size() ? text_[i] : u'\0'; }
  void Copy(char16_t unit) {
    if (unit != 0) out_.Push(unit);
  }
  void Backslash();
  void Percent();
  void Height();
  void Font();
  // To the ";" or the end.
  void SkipToSemicolon() {
    while (At(i_) != 0 && At(i_) != u';') ++i_;
  }
  void Drop() {
    SkipToSemicolon();
    if (At(i_) == u';') ++i_;
  }

  std::u16string_view text_;
  RunBuffer& out_;
  std::size_t i_ = 0;
};

void RunWriter::Walk() {
  while (true) {
    const std::size_t first = i_;
    while (i_ < text_.size() && !IsSpecial(text_[i_])) ++i_;
    out_.Append(text_.substr(first, i_ - first));
    if (i_ == text_.size() || text_[i_] == u'}') return;
    const char16_t c = text_[i_];
    if (c == u'\\') {
      Backslash();
    } else if (c == u'%' && At(i_ + 1) == u'%') {
      Percent();
    } else {
      if (c != u'{') out_.Push(c);
      ++i_;
    }
  }
}

void RunWriter::Percent() {
  const char16_t c = At(i_ + 2);
  Copy(c == u'c' || c == u'C'   ? char16_t{248}
       : c == u'd' || c == u'D' ? char16_t{176}
       : c == u'p' || c == u'P' ? char16_t{177}
                                : c);
  i_ = std::min(i_ + 3, text_.size());
}

void RunWriter::Backslash() {
  const char16_t c = At(i_ + 1);
  i_ = std::min(i_ + 2, text_.size());
  switch (c) {
    case u'P':
      out_.Push(u'\r');
      out_.Push(u'\n');
      break;
    case u'C':
      // What stands behind the ";" is copied as it stands, also a code.
      Drop();
      Copy(At(i_));
      if (i_ < text_.size()) ++i_;
      break;
    case u'H':
      Height();
      break;
    case u'p':
      if (At(i_) == u'i') {
        Drop();
      } else {
        out_.Push(c);
      }
      break;
    case u'A':
    case u'W':
    case u'T':
      Drop();
      break;
    case u'L':
    case u'l':
    case u'O':
    case u'o':
      break;
    case u'F':
    case u'f':
      Font();
      break;
    case u'u':
      run.text.UnicodeSeen = true;
      out_.Push(c);
      break;
    default:
      Copy(c);
  }
}

void RunWriter::Height() {
  const std::size_t begin = i_;
  SkipToSemicolon();
  ChangeHeight(text_.substr(begin, std::min(i_ - begin, kMaxHeightUnits)));
  if (At(i_) == u';') ++i_;
  out_.Flush();
  SetTextHeight(run.text.FontSize);
}

// The name ends at ";" or "|"; an empty one is taken too, but selects nothing. Behind it the walk moves on one unit and
// drops all up to the next ";", so that the text between "\Fname;" and the next ";" is lost: it is meant.
void RunWriter::Font() {
  const std::size_t begin = i_;
  while (At(i_) != 0 && At(i_) != u';' && At(i_) != u'|') ++i_;
  const std::u16string_view name = text_.substr(begin, i_ - begin);
  run.text.SetFontName(name);
  if (!name.empty()) {
    out_.Flush();
    SelectFont();
  }
  if (i_ < text_.size()) ++i_;
  if (At(i_) != u';' && At(i_) != 0) SkipToSemicolon();
  if (At(i_) == u';') ++i_;
}

}  // namespace

void ComposeParagraph() {
  TextState& text = run.text;
  if (run.FontReplacementObject && run.FontReplacementObject->skipText != 0) return;
  const ParagraphPosition position = {ThousandthsOfInch(text.TextX), ThousandthsOfInch(text.TextY)};
  ParagraphHandle handle;
  std::memset(&handle, 0, sizeof handle);
  SetOpenParagraphInfo(&handle, 0);
  if (OpenParagraph(4, &handle, &position, 0) < 0) {
    Fail();
    return;
  }
  ParagraphStatus& status = *handle.status;
  status.paragraphInfo->paragraphOption = 0;
  status.statusLimit = kMeasure;
  if (status.lines->listFlag != 0) {
    Fail();
    return;
  }
  status.lines->listMeasure = kMeasure;
  TextLine& line = *status.textLine;
  line.lineMode &= kOpenLineMode;
  WriteIntTavlor(u"TexTCompose", u"PointJustify", 0, kUserDataStore);
  SetTextLineJustifyMode(status.paragraphInfo, status.lines, 2);
  Justify(status);
  const TM placement = Placement(0.0);
  line.originX = SinglePrecision(ThousandthsOfInch(text.TextX));
  line.originY = SinglePrecision(ThousandthsOfInch(text.TextY));
  if (!SelectFont()) {
    CloseParagraph(0, &handle);
    PushCommand(KEY_NULL);
    return;
  }
  SetTextHeight(text.FontSize);
  CharacterState& character = *status.character;
  character.charScale = kFullScale;
  character.charOptionA = 0;
  character.charOptionB = 0;
  character.fontCode = 0;
  line.lineFlags = 0;
  line.lineMode = (line.lineMode & kLineModeByte) | kLineModeBit;
  PasteTextRuns(text.TextBuffer, &status);
  line.compression = edCalcCompression(status.lines) & 0xFFFF;
  if (CloseParagraph(1, &handle) < 0) {
    CloseParagraph(0, &handle);
    Fail();
    return;
  }
  handle.paragraph->placement = placement;
  auto* record = static_cast<ParagraphRecord*>(TryAllocateHost(sizeof(ParagraphRecord)));
  if (!record) {
    Fail();
    return;
  }
  record->paragraphTag = handle.tag;
  record->paragraph = handle.paragraph;
  PushPayload(KEY_PARA, sizeof *record, record);
}

bool SelectFont() {
  FontMemo& memo = run.text.fontMemo;
  CharacterState& character = Character();
  FontRecord* font;
  if (memo.searched && memo.lastAskedName == std::u16string_view(run.text.FontName)) {
    font = memo.lastFont;
    if (font->fontClass != kFixedFontClass) character.fontCode = font->fontCode;
    character.font = font;
    character.replacedFontId = memo.lastReplacedFontId;
    run.text.SetFontName(memo.lastResolvedName);
    return true;
  }
  std::uint32_t replacedId = character.replacedFontId;
  font = SearchFont(&replacedId);
  if (!font) return false;
  character.font = font;
  character.replacedFontId = replacedId;
  if (font->fontClass != kFixedFontClass) character.fontCode = font->fontCode;
  memo.searched = true;
  memo.lastAskedName = run.text.FontName;
  memo.lastResolvedName = run.text.FontName;
  memo.lastFont = font;
  memo.lastReplacedFontId = replacedId;
  return true;
}

void SetTextHeight(double size) {
  CharacterState& character = Character();
  if (!character.font) return;
  character.height = SinglePrecision(size);
  character.heightCopy = character.height;
}

void PasteTextRuns(std::u16string_view text, ParagraphStatus* status) {
  RunBuffer out(text.size());
  RunWriter writer(text, out);
  writer.Walk();
  out.Paste();
  const auto count = static_cast<std::uint16_t>(out.count());
  const std::uint32_t range = count | std::uint32_t{count} << 16;
  WrapLine(status->textLine, status->wrapA, range, range, " -");
  // A paragraph end behind the brace lowers the line; so does a second one.
  std::u16string_view rest = writer.Rest();
  if (rest.starts_with(u"}\\P"sv)) run.text.TextY -= run.text.lineSpacing;
  if (rest.starts_with(u"}\\P\\P"sv)) run.text.TextY -= run.text.lineSpacing;
}
