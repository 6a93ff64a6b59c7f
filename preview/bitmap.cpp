#include "preview/bitmap.h"

namespace preview {

std::shared_ptr<cairo_surface_t> ImageOf(const BitmapView& bitmap) {
  const std::size_t pixelCount = std::size_t{bitmap.width} * bitmap.height;
  if (pixelCount == 0 || bitmap.pixels.size() < pixelCount * 4) return nullptr;
  std::shared_ptr<cairo_surface_t> image(
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(bitmap.width), static_cast<int>(bitmap.height)),
      SurfaceDeleter());
  if (cairo_surface_status(image.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  cairo_surface_flush(image.get());
  unsigned char* const rows = cairo_image_surface_get_data(image.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(image.get()));
  const unsigned char* source = bitmap.pixels.data();
  for (std::uint32_t y = 0; y < bitmap.height; ++y) {
    auto* row = reinterpret_cast<std::uint32_t*>(rows + y * stride);
    for (std::uint32_t x = 0; x < bitmap.width; ++x, source += 4) {
      const std::uint32_t alpha = source[3];
      const auto part = [alpha](std::uint32_t value) { return (value * alpha + 127) / 255; };
      row[x] = alpha << 24 | part(source[0]) << 16 | part(source[1]) << 8 | part(source[2]);
    }
  }
  cairo_surface_mark_dirty(image.get());
  return image;
}

Picture PlacedPicture(const BitmapView& bitmap, double opacity) {
  const TM p = bitmap.placement;
  const double width = bitmap.placedWidth, height = bitmap.placedHeight, x = bitmap.placedX;
  return {
      ImageOf(bitmap), {p.a * width, p.b * width, p.c * height, p.d * height, p.a * x + p.e, p.b * x + p.f}, opacity};
}

}  // namespace preview
