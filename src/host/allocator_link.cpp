#include "host/allocator_link.h"

#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/application.h"

namespace {

constexpr char kLibrary[] = "tavmem.dll";
constexpr char16_t kWindowClass[] = u"MemAllocClass";
constexpr char16_t kWindowTitle[] = u"MemAllocWnd";  // followed by the process id in hexadecimal

using Header = std::uint64_t;

Header* HeaderOf(void* block) { return static_cast<Header*>(block) - 1; }

void* HandOut(void* memory) {
  if (!memory) return nullptr;
  auto* header = static_cast<Header*>(memory);
  *header = 0;
  return header + 1;
}

void* Cleared(void* block, std::size_t bytes) { return block ? std::memset(block, 0, bytes) : nullptr; }

}  // namespace

void FindHostAllocator(HostAllocatorLink& link) {
  link.library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  if (link.library) {
    if (void* initialise = dlsym(link.library, "Initialise")) {
      link.iface = reinterpret_cast<InitialiseHostAllocator>(initialise)();
    }
  }
  if (!link.iface) {
    char digits[16];
    const char* end = std::to_chars(digits, digits + sizeof digits, static_cast<unsigned>(getpid()), 16).ptr;
    std::u16string title = kWindowTitle;
    for (const char* c = digits; c != end; ++c) title += static_cast<char16_t>(*c);
    link.iface = static_cast<HostAllocator*>(FindWindowPointer(kWindowClass, title.c_str()));
  }
  if (!link.iface) link.iface = &link.fallback;
  link.fallback.active = link.iface;
}

HostAllocatorLink::~HostAllocatorLink() {
  if (!library) return;
  if (void* reset = dlsym(library, "Reset")) reinterpret_cast<ResetHostAllocator>(reset)();
  dlclose(library);
}

void* FallbackAllocator::AllocateFirst(std::size_t size) {
  if (size > SIZE_MAX - sizeof(Header)) return nullptr;
  void* memory = std::malloc(size + sizeof(Header));
  while (!memory && active && active != this && active->OutOfMemory(size)) memory = std::malloc(size + sizeof(Header));
  return HandOut(memory);
}

void* FallbackAllocator::Allocate(std::size_t size) { return AllocateFirst(size); }

void* FallbackAllocator::AllocateClearedFirst(std::size_t count, std::size_t size) {
  std::size_t bytes;
  return __builtin_mul_overflow(count, size, &bytes) ? nullptr : Cleared(AllocateFirst(bytes), bytes);
}

void* FallbackAllocator::AllocateCleared(std::size_t count, std::size_t size) {
  std::size_t bytes;
  return __builtin_mul_overflow(count, size, &bytes) ? nullptr : Cleared(Allocate(bytes), bytes);
}

void FallbackAllocator::Free(void* block) {
  if (block && *HeaderOf(block) == 0) std::free(HeaderOf(block));
}

void* FallbackAllocator::ReallocateFirst(void* block, std::size_t size) {
  if (!block) return AllocateFirst(size);
  if (*HeaderOf(block) != 0 || size > SIZE_MAX - sizeof(Header)) return nullptr;
  for (;;) {
    if (void* memory = std::realloc(HeaderOf(block), size + sizeof(Header))) return HandOut(memory);
    if (!active || active == this || !active->OutOfMemory(size)) return nullptr;
  }
}

void* FallbackAllocator::Reallocate(void* block, std::size_t size) { return ReallocateFirst(block, size); }

std::size_t FallbackAllocator::BlockSize(void* block) {
  if (!block || *HeaderOf(block) != 0) return 0;
  return malloc_usable_size(HeaderOf(block)) - sizeof(Header);
}

int FallbackAllocator::OutOfMemory(std::size_t) { return 0; }
int FallbackAllocator::Reserved10() { return 0; }
bool FallbackAllocator::Reserved11() { return false; }
