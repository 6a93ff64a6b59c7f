// Pages and the files that are made of them.
#include "preview/image_file.h"

#include "tests/preview/preview_bench.h"

using namespace preview_tests;
using preview::ImageFormat;
using preview::ImageOptions;

namespace {

class ImageFiles : public PreviewTest {
 protected:
  // The bytes of the file; a failure goes to `failure`.
  std::string Write(const ImageOptions& options) {
    char* bytes = nullptr;
    std::size_t size = 0;
    std::FILE* file = open_memstream(&bytes, &size);
    failure = preview::WriteImage(drawer, options, file);
    std::fclose(file);
    std::string result(bytes, size);
    std::free(bytes);
    return result;
  }

  struct Size {
    int width, height;
    bool operator==(const Size&) const = default;
  };

  // The size of a PNG, whose pixels stay in `image`.
  Size WritePng(ImageOptions options) {
    options.format = ImageFormat::kPng;
    std::string bytes = Write(options);
    EXPECT_EQ(failure, "");
    EXPECT_TRUE(bytes.starts_with("\x89PNG"));
    image.reset(cairo_image_surface_create_from_png_stream(
        [](void* rest, unsigned char* out, unsigned length) {
          auto& text = *static_cast<std::string*>(rest);
          if (text.size() < length) return CAIRO_STATUS_READ_ERROR;
          std::copy_n(text.begin(), length, out);
          text.erase(0, length);
          return CAIRO_STATUS_SUCCESS;
        },
        &bytes));
    return {cairo_image_surface_get_width(image.get()), cairo_image_surface_get_height(image.get())};
  }

  static preview::Box Page(double width, double height) { return {0.0, 0.0, width, height, false}; }

  std::string failure;
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> image = {nullptr, &cairo_surface_destroy};
};

}  // namespace

TEST_F(ImageFiles, APngHasAPixelForA96thOfAnInch) {
  EXPECT_EQ(WritePng({.page = Page(2.54, 5.08)}), (Size{96, 192}));
  EXPECT_EQ(WritePng({.dpi = 50.0, .page = Page(2.54, 5.08)}), (Size{50, 100}));
  EXPECT_EQ(WritePng({.zoom = 2.0, .page = Page(2.54, 5.08)}), (Size{192, 384}));
}

TEST_F(ImageFiles, OneMeasureKeepsTheShapeAndBothStretch) {
  EXPECT_EQ(WritePng({.width = 30.0, .page = Page(2, 5)}), (Size{30, 75}));
  EXPECT_EQ(WritePng({.height = 30.0, .page = Page(2, 5)}), (Size{12, 30}));
  TakeValue(KEY_FILL, 0x0000FF);
  TakeSquare(2, 2);
  EXPECT_EQ(WritePng({.width = 40.0, .height = 80.0, .page = Page(4, 4)}), (Size{40, 80}));
  EXPECT_EQ(PixelOf(image.get(), 19, 20), kNothing);
  EXPECT_EQ(PixelOf(image.get(), 20, 39), kRed);
  EXPECT_EQ(PixelOf(image.get(), 20, 40), kNothing);
}

TEST_F(ImageFiles, ThePageIsWhatTheDrawingCoversWhereNoneIsGiven) {
  TakeValue(KEY_FILL, 0x0000FF);
  TakeSquare(5, 70);
  TakeSquare(6, 70);  // together 3 by 2
  EXPECT_EQ(WritePng({.width = 30.0}), (Size{30, 20}));
  EXPECT_EQ(PixelOf(image.get(), 0, 0), kRed);
  EXPECT_EQ(PixelOf(image.get(), 29, 19), kRed);
}

TEST_F(ImageFiles, HalfTheWidthOfALineBelongsToThePage) {
  TakeValue(KEY_THST, 3);
  TakeWidth(1.0);
  TakeSquare(5, 5);
  EXPECT_EQ(WritePng({.width = 30.0}), (Size{30, 30}));
  const preview::Box box = drawer.Bounds();
  EXPECT_EQ(box.left, 4.5);
  EXPECT_EQ(box.top, 7.5);
}

TEST_F(ImageFiles, AnEmptyDrawingIsAnEmptyPageOfTenCentimetres) {
  EXPECT_EQ(WritePng({}), (Size{378, 378}));  // 10 / 2.54 * 96 is 377.95
  EXPECT_EQ(PixelOf(image.get(), 100, 100), kNothing);
}

