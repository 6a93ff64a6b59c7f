// The host's allocator, which the filter takes every payload from. Internal to the host.
//
// Blocks of up to 2 KiB are cut from slabs that hold blocks of one size, so that giving a block back needs no search
// and no header; larger ones have memory of their own. All blocks are aligned to 16 bytes. Memory of a slab is kept for
// the next block and never returned. One thread at a time. Under AddressSanitizer every block is one of malloc's, so
// that it is watched.
#pragma once

#include <cstddef>

#include "host/allocator.h"

namespace headless {

class [[gnu::visibility("hidden")]] PoolAllocator final : public HostAllocator {
 public:
  constexpr PoolAllocator() = default;

  void* AllocateFirst(std::size_t size) override;
  void* Allocate(std::size_t size) override;
  void* AllocateClearedFirst(std::size_t count, std::size_t size) override;
  void* AllocateCleared(std::size_t count, std::size_t size) override;
  void Free(void* block) override;
  void* ReallocateFirst(void* block, std::size_t size) override;
  void* Reallocate(void* block, std::size_t size) override;
  std::size_t BlockSize(void* block) override;
  int OutOfMemory(std::size_t size) override;
  int Reserved10() override;
  bool Reserved11() override;

  // The n-th allocation from here on gives null; 0 cancels.
  void FailNth(std::size_t n) { failAfter_ = n; }
  std::size_t LiveBlocks() const { return liveBlocks_; }

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

  bool FailsNow() { return failAfter_ != 0 && --failAfter_ == 0; }
  void* Take(std::size_t size);
  void* TakeCleared(std::size_t count, std::size_t size);
  void* Resize(void* block, std::size_t size);
  void Give(void* block);
  std::size_t SizeOf(void* block) const;
  bool StartSlab(std::size_t index);

  SizeClass classes_[kClasses];
  unsigned char* chunk_ = nullptr;  // slabs not yet handed to a class
  unsigned char* chunkEnd_ = nullptr;
  std::size_t failAfter_ = 0;
  std::size_t liveBlocks_ = 0;
};

extern PoolAllocator poolAllocator;

}  // namespace headless
