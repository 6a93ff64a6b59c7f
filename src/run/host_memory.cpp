#include "run/host_memory.h"

#include <cstring>
#include <new>

#include "run/import_run.h"

HostAllocator* GetHostAllocator() {
  if (!run.allocator.iface) FindHostAllocator(run.allocator);
  return run.allocator.iface;
}

void* TryAllocateHost(std::size_t size) { return GetHostAllocator()->Allocate(size); }

void* AllocateHost(std::size_t size) {
  void* block = TryAllocateHost(size);
  if (!block) throw std::bad_alloc();
  return block;
}

void* AllocateHostCleared(std::size_t size) {
  void* block = AllocateHost(size);
  std::memset(block, 0, size);
  return block;
}

void* ReallocateHost(void* block, std::size_t size) {
  void* moved = GetHostAllocator()->Reallocate(block, size);
  if (!moved) throw std::bad_alloc();
  return moved;
}

void FreeHost(void* block) {
  if (block) GetHostAllocator()->Free(block);
}
