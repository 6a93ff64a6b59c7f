// The memory service that the filter shares with its host.
//
// Every payload of the command stream comes from this interface, so that the host can free it. The filter looks for it
// in the shared object "tavmem.dll" (export "Initialise"), then in a window of the host (FindWindowPointer in
// application.h), and falls back on an instance of its own.
#pragma once

#include <cstddef>

namespace TAVMem {

// The virtual operations stand in the order of their slots; the host's object has the same class.
// Of the two forms of an operation the filter calls the second.
template <int Instance>
class MemInitBaseT {
 public:
  virtual ~MemInitBaseT() = default;
  virtual void* AllocateFirst(std::size_t size) = 0;
  virtual void* Allocate(std::size_t size) = 0;  // null when memory has run out
  virtual void* AllocateClearedFirst(std::size_t count, std::size_t size) = 0;
  virtual void* AllocateCleared(std::size_t count, std::size_t size) = 0;
  virtual void Free(void* block) = 0;  // null is ignored
  virtual void* ReallocateFirst(void* block, std::size_t size) = 0;
  virtual void* Reallocate(void* block, std::size_t size) = 0;  // null and the block untouched when memory has run out
  virtual std::size_t BlockSize(void* block) = 0;
  virtual int OutOfMemory(std::size_t size) = 0;  // non-zero: memory was made free, try again
  virtual int Reserved10() = 0;
  virtual bool Reserved11() = 0;
};

}  // namespace TAVMem

using HostAllocator = TAVMem::MemInitBaseT<0>;

// The exports of "tavmem.dll".
using InitialiseHostAllocator = HostAllocator* (*)();  // "Initialise"
using ResetHostAllocator = void (*)();                 // "Reset", optional
