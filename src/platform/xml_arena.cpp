#include "platform/xml_arena.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Enough for a small drawing.
constexpr std::size_t kFirstChunk = std::size_t{16} << 10;

// Chunks double up to this size: asked for seldom, with little left over in the last.
constexpr std::size_t kLargestChunk = std::size_t{1} << 20;

constexpr std::size_t kAlignment = alignof(void*);

}  // namespace

void XmlArena::Clear() {
  while (last_ != nullptr) {
    Chunk* const chunk = last_;
    last_ = chunk->previous;
    std::free(chunk);
  }
  next_ = nullptr;
  end_ = nullptr;
  textLength_ = 0;
  chunkBytes_ = 0;
}

void* XmlArena::Allocate(std::size_t bytes) {
  bytes = (bytes + kAlignment - 1) / kAlignment * kAlignment;
  if (static_cast<std::size_t>(end_ - next_) < bytes) Grow(bytes);
  char* const block = next_;
  next_ += bytes;
  return block;
}

char16_t* XmlArena::TextRoom(std::size_t units) {
  const std::size_t bytes = (textLength_ + units) * sizeof(char16_t);
  // A text that grows again is given twice its length, so that it is seldom moved.
  if (static_cast<std::size_t>(end_ - next_) < bytes) Grow(std::max(bytes, 2 * textLength_ * sizeof(char16_t)));
  return reinterpret_cast<char16_t*>(next_) + textLength_;
}

std::u16string_view XmlArena::CloseText() {
  const std::u16string_view text = OpenText();
  const std::size_t bytes = textLength_ * sizeof(char16_t);
  next_ += std::min((bytes + kAlignment - 1) / kAlignment * kAlignment, static_cast<std::size_t>(end_ - next_));
  textLength_ = 0;
  return text;
}

void XmlArena::AddWithoutReturns(std::u16string_view text) {
  char16_t* const units = TextRoom(text.size());
  char16_t* to = units;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') continue;
    *to++ = text[i] == u'\r' ? u'\n' : text[i];
  }
  LengthenText(static_cast<std::size_t>(to - units));
}

// Makes room for so many bytes at `next_`, the open text included.
void XmlArena::Grow(std::size_t bytes) {
  const std::size_t chunkBytes = chunkBytes_ == 0 ? kFirstChunk : std::min(2 * chunkBytes_, kLargestChunk);
  const std::size_t dataBytes = (std::max(chunkBytes, bytes) + kAlignment - 1) / kAlignment * kAlignment;
  // A chunk that holds nothing but the open text can grow in place.
  const bool alone = last_ != nullptr && next_ == reinterpret_cast<char*>(last_ + 1);
  void* const block = std::realloc(alone ? last_ : nullptr, sizeof(Chunk) + dataBytes);
  if (block == nullptr) throw std::bad_alloc();
  Chunk* const chunk = alone ? static_cast<Chunk*>(block) : new (block) Chunk{last_};
  char* const data = reinterpret_cast<char*>(chunk + 1);
  if (!alone && textLength_ != 0) std::memcpy(data, next_, textLength_ * sizeof(char16_t));
  last_ = chunk;
  next_ = data;
  end_ = data + dataBytes;
  chunkBytes_ = chunkBytes;
}
