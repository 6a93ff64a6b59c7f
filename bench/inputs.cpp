#include "bench/inputs.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace {

constexpr double kPage = 1000.0;

constexpr std::size_t kNumberRoom = 64;

// With exactly so many decimals; a negative one without the zero in front of the point.
std::string_view NumberText(double value, int decimals, char (&buffer)[kNumberRoom]) {
  char* begin = buffer;
  const char* end = std::to_chars(buffer, buffer + kNumberRoom, value, std::chars_format::fixed, decimals).ptr;
  if (std::string_view(begin, end).starts_with("-0.")) *++begin = '-';
  return {begin, end};
}

// The text of a drawing as it grows, and the random numbers that go into it.
class Drawing {
 public:
  explicit Drawing(std::size_t expectedBytes) {
    text_.reserve(expectedBytes + 65536);
    *this << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
             "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
             "width=\"1000\" height=\"1000\">\n";
  }

  Drawing& operator<<(std::string_view text) {
    text_ += text;
    return *this;
  }
  Drawing& operator<<(std::size_t value) { return *this << std::to_string(value); }
  // With up to three decimals.
  Drawing& operator<<(double value) {
    char buffer[kNumberRoom];
    return *this << NumberText(value, static_cast<int>(Below(4)), buffer);
  }

  void Colour() {
    constexpr std::string_view kNames[] = {"red", "navy", "gold", "steelblue", "none", "black"};
    constexpr char kDigits[] = "0123456789abcdef";
    if (Below(4) == 0) {
      *this << kNames[Below(std::size(kNames))];
      return;
    }
    text_ += '#';
    for (int i = 0; i < 6; ++i) text_ += kDigits[Below(16)];
  }

  void Style() {
    *this << " style=\"fill:";
    Colour();
    *this << ";fill-rule:evenodd;stroke:";
    Colour();
    *this << ";stroke-width:" << Between(0.1, 5.0)
          << ";stroke-linecap:round;stroke-linejoin:miter;opacity:" << Between(0.1, 1.0) << '"';
  }

  Drawing& operator<<(char c) {
    text_ += c;
    return *this;
  }

  // splitmix64
  std::uint64_t Random() {
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }
  std::size_t Below(std::size_t end) { return Random() % end; }
  double Between(double low, double high) {
    return low + (high - low) * (static_cast<double>(Random() >> 11) * 0x1p-53);
  }

  std::size_t size() const { return text_.size(); }
  char last() const { return text_.back(); }
  std::string Finish() {
    *this << "</svg>\n";
    return std::move(text_);
  }

 private:
  std::string text_;
  std::uint64_t state_ = 1;
};

// Path data that wanders over the page: no segment is longer than a few dozen units, since a quadratic is walked in
// steps.
class PathData {
 public:
  explicit PathData(Drawing& drawing) : drawing_(drawing) {}

  void Start() {
    x_ = startX_ = drawing_.Between(0.0, kPage);
    y_ = startY_ = drawing_.Between(0.0, kPage);
    Command('M');
    Pair(x_, y_);
  }

  // One command letter and one to four sets of its numbers.
  void Commands() {
    constexpr std::string_view kLetters = "MLLLLHHVVCCCCCCSSSQQTAZ";
    const char letter = kLetters[drawing_.Below(kLetters.size())];
    const bool relative = drawing_.Below(2) == 1;
    Command(relative ? static_cast<char>(letter - 'A' + 'a') : letter);
    if (letter == 'Z') {
      x_ = startX_;
      y_ = startY_;
      return;
    }
    const std::size_t sets = drawing_.Below(4) + 1;
    for (std::size_t set = 0; set < sets; ++set) {
      Set(letter, relative ? x_ : 0.0, relative ? y_ : 0.0);
      if (letter == 'M' && set == 0) {
        startX_ = x_;
        startY_ = y_;
      }
    }
  }

 private:
  static double Stay(double value) { return std::clamp(value, 0.0, kPage); }
  double Near(double value) { return Stay(value + drawing_.Between(-40.0, 40.0)); }

  void Command(char letter) {
    if (drawing_.Below(8) == 0) drawing_ << ' ';
    drawing_ << letter;
    first_ = true;
    lone_ = std::string_view("HhVv").find(letter) != std::string_view::npos;
  }

