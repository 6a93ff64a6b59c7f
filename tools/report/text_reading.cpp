#include "tools/report/text_reading.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "translators/colour_names.h"

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n\f";

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool IsSpace(char c) { return kWhiteSpace.find(c) != kWhiteSpace.npos; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsHexDigit(char c) { return IsDigit(c) || (Lower(c) >= 'a' && Lower(c) <= 'f'); }

std::u16string Wide(std::string_view ascii) {
  std::u16string wide;
  for (const char c : ascii) wide.push_back(static_cast<unsigned char>(c));
  return wide;
}

// Three whole numbers behind "rgb(" with a comma directly behind the first two, each from 0 to 255.
bool IsPlainRgb(std::string_view value) {
  std::size_t at = 4;
  if (value.size() < 4 || value[3] != '(') return false;
  for (int i = 0; i < 3; ++i) {
    while (at < value.size() && IsSpace(value[at])) ++at;
    int component = -1;
    const auto end = std::from_chars(value.data() + at, value.data() + value.size(), component);
    if (end.ec != std::errc() || component < 0 || component > 255) return false;
    at = static_cast<std::size_t>(end.ptr - value.data());
    if (i < 2 && (at >= value.size() || value[at++] != ',')) return false;
  }
  while (at < value.size() && IsSpace(value[at])) ++at;
  return at < value.size() && value[at] == ')';
}

ColourReading ReadHex(std::string_view rest) {
  std::size_t digits = 0;
  while (1 + digits < rest.size() && IsHexDigit(rest[1 + digits])) ++digits;
  if (digits == 6) return ColourReading::kRead;
  if (digits != 3) return ColourReading::kMisread;
  return rest.size() > 4 && rest[4] == ';' ? ColourReading::kRead : ColourReading::kShortHexAtEnd;
}

}  // namespace

bool StartsWithAnyCase(std::string_view text, std::string_view lowerCase) {
  return text.size() >= lowerCase.size() &&
         std::equal(lowerCase.begin(), lowerCase.end(), text.begin(), [](char a, char b) { return a == Lower(b); });
}

bool EqualsAnyCase(std::string_view text, std::string_view lowerCase) {
  return text.size() == lowerCase.size() && StartsWithAnyCase(text, lowerCase);
}

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
  return lower;
}

std::string InQuotes(std::string_view text) {
  std::string quoted(1, '"');
  quoted += text;
  quoted += '"';
  return quoted;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kWhiteSpace);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kWhiteSpace) + 1 - begin);
}

bool ListHas(std::string_view list, std::string_view word) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(' '), list.size());
    if (list.substr(0, end) == word) return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

bool ListHasValue(std::string_view list, std::string_view value) {
  const auto plain = [](std::string_view text) -> std::optional<double> {
    if (text.ends_with("px")) text.remove_suffix(2);
    const auto number = NumberAt(text);
    return number && number->end == text.size() ? std::optional(number->value) : std::nullopt;
  };
  if (ListHas(list, value)) return true;
  const auto number = plain(value);
  bool found = false;
  ForEachWord(list, [&](std::string_view word) { found = found || (number && plain(word) == number); });
  return found;
}

std::optional<ReadNumber> NumberAt(std::string_view text, std::size_t at) {
  while (at < text.size() && IsSpace(text[at])) ++at;
  const std::size_t sign = at < text.size() && text[at] == '+' ? 1 : 0;
  if (at + sign >= text.size() || text[at + sign] == 'i' || text[at + sign] == 'n') return std::nullopt;
  if (sign == 1 && text[at + 1] == '-') return std::nullopt;
  double value = 0.0;
  const auto end = std::from_chars(text.data() + at + sign, text.data() + text.size(), value);
  if (end.ec == std::errc::invalid_argument) return std::nullopt;
  return ReadNumber{value, static_cast<std::size_t>(end.ptr - text.data())};
}

