// The state of the operator machine as one line of text, for tests that compare what two programs leave behind.
#pragma once

#include <string>

// Pen, selectors, compound and clip flags, depths, flags of the tokeniser, and the matrices, colours and line
// attributes of the current frame.
std::string MachineState();
