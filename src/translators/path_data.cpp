#include "translators/path_data.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "document/node_access.h"
#include "operators/operator_machine.h"
#include "operators/path.h"
#include "operators/path_end.h"
#include "operators/polygon.h"
#include "platform/unit_scan.h"
#include "run/import_run.h"
#include "run/number_text.h"
#include "run/plain_number.h"
#include "translators/clip_reference.h"
#include "translators/shapes.h"
#include "translators/transform.h"

namespace {

bool IsExponent(char16_t c) { return (c | 0x20) == u'e'; }
bool IsNumberUnit(char16_t c) { return (c >= u'*' && c <= u'9' && c != u',') || IsExponent(c); }
bool IsSkippedSpace(char16_t c) { return c == u'\t' || c == u'\n' || c == u'\r'; }

// A text that reads as NUL behind its end.
class Cursor {
 public:
  Cursor(ScanFrom from, std::u16string_view in) : in_(in) {
    if (from == ScanFrom::Letter && !in.empty()) Take();
    while (Unit() == u' ') Take();
  }
  char16_t Unit() const { return i_ < in_.size() ? in_[i_] : u'\0'; }
  void Take() {
    ++i_;
    ++consumed_;
  }
  void PassOver() { ++i_; }
  std::size_t consumed() const { return consumed_; }

 private:
  std::u16string_view in_;
  std::size_t i_ = 0;
  std::size_t consumed_ = 0;
};

// Copies one number of a pair. A tab or line end does not end it; in the first number it begins the test for a unit
// already copied anew. A "-" behind a copied unit, outside an exponent, ends the number with a blank.
void CopyPairNumber(Cursor& cursor, GrowingText& out, bool restarts) {
  bool copied = false;
  bool exponent = false;
  while (true) {
    const char16_t c = cursor.Unit();
    if (IsNumberUnit(c)) {
      if (IsExponent(c)) exponent = true;
      if (c == u'-' && copied && !exponent) {
        out.Push(u' ');
        return;
      }
      out.Push(c);
      copied = true;
      cursor.Take();
    } else if (IsSkippedSpace(c)) {
      cursor.PassOver();
      if (restarts) copied = false;
    } else {
      return;
    }
  }
}

// Separators as text hold blanks only.
void PushSeparator(Cursor& cursor, GrowingText& out) {
  out.Push(u' ');
  cursor.Take();
}

// A set of units below 64, and whether it has this one: without a branch, since what stands behind a number cannot be
// foreseen.
consteval std::uint64_t SetOf(std::string_view units) {
  std::uint64_t set = 0;
  for (const char c : units) set |= std::uint64_t{1} << c;
  return set;
}
bool IsIn(std::uint64_t set, char16_t c) { return (c < 64) & (set >> (c & 63)); }

bool IsSeparator(char16_t c) { return IsIn(SetOf(" ,"), c); }

// Whether a number in its plain form may end in front of this unit: whether the scanners would end it there as well.
bool EndsPlainNumber(char16_t c) { return !IsIn(SetOf("*+./0123456789\t\n\r"), c) && !IsExponent(c); }

// The number in its plain form behind blanks; returns its end, or null for every other form.
const char16_t* ReadBehindBlanks(const char16_t* c, const char16_t* end, double* value) {
  while (c != end && *c == u' ') ++c;
  return ScanPlainDouble(c, end, value);
}

}  // namespace

// A pair in its plain form, two numbers with blanks or commas between them. Returns where ScanCoordinatePair would go
// on, or null for every other form.
const char16_t* ReadPlainPair(const char16_t* c, const char16_t* end, Point* point) {
  c = ReadBehindBlanks(c, end, &point->x);
  if (!c || c == end || !IsIn(SetOf(" ,-"), *c)) return nullptr;
  c += IsSeparator(*c);  // the usual one apart
  while (c != end && IsSeparator(*c)) ++c;
  c = ScanPlainDouble(c, end, &point->y);
  if (!c || c == end) return c;
  return EndsPlainNumber(*c) ? c + IsSeparator(*c) : nullptr;
}

// The same for one number, as ScanNumber would go on.
const char16_t* ReadPlainNumber(const char16_t* c, const char16_t* end, double* value) {
  c = ReadBehindBlanks(c, end, value);
  return c && (c == end || EndsPlainNumber(*c)) ? c : nullptr;
}