double LeadingNumberOf(std::string_view text) {
  const auto number = NumberAt(text);
  return number ? number->value : 0.0;
}

std::string_view UnitOf(std::string_view length) {
  const auto number = NumberAt(length);
  return number ? Trimmed(length.substr(number->end)) : std::string_view();
}

std::vector<Declaration> Declarations(std::string_view style) {
  std::vector<Declaration> declarations;
  for (std::size_t begin = 0; begin < style.size();) {
    const std::size_t end = std::min(style.find(';', begin), style.size());
    const std::string_view one = style.substr(begin, end - begin);
    const std::size_t colon = one.find(':');
    const std::size_t name = one.find_first_not_of(kWhiteSpace);
    if (colon != one.npos && name < colon) {
      const std::string_view written = Trimmed(one.substr(0, colon));
      Declaration declaration{LowerCase(written), Trimmed(one.substr(colon + 1)), begin + name, false};
      declaration.plain = declaration.name == written && name + written.size() == colon;
      declarations.push_back(std::move(declaration));
    }
    begin = end + 1;
  }
  return declarations;
}

std::optional<FoundProperty> FindProperty(std::string_view style, std::string_view nameAndColon) {
  const std::size_t at = style.find(nameAndColon);
  if (at == style.npos) return std::nullopt;
  std::string_view rest = style.substr(at + nameAndColon.size());
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  return FoundProperty{at, rest};
}

std::optional<FoundProperty> FindOpacity(std::string_view style) {
  constexpr std::string_view kName = "opacity:";
  auto found = FindProperty(style, kName);
  if (!found || found->at == 0 || style[found->at - 1] != '-') return found;
  const std::size_t behind = found->at + kName.size();
  found = FindProperty(style.substr(behind), kName);
  if (!found) return std::nullopt;
  found->at += behind;
  return style[found->at - 1] == '-' ? std::nullopt : found;
}

ColourReading ReadColour(std::string_view rest) {
  const std::string_view value = rest.substr(0, rest.find(';'));
  if (StartsWithAnyCase(rest, "none")) return ColourReading::kNone;
  if (StartsWithAnyCase(rest, "url")) return ColourReading::kReference;
  if (rest.starts_with('#')) return ReadHex(rest);
  if (StartsWithAnyCase(rest, "rgb")) return IsPlainRgb(value) ? ColourReading::kRead : ColourReading::kMisread;
  if (rest.empty() || rest[0] < 'b' || rest[0] > 'y') return ColourReading::kUnreachable;
  if (EqualsAnyCase(value, "black") || LookupColourName(Wide(value)) != 0) return ColourReading::kRead;
  constexpr std::string_view kKeywords = "inherit currentcolor transparent context-fill context-stroke initial unset";
  return ListHas(kKeywords, LowerCase(Trimmed(value))) ? ColourReading::kKeyword : ColourReading::kUnknown;
}

bool Matrix::MovesOnly() const {
  const auto is = [](double x, double y) { return std::fabs(x - y) < 1e-6; };
  return is(a, 1) && is(b, 0) && is(c, 0) && is(d, 1);
}

bool Matrix::IsIdentity() const { return MovesOnly() && std::fabs(e) < 1e-6 && std::fabs(f) < 1e-6; }

double Matrix::Scale() const { return std::sqrt(std::fabs(a * d - b * c)); }

Matrix operator*(const Matrix& t, const Matrix& m) {
  return {t.a * m.a + t.c * m.b, t.b * m.a + t.d * m.b,       t.a * m.c + t.c * m.d,
          t.b * m.c + t.d * m.d, t.a * m.e + t.c * m.f + t.e, t.b * m.e + t.d * m.f + t.f};
}

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;

