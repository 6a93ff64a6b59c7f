// From the host's bitmaps to cairo surfaces.
#pragma once

#include <memory>

#include "headless_host/inspection.h"
#include "preview/drawing.h"

namespace preview {

// A copy of the pixels; null if the bitmap has none.
std::shared_ptr<cairo_surface_t> ImageOf(const BitmapView& bitmap);

// The bitmap where its record places it. Its picture is null if it has no pixels.
Picture PlacedPicture(const BitmapView& bitmap, double opacity);

}  // namespace preview
