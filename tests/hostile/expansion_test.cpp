// Small documents that ask for much: definitions within definitions, and curves of many samples.

#include <pthread.h>

#include <functional>

#include "document/definitions.h"
#include "filter_limits.h"
#include "run/command_queue.h"
#include "tests/hostile/hostile_fixture.h"

namespace {

using Expansion = HostileTest;

std::string Id(std::size_t i) { return "d" + std::to_string(1'000'000 + i); }

std::string Fill(const std::string& id) { return " style='fill:url(#" + id + ")'"; }

// Gradients and patterns hold groups and ellipses, clips hold ellipses.
std::string Definition(const std::string& kind, const std::string& id, const std::string& children) {
  return "<" + kind + " id='" + id + "'>" + children + "</" + kind + ">";
}

// What a thread is to do.
struct Imported {
  std::function<void()> work;
  static void* Run(void* imported) {
    static_cast<Imported*>(imported)->work();
    return nullptr;
  }
};

}  // namespace

TEST_F(Expansion, ADefinitionThatContainsItselfIsEnteredOnce) {
  for (const std::string kind : {"linearGradient", "radialGradient", "pattern"}) {
    SCOPED_TRACE(kind);
    Anew();
    keys.clear();
    CountBodyRecords("<defs>" + Definition(kind, "a", "<ellipse" + Fill("a") + "/><g><ellipse" + Fill("a") + "/></g>") +
                     "</defs><ellipse" + Fill("a") + "/>");
    // The shape and the two within the definition.
    EXPECT_EQ(keys[KEY_PLYR], 3u);
    EXPECT_EQ(run.definitionGuard.entries, 1u);
  }
}

TEST_F(Expansion, DefinitionsOfThreeKindsInACircleAreEnteredOnceEach) {
  CountBodyRecords("<defs>" + Definition("linearGradient", "a", "<ellipse" + Fill("b") + "/>") +
                   Definition("pattern", "b", "<g clip-path='url(#c)'><ellipse" + Fill("a") + "/></g>") +
                   Definition("clipPath", "c", "<ellipse" + Fill("a") + "/>") + "</defs><ellipse" + Fill("a") + "/>");
  // The circle is cut at the second "a".
  EXPECT_LE(run.definitionGuard.entries, 3u);
  EXPECT_LE(keys[KEY_PLYR], 4u);
}

TEST_F(Expansion, TenOfEachOtherTenDeepAreEnteredUpToTheLimit) {
  for (const std::string kind : {"linearGradient", "pattern"}) {
    SCOPED_TRACE(kind);
    Anew();
    std::string definitions;
    for (std::size_t i = 0; i < 10; ++i)
      definitions += Definition(kind, Id(i), Repeated("<ellipse" + Fill(Id(i + 1)) + "/>", 10));
    ASSERT_EQ(Check(Document("<defs>" + definitions + "</defs><ellipse" + Fill(Id(0)) + "/>")), 1);
    run.definitionGuard.entries = kMaxDefinitionEntries - 1000;
    std::size_t records = 0;
    while (true) {
      const ImportCommand command = GetImportCommand();
      ReleaseCommand(command);
      ++records;
      if (command.key == KEY_ENDF) break;
    }
    EXPECT_EQ(run.definitionGuard.entries, kMaxDefinitionEntries);
    // A shape has at most twelve records of its own, a gradient three; each entered definition has ten shapes.
    EXPECT_LE(records, kFrameRecords + 15 * (10 * 1000 + 1));
  }
}

TEST_F(Expansion, WorkWithinDefinitionsEndsAtTheLimit) {
  // A clip of 100 shapes for each of 100. Once the limit is reached no clip is found any more.
  const std::string clip = Definition("clipPath", "c", Repeated("<ellipse/>", 100));
  ASSERT_EQ(Check(Document("<defs>" + clip + "</defs>" + Repeated("<g clip-path='url(#c)'/>", 100))), 1);
  static_assert(kMaxDefinitionWork == 10'000'000);
  run.definitionGuard.work = kMaxDefinitionWork - 1;
  std::size_t groups = 0;
  while (true) {
    const ImportCommand command = GetImportCommand();
    ReleaseCommand(command);
    groups += command.key == KEY_SCGR;
    if (command.key == KEY_ENDF) break;
  }
  EXPECT_EQ(groups, 1u);
}

TEST_F(Expansion, RecordsOfEnteredDefinitionsAndStopsThatAreReadAreCountedOnce) {
  CountBodyRecords("<defs>" + Definition("clipPath", "c", "<path clip-path='url(#e)' d='M0 0L1 1'/>") +
                   Definition("clipPath", "e", "") + "</defs><g clip-path='url(#c)'/>");
  // Six that open a clip, of which there are two; KEY_CLIP and KEY_DOCP behind the inner; the path's three, without a
  // fill since a clip has been opened; KEY_DOCP and KEY_ECGR that close it.
  EXPECT_EQ(run.definitionGuard.work, 6u + 6u + 2u + 3u + 2u);
  Anew();
  CountBodyRecords(
      "<defs><linearGradient id='a' xlink:href='#b'/><linearGradient id='b'><stop/><stop/><stop/>"
      "</linearGradient></defs><ellipse" +
      Fill("a") + "/>");
  // KEY_FILL, KEY_FDEF, KEY_TSPY and three stops.
  EXPECT_EQ(run.definitionGuard.work, 3u + 3u);
}

