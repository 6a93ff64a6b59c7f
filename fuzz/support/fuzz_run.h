// What all fuzz targets do around their work: a fresh host and run for each input, whole imports, and the release of
// everything that came of it. Linked with these, the filter reaches no network.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// A fresh host, whose files lie in a folder of memory that each call empties, and a fresh run.
void StartFresh();

// Gives back every record that is in the queue.
void ReleaseQueue();

// One whole import of this file text, every record given back. Errors that an entry point documents are caught. Ends
// the process when something is left of the import.
void ImportDocument(std::string_view text);

// The input as text of the filter: as bytes of a document come in, up to the first NUL.
std::u16string TextOfInput(const std::uint8_t* data, std::size_t size);

// The text as a value between the quotes of an attribute; what XML does not allow is left out.
std::string AttributeValue(std::string_view text);

// A document of these elements, with the prefixes svg and xlink.
std::string DocumentOf(std::string_view elements);