  // One set of numbers, given from the origin; the pen ends at its last point.
  void Set(char letter, double originX, double originY) {
    const double x = Near(x_), y = Near(y_);
    switch (letter) {
      case 'H':
        Number(x - originX);
        x_ = x;
        return;
      case 'V':
        Number(y - originY);
        y_ = y;
        return;
      case 'C':
        PairNear(originX, originY);
        [[fallthrough]];
      case 'S':
      case 'Q':
        PairNear(originX, originY);
        break;
      case 'A':
        Number(drawing_.Between(1.0, 60.0));
        Number(drawing_.Between(1.0, 60.0));
        Number(drawing_.Between(0.0, 90.0));
        drawing_ << (drawing_.Below(2) == 0 ? " 0" : " 1") << (drawing_.Below(2) == 0 ? ",0" : " 1");
        break;
      default:
        break;
    }
    Pair(x - originX, y - originY);
    x_ = x;
    y_ = y;
  }

  void PairNear(double originX, double originY) {
    const double x = Near(x_) - originX;
    const double y = Near(y_) - originY;
    Pair(x, y);
  }

  void Pair(double x, double y) {
    Number(x);
    Number(y);
  }

  // A sign needs no separator in front of it. A lone number is repeated behind a blank only: the filter ends a path at
  // the comma.
  void Number(double value) {
    constexpr int kDecimals[] = {0, 0, 1, 1, 2, 2, 2, 3, 3, 3, 3, 4, 4, 5, 6, 6};
    const int decimals = kDecimals[drawing_.Below(std::size(kDecimals))];
    char buffer[kNumberRoom];
    const std::string_view number = NumberText(value, decimals, buffer);
    const bool mayGlue = first_ || number.front() == '-';
    if (!mayGlue || drawing_.Below(4) == 0) drawing_ << (first_ || lone_ || drawing_.Below(2) == 0 ? ' ' : ',');
    drawing_ << number;
    first_ = false;
  }

  Drawing& drawing_;
  double x_ = 0.0, y_ = 0.0, startX_ = 0.0, startY_ = 0.0;
  bool first_ = true;  // right behind a command letter
  bool lone_ = false;  // of a command with one number
};

void Path(Drawing& drawing, std::size_t bytes) {
  drawing << "<path";
  drawing.Style();
  drawing << " d=\"";
  const std::size_t end = drawing.size() + bytes;
  PathData data(drawing);
  data.Start();
  while (drawing.size() < end) data.Commands();
  drawing << "\"/>\n";
}

void Attribute(Drawing& drawing, std::string_view name, double low, double high) {
  drawing << ' ' << name << "=\"" << drawing.Between(low, high) << '"';
}

void Points(Drawing& drawing) {
  drawing << " points=\"";
  const std::size_t points = 3 + drawing.Below(6);
  for (std::size_t i = 0; i < points; ++i) {
    drawing << drawing.Between(0.0, kPage) << ',' << drawing.Between(0.0, kPage) << ' ';
  }
  drawing << '"';
}

// One of the six kinds, begun but not closed.
void Shape(Drawing& drawing) {
  switch (drawing.Below(6)) {
    case 0:
      drawing << "<rect";
      for (const std::string_view name : {"x", "y"}) Attribute(drawing, name, 0.0, kPage);
      for (const std::string_view name : {"width", "height"}) Attribute(drawing, name, 1.0, 100.0);
      if (drawing.Below(3) == 0) Attribute(drawing, "rx", 0.5, 10.0);
      break;
    case 1:
      drawing << "<circle";
      for (const std::string_view name : {"cx", "cy"}) Attribute(drawing, name, 0.0, kPage);
      Attribute(drawing, "r", 0.5, 50.0);
      break;
    case 2:
      drawing << "<ellipse";
      for (const std::string_view name : {"cx", "cy"}) Attribute(drawing, name, 0.0, kPage);
      for (const std::string_view name : {"rx", "ry"}) Attribute(drawing, name, 0.5, 50.0);
      break;
    case 3:
      drawing << "<line";
      for (const std::string_view name : {"x1", "y1", "x2", "y2"}) Attribute(drawing, name, 0.0, kPage);
      break;
    case 4:
      drawing << "<polyline";
      Points(drawing);
      break;
    default:
      drawing << "<polygon";
      Points(drawing);
      break;
  }
}

