// Clip paths, gradients and patterns by id, recorded before the first shape is translated, since references run
// forwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "filter_limits.h"
#include "operators/graphics_state.h"

class IXMLDOMNode;

enum GradientKind : std::int32_t { kLinearGradient = 0, kRadialGradient = 1 };

struct DefinitionRecord {
  char16_t id[kMaxIdUnits + 1];  // NUL-terminated, cut to its room
  std::int32_t kind;             // GradientKind, in GradientDefs only
  IXMLDOMNode* node;             // with one reference; null in the blank record
};

// Parts ids at a bit in which they differ.
struct IdBranch {
  std::uint32_t bit;
  std::int32_t first;    // the place of the first record behind it
  std::int32_t next[2];  // by the bit: a branch, or ~place of a record
};

// The stops of a gradient, with an entry for each child, as they were read.
struct StopList {
  std::vector<GradientStop> entries;
  std::int32_t stopCount = 0;  // of the children that are stops
};

// `count` records from the host allocator, of which the last is blank and takes the next definition.
struct DefinitionTable {
  DefinitionRecord* records = nullptr;
  std::int32_t count = 1;  // never reset, not even by CloseFile
  // The tree that the lookups go by. Of records with one id, whatever its case, it holds the first.
  std::vector<IdBranch> branches;
  std::int32_t top = ~0;                                       // as `next` of a branch; record 0 is always there
  std::unordered_set<const IXMLDOMNode*> repeats;              // nodes of the records that the tree does not hold
  std::unordered_map<const IXMLDOMNode*, StopList> stopLists;  // in GradientDefs only: those read so far
};

struct DefinitionTables {
  DefinitionTable ClipDefs;
  DefinitionTable GradientDefs;
  DefinitionTable PatternDefs;
};

// Replaces the table by as many blank records as its count says. Throws std::bad_alloc.
void AllocateDefinitions(DefinitionTable& table);
// Releases the nodes and frees the table. The count stays.
void FreeDefinitions(DefinitionTable& table);

// Records the clip paths, patterns and gradients among the children of one "defs" element. Children of children are not
// entered.
void RunDefinitionsPrePass(IXMLDOMNode* defs);

// These take the reference to the node over. A node that is recorded already is not recorded again, as a gradient's are
// at each use of it: no lookup would find the second record.
bool RecordClipDef(IXMLDOMNode* node);
bool RecordGradientDef(IXMLDOMNode* node, GradientKind kind);

// The lookups compare without regard to case, and the first match counts; null when there is none. A clip's id is
// compared whole. A gradient's and a pattern's is compared over the reference's length alone, so that "a" finds "a1";
// an empty reference finds none.
const DefinitionRecord* FindClipDef(std::u16string_view reference);
const DefinitionRecord* FindGradientDef(std::u16string_view reference);
const DefinitionRecord* FindPatternDef(std::u16string_view reference);

// Enters a definition for the time of its translation. False when it has to count as not found: it is being translated
// already, it would be too deep, or the import has entered too many or made too much of them.
class EnteredDefinition {
 public:
  explicit EnteredDefinition(const DefinitionRecord& record);
  ~EnteredDefinition();
  EnteredDefinition(const EnteredDefinition&) = delete;
  EnteredDefinition& operator=(const EnteredDefinition&) = delete;
  explicit operator bool() const { return entered_; }

 private:
  bool entered_;
};

// Counts a group or text for the time of its translation.
class NestedElement {
 public:
  NestedElement();
  ~NestedElement();
  NestedElement(const NestedElement&) = delete;
  NestedElement& operator=(const NestedElement&) = delete;
};
