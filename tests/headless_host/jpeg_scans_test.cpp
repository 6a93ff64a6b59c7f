// A progressive JPEG of very many scans, each of which goes over the whole picture.

#include <cstdio>
#include <cstdlib>
#include <vector>

#include <jpeglib.h>

#include "headless_host/limits.h"
#include "headless_host/text.h"
#include "host/bitmap.h"
#include "tests/headless_host/host_fixture.h"
#include "tests/headless_host/sample_images.h"

using namespace host_tests;
using namespace sample_images;

namespace {

jpeg_scan_info Scan(int coefficient, int high, int low) {
  return {1, {0, 0, 0, 0}, coefficient, coefficient, high, low};
}

// Eight by eight grey pixels: the first coefficient in one scan, each of the 63 others in one without its lowest bit,
// and that bit of as many as there are scans left.
Bytes JpegOfScans(int count) {
  std::vector<jpeg_scan_info> scans = {Scan(0, 0, 0)};
  for (int i = 1; i < 64; ++i) scans.push_back(Scan(i, 0, 1));
  for (int i = 1; static_cast<int>(scans.size()) < count; ++i) scans.push_back(Scan(i, 1, 0));

  jpeg_compress_struct info;
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &bytes, &size);
  info.image_width = 8;
  info.image_height = 8;
  info.input_components = 1;
  info.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&info);
  info.scan_info = scans.data();
  info.num_scans = static_cast<int>(scans.size());
  jpeg_start_compress(&info, 1);
  for (int y = 0; y < 8; ++y) {
    JSAMPLE pixels[8];
    for (int x = 0; x < 8; ++x) pixels[x] = static_cast<JSAMPLE>(x * 30 + y);
    JSAMPROW row = pixels;
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  Bytes result(bytes, bytes + size);
  std::free(bytes);
  return result;
}

class HostJpegScans : public HostTest {
 protected:
  bool Decodes(const Bytes& jpeg) {
    const ScratchFolder folder;
    EXPECT_TRUE(WriteBytes(folder.File("image"), jpeg));
    CQXBitmap* bitmap = NewQXBitmap();
    const std::u16string path = headless::TextFromUtf8(folder.File("image"));
    const bool created = bitmap->Create(path.c_str(), 0, 0, 0, nullptr, nullptr, false);
    DeleteQXBitmap(bitmap);
    return created;
  }
};

}  // namespace

TEST_F(HostJpegScans, AHundredAreDecodedAndOneMoreIsNot) {
  static_assert(kMaxJpegScans == 100);
  EXPECT_TRUE(Decodes(JpegOfScans(99)));
  EXPECT_TRUE(Decodes(JpegOfScans(100)));
  EXPECT_FALSE(Decodes(JpegOfScans(101)));
}
