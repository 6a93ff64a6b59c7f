#include "host/bitmap.h"

#include <sys/stat.h>
#include <unistd.h>

#include "headless_host/inspection.h"
#include "headless_host/limits.h"
#include "headless_host/text.h"
#include "tests/headless_host/host_fixture.h"
#include "tests/headless_host/sample_images.h"

using namespace host_tests;
using namespace sample_images;

namespace {

class HostBitmapTest : public HostTest {
 protected:
  ~HostBitmapTest() override { DeleteQXBitmap(bitmap); }

  bool Create(const std::u16string& path) { return bitmap->Create(path.c_str(), 0, 0, 0, nullptr, nullptr, false); }

  // Writes the bytes to a file and makes the bitmap of it.
  bool CreateFrom(std::span<const unsigned char> bytes) {
    EXPECT_TRUE(WriteBytes(folder.File("image"), bytes));
    return Create(headless::TextFromUtf8(folder.File("image")));
  }

  BitmapView View() const { return ViewBitmap(*bitmap); }

  std::array<int, 4> Pixel(std::size_t index) const {
    const auto pixels = View().pixels;
    return {pixels[4 * index], pixels[4 * index + 1], pixels[4 * index + 2], pixels[4 * index + 3]};
  }

  // Each channel within two of the value expected: JPEG loses a little.
  void ExpectRed() {
    ASSERT_EQ(View().width, 2u);
    ASSERT_EQ(View().height, 2u);
    ASSERT_EQ(View().pixels.size(), 16u);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_NEAR(Pixel(i)[0], 255, 2);
      EXPECT_NEAR(Pixel(i)[1], 0, 2);
      EXPECT_NEAR(Pixel(i)[2], 0, 2);
      EXPECT_EQ(Pixel(i)[3], 255);
    }
  }

  ScratchFolder folder;
  CQXBitmap* bitmap = NewQXBitmap();
};

}  // namespace

TEST_F(HostBitmapTest, DecodesAPngWithItsAlpha) {
  ASSERT_TRUE(CreateFrom(PngOfOneColour(3, 2, {10, 20, 30, 40})));
  EXPECT_EQ(View().width, 3u);
  EXPECT_EQ(View().height, 2u);
  ASSERT_EQ(View().pixels.size(), 24u);
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(Pixel(i), (std::array{10, 20, 30, 40}));
}

TEST_F(HostBitmapTest, DecodesAJpeg) {
  ASSERT_TRUE(CreateFrom(kRedJpeg));
  ExpectRed();
}

TEST_F(HostBitmapTest, DecodesAJpegOfFourInksWithAndWithoutTheMarkerThatInvertsThem) {
  ASSERT_TRUE(CreateFrom(kMarkedInksJpeg));
  ExpectRed();
  ASSERT_TRUE(CreateFrom(kPlainInksJpeg));
  ExpectRed();
}

TEST_F(HostBitmapTest, KeepsPathAndPlacement) {
  ASSERT_TRUE(CreateFrom(PngOfOneColour(1, 1, {0, 0, 0, 255})));
  const double width = 1.5, height = 2.5, x = 3.5;
  bitmap->SetPlacedWidth(&width);
  bitmap->SetPlacedHeight(&height);
  bitmap->SetPlacedX(&x);
  bitmap->placement = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(headless::Utf8FromText(View().path), folder.File("image"));
  EXPECT_EQ(View().placedWidth, 1.5);
  EXPECT_EQ(View().placedHeight, 2.5);
  EXPECT_EQ(View().placedX, 3.5);
  EXPECT_EQ(View().placement.c, 3.0);
}

TEST_F(HostBitmapTest, RefusesWhatIsNoImage) {
  EXPECT_FALSE(Create(headless::TextFromUtf8(folder.File("missing"))));
  EXPECT_FALSE(Create(headless::TextFromUtf8(folder.Path())));
  EXPECT_FALSE(Create(u""));
  EXPECT_FALSE(CreateFrom({}));
  const unsigned char text[] = "GIF89a";
  EXPECT_FALSE(CreateFrom(text));
}

