// An allocator of a test's own that writes down what it is asked for and can be told to run out of memory.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "host/allocator.h"

class RecordingAllocator : public HostAllocator {
 public:
  void* AllocateFirst(std::size_t) override { return Unused(); }
  void* Allocate(std::size_t size) override {
    sizes.push_back(size);
    void* block = std::malloc(size);
    blocks.push_back(block);
    return block;
  }
  void* AllocateClearedFirst(std::size_t, std::size_t) override { return Unused(); }
  void* AllocateCleared(std::size_t, std::size_t) override { return Unused(); }
  void Free(void* block) override {
    freed.push_back(block);
    std::free(block);
  }
  void* ReallocateFirst(void*, std::size_t) override { return Unused(); }
  void* Reallocate(void* block, std::size_t size) override {
    sizes.push_back(size);
    return std::realloc(block, size);
  }
  std::size_t BlockSize(void*) override { return 0; }
  int OutOfMemory(std::size_t size) override {
    hookSizes.push_back(size);
    return hookSizes.size() < hookCallsUntilNothingIsLeft ? 1 : 0;
  }
  int Reserved10() override { return 0; }
  bool Reserved11() override { return false; }

  std::vector<std::size_t> sizes;      // of Allocate and Reallocate
  std::vector<void*> blocks, freed;    // of Allocate and Free, in order
  std::vector<std::size_t> hookSizes;  // of the out-of-memory hook
  std::size_t hookCallsUntilNothingIsLeft = 1;

 private:
  // The forms that the filter does not call.
  static void* Unused() { std::abort(); }
};
