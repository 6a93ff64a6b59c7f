// Paragraphs and bitmaps.
#include "tests/images/image_bench.h"
#include "tests/preview/preview_bench.h"

using namespace preview_tests;

namespace {

// A font-size of 10 makes capitals of an inch here: 25.4 pixels.
class Paragraphs : public PreviewTest {
 protected:
  Picture DrawText(std::string_view attributes, std::string_view text = "H") {
    return DrawBody("<text x=\"50\" y=\"60\" font-family=\"DejaVu Sans\" font-size=\"10\" " + std::string(attributes) +
                    ">" + std::string(text) + "</text>");
  }
};

class Bitmaps : public PreviewOn<ImageTest> {
 protected:
  // One by two pixels, red above blue, as a file beside the document.
  void SaveTwoPixels() {
    using namespace sample_images;
    const Bytes rows = {0, 255, 0, 0, 255, 0, 0, 0, 255, 255};
    Bytes png = PngHead(1, 2);
    AppendChunk(png, "IDAT", Stored(rows));
    AppendChunk(png, "IEND", {});
    ASSERT_TRUE(WriteBytes(folder + "two.png", png));
  }
};

}  // namespace

TEST_F(Paragraphs, StandOnTheirOriginWithCapitalsOfTheirHeight) {
  const InkBox ink = DrawText("fill=\"#ff0000\"").Ink();
  EXPECT_NEAR(ink.bottom, 59, 1);
  EXPECT_NEAR(ink.top, 60 - 25.4, 3);
  EXPECT_GE(ink.left, 50);
  EXPECT_LE(ink.left, 56);
}

TEST_F(Paragraphs, HaveTheFillColour) {
  const Picture picture = DrawText("fill=\"#ff0000\"");
  const InkBox ink = picture.Ink();
  EXPECT_TRUE(Near(picture.At(ink.left + 1, 50), kRed, 1));
}

TEST_F(Paragraphs, EndAtTheirOriginWhenTheirAnchorIsTheEnd) {
  const InkBox ink = DrawText("text-anchor=\"end\"").Ink();
  EXPECT_LT(ink.right, 50);
  EXPECT_GE(ink.right, 44);
}

TEST_F(Paragraphs, LieAroundTheirOriginWhenTheirAnchorIsTheMiddle) {
  const InkBox ink = DrawText("text-anchor=\"middle\"").Ink();
  EXPECT_NEAR((ink.left + ink.right + 1) / 2.0, 50.0, 1.5);
}

TEST_F(Paragraphs, OfTwoLinesHaveTheFirstOnTheOrigin) {
  const Picture picture = DrawText("", "H\\PH");
  const InkBox ink = picture.Ink();
  EXPECT_NEAR(ink.top, 60 - 25.4, 3);
  EXPECT_GT(ink.bottom, 75);
}

TEST_F(Paragraphs, WithoutAFillHaveNoInk) { EXPECT_EQ(DrawText("fill=\"none\"").Ink().right, -1); }

TEST_F(Paragraphs, CanBeAClip) {
  const Picture picture = DrawBody(R"svg(<defs><clipPath id="c">
      <text x="50" y="60" font-family="DejaVu Sans" font-size="10">H</text></clipPath></defs>
      <rect width="100" height="100" clip-path="url(#c)" style="fill:#0000ff"/>)svg");
  const InkBox ink = picture.Ink();
  EXPECT_NEAR(ink.bottom, 59, 1);
  EXPECT_GE(ink.left, 50);
  EXPECT_TRUE(Near(picture.At(ink.left + 1, 50), kBlue, 1));
}

TEST_F(Paragraphs, OfNoHeightOrAnEndlessOneAreNotDrawn) {
  // The height is the number as it stands when its unit is none that the filter converts.
  ImportAll(
      Document("<text x=\"50\" y=\"60\" font-size=\"0pt\">H</text><text x=\"50\" y=\"60\" font-size=\"-500pt\">H</text>"
               "<text x=\"50\" y=\"60\" font-size=\"1e300pt\">H</text>"));
  EXPECT_EQ(DrawCommands().Ink().right, -1);
}

TEST_F(Paragraphs, OfMonstrousHeightDoNotSpoilTheRest) {
  const Picture picture = DrawBody(R"svg(<text x="50" y="60" font-size="99999999pt">H</text>
      <text x="50" y="60" font-family="DejaVu Sans" font-size="10" fill="#ff0000">H</text>)svg");
  const InkBox ink = picture.Ink();
  EXPECT_NEAR(ink.bottom, 59, 1);
  EXPECT_NEAR(ink.top, 60 - 25.4, 3);
}

TEST_F(Paragraphs, HaveNoOutline) {
  // A line of 4 units would reach 2 pixels down below the origin.
  EXPECT_NEAR(DrawText("stroke=\"#0000ff\" stroke-width=\"4\"").Ink().bottom, 59, 1);
}

TEST_F(Paragraphs, CountWithTheirInkForTheExtent) {
  DrawText("");
  const preview::Box box = drawer.Bounds();
  EXPECT_NEAR(box.bottom, 4.0, 0.1);
  EXPECT_NEAR(box.top, 4.0 + 2.54, 0.3);
  EXPECT_GT(box.left, 5.0);
}

TEST_F(Bitmaps, FillTheirPlaceUpright) {
  SaveTwoPixels();
  const Picture picture = DrawBody(Image("two.png", "x=\"10\" width=\"20\" height=\"40\""));
  const InkBox ink = picture.Ink();
  EXPECT_EQ(ink.left, 10);
  EXPECT_EQ(ink.right, 29);
  EXPECT_EQ(ink.top, 0);
  EXPECT_EQ(ink.bottom, 39);
  EXPECT_TRUE(Near(picture.At(20, 9), kRed, 8));
  EXPECT_TRUE(Near(picture.At(20, 30), kBlue, 8));
}

TEST_F(Bitmaps, FollowTheMatrixOfTheirElement) {
  SaveTwoPixels();
  const Picture picture =
      DrawBody(Image("two.png", "width=\"20\" height=\"20\" transform=\"translate(50,10) scale(2,3)\""));
  const InkBox ink = picture.Ink();
  EXPECT_EQ(ink.left, 50);
  EXPECT_EQ(ink.right, 89);
  EXPECT_EQ(ink.top, 10);
  EXPECT_EQ(ink.bottom, 69);
}

TEST_F(Bitmaps, TakeTheUniformOpacity) {
  SaveTwoPixels();
  const Picture picture = DrawBody("<g opacity=\"0.2\">" + Image("two.png", "width=\"20\" height=\"40\"") + "</g>");
  EXPECT_TRUE(Near(picture.At(10, 9), {51, 0, 0, 51}, 3));
}

TEST_F(Bitmaps, KeepTheirOwnTransparency) {
  DrawBody(Image(DataUri("png", Png({200, 100, 0, 128})), "width=\"20\" height=\"20\""));
  EXPECT_TRUE(Near(Picture(drawer).At(10, 10), {100, 50, 0, 128}, 2));
}

TEST_F(Bitmaps, OfNoExtentAreNotDrawn) {
  SaveTwoPixels();
  EXPECT_EQ(DrawBody(Image("two.png", "width=\"0\" height=\"40\"")).Ink().right, -1);
}
