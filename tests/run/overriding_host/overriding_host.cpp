// A host of the tests' own: a program that defines some of the host's functions itself, loads the filter and imports
// one document, and prints every call that reaches it and every record. All other functions are the reference host's,
// which the filter brings along.
//
// usage: svgimport-overriding-host FILTER DOCUMENT [MODE]
//
//   no-window     there is no window with an allocator
//   remove        the document goes when the setting Units is read, between the two reads of the file
//   empty         it is emptied then
//   short-read    each read of a file gives only half of what was asked for
//   huge          reads are only printed and count as done, and the document is emptied as above
//   no-memory     there are at most 150000 bytes in one piece

#include <dlfcn.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "host/allocator.h"
#include "host/application.h"
#include "host/settings.h"
#include "run/import_command.h"

namespace {

constexpr std::size_t kLargestPiece = 150'000;

std::string document;
std::string_view mode;
bool importing = false;

std::string Narrow(const char16_t* text) {
  std::string narrow;
  for (; *text; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

// Hands out pieces of one block and takes nothing back.
class Arena : public HostAllocator {
 public:
  bool Holds(const void* block) const { return block >= memory_ && block < memory_ + sizeof memory_; }

  void* AllocateFirst(std::size_t) override { return nullptr; }
  void* Allocate(std::size_t size) override {
    char* block = memory_ + used_;
    used_ += (size + 15) / 16 * 16;
    return used_ <= sizeof memory_ ? block : nullptr;
  }
  void* AllocateClearedFirst(std::size_t, std::size_t) override { return nullptr; }
  void* AllocateCleared(std::size_t, std::size_t) override { return nullptr; }
  void Free(void*) override {}
  void* ReallocateFirst(void*, std::size_t) override { return nullptr; }
  void* Reallocate(void*, std::size_t) override { return nullptr; }
  std::size_t BlockSize(void*) override { return 0; }
  int OutOfMemory(std::size_t) override { return 0; }
  int Reserved10() override { return 0; }
  bool Reserved11() override { return false; }

 private:
  alignas(16) char memory_[1 << 16];
  std::size_t used_ = 0;
};

Arena arena;

// Frees the payload of a record and says where it came from.
const char* Release(void* payload) {
  if (arena.Holds(payload)) return "from the program";
  if (void* memory = dlopen("tavmem.dll", RTLD_NOW | RTLD_NOLOAD)) {
    reinterpret_cast<InitialiseHostAllocator>(dlsym(memory, "Initialise"))()->Free(payload);
    dlclose(memory);
    return "from tavmem.dll";
  }
  // The filter's own blocks have a word in front.
  std::free(static_cast<char*>(payload) - 8);
  return "from the filter";
}

template <class Function>
Function* Find(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

void Import(void* filter) {
  std::u16string path(document.begin(), document.end());
  importing = true;
  const int checked = Find<CheckFileFunction>(filter, "CheckFile")(0, 0, path.c_str());
  std::printf("CheckFile %d\n", checked);
  ImportCommand record = {};
  while (checked && record.key != KEY_ENDF) {
    record = Find<GetImportCommandFunction>(filter, "GetImportCommand")();
    std::printf("key %u\n", record.key);
    if (record.size > 4 || record.key == KEY_WIDT) std::printf("payload %s\n", Release(record.data));
  }
}

}  // namespace

// --- The host's functions

int GetIntTavlor(const char16_t* section, const char16_t* key, int fallback, DataStoreType, const char16_t*) {
  std::printf("GetIntTavlor %s %s\n", Narrow(section).c_str(), Narrow(key).c_str());
  if (std::u16string_view(key) == u"Units") {
    if (mode == "remove") unlink(document.c_str());
    if ((mode == "empty" || mode == "huge") && truncate(document.c_str(), 0) != 0) std::abort();
  }
  return fallback;
}

void WriteIntTavlor(const char16_t* section, const char16_t* key, int value, DataStoreType) {
  std::printf("WriteIntTavlor %s %s %d\n", Narrow(section).c_str(), Narrow(key).c_str(), value);
}

int GetUnits() {
  std::puts("GetUnits");
  return 301;
}

void UdateUnits(int units) { std::printf("UdateUnits %d\n", units); }
void HourGlass(int on) { std::printf("HourGlass %d\n", on); }
void ShowPasteStringChanges(int on) { std::printf("ShowPasteStringChanges %d\n", on); }
void DBCollapseClipGroup() { std::puts("DBCollapseClipGroup"); }

void* FindWindowPointer(const char16_t* className, const char16_t* title) {
  char own[32];
  std::snprintf(own, sizeof own, "MemAllocWnd%x", static_cast<unsigned>(getpid()));
  std::printf("FindWindowPointer %s %s\n", Narrow(className).c_str(), Narrow(title) == own ? "own" : "other");
  return mode == "no-window" ? nullptr : &arena;
}

// --- The system's

extern "C" ssize_t read(int file, void* to, std::size_t size) {
  if (importing && mode == "huge") {
    std::printf("read %zu\n", size);
    return static_cast<ssize_t>(size);
  }
  if (importing && mode == "short-read") size = (size + 1) / 2;
  return syscall(SYS_read, file, to, size);
}

void* operator new(std::size_t size) {
  if (importing && mode == "no-memory" && size > kLargestPiece) throw std::bad_alloc();
  void* block = std::malloc(size ? size : 1);
  if (!block) throw std::bad_alloc();
  return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (...) {
    return nullptr;
  }
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept { return operator new(size, nothrow); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

int main(int count, char** arguments) {
  document = arguments[2];
  if (count > 3) mode = arguments[3];
  void* filter = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  if (!filter) {
    std::puts(dlerror());
    return 1;
  }
  std::puts("loaded");
  try {
    Import(filter);
  } catch (const std::exception& error) {
    std::printf("failed %s\n", error.what());
  }
  importing = false;
  std::printf("CloseFile %d\n", Find<CloseFileFunction>(filter, "CloseFile")());

  void* memory = dlopen("tavmem.dll", RTLD_NOW | RTLD_NOLOAD);
  dlclose(filter);
  std::printf("%s\n", dlopen(arguments[1], RTLD_NOW | RTLD_NOLOAD) ? "still loaded" : "unloaded");
  if (memory) dlclose(memory);
  return 0;
}
