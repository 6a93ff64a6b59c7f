// From the file to the root element: whole-file reads, the work on the raw bytes, and the load into the document.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

class IXMLDOMNode;

// The file's text as bytes, with a NUL behind it.
struct FileText {
  std::unique_ptr<char[]> FileBuffer;
  std::size_t FileBufferSize = 0;  // the NUL included
  std::size_t blockSize = 0;       // of the memory behind FileBuffer, which may be more
};

// The first read, which proves that the file can be read. True if run.file then holds it, up to its first NUL.
bool ReadWholeFile(const char16_t* path);

// The second read, with the DOCTYPE blanked and the unit sniffed. A file that can no longer be opened leaves run.file
// as the first read left it. False if the file is empty by now.
bool ReadForLoading(const char16_t* path);

// Overwrites the DOCTYPE declaration, from its "<" to the first ">", with blanks and one line feed.
void BlankDoctype(char* text, std::size_t size);

// True if the first number behind the first "width" is followed by an "m".
bool IsInMillimetres(const char* text, std::size_t size);

// Loads the text of run.file and returns the document element with one reference, or null if there is none. The
// document stays in run.DomDocument. Throws DocumentError.
IXMLDOMNode* LoadDocument();

// The text of the root's attribute "height"; empty if there is none.
std::u16string_view GetRootHeight();
