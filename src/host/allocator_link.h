// Finding the allocator that the filter shares with its host.
#pragma once

#include <cstddef>

#include "host/allocator.h"

// The filter's own instance, for a host that offers none. One header word of 0 stands in front of each block; a block
// whose header is anything else came from elsewhere and is left alone.
class FallbackAllocator : public HostAllocator {
 public:
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

  // The allocator whose out-of-memory hook may make memory free for this one; null, or this one itself, when none is
  // there.
  HostAllocator* active = nullptr;
};

struct HostAllocatorLink {
  HostAllocatorLink() = default;
  ~HostAllocatorLink();  // resets and frees the library if one was loaded
  HostAllocatorLink(const HostAllocatorLink&) = delete;
  HostAllocatorLink& operator=(const HostAllocatorLink&) = delete;

  HostAllocator* iface = nullptr;  // the allocator in use; null until it has been looked for
  void* library = nullptr;         // "tavmem.dll", also when it had no allocator; null when it was not found
  FallbackAllocator fallback;
};

// Looks in the library, then for the window, then takes the fallback. Always ends with an interface.
void FindHostAllocator(HostAllocatorLink& link);
