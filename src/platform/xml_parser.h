// The way from a prepared text to the tree, over the XML library's event interface.
#pragma once

#include <cstdint>
#include <string>

#include "platform/xml_document.h"
#include "platform/xml_prepare.h"
#include "platform/xml_tree.h"

// What was found wrong with a text.
struct XmlFailure {
  std::int32_t code = 0;
  std::u16string reason;
};

// Fills `tree`, which must be empty, from a prepared text. Returns kOk, kOutOfMemory, or kFalse for a text that is
// refused, with `failure` saying why; `tree` is to be cleared then.
HRESULT ParseXml(const PreparedXml& text, XmlTree* tree, XmlFailure* failure);
