// What a list of objects covers.
#pragma once

#include <vector>

#include "preview/drawing.h"

namespace preview {

// Of all that can be seen. Half the width of a line counts on all sides, its spikes do not.
Box BoundsOf(const std::vector<Item>& items);

}  // namespace preview
