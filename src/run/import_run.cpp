#include "run/import_run.h"

#include <new>

#include "operators/polygon.h"
#include "run/host_memory.h"

ImportRun run;

ImportRun::ImportRun() { FindHostAllocator(allocator); }

// What the run holds and no entry point gives back.
ImportRun::~ImportRun() {
  DropPolygon();
  FreeDefinitions(definitions.ClipDefs);
  FreeDefinitions(definitions.GradientDefs);
  FreeDefinitions(definitions.PatternDefs);
  DestroyQueue(commands);
  DestroyQueue(priority);
  UnlinkFontManager(fontManager);
  NodeList.Release();
}

void ResetImportRun() {
  run.~ImportRun();
  new (&run) ImportRun;
}
