// What "tavmem.dll" of the tests tells about itself, under the export "memoryServiceState".
#pragma once

#include <cstddef>

struct MemoryServiceState {
  bool hasAllocator = true;  // false: Initialise answers null
  int initialiseCalls = 0;
  int resetCalls = 0;
  std::size_t liveBlocks = 0;
};
