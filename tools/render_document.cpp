#include "tools/render_document.h"

#include "tools/document_page.h"

std::string WriteDocumentImage(const ImportedDocument& document, preview::StreamDrawer& drawer,
                               preview::ImageOptions image, std::FILE* file) {
  image.page.reset();
  if (const auto page = MeasureDocument(document.Path())) image.page = {0.0, 0.0, page->width, page->height, false};
  return preview::WriteImage(drawer, image, file);
}
