// The image element, at large and inside a pattern: the image is brought to a file, and operator text places it.
#pragma once

class IXMLDOMNode;

// An embedded image lies in a temporary file for the time of the call. An embedded image of another format than png and
// jpg ends the call with the element's frame left pushed: it is meant.
void TranslateImage(IXMLDOMNode* node);

// An embedded or downloaded image gets a file in the host's base folder, which stays.
void TranslatePatternImage(IXMLDOMNode* node);
