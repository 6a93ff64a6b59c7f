#include "images/image_operators.h"

#include <algorithm>
#include <memory>

#include "filter_limits.h"
#include "host/application.h"
#include "host/bitmap.h"
#include "operators/operand_stack.h"
#include "operators/operator_machine.h"
#include "platform/host_path.h"
#include "run/command_queue.h"
#include "run/host_memory.h"
#include "run/import_run.h"

namespace {

constexpr int kTitleUnits = 254;

struct DeleteBitmap {
  void operator()(CQXBitmap* bitmap) const { DeleteQXBitmap(bitmap); }
};

struct FreeBlock {
  void operator()(void* block) const { FreeHost(block); }
};

// An absolute path stands for itself. Of "../" one level is taken off the folder, and no more.
void ResolvePath(std::u16string_view path, std::u16string& buffer) {
  if (IsAbsoluteHostPath(path)) {
    buffer = path;
  } else if (path.starts_with(u"..")) {
    if (!buffer.empty() && (buffer.back() == u'\\' || buffer.back() == u'/')) buffer.pop_back();
    buffer.resize(BaseDirectoryLength(buffer) > 0 ? BaseDirectoryLength(buffer) - 1 : 0);
    buffer += path.substr(2);
  } else {
    buffer += path;
  }
}

void StoreTilePath(PatternPart& pattern, std::u16string_view path) {
  path = path.substr(0, kTilePathUnits - 1);
  for (std::size_t i = 0; i < path.size(); ++i) pattern.tilePath[i] = path[i];
  pattern.tilePath[path.size()] = 0;
}

}  // namespace

int FindImageFile(std::u16string& path) {
  if (HostFileExists(path)) return 1;
  char16_t file[kHostPathUnits] = {};
  std::u16string_view(path).substr(0, kHostPathUnits - 1).copy(file, kHostPathUnits - 1);
  const std::size_t point = path.rfind(u'.');
  const std::u16string extension =
      point == path.npos || point < BaseDirectoryLength(path) ? std::u16string() : path.substr(point + 1);
  char16_t title[kTitleUnits] = {};
  TString(u"(*v*)Search for file, or press cancel to use embedded bitmap", title, kTitleUnits);
  OpenFileDialog dialog = {};
  dialog.filter = extension.c_str();
  dialog.defaultExtension = extension.c_str();
  dialog.file = file;
  dialog.fileSize = kHostPathUnits;
  dialog.title = title;
  if (!GetOpenFileName(&dialog)) return -1;
  file[kHostPathUnits - 1] = 0;
  path = file;
  return 1;
}

// image: (path) height width y x -> (cleared)
void OperatorImage(const OperatorCall&) {
  std::unique_ptr<void, FreeBlock> block(AllocateHost(sizeof(GenericRecord)));
  auto* record = static_cast<GenericRecord*>(block.get());
  record->bitmap = nullptr;
  const double x = PopNumberOrZero();
  const double y = PopNumberOrZero();
  const double width = PopNumberOrZero();
  const double height = PopNumberOrZero();
  std::u16string& path = run.images.ImagePathBuffer;
  path = run.BaseDirectory;
  {
    const PoppedOperand operand;
    if (operand) ResolvePath(operand.OwnedText(), path);
  }
  std::replace(path.begin(), path.end(), u'/', u'\\');
  if (!path.empty()) FindImageFile(path);

  const TM& m = CurrentFrame().currentMatrix;
  const double scale = run.UnitScale;
  const double turnedHeight = height * m.d + width * m.b;
  const double placedX = x * scale;
  const double placedY = y * scale;
  const double placedWidth = width * scale;
  const double placedHeight = height * scale;
  std::unique_ptr<CQXBitmap, DeleteBitmap> bitmap(NewQXBitmap());
  if (!bitmap) return;
  if (!bitmap->Create(path.c_str(), 0, 0, 0, nullptr, nullptr, false)) return;
  bitmap->SetPlacedWidth(&placedWidth);
  bitmap->SetPlacedHeight(&placedHeight);
  bitmap->SetPlacedX(&placedX);
  // y goes in with the scale twice, and x not at all: it is meant.
  bitmap->placement = {m.a, m.b * -1.0,  m.c * -1.0,
                       m.d, scale * m.e, run.DocHeight * scale - scale * m.f - scale * turnedHeight - scale * placedY};
  record->bitmap = bitmap.get();
  block.release();
  PushPayload(KEY_GNRC, sizeof *record, record);
  bitmap.release();
}

// pf?: y x height width (path) imageHeight imageWidth imageY imageX -> -. The origin is laid out in inches, the size in
// tenths.
void OperatorPatternImage(const OperatorCall&) {
  std::unique_ptr<void, FreeBlock> block(AllocateHostCleared(sizeof(FillDefinition)));
  auto* fill = static_cast<FillDefinition*>(block.get());
  DropOperands(2);
  const double w = PopNumberOrZero() / 10.0;
  const double h = PopNumberOrZero() / 10.0;
  {
    const PoppedOperand operand;
    if (operand) {
      std::u16string path;
      if (!run.images.ImagePathIsAbsolute) path = run.BaseDirectory;
      path += operand.OwnedText();
      run.images.ImagePathIsAbsolute = 0;
      if (!path.empty()) FindImageFile(path);
      StoreTilePath(fill->pattern, path);
    }
  }
  double px = 0.0, py = 0.0, value;
  for (int i = 0; i < 2; ++i) {
    if (PopNumber(&value)) fill->pattern.tileScaleX = 1.0;
  }
  if (PopNumber(&value)) {
    py = (run.DocHeight - value) / 25.4;
    fill->pattern.tileScaleY = 1.0;
  }
  if (PopNumber(&value)) {
    px = value / 25.4;
    fill->pattern.tileScaleY = 1.0;
  }
  fill->fillScale = -1.0;
  fill->fillClass = 4;
  const TM inverse = {1.0 / w, 0.0, 0.0, 1.0 / h, -px, -py};
  TM forward;
  set_itm(&forward, &inverse);
  fill->inverseMatrix = inverse;
  fill->forwardMatrix = forward;
  fill->tileHeight = h;
  block.release();
  PushPayload(KEY_PFDF, sizeof *fill, fill);
  // One record under both commands: the host reads it only later.
  fill->fillType = kPatternFill;
  fill->pattern.tileColourOn = 1;
  fill->pattern.tileColour = 0xFFFFFF;
  fill->fillClass = 4;
  ImportCommand twin = {};
  twin.key = KEY_PFOL;
  twin.size = sizeof *fill;
  twin.data = fill;
  try {
    PushCommand(twin);
  } catch (...) {
    // The host frees the payload with the second command alone.
    DropLastCommand();
    FreeHost(fill);
    throw;
  }
}
