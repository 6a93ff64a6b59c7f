#include "document/definitions.h"

#include <deque>
#include <random>
#include <string>
#include <vector>

#include "document/node_access.h"
#include "platform/narrow_text.h"
#include "tests/support/fake_document.h"
#include "tests/support/host_journal.h"

namespace {

class Definitions : public FilterTest {
 protected:
  // Loads a document with these elements in its root.
  void Load(std::string_view elements) { ASSERT_EQ(Check(Document(elements)), 1); }
  void LoadDefs(std::string_view elements) { Load("<defs>" + std::string(elements) + "</defs>"); }

  // The attribute "x" of the definition found, "none" when there is none.
  static std::u16string Marked(const DefinitionRecord* record) {
    return record ? std::u16string(GetNodeAttribute(record->node, u"x")) : u"none";
  }
  static std::u16string Clip(std::u16string_view id) { return Marked(FindClipDef(id)); }
  static std::u16string Gradient(std::u16string_view id) { return Marked(FindGradientDef(id)); }
  static std::u16string Pattern(std::u16string_view id) { return Marked(FindPatternDef(id)); }
};

}  // namespace

// --- What is recorded

TEST_F(Definitions, AnEmptyTableHasOneBlankRecord) {
  Load("<g/>");
  for (const DefinitionTable& table :
       {run.definitions.ClipDefs, run.definitions.PatternDefs, run.definitions.GradientDefs}) {
    EXPECT_EQ(table.count, 1);
    EXPECT_EQ(table.records[0].node, nullptr);
  }
}

TEST_F(Definitions, EachKindGoesIntoItsTableWithABlankRecordBehind) {
  LoadDefs(
      "<radialGradient id='r'/><clipPath id='c'/><linearGradient id='l'/><pattern id='p'/><symbol id='s'/>"
      "<LinearGradient id='x'/><svg:clipPath id='d'/>");
  const DefinitionTables& tables = run.definitions;
  ASSERT_EQ(tables.GradientDefs.count, 3);
  EXPECT_EQ(tables.GradientDefs.records[0].id, std::u16string(u"r"));
  EXPECT_EQ(tables.GradientDefs.records[0].kind, 1);
  EXPECT_EQ(tables.GradientDefs.records[1].id, std::u16string(u"l"));
  EXPECT_EQ(tables.GradientDefs.records[1].kind, 0);
  EXPECT_EQ(tables.GradientDefs.records[2].node, nullptr);
  ASSERT_EQ(tables.ClipDefs.count, 3);
  EXPECT_EQ(tables.ClipDefs.records[0].id, std::u16string(u"c"));
  EXPECT_EQ(tables.ClipDefs.records[1].id, std::u16string(u"d"));
  EXPECT_EQ(tables.ClipDefs.records[2].node, nullptr);
  ASSERT_EQ(tables.PatternDefs.count, 2);
  EXPECT_EQ(tables.PatternDefs.records[0].id, std::u16string(u"p"));
  EXPECT_EQ(tables.PatternDefs.records[1].node, nullptr);
}

TEST_F(Definitions, TheTableGrowsByOneRecordForEachDefinition) {
  HostJournal journal;
  LoadDefs("<pattern/><clipPath/><pattern/>");
  const auto sizeOf = [](std::size_t records) {
    return "MemInitBaseT::Reallocate(" + std::to_string(records * sizeof(DefinitionRecord)) + ")";
  };
  EXPECT_EQ(Only(journal.Take(), "MemInitBaseT::Reallocate"), (Lines{sizeOf(2), sizeOf(2), sizeOf(3)}));
}

TEST_F(Definitions, FiveDefsFillTheSameTablesInDocumentOrder) {
  Load(
      "<defs><pattern id='a'/></defs><defs><pattern id='b'/><pattern id='c'/></defs><g/><defs/>"
      "<defs><pattern id='d'/></defs><defs><pattern id='e'/></defs>");
  ASSERT_EQ(run.definitions.PatternDefs.count, 6);
  std::u16string ids;
  for (int i = 0; i < 5; ++i) ids += run.definitions.PatternDefs.records[i].id;
  EXPECT_EQ(ids, u"abcde");
}

TEST_F(Definitions, DefsWithinDefsAndDefinitionsOutsideAreNotRecorded) {
  Load(
      "<linearGradient id='a'/><clipPath id='a'/><pattern id='a'/>"
      "<defs><defs><linearGradient id='b'/></defs><g><linearGradient id='c'/></g></defs>");
  EXPECT_EQ(run.definitions.GradientDefs.count, 1);
  EXPECT_EQ(run.definitions.ClipDefs.count, 1);
  EXPECT_EQ(run.definitions.PatternDefs.count, 1);
  EXPECT_EQ(FindGradientDef(u"a"), nullptr);
}

