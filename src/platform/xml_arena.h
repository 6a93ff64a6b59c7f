// The memory of one document's tree: blocks and texts that are given back all at once. Running out of memory throws
// std::bad_alloc and leaves what was there as it was.
#pragma once

#include <cstddef>
#include <string_view>

class XmlArena {
 public:
  XmlArena() = default;
  ~XmlArena() { Clear(); }
  XmlArena(const XmlArena&) = delete;
  XmlArena& operator=(const XmlArena&) = delete;

  // Gives everything back.
  void Clear();

  // A block for anything that is content with the alignment of a pointer. Not while a text is open.
  void* Allocate(std::size_t bytes);

  // One text at a time is open and grows at its end until it is closed or dropped. `TextRoom` gives the place of its
  // next unit, with room for so many; it may move the text.
  char16_t* TextRoom(std::size_t units);
  // Takes the next so many units, written where `TextRoom` showed, into the text.
  void LengthenText(std::size_t units) { textLength_ += units; }
  std::u16string_view OpenText() const { return {reinterpret_cast<const char16_t*>(next_), textLength_}; }
  std::u16string_view CloseText();
  void DropText() { textLength_ = 0; }

  // Takes a text into the open one, with every carriage return, a line feed behind it included, as one line feed.
  void AddWithoutReturns(std::u16string_view text);

 private:
  struct Chunk {
    Chunk* previous;
  };

  void Grow(std::size_t bytes);

  Chunk* last_ = nullptr;
  char* next_ = nullptr;  // where the next block or the open text begins
  char* end_ = nullptr;
  std::size_t textLength_ = 0;
  std::size_t chunkBytes_ = 0;  // of the last
};
