// One walk over a document in the order in which the filter translates it, with what the filter would hold at each
// place: the current matrix, the definitions recorded so far, what earlier elements leave for later ones.
#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tools/report/properties.h"
#include "tools/report/report.h"
#include "tools/report/svg_document.h"
#include "tools/report/text_reading.h"

// As a finding shows it: name="value".
std::string Quoted(const SvgAttribute& attribute);

// A property as it comes down from the ancestors.
struct InheritedProperty {
  std::string_view value;  // as SVG says
  const SvgNode* origin = nullptr;
  int line = 0;
  bool passed = false;  // the filter passes it down too
};

// What holds for the children of a container.
struct Context {
  Matrix matrix;  // the filter's
  std::array<InheritedProperty, kPropertyCount> inherited;
  bool opacity = false;  // an opacity below 1 is in force
  int thickness = 0;     // of the frame: 1 no stroke, 2 hair, 3 thick; 0 as long as nothing sets it
  const SvgNode* thicknessOrigin = nullptr;
  std::string thicknessCause;
};

enum class DefinitionKind { kClip, kPattern, kLinear, kRadial };

struct Definition {
  const SvgNode* node;
  DefinitionKind kind;
};

// The definitions of one table, found as the filter finds them: without case, the first one recorded first.
class DefinitionTable {
 public:
  void Record(const SvgNode& node, DefinitionKind kind);
  const Definition* FindWhole(std::string_view reference) const;
  const Definition* FindByStart(std::string_view reference) const;

 private:
  std::vector<Definition> definitions_;
  std::map<std::string, std::size_t> ids_;  // the first of each id
  // What was found by the start of ids: a definition that comes later never takes the place of one found before.
  mutable std::unordered_map<std::string, std::size_t> foundByStart_;
};

class Survey {
 public:
  explicit Survey(const SvgDocument& document) : document_(document) {}

  // Takes the findings of the whole document, in no order.
  std::vector<Finding> Run();

 private:
  enum class Place { kTop, kGroup, kDefs };

  // survey.cpp
  const SvgNode& At(int index) const { return document_.nodes[static_cast<std::size_t>(index)]; }
  void Report(const LossKind* kind, const SvgNode& node, int line, std::string detail = {});
  // Once for this kind, node and detail.
  void ReportOnce(const LossKind* kind, const SvgNode& node, int line, const std::string& detail);
  void CollectReferences();
  void CheckUnrecordedDefinitions();

  // root_checks.cpp
  void CheckRoot();
  void CheckUnits();

  // elements.cpp
  void WalkChildren(const SvgNode& node, Place place, const Context& context);
  void WalkElement(const SvgNode& node, const SvgNode& parent, Place place, const Context& context);
  void SkippedElement(const SvgNode& node, const SvgNode& parent, Place place);
  void RecordDefinitions(const SvgNode& defs);
  void CheckGroup(const SvgNode& node, const Context& context);
  void CheckImage(const SvgNode& node, const Context& context, bool inPattern);
  Context GroupContext(const SvgNode& node, const StatedProperties& own, const Context& context);
  void CheckClass(const SvgNode& node);
  // The findings that every drawn element can have by its attributes and children.
  void CheckCommon(const SvgNode& node);
  void CheckAnimations(const SvgNode& node);
  void CheckReferencePrefix(const SvgNode& node);
  Matrix CheckTransform(const SvgNode& node, std::string_view attribute);
  void CheckClipReference(const SvgNode& node, const Context& context);
  void EnterClip(const SvgNode& clip, const Context& context);

  // shapes.cpp
  void CheckShape(const SvgNode& node, const Context& context);
  void CheckGeometry(const SvgNode& node);
  void CheckLengths(const SvgNode& node, std::string_view attributes);
  void CheckPathData(const SvgNode& node, const SvgAttribute& data, const PathReading& reading);

