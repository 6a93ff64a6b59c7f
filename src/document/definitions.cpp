#include "document/definitions.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "document/node_access.h"
#include "run/host_memory.h"
#include "run/import_run.h"
#include "run/text_match.h"

namespace {

enum class Comparison { kWhole, kPrefix };

// A search first goes through the records from the front as far as this, and through those that are not sorted yet.
constexpr std::size_t kFewRecords = 64;

bool Matches(const DefinitionRecord& record, std::u16string_view reference, Comparison comparison) {
  // Ids of one document differ at the end more often than at the start. What stands behind an id is 0.
  if (reference.size() > kMaxIdUnits) return false;
  if (!reference.empty() && LowerUnit(record.id[reference.size() - 1]) != LowerUnit(reference.back())) return false;
  if (comparison == Comparison::kWhole && record.id[reference.size()] != 0) return false;
  return StartsWithAnyCase({record.id, reference.size()}, reference);
}

// By the units of the ids without their case, a NUL behind each.
int Compare(const char16_t* id, std::u16string_view text) {
  for (const char16_t unit : text) {
    const int difference = LowerUnit(*id++) - LowerUnit(unit);
    if (difference != 0) return difference;
  }
  return *id;
}

// Brings the order up to date once a third of the records is missing from it, so that sorting stays cheap however
// definitions and references take turns.
void SortRecords(DefinitionTable& table) {
  const auto count = static_cast<std::size_t>(table.count) - 1;  // the blank one is going to change
  if (count - table.sorted.size() <= std::max(kFewRecords, table.sorted.size() / 2)) return;
  table.sorted.resize(count);
  std::iota(table.sorted.begin(), table.sorted.end(), 0);
  std::sort(table.sorted.begin(), table.sorted.end(), [&](std::int32_t a, std::int32_t b) {
    const int difference = Compare(table.records[a].id, table.records[b].id);
    return difference != 0 ? difference < 0 : a < b;
  });
}

// The table grows by one record at a time.
void Record(DefinitionTable& table, IXMLDOMNode* node, std::int32_t kind) {
  const std::u16string_view id = GetNodeAttribute(node, u"id").substr(0, kMaxIdUnits);
  if (!table.nodes.insert(node).second) {
    node->Release();
    return;
  }
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

// The first of the sorted records that matches, or `count`.
std::int32_t FindSorted(const DefinitionTable& table, std::u16string_view reference, Comparison comparison) {
  const auto begin = std::lower_bound(
      table.sorted.begin(), table.sorted.end(), reference,
      [&](std::int32_t i, std::u16string_view text) { return Compare(table.records[i].id, text) < 0; });
  const auto end = std::partition_point(
      begin, table.sorted.end(), [&](std::int32_t i) { return Matches(table.records[i], reference, comparison); });
  return begin == end ? table.count : *std::min_element(begin, end);
}

const DefinitionRecord* Find(DefinitionTable& table, std::u16string_view reference, Comparison comparison) {
  if (!table.records) return nullptr;
  const auto search = [&](std::int32_t from, std::int32_t to) {
    while (from < to && !Matches(table.records[from], reference, comparison)) ++from;
    return from;
  };
  const std::int32_t front = std::min(table.count, static_cast<std::int32_t>(kFewRecords));
  std::int32_t found = search(0, front);
  if (found == front && front < table.count) {
    SortRecords(table);
    found = FindSorted(table, reference, comparison);
    if (found == table.count) found = search(static_cast<std::int32_t>(table.sorted.size()), table.count);
  }
  // The blank record matches as well.
  if (found == table.count || !table.records[found].node) return nullptr;
  return &table.records[found];
}

const DefinitionRecord* FindByPrefix(DefinitionTable& table, std::u16string_view reference) {
  return reference.empty() ? nullptr : Find(table, reference, Comparison::kPrefix);
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
  table.sorted.clear();
  table.nodes.clear();
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
  return Find(run.definitions.ClipDefs, reference, Comparison::kWhole);
}

const DefinitionRecord* FindGradientDef(std::u16string_view reference) {
  return FindByPrefix(run.definitions.GradientDefs, reference);
}

const DefinitionRecord* FindPatternDef(std::u16string_view reference) {
  return FindByPrefix(run.definitions.PatternDefs, reference);
}

EnteredDefinition::EnteredDefinition(const DefinitionRecord& record) {
  DefinitionGuard& guard = run.definitionGuard;
  if (guard.entered.empty()) guard.recordsBefore = run.commands.count;
  entered_ = guard.entered.size() < kMaxDefinitionDepth && guard.entries < kMaxDefinitionEntries &&
             guard.work + (run.commands.count - guard.recordsBefore) < kMaxDefinitionWork &&
             guard.nestedElements < kMaxNestedElements &&
             std::find(guard.entered.begin(), guard.entered.end(), record.node) == guard.entered.end();
  if (!entered_) return;
  guard.entered.push_back(record.node);
  ++guard.entries;
}

EnteredDefinition::~EnteredDefinition() {
  if (!entered_) return;
  DefinitionGuard& guard = run.definitionGuard;
  guard.entered.pop_back();
  if (guard.entered.empty()) guard.work += run.commands.count - guard.recordsBefore;
}

NestedElement::NestedElement() { ++run.definitionGuard.nestedElements; }

NestedElement::~NestedElement() { --run.definitionGuard.nestedElements; }
