#include "headless_host/pool_allocator.h"

#include <cstdint>
#include <cstring>

#include "headless_host/headless_host.h"
#include "headless_host/journal.h"
#include "headless_host/sanitizer.h"
#include "headless_host/slab_pool.h"

namespace headless {

PoolAllocator poolAllocator;

namespace {

constexpr bool kWatched = HEADLESS_HOST_ADDRESS_SANITIZER != 0;
constexpr std::size_t kMostWithSlack = std::size_t{1} << 40;

}  // namespace

void* PoolAllocator::Take(std::size_t size) {
  if (FailsNow()) return nullptr;
  void* block = slabPool.Take(size);
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
  slabPool.Give(block);
}

void* PoolAllocator::Resize(void* block, std::size_t size) {
  if (block == nullptr) return Take(size);
  const std::size_t oldSize = slabPool.SizeOf(block);
  if (size <= oldSize && size > oldSize / 2) return block;
  // A large block that grows is likely to grow again, by as little as a record at a time.
  const bool grows = !kWatched && size > oldSize && size > SlabPool::kLargestPooled && size < kMostWithSlack;
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
  const std::size_t size = slabPool.SizeOf(block);
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
