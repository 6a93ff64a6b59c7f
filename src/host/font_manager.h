// The host's font manager, an optional service that the filter links at run time from "gTypeHub.dll", and the link
// itself.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/export.h"

// The font manager's interface: 22 operations of the host's, known by their places. Place 4 says goodbye, place 11
// takes a FontRequest and returns 0 for success, place 14 is called once with 0 when the link is made.
class HOST_VISIBLE FontManagerSupport {
 public:
  virtual std::uint32_t Operation0(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation1(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation2(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation3(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation4(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation5(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation6(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation7(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation8(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation9(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation10(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation11(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation12(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation13(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation14(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation15(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation16(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation17(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation18(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation19(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation20(std::uintptr_t argument) = 0;
  virtual std::uint32_t Operation21(std::uintptr_t argument) = 0;

 protected:
  ~FontManagerSupport() = default;
};

#pragma pack(push, 1)
// What place 11 is given. The filter fills the named fields and clears the rest.
struct FontRequest {
  unsigned char hostData0[1024];
  std::uint8_t kind;  // 2: by name; 4: the default
  unsigned char hostData1[7];
  char16_t name[802];    // NUL-terminated
  std::uint32_t option;  // 256
  unsigned char hostData2[8];
};
#pragma pack(pop)
static_assert(offsetof(FontRequest, kind) == 1024 && offsetof(FontRequest, name) == 1032);
static_assert(offsetof(FontRequest, option) == 2636);

// What the create function of "gTypeHub.dll" returns: an object whose first word is its class table and whose second
// word is the interface. The first operation of the class, called with 1, says whether the font manager is willing.
class HOST_VISIBLE FontManagerObject {
 public:
  virtual int Accept(int version) = 0;

  FontManagerSupport* iface;

 protected:
  ~FontManagerObject() = default;
};

// The interface that answers when there is no font manager.
class HOST_VISIBLE FontManagerSupportDefault final : public FontManagerSupport {
 public:
  std::uint32_t Operation0(std::uintptr_t) override { return 0; }
  std::uint32_t Operation1(std::uintptr_t) override { return 0; }
  std::uint32_t Operation2(std::uintptr_t) override { return 0; }
  std::uint32_t Operation3(std::uintptr_t) override { return 0; }
  std::uint32_t Operation4(std::uintptr_t) override { return 0; }
  std::uint32_t Operation5(std::uintptr_t) override { return 0; }
  std::uint32_t Operation6(std::uintptr_t) override { return 1; }
  std::uint32_t Operation7(std::uintptr_t) override { return 0; }
  std::uint32_t Operation8(std::uintptr_t) override { return 0; }
  std::uint32_t Operation9(std::uintptr_t) override { return 0; }
  std::uint32_t Operation10(std::uintptr_t) override { return 0; }
  std::uint32_t Operation11(std::uintptr_t) override { return 0; }
  std::uint32_t Operation12(std::uintptr_t) override { return 0; }
  std::uint32_t Operation13(std::uintptr_t) override { return 0; }
  std::uint32_t Operation14(std::uintptr_t) override { return 0x80000000; }
  std::uint32_t Operation15(std::uintptr_t) override { return 0; }
  std::uint32_t Operation16(std::uintptr_t) override { return 0; }
  std::uint32_t Operation17(std::uintptr_t) override { return 0; }
  std::uint32_t Operation18(std::uintptr_t) override { return 0; }
  std::uint32_t Operation19(std::uintptr_t) override { return 0; }
  std::uint32_t Operation20(std::uintptr_t) override { return 0; }
  std::uint32_t Operation21(std::uintptr_t) override { return 0; }
};

template <class Default>
class HOST_VISIBLE DynamicLinkBase {
 public:
  // The interface to call: the font manager's, or the default's.
  FontManagerSupport* operator->() const { return iface; }

  std::uint32_t loaded = 0;  // 1 when the real library is in use
  FontManagerSupport* iface = nullptr;
  FontManagerObject* object = nullptr;  // null for the default
};

// Instantiated in one place, the one that is exported: copies that other places make are hidden, and would hide it.
extern template class DynamicLinkBase<FontManagerSupportDefault>;

template <class Interface>
class DynamicLink;

template <>
class DynamicLink<FontManagerSupport> : public DynamicLinkBase<FontManagerSupportDefault> {};

// Exported by the filter.
HOST_VISIBLE DynamicLink<FontManagerSupport>* GetFontManager();  // null before CheckFile and after CloseFile
HOST_VISIBLE int UsingFontManager();  // 1 once CheckFile has made the link, whatever answered
