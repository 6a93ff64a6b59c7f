#include "headless_host/slab_pool.h"

#include <malloc.h>
#include <sys/mman.h>
#include <cstdlib>

namespace headless {

SlabPool slabPool;

namespace {

// A huge page of the processor's, which it finds with one look where small ones take 512; the import of a drawing takes
// 1.5 % less. Where the system has none, small ones do.
constexpr std::size_t kChunkBytes = std::size_t{2} << 20;

}  // namespace

bool SlabPool::StartSlab(std::size_t index) {
  if (chunk_ == chunkEnd_) {
    void* memory = nullptr;
    if (posix_memalign(&memory, kChunkBytes, kChunkBytes) != 0) return false;
    madvise(memory, kChunkBytes, MADV_HUGEPAGE);
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

void* SlabPool::TakeLarge(std::size_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - sizeof(SlabHeader)) return nullptr;
  void* memory = nullptr;
  if (posix_memalign(&memory, kSlabBytes, sizeof(SlabHeader) + size) != 0) return nullptr;
  auto* header = new (memory) SlabHeader{size, kNoClass};
  return header + 1;
}

void SlabPool::GiveLarge(void* block) { std::free(kWatched ? block : HeaderOf(block)); }

std::size_t SlabPool::SizeOf(void* block) const {
  if (block == nullptr) return 0;
  if constexpr (kWatched) return malloc_usable_size(block);
  return HeaderOf(block)->blockSize;
}

}  // namespace headless
