#include "translators/clip_reference.h"

#include "document/definitions.h"
#include "document/node_access.h"
#include "operators/clip.h"
#include "run/command_queue.h"
#include "run/import_run.h"
#include "text/text_element.h"
#include "translators/path_data.h"
#include "translators/shapes.h"

namespace {

void TranslateClipChildren(IXMLDOMNode* clipPath) {
  ChildNodeList children;
  CollectChildNodes(clipPath, children);
  for (std::int32_t i = 0; i < children.length(); ++i) {
    IXMLDOMNode* child = children.At(i);
    const std::u16string_view name = GetNodeName(child);
    if (name == u"rect") {
      TranslateRect(child);
    } else if (name == u"path") {
      TranslatePath(child);
    } else if (name == u"text") {
      TranslateText(child);
    } else if (name == u"ellipse") {
      TranslateEllipse(child);
    }
  }
}

// clipPending stays set: from here on no path of the import gets its KEY_FDEF. It is meant.
void TranslateClip(const DefinitionRecord& record) {
  const EnteredDefinition entered(record);
  if (!entered) return;
  run.clip.clipPending = 1;
  StartClipGroup();
  TranslateClipChildren(record.node);
}

}  // namespace

void ApplyClipReference(std::u16string_view text) {
  constexpr std::u16string_view kReference = u"url(#";
  const std::size_t match = text.find(kReference);
  if (match == text.npos) return;
  const std::u16string_view id = text.substr(match + kReference.size());
  if (const DefinitionRecord* record = FindClipDef(id.substr(0, id.find(u')')))) TranslateClip(*record);
  EndClipGeometry();
  PushMarker(KEY_DOCP, 1);
}

void CloseClippedElement() {
  PushMarker(KEY_DOCP, 0);
  EndClipGroup();
}
