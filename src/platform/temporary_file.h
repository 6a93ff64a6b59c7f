// Files of the filter's own making: temporary names, new files that nobody else can have prepared, and their removal.
// Paths are host paths.
#pragma once

#include <string>
#include <string_view>

// The system's temporary folder with a '/' at its end: what TMPDIR names, or /tmp.
std::u16string TemporaryFolder();

// Creates an empty file with mode 0600 and a name that nothing had before: `folder`, a separator if the folder does not
// end in one, `prefix`, six random letters and digits, ".tmp". Returns its path; empty when it can't be created.
std::u16string CreateTemporaryFile(std::u16string_view folder, std::u16string_view prefix);

// Creates a new file with mode 0600 for reading and writing and takes the place of an older file or link by that name.
// Returns a descriptor that the caller closes, or -1.
int CreateReplacingFile(std::u16string_view path);

// Writes all bytes; false if not all could be written.
bool WriteAll(int descriptor, std::string_view bytes);

// `CreateReplacingFile` with this content. False on failure; what was written by then stays.
bool WriteReplacingFile(std::u16string_view path, std::string_view bytes);

// Removes a file; false when there was none or it cannot be removed.
bool RemoveHostFile(std::u16string_view path);
