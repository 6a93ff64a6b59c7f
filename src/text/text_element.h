// The text element: attributes and characters become the text state, and one paragraph comes of it.
#pragma once

#include <string_view>

class IXMLDOMNode;

void TranslateText(IXMLDOMNode* node);

// Sets run.text.TextAnchor by the start of the text: "middle", "start" or "end". Any other leaves it.
void ApplyTextAnchor(std::u16string_view text);
