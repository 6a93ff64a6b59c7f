// Paths as the host writes them, and the way from them to the disk. A path may use '\' or '/'. It is tried as it stands
// and then with every '\' as '/', each first in UTF-8 and then in the bytes of the narrow code page, which gives back a
// UTF-8 name that came through the document. A path with a NUL in it names nothing, and neither does a spelling that
// would lose a character on its way to the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Opens a regular file for reading. Returns a descriptor that the caller closes, or -1. `size` is that of the file as
// it was opened, in bytes.
int OpenHostFileForReading(std::u16string_view path, std::uint64_t* size);

// Opens a regular file for reading and writing: created with mode 0600 if absent, emptied if present, never through a
// link in the place of the file. The folder must exist. Returns a descriptor that the caller closes, or -1.
int OpenHostFileForWriting(std::u16string_view path);

// Whether something by this name exists.
bool HostFileExists(std::u16string_view path);

// The name on the disk of the first spelling of the path that exists; empty when none does.
std::string NativeNameOfExistingFile(std::u16string_view path);

// The name on the disk under which a new file by this path belongs: that of the first spelling whose folder exists;
// empty when none does.
std::string NativeNameOfNewFile(std::u16string_view path);

// The number of units of the folder part, its final separator included: all up to and including the last of '\' and
// '/'; 0 without either.
std::size_t BaseDirectoryLength(std::u16string_view path);

// Whether the path stands for itself and is not to be put behind a folder: it holds ':' or begins with '/' or '\'.
bool IsAbsoluteHostPath(std::u16string_view path);