TEST_F(Definitions, DefsInAGroupAreRecordedWhenTheGroupIsTranslated) {
  Load("<g><defs><linearGradient id='a'/></defs></g>");
  EXPECT_EQ(run.definitions.GradientDefs.count, 1);
  Drain();
  EXPECT_EQ(GetImportCommand().key, KEY_SGRP);
  EXPECT_EQ(run.definitions.GradientDefs.count, 2);
}

TEST_F(Definitions, AShapeInFrontOfTheGroupCannotReachItsDefs) {
  const std::string shape = "<path style='fill:url(#a)' d='M0,0 L9,0 L9,9'/>";
  const std::string group =
      "<g><defs><linearGradient id='a'><stop offset='0' style='stop-color:#ff0000'/>"
      "<stop offset='1' style='stop-color:#0000ff'/></linearGradient></defs></g>";
  const Lines lines = ImportBody(shape + group + shape);
  EXPECT_EQ(CountOf(lines, "FDEF linear"), 1u);
  EXPECT_GT(FindLine(lines, "FDEF linear"), FindLine(lines, "EGRP"));
}

// --- Ids

TEST_F(Definitions, AnIdKeepsFortyNineUnits) {
  for (std::size_t size : {48u, 49u, 50u, 200u}) {
    SCOPED_TRACE(size);
    ResetImportRun();
    LoadDefs("<clipPath id='" + std::string(size, 'a') + "' x='1'/><pattern/>");
    const std::size_t kept = size < 49 ? size : 49;
    EXPECT_EQ(Clip(std::u16string(kept, u'a')), u"1");
    EXPECT_EQ(Clip(std::u16string(kept + 1, u'a')), u"none");
    EXPECT_EQ(Clip(std::u16string(kept - 1, u'a')), u"none");
  }
}

TEST_F(Definitions, WithoutAnIdTheyTakeUpAPlaceAndAreFoundByNoReference) {
  LoadDefs("<linearGradient x='1'/><linearGradient id='a' x='2'/>");
  EXPECT_EQ(run.definitions.GradientDefs.count, 3);
  EXPECT_EQ(Gradient(u"a"), u"2");
  EXPECT_EQ(Gradient(u"b"), u"none");
}

// --- Looking up

TEST_F(Definitions, AGradientIsFoundByTheStartOfItsId) {
  LoadDefs("<linearGradient id='a1' x='1'/><linearGradient id='a10' x='2'/>");
  EXPECT_EQ(Gradient(u"a1"), u"1");
  EXPECT_EQ(Gradient(u"a"), u"1");
  EXPECT_EQ(Gradient(u"a10"), u"2");
  EXPECT_EQ(Gradient(u"a100"), u"none");
  ResetImportRun();
  LoadDefs("<linearGradient id='a10' x='2'/><linearGradient id='a1' x='1'/>");
  EXPECT_EQ(Gradient(u"a1"), u"2");
}

TEST_F(Definitions, APatternIsFoundByTheStartOfItsIdAndAClipByTheWhole) {
  LoadDefs("<pattern id='a1' x='p'/><clipPath id='a1' x='c'/>");
  EXPECT_EQ(Pattern(u"a"), u"p");
  EXPECT_EQ(Pattern(u"a1"), u"p");
  EXPECT_EQ(Clip(u"a"), u"none");
  EXPECT_EQ(Clip(u"a1"), u"c");
  EXPECT_EQ(Clip(u"a10"), u"none");
}

TEST_F(Definitions, CaseDoesNotCountInAnyTable) {
  LoadDefs("<linearGradient id='aB' x='g'/><pattern id='Ab' x='p'/><clipPath id='AB' x='c'/>");
  for (std::u16string_view id : {u"ab", u"AB", u"aB"}) {
    EXPECT_EQ(Gradient(id), u"g");
    EXPECT_EQ(Pattern(id), u"p");
    EXPECT_EQ(Clip(id), u"c");
  }
}

TEST_F(Definitions, TheFirstOfTwoWithOneIdIsFound) {
  LoadDefs(
      "<linearGradient id='a' x='1'/><radialGradient id='a' x='2'/><clipPath id='b' x='1'/><clipPath id='b' x='2'/>");
  EXPECT_EQ(Gradient(u"a"), u"1");
  EXPECT_EQ(Clip(u"b"), u"1");
}

