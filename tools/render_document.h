// The picture of a document that was imported, for every command that draws one.
#pragma once

#include <cstdio>
#include <string>

#include "preview/draw_stream.h"
#include "preview/image_file.h"
#include "tools/import_document.h"

// Writes what `drawer` took of the document's import to an open file, on the page that the document gives itself; the
// page in `image` is not used. Empty on success; otherwise one line that says what is wrong, without the document's
// name.
std::string WriteDocumentImage(const ImportedDocument& document, preview::StreamDrawer& drawer,
                               preview::ImageOptions image, std::FILE* file);