TEST_F(ImageFiles, AFlatDrawingStillHasAPixelOfHeight) {
  TakeValue(KEY_THST, 2);
  TakeLine(0, 5, 2.54, 5);
  EXPECT_EQ(WritePng({}), (Size{96, 1}));
}

TEST_F(ImageFiles, TheBackgroundLiesUnderTheDrawing) {
  WritePng({.background = "#00ff00", .page = Page(1, 1)});
  EXPECT_EQ(PixelOf(image.get(), 5, 5), kGreen);
  WritePng({.background = "#0000ff80", .page = Page(1, 1)});
  EXPECT_TRUE(Near(PixelOf(image.get(), 5, 5), {0, 0, 128, 128}, 1));
}

TEST_F(ImageFiles, ColoursAreNumbersAndNames) {
  EXPECT_TRUE(preview::IsColour("white"));
  EXPECT_TRUE(preview::IsColour("#fff"));
  EXPECT_TRUE(preview::IsColour("#00ff0080"));
  EXPECT_FALSE(preview::IsColour("#12"));
  EXPECT_FALSE(preview::IsColour("paleblack"));
  EXPECT_FALSE(preview::IsColour(""));
}

TEST_F(ImageFiles, AnAbsurdPageIsRefusedWithItsSize) {
  Write({.page = Page(1000.0, 1.0)});  // 37795 pixels
  EXPECT_NE(failure.find("37795 by 38 pixels"), std::string::npos) << failure;
  Write({.width = 100.0, .page = Page(1e300, 1e300)});
  EXPECT_EQ(failure, "the drawing has no end that could be shown");
  Write({.page = Page(300.0, 300.0)});  // 11339 by 11339
  EXPECT_NE(failure.find("no PNG larger than 100000000"), std::string::npos) << failure;
  Write({.width = 100.0, .page = Page(1000.0, 1.0)});
  EXPECT_EQ(failure, "");
}

TEST_F(ImageFiles, TheLongestSideIsDrawnAndOnePixelMoreIsRefused) {
  EXPECT_EQ(WritePng({.width = 32767.0, .page = Page(32767.0, 1.0)}), (Size{32767, 1}));
  Write({.width = 32768.0, .page = Page(32768.0, 1.0)});
  EXPECT_NE(failure.find("32768 by 1 pixels"), std::string::npos) << failure;
  EXPECT_NE(failure.find("longer than 32767"), std::string::npos) << failure;
}

TEST_F(ImageFiles, APdfKeepsTheSizeOfThePageInPoints) {
  const std::string bytes = Write({.format = ImageFormat::kPdf, .dpi = 300.0, .page = Page(2.54, 5.08)});
  EXPECT_EQ(failure, "");
  EXPECT_TRUE(bytes.starts_with("%PDF-"));
  EXPECT_NE(bytes.find("/MediaBox [ 0 0 72 144 ]"), std::string::npos);
}

TEST_F(ImageFiles, AnSvgIsMeasuredInPixels) {
  const std::string bytes = Write({.format = ImageFormat::kSvg, .page = Page(2.54, 5.08)});
  EXPECT_EQ(failure, "");
  EXPECT_NE(bytes.find("width=\"96px\" height=\"192px\""), std::string::npos) << bytes;
}

TEST_F(ImageFiles, AFileThatCannotBeWrittenIsAFailure) {
  for (const ImageFormat format : {ImageFormat::kPng, ImageFormat::kPdf, ImageFormat::kSvg}) {
    std::FILE* full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_NE(preview::WriteImage(drawer, {.format = format, .page = Page(1, 1)}, full), "");
    std::fclose(full);
  }
}

TEST(PathBounds, ACurveCountsWithItsTurningPoints) {
  // From (0, 0) to (4, 0) with both controls at height 4: the top is at t = 0.5, 0.75 * 4.
  preview::Path path;
  path.verbs = {preview::Path::Verb::kMove, preview::Path::Verb::kCurve};
  path.points = {{0, 0}, {0, 4}, {4, 4}, {4, 0}};
  const preview::Box box = path.Bounds();
  EXPECT_DOUBLE_EQ(box.top, 3.0);
  EXPECT_DOUBLE_EQ(box.bottom, 0.0);
  EXPECT_DOUBLE_EQ(box.left, 0.0);
  EXPECT_DOUBLE_EQ(box.right, 4.0);
}
