#include "translators/clip_reference.h"

#include "document/definitions.h"
#include "operators/graphics_state.h"
#include "tests/support/fake_document.h"
#include "tests/translators/translator_fixture.h"

namespace {

const Lines kOpened = {"SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1"};
const Lines kClipped = {"CLIP 0", "DOCP 1"};
const Lines kClosed = {"DOCP 0", "ECGR 1"};
// A rect of 10 by 10 at the origin.
const Lines kSquare = {"PLYR 1 : 1,9 1,10 0,10 0,9"};
const char* const kSquareMarkup = "<rect width='10' height='10'/>";

class ClipReference : public TranslatorTest {
 protected:
  static std::string Clip(std::string_view id, std::string_view content) {
    return "<clipPath id='" + std::string(id) + "'>" + std::string(content) + "</clipPath>";
  }
  static std::string Defs(std::string_view definitions) { return "<defs>" + std::string(definitions) + "</defs>"; }

  // What a reference sends under these definitions.
  Lines Reference(std::string_view definitions, std::u16string_view text) {
    Load(Defs(definitions));
    ApplyClipReference(text);
    return Drain();
  }
  // The same with a clip "c" of this content.
  Lines Content(std::string_view content) { return Reference(Clip("c", content), u"url(#c)"); }
};

}  // namespace

// --- Finding the clip

TEST_F(ClipReference, ATextWithoutUrlAndHashDoesNothing) {
  for (const char16_t* text : {u"none", u"", u"url('#c')", u"url(\"#c\")", u"url( #c)", u"URL(#c)", u"url(c)", u"#c"}) {
    EXPECT_EQ(Reference(Clip("c", ""), text), Records());
    EXPECT_EQ(run.clip.clipPending, 0u);
    EXPECT_EQ(run.clip.clipOpen, 0u);
  }
}

TEST_F(ClipReference, AFoundClipIsOpenedFilledAndLeftOpen) {
  EXPECT_EQ(Content(kSquareMarkup), kOpened + Replay() + kSquare + kClipped);
  EXPECT_EQ(run.clip.clipPending, 1u);
  EXPECT_EQ(run.clip.clipOpen, 1u);
}

TEST_F(ClipReference, AnUnknownIdSendsTheEndOfTheClipAlone) {
  EXPECT_EQ(Reference(Clip("c", kSquareMarkup), u"url(#d)"), kClipped);
  EXPECT_EQ(run.clip.clipPending, 0u);
  EXPECT_EQ(run.clip.clipOpen, 1u);
}

TEST_F(ClipReference, TheLabelOfAGroupsAttributeIsNoMatter) {
  EXPECT_EQ(Reference(Clip("c", ""), u"clip-path:url(#c)"), kOpened + kClipped);
}

TEST_F(ClipReference, TheReferenceMayStandAnywhereAndEndsAtTheFirstParenthesisOrTheText) {
  EXPECT_EQ(Reference(Clip("c", ""), u"  url(#c) url(#d)"), kOpened + kClipped);
  EXPECT_EQ(Reference(Clip("c", ""), u"url(#c"), kOpened + kClipped);
  EXPECT_EQ(Reference(Clip("c", ""), u"url(#c )"), kClipped);
}

TEST_F(ClipReference, IdsAreComparedWholeAndWithoutRegardToCase) {
  EXPECT_EQ(Reference(Clip("clip1", ""), u"url(#Clip1)"), kOpened + kClipped);
  EXPECT_EQ(Reference(Clip("CLIP1", ""), u"url(#clip1)"), kOpened + kClipped);
  EXPECT_EQ(Reference(Clip("c10", ""), u"url(#c1)"), kClipped);
  EXPECT_EQ(Reference(Clip("c1", ""), u"url(#c10)"), kClipped);
}

TEST_F(ClipReference, TheFirstOfTwoClipsWithOneIdCounts) {
  EXPECT_EQ(Reference(Clip("c", "") + Clip("c", kSquareMarkup), u"url(#c)"), kOpened + kClipped);
}

TEST_F(ClipReference, AnEmptyReferenceFindsAClipWithoutAnIdButNotTheBlankRecord) {
  EXPECT_EQ(Reference("<clipPath/>", u"url(#)"), kOpened + kClipped);
  EXPECT_EQ(Reference("", u"url(#)"), kClipped);
  EXPECT_EQ(Reference(Clip("c", ""), u"url(#)"), kClipped);
}

TEST_F(ClipReference, GradientsAndPatternsAreNoClips) {
  EXPECT_EQ(Reference("<pattern id='c'/><linearGradient id='c'/>", u"url(#c)"), kClipped);
}

