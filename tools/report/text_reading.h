// How the filter reads the texts of attributes, as far as the report must know it: numbers, style texts, colours,
// transforms and path data. Nothing here keeps anything.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

bool StartsWithAnyCase(std::string_view text, std::string_view lowerCase);
bool EqualsAnyCase(std::string_view text, std::string_view lowerCase);
std::string LowerCase(std::string_view text);
std::string_view Trimmed(std::string_view text);
std::string InQuotes(std::string_view text);
// `word` is one of the words of `list`, which stand with a blank between them.
bool ListHas(std::string_view list, std::string_view word);
// The same for values: numbers are alike when they are equal, and px changes nothing.
bool ListHasValue(std::string_view list, std::string_view value);

// For each word of such a list, in its order.
template <typename Action>
void ForEachWord(std::string_view list, Action action) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(' '), list.size());
    action(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
}

// The number at the start of the text behind white space, and where it ends; nothing when there is none.
struct ReadNumber {
  double value;
  std::size_t end;
};
std::optional<ReadNumber> NumberAt(std::string_view text, std::size_t at = 0);
double LeadingNumberOf(std::string_view text);  // 0.0 when there is none
// What stands behind the number, without blanks: "mm", "%". Empty when there is no number.
std::string_view UnitOf(std::string_view length);

// One declaration of a style text as CSS takes it.
struct Declaration {
  std::string name;  // lower-case
  std::string_view value;
  std::size_t at;  // where the name begins in the text
  bool plain;      // written as the filter looks for it
};
std::vector<Declaration> Declarations(std::string_view style);

// Where the filter finds a property, such as "fill:", in a style text, and its value up to the end of the text.
struct FoundProperty {
  std::size_t at;
  std::string_view rest;
  std::string_view Value() const { return Trimmed(rest.substr(0, rest.find(';'))); }
};
std::optional<FoundProperty> FindProperty(std::string_view style, std::string_view nameAndColon);
// "opacity:" passes over one match behind a "-", but not over two.
std::optional<FoundProperty> FindOpacity(std::string_view style);

enum class ColourReading {
  kRead,
  kNone,
  kReference,    // url(
  kUnreachable,  // sends nothing
  kUnknown,      // black
  kKeyword,      // a keyword of CSS that gives black
  kMisread,      // another colour than is meant
  kShortHexAtEnd,
};
// `rest` is a value and what stands behind it in the text.
ColourReading ReadColour(std::string_view rest);

struct Matrix {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;
  bool IsIdentity() const;
  bool MovesOnly() const;  // the identity but for e and f
  double Scale() const;    // of lengths, on the average
};
// `inner` acts first.
Matrix operator*(const Matrix& outer, const Matrix& inner);

struct TransformReading {
  Matrix matrix;
  Matrix meant;                // as SVG says
  std::string rotationCentre;  // the first rotation with a centre
  std::string stoppedAt;       // what stopped the reading
  std::string misread;         // the first function of which not all arguments were read
};
TransformReading ReadTransform(std::string_view transform);

struct PathReading {
  std::string stopped;   // why and where the reading stops
  std::string glued;     // numbers that are read as others
  std::string afterArc;  // the first command that starts from a wrong point
  std::string smooth;    // the first command that mirrors a wrong point
  bool quadratic = false;
  bool relativeStart = false;
  bool endsOpen = false;  // the last subpath is not closed by a command or by its points
};
PathReading ReadPathData(std::string_view d);
PathReading ReadPoints(std::string_view points);