TEST_F(Definitions, AnEmptyReferenceFindsNoGradientAndNoPattern) {
  LoadDefs("<linearGradient id='a' x='1'/><pattern x='1'/>");
  EXPECT_EQ(Gradient(u""), u"none");
  EXPECT_EQ(Pattern(u""), u"none");
}

// The tree has to agree with a walk through the records at any time.
TEST_F(Definitions, LargeTablesAreSearchedAsIfRecordByRecord) {
  std::mt19937 random(1);
  const auto id = [&random](std::size_t longest) {
    std::u16string text(random() % (longest + 1), u' ');
    for (char16_t& unit : text) unit = u"abAB1"[random() % 5];
    return text;
  };
  const auto folded = [](std::u16string text) {
    for (char16_t& unit : text) unit = unit == u'A' ? u'a' : unit == u'B' ? u'b' : unit;
    return text;
  };
  std::vector<std::u16string> gradients, clips;
  std::string elements;
  for (int i = 0; i < 700; ++i) {
    gradients.push_back(id(5));
    clips.push_back(id(5));
    elements += "<linearGradient id='" + NarrowFromWide(gradients.back()) + "'/><clipPath id='" +
                NarrowFromWide(clips.back()) + "'/>";
  }
  Load("<g>" + elements + "</g>");
  ChildNodeList groups, nodes;
  CollectChildNodes(run.RootNode, groups);
  CollectChildNodes(groups.At(0), nodes);
  for (std::int32_t i = 0; i < 700; ++i) {
    RecordGradientDef(nodes.At(2 * i), kLinearGradient);
    RecordClipDef(nodes.At(2 * i + 1));
    nodes.Keep(2 * i);
    nodes.Keep(2 * i + 1);
    for (int lookup = 0; lookup < 4; ++lookup) {
      const std::u16string reference = id(6);
      std::int32_t gradient = 0, clip = 0;
      while (gradient <= i && (reference.empty() ||
                               !folded(gradients[static_cast<std::size_t>(gradient)]).starts_with(folded(reference))))
        ++gradient;
      while (clip <= i && folded(clips[static_cast<std::size_t>(clip)]) != folded(reference)) ++clip;
      const DefinitionTables& tables = run.definitions;
      ASSERT_EQ(FindGradientDef(reference), gradient > i ? nullptr : tables.GradientDefs.records + gradient);
      ASSERT_EQ(FindClipDef(reference), clip > i ? nullptr : tables.ClipDefs.records + clip);
    }
  }
}

TEST_F(Definitions, AnEmptyTableAndNoTableFindNothing) {
  const auto expectNothing = [] {
    EXPECT_EQ(FindClipDef(u"a"), nullptr);
    EXPECT_EQ(FindClipDef(u""), nullptr);  // what the blank record reads as
    EXPECT_EQ(FindGradientDef(u"a"), nullptr);
    EXPECT_EQ(FindPatternDef(u"a"), nullptr);
  };
  expectNothing();
  Load("<g/>");
  expectNothing();
  CloseFile();
  expectNothing();
}

// --- References to the nodes

TEST_F(Definitions, NodesAreHeldUntilCloseFileAndPassedOverOnesForEver) {
  FakeDocument document;
  FakeNode& defs = document.root.Add(u"defs");
  FakeNode& clip = defs.Add(u"clipPath").Set(u"id", u"c");
  FakeNode& pattern = defs.Add(u"pattern");
  FakeNode& gradient = defs.Add(u"linearGradient");
  FakeNode& other = defs.Add(u"symbol");
  ASSERT_EQ(Check("x"), 1);
  for (const FakeNode* node : {&clip, &pattern, &gradient, &other}) EXPECT_EQ(node->references, 1);
  EXPECT_EQ(run.definitions.ClipDefs.records[0].node, &clip);
  EXPECT_EQ(defs.listReferences, 0);
  EXPECT_EQ(clip.mapReferences, 0);
  CloseFile();
  for (const FakeNode* node : {&clip, &pattern, &gradient}) EXPECT_EQ(node->references, 0);
  EXPECT_EQ(other.references, 1);
}

TEST_F(Definitions, RecordingTakesTheReferenceOver) {
  FakeDocument document;
  document.root.Add(u"g");
  ASSERT_EQ(Check("x"), 1);
  FakeNode clip(u"clipPath"), gradient(u"radialGradient");
  clip.Set(u"id", u"c");
  clip.AddRef();
  gradient.AddRef();
  EXPECT_TRUE(RecordClipDef(&clip));
  EXPECT_TRUE(RecordGradientDef(&gradient, kRadialGradient));
  EXPECT_EQ(FindClipDef(u"C")->node, &clip);
  EXPECT_EQ(run.definitions.GradientDefs.records[0].kind, kRadialGradient);
  CloseFile();
  EXPECT_EQ(clip.references, 0);
  EXPECT_EQ(gradient.references, 0);
}