TEST_F(ClipReference, AClipOutsideDefsIsUnknown) {
  EXPECT_EQ(Fresh(Clip("c", kSquareMarkup) + "<path clip-path='url(#c)'/>"), kClipped + kClosed);
}

// --- Content

TEST_F(ClipReference, AnEmptyClipIsOpenedAndEnded) { EXPECT_EQ(Content(""), kOpened + kClipped); }

TEST_F(ClipReference, RectPathTextAndEllipseAreTranslatedInDocumentOrder) {
  const Lines lines =
      Content("<ellipse rx='1' ry='1'/><path d='M0 0 10 0'/><rect width='10' height='10'/><text>a</text>");
  const std::size_t ellipse = FindLine(lines, "PLYR 3"), path = FindLine(lines, "PATH"),
                    rect = FindLine(lines, kSquare[0]), text = FindLine(lines, "PARA");
  EXPECT_LT(ellipse, path);
  EXPECT_LT(path, rect);
  EXPECT_LT(rect, text);
  EXPECT_LT(text, FindLine(lines, "CLIP 0"));
}

TEST_F(ClipReference, ChildrenAreDrawnUnderTheElementsMatrixAndTheirOwn) {
  EXPECT_EQ(Fresh(Defs(Clip("c", "<rect width='10' height='10' transform='scale(2)'/>")) +
                  "<path clip-path='url(#c)' transform='translate(30 40)'/>"),
            kOpened + Replay() + Records("PLYR 1 : 5,4 5,6 3,6 3,4") + kClipped + kClosed);
}

TEST_F(ClipReference, ChildrenKeepTheirStyle) {
  EXPECT_EQ(Content("<path d='M0 0 10 0' fill='lime' stroke='red'/>"),
            kOpened + Replay() +
                Records("OUTL 255", "THST 3", "WIDT 0.1", "FILL 65280", "PATH", "LINE 0,10 1,10", "LINE 1,10 0,10",
                        "ENDP", "FILL 0") +
                kClipped);
}

TEST_F(ClipReference, AttributesOfTheClipItselfAreNotRead) {
  EXPECT_EQ(Reference("<clipPath id='c' transform='scale(2)' clipPathUnits='objectBoundingBox' clip-rule='evenodd' "
                      "clip-path='url(#c)' style='fill:red'>" +
                          std::string(kSquareMarkup) + "</clipPath>",
                      u"url(#c)"),
            kOpened + Replay() + kSquare + kClipped);
}

TEST_F(ClipReference, AChildWithAClipOfItsOwnNestsAGroup) {
  EXPECT_EQ(
      Reference(Clip("outer", "<rect width='10' height='10' clip-path='url(#inner)'/>") + Clip("inner", kSquareMarkup),
                u"url(#outer)"),
      kOpened + kOpened + Replay() + kSquare + kClipped + Replay() + kSquare + kClosed + kClipped);
}

TEST_F(ClipReference, NothingIsKeptForTheSecondElement) {
  const Lines once = kOpened + Replay() + kSquare + kClipped + kClosed;
  EXPECT_EQ(Fresh(Defs(Clip("c", kSquareMarkup)) + "<path clip-path='url(#c)'/><path clip-path='url(#c)'/>"),
            once + once);
}

// --- Behind the clip

TEST_F(ClipReference, AfterAFoundClipNoPathHasItsFlatFill) {
  const Lines lines = Fresh("<path d='M0 0 1 1'/>" + Defs(Clip("c", "<path d='M0 0 2 2'/>")) +
                            "<path d='M0 0 3 3' clip-path='url(#c)'/><path d='M0 0 4 4'/><line x2='5'/>");
  EXPECT_EQ(CountOf(lines, "ENDP"), 5u);
  EXPECT_EQ(CountOf(lines, "FDEF"), 1u);
  EXPECT_LT(FindLine(lines, "FDEF"), FindLine(lines, "SCGR"));
}

TEST_F(ClipReference, AnUnknownClipLeavesTheFlatFill) {
  EXPECT_EQ(CountOf(Fresh("<path d='M0 0 1 1' clip-path='url(#c)'/><path d='M0 0 1 1'/>"), "FDEF"), 2u);
}

TEST_F(ClipReference, TheOperatorsClipLevelsAreNotTouched) {
  Content(kSquareMarkup);
  EXPECT_EQ(run.clip.clipDepth, 0);
  EXPECT_EQ(run.clip.groupDepth, 0);
}

