#include "headless_host/slab_pool.h"

#include <malloc.h>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

#include "headless_host/sanitizer.h"

namespace headless {

SlabPool slabPool;

namespace {

constexpr bool kWatched = HEADLESS_HOST_ADDRESS_SANITIZER != 0;

// A slab begins at a multiple of its size, so that a block's address gives its slab.
constexpr std::size_t kSlabBytes = std::size_t{64} << 10;
constexpr std::size_t kChunkBytes = std::size_t{1} << 20;

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

// Not called in a watched build.
[[maybe_unused]] void* TakeLarge(std::size_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - sizeof(SlabHeader)) return nullptr;
  void* memory = nullptr;
  if (posix_memalign(&memory, kSlabBytes, sizeof(SlabHeader) + size) != 0) return nullptr;
  auto* header = new (memory) SlabHeader{size, kNoClass};
  return header + 1;
}

}  // namespace

bool SlabPool::StartSlab(std::size_t index) {
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

// Not inlined, so that the way to a small block that was given back, which is taken a million times, stays short.
[[gnu::noinline]] void* SlabPool::TakeFresh(std::size_t size) {
  if constexpr (kWatched) return std::malloc(size == 0 ? 1 : size);
  if (size > kLargestPooled) return TakeLarge(size);
  const std::size_t index = IndexOf(size);
  SizeClass& sizeClass = classes_[index];
  if (sizeClass.fresh == sizeClass.end && !StartSlab(index)) return nullptr;
  void* block = sizeClass.fresh;
  sizeClass.fresh += (index + 1) * kStep;
  return block;
}

void SlabPool::Give(void* block) {
  if (block == nullptr) return;
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

std::size_t SlabPool::SizeOf(void* block) const {
  if (block == nullptr) return 0;
  if constexpr (kWatched) return malloc_usable_size(block);
  return HeaderOf(block)->blockSize;
}

}  // namespace headless
