// The memory of the payloads and paragraphs. Internal to the host.
//
// Blocks of up to 2 KiB are cut from slabs that hold blocks of one size, so that giving a block back needs no search
// and no header; larger ones have memory of their own. All blocks are aligned to 16 bytes. Memory of a slab is kept for
// the next block and never returned. One thread at a time. Under AddressSanitizer every block is one of malloc's, so
// that it is watched.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

#include "headless_host/sanitizer.h"

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
        WarmUp(block->next);
        return block;
      }
    }
    return TakeFresh(size);
  }

  // A null block is ignored.
  void Give(void* block) {
    if (block == nullptr) return;
    if constexpr (!kWatched) {
      const SlabHeader& header = *HeaderOf(block);
      if (header.classIndex != kNoClass) {
        SizeClass& sizeClass = classes_[header.classIndex];
        sizeClass.free = new (block) FreeBlock{sizeClass.free};
        return;
      }
    }
    GiveLarge(block);
  }

  // At least what was asked for; 0 for a null block.
  std::size_t SizeOf(void* block) const;

  static constexpr std::size_t kStep = 16;  // sizes are rounded up to a multiple of this
  static constexpr std::size_t kLargestPooled = 2048;

 private:
  static constexpr bool kWatched = HEADLESS_HOST_ADDRESS_SANITIZER != 0;
  static constexpr std::size_t kClasses = kLargestPooled / kStep;
  static constexpr std::size_t kNoClass = std::numeric_limits<std::size_t>::max();
  static constexpr std::size_t kLine = 64;  // of the processor's cache

  // A slab begins at a multiple of its size, so that a block's address gives its slab.
  static constexpr std::size_t kSlabBytes = std::size_t{64} << 10;

  // Stands at the start of a slab, and in front of a large block, which begins where a slab could.
  struct alignas(kLine) SlabHeader {
    std::size_t blockSize;  // of each block of the slab, or of the one large block
    std::size_t classIndex;
  };
  struct FreeBlock {
    FreeBlock* next;
  };
  // The unused part of a slab, and the blocks that were given back.
  struct SizeClass {
    FreeBlock* free = nullptr;
    unsigned char* fresh = nullptr;
    unsigned char* end = nullptr;
  };

  static std::size_t IndexOf(std::size_t size) { return size == 0 ? 0 : (size - 1) / kStep; }
  static SlabHeader* HeaderOf(void* block) {
    return reinterpret_cast<SlabHeader*>(reinterpret_cast<std::uintptr_t>(block) & ~(kSlabBytes - 1));
  }
  // The next block that is taken was given back long ago: its first lines come while this one is filled. An import of a
  // drawing takes 2 % less.
  static void WarmUp(const FreeBlock* block) {
    const auto address = reinterpret_cast<std::uintptr_t>(block);  // of none as well
    __builtin_prefetch(reinterpret_cast<const void*>(address), 1);
    __builtin_prefetch(reinterpret_cast<const void*>(address + kLine), 1);
  }

  void* TakeFresh(std::size_t size);
  static void* TakeLarge(std::size_t size);
  static void GiveLarge(void* block);
  bool StartSlab(std::size_t index);

  SizeClass classes_[kClasses];
  unsigned char* chunk_ = nullptr;  // slabs not yet handed to a class
  unsigned char* chunkEnd_ = nullptr;
};

extern SlabPool slabPool;

}  // namespace headless
