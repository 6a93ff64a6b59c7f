// The bench of the preview's tests: imports elements, draws the records, and looks at single pixels. A unit of the
// document is one pixel of the picture, which is 100 by 100, and a tenth of a centimetre.
#pragma once

#include <cairo.h>

#include <array>
#include <memory>
#include <ostream>
#include <string_view>

#include "preview/draw_stream.h"
#include "tests/support/filter_test.h"

namespace preview_tests {

inline constexpr int kSide = 100;

// Colours as they lie in the picture: alpha is multiplied in.
struct Pixel {
  int red, green, blue, alpha;
  bool operator==(const Pixel&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const Pixel& p) {
  return out << p.red << "," << p.green << "," << p.blue << "," << p.alpha;
}

inline constexpr Pixel kNothing = {0, 0, 0, 0};
inline constexpr Pixel kBlack = {0, 0, 0, 255};
inline constexpr Pixel kRed = {255, 0, 0, 255};
inline constexpr Pixel kGreen = {0, 255, 0, 255};
inline constexpr Pixel kBlue = {0, 0, 255, 255};

inline testing::AssertionResult Near(Pixel a, Pixel b, int tolerance) {
  const int most = std::max(
      {std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue), std::abs(a.alpha - b.alpha)});
  if (most <= tolerance) return testing::AssertionSuccess();
  return testing::AssertionFailure() << a << " and " << b << " differ by " << most;
}

inline Pixel PixelOf(cairo_surface_t* image, int x, int y) {
  cairo_surface_flush(image);
  const unsigned char* row = cairo_image_surface_get_data(image) + y * cairo_image_surface_get_stride(image);
  const std::uint32_t value = reinterpret_cast<const std::uint32_t*>(row)[x];
  const auto part = [value](int shift) { return static_cast<int>((value >> shift) & 0xFF); };
  return {part(16), part(8), part(0), part(24)};
}

struct InkBox {
  int left = kSide, top = kSide, right = -1, bottom = -1;  // of the outermost pixels; right and bottom are within
};

// A picture of a drawer's page from 0, 0 to 10, 10.
class Picture {
 public:
  explicit Picture(preview::StreamDrawer& drawer) {
    cairo_t* context = cairo_create(image_.get());
    drawer.Draw(context, {0.0, 0.0, 10.0, 10.0, false}, kSide, kSide, 1.0);
    EXPECT_EQ(cairo_status(context), CAIRO_STATUS_SUCCESS);
    cairo_destroy(context);
  }

  // x to the right and y down, each 0 to 99.
  Pixel At(int x, int y) const { return PixelOf(image_.get(), x, y); }

  // Of the pixels that are more than half covered.
  InkBox Ink() const {
    InkBox box;
    for (int y = 0; y < kSide; ++y) {
      for (int x = 0; x < kSide; ++x) {
        if (At(x, y).alpha < 128) continue;
        box.left = std::min(box.left, x);
        box.right = std::max(box.right, x);
        box.top = std::min(box.top, y);
        box.bottom = std::max(box.bottom, y);
      }
    }
    return box;
  }

 private:
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> image_ = {
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kSide, kSide), &cairo_surface_destroy};
};

template <class Base>
class PreviewOn : public Base {
 protected:
  preview::StreamDrawer drawer;

  // Imports a document with these elements and draws it.
  Picture DrawBody(std::string_view elements) {
    this->ImportAll(Base::Document(elements));
    return DrawCommands();
  }
  // Draws the records of the last import or drain.
  Picture DrawCommands() {
    for (const ImportCommand& command : this->commands) drawer.Take(command);
    return Picture(drawer);
  }

  // Records made by hand, in centimetres with y up.
  void TakeValue(CommandKey key, std::int32_t value = 0) {
    ImportCommand command = {};
    command.key = key;
    command.value = value;
    drawer.Take(command);
  }
  void TakeWidth(double width) {
    ImportCommand command = {};
    command.key = KEY_WIDT;
    command.data = &width;
    drawer.Take(command);
  }
  void TakeLine(double x0, double y0, double x1, double y1) {
    LineRecord line = {};
    line.x0 = x0;
    line.y0 = y0;
    line.x1 = x1;
    line.y1 = y1;
    ImportCommand command = {};
    command.key = KEY_LINE;
    command.size = sizeof line;
    command.data = &line;
    drawer.Take(command);
  }
  // A square of two by two centimetres with its lower left corner at (x, y), as a path.
  void TakeSquare(double x, double y) {
    TakeValue(KEY_PATH);
    TakeLine(x, y, x + 2, y);
    TakeLine(x + 2, y, x + 2, y + 2);
    TakeLine(x + 2, y + 2, x, y + 2);
    TakeLine(x, y + 2, x, y);
    TakeValue(KEY_ENDP);
  }
};

using PreviewTest = PreviewOn<FilterTest>;

}  // namespace preview_tests
