#include "headless_host/image_decoder.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <new>

// Needs <cstdio> before it.
#include <jpeglib.h>
#include <png.h>

#include "headless_host/limits.h"

namespace headless {
namespace {

constexpr std::size_t kBytesPerPixel = 4;

// False when there is no memory for the pixels.
bool MakeRoom(DecodedImage& image) {
  try {
    image.pixels.resize(std::size_t{image.width} * image.height * kBytesPerPixel);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

class PngReader {
 public:
  PngReader() {
    std::memset(&image_, 0, sizeof image_);
    image_.version = PNG_IMAGE_VERSION;
  }
  ~PngReader() { png_image_free(&image_); }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;

  bool Read(std::span<const unsigned char> bytes, DecodedImage& out) {
    if (png_image_begin_read_from_memory(&image_, bytes.data(), bytes.size()) == 0) return false;
    if (!IsBitmapSizeAllowed(image_.width, image_.height)) return false;
    out.width = image_.width;
    out.height = image_.height;
    if (!MakeRoom(out)) return false;
    image_.format = PNG_FORMAT_RGBA;
    return png_image_finish_read(&image_, nullptr, out.pixels.data(), 0, nullptr) != 0;
  }

 private:
  png_image image_;
};

// The library leaves on an error by a jump. Each part that calls it sets the place to jump to and has nothing with a
// destructor of its own.
class JpegReader {
 public:
  JpegReader() {
    info_.err = jpeg_std_error(&errors_);
    info_.client_data = this;
    errors_.error_exit = [](j_common_ptr info) {
      std::longjmp(static_cast<JpegReader*>(info->client_data)->escape_, 1);
    };
    errors_.emit_message = [](j_common_ptr, int) {};
    errors_.output_message = [](j_common_ptr) {};
    progress_.progress_monitor = [](j_common_ptr info) {
      if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > kMaxJpegScans) info->err->error_exit(info);
    };
  }
  ~JpegReader() {
    if (created_) jpeg_destroy_decompress(&info_);
  }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  bool Read(std::span<const unsigned char> bytes, DecodedImage& out) {
    if (!ReadHeader(bytes) || !IsBitmapSizeAllowed(info_.image_width, info_.image_height)) return false;
    out.width = info_.image_width;
    out.height = info_.image_height;
    if (!MakeRoom(out) || !ReadPixels(out)) return false;
    if (info_.out_color_space == JCS_CMYK) MixInks(out);
    return true;
  }

 private:
  bool ReadHeader(std::span<const unsigned char> bytes) {
    if (setjmp(escape_) != 0) return false;
    jpeg_create_decompress(&info_);
    created_ = true;
    info_.client_data = this;
    info_.progress = &progress_;
    jpeg_mem_src(&info_, bytes.data(), bytes.size());
    return jpeg_read_header(&info_, TRUE) == JPEG_HEADER_OK;
  }

  bool ReadPixels(DecodedImage& out) {
    if (setjmp(escape_) != 0) return false;
    const bool inks = info_.jpeg_color_space == JCS_CMYK || info_.jpeg_color_space == JCS_YCCK;
    info_.out_color_space = inks ? JCS_CMYK : JCS_EXT_RGBA;
    if (jpeg_start_decompress(&info_) == FALSE) return false;
    while (info_.output_scanline < info_.output_height) {
      JSAMPROW row = out.pixels.data() + std::size_t{info_.output_scanline} * out.width * kBytesPerPixel;
      if (jpeg_read_scanlines(&info_, &row, 1) != 1) return false;
    }
    return true;
  }

  // Turns four inks into red, green, blue and full alpha. Files with the APP14 marker hold the inks inverted.
  void MixInks(DecodedImage& out) const {
    const bool inverted = info_.saw_Adobe_marker != 0;
    for (std::size_t i = 0; i < out.pixels.size(); i += kBytesPerPixel) {
      unsigned char* pixel = out.pixels.data() + i;
      auto light = [&](int channel) { return inverted ? unsigned{pixel[channel]} : 255u - pixel[channel]; };
      const unsigned black = light(3);
      for (int channel = 0; channel < 3; ++channel) {
        pixel[channel] = static_cast<unsigned char>(light(channel) * black / 255);
      }
      pixel[3] = 255;
    }
  }

  jpeg_decompress_struct info_ = {};
  jpeg_error_mgr errors_ = {};
  jpeg_progress_mgr progress_ = {};
  std::jmp_buf escape_ = {};
  bool created_ = false;
};

constexpr unsigned char kPngSignature[] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
constexpr unsigned char kJpegSignature[] = {0xFF, 0xD8, 0xFF};

bool BeginsWith(std::span<const unsigned char> bytes, std::span<const unsigned char> signature) {
  return bytes.size() >= signature.size() && std::equal(signature.begin(), signature.end(), bytes.begin());
}

}  // namespace

std::optional<DecodedImage> DecodeImage(std::span<const unsigned char> bytes) {
  DecodedImage image;
  bool decoded = false;
  if (BeginsWith(bytes, kPngSignature)) {
    decoded = PngReader().Read(bytes, image);
  } else if (BeginsWith(bytes, kJpegSignature)) {
    decoded = JpegReader().Read(bytes, image);
  }
  if (!decoded) return std::nullopt;
  return image;
}

}  // namespace headless