TEST_F(Expansion, DefinitionsWithinAGradientAreRecordedOnce) {
  CountBodyRecords("<defs>" + Definition("linearGradient", "a", Repeated("<radialGradient/><clipPath/>", 50)) +
                   "</defs>" + Repeated("<ellipse" + Fill("a") + "/>", 100));
  // With the blank record that each table ends in.
  EXPECT_EQ(run.definitions.GradientDefs.count, 1 + 50 + 1);
  EXPECT_EQ(run.definitions.ClipDefs.count, 50 + 1);
}

TEST_F(Expansion, DefsWithinAGradientsGroupAreRecordedOnce) {
  CountBodyRecords("<defs>" + Definition("linearGradient", "a", "<g><defs><pattern id='p'/></defs></g>") + "</defs>" +
                   Repeated("<ellipse" + Fill("a") + "/>", 3));
  EXPECT_EQ(run.definitions.PatternDefs.count, 2);
}

TEST_F(Expansion, ATableOfManyRowsIsSearchedToItsLast) {
  // Under watch every block that grows is moved, with a row at a time.
  const std::size_t rows = Many(100'000, 3'000);
  std::string definitions;
  for (std::size_t i = 0; i < rows; ++i) definitions += Definition("linearGradient", Id(i), "");
  CountBodyRecords("<defs>" + definitions + "</defs>" + Repeated("<ellipse" + Fill(Id(rows - 1)) + "/>", 100));
  EXPECT_EQ(run.definitions.GradientDefs.count, static_cast<std::int32_t>(rows) + 1);
  EXPECT_EQ(keys[KEY_TSPY], 100u);
}

TEST_F(Expansion, ATableOfManyRowsComesFromTheFallbackAllocatorToo) {
  RegisterHostWindow(kAllocatorWindowClass, AllocatorWindowTitle(), nullptr);
  ResetImportRun();
  const std::size_t rows = Many(100'000, 3'000);
  std::string definitions;
  for (std::size_t i = 0; i < rows; ++i) definitions += Definition("clipPath", Id(i), "");
  EXPECT_EQ(Check(Document("<defs>" + definitions + "</defs>")), 1);
  EXPECT_EQ(run.definitions.ClipDefs.count, static_cast<std::int32_t>(rows) + 1);
}

TEST_F(Expansion, GroupsWithinDefinitionsBoundTheStack) {
  // 32 gradients, each in the innermost of 250 groups of the one before: 8000 levels by the letter. The fifth is
  // reached at 1250 groups, beyond the limit of 1024.
  static_assert(kMaxNestedElements == 1024);
  constexpr std::size_t kGroups = 250;
  std::string definitions;
  for (std::size_t i = 0; i < 32; ++i) {
    definitions +=
        Definition("linearGradient", Id(i),
                   Repeated("<g>", kGroups) + "<ellipse" + Fill(Id(i + 1)) + "/>" + Repeated("</g>", kGroups));
  }
  const std::string document = Document("<defs>" + definitions + "</defs><ellipse" + Fill(Id(0)) + "/>");
  // A stack as small as that of a host's helper thread; a watched build's frames are many times as large.
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kWatchedBuild ? std::size_t{8} << 20 : std::size_t{512} << 10);
  pthread_t thread;
  Imported imported = {[&] { CountRecords(document); }};
  ASSERT_EQ(pthread_create(&thread, &attributes, Imported::Run, &imported), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(run.definitionGuard.entries, 5u);
  EXPECT_EQ(keys[KEY_SGRP], 5 * kGroups);
}

TEST_F(Expansion, SamplesOfAllQuadraticsEndAtTheLimit) {
  // Two of a hundred samples each: the second gets what is left, and the third is one line.
  StartMachine();
  Feed("0 0 M");
  Drain();
  static_assert(kMaxImportSamples == 10'000'000);
  EXPECT_EQ(run.path.samplesLeft, kMaxImportSamples);
  run.path.samplesLeft = 150;
  // 1000 units long, in steps of 10.
  Feed("0 500 0 1000 Q");
  EXPECT_LE(Drain().size(), 101u);
  EXPECT_LE(run.path.samplesLeft, 51);
  EXPECT_GE(run.path.samplesLeft, 49);
  Feed("5 500 5 0 Q");
  EXPECT_LE(Drain().size(), 53u);
  EXPECT_EQ(run.path.samplesLeft, 0);
  Feed("7 500 7 1000 Q");
  EXPECT_EQ(Drain(), (Lines{"LINE 5,100 7,-900"}));
  // Each import has its own.
  StartMachine();
  EXPECT_EQ(run.path.samplesLeft, kMaxImportSamples);
}
