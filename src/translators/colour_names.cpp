#include "translators/colour_names.h"

#include <cstddef>

#include "run/text_match.h"

namespace {

struct ColourName {
  std::u16string_view name;
  std::uint8_t r, g, b;
};

// In alphabetical order. The name of one row is not the published one: it is meant.
constexpr ColourName kNames[] = {
    {u"aliceblue", 240, 248, 255},
    {u"antiquewhite", 250, 235, 215},
    {u"aqua", 0, 255, 255},
    {u"aquamarine", 127, 255, 212},
    {u"azure", 240, 255, 255},
    {u"beige", 245, 245, 220},
    {u"bisque", 255, 228, 196},
    {u"black", 0, 0, 0},
    {u"blanchedalmond", 255, 235, 205},
    {u"blue", 0, 0, 255},
    {u"blueviolet", 138, 43, 226},
    {u"brown", 165, 42, 42},
    {u"burlywood", 222, 184, 135},
    {u"cadetblue", 95, 158, 160},
    {u"chartreuse", 127, 255, 0},
    {u"chocolate", 210, 105, 30},
    {u"coral", 255, 127, 80},
    {u"cornflowerblue", 100, 149, 237},
    {u"cornsilk", 255, 248, 220},
    {u"crimson", 220, 20, 60},
    {u"cyan", 0, 255, 255},
    {u"darkblue", 0, 0, 139},
    {u"darkcyan", 0, 139, 139},
    {u"darkgoldenrod", 184, 134, 11},
    {u"darkgray", 169, 169, 169},
    {u"darkgreen", 0, 100, 0},
    {u"darkgrey", 169, 169, 169},
    {u"darkkhaki", 189, 183, 107},
    {u"darkmagenta", 139, 0, 139},
    {u"darkolivegreen", 85, 107, 47},
    {u"darkorange", 255, 140, 0},
    {u"darkorchid", 153, 50, 204},
    {u"darkred", 139, 0, 0},
    {u"darksalmon", 233, 150, 122},
    {u"darkseagreen", 143, 188, 143},
    {u"darkslateblue", 72, 61, 139},
    {u"darkslategray", 47, 79, 79},
    {u"darkslategrey", 47, 79, 79},
    {u"darkturquoise", 0, 206, 209},
    {u"darkviolet", 148, 0, 211},
    {u"deeppink", 255, 20, 147},
    {u"deepskyblue", 0, 191, 255},
    {u"dimgray", 105, 105, 105},
    {u"dimgrey", 105, 105, 105},
    {u"dodgerblue", 30, 144, 255},
    {u"firebrick", 178, 34, 34},
    {u"floralwhite", 255, 250, 240},
    {u"forestgreen", 34, 139, 34},
    {u"fuchsia", 255, 0, 255},
    {u"gainsboro", 220, 220, 220},
    {u"ghostwhite", 248, 248, 255},
    {u"gold", 255, 215, 0},
    {u"goldenrod", 218, 165, 32},
    {u"gray", 128, 128, 128},
    {u"green", 0, 128, 0},
    {u"greenyellow", 173, 255, 47},
    {u"grey", 128, 128, 128},
    {u"honeydew", 240, 255, 240},
    {u"hotpink", 255, 105, 180},
    {u"indianred", 205, 92, 92},
    {u"indigo", 75, 0, 130},
    {u"ivory", 255, 255, 240},
    {u"khaki", 240, 230, 140},
    {u"lavender", 230, 230, 250},
    {u"lavenderblush", 255, 240, 245},
    {u"lawngreen", 124, 252, 0},
    {u"lemonchelse iffon", 255, 250, 205},
    {u"lightblue", 173, 216, 230},
    {u"lightcoral", 240, 128, 128},
    {u"lightcyan", 224, 255, 255},
    {u"lightgoldenrodyellow", 250, 250, 210},
    {u"lightgray", 211, 211, 211},
    {u"lightgreen", 144, 238, 144},
    {u"lightgrey", 211, 211, 211},
    {u"lightpink", 255, 182, 193},
    {u"lightsalmon", 255, 160, 122},
    {u"lightseagreen", 32, 178, 170},
    {u"lightskyblue", 135, 206, 250},
    {u"lightslategray", 119, 136, 153},
    {u"lightslategrey", 119, 136, 153},
    {u"lightsteelblue", 176, 196, 222},
    {u"lightyellow", 255, 255, 224},
    {u"lime", 0, 255, 0},
    {u"limegreen", 50, 205, 50},
    {u"linen", 250, 240, 230},
    {u"magenta", 255, 0, 255},
    {u"maroon", 128, 0, 0},
    {u"mediumaquamarine", 102, 205, 170},
    {u"mediumblue", 0, 0, 205},
    {u"mediumorchid", 186, 85, 211},
    {u"mediumpurple", 147, 112, 219},
    {u"mediumseagreen", 60, 179, 113},
    {u"mediumslateblue", 123, 104, 238},
    {u"mediumspringgreen", 0, 250, 154},
    {u"mediumturquoise", 72, 209, 204},
    {u"mediumvioletred", 199, 21, 133},
    {u"midnightblue", 25, 25, 112},
    {u"mintcream", 245, 255, 250},
    {u"mistyrose", 255, 228, 225},
    {u"moccasin", 255, 228, 181},
    {u"navajowhite", 255, 222, 173},
    {u"navy", 0, 0, 128},
    {u"oldlace", 253, 245, 230},
    {u"olive", 128, 128, 0},
    {u"olivedrab", 107, 142, 35},
    {u"orange", 255, 165, 0},
    {u"orangered", 255, 69, 0},
    {u"orchid", 218, 112, 214},
    {u"palegoldenrod", 238, 232, 170},
    {u"palegreen", 152, 251, 152},
    {u"paleturquoise", 175, 238, 238},
    {u"palevioletred", 219, 112, 147},
    {u"papayawhip", 255, 239, 213},
    {u"peachpuff", 255, 218, 185},
    {u"peru", 205, 133, 63},
    {u"pink", 255, 192, 203},
    {u"plum", 221, 160, 221},
    {u"powderblue", 176, 224, 230},
    {u"purple", 128, 0, 128},
    {u"red", 255, 0, 0},
    {u"rosybrown", 188, 143, 143},
    {u"royalblue", 65, 105, 225},
    {u"saddlebrown", 139, 69, 19},
    {u"salmon", 250, 128, 114},
    {u"sandybrown", 244, 164, 96},
    {u"seagreen", 46, 139, 87},
    {u"seashell", 255, 245, 238},
    {u"sienna", 160, 82, 45},
    {u"silver", 192, 192, 192},
    {u"skyblue", 135, 206, 235},
    {u"slateblue", 106, 90, 205},
    {u"slategray", 112, 128, 144},
    {u"slategrey", 112, 128, 144},
    {u"snow", 255, 250, 250},
    {u"springgreen", 0, 255, 127},
    {u"steelblue", 70, 130, 180},
    {u"tan", 210, 180, 140},
    {u"teal", 0, 128, 128},
    {u"thistle", 216, 191, 216},
    {u"tomato", 255, 99, 71},
    {u"turquoise", 64, 224, 208},
    {u"violet", 238, 130, 238},
    {u"wheat", 245, 222, 179},
    {u"white", 255, 255, 255},
    {u"whitesmoke", 245, 245, 245},
    {u"yellow", 255, 255, 0},
    {u"yellowgreen", 154, 205, 50},
};

// The rows fall into groups by the first unit of the value, whose case counts here: a capital comes before all small
// letters and so into the first group.
struct Group {
  char16_t below;  // the first unit that belongs to the next group
  std::size_t begin, end;
};

constexpr Group kGroups[] = {
    {u'd', 0, 21}, {u'g', 21, 49}, {u'm', 49, 85}, {u'p', 85, 108}, {0xFFFF, 108, 147},
};
static_assert(std::size(kNames) == 147);

}  // namespace

std::int32_t LookupColourName(std::u16string_view text) {
  const std::u16string_view value = text.substr(0, text.find(u';'));
  const char16_t first = value.empty() ? u'\0' : value[0];
  const Group* group = kGroups;
  while (first >= group->below && group->below != 0xFFFF) ++group;
  for (std::size_t i = group->begin; i < group->end; ++i) {
    const ColourName& row = kNames[i];
    if (StartsWithAnyCase(row.name, value)) return row.r | row.g << 8 | row.b << 16;
  }
  return 0;
}
