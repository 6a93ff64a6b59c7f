// Linking the host's font manager at run time, with a default interface when there is none.
#pragma once

#include "host/font_manager.h"

// The library, its two entry points and the count of links.
struct FontManagerLibrary {
  void* handle = nullptr;
  FontManagerObject* (*create)() = nullptr;
  void (*destroy)(FontManagerObject*) = nullptr;
  int count = 0;
  DynamicLink<FontManagerSupport>* link = nullptr;  // between LinkFontManager and UnlinkFontManager
};

// Makes the link unless it exists. Afterwards library.link->iface answers, if need be as the default.
void LinkFontManager(FontManagerLibrary& library);

// Undoes the link, and frees the library with its last link.
void UnlinkFontManager(FontManagerLibrary& library);
