// The walk over the elements: the top level, groups, and the walkers with the shape of a group.
#pragma once

class IXMLDOMNode;

// One child of the root. An element that the table does not know, and any other node, is passed over.
void TranslateTopLevelElement(IXMLDOMNode* node);

void TranslateGroup(IXMLDOMNode* node);
// A gradient that stands inside a g.
void TranslateGradientContainer(IXMLDOMNode* node);
// A tspan that stands inside a text. Its characters are the text's affair.
void TranslateTextSpan(IXMLDOMNode* node);
