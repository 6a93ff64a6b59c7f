// A text under construction: inline room for the usual case, the heap beyond it. Always NUL-terminated.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

class GrowingText {
 public:
  GrowingText() { inline_[0] = 0; }
  explicit GrowingText(std::u16string_view text) : GrowingText() { Append(text); }
  GrowingText(const GrowingText&) = delete;
  GrowingText& operator=(const GrowingText&) = delete;

  void Clear() {
    size_ = 0;
    data_[0] = 0;
  }
  void Push(char16_t unit) {
    if (size_ + 1 >= room_) Grow(size_ + 2);
    data_[size_++] = unit;
    data_[size_] = 0;
  }
  void Append(std::u16string_view text) {
    if (size_ + text.size() >= room_) Grow(size_ + text.size() + 1);
    text.copy(data_ + size_, text.size());
    size_ += text.size();
    data_[size_] = 0;
  }

  char16_t* data() { return data_; }
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  operator std::u16string_view() const { return {data_, size_}; }

 private:
  void Grow(std::size_t atLeast) {
    std::size_t room = room_ * 2 > atLeast ? room_ * 2 : atLeast;
    std::unique_ptr<char16_t[]> larger(new char16_t[room]);
    std::u16string_view(data_, size_ + 1).copy(larger.get(), size_ + 1);
    heap_ = std::move(larger);
    data_ = heap_.get();
    room_ = room;
  }

  char16_t inline_[128];
  std::unique_ptr<char16_t[]> heap_;
  char16_t* data_ = inline_;
  std::size_t size_ = 0;
  std::size_t room_ = 128;
};
