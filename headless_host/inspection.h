// What the payload objects of the command stream hold, for the dump, the preview and tests.
//
// A view is a copy of the object's state at the time of the call; texts and arrays in it point into the object and are
// valid as long as the object lives and is not changed. No call is written to the journal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/bitmap.h"
#include "host/colour.h"
#include "host/composer.h"
#include "host/fills.h"
#include "host/matrix.h"
#include "host/polygon.h"
#include "host/transparency.h"

// An array inside an object, for programs older than std::span as well.
template <class Element>
class ArrayView {
 public:
  ArrayView() = default;
  ArrayView(const Element* data, std::size_t size) : data_(data), size_(size) {}
  template <class Container>
  ArrayView(const Container& container) : data_(container.data()), size_(container.size()) {}

  const Element* data() const { return data_; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const Element* begin() const { return data_; }
  const Element* end() const { return data_ + size_; }
  const Element& operator[](std::size_t i) const { return data_[i]; }
  const Element& front() const { return data_[0]; }
  const Element& back() const { return data_[size_ - 1]; }

 private:
  const Element* data_ = nullptr;
  std::size_t size_ = 0;
};

struct ColourView {
  std::uint32_t id;  // the value given to the constructor
  COLORSPACE space;  // of the last components, otherwise of the constructor
  CORRECTION_MODE correction;
  REFLECTIVITY reflectivity;
  int componentCount;    // 0, 3 (red, green, blue, 0 to 255) or 4 (cyan, magenta, yellow, black, 0 to 1)
  double components[4];  // the first `componentCount`
  std::optional<double> tint;
  std::optional<int> cartridge;
  std::optional<std::u16string_view> name;  // of a full colour
};
ColourView ViewColour(const CQXColor& colour);
ColourView ViewColour(const CQXFullColor& colour);

struct OverPrintView {
  OVERLAY_TYPE type;
  bool flag;
};
OverPrintView ViewOverPrint(const CQXOverPrint& overPrint);

struct SpotFillView {
  double angle;  // degrees
  double xOffset, yOffset;
  double lengthRatio;
  TM worldToFill;
  ColourView from, to;
  int duotone;
  ArrayView<CSpotMarker> markers;
};
SpotFillView ViewSpotFill(const CQXSpotFill& fill);

struct TransparencyView {
  TransparencyType type;
  unsigned char opacity;  // uniform only
  TM worldToFill;         // from here on linear and radial only
  double length, angle;
  ArrayView<CTransMarker> markers;
};
TransparencyView ViewTransparency(const CQXTransparency& transparency);

struct BitmapView {
  std::u16string_view path;
  double placedWidth, placedHeight, placedX;
  TM placement;
  std::uint32_t width, height;      // pixels; 0 before Create
  ArrayView<unsigned char> pixels;  // rows from the top, red, green, blue, alpha, alpha not multiplied in
};
BitmapView ViewBitmap(const CQXBitmap& bitmap);

struct TextRunView {
  std::u16string text;
  std::optional<std::u16string> font;  // the name under which it was found
  double height;                       // thousandths of an inch
};

struct ParagraphState {
  std::uint32_t tag;
  ParagraphPosition position;
  std::optional<int> justification;
  double originX, originY, height;
  std::int32_t charScale;
  std::uint16_t fontCode;
  std::uint32_t replacedFontId;
  std::int32_t compression, lineFlags;
  std::uint32_t lineMode;
  double listMeasure;
  std::int32_t statusLimit, paragraphOption;
};

struct ParagraphView : ParagraphState {
  TM placement;
  std::vector<TextRunView> runs;
};
// Nothing when the composer does not know the paragraph, or no longer.
std::optional<ParagraphView> ViewParagraph(const ComposedParagraph* paragraph);
// The memory that a closed paragraph and its text take; 0 when the composer does not know it.
std::size_t ParagraphBytes(const ComposedParagraph* paragraph);

// The sides of a polygon.
ArrayView<PolygonSide> ViewSides(const POLYGON& polygon);

// The name under which the font was found.
std::u16string_view FontName(const FontRecord& font);
