#include "document/definitions.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "document/node_access.h"
#include "run/host_memory.h"
#include "run/import_run.h"
#include "run/text_match.h"

namespace {

std::u16string_view IdOf(const DefinitionRecord& record) { return record.id; }

// The table grows by one record at a time.
void Record(DefinitionTable& table, IXMLDOMNode* node, std::int32_t kind) {
  const std::u16string_view id = GetNodeAttribute(node, u"id").substr(0, kMaxIdUnits);
  const auto count = static_cast<std::size_t>(table.count);
  auto* records = static_cast<DefinitionRecord*>(ReallocateHost(table.records, (count + 1) * sizeof(DefinitionRecord)));
  table.records = records;
  DefinitionRecord& record = records[count - 1];
  id.copy(record.id, id.size());
  record.id[id.size()] = 0;
  record.kind = kind;
  record.node = node;
  std::memset(static_cast<void*>(&records[count]), 0, sizeof(DefinitionRecord));
  ++table.count;
}

template <class Matches>
const DefinitionRecord* Find(const DefinitionTable& table, Matches matches) {
  if (!table.records) return nullptr;
  for (std::int32_t i = 0; i < table.count; ++i) {
    const DefinitionRecord& record = table.records[i];
    if (matches(IdOf(record))) return record.node ? &record : nullptr;
  }
  return nullptr;
}

const DefinitionRecord* FindByPrefix(const DefinitionTable& table, std::u16string_view reference) {
  if (reference.empty()) return nullptr;
  return Find(table, [reference](std::u16string_view id) { return StartsWithAnyCase(id, reference); });
}

}  // namespace

void AllocateDefinitions(DefinitionTable& table) {
  FreeDefinitions(table);
  table.records = static_cast<DefinitionRecord*>(
      AllocateHostCleared(static_cast<std::size_t>(table.count) * sizeof(DefinitionRecord)));
}

void FreeDefinitions(DefinitionTable& table) {
  if (!table.records) return;
  for (std::int32_t i = 0; i < table.count; ++i) {
    if (table.records[i].node) table.records[i].node->Release();
  }
  FreeHost(table.records);
  table.records = nullptr;
}

// The references of all children stay with the tables and the document: the ones passed over are never given back.
void RunDefinitionsPrePass(IXMLDOMNode* defs) {
  ChildNodeList children;
  CollectChildNodes(defs, children);
  for (std::int32_t i = 0; i < children.length(); ++i) {
    IXMLDOMNode* child = children.At(i);
    const std::u16string_view name = GetNodeName(child);
    if (name == u"clipPath") {
      RecordClipDef(child);
    } else if (name == u"pattern") {
      Record(run.definitions.PatternDefs, child, 0);
    } else if (name == u"linearGradient") {
      RecordGradientDef(child, kLinearGradient);
    } else if (name == u"radialGradient") {
      RecordGradientDef(child, kRadialGradient);
    }
    children.Keep(i);
  }
}

bool RecordClipDef(IXMLDOMNode* node) {
  Record(run.definitions.ClipDefs, node, 0);
  return true;
}

bool RecordGradientDef(IXMLDOMNode* node, GradientKind kind) {
  Record(run.definitions.GradientDefs, node, kind);
  return true;
}

const DefinitionRecord* FindClipDef(std::u16string_view reference) {
  return Find(run.definitions.ClipDefs, [reference](std::u16string_view id) { return EqualsAnyCase(id, reference); });
}

const DefinitionRecord* FindGradientDef(std::u16string_view reference) {
  return FindByPrefix(run.definitions.GradientDefs, reference);
}

const DefinitionRecord* FindPatternDef(std::u16string_view reference) {
  return FindByPrefix(run.definitions.PatternDefs, reference);
}

EnteredDefinition::EnteredDefinition(const DefinitionRecord& record) {
  DefinitionGuard& guard = run.definitionGuard;
  entered_ = guard.entered.size() < kMaxDefinitionDepth && guard.entries < kMaxDefinitionEntries &&
             std::find(guard.entered.begin(), guard.entered.end(), record.node) == guard.entered.end();
  if (!entered_) return;
  guard.entered.push_back(record.node);
  ++guard.entries;
}

EnteredDefinition::~EnteredDefinition() {
  if (entered_) run.definitionGuard.entered.pop_back();
}
