// What is lost at the root of a document and by the look at its first "width".
#include <algorithm>
#include <cmath>

#include "tools/document_bytes.h"
#include "tools/report/survey.h"

namespace {

constexpr double kPixel = 2.54 / 90.0;  // centimetres
constexpr double kMillimetre = 0.1;

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// The first "width" of the file, and where the "m" stands that makes its numbers millimetres.
struct FirstWidth {
  std::size_t word = std::string::npos;
  std::size_t unit = std::string::npos;
};

FirstWidth FindFirstWidth(std::string_view bytes) {
  FirstWidth found;
  found.word = bytes.find("width");
  if (found.word == bytes.npos) return found;
  std::size_t at = bytes.find_first_of("0123456789", found.word);
  if (at == bytes.npos) return found;
  at = bytes.find_first_not_of("0123456789.", at);
  if (at != bytes.npos) at = bytes.find_first_not_of(' ', at);
  if (at != bytes.npos && bytes[at] == 'm') found.unit = at;
  return found;
}

}  // namespace

void Survey::CheckRoot() {
  const SvgNode& root = document_.Root();
  for (const int line : document_.instructions) Report(Loss("style-sheet"), root, line);
  CheckUnits();
  const SvgAttribute* width = root.Find("width");
  const SvgAttribute* height = root.Find("height");
  if (height == nullptr) Report(Loss("no-root-height"), root, root.line);
  if (height != nullptr && UnitOf(height->value) == "%")
    Report(Loss("percentage"), root, height->line, Quoted(*height));

  const SvgAttribute* viewBox = root.Find("viewBox");
  if (viewBox == nullptr) return;
  double box[4] = {};
  std::size_t at = 0;
  for (double& number : box) {
    at = std::min(viewBox->value.find_first_not_of(" ,\t\r\n", at), viewBox->value.size());
    const auto read = NumberAt(viewBox->value, at);
    if (!read) return;
    number = read->value;
    at = read->end;
  }
  const auto fits = [](const SvgAttribute* size, double number) {
    return size == nullptr || std::fabs(LeadingNumberOf(size->value) - number) <= 1e-6 * std::fabs(number);
  };
  if (box[0] == 0 && box[1] == 0 && fits(width, box[2]) && fits(height, box[3])) return;
  Report(Loss("view-box"), root, viewBox->line, Quoted(*viewBox));
}

void Survey::CheckUnits() {
  const SvgNode& root = document_.Root();
  const SvgAttribute* width = root.Find("width");
  std::string bytes = document_.bytes;
  BlankDoctype(bytes);
  const FirstWidth first = FindFirstWidth(bytes);
  scale_ = first.unit == bytes.npos ? kPixel : kMillimetre;

  // The width of the root itself: an attribute of that name in its tag, with the unit in its value.
  bool ofRoot = width != nullptr && first.word > document_.rootTagBegin && first.word < document_.rootTagEnd &&
                IsSpace(bytes[first.word - 1]);
  if (ofRoot) {
    const std::size_t quote = bytes.find_first_of("\"'", first.word);
    const std::size_t equals = bytes.find_first_not_of(" \t\r\n", first.word + 5);
    ofRoot = equals < quote && bytes[equals] == '=' &&
             (first.unit == bytes.npos || first.unit < bytes.find(bytes[quote], quote + 1));
  }
  const bool inMillimetres = width != nullptr && UnitOf(width->value) == "mm";
  if (scale_ == kMillimetre && !(ofRoot && inMillimetres)) {
    std::string shown = bytes.substr(first.word, std::min<std::size_t>(first.unit + 2 - first.word, 60));
    Report(Loss("millimetres-by-accident"), root, document_.LineAt(first.word), shown);
  } else if (scale_ == kPixel && inMillimetres) {
    Report(Loss("millimetres-missed"), root, width->line, Quoted(*width));
  }
  for (const std::string_view name : {"width", "height"}) {
    const SvgAttribute* size = root.Find(name);
    if (size == nullptr) continue;
    const std::string_view unit = UnitOf(size->value);
    if (unit.empty() || unit == "px" || unit == "%" || (unit == "mm" && (inMillimetres || scale_ == kMillimetre))) {
      continue;
    }
    Report(Loss("root-units"), root, size->line, Quoted(*size));
    break;
  }
}
