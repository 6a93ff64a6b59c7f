#include "images/image_element.h"

#include <unistd.h>

#include <string>

#include "document/node_access.h"
#include "filter_limits.h"
#include "host/settings.h"
#include "images/base64.h"
#include "images/download.h"
#include "operators/graphics_state.h"
#include "operators/operator_machine.h"
#include "operators/path_end.h"
#include "platform/temporary_file.h"
#include "run/growing_text.h"
#include "run/import_run.h"
#include "translators/clip_reference.h"
#include "translators/path_data.h"
#include "translators/transform.h"

namespace {

// The file of an embedded image: the empty one that reserved the name, and the one with the extension of its format.
// Both go with this object.
class TemporaryImageFile {
 public:
  TemporaryImageFile() = default;
  ~TemporaryImageFile() {
    if (!finalName.empty() && finalName != createdName) RemoveHostFile(finalName);
    if (!createdName.empty()) RemoveHostFile(createdName);
  }
  TemporaryImageFile(const TemporaryImageFile&) = delete;
  TemporaryImageFile& operator=(const TemporaryImageFile&) = delete;

  std::u16string createdName;
  std::u16string finalName;
};

bool Contains(std::u16string_view text, std::u16string_view part) { return text.find(part) != text.npos; }

std::u16string_view BehindComma(std::u16string_view reference) {
  const std::size_t comma = reference.find(u',');
  return comma == reference.npos ? reference : reference.substr(comma + 1);
}

void FeedPath(std::u16string_view path) {
  GrowingText text(u"(");
  text.Append(path);
  text.Push(u')');
  FeedOperatorText(text, kPushOnly);
}

// Units are cut off. An attribute without a number pushes nothing.
void FeedPlacement(IXMLDOMNode* node) {
  for (const std::u16string_view name : {u"height", u"width", u"y", u"x"}) {
    const std::u16string_view value = GetNodeAttribute(node, name);
    if (value.empty()) {
      FeedOperatorText(u"0.0", kPushOnly);
      continue;
    }
    GrowingText number;
    ScanNumber(ScanFrom::Number, value, number);
    FeedOperatorText(number, kPushOnly);
  }
}

// False when the format is not supported.
bool WriteEmbeddedImage(std::u16string_view reference, TemporaryImageFile& file) {
  const std::u16string_view extension = Contains(reference, u"png")   ? u"png"
                                        : Contains(reference, u"jpg") ? u"jpg"
                                                                      : u"";
  if (extension.empty()) return false;
  const std::string bytes = DecodeBase64(BehindComma(reference));
  file.createdName = CreateTemporaryFile(TemporaryFolder(), u"IMG");
  if (file.createdName.empty()) return true;  // no file, no path
  file.finalName = file.createdName.substr(0, file.createdName.rfind(u'.') + 1);
  file.finalName += extension;
  WriteReplacingFile(file.finalName, bytes);
  return true;
}

// A new name in the host's base folder, empty when there can be none. The whole path is cut at its first ".", also one
// in a folder's name, and always ends in ".png"; the empty file that reserved the name stays beside it. All this is
// meant.
std::u16string NewPatternImageName() {
  char16_t folder[kHostPathUnits] = {};
  LoadBaseDir(folder);
  folder[kHostPathUnits - 1] = 0;
  const std::u16string created = CreateTemporaryFile(folder, u"DEMO");
  return created.empty() ? created : created.substr(0, created.find(u'.')) + u".png";
}

void DownloadPatternImage(std::u16string_view url, const std::u16string& name) {
  const int file = CreateReplacingFile(name);
  if (file < 0) return;
  DownloadToFile(file, url);
  close(file);
}

// The path for the operator, of a file that was made if need be. False when the embedded format is not supported.
bool AcquirePatternImage(std::u16string_view reference, std::u16string& path) {
  if (Contains(reference, u"base64")) {
    run.images.ImagePathIsAbsolute = 1;
    if (!Contains(reference, u"png") && !Contains(reference, u"jpg") && !Contains(reference, u"jpeg")) return false;
    const std::string bytes = DecodeBase64(BehindComma(reference));
    path = NewPatternImageName();
    WriteReplacingFile(path, bytes);
  } else if (Contains(reference, u"http:")) {
    run.images.ImagePathIsAbsolute = 1;
    path = NewPatternImageName();
    DownloadPatternImage(reference, path);
  } else {
    path = reference;
  }
  return true;
}

}  // namespace

void TranslateImage(IXMLDOMNode* node) {
  PushGraphicsState();
  TemporaryImageFile file;
  std::u16string_view reference = GetNodeAttribute(node, u"xlink:href");
  if (Contains(reference, u"data") && Contains(reference, u"base64")) {
    if (!WriteEmbeddedImage(reference, file)) return;
    reference = file.finalName;
  }
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  const std::u16string_view clip = GetNodeAttribute(node, u"clip-path");
  if (!clip.empty()) ApplyClipReference(clip);
  if (!reference.empty()) FeedPath(reference);
  FeedPlacement(node);
  FeedOperatorText(u" image", kExecute);
  EndPath();
  PopGraphicsState();
  if (!clip.empty()) CloseClippedElement();
}

// Works in the frame of the shape that is being styled. A clip-path has no effect.
void TranslatePatternImage(IXMLDOMNode* node) {
  std::u16string path;
  if (!AcquirePatternImage(GetNodeAttribute(node, u"xlink:href"), path)) return;
  ParseTransform(GetNodeAttribute(node, u"transform"), MatrixTarget::Current);
  FeedPath(path);
  FeedPlacement(node);
  FeedOperatorText(u"pfimg", kExecute);
}
