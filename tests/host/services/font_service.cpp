// "gTypeHub.dll": a host's font manager as a shared object of its own. Its two entry points have names that no linker
// takes; rename_exports.py puts them in the place of the ones below.

#include "tests/host/services/font_service.h"

#include <cstdio>

extern "C" FontServiceState fontServiceState;
FontServiceState fontServiceState;

namespace {

void Note(const char* text) {
  if (fontServiceState.note) fontServiceState.note(text);
}

std::uint32_t NoteOperation(int place, std::uintptr_t argument) {
  char text[64];
  std::snprintf(text, sizeof text, "operation%d(%zu)", place, argument);
  Note(text);
  return 0;
}

class Fonts final : public FontManagerSupport {
 public:
  std::uint32_t Operation0(std::uintptr_t a) override { return NoteOperation(0, a); }
  std::uint32_t Operation1(std::uintptr_t a) override { return NoteOperation(1, a); }
  std::uint32_t Operation2(std::uintptr_t a) override { return NoteOperation(2, a); }
  std::uint32_t Operation3(std::uintptr_t a) override { return NoteOperation(3, a); }
  std::uint32_t Operation4(std::uintptr_t) override {
    Note("operation4");  // the argument says nothing
    return 0;
  }
  std::uint32_t Operation5(std::uintptr_t a) override { return NoteOperation(5, a); }
  std::uint32_t Operation6(std::uintptr_t a) override { return NoteOperation(6, a); }
  std::uint32_t Operation7(std::uintptr_t a) override { return NoteOperation(7, a); }
  std::uint32_t Operation8(std::uintptr_t a) override { return NoteOperation(8, a); }
  std::uint32_t Operation9(std::uintptr_t a) override { return NoteOperation(9, a); }
  std::uint32_t Operation10(std::uintptr_t a) override { return NoteOperation(10, a); }
  std::uint32_t Operation11(std::uintptr_t a) override { return NoteOperation(11, a); }
  std::uint32_t Operation12(std::uintptr_t a) override { return NoteOperation(12, a); }
  std::uint32_t Operation13(std::uintptr_t a) override { return NoteOperation(13, a); }
  std::uint32_t Operation14(std::uintptr_t a) override { return NoteOperation(14, a); }
  std::uint32_t Operation15(std::uintptr_t a) override { return NoteOperation(15, a); }
  std::uint32_t Operation16(std::uintptr_t a) override { return NoteOperation(16, a); }
  std::uint32_t Operation17(std::uintptr_t a) override { return NoteOperation(17, a); }
  std::uint32_t Operation18(std::uintptr_t a) override { return NoteOperation(18, a); }
  std::uint32_t Operation19(std::uintptr_t a) override { return NoteOperation(19, a); }
  std::uint32_t Operation20(std::uintptr_t a) override { return NoteOperation(20, a); }
  std::uint32_t Operation21(std::uintptr_t a) override { return NoteOperation(21, a); }
};

class Object final : public FontManagerObject {
 public:
  Object() { iface = fontServiceState.hasInterface ? &fonts_ : nullptr; }
  int Accept(int version) override {
    char text[64];
    std::snprintf(text, sizeof text, "accept(%d)", version);
    Note(text);
    return fontServiceState.accepts ? 1 : 0;
  }

 private:
  Fonts fonts_;
};

}  // namespace

extern "C" FontManagerObject* FontServiceCreatexxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx();
FontManagerObject* FontServiceCreatexxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx() {
  Note("create");
  return fontServiceState.hasObject ? new Object : nullptr;
}

extern "C" void FontServiceDestroyxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx(FontManagerObject* object);
void FontServiceDestroyxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx(FontManagerObject* object) {
  Note("destroy");
  delete static_cast<Object*>(object);
}
