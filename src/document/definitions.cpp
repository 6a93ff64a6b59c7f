#include "document/definitions.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "document/node_access.h"
#include "run/host_memory.h"
#include "run/import_run.h"
#include "run/text_match.h"

namespace {

enum class Comparison { kWhole, kPrefix };

constexpr std::uint32_t kUnitBits = 16;
constexpr std::uint32_t kIdBits = (kMaxIdUnits + 1) * kUnitBits;

// An id or a reference without its case, and zeros behind it.
struct FoldedId {
  explicit FoldedId(std::u16string_view id) { std::transform(id.begin(), id.end(), units, LowerUnit); }

  std::uint32_t Bit(std::uint32_t bit) const { return (units[bit / kUnitBits] >> bit % kUnitBits) & 1u; }

  char16_t units[kMaxIdUnits + 1] = {};
};

// The first bit in which the id of a record differs from one of so many units, or kIdBits.
std::uint32_t FirstDifference(const FoldedId& id, std::size_t units, const DefinitionRecord& record) {
  for (std::uint32_t i = 0; i <= units; ++i) {
    const auto bits = static_cast<unsigned>(id.units[i] ^ LowerUnit(record.id[i]));
    if (bits != 0) return i * kUnitBits + static_cast<std::uint32_t>(std::countr_zero(bits));
  }
  return kIdBits;
}

IdBranch& BranchAt(DefinitionTable& table, std::int32_t link) { return table.branches[static_cast<std::size_t>(link)]; }

// Where the id leads to by its bits in front of `end`: to a record, or to a branch at a later bit.
std::int32_t& Follow(DefinitionTable& table, const FoldedId& id, std::uint32_t end) {
  std::int32_t* link = &table.top;
  while (*link >= 0) {
    IdBranch& branch = BranchAt(table, *link);
    if (branch.bit >= end) break;
    link = &branch.next[id.Bit(branch.bit)];
  }
  return *link;
}

std::int32_t FirstBehind(DefinitionTable& table, std::int32_t link) {
  return link < 0 ? ~link : BranchAt(table, link).first;
}

// Takes the record at `place`, which is behind all others, into the tree.
void AddBranch(DefinitionTable& table, const FoldedId& id, std::uint32_t bit, std::int32_t place) {
  const auto added = static_cast<std::int32_t>(table.branches.size());
  table.branches.emplace_back();
  std::int32_t& link = Follow(table, id, bit);
  IdBranch& branch = table.branches.back();
  branch = {bit, FirstBehind(table, link), {link, link}};
  branch.next[id.Bit(bit)] = ~place;
  link = added;
}

// The table grows by one record at a time.
void Record(DefinitionTable& table, IXMLDOMNode* node, std::int32_t kind) {
  const std::u16string_view id = GetNodeAttribute(node, u"id").substr(0, kMaxIdUnits);
  const FoldedId folded(id);
  const std::int32_t place = table.count - 1;
  std::uint32_t bit = kIdBits;
  if (place > 0) {
    const DefinitionRecord& nearest = table.records[~Follow(table, folded, kIdBits)];
    bit = FirstDifference(folded, id.size(), nearest);
    if (bit == kIdBits && (nearest.node == node || !table.repeats.insert(node).second)) {
      node->Release();
      return;
    }
  }
  const auto count = static_cast<std::size_t>(table.count);
  auto* records = static_cast<DefinitionRecord*>(ReallocateHost(table.records, (count + 1) * sizeof(DefinitionRecord)));
  table.records = records;
  if (bit != kIdBits) AddBranch(table, folded, bit, place);
  DefinitionRecord& record = records[place];
  id.copy(record.id, id.size());
  record.id[id.size()] = 0;
  record.kind = kind;
  record.node = node;
  std::memset(static_cast<void*>(&records[count]), 0, sizeof(DefinitionRecord));
  ++table.count;
}

// The ids behind a place in the tree have the bits in front of it in common, so that the first of them answers for all.
const DefinitionRecord* Find(DefinitionTable& table, std::u16string_view reference, Comparison comparison) {
  if (!table.records || reference.size() > kMaxIdUnits) return nullptr;
  const FoldedId id(reference);
  const auto end =
      static_cast<std::uint32_t>(reference.size() + (comparison == Comparison::kWhole ? 1 : 0)) * kUnitBits;
  const DefinitionRecord& found = table.records[FirstBehind(table, Follow(table, id, end))];
  if (!StartsWithAnyCase({found.id, std::size(found.id)}, {id.units, end / kUnitBits})) return nullptr;
  return found.node ? &found : nullptr;  // the blank record can match as well
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
  table.branches.clear();
  table.top = ~0;
  table.repeats.clear();
  table.stopLists.clear();
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
