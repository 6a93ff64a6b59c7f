// Why the filter did not import a document. The filter itself only says that it didn't; this looks at the file afresh.
#pragma once

#include <string>

// One line without a line end, for the file of this name (in the encoding of the operating system).
std::string DiagnoseDocument(const std::string& file);