TEST_F(ClipReference, ClosingSendsTheEndOfContentAndGroup) {
  Load("<g/>");
  CloseClippedElement();
  EXPECT_EQ(Drain(), kClosed);
}

TEST_F(ClipReference, AFailedChildListLeavesTheClipOpen) {
  FakeNode clip(u"clipPath");
  clip.Set(u"id", u"c").Add(u"rect");
  clip.childNodesStatus = kFailed;
  Load("<g/>");
  clip.AddRef();
  RecordClipDef(&clip);
  EXPECT_THROW(ApplyClipReference(u"url(#c)"), DocumentError);
  EXPECT_EQ(Drain(), kOpened);
  EXPECT_TRUE(run.definitionGuard.entered.empty());
  ResetImportRun();
  EXPECT_EQ(clip.references, 0);
}

// --- Definitions that lead back to themselves

TEST_F(ClipReference, AClipThatNamesItselfCountsAsNotFoundInside) {
  EXPECT_EQ(Content("<rect width='10' height='10' clip-path='url(#c)'/>"),
            kOpened + kClipped + Replay() + kSquare + kClosed + kClipped);
}

TEST_F(ClipReference, TwoClipsThatNameEachOtherEnd) {
  EXPECT_EQ(
      Reference(Clip("a", "<rect width='10' height='10' clip-path='url(#b)'/>") +
                    Clip("b", "<rect width='10' height='10' clip-path='url(#a)'/>"),
                u"url(#a)"),
      kOpened + kOpened + kClipped + Replay() + kSquare + kClosed + kClipped + Replay() + kSquare + kClosed + kClipped);
}

TEST_F(ClipReference, AClipMayBeEnteredAgainOnceItHasBeenLeft) {
  EXPECT_EQ(CountOf(Reference(Clip("a", "<path clip-path='url(#b)'/><path clip-path='url(#b)'/>") + Clip("b", ""),
                              u"url(#a)"),
                    "SCGR"),
            3u);
}