void PaintAttributes(Drawing& drawing) {
  drawing << " fill=\"";
  drawing.Colour();
  drawing << "\" stroke=\"";
  drawing.Colour();
  drawing << '"';
  Attribute(drawing, "stroke-width", 0.1, 5.0);
  if (drawing.Below(2) == 0) drawing << " stroke-linecap=\"round\" stroke-linejoin=\"bevel\"";
  if (drawing.Below(4) == 0) Attribute(drawing, "opacity", 0.1, 1.0);
}

// Close to what changes nothing, so that 60 of them in one another still leave a drawing.
void Transform(Drawing& drawing) {
  drawing << " transform=\"";
  switch (drawing.Below(4)) {
    case 0:
      drawing << "translate(" << drawing.Between(-5.0, 5.0) << ',' << drawing.Between(-5.0, 5.0);
      break;
    case 1:
      drawing << "rotate(" << drawing.Between(-5.0, 5.0);
      break;
    case 2:
      drawing << "scale(" << drawing.Between(0.95, 1.05);
      break;
    default:
      drawing << "matrix(" << drawing.Between(0.95, 1.05) << ' ' << drawing.Between(-0.01, 0.01) << ' '
              << drawing.Between(-0.01, 0.01) << ' ' << drawing.Between(0.95, 1.05) << ' ' << drawing.Between(-5.0, 5.0)
              << ' ' << drawing.Between(-5.0, 5.0);
      break;
  }
  drawing << ")\"";
}

}  // namespace

std::string MakePaths(std::size_t bytes) {
  constexpr std::size_t kPathBytes = 20'000;
  Drawing drawing(bytes);
  while (drawing.size() < bytes) Path(drawing, std::min(kPathBytes, bytes - drawing.size()));
  return drawing.Finish();
}

std::string MakeOnePath(std::size_t bytes) {
  Drawing drawing(bytes);
  Path(drawing, bytes);
  return drawing.Finish();
}

std::string MakeShortPaths(std::size_t paths) {
  Drawing drawing(paths * 105);
  for (std::size_t i = 0; i < paths; ++i) {
    drawing << "<path fill=\"";
    drawing.Colour();
    drawing << "\" d=\"";
    PathData data(drawing);
    data.Start();
    const std::size_t end = drawing.size() + 25;
    while (drawing.size() < end) data.Commands();
    drawing << "\"/>\n";
  }
  return drawing.Finish();
}

std::string MakeShapes(std::size_t shapes) {
  Drawing drawing(shapes * 130);
  for (std::size_t i = 0; i < shapes; ++i) {
    Shape(drawing);
    PaintAttributes(drawing);
    drawing << "/>\n";
  }
  return drawing.Finish();
}

std::string MakeGroups(std::size_t shapes) {
  constexpr std::size_t kDepth = 60;
  constexpr std::size_t kShapesPerChain = 100;  // one at each level, the rest at the deepest
  Drawing drawing(shapes * 320);
  for (std::size_t made = 0; made < shapes; made += kShapesPerChain) {
    std::size_t left = std::min(kShapesPerChain, shapes - made);
    for (std::size_t level = 1; level <= kDepth; ++level) {
      drawing << "<g";
      Transform(drawing);
      drawing.Style();
      drawing << ">\n";
      for (std::size_t here = level < kDepth ? std::min<std::size_t>(left, 1) : left; here > 0; --here, --left) {
        Shape(drawing);
        Transform(drawing);
        drawing.Style();
        drawing << "/>\n";
      }
    }
    for (std::size_t level = 0; level < kDepth; ++level) drawing << "</g>";
    drawing << '\n';
  }
  return drawing.Finish();
}