// The arguments as SVG separates them.
std::vector<double> MeantArguments(std::string_view arguments) {
  std::vector<double> numbers;
  for (std::size_t at = 0; at < arguments.size();) {
    if (IsSpace(arguments[at]) || arguments[at] == ',') {
      ++at;
      continue;
    }
    const auto number = NumberAt(arguments, at);
    if (!number) break;
    numbers.push_back(number->value);
    at = number->end;
    while (at < arguments.size() && (Lower(arguments[at]) >= 'a' && Lower(arguments[at]) <= 'z')) ++at;
  }
  return numbers;
}

// How many numbers a scan reads that expects white space, or else a comma directly, behind each number.
std::size_t ScannedArguments(std::string_view arguments, bool commas, std::size_t most) {
  std::size_t at = 0, count = 0;
  while (count < most) {
    const auto number = NumberAt(arguments, at);
    if (!number) break;
    ++count;
    at = number->end;
    if (commas) {
      if (at >= arguments.size() || arguments[at] != ',') break;
      ++at;
    }
  }
  return count;
}

std::size_t ScannedArguments(std::string_view arguments, std::size_t most) {
  const std::size_t count = ScannedArguments(arguments, false, most);
  return count == most ? count : ScannedArguments(arguments, true, most);
}

Matrix Rotation(double degrees) {
  const double angle = degrees / kDegreesPerRadian;
  return {std::cos(angle), std::sin(angle), -std::sin(angle), std::cos(angle), 0, 0};
}

}  // namespace

TransformReading ReadTransform(std::string_view transform) {
  TransformReading reading;
  std::string text(transform);
  for (char& c : text) {
    if (c == '\t' || c == '\n' || c == '\r') c = ' ';
  }
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] == ',') text[at] = ' ';
    at = text.find_first_not_of(' ', at);
    if (at == text.npos) break;
    const auto letter = [&](std::size_t i) { return at + i < text.size() ? text[at + i] : '\0'; };
    const std::size_t open = text.find('(', at);
    const std::size_t close = text.find(')', at);
    const std::string written = text.substr(at, close == text.npos ? close : close - at + 1);
    const std::string arguments =
        open == text.npos ? "" : text.substr(open + 1, close == text.npos || close < open ? close : close - open - 1);
    const std::vector<double> meant = MeantArguments(arguments);
    const auto number = [&](std::size_t i, double otherwise) { return i < meant.size() ? meant[i] : otherwise; };
    std::size_t expected = meant.size(), scanned = meant.size();
    Matrix step, right;
    if (letter(0) == 't') {
      scanned = ScannedArguments(arguments, 2);
      step = {1, 0, 0, 1, number(0, 0), scanned > 1 ? number(1, 0) : 0};
      right = {1, 0, 0, 1, number(0, 0), number(1, 0)};
    } else if (letter(0) == 's' && letter(1) == 'c') {
      scanned = ScannedArguments(arguments, 2);
      step = {number(0, 1), 0, 0, scanned > 1 ? number(1, 1) : number(0, 1), 0, 0};
      right = {number(0, 1), 0, 0, number(1, number(0, 1)), 0, 0};
    } else if (letter(0) == 's' && letter(4) == 'X') {
      right = step = {1, 0, std::tan(number(0, 0) / kDegreesPerRadian), 1, 0, 0};
    } else if (letter(0) == 's' && letter(4) == 'Y') {
      right = step = {1, std::tan(number(0, 0) / kDegreesPerRadian), 0, 1, 0, 0};
    } else if (letter(0) == 'm') {
      expected = 6;
      scanned = ScannedArguments(arguments, 6);
      right = {number(0, 1), number(1, 0), number(2, 0), number(3, 1), number(4, 0), number(5, 0)};
      if (scanned == 6) step = right;
    } else if (letter(0) == 'r') {
      right = step = Rotation(number(0, 0));
      const double x = number(1, 0), y = number(2, 0);
      if ((x != 0 || y != 0) && number(0, 0) != 0) {
        if (reading.rotationCentre.empty()) reading.rotationCentre = written;
        right = Matrix{1, 0, 0, 1, x, y} * right * Matrix{1, 0, 0, 1, -x, -y};
      }
    } else {
      reading.stoppedAt = written;
      break;
    }
    if (scanned < expected && reading.misread.empty()) reading.misread = written;
    reading.matrix = reading.matrix * step;
    reading.meant = reading.meant * right;
    if (close == text.npos) break;
    at = close + 1;
  }
  return reading;
}

