#include "host/colour.h"

#include <memory>
#include <utility>

#include "headless_host/inspection.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

TEST(HostColour, ANewColourHasWhatItsConstructorWasGivenAndNothingElse) {
  const CQXFullColor colour(0x00332211, kCmykSpace, kNamedColourCorrection, kMatt);
  const ColourView view = ViewColour(colour);
  EXPECT_EQ(view.id, 0x00332211u);
  EXPECT_EQ(view.space, kCmykSpace);
  EXPECT_EQ(view.correction, kNamedColourCorrection);
  EXPECT_EQ(view.reflectivity, kMatt);
  EXPECT_EQ(view.componentCount, 0);
  EXPECT_FALSE(view.tint);
  EXPECT_FALSE(view.cartridge);
  EXPECT_FALSE(view.name);
}

TEST(HostColour, TheValueIsCutTo32Bits) {
  const CQXColor colour(static_cast<unsigned long>(-1), kRgbSpace, kNoCorrection, kMatt);
  EXPECT_EQ(ViewColour(colour).id, 0xFFFFFFFFu);
}

TEST(HostColour, KeepsComponentsTintCartridgeAndName) {
  CQXFullColor colour(0, kRgbSpace, kNoCorrection, kMatt);
  colour.SetColor(1.0, 2.0, 3.0, kRgbSpace);
  ColourView view = ViewColour(colour);
  ASSERT_EQ(view.componentCount, 3);
  EXPECT_EQ(view.components[0], 1.0);
  EXPECT_EQ(view.components[1], 2.0);
  EXPECT_EQ(view.components[2], 3.0);

  colour.SetColor(0.1, 0.2, 0.3, 0.4, kCmykSpace);
  colour.SetTint(50.0);
  colour.SetCartridge(0);
  colour.SetCorrectionMode(kNamedColourCorrection);
  colour.SetColorName(u"Gold");
  colour.SetColorName(u"Silver");
  view = ViewColour(colour);
  ASSERT_EQ(view.componentCount, 4);
  EXPECT_EQ(view.components[0], 0.1);
  EXPECT_EQ(view.components[3], 0.4);
  EXPECT_EQ(view.space, kCmykSpace);
  EXPECT_EQ(view.tint, 50.0);
  EXPECT_EQ(view.cartridge, 0);
  EXPECT_EQ(view.correction, kNamedColourCorrection);
  EXPECT_EQ(view.name, u"Silver");
}

TEST(HostColour, OnlyTheUnpaintedValueInRgbIsInvisible) {
  CQXColor none(0xFFFFFFFF, kRgbSpace, kNoCorrection, kMatt);
  EXPECT_NE(none.IsInvisibleColor(), 0);
  EXPECT_EQ(CQXColor(0xFFFFFFFF, kCmykSpace, kNoCorrection, kMatt).IsInvisibleColor(), 0);
  EXPECT_EQ(CQXColor(0, kRgbSpace, kNoCorrection, kMatt).IsInvisibleColor(), 0);
  none.SetColor(1.0, 1.0, 1.0, kRgbSpace);
  EXPECT_EQ(none.IsInvisibleColor(), 0);
}

TEST(HostColour, IsEitherInvisibleOrProcessOrSpotOrFoil) {
  auto kinds = [](const CQXColor& colour) {
    return std::array{colour.IsInvisibleColor(), colour.IsProcessColor(), colour.IsSpotColor(), colour.IsSpotFoil()};
  };
  CQXColor colour(0, kCmykSpace, kNoCorrection, kMatt);
  EXPECT_EQ(kinds(colour), (std::array{0, 1, 0, 0}));
  colour.SetCorrectionMode(kNamedColourCorrection);
  EXPECT_EQ(kinds(colour), (std::array{0, 0, 1, 0}));
  colour.SetCartridge(0);
  EXPECT_EQ(kinds(colour), (std::array{0, 0, 0, 1}));
  EXPECT_EQ(kinds(CQXColor(0xFFFFFFFF, kRgbSpace, kNoCorrection, kMatt)), (std::array{1, 0, 0, 0}));
}

