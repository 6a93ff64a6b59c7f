#include "bench/rsvg_load.h"

#ifdef SVGIMPORT_BENCH_RSVG

#include <dlfcn.h>

#include <stdexcept>

RsvgLoad* FindRsvg() {
  void* module = dlopen(SVGIMPORT_BENCH_RSVG, RTLD_NOW | RTLD_LOCAL);
  void* load = module ? dlsym(module, "LoadWithRsvg") : nullptr;
  if (!load) throw std::runtime_error(dlerror());
  return reinterpret_cast<RsvgLoad*>(load);
}

#else

RsvgLoad* FindRsvg() { return nullptr; }

#endif
