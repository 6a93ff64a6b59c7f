// The memory of the payloads and paragraphs. Internal to the host.
//
// Blocks of up to 2 KiB are cut from slabs that hold blocks of one size, so that giving a block back needs no search
// and no header; larger ones have memory of their own. All blocks are aligned to 16 bytes. Memory of a slab is kept for
// the next block and never returned. One thread at a time. Under AddressSanitizer every block is one of malloc's, so
// that it is watched.
#pragma once

#include <cstddef>

namespace headless {

class [[gnu::visibility("hidden")]] SlabPool {
 public:
  constexpr SlabPool() = default;

  // Null when there is no memory.
  void* Take(std::size_t size) {
    if (size <= kLargestPooled) {
      SizeClass& sizeClass = classes_[IndexOf(size)];
      if (FreeBlock* block = sizeClass.free) {
        sizeClass.free = block->next;
        return block;
      }
    }
    return TakeFresh(size);
  }
  // A null block is ignored.
  void Give(void* block);
  // At least what was asked for; 0 for a null block.
  std::size_t SizeOf(void* block) const;

  static constexpr std::size_t kStep = 16;  // sizes are rounded up to a multiple of this
  static constexpr std::size_t kLargestPooled = 2048;

 private:
  struct FreeBlock {
    FreeBlock* next;
  };
  // The unused part of a slab, and the blocks that were given back.
  struct SizeClass {
    FreeBlock* free = nullptr;
    unsigned char* fresh = nullptr;
    unsigned char* end = nullptr;
  };
  static constexpr std::size_t kClasses = kLargestPooled / kStep;

  static std::size_t IndexOf(std::size_t size) { return size == 0 ? 0 : (size - 1) / kStep; }
  void* TakeFresh(std::size_t size);
  bool StartSlab(std::size_t index);

  SizeClass classes_[kClasses];
  unsigned char* chunk_ = nullptr;  // slabs not yet handed to a class
  unsigned char* chunkEnd_ = nullptr;
};

extern SlabPool slabPool;

}  // namespace headless
