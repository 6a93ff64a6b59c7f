// Bounding boxes of what the stream draws, in centimetres.
#pragma once

#include "host/polygon.h"
#include "run/import_command.h"

struct Box {
  bool empty = true;
  double left = 0, bottom = 0, right = 0, top = 0;

  void Include(double x, double y);
};

// Each adds the exact box of a piece of outline, line width not counted.
void Include(Box& box, const LineRecord& line);
void Include(Box& box, const BezierRecord& curve);
void Include(Box& box, const POLYGON& polygon);