TEST(HostColour, GivesItsInksOnTheScaleOfOne) {
  auto inks = [](const CQXColor& colour) {
    std::array<double, 4> result;
    colour.GetCMYKcolor(&result[0], &result[1], &result[2], &result[3]);
    return result;
  };
  CQXColor colour(0xFF00CC33, kCmykSpace, kNoCorrection, kMatt);
  EXPECT_EQ(inks(colour), (std::array{0x33 / 255.0, 0xCC / 255.0, 0.0, 1.0}));
  colour.SetColor(0.25, 0.5, 0.75, 1.0, kCmykSpace);
  EXPECT_EQ(inks(colour), (std::array{0.25, 0.5, 0.75, 1.0}));
  colour.SetColor(255.0, 0.0, 51.0, kRgbSpace);
  EXPECT_EQ(inks(colour), (std::array{0.0, 1.0, 1.0 - 0.2, 0.0}));
  EXPECT_EQ(inks(CQXColor(0x0000FF00, kRgbSpace, kNoCorrection, kMatt)), (std::array{1.0, 0.0, 1.0, 0.0}));
  EXPECT_EQ(inks(CQXColor(0xFFFFFFFF, kRgbSpace, kNoCorrection, kMatt)), (std::array{0.0, 0.0, 0.0, 0.0}));
}

TEST(HostColour, ACopyIsItsOwn) {
  auto first = std::make_unique<CQXFullColor>(7, kRgbSpace, kNoCorrection, kMatt);
  first->SetColorName(u"Gold");
  const CQXFullColor copy(*first);
  CQXFullColor assigned(0, kCmykSpace, kNoCorrection, kMatt);
  assigned.SetColorName(u"Silver");
  assigned = *first;
  first->SetColorName(u"Lead");
  first->SetTint(1.0);
  first.reset();
  for (const CQXFullColor* colour : {&copy, static_cast<const CQXFullColor*>(&assigned)}) {
    EXPECT_EQ(ViewColour(*colour).id, 7u);
    EXPECT_EQ(ViewColour(*colour).space, kRgbSpace);
    EXPECT_EQ(ViewColour(*colour).name, u"Gold");
    EXPECT_FALSE(ViewColour(*colour).tint);
  }
  const CQXFullColor nameless(0, kRgbSpace, kNoCorrection, kMatt);
  assigned = nameless;
  EXPECT_FALSE(ViewColour(assigned).name);
}

TEST(HostColour, IsCountedWhileItLives) {
  const std::size_t before = LiveCounts().colours;
  {
    const CQXFullColor colour(0, kRgbSpace, kNoCorrection, kMatt);
    const CQXColor base(colour);
    EXPECT_EQ(LiveCounts().colours, before + 2);
  }
  EXPECT_EQ(LiveCounts().colours, before);
}

TEST(HostOverPrint, KeepsTypeAndFlag) {
  CQXOverPrint overPrint;
  EXPECT_EQ(ViewOverPrint(overPrint).type, kNoOverlay);
  EXPECT_FALSE(ViewOverPrint(overPrint).flag);
  overPrint.SetOverlayType(kOverlay, true);
  EXPECT_EQ(ViewOverPrint(overPrint).type, kOverlay);
  EXPECT_TRUE(ViewOverPrint(overPrint).flag);
}

TEST(HostInkConversion, TakesInkAndBlackFromWhite) {
  unsigned char red, green, blue;
  BmpCMYKtoRGB(0, 55, 255, 0, &red, &green, &blue);
  EXPECT_EQ(red, 255);
  EXPECT_EQ(green, 200);
  EXPECT_EQ(blue, 0);
  BmpCMYKtoRGB(10, 200, 0, 100, &red, &green, &blue);
  EXPECT_EQ(red, 145);
  EXPECT_EQ(green, 0);  // 255 - 200 - 100 is below 0
  EXPECT_EQ(blue, 155);
}

TEST(HostInkConversion, NoColourManagementIsAtHand) {
  unsigned char red = 1, green = 2, blue = 3;
  EXPECT_EQ(VectorCMYKtoRGB(10, 20, 30, 40, &red, &green, &blue), 0);
  EXPECT_EQ(red, 1);
  EXPECT_EQ(green, 2);
  EXPECT_EQ(blue, 3);
}
