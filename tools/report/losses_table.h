// The table of everything that an import is known to lose or to change. Each row has a section of its own name in
// docs/losses.md and a small drawing in tests/report/cases.
#pragma once

#include <cstddef>
#include <string_view>

enum class Severity {
  kLost,     // does not reach the drawing
  kChanged,  // reaches it in another form or at another place
};

struct LossKind {
  std::string_view name;
  Severity severity;
  // One sentence; {element} stands for the element's name and {detail} for what stands in the document.
  std::string_view sentence;
  // Rows that elements or properties select by their name: these names, with a blank between them.
  std::string_view elements, properties;
};

inline constexpr Severity kLost = Severity::kLost;
inline constexpr Severity kChanged = Severity::kChanged;

inline constexpr LossKind kLosses[] = {
    // The file.
    {"not-imported", kLost, "the document is not imported at all: {detail}", {}, {}},
    {"byte-order-mark", kLost, "the byte order mark counts as text in front of the root element", {}, {}},
    {"doctype-subset", kLost, "only the first part of the DOCTYPE is passed over, up to a > inside its subset", {}, {}},
    {"encoding-ignored", kChanged, "{detail} is ignored: texts are taken as UTF-8", {}, {}},
    {"style-sheet", kLost, "the style sheet is not read, and nothing that it says is applied", "style", {}},

    // The root element.
    {"millimetres-by-accident",
     kChanged,
     "the file's first \"width\" is this one, {detail}, and its m makes every number a millimetre",
     {},
     {}},
    {"millimetres-missed",
     kChanged,
     "{detail} is not the file's first \"width\", so that every number counts as 1/90 inch and not as a millimetre",
     {},
     {}},
    {"root-units", kChanged, "the unit of {detail} is cut off: the page gets another size", {}, {}},
    {"no-root-height", kChanged, "the root has no height: the drawing hangs below the page's lower edge", {}, {}},
    {"view-box", kChanged, "{detail} is not read: numbers are not scaled or moved by it", {}, {}},

    // Elements.
    {"element-use", kLost, "use is not read, and {detail} is not drawn again", "use", {}},
    {"element-symbol", kLost, "symbol is not read, and neither are the references to {detail}", "symbol", {}},
    {"element-mask", kLost, "mask is not read: what refers to {detail} is drawn whole", "mask", {}},
    {"element-marker", kLost, "marker is not read: lines that refer to {detail} end plain", "marker", {}},
    {"element-filter", kLost, "filter is not read: what refers to {detail} is drawn plain", "filter", {}},
    {"element-switch", kLost, "switch is not read, and none of its children is drawn", "switch", {}},
    {"element-a", kLost, "a is not read, and nothing inside the link is drawn", "a", {}},
    {"element-svg", kLost, "an svg inside the drawing is not read, and nothing in it is drawn", "svg", {}},
    {"element-foreign-object", kLost, "foreignObject is not read", "foreignObject", {}},
    {"element-animation",
     kLost,
     "{element} is not read: its target stands still",
     "animate animateTransform animateMotion animateColor set",
     {}},
    {"element-not-read",
     kLost,
     "{element} is not read, and nothing in it is drawn",
     "flowRoot textArea tref video iframe canvas mesh",
     {}},
    {"element-misplaced", kLost, "{element} is not read inside {detail}", {}, {}},
    {"foreign-element-drawn", kChanged, "{element} of another namespace is drawn as if it were SVG", {}, {}},
    {"definition-outside-defs",
     kLost,
     "{element} {detail} stands where definitions are not read: references to it find nothing",
     {},
     {}},

    // Attributes and properties.
    {"property-class", kLost, "{detail} selects nothing, as style sheets are not read", {}, {}},
    {"property-mask", kLost, "{detail} is not read: {element} is drawn whole", {}, "mask"},
    {"property-filter", kLost, "{detail} is not read: {element} is drawn plain", {}, "filter"},
    {"property-marker",
     kLost,
     "{detail} is not read: no marker is drawn",
     {},
     "marker marker-start marker-mid marker-end"},
    {"property-dashes", kLost, "{detail} is not read: the stroke is solid", {}, "stroke-dasharray"},
    {"property-stroke-opacity", kLost, "{detail} is not read", {}, "stroke-opacity"},
    {"property-display", kChanged, "{detail} is not read: {element} is drawn all the same", {}, "display"},
    {"property-visibility", kChanged, "{detail} is not read: what it hides is drawn all the same", {}, "visibility"},
    {"property-font-style",
     kLost,
     "{detail} is not read: the plain font of the family is taken",
     {},
     "font-weight font-style font-variant font-stretch"},
    {"property-text-decoration", kLost, "{detail} is not read", {}, "text-decoration"},
    {"property-spacing", kLost, "{detail} is not read", {}, "letter-spacing word-spacing textLength"},
    {"property-writing", kLost, "{detail} is not read", {}, "writing-mode baseline-shift dominant-baseline rotate"},
    {"property-not-read", kLost, "{detail} is not read", {}, "mix-blend-mode paint-order vector-effect transform font"},
    {"clip-path-in-style", kLost, "{detail} is read as an attribute only: {element} is not clipped", {}, {}},
    {"attribute-not-read", kLost, "{detail} is not read on {element}", {}, {}},
    {"attributes-beside-style", kLost, "{element} has a style, so that {detail} is not read", {}, {}},
    {"attribute-wins-over-style", kChanged, "{detail} wins over the same property in the style", {}, {}},
    {"inheritance-lost", kLost, "{detail} does not reach the shapes and texts inside this {element}", {}, {}},
    {"property-first-match",
     kChanged,
     "not {detail} but what stands first behind this name in the style counts",
     {},
     {}},
    {"property-spelling", kLost, "{detail} is not found: names are lower-case, and the colon follows at once", {}, {}},
    {"opacity-hidden", kLost, "{detail} is not found behind two other declarations that end in -opacity:", {}, {}},
    {"opacity-replaced",
     kChanged,
     "{detail} is replaced by the fill-opacity behind it, not multiplied with it",
     {},
     {}},
    {"opacity-with-transparent-stops", kLost, "{detail} is dropped, as the gradient has transparent stops", {}, {}},
    {"opacity-nested",
     kChanged,
     "{detail} replaces the opacity of the group around and is not multiplied with it",
     {},
     {}},
    {"group-opacity", kChanged, "{detail} is given to each shape of the group and not to the whole", {}, {}},
    {"fill-opacity-on-stroke", kChanged, "{detail} makes the stroke transparent too", {}, {}},

    // Colours.
    {"colour-unreachable", kLost, "{detail} is no colour here: only names that begin with b to y are", {}, {}},
    {"colour-unknown", kChanged, "{detail} is in no table and gives black", {}, {}},
    {"colour-keyword", kChanged, "{detail} is not known and gives black", {}, {}},
    {"colour-form", kChanged, "{detail} is not read as it is meant: only #rrggbb, #rgb; and rgb(r,g,b) are", {}, {}},
    {"short-hex-at-end", kChanged, "{detail} without a semicolon behind it is taken for six digits", {}, {}},
    {"stroke-rgb-on-group",
     kChanged,
     "{detail} on a group becomes the fill of its shapes and not their stroke",
     {},
     {}},
    {"stroke-rgb-on-text", kChanged, "{detail} on a text gives black", {}, {}},
    {"stroke-paint-server", kChanged, "{detail} is not followed: the stroke is black", {}, {}},
    {"fill-paint-server", kChanged, "{detail} is not followed on {element}: the fill is black", {}, {}},
    {"paint-reference", kLost, "{detail} finds no definition: the fill stays as it was", {}, {}},
    {"reference-other-definition",
     kChanged,
     "{detail}, as ids are compared without case and those of gradients and patterns only over their start",
     {},
     {}},

    // Strokes.
    {"stroke-default-width", kChanged, "{detail} has no stroke-width and gives a hairline in place of 1", {}, {}},
    {"stroke-width-without-stroke", kLost, "{detail} is read only beside a stroke of the same {element}", {}, {}},
    {"stroke-default-join", kChanged, "the stroke has no stroke-linejoin and gets bevelled corners", {}, {}},
    {"stroke-width-scale", kChanged, "the stroke keeps its width, though the transform scales {element}", {}, {}},
    {"unstyled-shape",
     kChanged,
     "{element} has no paint of its own and takes the stroke of what was drawn before",
     {},
     {}},
    {"group-outline", kChanged, "a group with {detail} and no stroke gives its shapes a hairline", {}, {}},
    {"open-path-closed", kChanged, "the open outline is closed with a stroke, as it has a fill", {}, {}},

    // Gradients.
    {"gradient-own-stops",
     kLost,
     "the {detail} of the gradient are not read: only those of a linked gradient are",
     {},
     {}},
    {"gradient-link", kLost, "{detail} leads to no stops: the gradient has no colours", {}, {}},
    {"gradient-inherited-geometry", kChanged, "{detail} of the linked gradient is not taken over", {}, {}},
    {"gradient-bounding-box", kChanged, "coordinates that follow the shape's box are taken as user units", {}, {}},
    {"gradient-default-coordinate", kChanged, "the gradient has no {detail}, which counts as 0", {}, {}},
    {"gradient-spread", kLost, "{detail} is not read: the end colours go on", {}, {}},
    {"gradient-focus", kLost, "{detail} is not read: the focus is the centre", {}, {}},
    {"gradient-transform", kChanged, "{detail} is applied only in part", {}, {}},
    {"gradient-under-transform",
     kChanged,
     "the transform of {element} or of what it stands in does not move its gradient",
     {},
     {}},
    {"stop-attributes", kLost, "{detail} of a stop is read in its style only", {}, {}},
    {"stop-color-form", kChanged, "{detail} gives black: only #rrggbb and #rgb; are read", {}, {}},
    {"stop-offset-percent", kChanged, "{detail} is taken as the bare number and lies far behind the end", {}, {}},
    {"stop-opacity-alone", kLost, "{detail} is not read in a style without stop-color", {}, {}},
    {"stop-list-gap", kChanged, "{detail} among the stops counts as a black stop at 0", {}, {}},
    {"href-without-prefix", kLost, "{detail} is not read: the name must be xlink:href", {}, {}},

    // Patterns.
    {"pattern-content", kLost, "{element} is not part of the tile: only an image is", {}, {}},
    {"pattern-placement",
     kChanged,
     "the tile is placed in inches and sized in tenths, whatever the pattern says",
     {},
     {}},
    {"pattern-link", kLost, "{detail} is not followed: the pattern is empty", {}, {}},
    {"pattern-transform", kLost, "{detail} does not move the tiles", {}, {}},

    // Clips.
    {"clip-path-ignored", kLost, "{detail} is not applied: {element} is not clipped", {}, {}},
    {"clip-reference", kLost, "{detail} finds no clipPath: {element} is not clipped", {}, {}},
    {"clip-child-skipped", kLost, "{element} is not read in a clipPath, and the clip lacks its area", {}, {}},
    {"clip-path-attribute", kLost, "{detail} is not read on clipPath", {}, {}},
    {"clip-rule", kLost, "{detail} is not read", {}, {}},
    {"clip-on-group", kChanged, "the clip of a group is opened and never closed", {}, {}},

    // Geometry.
    {"unit-ignored", kChanged, "the unit of {detail} is cut off", {}, {}},
    {"percentage", kChanged, "{detail} is taken as the bare number", {}, {}},
    {"missing-geometry", kChanged, "{element} has no {detail}, which is not taken as SVG says", {}, {}},
    {"rotation-centre", kChanged, "{detail} turns about the origin: the centre is not read", {}, {}},
    {"transform-stopped", kLost, "the transform is read only up to {detail}", {}, {}},
    {"transform-arguments", kChanged, "the arguments of {detail} are not all read", {}, {}},
    {"data-stopped", kLost, "{detail}", {}, {}},
    {"glued-numbers", kChanged, "{detail}", {}, {}},
    {"path-after-arc", kChanged, "{detail} behind an arc starts from the point in front of the arc", {}, {}},
    {"relative-start", kChanged, "{detail} starts from the end of the line drawn before", {}, {}},
    {"smooth-control", kChanged, "{detail} mirrors another point than SVG says", {}, {}},
    {"quadratic-flattened", kChanged, "the quadratic curve becomes straight pieces of about ten units", {}, {}},

    // Texts.
    {"text-span-position", kLost, "{detail} is not applied: the characters run on behind those before", {}, {}},
    {"text-span-style", kLost, "{detail} of a span does not reach its characters", {}, {}},
    {"text-transform",
     kChanged,
     "the transform moves the text's anchor, but does not turn or scale its letters",
     {},
     {}},
    {"text-position-unit",
     kChanged,
     "with the unit of {detail} the text's place is not scaled like the drawing",
     {},
     {}},
    {"font-size-unit",
     kChanged,
     "{detail} is taken as the bare number, in thousandths of an inch, or not at all",
     {},
     {}},
    {"font-size-attribute", kChanged, "{detail} as an attribute gives a larger text than in a style", {}, {}},
    {"text-size-left-over", kChanged, "the text takes the size that was read last, not {detail}", {}, {}},
    {"text-anchor-left-over", kChanged, "the text keeps the anchor {detail} of a text before", {}, {}},
    {"font-name", kChanged, "{detail}", {}, {}},
    {"text-codes", kChanged, "{detail} in a text is taken for a format code", {}, {}},
    {"text-length", kLost, "the text is cut behind 999 characters", {}, {}},
    {"text-white-space", kChanged, "line ends, tabs and runs of blanks stay in the text as they are", {}, {}},
    {"text-description-drawn", kChanged, "the characters of {element} are drawn as part of the text", {}, {}},
    {"text-path", kChanged, "the text does not follow the path: its characters are drawn in a line", {}, {}},

    // Images.
    {"image-format", kLost, "the data's type is neither png nor jpg by its letters: the image is not drawn", {}, {}},
    {"image-reference", kLost, "{detail}", {}, {}},
    {"image-aspect", kChanged, "{detail} is not read: the image is stretched to its width and height", {}, {}},
    {"image-position", kChanged, "y is scaled twice: the image lies too high", {}, {}},
};

inline constexpr std::size_t kLossCount = sizeof kLosses / sizeof kLosses[0];

// The row of this name; a name that no row has does not compile.
consteval const LossKind* Loss(std::string_view name) {
  for (const LossKind& loss : kLosses) {
    if (loss.name == name) return &loss;
  }
  throw "no such loss";
}

// The row that an element or a property of this name selects; null when none does.
const LossKind* LossOfElement(std::string_view element);
const LossKind* LossOfProperty(std::string_view property);
