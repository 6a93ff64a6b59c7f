// A record read the way the host reads it: by byte offset, not through the filter's own structs. It also tells which
// bytes nobody has read, so that a test can prove that there is nothing else in the record.
#pragma once

#include <cstddef>
#include <cstring>
#include <vector>

class RawRecord {
 public:
  // The record must stay as it is while this reads it.
  RawRecord(const void* record, std::size_t size) : bytes_(static_cast<const unsigned char*>(record)), read_(size) {}

  template <class Value>
  Value At(std::size_t offset) {
    Value value;
    std::memcpy(&value, bytes_ + offset, sizeof value);
    for (std::size_t i = offset; i < offset + sizeof value; ++i) read_.at(i) = true;
    return value;
  }

  // The offset of the first byte that no At has read and that is not zero; the size of the record when there is none.
  std::size_t FirstOther() const {
    std::size_t i = 0;
    while (i < read_.size() && (read_[i] || bytes_[i] == 0)) ++i;
    return i;
  }

 private:
  const unsigned char* bytes_;
  std::vector<bool> read_;
};
