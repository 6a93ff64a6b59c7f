// A small host: loads the filter, imports one drawing, and prints the bounding box of every painted shape.
//
// usage: bounding-boxes DRAWING.svg [SECTION/KEY=N ...]
//
// The settings store, the allocator and the message box are its own, and texts are left out, since it has no text
// composer; everything else is the reference host's. Exit status: 0 imported, 1 not, 2 wrong usage, 3 memory was lost.

#include <dlfcn.h>
#include <limits.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "headless_host/headless_host.h"
#include "host/allocator.h"
#include "host/application.h"
#include "host/composer.h"
#include "host/settings.h"
#include "outline.h"
#include "run/import_command.h"

namespace {

// Blocks of malloc, counted.
class CountingAllocator : public HostAllocator {
 public:
  void* AllocateFirst(std::size_t size) override { return Allocate(size); }
  void* Allocate(std::size_t size) override { return Counted(std::malloc(size)); }
  void* AllocateClearedFirst(std::size_t count, std::size_t size) override { return AllocateCleared(count, size); }
  void* AllocateCleared(std::size_t count, std::size_t size) override { return Counted(std::calloc(count, size)); }
  void Free(void* block) override {
    if (block != nullptr) --alive;
    std::free(block);
  }
  void* ReallocateFirst(void* block, std::size_t size) override { return Reallocate(block, size); }
  void* Reallocate(void* block, std::size_t size) override {
    return block == nullptr ? Allocate(size) : std::realloc(block, size);
  }
  std::size_t BlockSize(void* block) override { return malloc_usable_size(block); }
  int OutOfMemory(std::size_t) override { return 0; }
  int Reserved10() override { return 0; }
  bool Reserved11() override { return false; }

  long alive = 0, made = 0;

 private:
  void* Counted(void* block) {
    if (block != nullptr) ++alive, ++made;
    return block;
  }
};

CountingAllocator allocator;
std::map<std::u16string, int> settings;  // by "SECTION/KEY"

std::u16string SettingName(const char16_t* section, const char16_t* key) {
  return std::u16string(section) + u'/' + key;
}

// ASCII only: enough for settings and for the filter's messages.
std::u16string Widened(std::string_view text) { return std::u16string(text.begin(), text.end()); }
std::string Narrowed(std::u16string_view text) {
  std::string narrow;
  for (const char16_t unit : text) narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
  return narrow;
}

}  // namespace

// --- Services of this host, in place of the reference host's

int GetIntTavlor(const char16_t* section, const char16_t* key, int fallback, DataStoreType, const char16_t*) {
  const auto found = settings.find(SettingName(section, key));
  return found == settings.end() ? fallback : found->second;
}

void WriteIntTavlor(const char16_t* section, const char16_t* key, int value, DataStoreType) {
  settings[SettingName(section, key)] = value;
}

int TMessageBox(void*, const char16_t* text, const char16_t*, unsigned) {
  std::u16string_view shown = text;
  if (shown.substr(0, 5) == u"(*v*)") shown.remove_prefix(5);  // there are no translations here
  std::fprintf(stderr, "message: %s\n", Narrowed(shown).c_str());
  return 1;
}

// There is no text composer: the filter reports it with a message box and goes on.
int OpenParagraph(int, ParagraphHandle*, const ParagraphPosition*, int) { return -1; }

// --- The import

namespace {

// The state of the pen, and the shape that is being collected.
class BoxPrinter {
 public:
  void Take(const ImportCommand& command) {
    switch (command.key) {
      case KEY_FILL:
        filled_ = command.value != -1;
        break;
      case KEY_OUTL:
        outlined_ = command.value != -1;
        break;
      case KEY_THST:
        thick_ = command.value == 2 || command.value == 3;
        break;
      case KEY_CLIP:
        clipGeometry_ = command.value == 1;
        break;
      case KEY_PATH:
        inPath_ = true;
        box_ = Box();
        break;
      case KEY_LINE:
        Include(box_, *static_cast<const LineRecord*>(command.data));
        break;
      case KEY_BEZI:
        Include(box_, *static_cast<const BezierRecord*>(command.data));
        break;
      case KEY_PLYR:
        // Inside a path it is an arc, elsewhere a shape of its own.
        if (!inPath_) box_ = Box();
        Include(box_, *static_cast<const POLYGON*>(command.data));
        if (!inPath_) Print("polygon");
        break;
      case KEY_ENDP:
        Print("path");
        inPath_ = false;
        break;
      default:
        break;
    }
  }

 private:
  void Print(const char* kind) {
    const bool painted = filled_ || (outlined_ && thick_);
    if (box_.empty || !painted || clipGeometry_) return;
    std::printf("%s %.3f %.3f %.3f %.3f\n", kind, box_.left, box_.bottom, box_.right, box_.top);
  }

  bool filled_ = true, outlined_ = false, thick_ = false;
  bool clipGeometry_ = false, inPath_ = false;
  Box box_;
};

template <class Function>
Function* Find(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

bool Import(void* filter, const std::u16string& path) {
  auto* check = Find<CheckFileFunction>(filter, "CheckFile");
  auto* next = Find<GetImportCommandFunction>(filter, "GetImportCommand");
  bool imported = false;
  try {
    imported = check(0, 0, path.c_str()) == 1;
    BoxPrinter printer;
    for (ImportCommand command{}; imported && command.key != KEY_ENDF;) {
      command = next();
      printer.Take(command);
      ReleaseCommand(command);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bounding-boxes: %s\n", error.what());
    imported = false;
  }
  Find<CloseFileFunction>(filter, "CloseFile")();
  return imported;
}

bool Store(const std::string& text) {
  const std::size_t equals = text.rfind('=');
  if (equals == text.npos || text.find('/') >= equals) return false;
  settings[Widened(text.substr(0, equals))] = std::atoi(text.c_str() + equals + 1);
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  bool understood = count >= 2;
  for (int i = 2; i < count; ++i) understood = understood && Store(arguments[i]);
  if (!understood) return std::fputs("usage: bounding-boxes DRAWING.svg [SECTION/KEY=N ...]\n", stderr), 2;

  // The filter needs a full path.
  char full[PATH_MAX];
  if (realpath(arguments[1], full) == nullptr) return std::perror(arguments[1]), 1;

  // It looks for the allocator while it is being loaded.
  RegisterHostWindow(kAllocatorWindowClass, AllocatorWindowTitle(), &allocator);
  void* filter = dlopen("libsvgimport.so.0", RTLD_NOW | RTLD_LOCAL);
  if (filter == nullptr) return std::fprintf(stderr, "bounding-boxes: %s\n", dlerror()), 2;
  const bool imported = Import(filter, Widened(full));
  dlclose(filter);

  if (!imported) std::fprintf(stderr, "bounding-boxes: %s: not imported\n", arguments[1]);
  if (allocator.alive != 0 || allocator.made == 0) {
    std::fprintf(stderr, "bounding-boxes: %ld of %ld blocks were not given back\n", allocator.alive, allocator.made);
    return 3;
  }
  return imported ? 0 : 1;
}