namespace {

// The next digit, wherever it stands. Returns its end, or null when there is none.
const char16_t* ReadFlag(const char16_t* c, const char16_t* end, bool* flag) {
  while (c != end && !IsDigit(*c)) ++c;
  if (c == end) return nullptr;
  *flag = *c != u'0';
  return c + 1;
}

// The letters of a path's data, and how they become operator text.
class PathWriter {
 public:
  explicit PathWriter(std::u16string_view data) : data_(data) {}
  void Run();

 private:
  char16_t Unit() const { return i_ < data_.size() ? data_[i_] : u'\0'; }
  bool Dispatch(char16_t letter, ScanFrom from);
  bool DrawPlain(char16_t letter, ScanFrom from);
  void Pair(ScanFrom from) { i_ += ScanCoordinatePair(from, data_.substr(Here()), number_); }
  void Number(ScanFrom from) { i_ += ScanNumber(from, data_.substr(Here()), number_); }
  void Push() { FeedOperatorText(number_, kPushOnly); }
  void Execute(char16_t letter);
  void PushFlags();
  void Remember(char16_t letter) { remembered_ = letter == u'M' ? u'L' : letter == u'm' ? u'l' : letter; }
  std::size_t Here() const { return i_ < data_.size() ? i_ : data_.size(); }

  std::u16string_view data_;
  std::size_t i_ = 0;
  GrowingText number_;
  char16_t added_ = 0;  // behind the letter of every operator once an S or a T has set it, to the end of the element
  char16_t remembered_ = 0;  // what numbers without a letter repeat
};

void PathWriter::Execute(char16_t letter) {
  number_.Push(u' ');
  number_.Push(letter);
  if (added_) number_.Push(added_);
  FeedOperatorText(number_, kExecute);
}

// The next two digits, wherever they stand. One that is not there leaves its place empty.
void PathWriter::PushFlags() {
  number_.Clear();
  for (int flag = 0; flag < 2; ++flag) {
    while (i_ < data_.size() && !IsDigit(data_[i_])) ++i_;
    if (i_ < data_.size()) number_.Push(data_[i_++]);
    number_.Push(u' ');
  }
  Push();
}

// Draws a command whose numbers all have the plain form without a way through operator text, which makes out a fifth of
// an import: the operands would be pushed and taken off again, and the operators look at their first letter only.
// False, with nothing done, for every other command.
bool PathWriter::DrawPlain(char16_t letter, ScanFrom from) {
  const char16_t* c = data_.data() + i_ + (from == ScanFrom::Letter ? 1 : 0);
  const char16_t* const end = data_.data() + data_.size();
  const bool relative = letter >= u'a';
  Point p[3];
  const auto readPairs = [&](int count) {
    for (int i = 0; c && i < count; ++i) c = ReadPlainPair(c, end, &p[i]);
    return c != nullptr;
  };
  double number;
  const auto readNumber = [&] {
    c = ReadPlainNumber(c, end, &number);
    return c != nullptr;
  };

  switch (letter) {
    case u'M':
    case u'm':
      if (!readPairs(1)) return false;
      MoveTo(p[0], relative);
      break;
    case u'L':
    case u'l':
      if (!readPairs(1)) return false;
      LineTo(p[0], relative);
      break;
    case u'H':
    case u'h':
      if (!readNumber()) return false;
      HorizontalTo(number, relative);
      break;
    case u'V':
    case u'v':
      if (!readNumber()) return false;
      VerticalTo(number, relative);
      break;
    case u'C':
    case u'c':
      if (!readPairs(3)) return false;
      CurveTo(p[0], p[1], p[2], relative);
      break;
    case u'S':
    case u's':
      if (!readPairs(2)) return false;
      added_ = u'c';
      SmoothCurveTo(p[0], p[1], relative);
      break;
    case u'Q':
    case u'q':
      if (!readPairs(2)) return false;
      QuadraticTo(p[0], p[1], relative);
      break;
    case u'T':
    case u't':
      if (!readPairs(1)) return false;
      added_ = u'p';
      SmoothQuadraticTo(p[0], relative);
      break;
    case u'A':
    case u'a': {
      if (!readPairs(1) || !readNumber()) return false;
      Arc arc = {p[0].x, p[0].y, number, false, false, {}};
      c = ReadFlag(c, end, &arc.largeArc);
      if (c) c = ReadFlag(c, end, &arc.sweep);
      if (!readPairs(1)) return false;
      arc.end = p[0];
      ArcTo(arc, relative);
      break;
    }
    default:
      return false;
  }
  i_ = static_cast<std::size_t>(c - data_.data());
  Remember(letter);
  return true;
}

// False when the letter is no command.
bool PathWriter::Dispatch(char16_t letter, ScanFrom from) {
  if (DrawPlain(letter, from)) return true;
  switch (letter) {
    case u'L':
    case u'M':
    case u'l':
    case u'm':
      Pair(from);
      break;
    case u'H':
    case u'V':
    case u'h':
    case u'v':
      Number(from);
      break;
    case u'C':
    case u'c':
      Pair(from);
      Push();
      Pair(ScanFrom::Number);
      Push();
      Pair(ScanFrom::Number);
      break;
    case u'S':
    case u's':
      added_ = u'c';
      Pair(from);
      Push();
      Pair(ScanFrom::Number);
      break;
    case u'Z':
    case u'z':
      OperatorClose({u"Z", 1});
      ++i_;
      return true;
    case u'T':
    case u't':
      added_ = u'p';
      Pair(from);
      break;
    case u'Q':
    case u'q':
      Pair(from);
      Push();
      Pair(ScanFrom::Number);
      break;
    case u'A':
    case u'a':
      Pair(from);
      Push();
      Number(ScanFrom::Number);
      Push();
      PushFlags();
      Pair(ScanFrom::Number);
      break;
    default:
      return false;
  }
  Execute(letter);
  Remember(letter);
  return true;
}

// Stops without a word at the first unit that is no command. A digit or a "-" repeats the last command; a "." or a "+"
// does not.
void PathWriter::Run() {
  while (true) {
    while (i_ < data_.size() && data_[i_] <= 32) ++i_;
    if (i_ >= data_.size()) return;
    const char16_t c = Unit();
    const bool repeat = IsDigit(c) || c == u'-';
    if (!Dispatch(repeat ? remembered_ : c, repeat ? ScanFrom::Number : ScanFrom::Letter)) return;
  }
}

bool IsLineEnd(char16_t c) { return c == u'\r' || c == u'\n'; }

bool HasLineEnd(std::u16string_view text) {
  return MayHoldControls(text) && std::any_of(text.begin(), text.end(), IsLineEnd);
}

}  // namespace