namespace {

struct Point {
  double x = 0, y = 0;
};

std::string Shown(std::string_view text, std::size_t at) {
  std::string shown(text.substr(at, 20));
  if (at + 20 < text.size()) shown += "...";
  return shown;
}

// Goes through path data and lists of points as the scanners of the filter do.
class DataScanner {
 public:
  explicit DataScanner(std::string_view text) : text_(text) {}

  std::size_t at = 0;
  std::string glued;
  bool joined = false;  // the scan went another way than the text looks; nothing behind can be told

  void SkipControls() {
    while (at < text_.size() && static_cast<unsigned char>(text_[at]) <= 32) ++at;
  }
  bool AtEnd() const { return at >= text_.size(); }
  char Current() const { return At(at); }

  Point Pair() {
    SkipBlanks();
    Point point;
    point.x = First();
    while (Current() == ' ' || Current() == ',') ++at;
    point.y = Second();
    if (Current() == ' ' || Current() == ',') ++at;
    return point;
  }

  double Single() {
    SkipBlanks();
    const std::size_t begin = at;
    bool exponent = false, point = false;
    while (IsNumberPart(Current())) {
      const char c = Current();
      if (c == 'e' || c == 'E') exponent = true;
      if (c == '-' && at > begin && !exponent) break;
      if (c == '.' && point) break;
      point = point || c == '.';
      ++at;
    }
    NoteJoined(begin);
    return Value(begin);
  }

  // The next digit, whatever stands in front of it.
  void Flag() {
    while (!AtEnd() && !IsDigit(Current())) ++at;
    if (!AtEnd()) ++at;
  }

 private:
  char At(std::size_t i) const { return i < text_.size() ? text_[i] : '\0'; }
  static bool IsNumberPart(char c) { return (c >= '*' && c <= '9' && c != ',') || c == 'e' || c == 'E'; }
  static bool IsLineEndOrTab(char c) { return c == '\t' || c == '\n' || c == '\r'; }
  void SkipBlanks() {
    while (Current() == ' ') ++at;
  }

  void Digits() {
    const std::size_t begin = at;
    bool exponent = false;
    while (IsNumberPart(Current())) {
      const char c = Current();
      if (c == 'e' || c == 'E') exponent = true;
      if (c == '-' && at > begin && !exponent) break;
      ++at;
    }
  }
  double First() {
    const std::size_t begin = at;
    Digits();
    // Whatever follows a tab here is counted wrongly.
    if (IsLineEndOrTab(Current())) Join(begin);
    return Value(begin);
  }
  double Second() {
    const std::size_t begin = at;
    Digits();
    NoteJoined(begin);
    return Value(begin);
  }
  // A tab or line end is dropped and the number goes on behind it.
  void NoteJoined(std::size_t begin) {
    std::size_t behind = at;
    while (IsLineEndOrTab(At(behind))) ++behind;
    if (behind > at && IsNumberPart(At(behind)) && At(behind) != '-') Join(begin);
  }
  void Join(std::size_t begin) {
    joined = true;
    if (!glued.empty()) return;
    glued = "a tab or line end behind ";
    glued += text_.substr(begin, at - begin);
    glued += " joins it to the next number";
  }
  // The number that the operator machine makes of what was copied.
  double Value(std::size_t begin) {
    const std::string_view token = text_.substr(begin, at - begin);
    const auto number = NumberAt(token);
    if (!token.empty() && (!number || number->end != token.size()) && glued.empty()) {
      glued = InQuotes(Shown(token, 0)) + " is read as one number and what follows it";
      joined = true;
    }
    return number ? number->value : 0.0;
  }

