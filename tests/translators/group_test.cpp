#include <ostream>
#include <set>

#include "document/definitions.h"
#include "operators/graphics_state.h"
#include "tests/support/fake_document.h"
#include "tests/translators/translator_fixture.h"
#include "translators/element_dispatch.h"

namespace {

// --- What each element may contain

struct Sample {
  std::string markup;
  // Each of these must lead one more line when the element is translated; an element that is registered has none.
  const char* shows;
};

// An element of every name that anything knows, and of some that nothing does.
const std::vector<std::pair<std::string, Sample>>& Samples() {
  static const std::vector<std::pair<std::string, Sample>> samples = {
      {"path", {"<path d='M0 0L1 1'/>", "PATH"}},
      {"polygon", {"<polygon points='0,0 1,1'/>", "PATH"}},
      {"polyline", {"<polyline points='0,0 1,1'/>", "PATH"}},
      {"rect", {"<rect/>", "PLYR"}},
      {"g", {"<g/>", "SGRP"}},
      {"circle", {"<circle/>", "PLYR"}},
      {"ellipse", {"<ellipse/>", "PLYR"}},
      {"line", {"<line/>", "PATH"}},
      {"text", {"<text>b</text>", "PARA"}},
      // Whether it is taken for a text or for a text's span, it replays the paint state once.
      {"tspan", {"<tspan>b</tspan>", "CNST"}},
      {"image", {"<image clip-path='none'/>", "ECGR"}},
      // A gradient in a group sends the width of a group's style.
      {"linearGradient", {"<linearGradient id='x'/>", "WIDT"}},
      {"radialGradient", {"<radialGradient id='x'/>", "WIDT"}},
      {"clipPath", {"<clipPath id='x'><rect/></clipPath>", ""}},
      {"pattern", {"<pattern id='x'><line/></pattern>", ""}},
      {"defs", {"<defs><clipPath id='x'/></defs>", ""}},
      {"namedview", {"<inkscape:namedview inkscape:cy='5'/>", ""}},
      {"stop", {"<stop offset='1'/>", ""}},
      {"svg", {"<svg><rect/></svg>", ""}},
      {"use", {"<use xlink:href='#x'/>", ""}},
      {"symbol", {"<symbol><rect/></symbol>", ""}},
      {"switch", {"<switch><rect/></switch>", ""}},
      {"a", {"<a><rect/></a>", ""}},
      {"mask", {"<mask><rect/></mask>", ""}},
      {"marker", {"<marker><rect/></marker>", ""}},
      {"style", {"<style> </style>", ""}},
      {"title", {"<title> </title>", ""}},
      {"desc", {"<desc> </desc>", ""}},
      {"metadata", {"<metadata><rect/></metadata>", ""}},
      {"Rect", {"<Rect/>", ""}},
      {"rectangle", {"<rectangle/>", ""}},
      {"rec", {"<rec/>", ""}},
      {"Path", {"<Path d='M0 0L1 1'/>", ""}},
      {"G", {"<G><rect/></G>", ""}},
      {"comment", {"<!-- rect -->", ""}},
      {"instruction", {"<?other rect?>", ""}},
  };
  return samples;
}

struct Context {
  const char* name;
  const char* before;
  const char* behind;
  std::set<std::string> translated;
  std::set<std::string> registered;
};

void PrintTo(const Context& context, std::ostream* out) { *out << context.name; }

const Context kContexts[] = {
    {"TopLevel",
     "",
     "<g/>",
     {"path", "polygon", "polyline", "rect", "g", "circle", "ellipse", "line", "text", "image"},
     {"defs"}},
    {"Group",
     "<g>",
     "</g>",
     {"path", "linearGradient", "radialGradient", "polygon", "polyline", "rect", "g", "ellipse", "text", "tspan",
      "line", "image", "circle"},
     {"defs"}},
    {"Defs", "<defs>", "</defs>", {}, {"clipPath", "pattern", "linearGradient", "radialGradient"}},
    {"GradientInAGroup",
     "<g><linearGradient>",
     "</linearGradient></g>",
     {"g", "ellipse", "text", "tspan", "line"},
     {"clipPath", "linearGradient", "radialGradient"}},
    {"RadialGradientInAGroup",
     "<g><radialGradient>",
     "</radialGradient></g>",
     {"g", "ellipse", "text", "tspan", "line"},
     {"clipPath", "linearGradient", "radialGradient"}},
    {"ReferencedClip",
     "<defs><clipPath id='c'>",
     "</clipPath></defs><path clip-path='url(#c)'/>",
     {"rect", "path", "text", "ellipse"},
     {}},
    {"Text", "<text>a", "</text>", {"rect", "ellipse", "text", "tspan", "line", "circle"}, {}},
    {"SpanOfAText", "<text>a<tspan>", "</tspan></text>", {"path", "rect", "ellipse", "circle", "tspan", "line"}, {}},
};

class Children : public TranslatorTest, public testing::WithParamInterface<Context> {
 protected:
  const Context& context = GetParam();