std::string MakeGradientFills(std::size_t fills) {
  const std::size_t stopLists = std::max<std::size_t>(fills / 10, 1);
  Drawing drawing(fills * 400);
  drawing << "<defs>\n";
  for (std::size_t i = 0; i < stopLists; ++i) {
    drawing << "<linearGradient id=\"stops" << i << "\">";
    const std::size_t stops = 2 + drawing.Below(4);
    for (std::size_t stop = 0; stop < stops; ++stop) {
      drawing << "<stop offset=\"" << static_cast<double>(stop) / static_cast<double>(stops - 1)
              << "\" style=\"stop-color:";
      drawing.Colour();
      drawing << ";stop-opacity:" << drawing.Between(0.0, 1.0) << "\"/>";
    }
    drawing << "</linearGradient>\n";
  }
  for (std::size_t i = 0; i < fills; ++i) {
    const bool radial = drawing.Below(3) == 0;
    const std::string_view element = radial ? "radialGradient" : "linearGradient";
    drawing << '<' << element << " id=\"paint" << i << "\" gradientUnits=\"userSpaceOnUse\" xlink:href=\"#stops"
            << drawing.Below(stopLists) << '"';
    if (radial) {
      for (const std::string_view name : {"cx", "cy", "fx", "fy"}) Attribute(drawing, name, 0.0, kPage);
      Attribute(drawing, "r", 1.0, 100.0);
    } else {
      for (const std::string_view name : {"x1", "y1", "x2", "y2"}) Attribute(drawing, name, 0.0, kPage);
    }
    if (drawing.Below(2) == 0) {
      drawing << " gradientTransform=\"translate(" << drawing.Between(-5.0, 5.0) << ',' << drawing.Between(-5.0, 5.0)
              << ")\"";
    }
    drawing << "/>\n";
  }
  drawing << "</defs>\n";
  for (std::size_t i = 0; i < fills; ++i) {
    Shape(drawing);
    drawing << " style=\"fill:url(#paint" << i << ");stroke:none\"/>\n";
  }
  return drawing.Finish();
}

std::string MakeTexts(std::size_t texts) {
  constexpr std::string_view kFamilies[] = {"Sans", "Serif", "DejaVu Sans", "Monospace"};
  constexpr std::string_view kWords[] = {"over", "the", "lazy", "quick", "brown", "fox", "jumps", "dog", "caf\xC3\xA9"};
  Drawing drawing(texts * 300);
  const auto words = [&] {
    for (std::size_t word = drawing.Below(6) + 1; word > 0; --word) {
      drawing << kWords[drawing.Below(std::size(kWords))] << (word > 1 ? " " : "");
    }
  };
  for (std::size_t i = 0; i < texts; ++i) {
    drawing << "<text";
    for (const std::string_view name : {"x", "y"}) Attribute(drawing, name, 0.0, kPage);
    if (drawing.Below(4) == 0) Transform(drawing);
    drawing << " style=\"font-size:" << drawing.Between(6.0, 40.0)
            << "px;font-family:" << kFamilies[drawing.Below(std::size(kFamilies))] << ";fill:";
    drawing.Colour();
    drawing << ";stroke:none;text-anchor:" << (drawing.Below(2) == 0 ? "start" : "middle") << "\">";
    words();
    if (drawing.Below(3) == 0) {
      drawing << "<tspan";
      for (const std::string_view name : {"x", "y"}) Attribute(drawing, name, 0.0, kPage);
      drawing << '>';
      words();
      drawing << "</tspan>";
    }
    drawing << "</text>\n";
  }
  return drawing.Finish();
}

std::vector<const char*> NumbersInPaths(std::string_view drawing) {
  constexpr std::string_view kAttribute = " d=\"";
  constexpr std::string_view kNumberStarts = "-.0123456789\"";
  std::vector<const char*> starts;
  const char* end = drawing.data() + drawing.size();
  for (std::size_t at = drawing.find(kAttribute); at != drawing.npos; at = drawing.find(kAttribute, at)) {
    at = drawing.find_first_of(kNumberStarts, at + kAttribute.size());
    while (drawing[at] != '"') {
      starts.push_back(drawing.data() + at);
      double value;
      const char* next = std::from_chars(drawing.data() + at, end, value).ptr;
      at = drawing.find_first_of(kNumberStarts, static_cast<std::size_t>(next - drawing.data()));
    }
  }
  return starts;
}
