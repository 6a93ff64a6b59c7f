// The drawings that the benchmark makes for itself. The same size gives the same bytes on every machine.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Paths of about 20 kB each, `bytes` in all: all commands, implicit repeats, glued numbers.
std::string MakePaths(std::size_t bytes);
// Basic shapes of all six kinds with presentation attributes.
std::string MakeShapes(std::size_t shapes);
// Shapes in chains of 60 groups; groups and shapes have transforms and styles.
std::string MakeGroups(std::size_t shapes);
// Shapes, each with a gradient of its own that links to one of a tenth as many lists of stops.
std::string MakeGradientFills(std::size_t fills);
// Text elements, some with spans.
std::string MakeTexts(std::size_t texts);
// One path with all of the bytes.
std::string MakeOnePath(std::size_t bytes);
// Paths of about 100 bytes each.
std::string MakeShortPaths(std::size_t paths);

// Where the numbers in the path data of a drawing begin.
std::vector<const char*> NumbersInPaths(std::string_view drawing);
