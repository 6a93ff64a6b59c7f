// The module that FindRsvg loads.
#include <librsvg/rsvg.h>

#include <cstddef>

extern "C" bool LoadWithRsvg(const char* bytes, std::size_t size) {
  RsvgHandle* handle = rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(bytes), size, nullptr);
  if (!handle) return false;
  g_object_unref(handle);
  return true;
}