  std::string_view text_;
};

std::string NamedCommand(char command) {
  std::string named = "the command ";
  named += command;
  return named;
}

bool Near(const Point& a, const Point& b) { return std::fabs(a.x - b.x) <= 0.05 && std::fabs(a.y - b.y) <= 0.05; }

}  // namespace

PathReading ReadPathData(std::string_view d) {
  PathReading reading;
  std::string text(d);
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  DataScanner scanner(text);
  Point pen, start;
  char remembered = 0, previous = 0;
  bool stale = false;  // the pen in user space is not where the pen is
  const auto behindArc = [&](char command) {
    if (stale && reading.afterArc.empty()) reading.afterArc = NamedCommand(command);
  };
  const auto smooth = [&](char command, std::string_view fitting) {
    if (reading.smooth.empty() && fitting.find(previous) == fitting.npos) {
      reading.smooth = NamedCommand(command);
    }
  };
  while (true) {
    scanner.SkipControls();
    if (scanner.AtEnd() || scanner.joined) break;
    const std::size_t begin = scanner.at;
    char command = scanner.Current();
    if (IsDigit(command) || command == '-') {
      command = remembered;
    } else {
      ++scanner.at;
    }
    const char kind = Lower(command);
    const bool relative = command == kind;
    const auto pair = [&] {
      const Point p = scanner.Pair();
      return relative ? Point{pen.x + p.x, pen.y + p.y} : p;
    };
    if (relative && kind != 'a' && kind != 'z') behindArc(command);
    if (previous == 0) reading.relativeStart = command == 'm';
    if (kind == 'm' || kind == 'l') {
      pen = pair();
      if (kind == 'm') {
        start = pen;
        reading.endsOpen = false;
      }
      stale = stale && relative;
    } else if (kind == 'h' || kind == 'v') {
      behindArc(command);
      const double value = scanner.Single();
      double& coordinate = kind == 'h' ? pen.x : pen.y;
      coordinate = relative ? coordinate + value : value;
    } else if (kind == 'c') {
      pair();
      pair();
      pen = pair();
      stale = stale && relative;
    } else if (kind == 's') {
      smooth(command, "mcst");
      pair();
      pen = pair();
      stale = stale && relative;
    } else if (kind == 't') {
      smooth(command, "mq");
      behindArc(command);
      pen = pair();
      stale = stale && relative;
    } else if (kind == 'q') {
      reading.quadratic = true;
      behindArc(command);
      pair();
      pen = pair();
      stale = stale && relative;
    } else if (kind == 'a') {
      scanner.Pair();
      scanner.Single();
      scanner.Flag();
      scanner.Flag();
      pen = pair();
      stale = true;
    } else if (kind == 'z') {
      pen = start;
      stale = false;
    } else {
      reading.stopped = "the path is read only up to " + InQuotes(Shown(text, begin));
      break;
    }
    if (kind == 'z') {
      reading.endsOpen = false;
    } else {
      if (kind != 'm') reading.endsOpen = !Near(pen, start);
      remembered = command == 'M' ? 'L' : command == 'm' ? 'l' : command;
    }
    previous = kind;
  }
  reading.glued = scanner.glued;
  if (scanner.joined) reading.endsOpen = false;
  return reading;
}

PathReading ReadPoints(std::string_view points) {
  PathReading reading;
  DataScanner scanner(points);
  while (true) {
    scanner.SkipControls();
    if (scanner.AtEnd() || scanner.joined) break;
    const std::size_t begin = scanner.at;
    scanner.Pair();
    if (scanner.at == begin) {
      reading.stopped = "the points are read only up to " + InQuotes(Shown(points, begin));
      break;
    }
  }
  reading.glued = scanner.glued;
  return reading;
}
