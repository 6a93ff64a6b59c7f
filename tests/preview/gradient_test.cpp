// Gradient and pattern fills, and the opacity that comes with them.
#include "preview/fills.h"
#include "tests/headless_host/sample_images.h"
#include "tests/preview/preview_bench.h"

using namespace preview_tests;

namespace {

class Gradients : public PreviewTest {
 protected:
  // Red to blue under the id "ends", then `definition` in the same defs, then `elements`.
  Picture DrawWith(std::string_view definition, std::string_view elements, std::string_view stops = kRedToBlue) {
    return DrawBody("<defs><linearGradient id=\"ends\">" + std::string(stops) + "</linearGradient>" +
                    std::string(definition) + "</defs>" + std::string(elements));
  }

  static constexpr char kRedToBlue[] =
      R"svg(<stop offset="0" style="stop-color:#ff0000"/><stop offset="1" style="stop-color:#0000ff"/>)svg";
  static constexpr char kSquare[] = R"svg(<rect width="100" height="100" style="fill:url(#g)"/>)svg";
};

// The colour at a part of the way from red to blue.
Pixel RedToBlue(double part) { return {static_cast<int>(255 * (1 - part)), 0, static_cast<int>(255 * part), 255}; }

}  // namespace

TEST_F(Gradients, ALinearOneRunsFromItsStartToItsEndAndStaysThere) {
  const Picture picture = DrawWith(R"svg(<linearGradient id="g" xlink:href="#ends" x1="20" x2="80"/>)svg", kSquare);
  EXPECT_EQ(picture.At(5, 50), kRed);
  EXPECT_TRUE(Near(picture.At(35, 10), RedToBlue(15.5 / 60), 4));
  EXPECT_TRUE(Near(picture.At(65, 90), RedToBlue(45.5 / 60), 4));
  EXPECT_EQ(picture.At(95, 50), kBlue);
}

TEST_F(Gradients, ALinearOneRunsDownThePageWhenYGrows) {
  const Picture picture = DrawWith(R"svg(<linearGradient id="g" xlink:href="#ends" y1="20" y2="80"/>)svg", kSquare);
  EXPECT_EQ(picture.At(50, 5), kRed);
  EXPECT_TRUE(Near(picture.At(10, 35), RedToBlue(15.5 / 60), 4));
  EXPECT_EQ(picture.At(50, 95), kBlue);
}

TEST_F(Gradients, ARadialOneRunsFromItsCentreToItsRadius) {
  const Picture picture =
      DrawWith(R"svg(<radialGradient id="g" xlink:href="#ends" cx="40" cy="60" r="30"/>)svg", kSquare);
  EXPECT_TRUE(Near(picture.At(40, 60), kRed, 8));
  EXPECT_TRUE(Near(picture.At(55, 60), RedToBlue(15.5 / 30), 6));
  EXPECT_TRUE(Near(picture.At(40, 45), RedToBlue(14.5 / 30), 6));
  EXPECT_EQ(picture.At(80, 60), kBlue);
}

TEST_F(Gradients, StopsStandAtTheirPositions) {
  const Picture picture = DrawWith(R"svg(<linearGradient id="g" xlink:href="#ends" x1="0" x2="100"/>)svg", kSquare,
                                   R"svg(<stop offset="0.25" style="stop-color:#ff0000"/>
                                      <stop offset="0.5" style="stop-color:#00ff00"/>
                                      <stop offset="0.5" style="stop-color:#0000ff"/>)svg");
  EXPECT_EQ(picture.At(20, 50), kRed);
  EXPECT_TRUE(Near(picture.At(37, 50), {128, 128, 0, 255}, 6));
  EXPECT_TRUE(Near(picture.At(48, 50), kGreen, 16));
  EXPECT_EQ(picture.At(51, 50), kBlue);
}

TEST_F(Gradients, TheOpacityOfStopsRunsOverTheSameWay) {
  const Picture picture = DrawWith(R"svg(<linearGradient id="g" xlink:href="#ends" x1="0" x2="100"/>)svg", kSquare,
                                   R"svg(<stop offset="0" style="stop-color:#ff0000;stop-opacity:1"/>
                                      <stop offset="1" style="stop-color:#ff0000;stop-opacity:0"/>)svg");
  EXPECT_TRUE(Near(picture.At(0, 50), kRed, 4));
  EXPECT_TRUE(Near(picture.At(50, 50), {126, 0, 0, 126}, 6));
  EXPECT_TRUE(Near(picture.At(99, 50), kNothing, 2));
}

TEST_F(Gradients, OneEndsWithTheFlatFillBehindItsPath) {
  const Picture picture = DrawWith(R"svg(<linearGradient id="g" xlink:href="#ends" x1="20" x2="80"/>)svg",
                                   R"svg(<path d="M0 0H100V40H0Z" style="fill:url(#g)"/>
                                      <path d="M0 50H100V90H0Z" style="fill:#00ff00"/>)svg");
  EXPECT_EQ(picture.At(5, 20), kRed);
  EXPECT_EQ(picture.At(5, 70), kGreen);
  EXPECT_EQ(picture.At(95, 70), kGreen);
}

TEST_F(Gradients, TheColourBehindOneHoldsForARectangleToo) {
  const Picture picture = DrawWith(R"svg(<linearGradient id="g" xlink:href="#ends" x1="20" x2="80"/>)svg",
                                   R"svg(<rect width="100" height="40" style="fill:url(#g)"/>
                                      <rect y="50" width="100" height="40" style="stroke:none"/>)svg");
  EXPECT_EQ(picture.At(5, 20), kRed);
  EXPECT_EQ(picture.At(5, 70), kBlack);
}

TEST_F(Gradients, OneWithoutStopsPaintsNothing) {
  const Picture picture = DrawBody(R"svg(<defs><linearGradient id="g" x2="100">
      <stop offset="0" style="stop-color:#ff0000"/></linearGradient></defs>)svg" +
                                   std::string(kSquare));
  EXPECT_EQ(picture.Ink().right, -1);
}

TEST_F(Gradients, OneWithoutALengthIsItsLastColour) {
  EXPECT_EQ(DrawWith(R"svg(<linearGradient id="g" xlink:href="#ends" x1="50" x2="50"/>)svg", kSquare).At(10, 10),
            kBlue);
}

TEST_F(Gradients, ARadialOneWithoutARadiusIsItsLastColour) {
  EXPECT_EQ(DrawWith(R"svg(<radialGradient id="g" xlink:href="#ends" cx="50" cy="50"/>)svg", kSquare).At(10, 10),
            kBlue);
}

TEST_F(Gradients, ATwoColourOneRunsFromTheFirstToTheSecond) {
  FillDefinition fill = {};
  fill.fillClass = 4;
  fill.fillType = kLinearFill;
  fill.forwardMatrix = {1.0, 0.0, 1.0, 0.0, 0.0, 0.0};  // the second column points to the right
  fill.fillScale = -10.0;
  fill.gradient.gradientForm = 3;
  fill.gradient.colourA[0] = 255.0;
  fill.gradient.colourB[2] = 255.0;
  const auto gradient = preview::ReadGradient(fill);
  ASSERT_EQ(gradient->stops.size(), 2u);
  EXPECT_EQ(gradient->to.x, 10.0);
  EXPECT_EQ(gradient->to.y, 0.0);
  EXPECT_EQ(gradient->stops[0].colour.red, 1.0);
  EXPECT_EQ(gradient->stops[1].position, 1.0);
  EXPECT_EQ(gradient->stops[1].colour.blue, 1.0);
}

TEST_F(Gradients, PositionsNeverGoBackAndStayWithinTheWay) {
  FillDefinition fill = {};
  fill.fillType = kRadialFill;
  fill.gradient.gradientForm = 1;
  fill.gradient.stopCount = 4;
  const std::int32_t positions[] = {-10, 60, 30, 5000};
  for (int i = 0; i < 4; ++i) fill.gradient.stopPositions[i] = positions[i];
  const auto gradient = preview::ReadGradient(fill);
  ASSERT_EQ(gradient->stops.size(), 4u);
  EXPECT_EQ(gradient->stops[0].position, 0.0);
  EXPECT_EQ(gradient->stops[1].position, 0.6);
  EXPECT_EQ(gradient->stops[2].position, 0.6);
  EXPECT_EQ(gradient->stops[3].position, 1.0);
}

TEST_F(Gradients, AStopCountBeyondTheListIsCut) {
  FillDefinition fill = {};
  fill.fillType = kLinearFill;
  fill.gradient.gradientForm = 1;
  fill.gradient.stopCount = 0xFFFFFFFF;
  EXPECT_EQ(preview::ReadGradient(fill)->stops.size(), 101u);
}

TEST_F(Gradients, MatricesThatAreNotFiniteDoNoHarm) {
  FillDefinition fill = {};
  fill.fillClass = 4;
  fill.gradient.gradientForm = 1;
  fill.gradient.stopCount = 1;
  fill.gradient.stopColours[0] = 0x0000FF;
  ImportCommand command = {};
  command.key = KEY_FDEF;
  command.data = &fill;
  const double infinity = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  for (const std::uint32_t type : {kLinearFill, kRadialFill}) {
    for (const double number : {infinity, nan, 1e308}) {
      fill.fillType = type;
      fill.forwardMatrix = {number, number, number, number, number, number};
      fill.fillScale = number;
      drawer.Take(command);
      TakeSquare(4, 4);
    }
  }
  EXPECT_EQ(Picture(drawer).At(50, 50), kRed);
}

TEST_F(Gradients, ATileRepeatsOverTheShape) {
  ASSERT_TRUE(sample_images::WriteBytes(folder + "tile.png", sample_images::PngOfOneColour(2, 2, {0, 255, 0, 255})));
  const Picture picture = DrawBody(R"svg(<defs><pattern id="p" width="20" height="20">
      <image width="20" height="20" xlink:href="tile.png"/></pattern></defs>
      <rect x="10" y="10" width="50" height="50" style="fill:url(#p)"/>
      <rect x="70" y="10" width="20" height="20" style="fill:#ff0000"/>)svg");
  EXPECT_EQ(picture.At(15, 15), kGreen);
  EXPECT_EQ(picture.At(55, 55), kGreen);
  EXPECT_EQ(picture.At(65, 55), kNothing);
  EXPECT_EQ(picture.At(80, 20), kRed);
}

TEST_F(Gradients, ATileIsUprightOnTheUnitSquareOfItsFillSpace) {
  // A picture of one by two pixels, red above green.
  using namespace sample_images;
  Bytes rows = {0, 255, 0, 0, 255, 0, 0, 255, 0, 255}, png = PngHead(1, 2);
  AppendChunk(png, "IDAT", Stored(rows));
  AppendChunk(png, "IEND", {});
  ASSERT_TRUE(WriteBytes(folder + "tile.png", png));
  FillDefinition fill = {};
  fill.fillClass = 4;
  fill.fillType = kPatternFill;
  fill.inverseMatrix = {0.1, 0.0, 0.0, 0.1, 0.0, 0.0};  // one tile on the page of 10 by 10
  const std::string path = folder + "tile.png";
  for (std::size_t i = 0; i < path.size() && i + 1 < kTilePathUnits; ++i) {
    fill.pattern.tilePath[i] = static_cast<unsigned char>(path[i]);
  }
  ImportCommand command = {};
  command.key = KEY_PFDF;
  command.data = &fill;
  drawer.Take(command);
  TakeSquare(4, 7);
  TakeSquare(4, 1);
  const Picture picture(drawer);
  EXPECT_TRUE(Near(picture.At(50, 25), kRed, 4));
  EXPECT_TRUE(Near(picture.At(50, 75), kGreen, 4));
}

TEST_F(Gradients, ATileWithoutAPicturePaintsNothing) {
  FillDefinition fill = {};
  fill.fillClass = 4;
  fill.fillType = kPatternFill;
  ImportCommand command = {};
  command.key = KEY_PFDF;
  command.data = &fill;
  drawer.Take(command);
  TakeSquare(4, 4);
  EXPECT_EQ(Picture(drawer).Ink().right, -1);
}
