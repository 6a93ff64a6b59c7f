// The host's allocator, which the filter takes every payload from. Internal to the host.
//
// Its memory is that of the slab pool; it counts what is out and fails on demand. One thread at a time.
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

 private:
  bool FailsNow() { return failAfter_ != 0 && --failAfter_ == 0; }
  void* Take(std::size_t size);
  void* TakeCleared(std::size_t count, std::size_t size);
  void* Resize(void* block, std::size_t size);
  void Give(void* block);

  std::size_t failAfter_ = 0;
  std::size_t liveBlocks_ = 0;
};

extern PoolAllocator poolAllocator;

}  // namespace headless
