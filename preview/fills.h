// From fill records and transparency objects to gradients and tiles.
#pragma once

#include <memory>

#include "headless_host/inspection.h"
#include "preview/drawing.h"
#include "run/import_command.h"

namespace preview {

// From 0x00BBGGRR.
Colour ColourFromValue(std::uint32_t value);

// Of a FillDefinition of type 5 or 15. Without stops it paints nothing.
std::shared_ptr<const Gradient> ReadGradient(const FillDefinition& fill);

// The same gradient with the opacities of a transparency of type 3 or 4 laid over it.
std::shared_ptr<const Gradient> WithOpacity(const Gradient& gradient, const TransparencyView& transparency);

// The colours and opacities at all places where either changes its course, for a cairo gradient.
std::vector<Gradient::ColourStop> MergedStops(const Gradient& gradient);

// Of a FillDefinition of type 10. Reads the file of the tile with the host's image reader.
std::shared_ptr<const Tile> ReadTile(const FillDefinition& fill);

}  // namespace preview