TEST_F(Definitions, ANodeIsRecordedOnceEvenIfItSharesItsIdWithAnother) {
  FakeDocument document;
  document.root.Add(u"g");
  ASSERT_EQ(Check("x"), 1);
  FakeNode first(u"clipPath"), second(u"clipPath");
  first.Set(u"id", u"c");
  second.Set(u"id", u"C");
  for (int round = 0; round < 3; ++round) {
    for (FakeNode* node : {&first, &second}) {
      node->AddRef();
      EXPECT_TRUE(RecordClipDef(node));
    }
  }
  EXPECT_EQ(run.definitions.ClipDefs.count, 3);
  EXPECT_EQ(FindClipDef(u"c")->node, &first);
  EXPECT_EQ(first.references, 1);
  EXPECT_EQ(second.references, 1);
  CloseFile();
}

TEST_F(Definitions, OfASecondImportFollowTheBlankRecordsOfTheFirst) {
  LoadDefs("<pattern id='a'/><pattern id='b'/><clipPath id='a'/>");
  CloseFile();
  LoadDefs("<pattern id='ab' x='1'/><clipPath id='b' x='2'/><clipPath x='3'/>");
  EXPECT_EQ(run.definitions.PatternDefs.count, 4);
  EXPECT_EQ(Pattern(u"a"), u"1");
  EXPECT_EQ(Pattern(u"b"), u"none");
  EXPECT_EQ(Clip(u"b"), u"2");
  EXPECT_EQ(Clip(u"a"), u"none");
  EXPECT_EQ(Clip(u""), u"none");  // a blank record comes first
}

TEST_F(Definitions, CountsOutliveCloseFile) {
  LoadDefs("<pattern id='a'/><pattern id='b'/><clipPath id='a'/>");
  CloseFile();
  EXPECT_EQ(run.definitions.PatternDefs.count, 3);
  EXPECT_EQ(run.definitions.ClipDefs.count, 2);
  EXPECT_EQ(run.definitions.GradientDefs.count, 1);
}

// --- Entering a definition for the time of its translation

namespace {

using DefinitionEntry = Definitions;

// `n` records without a document behind them; only the places of their nodes count.
std::vector<DefinitionRecord> Records(std::size_t n, std::vector<char>& places) {
  places.resize(n);
  std::vector<DefinitionRecord> records(n);
  for (std::size_t i = 0; i < n; ++i) records[i].node = reinterpret_cast<IXMLDOMNode*>(&places[i]);
  return records;
}

}  // namespace

TEST_F(DefinitionEntry, IsRefusedWhileTheSameNodeIsBeingTranslated) {
  std::vector<char> places;
  const std::vector<DefinitionRecord> records = Records(2, places);
  {
    const EnteredDefinition outer(records[0]);
    EXPECT_TRUE(outer);
    const EnteredDefinition inner(records[1]);
    EXPECT_TRUE(inner);
    EXPECT_FALSE(EnteredDefinition(records[0]));
    EXPECT_FALSE(EnteredDefinition(records[1]));
  }
  EXPECT_TRUE(EnteredDefinition(records[0]));
}

TEST_F(DefinitionEntry, IsRefusedBeyondThirtyTwoWithinOneAnother) {
  std::vector<char> places;
  const std::vector<DefinitionRecord> records = Records(34, places);
  std::deque<EnteredDefinition> entered;
  for (int i = 0; i < 34; ++i) {
    entered.emplace_back(records[static_cast<std::size_t>(i)]);
    EXPECT_EQ(static_cast<bool>(entered.back()), i < 32) << i;
  }
  while (entered.size() > 31) entered.pop_back();
  EXPECT_TRUE(EnteredDefinition(records[33]));
  while (!entered.empty()) entered.pop_back();
}

TEST_F(DefinitionEntry, IsRefusedBeyondAMillionInOneImport) {
  std::vector<char> places;
  const std::vector<DefinitionRecord> records = Records(1, places);
  run.definitionGuard.entries = 999'999;
  EXPECT_TRUE(EnteredDefinition(records[0]));
  EXPECT_EQ(run.definitionGuard.entries, 1'000'000u);
  EXPECT_FALSE(EnteredDefinition(records[0]));
}
