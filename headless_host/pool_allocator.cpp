#include "headless_host/pool_allocator.h"

#include <malloc.h>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "headless_host/headless_host.h"
#include "headless_host/journal.h"
#include "headless_host/sanitizer.h"

namespace headless {

PoolAllocator poolAllocator;

namespace {

constexpr bool kWatched = HEADLESS_HOST_ADDRESS_SANITIZER != 0;

// A slab begins at a multiple of its size, so that a block's address gives its slab.
constexpr std::size_t kSlabBytes = std::size_t{64} << 10;
constexpr std::size_t kChunkBytes = std::size_t{1} << 20;
constexpr std::size_t kMostWithSlack = std::size_t{1} << 40;

// Stands at the start of a slab, and in front of a large block, which begins at a multiple of the slab's size as well.
struct alignas(64) SlabHeader {
  std::size_t blockSize;  // of each block of the slab, or of the one large block
  std::size_t classIndex;
};
constexpr std::size_t kNoClass = std::numeric_limits<std::size_t>::max();

SlabHeader* HeaderOf(void* block) {
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  return reinterpret_cast<SlabHeader*>(address & ~(kSlabBytes - 1));
}

// Not called in a watched build. Not inlined either, no more than StartSlab, so that the way to a small block, which is
// taken a million times, stays short.
[[maybe_unused, gnu::noinline]] void* TakeLarge(std::size_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - sizeof(SlabHeader)) return nullptr;
  void* memory = nullptr;
  if (posix_memalign(&memory, kSlabBytes, sizeof(SlabHeader) + size) != 0) return nullptr;
  auto* header = new (memory) SlabHeader{size, kNoClass};
  return header + 1;
}

}  // namespace

[[gnu::noinline]] bool PoolAllocator::StartSlab(std::size_t index) {
  if (chunk_ == chunkEnd_) {
    void* memory = nullptr;
    if (posix_memalign(&memory, kSlabBytes, kChunkBytes) != 0) return false;
    chunk_ = static_cast<unsigned char*>(memory);
    chunkEnd_ = chunk_ + kChunkBytes;
  }
  const std::size_t blockSize = (index + 1) * kStep;
  new (chunk_) SlabHeader{blockSize, index};
  SizeClass& sizeClass = classes_[index];
  sizeClass.fresh = chunk_ + sizeof(SlabHeader);
  sizeClass.end = sizeClass.fresh + (kSlabBytes - sizeof(SlabHeader)) / blockSize * blockSize;
  chunk_ += kSlabBytes;
  return true;
}

void* PoolAllocator::Take(std::size_t size) {
  if (FailsNow()) return nullptr;
  void* block;
  if constexpr (kWatched) {
    block = std::malloc(size == 0 ? 1 : size);
  } else if (size > kLargestPooled) {
    block = TakeLarge(size);
  } else {
    const std::size_t index = size == 0 ? 0 : (size - 1) / kStep;
    SizeClass& sizeClass = classes_[index];
    if (sizeClass.free != nullptr) {
      block = sizeClass.free;
      sizeClass.free = sizeClass.free->next;
    } else {
      if (sizeClass.fresh == sizeClass.end && !StartSlab(index)) return nullptr;
      block = sizeClass.fresh;
      sizeClass.fresh += (index + 1) * kStep;
    }
  }
  if (block != nullptr) ++liveBlocks_;
  return block;
}

void* PoolAllocator::TakeCleared(std::size_t count, std::size_t size) {
  std::size_t total;
  if (__builtin_mul_overflow(count, size, &total)) return nullptr;
  void* block = Take(total);
  if (block != nullptr) std::memset(block, 0, total);
  return block;
}

void PoolAllocator::Give(void* block) {
  if (block == nullptr) return;
  --liveBlocks_;
  if constexpr (kWatched) {
    std::free(block);
    return;
  }
  SlabHeader* header = HeaderOf(block);
  if (header->classIndex == kNoClass) {
    std::free(header);
  } else {
    SizeClass& sizeClass = classes_[header->classIndex];
    sizeClass.free = new (block) FreeBlock{sizeClass.free};
  }
}

std::size_t PoolAllocator::SizeOf(void* block) const {
  if (block == nullptr) return 0;
  if constexpr (kWatched) return malloc_usable_size(block);
  return HeaderOf(block)->blockSize;
}

void* PoolAllocator::Resize(void* block, std::size_t size) {
  if (block == nullptr) return Take(size);
  const std::size_t oldSize = SizeOf(block);
  if (size <= oldSize && size > oldSize / 2) return block;
  // A large block that grows is likely to grow again, by as little as a record at a time.
  const bool grows = !kWatched && size > oldSize && size > kLargestPooled && size < kMostWithSlack;
  void* moved = Take(grows ? size + size / 2 : size);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, block, oldSize < size ? oldSize : size);
  Give(block);
  return moved;
}

// The first forms are the second ones under another name.

void* PoolAllocator::AllocateFirst(std::size_t size) {
  if (journaling) JournalCall("MemInitBaseT::AllocateFirst", size);
  return Take(size);
}

void* PoolAllocator::Allocate(std::size_t size) {
  if (journaling) WriteCall("MemInitBaseT::Allocate", size);
  return Take(size);
}

void* PoolAllocator::AllocateClearedFirst(std::size_t count, std::size_t size) {
  if (journaling) JournalCall("MemInitBaseT::AllocateClearedFirst", count, size);
  return TakeCleared(count, size);
}

void* PoolAllocator::AllocateCleared(std::size_t count, std::size_t size) {
  if (journaling) JournalCall("MemInitBaseT::AllocateCleared", count, size);
  return TakeCleared(count, size);
}

void PoolAllocator::Free(void* block) {
  if (journaling) WriteCall("MemInitBaseT::Free");
  Give(block);
}

void* PoolAllocator::ReallocateFirst(void* block, std::size_t size) {
  if (journaling) JournalCall("MemInitBaseT::ReallocateFirst", size);
  return Resize(block, size);
}

void* PoolAllocator::Reallocate(void* block, std::size_t size) {
  if (journaling) JournalCall("MemInitBaseT::Reallocate", size);
  return Resize(block, size);
}

std::size_t PoolAllocator::BlockSize(void* block) {
  const std::size_t size = SizeOf(block);
  if (journaling) JournalCall("MemInitBaseT::BlockSize").Result(static_cast<std::int64_t>(size));
  return size;
}

int PoolAllocator::OutOfMemory(std::size_t size) {
  if (journaling) JournalCall("MemInitBaseT::OutOfMemory", size).Result(0);
  return 0;
}

int PoolAllocator::Reserved10() {
  if (journaling) JournalCall("MemInitBaseT::Reserved10").Result(0);
  return 0;
}

bool PoolAllocator::Reserved11() {
  if (journaling) JournalCall("MemInitBaseT::Reserved11").Result(false);
  return false;
}

}  // namespace headless

HostAllocator* DefaultHostAllocator() { return &headless::poolAllocator; }
void FailAllocation(std::size_t n) { headless::poolAllocator.FailNth(n); }
