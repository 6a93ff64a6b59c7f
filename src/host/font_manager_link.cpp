#include "host/font_manager_link.h"

#include <dlfcn.h>

#include <string>

#include "host/application.h"

namespace {

constexpr char kLibrary[] = "gTypeHub.dll";
constexpr char kInterface[] = "FontManagerSupport";

void UseDefault(FontManagerLibrary& library) {
  ++library.count;
  library.link->iface = new FontManagerSupportDefault;
}

bool IsDefault(const DynamicLink<FontManagerSupport>& link) { return !link.object && link.iface; }

// False when the library has no object for this link, or one without an interface.
bool CreateObject(FontManagerLibrary& library) {
  DynamicLink<FontManagerSupport>& link = *library.link;
  link.object = library.create();
  link.iface = link.object ? link.object->iface : nullptr;
  return link.iface != nullptr;
}

void DestroyObject(FontManagerLibrary& library) {
  DynamicLink<FontManagerSupport>& link = *library.link;
  if (link.object) library.destroy(link.object);
  link.object = nullptr;
  link.iface = nullptr;
}

// True when the library answered and its font manager is willing.
bool LinkLibrary(FontManagerLibrary& library) {
  library.handle = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  if (!library.handle) return false;
  const std::string create = std::string("?Create@?$DynamicExport@V") + kInterface + "@@@@SAPEAV1@XZ";
  const std::string destroy = std::string("?Destroy@?$DynamicExport@V") + kInterface + "@@@@SAXPEAV1@@Z";
  library.create = reinterpret_cast<FontManagerObject* (*)()>(dlsym(library.handle, create.c_str()));
  library.destroy = reinterpret_cast<void (*)(FontManagerObject*)>(dlsym(library.handle, destroy.c_str()));
  if (library.create && library.destroy) {
    if (CreateObject(library) && library.link->object->Accept(1) != 0) {
      ++library.count;
      library.link->loaded = 1;
      return true;
    }
    DestroyObject(library);
  }
  dlclose(library.handle);
  library.handle = nullptr;
  library.create = nullptr;
  library.destroy = nullptr;
  return false;
}

}  // namespace

void LinkFontManager(FontManagerLibrary& library) {
  if (library.link) return;
  library.link = new DynamicLink<FontManagerSupport>;
  if (library.create) {
    if (CreateObject(library)) {
      ++library.count;
    } else {
      DestroyObject(library);
      UseDefault(library);
    }
  } else if (library.count != 0 || !LinkLibrary(library)) {
    UseDefault(library);
  }
  HourGlass(1);
  library.link->iface->Operation14(0);
  HourGlass(0);
}

void UnlinkFontManager(FontManagerLibrary& library) {
  DynamicLink<FontManagerSupport>* link = library.link;
  if (!link) return;
  const bool isDefault = IsDefault(*link);
  if (!isDefault && link->iface) link->iface->Operation4(0);
  if (library.count > 0) {
    if (isDefault) {
      delete static_cast<FontManagerSupportDefault*>(link->iface);
    } else if (library.destroy) {
      library.destroy(link->object);
    }
    if (--library.count == 0 && library.create) {
      dlclose(library.handle);
      library.handle = nullptr;
      library.create = nullptr;
      library.destroy = nullptr;
    }
  }
  delete link;
  library.link = nullptr;
}
