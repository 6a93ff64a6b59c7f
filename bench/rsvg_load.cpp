#include "bench/rsvg_load.h"

#ifdef SVGIMPORT_BENCH_RSVG

#include <librsvg/rsvg.h>

bool HasRsvg() { return true; }

bool LoadWithRsvg(std::string_view bytes) {
  RsvgHandle* handle = rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(bytes.data()), bytes.size(), nullptr);
  if (!handle) return false;
  g_object_unref(handle);
  return true;
}

#else

bool HasRsvg() { return false; }
bool LoadWithRsvg(std::string_view) { return false; }

#endif
