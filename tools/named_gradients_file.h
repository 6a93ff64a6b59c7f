// The file that fills the table of named gradients: a JSON array of
//   {"name": …, "type": 0, "spotFill": 0,
//    "stops": [{"cmyk": [c, m, y, k], "tint": 100, "colourName": "…"}, …],
//    "positions": [percent, …]}
// with inks from 0 to 255. What is left out is 0, 100 for the tint, or empty.
#pragma once

#include <string>
#include <vector>

#include "paint/named_gradient.h"

// Reads the file into `gradients`. Empty on success; otherwise one line about what is wrong.
std::string ReadNamedGradients(const std::string& file, std::vector<NamedGradient>& gradients);
