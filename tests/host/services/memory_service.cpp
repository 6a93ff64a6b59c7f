// "tavmem.dll": a host's allocator as a shared object of its own.

#include "tests/host/services/memory_service.h"

#include <cstdlib>

#include "host/allocator.h"

extern "C" MemoryServiceState memoryServiceState;
MemoryServiceState memoryServiceState;

namespace {

class Allocator : public HostAllocator {
 public:
  void* AllocateFirst(std::size_t size) override { return Allocate(size); }
  void* Allocate(std::size_t size) override {
    ++memoryServiceState.liveBlocks;
    return std::malloc(size);
  }
  void* AllocateClearedFirst(std::size_t, std::size_t) override { return nullptr; }
  void* AllocateCleared(std::size_t, std::size_t) override { return nullptr; }
  void Free(void* block) override {
    if (block) --memoryServiceState.liveBlocks;
    std::free(block);
  }
  void* ReallocateFirst(void* block, std::size_t size) override { return Reallocate(block, size); }
  void* Reallocate(void* block, std::size_t size) override {
    if (!block) ++memoryServiceState.liveBlocks;
    return std::realloc(block, size);
  }
  std::size_t BlockSize(void*) override { return 0; }
  int OutOfMemory(std::size_t) override { return 0; }
  int Reserved10() override { return 0; }
  bool Reserved11() override { return false; }
};

Allocator allocator;

}  // namespace

extern "C" HostAllocator* Initialise();
HostAllocator* Initialise() {
  ++memoryServiceState.initialiseCalls;
  return memoryServiceState.hasAllocator ? &allocator : nullptr;
}

extern "C" void Reset();
void Reset() { ++memoryServiceState.resetCalls; }
