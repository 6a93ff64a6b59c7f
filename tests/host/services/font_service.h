// How a test speaks with "gTypeHub.dll" of the tests, under the export "fontServiceState".
#pragma once

#include "host/font_manager.h"

struct FontServiceState {
  bool accepts = true;                       // what the object's first operation answers
  bool hasInterface = true;                  // false: the second word of the object is null
  bool hasObject = true;                     // false: there is no object to be had
  void (*note)(const char* text) = nullptr;  // told of every call, such as "operation14(0)"
};