  Lines Around(const std::string& child) { return Fresh(context.before + child + context.behind); }
  static std::int32_t Definitions() {
    const DefinitionTables& tables = run.definitions;
    return tables.ClipDefs.count + tables.GradientDefs.count + tables.PatternDefs.count;
  }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(, Children, testing::ValuesIn(kContexts), [](const testing::TestParamInfo<Context>& context) {
  return std::string(context.param.name);
});

// A definition is registered and sends nothing; an unknown element is skipped with all that it holds.
TEST_P(Children, AreTranslatedOrRegisteredOrSkippedByTheirNames) {
  const Lines without = Around("");
  const std::int32_t definitions = Definitions();
  std::size_t known = 0;
  for (const auto& [name, sample] : Samples()) {
    SCOPED_TRACE(name);
    const bool translated = context.translated.contains(name), registered = context.registered.contains(name);
    known += translated || registered;
    std::string markup = sample.markup;
    // The characters of any element below a text are the text's, so that an element that is skipped must have none.
    if (const std::size_t b = markup.find(">b<"); b != std::string::npos && !translated) markup.erase(b + 1, 1);
    const Lines lines = Around(markup);
    if (translated) {
      EXPECT_EQ(CountOf(lines, sample.shows), CountOf(without, sample.shows) + 1);
    } else {
      EXPECT_EQ(lines, without);
    }
    EXPECT_EQ(Definitions(), definitions + registered);
  }
  EXPECT_EQ(known, context.translated.size() + context.registered.size());
}

// --- The group's own records

namespace {

class Group : public TranslatorTest {
 protected:
  // The lines of a fill, stroke or opacity run that gives no width.
  static Lines NoWidth() { return Records("THST 2", "WIDT 0.1"); }
  static Lines Enclosed(const Lines& lines) { return Records("SGRP 1") + lines + Records("EGRP 1"); }
};

}  // namespace

TEST_F(Group, AnEmptyGroupIsABracket) { EXPECT_EQ(Fresh("<g/>"), Records("SGRP 1", "EGRP 1")); }

TEST_F(Group, GroupsMayBeSwitchedOff) {
  SetHostSetting(u"KORBIN", u"DoGroups", 0);
  EXPECT_EQ(Fresh("<g/>"), Records());
  // The frame is handled all the same.
  EXPECT_EQ(Fresh("<g transform='translate(10)' fill='lime'><rect width='10' height='10'/></g>"),
            NoWidth() + Records("FILL 65280", "WIDT 0", "THST 2", "OUTL 0", "FILL 65280", "WRUL 1", "LNST 0", "CNST 1",
                                "PLYR 1 : 2,9 2,10 1,10 1,9", "FILL 0"));
  SetHostSetting(u"KORBIN", u"DoGroups", 2);
  EXPECT_EQ(Fresh("<g/>"), Records());
}

TEST_F(Group, StyleAndAttributesAreTakenOneByOneInTheirOrder) {
  EXPECT_EQ(
      Fresh("<defs><clipPath id='c'><rect width='10' height='10'/></clipPath></defs>"
            "<g opacity='0.5' clip-path='url(#c)' stroke-width='3' stroke='red' fill='blue' transform='translate(20)' "
            "font-size='10' style='fill:lime'/>"),
      Enclosed(NoWidth() + Records("FILL 65280") + NoWidth() + Records("FILL 16711680", "OUTL 255") + NoWidth() +
               Records("THST 3", "WIDT 0.3", "SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1") +
               // The clip's rect replays what the attributes have written into the frame so far.
               Records("WIDT 0", "THST 3", "OUTL 255", "FILL 16711680", "WRUL 1", "LNST 0", "CNST 1",
                       "PLYR 1 : 3,9 3,10 2,10 2,9", "CLIP 0", "DOCP 1", "TSPY 127") +
               NoWidth()) +
          Records("TSPY 255", "FILL 0"));
}

TEST_F(Group, TheBracketEndsBeforeTheFrame) {
  EXPECT_EQ(Fresh("<g fill='lime'/>"), Enclosed(NoWidth() + Records("FILL 65280")) + Records("FILL 0"));
}

TEST_F(Group, AnAttributeBeatsTheStyle) {
  const Lines lines = Fresh("<g style='fill:red' fill='blue'><rect/></g>");
  EXPECT_EQ(lines, Enclosed(NoWidth() + Records("FILL 255") + NoWidth() +
                            Records("FILL 16711680", "WIDT 0", "THST 2", "OUTL 0", "FILL 16711680", "WRUL 1", "LNST 0",
                                    "CNST 1", "PLYR 1 : 0,10 0,10 0,10 0,10")) +
                       Records("FILL 0"));
}

TEST_F(Group, EmptyAttributesAreNotApplied) {
  EXPECT_EQ(Fresh("<g style='' font-size='' transform='' fill='' stroke='' stroke-width='' clip-path='' opacity=''/>"),
            Records("SGRP 1", "EGRP 1"));
}

TEST_F(Group, AttributesThatAGroupDoesNotReadSendNothing) {
  EXPECT_EQ(
      Fresh("<g fill-opacity='0.5' fill-rule='evenodd' stroke-linecap='round' stroke-linejoin='round' "
            "stroke-miterlimit='4' font-family='Sym' text-anchor='end' x='1' display='none' visibility='hidden'/>"),
      Records("SGRP 1", "EGRP 1"));
  EXPECT_EQ(run.text.TextAnchor, 1);
}

TEST_F(Group, OfTheStyleOnlyFillOpacityCountsBesides) {
  EXPECT_EQ(Fresh("<g style='fill-opacity:0.5;fill-rule:evenodd;stroke-linecap:round;stroke-linejoin:round;"
                  "stroke-miterlimit:4;font-family:Sym'/>"),
            Enclosed(Records("TSPY 127") + NoWidth()) + Records("TSPY 255"));
}

TEST_F(Group, EachAttributeSendsAWidthOfItsOwn) {
  EXPECT_EQ(CountOf(Fresh("<g fill='red' stroke='red' stroke-width='5' opacity='0.5' style='fill:red'/>"), "WIDT"), 5u);
}

TEST_F(Group, AnAttributesValueMayHoldFurtherProperties) {
  EXPECT_EQ(
      Fresh("<g fill='lime;stroke:red;stroke-width:3;opacity:0.5'/>"),
      Enclosed(Records("TSPY 127", "OUTL 255", "THST 3", "WIDT 0.3", "FILL 65280")) + Records("TSPY 255", "FILL 0"));
}

TEST_F(Group, LongValuesAreTaken) {
  EXPECT_EQ(CountOf(Fresh("<g fill='red;" + std::string(5000, 'x') + "'/>"), "FILL 255"), 1u);
  EXPECT_EQ(CountOf(Fresh("<g opacity='" + std::string(5000, ' ') + "0.5'/>"), "TSPY 127"), 1u);
}

// --- What a group hands on

TEST_F(Group, FillReachesTheChildAndIsFollowedByTheChildsOwn) {
  const Lines lines = Fresh("<g fill='red'><rect style='fill:blue'/></g>");
  EXPECT_EQ(lines,
            Enclosed(NoWidth() + Records("FILL 255", "WIDT 0", "THST 2", "OUTL 0", "FILL 255", "WRUL 1", "LNST 0",
                                         "CNST 1", "FILL 16711680", "PLYR 1 : 0,10 0,10 0,10 0,10", "FILL 255")) +
                Records("FILL 0"));
}

TEST_F(Group, FillNoneReachesTheChild) {
  const Lines lines = Fresh("<g fill='none'><rect/></g>");
  EXPECT_EQ(CountOf(lines, "FILL -1"), 2u);
}

TEST_F(Group, StrokeAsHexOrNameReachesTheChild) {
  for (const char* value : {"#0000ff", "#00f;", "blue"}) {
    const Lines lines = Fresh("<g stroke='" + std::string(value) + "'><rect/></g>");
    EXPECT_EQ(lines, Enclosed(Records("OUTL 16711680", "THST 2", "WIDT 0.1", "WIDT 0", "THST 2", "OUTL 16711680",
                                      "FILL 0", "WRUL 1", "LNST 0", "CNST 1", "PLYR 1 : 0,10 0,10 0,10 0,10")));
  }
}

TEST_F(Group, StrokeAsRgbReachesTheChildAsItsFill) {
  // Which also counts as given: the child's path is closed.
  const Lines lines = Fresh("<g stroke='rgb(1,2,3)'><rect/><path d='M0 0 10 0 10 10'/></g>");
  EXPECT_EQ(lines, Enclosed(Records("OUTL 197121", "THST 2", "WIDT 0.1", "WIDT 0", "THST 2", "OUTL 0", "FILL 197121",
                                    "WRUL 1", "LNST 0", "CNST 1", "PLYR 1 : 0,10 0,10 0,10 0,10", "PATH",
                                    "LINE 0,10 1,10", "LINE 1,10 1,9", "LINE 1,9 0,10", "ENDP", "FDEF flat 1")) +
                       Records("FILL 0"));
}

TEST_F(Group, ThicknessReachesTheChild) {
  const std::pair<const char*, const char*> cases[] = {{"stroke='none'", "THST 1"},
                                                       {"stroke='red'", "THST 2"},
                                                       {"stroke-width='5'", "THST 3"},
                                                       {"stroke-width='0'", "THST 3"}};
  for (const auto& [attribute, record] : cases) {
    const Lines lines = Fresh("<g " + std::string(attribute) + "><rect/></g>");
    // The child's replay: five records of it, the polygon and the group's end behind the thickness.
    EXPECT_EQ(lines.at(lines.size() - 8), record) << attribute;
  }
}

TEST_F(Group, StrokeWidthDoesNotReachTheChild) {
  EXPECT_EQ(Fresh("<g stroke-width='5'><path stroke='black'/></g>"),
            Enclosed(Records("THST 3", "WIDT 0.5", "WIDT 0", "THST 3", "OUTL 0", "FILL 0", "WRUL 1", "LNST 0", "CNST 1",
                             "OUTL 0", "THST 3", "WIDT 0.1")));
}

TEST_F(Group, OpacityGoesOutOnceAtTheGroup) {
  const Lines lines = Fresh("<g opacity='0.5'><rect/><rect/></g>");
  EXPECT_EQ(CountOf(lines, "TSPY"), 2u);
  EXPECT_LT(FindLine(lines, "TSPY 127"), FindLine(lines, "PLYR"));
  EXPECT_EQ(lines.back(), "TSPY 255");
}

TEST_F(Group, AChildsOwnOpacityReturnsToTheGroupsTimes255) {
  // 127 * 255 = 32385, of which the low byte is 129.
  const Lines lines = Fresh("<g opacity='0.5'><rect style='opacity:0.25'/></g>");
  EXPECT_EQ(CountOf(lines, "TSPY"), 4u);
  EXPECT_EQ(lines.at(FindLine(lines, "PLYR") + 1), "TSPY 129");
}

TEST_F(Group, FontSizeIsNotRestoredBehindTheGroup) {
  Fresh("<g font-size='12'/>");
  EXPECT_DOUBLE_EQ(run.text.FontSize, 12.0 * 1000.0 / 2.54 * 0.1 * 0.7);
  Fresh("<g font-size='12pt'/><g/>");
  EXPECT_EQ(run.text.FontSize, 12.0);
}

TEST_F(Group, GroupsNestAndTheirTransformsCompose) {
  // The innermost rect of 10 by 10: doubled, moved by 10, doubled. (0, 0) is at 20 and (10, 10) at 60.
  EXPECT_EQ(Fresh("<g transform='scale(2)'><g transform='translate(10 10)'><g transform='scale(2)'>"
                  "<rect width='10' height='10'/></g></g></g><rect width='10' height='10'/>"),
            Records("SGRP 1", "SGRP 1", "SGRP 1") + Replay() +
                Records("PLYR 1 : 6,4 6,8 2,8 2,4", "EGRP 1", "EGRP 1", "EGRP 1") + Replay() +
                Records("PLYR 1 : 1,9 1,10 0,10 0,9"));
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(run.graphics.saveDepth, 0);
}

TEST_F(Group, MoreThanAHundredGroupsNest) {
  for (int depth : {98, 99, 100, 101, 250}) {
    SCOPED_TRACE(depth);
    std::string open, close;
    for (int i = 0; i < depth; ++i) open += "<g transform='translate(1)'>", close += "</g>";
    const Lines lines = Fresh(open + "<line x2='10'/>" + close + "<line x2='10'/>");
    EXPECT_EQ(CountOf(lines, "SGRP"), static_cast<std::size_t>(depth));
    EXPECT_EQ(CountOf(lines, "EGRP"), static_cast<std::size_t>(depth));
    const double x = depth / 10.0;
    EXPECT_EQ(lines.at(FindLine(lines, "LINE")), "LINE " + ShowNumber(x) + ",10 " + ShowNumber(x + 1) + ",10");
    EXPECT_EQ(From(lines, lines.size() - 4), Records("PATH", "LINE 0,10 1,10", "ENDP", "FDEF flat 1"));
  }
}

TEST_F(Group, ChildrenAreTakenInDocumentOrder) {
  EXPECT_EQ(Fresh("<g><line x2='1'/><g><line x2='2'/></g><line x2='3'/></g>"),
            Enclosed(Records("PATH", "LINE 0,10 0.1,10", "ENDP", "FDEF flat 1") +
                     Enclosed(Records("PATH", "LINE 0,10 0.2,10", "ENDP", "FDEF flat 1")) +
                     Records("PATH", "LINE 0,10 0.3,10", "ENDP", "FDEF flat 1")));
}

TEST_F(Group, PrefixedChildrenAreKnownByTheirLocalNames) {
  EXPECT_EQ(Fresh("<svg:g><svg:line x2='10'/><inkscape:line x2='20'/></svg:g>"),
            Enclosed(Records("PATH", "LINE 0,10 1,10", "ENDP", "FDEF flat 1", "PATH", "LINE 0,10 2,10", "ENDP",
                             "FDEF flat 1")));
}

TEST_F(Group, ASpanOutsideATextIsAText) {
  EXPECT_EQ(CountOf(Fresh("<g><tspan>b</tspan></g>"), "PARA \"b\""), 1u);
  EXPECT_EQ(CountOf(Fresh("<g><linearGradient><tspan>b</tspan></linearGradient></g>"), "PARA \"b\""), 1u);
}

TEST_F(Group, AnInstructionIsKnownByItsTarget) {
  // Its name is all that it has; attributes it has none.
  EXPECT_EQ(Fresh("<g><?rect width='10'?></g>"), Enclosed(Replay() + Records("PLYR 1 : 0,10 0,10 0,10 0,10")));
}

// --- Failures of the document

TEST_F(Group, AFailedChildListLeavesWithNothingHeldAndNothingUndone) {
  StartMachine(100.0, 0.1);
  FakeNode group(u"g");
  FakeNode& before = group.Add(u"line");
  FakeNode& inner = group.Add(u"g");
  FakeNode& behind = group.Add(u"line");
  inner.childNodesStatus = kFailed;
  EXPECT_THROW(TranslateGroup(&group), DocumentError);
  EXPECT_EQ(Drain(), Records("SGRP 1", "PATH", "ENDP", "FDEF flat 1", "SGRP 1"));
  EXPECT_EQ(run.graphics.frameIndex, 2);
  for (const FakeNode* node : {&group, &before, &inner, &behind}) {
    EXPECT_EQ(node->references, 0);
    EXPECT_EQ(node->listReferences, 0);
  }
}

TEST_F(Group, ANullChildEndsTheWalkBehindTheChildrenThatAreThere) {
  for (void (*translate)(IXMLDOMNode*) : {TranslateGroup, TranslateGradientContainer, TranslateTextSpan}) {
    ResetImportRun();
    StartMachine(100.0, 0.1);
    FakeNode parent(u"g");
    FakeNode& first = parent.Add(u"line");
    parent.AddNull();
    FakeNode& second = parent.Add(u"line");
    EXPECT_THROW(translate(&parent), std::out_of_range);
    EXPECT_EQ(CountOf(Drain(), "PATH"), 2u);
    EXPECT_EQ(first.references, 0);
    EXPECT_EQ(second.references, 0);
  }
}

TEST_F(Group, AFailedAttributeEndsTheWalk) {
  StartMachine(100.0, 0.1);
  FakeNode group(u"g");
  FakeNode& child = group.Add(u"line");
  child.namedItemStatus = kFailed;
  EXPECT_THROW(TranslateGroup(&group), DocumentError);
  EXPECT_EQ(child.references, 0);
  EXPECT_EQ(child.mapReferences, 0);
  Drain();
}

TEST_F(Group, WithoutAnAttributeMapThereAreNoAttributes) {
  StartMachine(100.0, 0.1);
  FakeNode group(u"g");
  group.Set(u"fill", u"red");
  group.hasAttributes = false;
  TranslateGroup(&group);
  EXPECT_EQ(Drain(), Records("SGRP 1", "EGRP 1"));
}

// --- Clips and definitions of a group

TEST_F(Group, AClipOfAGroupIsNotClosed) {
  EXPECT_EQ(Fresh("<defs><clipPath id='c'/></defs><g clip-path='url(#c)'/>"),
            Enclosed(Records("SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1", "CLIP 0", "DOCP 1")));
}

TEST_F(Group, AnUnknownClipOfAGroupSendsTheEndOfTheClipAlone) {
  EXPECT_EQ(Fresh("<g clip-path='url(#c)'/>"), Enclosed(Records("CLIP 0", "DOCP 1")));
  EXPECT_EQ(Fresh("<g clip-path='none'/>"), Enclosed(Records()));
}

TEST_F(Group, DefinitionsInAGroupAreKnownFromThereOn) {
  const char* const path = "<path clip-path='url(#c)'/>";
  const std::string defs = "<defs><clipPath id='c'/></defs>";
  const Lines unknown = Records("CLIP 0", "DOCP 1", "DOCP 0", "ECGR 1");
  const Lines known = Records("SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1") + unknown;
  EXPECT_EQ(Fresh("<g>" + (path + defs) + path + "</g>" + path), Enclosed(unknown + known) + known);
  // Top-level definitions are known everywhere.
  EXPECT_EQ(Fresh("<g>" + std::string(path) + "</g>" + defs), Enclosed(known));
}

TEST_F(Group, ADefinitionOutsideDefsIsUnknown) {
  EXPECT_EQ(Fresh("<g><clipPath id='c'><rect/></clipPath><path clip-path='url(#c)'/></g>"),
            Enclosed(Records("CLIP 0", "DOCP 1", "DOCP 0", "ECGR 1")));
}

// --- A gradient inside a group

TEST_F(Group, AGradientsX1IsTakenForAStyle) {
  EXPECT_EQ(Fresh("<g><linearGradient x1='5'/></g>"), Enclosed(NoWidth()));
  EXPECT_EQ(Fresh("<g><radialGradient/></g>"), Enclosed(NoWidth()));
  EXPECT_EQ(Fresh("<g><linearGradient x1='fill:lime'/></g>"),
            Enclosed(NoWidth() + Records("FILL 65280")) + Records("FILL 0"));
}

TEST_F(Group, AGradientsTransformStaysForItsSiblings) {
  // 10 by 10, doubled and then moved by 5.
  EXPECT_EQ(Fresh("<g transform='translate(5)'><linearGradient transform='scale(2)' gradientTransform='scale(9)'/>"
                  "<path d='M0 0 10 10'/></g><path d='M0 0 10 10'/>"),
            Enclosed(NoWidth() + Records("PATH", "LINE 0.5,10 2.5,8", "ENDP", "FDEF flat 1")) +
                Records("PATH", "LINE 0,10 1,9", "ENDP", "FDEF flat 1"));
}

TEST_F(Group, AGradientsX1IsTakenBeforeItsTransformAndItsChildren) {
  EXPECT_EQ(Fresh("<g><linearGradient x1='fill:lime' transform='translate(5)'><line x2='10'/></linearGradient></g>"),
            Enclosed(NoWidth() + Records("FILL 65280", "PATH", "LINE 0.5,10 1.5,10", "ENDP", "FDEF flat 1")) +
                Records("FILL 0"));
}

TEST_F(Group, GradientsInAGradientAreRegisteredWithTheirKind) {
  Fresh("<g><linearGradient><radialGradient id='r'/><linearGradient id='l'/><clipPath id='c'/></linearGradient></g>");
  ASSERT_NE(FindGradientDef(u"r"), nullptr);
  EXPECT_EQ(FindGradientDef(u"r")->kind, kRadialGradient);
  ASSERT_NE(FindGradientDef(u"l"), nullptr);
  EXPECT_EQ(FindGradientDef(u"l")->kind, kLinearGradient);
  EXPECT_NE(FindClipDef(u"c"), nullptr);
}

TEST_F(Group, AGradientInAGroupIsItselfNotRegistered) {
  Fresh("<g><linearGradient id='l'/></g>");
  EXPECT_EQ(FindGradientDef(u"l"), nullptr);
}

// --- A tspan inside a text

namespace {

class Span : public TranslatorTest {
 protected:
  // What the walker alone sends for the last child of a text; nothing of the text itself.
  Lines Translate(std::string_view text) {
    IXMLDOMNode* node = Load(text);
    ChildNodeList children;
    CollectChildNodes(node, children);
    TranslateTextSpan(children.At(children.length() - 1));
    return Drain();
  }
};

// What a text sends around its children when it has no attributes: in front its replay, behind the style of nothing and
// its paragraph.
Lines Texted(const Lines& children, const Lines& replay) {
  return replay + children + Records("THST 2", "WIDT 0.0001");
}

}  // namespace

TEST_F(Span, ItsChildrenComeBeforeItsStyleAndTransform) {
  const Lines lines = Fresh("<text><tspan style='fill:lime' transform='translate(10)'><line x2='10'/></tspan></text>");
  const Lines expected = Texted(
      Records("PATH", "LINE 0,10 1,10", "ENDP", "FDEF flat 1") + Replay() + Records("FILL 65280", "FILL 0"), Replay());
  ASSERT_GE(lines.size(), expected.size());
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
}

TEST_F(Span, ItsFrameEndsWithIt) {
  EXPECT_EQ(
      Translate("<text><tspan style='fill:lime;opacity:0.5' transform='scale(2)' x='1' y='2' dx='3' dy='4'/></text>"),
      Replay() + Records("FILL 65280", "TSPY 127", "TSPY 255", "FILL 0"));
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_TRUE(run.operands.empty());
}

TEST_F(Span, WithoutAStyleItReplays) {
  EXPECT_EQ(Translate("<text><tspan fill='red' opacity='0.5'/></text>"), Replay());
}

TEST_F(Span, WithoutAStyleItTakesAGivenFillBackAsAnyTextDoes) {
  const std::string open = "<path style='fill:red'/><text>", close = "</text><path d='M0 0 10 0 10 10'/>";
  EXPECT_EQ(CountOf(Fresh(open + close), "LINE"), 3u);
  EXPECT_EQ(CountOf(Fresh(open + "<tspan/>" + close), "LINE"), 2u);
}

TEST_F(Span, ItsCharactersReachTheDrawingOnlyAsItsTexts) {
  EXPECT_EQ(CountOf(Translate("<text>a<tspan>b<tspan>c</tspan></tspan></text>"), "PARA"), 0u);
  EXPECT_EQ(CountOf(Fresh("<text>a<tspan>b<tspan>c</tspan></tspan></text>"), "PARA"), 1u);
}

TEST_F(Span, InnerSpansComeFirst) {
  const Lines lines = Fresh("<text><tspan style='fill:red'><tspan style='fill:lime'/></tspan></text>");
  EXPECT_LT(FindLine(lines, "FILL 65280"), FindLine(lines, "FILL 255"));
  EXPECT_LT(FindLine(lines, "FILL 255"), lines.size());
}
