#include "run/entry_points.h"

#include <string_view>

#include "document/load.h"
#include "document/node_access.h"
#include "filter_limits.h"
#include "host/application.h"
#include "platform/host_path.h"
#include "run/command_queue.h"
#include "run/import_command.h"
#include "run/import_run.h"
#include "run/number_text.h"
#include "run/settings.h"
#include "translators/element_dispatch.h"

namespace {

constexpr double kDefaultHeight = 480.0;
constexpr std::int32_t kStartAnchor = 1;

// Frame, pen and flags.
void ResetMachine() {
  InitialiseGraphicsState();
  run.path.lastControl = {0.0, 0.0};
  run.path.PathOpen = 0;
  run.path.samplesLeft = kMaxImportSamples;
  run.text.TextAnchor = kStartAnchor;
}

// The second record is a fill too, and not the outline whose value goes into the frame: it is meant. So is the join,
// which differs from the frame's.
void QueueOpeningCommands() {
  GraphicsState& frame = CurrentFrame();
  PushValue(KEY_FILL, 0);
  frame.outline.colour = 0;
  PushValue(KEY_FILL, frame.fill.colour);
  PushValue(KEY_CNST, 2);
  PushValue(KEY_MLIM, 200);
  PushValue(KEY_WRUL, 0);
}

void RecordDefinitions() {
  for (std::int32_t i = 0; i < run.NodeCount; ++i) {
    run.CurrentNode = run.NodeList.At(run.NodeCursor);
    ++run.NodeCursor;
    if (GetNodeName(run.CurrentNode) == u"defs") RunDefinitionsPrePass(run.CurrentNode);
  }
  run.NodeCursor = 0;
}

void TranslateRemainingNodes() {
  if (!run.CursorPrimed) {
    run.CurrentNode = nullptr;
    run.CursorPrimed = 1;
  }
  while (run.NodeCursor < run.NodeCount) {
    run.CurrentNode = run.NodeList.At(run.NodeCursor);
    ++run.NodeCursor;
    TranslateTopLevelElement(run.CurrentNode);
  }
}

// Not inlined, so that the way of a record that is only popped stays short.
[[gnu::noinline]] void TranslateToTheEnd() {
  TranslateRemainingNodes();
  PushCommand(KEY_ENDF);
}

ImportCommand PopEither() {
  ImportCommand record = PopCommand(run.priority);
  if (record.key == KEY_NULL) record = PopCommand(run.commands);
  return record;
}

}  // namespace

void PrepareOperatorMachine() {
  run.DocHeight = kDefaultHeight;
  ReadUnits();
  ReadSettings();
  ResetMachine();
}

// Nothing is rolled back when a step fails: CloseFile copes with whatever is there.
int CheckFile(std::uintptr_t, std::uintptr_t, const char16_t* path) {
  run.DocHeight = kDefaultHeight;
  if (!ReadWholeFile(path)) return 0;
  ReadUnits();
  const std::u16string_view file(path);
  run.BaseDirectory = file.substr(0, BaseDirectoryLength(file));
  if (!ReadForLoading(path)) return 0;
  run.RootNode = LoadDocument();
  if (!run.RootNode) return 0;
  AllocateDefinitions(run.definitions.PatternDefs);
  AllocateDefinitions(run.definitions.ClipDefs);
  AllocateDefinitions(run.definitions.GradientDefs);
  run.DocHeight = LeadingNumber(GetRootHeight());
  CollectChildNodes(run.RootNode, run.NodeList);
  run.NodeCount = run.NodeList.length();
  if (run.NodeList.empty()) return 0;
  RecordDefinitions();
  ReadSettings();
  if (run.DebugMode == 1) OpenDebugLogs();
  ForceUnits();
  if (!run.FontReplacementObject) run.FontReplacementObject = std::make_unique<CFontReplacement>("svg");
  if (!run.FontManagerLinked) {
    LinkFontManager(run.fontManager);
    run.FontManagerLinked = 1;
  }
  ShowPasteStringChanges(0);
  ResetMachine();
  QueueOpeningCommands();
  return 1;
}

// The first call that finds the queue empty translates the whole drawing; all others only pop. A record with key 0 in
// the queue counts as an empty pop, so that it costs one more KEY_ENDF behind the first.
ImportCommand GetImportCommand() {
  ImportCommand record = PopEither();
  if (record.key == KEY_NULL) {
    TranslateToTheEnd();
    record = PopEither();
    if (record.key == KEY_NULL) return record;
  }
  if (run.DebugMode == 1) TraceCommand(record);
  return record;
}

std::intptr_t GetFileHandle() { return run.InputHandle; }

int CloseFile() {
  const bool traced = run.DebugMode == 1;
  if (traced) TraceText(" Starting close file\r\n");
  ShowPasteStringChanges(1);
  UnlinkFontManager(run.fontManager);
  RestoreUnits();
  DestroyQueue(run.commands);
  FreeDefinitions(run.definitions.ClipDefs);
  FreeDefinitions(run.definitions.PatternDefs);
  FreeDefinitions(run.definitions.GradientDefs);
  DestroyQueue(run.priority);
  run.FontReplacementObject.reset();
  if (traced) TraceText(" Collapse clip group\r\n");
  DBCollapseClipGroup();
  RequestClipGroupRefresh();
  if (traced) {
    TraceText("Ending Close file\r\n");
    CloseDebugLogs();
  }
  run.NodeList.Release();
  if (run.RootNode) run.RootNode->Release();
  run.RootNode = nullptr;
  return 0;
}