TEST_F(ClipReference, AWayBackThroughAGradientEnds) {
  // The clip's path is filled by a gradient whose group is clipped by the clip.
  const Lines lines = Reference(Clip("c", "<path d='M0 0 1 1' style='fill:url(#g)'/>") +
                                    "<linearGradient id='g'><g clip-path='url(#c)'/></linearGradient>",
                                u"url(#c)");
  EXPECT_EQ(CountOf(lines, "SCGR"), 1u);
  EXPECT_EQ(CountOf(lines, "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(lines, "CLIP 0"), 2u);
}

TEST_F(ClipReference, AWayBackThroughAPatternEnds) {
  const Lines lines = Reference(
      Clip("c", "<path d='M0 0 1 1' style='fill:url(#p)'/>") + "<pattern id='p'><g clip-path='url(#c)'/></pattern>",
      u"url(#c)");
  EXPECT_EQ(CountOf(lines, "SCGR"), 1u);
  EXPECT_EQ(CountOf(lines, "CLIP 0"), 2u);
}

TEST_F(ClipReference, AGradientThatFillsItselfIsTranslatedOnceAndNoPatternInItsPlace) {
  const Lines lines = Fresh(Defs("<linearGradient id='g'><ellipse rx='1' ry='1' style='fill:url(#g)'/></linearGradient>"
                                 "<pattern id='g'><line/></pattern>") +
                            "<path style='fill:url(#g)'/>");
  EXPECT_EQ(CountOf(lines, "FDEF linear"), 1u);
  EXPECT_EQ(CountOf(lines, "PLYR"), 1u);
  EXPECT_EQ(CountOf(lines, "PATH"), 0u);
}

TEST_F(ClipReference, APatternThatFillsItselfIsTranslatedOnce) {
  const Lines lines = Fresh(Defs("<pattern id='p'><ellipse rx='1' ry='1' style='fill:url(#p)'/></pattern>") +
                            "<path style='fill:url(#p)'/>");
  EXPECT_EQ(CountOf(lines, "PLYR"), 1u);
}

// --- Bounds

namespace {

// Clips "c1" to "c<n>", each with one path that is clipped by the next.
std::string Chain(int n) {
  std::string definitions;
  for (int i = 1; i <= n; ++i) {
    definitions += "<clipPath id='c" + std::to_string(i) + "'>";
    if (i < n) definitions += "<path clip-path='url(#c" + std::to_string(i + 1) + ")'/>";
    definitions += "</clipPath>";
  }
  return definitions;
}

// Clips "c0" to "c<depth>", each but the last with `width` paths that are clipped by the next.
std::string Tree(int width, int depth) {
  std::string definitions;
  for (int i = 0; i <= depth; ++i) {
    definitions += "<clipPath id='c" + std::to_string(i) + "'>";
    for (int k = 0; i < depth && k < width; ++k)
      definitions += "<path clip-path='url(#c" + std::to_string(i + 1) + ")'/>";
    definitions += "</clipPath>";
  }
  return definitions;
}

}  // namespace

TEST_F(ClipReference, DefinitionsNestThirtyTwoDeep) {
  static_assert(kMaxDefinitionDepth == 32);
  const struct {
    int nested;
    std::size_t entered;
  } cases[] = {{31, 31}, {32, 32}, {33, 32}, {40, 32}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.nested);
    const Lines lines = Reference(Chain(c.nested), u"url(#c1)");
    EXPECT_EQ(CountOf(lines, "SCGR"), c.entered);
    // The first that is too deep still sends the end of its clip.
    EXPECT_EQ(CountOf(lines, "CLIP 0"), c.entered + (c.nested > 32 ? 1 : 0));
  }
}

TEST_F(ClipReference, GradientsAndPatternsCountInTheDepth) {
  // Gradients one in the other's group, each a fill of the next; the 33rd is not found.
  for (const std::string kind : {"linearGradient", "pattern"}) {
    for (int nested : {31, 32, 33}) {
      SCOPED_TRACE(kind + " " + std::to_string(nested));
      std::string definitions;
      // Ids of one length, since a reference is also matched by a longer id.
      const auto id = [](int i) { return "g" + std::to_string(100 + i); };
      for (int i = 1; i <= nested; ++i) {
        definitions +=
            "<" + kind + " id='" + id(i) + "'><ellipse style='fill:url(#" + id(i + 1) + ")'/></" + kind + ">";
      }
      const Lines lines = Fresh(Defs(definitions) + "<path style='fill:url(#" + id(1) + ")'/>");
      EXPECT_EQ(CountOf(lines, "PLYR"), static_cast<std::size_t>(std::min(nested, 32)));
    }
  }
}

TEST_F(ClipReference, AMillionEntriesAreAllAnImportGets) {
  static_assert(kMaxDefinitionEntries == 1'000'000);
  const struct {
    std::uint32_t before;
    std::size_t entered;
  } cases[] = {{kMaxDefinitionEntries - 2, 2}, {kMaxDefinitionEntries - 1, 1}, {kMaxDefinitionEntries, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.before);
    Load(Defs(Clip("c", "")));
    run.definitionGuard.entries = c.before;
    for (int i = 0; i < 3; ++i) ApplyClipReference(u"url(#c)");
    const Lines lines = Drain();
    EXPECT_EQ(CountOf(lines, "SCGR"), c.entered);
    EXPECT_EQ(CountOf(lines, "CLIP 0"), 3u);
  }
}

TEST_F(ClipReference, EntriesOfAllKindsAreCountedTogether) {
  Load(Defs(Clip("c", "<path style='fill:url(#g)'/><path style='fill:url(#p)'/>") +
            "<linearGradient id='g'/><pattern id='p'/>"));
  ApplyClipReference(u"url(#c)");
  Drain();
  EXPECT_EQ(run.definitionGuard.entries, 3u);
  EXPECT_TRUE(run.definitionGuard.entered.empty());
}

TEST_F(ClipReference, TenOfEachOtherTenDeepComeToAnEnd) {
  // Ten thousand million clips by the letter. Ten records to a clip that is entered, four to one that isn't, of which
  // at most nine are left on each of the ten levels when the entries run out; each path sends its two closing records.
  Load(Defs(Tree(10, 10)));
  run.definitionGuard.entries = kMaxDefinitionEntries - 10'000;
  ApplyClipReference(u"url(#c0)");
  EXPECT_EQ(run.definitionGuard.entries, kMaxDefinitionEntries);
  std::size_t opened = 0;
  const std::size_t records = run.commands.count;
  for (const std::string& line : Drain()) opened += line == "SCGR 1";
  EXPECT_EQ(opened, 10'000u);
  EXPECT_LE(records, 10'000u * 10 + 10 * 9 * 4);
}

TEST_F(ClipReference, AWholeImportOfAMillionEntriesComesToAnEnd) {
  Load(Defs(Tree(10, 10)));
  ApplyClipReference(u"url(#c0)");
  EXPECT_EQ(run.definitionGuard.entries, kMaxDefinitionEntries);
  EXPECT_LE(run.commands.count, kMaxDefinitionEntries * std::size_t{10} + 10 * 9 * 4);
  while (run.commands.count > 0) ReleaseCommand(PopCommand(run.commands));
}