std::size_t ScanCoordinatePair(ScanFrom from, std::u16string_view in, GrowingText& out) {
  out.Clear();
  Cursor cursor(from, in);
  CopyPairNumber(cursor, out, true);
  while (IsSeparator(cursor.Unit())) PushSeparator(cursor, out);
  CopyPairNumber(cursor, out, false);
  if (IsSeparator(cursor.Unit())) PushSeparator(cursor, out);
  return cursor.consumed();
}

std::size_t ScanNumber(ScanFrom from, std::u16string_view in, GrowingText& out) {
  out.Clear();
  Cursor cursor(from, in);
  bool exponent = false;
  bool point = false;
  while (true) {
    const char16_t c = cursor.Unit();
    if (IsNumberUnit(c)) {
      if (IsExponent(c)) exponent = true;
      if (c == u'-' && !out.empty() && !exponent) break;
      if (c == u'.') {
        if (point) break;
        point = true;
      }
      out.Push(c);
      cursor.Take();
    } else if (IsSkippedSpace(c)) {
      cursor.PassOver();
    } else {
      break;
    }
  }
  return cursor.consumed();
}

void TranslatePath(IXMLDOMNode* node) {
  PushGraphicsState();
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  const std::u16string_view clip = GetNodeAttribute(node, u"clip-path");
  if (!clip.empty()) ApplyClipReference(clip);
  ApplyStyleOrFold(node);
  // Line ends separate numbers here, where tabs do not.
  std::u16string_view data = GetNodeAttribute(node, u"d");
  std::u16string oneLine;
  if (HasLineEnd(data)) {
    oneLine = data;
    for (char16_t& c : oneLine) {
      if (IsLineEnd(c)) c = u' ';
    }
    data = oneLine;
  }
  PathWriter(data).Run();
  if (!data.empty()) {
    if (run.paint.FillGiven == 1) {
      OperatorClose({u"Z", 1});
      run.paint.FillGiven = 0;
    }
    OperatorCloseIfNear({u"Z2", 1});
    MoveTo({0.0, 0.0}, false);
  }
  EndPath();
  PopGraphicsState();
  if (!clip.empty()) CloseClippedElement();
}
