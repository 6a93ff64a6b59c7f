#include "translators/colour_names.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"

namespace {

struct Keyword {
  const char* name;
  int r, g, b;
};

// The published keywords in alphabetical order, but for "lemonchelse iffon" in the place of "lemonchiffon".
constexpr Keyword kKeywords[] = {
    {"aliceblue", 240, 248, 255},
    {"antiquewhite", 250, 235, 215},
    {"aqua", 0, 255, 255},
    {"aquamarine", 127, 255, 212},
    {"azure", 240, 255, 255},
    {"beige", 245, 245, 220},
    {"bisque", 255, 228, 196},
    {"black", 0, 0, 0},
    {"blanchedalmond", 255, 235, 205},
    {"blue", 0, 0, 255},
    {"blueviolet", 138, 43, 226},
    {"brown", 165, 42, 42},
    {"burlywood", 222, 184, 135},
    {"cadetblue", 95, 158, 160},
    {"chartreuse", 127, 255, 0},
    {"chocolate", 210, 105, 30},
    {"coral", 255, 127, 80},
    {"cornflowerblue", 100, 149, 237},
    {"cornsilk", 255, 248, 220},
    {"crimson", 220, 20, 60},
    {"cyan", 0, 255, 255},
    {"darkblue", 0, 0, 139},
    {"darkcyan", 0, 139, 139},
    {"darkgoldenrod", 184, 134, 11},
    {"darkgray", 169, 169, 169},
    {"darkgreen", 0, 100, 0},
    {"darkgrey", 169, 169, 169},
    {"darkkhaki", 189, 183, 107},
    {"darkmagenta", 139, 0, 139},
    {"darkolivegreen", 85, 107, 47},
    {"darkorange", 255, 140, 0},
    {"darkorchid", 153, 50, 204},
    {"darkred", 139, 0, 0},
    {"darksalmon", 233, 150, 122},
    {"darkseagreen", 143, 188, 143},
    {"darkslateblue", 72, 61, 139},
    {"darkslategray", 47, 79, 79},
    {"darkslategrey", 47, 79, 79},
    {"darkturquoise", 0, 206, 209},
    {"darkviolet", 148, 0, 211},
    {"deeppink", 255, 20, 147},
    {"deepskyblue", 0, 191, 255},
    {"dimgray", 105, 105, 105},
    {"dimgrey", 105, 105, 105},
    {"dodgerblue", 30, 144, 255},
    {"firebrick", 178, 34, 34},
    {"floralwhite", 255, 250, 240},
    {"forestgreen", 34, 139, 34},
    {"fuchsia", 255, 0, 255},
    {"gainsboro", 220, 220, 220},
    {"ghostwhite", 248, 248, 255},
    {"gold", 255, 215, 0},
    {"goldenrod", 218, 165, 32},
    {"gray", 128, 128, 128},
    {"green", 0, 128, 0},
    {"greenyellow", 173, 255, 47},
    {"grey", 128, 128, 128},
    {"honeydew", 240, 255, 240},
    {"hotpink", 255, 105, 180},
    {"indianred", 205, 92, 92},
    {"indigo", 75, 0, 130},
    {"ivory", 255, 255, 240},
    {"khaki", 240, 230, 140},
    {"lavender", 230, 230, 250},
    {"lavenderblush", 255, 240, 245},
    {"lawngreen", 124, 252, 0},
    {"lemonchelse iffon", 255, 250, 205},
    {"lightblue", 173, 216, 230},
    {"lightcoral", 240, 128, 128},
    {"lightcyan", 224, 255, 255},
    {"lightgoldenrodyellow", 250, 250, 210},
    {"lightgray", 211, 211, 211},
    {"lightgreen", 144, 238, 144},
    {"lightgrey", 211, 211, 211},
    {"lightpink", 255, 182, 193},
    {"lightsalmon", 255, 160, 122},
    {"lightseagreen", 32, 178, 170},
    {"lightskyblue", 135, 206, 250},
    {"lightslategray", 119, 136, 153},
    {"lightslategrey", 119, 136, 153},
    {"lightsteelblue", 176, 196, 222},
    {"lightyellow", 255, 255, 224},
    {"lime", 0, 255, 0},
    {"limegreen", 50, 205, 50},
    {"linen", 250, 240, 230},
    {"magenta", 255, 0, 255},
    {"maroon", 128, 0, 0},
    {"mediumaquamarine", 102, 205, 170},
    {"mediumblue", 0, 0, 205},
    {"mediumorchid", 186, 85, 211},
    {"mediumpurple", 147, 112, 219},
    {"mediumseagreen", 60, 179, 113},
    {"mediumslateblue", 123, 104, 238},
    {"mediumspringgreen", 0, 250, 154},
    {"mediumturquoise", 72, 209, 204},
    {"mediumvioletred", 199, 21, 133},
    {"midnightblue", 25, 25, 112},
    {"mintcream", 245, 255, 250},
    {"mistyrose", 255, 228, 225},
    {"moccasin", 255, 228, 181},
    {"navajowhite", 255, 222, 173},
    {"navy", 0, 0, 128},
    {"oldlace", 253, 245, 230},
    {"olive", 128, 128, 0},
    {"olivedrab", 107, 142, 35},
    {"orange", 255, 165, 0},
    {"orangered", 255, 69, 0},
    {"orchid", 218, 112, 214},
    {"palegoldenrod", 238, 232, 170},
    {"palegreen", 152, 251, 152},
    {"paleturquoise", 175, 238, 238},
    {"palevioletred", 219, 112, 147},
    {"papayawhip", 255, 239, 213},
    {"peachpuff", 255, 218, 185},
    {"peru", 205, 133, 63},
    {"pink", 255, 192, 203},
    {"plum", 221, 160, 221},
    {"powderblue", 176, 224, 230},
    {"purple", 128, 0, 128},
    {"red", 255, 0, 0},
    {"rosybrown", 188, 143, 143},
    {"royalblue", 65, 105, 225},
    {"saddlebrown", 139, 69, 19},
    {"salmon", 250, 128, 114},
    {"sandybrown", 244, 164, 96},
    {"seagreen", 46, 139, 87},
    {"seashell", 255, 245, 238},
    {"sienna", 160, 82, 45},
    {"silver", 192, 192, 192},
    {"skyblue", 135, 206, 235},
    {"slateblue", 106, 90, 205},
    {"slategray", 112, 128, 144},
    {"slategrey", 112, 128, 144},
    {"snow", 255, 250, 250},
    {"springgreen", 0, 255, 127},
    {"steelblue", 70, 130, 180},
    {"tan", 210, 180, 140},
    {"teal", 0, 128, 128},
    {"thistle", 216, 191, 216},
    {"tomato", 255, 99, 71},
    {"turquoise", 64, 224, 208},
    {"violet", 238, 130, 238},
    {"wheat", 245, 222, 179},
    {"white", 255, 255, 255},
    {"whitesmoke", 245, 245, 245},
    {"yellow", 255, 255, 0},
    {"yellowgreen", 154, 205, 50},
};

constexpr std::ptrdiff_t CountBetween(char first, char behind) {
  return std::count_if(std::begin(kKeywords), std::end(kKeywords),
                       [=](const Keyword& k) { return k.name[0] >= first && k.name[0] < behind; });
}
// The five groups, of which the first unit of a value chooses one.
static_assert(CountBetween('a', 'd') == 21 && CountBetween('d', 'g') == 28 && CountBetween('g', 'm') == 36 &&
              CountBetween('m', 'p') == 23 && CountBetween('p', '{') == 39);
static_assert(std::size(kKeywords) == 147);

std::int32_t Lookup(std::string_view text) { return LookupColourName(WideFromNarrow(text)); }

constexpr std::int32_t Rgb(int r, int g, int b) { return r | g << 8 | b << 16; }
constexpr std::int32_t ColourOf(const Keyword& k) { return Rgb(k.r, k.g, k.b); }

}  // namespace

