// The host's bitmap object, payload of KEY_GNRC by way of GenericRecord.
#pragma once

#include "host/matrix.h"

class CQXBitmap {
 public:
  // Loads an image file; false on failure. The filter passes 0, null and false for everything behind the path.
  virtual bool Create(const char16_t* path, int, int, int, void*, void*, bool) = 0;
  // Host units.
  virtual void SetPlacedWidth(const double* width) = 0;
  virtual void SetPlacedHeight(const double* height) = 0;
  virtual void SetPlacedX(const double* x) = 0;

  TM placement = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};  // written by the filter

 protected:
  ~CQXBitmap() = default;  // destroyed through DeleteQXBitmap
};

// A new, empty bitmap, or null. The host frees one that reached the stream with DeleteQXBitmap.
CQXBitmap* NewQXBitmap();
void DeleteQXBitmap(CQXBitmap* bitmap);