TEST_F(HostBitmapTest, RefusesAPipeWithoutWaitingForIt) {
  ASSERT_EQ(mkfifo(folder.File("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(Create(headless::TextFromUtf8(folder.File("pipe"))));
}

TEST_F(HostBitmapTest, RefusesADamagedPng) {
  Bytes png = PngOfOneColour(4, 4, {1, 2, 3, 4});
  for (const std::size_t length : {std::size_t{8}, std::size_t{20}, std::size_t{33}, png.size() / 2}) {
    EXPECT_FALSE(CreateFrom(std::span(png).first(length))) << length;
  }
  png[45] ^= 0xFF;
  EXPECT_FALSE(CreateFrom(png));
}

TEST_F(HostBitmapTest, RefusesADamagedJpeg) {
  Bytes jpeg(std::begin(kRedJpeg), std::end(kRedJpeg));
  EXPECT_FALSE(CreateFrom(std::span(jpeg).first(3)));
  EXPECT_FALSE(CreateFrom(std::span(jpeg).first(60)));
  jpeg[22] = 0xFF;  // the length of the first table
  jpeg[23] = 0xFF;
  EXPECT_FALSE(CreateFrom(jpeg));
}

TEST_F(HostBitmapTest, AFailedCreateLeavesTheBitmapUsable) {
  EXPECT_FALSE(Create(u"/missing.png"));
  EXPECT_EQ(View().width, 0u);
  EXPECT_TRUE(CreateFrom(kRedJpeg));
}

TEST_F(HostBitmapTest, TheLongestSideAllowedIsDecodedAndOneMoreIsNot) {
  static_assert(kMaxBitmapSide == 16'384);
  EXPECT_TRUE(CreateFrom(PngOfOneColour(kMaxBitmapSide - 1, 1, {1, 1, 1, 1})));
  EXPECT_TRUE(CreateFrom(PngOfOneColour(kMaxBitmapSide, 1, {1, 1, 1, 1})));
  EXPECT_FALSE(CreateFrom(PngOfOneColour(kMaxBitmapSide + 1, 1, {1, 1, 1, 1})));
  EXPECT_TRUE(CreateFrom(PngOfOneColour(1, kMaxBitmapSide, {1, 1, 1, 1})));
  EXPECT_FALSE(CreateFrom(PngOfOneColour(1, kMaxBitmapSide + 1, {1, 1, 1, 1})));
}

TEST(HostBitmapLimits, ThePixelsAreLimitedAsWellAsTheSides) {
  EXPECT_TRUE(IsBitmapSizeAllowed(8000, 7999));
  EXPECT_TRUE(IsBitmapSizeAllowed(8000, 8000));  // 64 million
  EXPECT_FALSE(IsBitmapSizeAllowed(8000, 8001));
  EXPECT_FALSE(IsBitmapSizeAllowed(kMaxBitmapSide, kMaxBitmapSide));
  EXPECT_FALSE(IsBitmapSizeAllowed(0, 1));
  EXPECT_FALSE(IsBitmapSizeAllowed(1, 0));
}

TEST_F(HostBitmapTest, APngThatClaimsMorePixelsThanAllowedIsRefused) {
  EXPECT_FALSE(CreateFrom(PngWithoutPixels(16000, 16000)));
  EXPECT_FALSE(CreateFrom(PngWithoutPixels(0x7FFFFFFF, 0x7FFFFFFF)));
  EXPECT_FALSE(CreateFrom(PngWithoutPixels(100, 100)));  // allowed, but nothing is there
}

TEST_F(HostBitmapTest, AJpegThatClaimsMorePixelsThanAllowedIsRefused) {
  Bytes jpeg(std::begin(kRedJpeg), std::end(kRedJpeg));
  std::size_t frame = 0;
  while (frame + 9 < jpeg.size() && !(jpeg[frame] == 0xFF && jpeg[frame + 1] == 0xC0)) ++frame;
  ASSERT_LT(frame + 9, jpeg.size());
  for (const std::size_t at : {frame + 5, frame + 6, frame + 7, frame + 8}) jpeg[at] = 0xFF;  // 65535 by 65535
  EXPECT_FALSE(CreateFrom(jpeg));
}

TEST_F(HostBitmapTest, AFileLongerThanTheLimitIsRefused) {
  static_assert(kMaxImageFileBytes == 268'435'456);
  ASSERT_TRUE(WriteBytes(folder.File("image"), PngOfOneColour(1, 1, {1, 2, 3, 4})));
  ASSERT_EQ(truncate(folder.File("image").c_str(), static_cast<off_t>(kMaxImageFileBytes) + 1), 0);
  EXPECT_FALSE(Create(headless::TextFromUtf8(folder.File("image"))));
}

TEST_F(HostBitmapTest, APathMayUseBackslashes) {
  ASSERT_TRUE(WriteBytes(folder.File("a.png"), PngOfOneColour(1, 1, {1, 2, 3, 4})));
  std::u16string path = headless::TextFromUtf8(folder.File("a.png"));
  for (char16_t& unit : path) {
    if (unit == u'/') unit = u'\\';
  }
  EXPECT_TRUE(Create(path));
}

TEST_F(HostBitmapTest, AFileWhoseNameHoldsABackslashComesFirst) {
  ASSERT_EQ(mkdir(folder.File("d").c_str(), 0700), 0);
  ASSERT_TRUE(WriteBytes(folder.File("d/a.png"), PngOfOneColour(1, 1, {1, 2, 3, 4})));
  ASSERT_TRUE(WriteBytes(folder.File("d\\a.png"), PngOfOneColour(2, 1, {1, 2, 3, 4})));
  ASSERT_TRUE(Create(headless::TextFromUtf8(folder.File("d\\a.png"))));
  EXPECT_EQ(View().width, 2u);
}

TEST_F(HostBitmapTest, AUtf8NameIsFoundAsTextAndAsNarrowBytes) {
  ASSERT_TRUE(WriteBytes(folder.File("\xC3\xA9.png"), PngOfOneColour(1, 1, {1, 2, 3, 4})));
  EXPECT_TRUE(Create(headless::TextFromUtf8(folder.File("\xC3\xA9.png"))));
  EXPECT_TRUE(Create(headless::TextFromNarrow(folder.File("\xC3\xA9.png"))));
}

TEST_F(HostBitmapTest, CreationAndTheFactoryFailOnDemand) {
  ASSERT_TRUE(WriteBytes(folder.File("image"), kRedJpeg));
  HostFailureSwitches().createBitmap = true;
  EXPECT_FALSE(Create(headless::TextFromUtf8(folder.File("image"))));
  HostFailureSwitches().newBitmap = true;
  EXPECT_EQ(NewQXBitmap(), nullptr);
}

TEST_F(HostBitmapTest, IsCountedUntilItIsDeleted) {
  const std::size_t before = LiveCounts().bitmaps;
  CQXBitmap* other = NewQXBitmap();
  EXPECT_EQ(LiveCounts().bitmaps, before + 1);
  DeleteQXBitmap(other);
  DeleteQXBitmap(nullptr);
  EXPECT_EQ(LiveCounts().bitmaps, before);
}