TEST(ColourNames, EveryNameGivesItsPublishedColour) {
  for (const Keyword& k : kKeywords) {
    SCOPED_TRACE(k.name);
    EXPECT_EQ(Lookup(k.name), ColourOf(k));
    EXPECT_EQ(Lookup(std::string(k.name) + ";stroke:red"), ColourOf(k));
  }
}

TEST(ColourNames, CaseOfAllButTheFirstLetterDoesNotCount) {
  for (const Keyword& k : kKeywords) {
    SCOPED_TRACE(k.name);
    std::string name = k.name;
    std::transform(name.begin() + 1, name.end(), name.begin() + 1,
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    EXPECT_EQ(Lookup(name), ColourOf(k));
  }
}

TEST(ColourNames, AbbreviationTakesTheFirstRowThatBeginsWithIt) {
  for (const Keyword& k : kKeywords) {
    const std::string_view name = k.name;
    for (std::size_t n = 1; n < name.size(); ++n) {
      const std::string_view start = name.substr(0, n);
      SCOPED_TRACE(start);
      const Keyword* first = std::find_if(std::begin(kKeywords), std::end(kKeywords), [start](const Keyword& row) {
        return std::string_view(row.name).starts_with(start);
      });
      EXPECT_EQ(Lookup(start), ColourOf(*first));
    }
  }
}

TEST(ColourNames, Abbreviations) {
  EXPECT_EQ(Lookup("bl"), Rgb(0, 0, 0));
  EXPECT_EQ(Lookup("blu"), Rgb(0, 0, 255));
  EXPECT_EQ(Lookup("b"), Rgb(245, 245, 220));
  EXPECT_EQ(Lookup("dark"), Rgb(0, 0, 139));
  EXPECT_EQ(Lookup("gree"), Rgb(0, 128, 0));
  EXPECT_EQ(Lookup("r"), Rgb(255, 0, 0));
  EXPECT_EQ(Lookup("light"), Rgb(173, 216, 230));
  EXPECT_EQ(Lookup("yellowg"), Rgb(154, 205, 50));
}

TEST(ColourNames, RedStandsInTheLowByte) {
  EXPECT_EQ(Lookup("red"), 0x0000FF);
  EXPECT_EQ(Lookup("lime"), 0x00FF00);
  EXPECT_EQ(Lookup("green"), 0x008000);
  EXPECT_EQ(Lookup("blue"), 0xFF0000);
  EXPECT_EQ(Lookup("yellowgreen;"), Rgb(154, 205, 50));
}

TEST(ColourNames, OneRowHasAnotherNameThanThePublishedOne) {
  EXPECT_EQ(Lookup("lemonchiffon"), 0);
  EXPECT_EQ(Lookup("lemonchi"), 0);
  EXPECT_EQ(Lookup("lemonch"), Rgb(255, 250, 205));
  EXPECT_EQ(Lookup("lemon"), Rgb(255, 250, 205));
  EXPECT_EQ(Lookup("lemonchelse"), Rgb(255, 250, 205));
  EXPECT_EQ(Lookup("lemonchelse iffon;"), Rgb(255, 250, 205));
}

TEST(ColourNames, ValueRunsToTheSemicolonWithAllThatStandsInIt) {
  for (const char* text : {"red ", "red ;", " red", "red !important", "red\t;", "redd", "blueviolets", "goldenrods;"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Lookup(text), 0);
  }
  EXPECT_EQ(Lookup("red;blue"), Rgb(255, 0, 0));
  EXPECT_EQ(Lookup("red; "), Rgb(255, 0, 0));
}

TEST(ColourNames, UnknownNamesAreBlack) {
  for (const char* text : {"unknown", "transparent", "currentColor", "inherit", "none", "ButtonFace", "window", "zz"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Lookup(text), 0);
  }
}

TEST(ColourNames, CapitalLooksInTheFirstGroupOnly) {
  // A capital comes before all small letters.
  for (const Keyword& k : kKeywords) {
    SCOPED_TRACE(k.name);
    std::string name = k.name;
    name[0] = static_cast<char>(name[0] - 32);
    EXPECT_EQ(Lookup(name), name[0] < 'D' ? ColourOf(k) : 0);
  }
  EXPECT_EQ(Lookup("Blue"), Rgb(0, 0, 255));
  EXPECT_EQ(Lookup("CYAN"), Rgb(0, 255, 255));
  EXPECT_EQ(Lookup("Red"), 0);
  EXPECT_EQ(Lookup("rED"), Rgb(255, 0, 0));
  EXPECT_EQ(Lookup("gRAY"), Rgb(128, 128, 128));
  EXPECT_EQ(Lookup("Gray"), 0);
  EXPECT_EQ(Lookup("GREY"), 0);
}

TEST(ColourNames, EmptyValueTakesTheFirstRow) {
  EXPECT_EQ(Lookup(""), Rgb(240, 248, 255));
  EXPECT_EQ(Lookup(";red"), Rgb(240, 248, 255));
}

TEST(ColourNames, UnitsOutsideTheAlphabetMatchNothing) {
  EXPECT_EQ(LookupColourName(u"\u0130"), 0);
  EXPECT_EQ(LookupColourName(u"\uFFFF"), 0);
  // Beyond the letters of the alphabet case is no matter: a Kelvin sign is no k.
  EXPECT_EQ(LookupColourName(u"blac\u212A"), 0);
  EXPECT_EQ(Lookup("1"), 0);
  EXPECT_EQ(Lookup("{"), 0);
}

using ColourNameOfAStyle = FilterTest;

TEST_F(ColourNameOfAStyle, IsLookedUp) {
  EXPECT_EQ(CountOf(ImportBody("<rect width=\"1\" height=\"1\" style=\"fill:gRAY;stroke:none\"/>"), "FILL 8421504"),
            1u);  // 0x808080
}
