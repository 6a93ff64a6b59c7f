// The page of a document as the filter measures it, which says nothing of it in the stream.
#pragma once

#include <optional>
#include <string>

struct DocumentPage {
  double width, height;  // host units; its lower left corner is the origin
};

// The root's width and height as numbers, at the scale that the filter uses with the host's settings as they stand.
// Nothing when one of the two is missing or not positive. `file` is a name in the encoding of the operating system.
std::optional<DocumentPage> MeasureDocument(const std::string& file);
