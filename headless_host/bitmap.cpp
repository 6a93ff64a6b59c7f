#include "host/bitmap.h"

#include <new>
#include <string>
#include <utility>

#include "headless_host/file_access.h"
#include "headless_host/host_state.h"
#include "headless_host/image_decoder.h"
#include "headless_host/inspection.h"
#include "headless_host/journal.h"
#include "headless_host/limits.h"

using headless::host;
using headless::JournalCall;
using headless::journaling;

namespace {

class HostBitmap final : public CQXBitmap {
 public:
  bool Create(const char16_t* file, int a, int b, int c, void*, void*, bool flag) override {
    const bool created = !host.failures.createBitmap && file != nullptr && Load(file);
    if (journaling) JournalCall("CQXBitmap::Create", file, a, b, c, flag).Result(created);
    return created;
  }

  void SetPlacedWidth(const double* width) override {
    if (journaling) JournalCall("CQXBitmap::SetPlacedWidth");
    placedWidth = *width;
  }

  void SetPlacedHeight(const double* height) override {
    if (journaling) JournalCall("CQXBitmap::SetPlacedHeight");
    placedHeight = *height;
  }

  void SetPlacedX(const double* x) override {
    if (journaling) JournalCall("CQXBitmap::SetPlacedX");
    placedX = *x;
  }

  std::u16string path;
  double placedWidth = 0.0, placedHeight = 0.0, placedX = 0.0;
  headless::DecodedImage image;

 private:
  bool Load(const char16_t* file) {
    path = file;
    try {
      const auto bytes = headless::ReadHostFile(path, kMaxImageFileBytes);
      if (!bytes) return false;
      auto decoded = headless::DecodeImage(*bytes);
      if (!decoded) return false;
      image = std::move(*decoded);
    } catch (const std::bad_alloc&) {
      return false;
    }
    return true;
  }
};

}  // namespace

CQXBitmap* NewQXBitmap() {
  if (journaling) JournalCall("NewQXBitmap");
  if (host.failures.newBitmap) return nullptr;
  auto* bitmap = new HostBitmap;
  ++headless::liveCounts.bitmaps;
  return bitmap;
}

void DeleteQXBitmap(CQXBitmap* bitmap) {
  if (journaling) JournalCall("DeleteQXBitmap");
  if (bitmap == nullptr) return;
  delete static_cast<HostBitmap*>(bitmap);
  --headless::liveCounts.bitmaps;
}

BitmapView ViewBitmap(const CQXBitmap& bitmap) {
  const auto& own = static_cast<const HostBitmap&>(bitmap);
  return {own.path,      own.placedWidth, own.placedHeight, own.placedX,
          own.placement, own.image.width, own.image.height, own.image.pixels};
}
