// Draws a command stream: takes the records of one import as they come, and paints them with cairo afterwards.
//
//   StreamDrawer drawer;
//   for each record: drawer.Take(record), then release the record
//   drawer.Draw(context, page, width, height)
#pragma once

#include <cairo.h>
#include <memory>

#include "preview/geometry.h"
#include "run/import_command.h"

namespace preview {

class StreamDrawer {
 public:
  StreamDrawer();
  ~StreamDrawer();
  StreamDrawer(const StreamDrawer&) = delete;
  StreamDrawer& operator=(const StreamDrawer&) = delete;

  // Reads the record and keeps a copy of what it draws; the payload stays the caller's and may be released at once.
  // The file of a pattern's tile is read here. Records that draw nothing are passed over, and so is all that does not
  // fit: coordinates that are not finite, brackets without their counterpart, a path that never ends.
  void Take(const ImportCommand& command);

  // What the drawing covers, half the width of the lines included; empty if there is nothing to see.
  Box Bounds();

  // Paints the part of the drawing in `page`, in host units, onto `width` times `height` device units of the context,
  // whose matrix must be the identity. `hairline` is the width of the thinnest line in device units.
  void Draw(cairo_t* context, const Box& page, double width, double height, double hairline);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace preview