  // paint.cpp
  enum class Owner { kShape, kGroup, kText };
  // A property as the filter comes to read it.
  struct ReadStyle {
    std::string text;  // of the style, or of the attributes folded into one
    bool folded = false;
    int line = 0;
  };
  std::string_view Effective(const StatedProperties& own, const Context& context, PropertyId id) const;
  bool StrokePainted(const StatedProperties& own, const Context& context) const;
  bool FillPainted(const StatedProperties& own, const Context& context) const;
  bool Needed(const SvgNode& node, Need need, const StatedProperties& own, const Context& context) const;
  void CheckUnread(const SvgNode& node, const StatedProperties& own, const Context& context);
  void CheckInherited(const SvgNode& node, const StatedProperties& own, const Context& context);
  void CheckStyleText(const SvgNode& node, std::string_view readProperties);
  // `rest` is the value and what stands behind it in the text.
  void CheckColour(const SvgNode& node, Owner owner, PropertyId id, std::string_view rest, int line);
  void CheckStroke(const SvgNode& node, const StatedProperties& own, const ReadStyle& style, const Context& context);
  struct ReadFill {
    bool solid = false;             // a colour was given
    bool transparentStops = false;  // of a gradient
  };
  ReadFill CheckFill(const SvgNode& node, const ReadStyle& style, const Context& context);
  // True when an opacity below 1 is read.
  bool CheckOpacity(const SvgNode& node, const ReadStyle& style, const Context& context, bool strokePainted,
                    bool transparentStops);
  void CheckAttributeWins(const SvgNode& node, std::string_view names);
  void CheckFrameOutline(const SvgNode& node, const StatedProperties& own, const Context& context);
  Context Inherit(const SvgNode& node, const StatedProperties& own, const Context& context, bool group);

  // gradients.cpp
  // True when the gradient has transparent stops.
  bool CheckPaintReference(const SvgNode& node, std::string_view value, int line, const Context& context);
  void CheckGradient(const Definition& gradient);
  int CountStops(const SvgNode& gradient);
  bool CheckStops(const SvgNode& gradient);
  void CheckPattern(const SvgNode& pattern, const Context& context);
  void CheckOtherDefinition(const SvgNode& node, int line, std::string_view reference, const Definition& found);

  // texts.cpp
  void CheckText(const SvgNode& node, const Context& context);
  void CheckSpans(const SvgNode& node, const SvgNode& text, const StatedProperties& own, const Context& context,
                  bool* first);
  void CheckTextSize(const SvgNode& node, const StatedProperties& own, const Context& context);
  void CheckFontName(const SvgNode& node);
  void CheckCharacters(const SvgNode& node);
  std::string CharactersOf(const SvgNode& node) const;

  const SvgDocument& document_;
  std::vector<Finding> findings_;
  std::set<std::string> reported_;
  DefinitionTable clips_, gradients_, patterns_;
  std::unordered_map<const SvgNode*, int> stopCounts_;
  std::unordered_set<const SvgNode*> recorded_, entered_;
  std::unordered_set<const SvgNode*> stopOwners_, transparentOwners_;  // what gradients link to
  std::unordered_set<const SvgNode*> boxed_;              // gradients whose coordinates follow the shape's box
  std::unordered_set<const SvgNode*> transparent_;        // gradients with transparent stops
  std::unordered_map<std::string, const SvgNode*> byId_;  // as SVG finds them
  std::unordered_set<std::string> referenced_;            // ids that something refers to
  std::unordered_set<std::string> styledClasses_;         // classes that a style sheet of the file names
  bool unknownStyleSheet_ = false;                        // there is one outside the file

  // What elements leave for later ones.
  std::string_view fontSize_;
  std::string fontBuffer_ = std::string(1, '\0');
  std::string anchor_ = "start";
  bool strokeLeft_ = false;
  bool lineLeft_ = false;
  double scale_ = 0.0;  // centimetres of one unit
};
