// Memory that the host can free: every payload, the queues and the definition tables.
#pragma once

#include <cstddef>

#include "host/allocator.h"

// The allocator that the filter shares with the host. Found at the first call, which loading the library makes.
HostAllocator* GetHostAllocator();

// Null when memory has run out.
void* TryAllocateHost(std::size_t size);

// Throws std::bad_alloc when memory has run out.
void* AllocateHost(std::size_t size);
void* AllocateHostCleared(std::size_t size);
// The block keeps its contents; a null block is allocated. Throws std::bad_alloc, with the block untouched.
void* ReallocateHost(void* block, std::size_t size);

// A null block is ignored.
void FreeHost(void* block);
