#include "host/fills.h"

#include <memory>

#include "headless_host/inspection.h"
#include "tests/headless_host/host_fixture.h"

using namespace host_tests;

TEST(HostSpotFill, KeepsWhatItIsGiven) {
  const std::unique_ptr<CQXLinearSpotFill> fill(new CQXLinearSpotFill);
  CQXColor base(0x04030201, kCmykSpace, kNamedColourCorrection, kMatt);
  base.SetCartridge(2);
  base.SetTint(100.0);
  fill->ChangeFillAngle(270.0);
  fill->ChangeXOffset(1.5);
  fill->ChangeYOffset(2.5);
  fill->ChangeWorldToFillTm({1, 2, 3, 4, 5, 6});
  fill->ChangeFromColor(base);
  fill->ChangeToColor(CQXColor(0xFFFFFFFF, kRgbSpace, kNoCorrection, kMatt));
  fill->ChangeDuotone(0);
  fill->ChangeFillLengthRatio(-4.0);
  fill->AddFromColorMarker({10, 30});
  fill->AddFromColorMarker({98, 70});

  const SpotFillView view = ViewSpotFill(*fill);
  EXPECT_EQ(view.angle, 270.0);
  EXPECT_EQ(view.xOffset, 1.5);
  EXPECT_EQ(view.yOffset, 2.5);
  EXPECT_EQ(view.lengthRatio, -4.0);
  EXPECT_EQ(view.worldToFill.a, 1.0);
  EXPECT_EQ(view.worldToFill.f, 6.0);
  EXPECT_EQ(view.from.id, 0x04030201u);
  EXPECT_EQ(view.from.cartridge, 2);
  EXPECT_EQ(view.from.tint, 100.0);
  EXPECT_EQ(view.to.id, 0xFFFFFFFFu);
  EXPECT_FALSE(view.to.cartridge);
  EXPECT_EQ(view.duotone, 0);
  ASSERT_EQ(view.markers.size(), 2u);
  EXPECT_EQ(view.markers[0].position, 10);
  EXPECT_EQ(view.markers[1].tint, 70);
}

TEST(HostSpotFill, IsDestroyedThroughItsBase) {
  const HostLiveCounts before = LiveCounts();
  CQXGradientFill* fill = new CQXLinearSpotFill;
  static_cast<CQXSpotFill*>(fill)->AddFromColorMarker({1, 2});
  EXPECT_EQ(LiveCounts().gradientFills, before.gradientFills + 1);
  delete fill;
  EXPECT_EQ(LiveCounts(), before);
}
