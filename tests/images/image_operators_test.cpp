// The operators that turn an image file into records, and the search for a file that is not where it should be.
#include "images/image_operators.h"

#include <cmath>
#include <cstring>
#include <new>

#include "operators/graphics_state.h"
#include "tests/images/image_bench.h"
#include "tests/support/host_journal.h"
#include "tests/support/raw_record.h"

namespace {

class ImageOperator : public ImageTest {
 protected:
  ImageOperator() {
    StartMachine();
    run.BaseDirectory = WideFromUtf8(folder);
    WriteFile(folder + "a.png", Png());
  }

  // Where the operator looks for a path, seen in the question for the file that is not there.
  std::u16string Resolved(std::u16string_view base, const std::string& path) {
    run.BaseDirectory = base;
    const std::size_t asked = AskedFiles().size();
    EXPECT_EQ(Run("(" + path + ") 4 3 2 1 image"), Lines{}) << path;
    EXPECT_EQ(AskedFiles().size(), asked + 1) << path;
    return AskedFiles().size() > asked ? AskedFiles().back().file : u"";
  }

  BitmapView PlacedBitmap(const std::string& program) {
    EXPECT_EQ(Run(program), Lines{"GNRC"});
    return BitmapOf(0);
  }
};

class PatternOperator : public ImageTest {
 protected:
  PatternOperator() {
    StartMachine();
    run.BaseDirectory = WideFromUtf8(folder);
    WriteFile(folder + "a.png", Png());
  }

  const FillDefinition& Fill(const std::string& program) {
    EXPECT_EQ(Run(program), (Lines{"PFDF pattern", "PFOL pattern"})) << program;
    return PayloadOf<FillDefinition>(0);
  }
};

}  // namespace

// --- image: the path

TEST_F(ImageOperator, WhereAPathLeads) {
  const std::u16string_view base = u"c:\\d\\e\\";
  EXPECT_EQ(Resolved(base, "a.png"), u"c:\\d\\e\\a.png");
  EXPECT_EQ(Resolved(base, "a/b.png"), u"c:\\d\\e\\a\\b.png");
  EXPECT_EQ(Resolved(base, "a\\b.png"), u"c:\\d\\e\\a\\b.png");
  EXPECT_EQ(Resolved(base, "../x.png"), u"c:\\d\\x.png");
  EXPECT_EQ(Resolved(base, "..\\x.png"), u"c:\\d\\x.png");
  // One level is taken off, and no more.
  EXPECT_EQ(Resolved(base, "../../x.png"), u"c:\\d\\..\\x.png");
  EXPECT_EQ(Resolved(base, "a/../x.png"), u"c:\\d\\e\\a\\..\\x.png");
  // The two dots alone count, not what stands behind them.
  EXPECT_EQ(Resolved(base, "..x.png"), u"c:\\dx.png");
  EXPECT_EQ(Resolved(base, "./x.png"), u"c:\\d\\e\\.\\x.png");
  EXPECT_EQ(Resolved(base, "c:/x.png"), u"c:\\x.png");
  EXPECT_EQ(Resolved(base, "x:y/z.png"), u"x:y\\z.png");
  EXPECT_EQ(Resolved(base, "/x/y.png"), u"\\x\\y.png");
  EXPECT_EQ(Resolved(base, "\\x.png"), u"\\x.png");
}

TEST_F(ImageOperator, ABaseFolderIsLeftByEitherSeparator) {
  EXPECT_EQ(Resolved(u"/d/e/", "x.png"), u"\\d\\e\\x.png");
  EXPECT_EQ(Resolved(u"/d/e/", "../x.png"), u"\\d\\x.png");
  EXPECT_EQ(Resolved(u"", "x.png"), u"x.png");
}

TEST_F(ImageOperator, ALinkedFileIsReadFromTheDisk) {
  std::filesystem::create_directory(folder + "deep");
  run.BaseDirectory = WideFromUtf8(folder + "deep/");
  const BitmapView bitmap = PlacedBitmap("(../a.png) 4 3 2 1 image");
  EXPECT_EQ(bitmap.height, 3u);
  run.BaseDirectory = u"";
  EXPECT_EQ(PlacedBitmap("(" + folder + "a.png) 4 3 2 1 image").height, 3u);
  EXPECT_TRUE(AskedFiles().empty());
}

TEST_F(ImageOperator, WithoutAPathTheBaseFolderItselfIsTried) {
  EXPECT_EQ(Run("4 3 2 1 image"), Lines{});
  EXPECT_TRUE(AskedFiles().empty());
  run.BaseDirectory = u"c:\\nowhere\\";
  EXPECT_EQ(Run("4 3 2 1 image"), Lines{});
  ASSERT_EQ(AskedFiles().size(), 1u);
  EXPECT_EQ(AskedFiles()[0].file, u"c:\\nowhere\\");
}

TEST_F(ImageOperator, NothingIsAskedForAnEmptyPath) {
  run.BaseDirectory = u"";
  EXPECT_EQ(Run("() 4 3 2 1 image"), Lines{});
  EXPECT_EQ(Run("image"), Lines{});
  EXPECT_TRUE(AskedFiles().empty());
}

TEST_F(ImageOperator, AnOperandThatIsNoTextIsAnEmptyPath) {
  run.BaseDirectory = u"c:\\nowhere\\";
  EXPECT_EQ(Run("77 4 3 2 1 image"), Lines{});
  ASSERT_EQ(AskedFiles().size(), 1u);
  EXPECT_EQ(AskedFiles()[0].file, u"c:\\nowhere\\");
}

TEST_F(ImageOperator, APathBeyondTheHostsRoomIsNoHarm) {
  for (const std::size_t length : {258u, 259u, 260u, 300u, 5000u}) {
    const std::string path = "c:" + std::string(length - 6, 'n') + ".png";
    EXPECT_EQ(Run("(" + path + ") 4 3 2 1 image"), Lines{}) << length;
    EXPECT_EQ(Run("(../" + path.substr(2) + ") 4 3 2 1 image"), Lines{}) << length;
  }
}

// --- image: the placement

// Half a centimetre to the unit, the document 100 high, x = 4, y = 8, width = 6, height = 5.
//   hv = 5 * 3 + 6 * 0.25 = 16.5, Y = 8 * 0.5 = 4
//   f' = 100 * 0.5 - 0.5 * 20 - 0.5 * 16.5 - 0.5 * 4 = 29.75
TEST_F(ImageOperator, ThePlacementOfTheBitmap) {
  run.UnitScale = 0.5;
  CurrentFrame().currentMatrix = {2.0, 0.25, -0.5, 3.0, 10.0, 20.0};
  const BitmapView bitmap = PlacedBitmap("(a.png) 5 6 8 4 image");
  EXPECT_EQ(bitmap.placedWidth, 3.0);
  EXPECT_EQ(bitmap.placedHeight, 2.5);
  EXPECT_EQ(bitmap.placedX, 2.0);
  EXPECT_EQ(bitmap.placement.a, 2.0);
  EXPECT_EQ(bitmap.placement.b, -0.25);
  EXPECT_EQ(bitmap.placement.c, 0.5);
  EXPECT_EQ(bitmap.placement.d, 3.0);
  EXPECT_EQ(bitmap.placement.e, 5.0);
  EXPECT_EQ(bitmap.placement.f, 29.75);
}

TEST_F(ImageOperator, InAScaledGroupTheMeasuresIgnoreTheScale) {
  CurrentFrame().currentMatrix = {7.0, 0.0, 0.0, 7.0, 0.0, 0.0};
  const BitmapView bitmap = PlacedBitmap("(a.png) 5 6 0 4 image");
  EXPECT_EQ(bitmap.placedWidth, 6.0);
  EXPECT_EQ(bitmap.placedHeight, 5.0);
  EXPECT_EQ(bitmap.placedX, 4.0);
  EXPECT_EQ(bitmap.placement.a, 7.0);
  EXPECT_EQ(bitmap.placement.e, 0.0) << "x does not enter the matrix";
  EXPECT_EQ(bitmap.placement.f, 100.0 - 35.0);
}

TEST_F(ImageOperator, MissingOperandsAreZero) {
  // x = 1, y = 2 and width = 3 are there, the path is not: the base folder is no image.
  run.BaseDirectory = WideFromUtf8(folder + "a.png");
  BitmapView bitmap = PlacedBitmap("3 2 1 image");
  EXPECT_EQ(bitmap.placedX, 1.0);
  EXPECT_EQ(bitmap.placedWidth, 3.0);
  EXPECT_EQ(bitmap.placedHeight, 0.0);
  EXPECT_EQ(bitmap.placement.f, 98.0);
  bitmap = PlacedBitmap("image");
  EXPECT_EQ(bitmap.placedX, 0.0);
  EXPECT_EQ(bitmap.placement.f, 100.0);
}

TEST_F(ImageOperator, TheBytesOfTheRecord) {
  Run("(a.png) 4 3 2 1 image");
  ASSERT_EQ(commands.at(0).size, 24u);
  RawRecord record(commands[0].data, 24);
  const auto* bitmap = record.At<const CQXBitmap*>(16);
  EXPECT_EQ(ViewBitmap(*bitmap).height, 3u);
}

TEST_F(ImageOperator, CallsTheHostInThisOrder) {
  HostJournal journal;
  Run("(a.png) 4 3 2 1 image");
  const Lines calls = Without(journal.Take(), "MemInitBaseT");
  ASSERT_EQ(calls.size(), 5u);
  EXPECT_EQ(calls[0], "NewQXBitmap()");
  EXPECT_TRUE(calls[1].starts_with("CQXBitmap::Create(")) << calls[1];
  EXPECT_TRUE(calls[1].ends_with("a.png,0,0,0,false)=true")) << calls[1];
  EXPECT_EQ(calls[2], "CQXBitmap::SetPlacedWidth()");
  EXPECT_EQ(calls[3], "CQXBitmap::SetPlacedHeight()");
  EXPECT_EQ(calls[4], "CQXBitmap::SetPlacedX()");
}

// --- image: failures

TEST_F(ImageOperator, AnImageThatCannotBeMadeIsDroppedWithoutAWord) {
  const HostLiveCounts before = LiveCounts();
  WriteFile(folder + "text.png", "no picture");
  EXPECT_EQ(Run("(text.png) 4 3 2 1 image"), Lines{});
  HostFailureSwitches().newBitmap = true;
  EXPECT_EQ(Run("(a.png) 4 3 2 1 image"), Lines{});
  HostFailureSwitches() = {};
  HostFailureSwitches().createBitmap = true;
  EXPECT_EQ(Run("(a.png) 4 3 2 1 image"), Lines{});
  EXPECT_TRUE(ShownMessages().empty());
  EXPECT_EQ(LiveCounts(), before);
}

TEST_F(ImageOperator, TheOperandsAreClearedAlsoBehindAnImageThatFailed) {
  Run("7 8 9 (nowhere.png) 4 3 2 1 image");
  EXPECT_EQ(Operands(), Lines{});
  Run("7 8 9 (a.png) 4 3 2 1 image");
  EXPECT_EQ(Operands(), Lines{});
}

TEST_F(ImageOperator, NothingIsLostWhereverMemoryRunsOut) {
  std::size_t failed = 0;
  for (bool threw = true; threw; ++failed) {
    FailAllocation(failed + 1);
    try {
      threw = false;
      Feed("(a.png) 4 3 2 1 image");
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    FailAllocation(0);
    EXPECT_EQ(Drain(), threw ? Lines{} : Lines{"GNRC"}) << failed;
    Feed("D");
  }
  EXPECT_GT(failed, 1u);
}

// --- The search for a file

TEST_F(ImageOperator, AMissingFileIsAskedForInTheHostsDialog) {
  EXPECT_EQ(Run("(v1.2/tile.old.jpg) 4 3 2 1 image"), Lines{});
  ASSERT_EQ(AskedFiles().size(), 1u);
  const AskedFile& asked = AskedFiles()[0];
  EXPECT_EQ(asked.filter, u"jpg");
  EXPECT_EQ(asked.defaultExtension, u"jpg");
  EXPECT_EQ(asked.fileSize, 260);
  EXPECT_EQ(asked.flags, 0u);
  EXPECT_EQ(asked.title, u"Search for file, or press cancel to use embedded bitmap");
  EXPECT_FALSE(asked.picked);
  EXPECT_TRUE(ShownMessages().empty());
}

TEST_F(ImageOperator, TheExtensionIsThatOfTheNameAlone) {
  EXPECT_EQ(Run("(c:/v1.2/tile) 4 3 2 1 image"), Lines{});
  EXPECT_EQ(Run("(c:/tile.) 4 3 2 1 image"), Lines{});
  EXPECT_EQ(Run("(c:/.png) 4 3 2 1 image"), Lines{});
  ASSERT_EQ(AskedFiles().size(), 3u);
  EXPECT_EQ(AskedFiles()[0].filter, u"");
  EXPECT_EQ(AskedFiles()[0].defaultExtension, u"");
  EXPECT_EQ(AskedFiles()[1].filter, u"");
  EXPECT_EQ(AskedFiles()[2].filter, u"png");
}

TEST_F(ImageOperator, TheTitleIsTranslatedByTheHost) {
  HostJournal journal;
  Run("(nowhere.png) 4 3 2 1 image");
  EXPECT_EQ(Only(journal.Take(), "TString").at(0),
            "TString((*v*)Search for file, or press cancel to use embedded bitmap,254)");
}

TEST_F(ImageOperator, APickedFileTakesThePlaceOfTheMissingOne) {
  WriteFile(baseFolder + "moved.png", Png());
  SetHostImageFolder(baseFolder.substr(0, baseFolder.size() - 1));
  const BitmapView bitmap = PlacedBitmap("(lost/moved.png) 4 3 2 1 image");
  EXPECT_EQ(Utf8FromWide(bitmap.path), baseFolder + "moved.png");
  ASSERT_EQ(AskedFiles().size(), 1u);
  EXPECT_TRUE(AskedFiles()[0].picked);
}

TEST_F(ImageOperator, TheSearchTellsWhetherThereIsAFileNow) {
  std::u16string path = WideFromUtf8(folder + "a.png");
  EXPECT_EQ(FindImageFile(path), 1);
  EXPECT_EQ(path, WideFromUtf8(folder + "a.png"));
  EXPECT_TRUE(AskedFiles().empty());
  path = u"c:\\nowhere\\a.png";
  EXPECT_EQ(FindImageFile(path), -1);
  EXPECT_EQ(path, u"c:\\nowhere\\a.png");
  SetHostImageFolder(folder.substr(0, folder.size() - 1));
  EXPECT_EQ(FindImageFile(path), 1);
  EXPECT_EQ(Utf8FromWide(path), folder + "a.png");
}

// --- pfimg

// The document is 100 high. The pattern: x = 50.8, y = 23.8, width and height dropped; the image: width 20, height 40.
//   w = 20 / 10 = 2, h = 40 / 10 = 4, px = 50.8 / 25.4 = 2, py = (100 - 23.8) / 25.4 = 3
//   inverse = (1/2, 0, 0, 1/4, -2, -3), and its inverse (2, 0, 0, 4, 2 * 2, 4 * 3)
TEST_F(PatternOperator, TheBytesOfThePatternFill) {
  run.BaseDirectory = u"/p/";
  run.UnitScale = 0.5;
  Run("50.8 23.8 77 88 (t/a.png) 40 20 6 5 pfimg");
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].key, KEY_PFDF);
  EXPECT_EQ(commands[1].key, KEY_PFOL);
  EXPECT_EQ(commands[0].size, 1216u);
  EXPECT_EQ(commands[1].size, 1216u);
  EXPECT_EQ(commands[0].data, commands[1].data);
  RawRecord fill(commands[0].data, 1216);

  EXPECT_EQ(fill.At<std::uint32_t>(0), 4u) << "fillClass";
  const double inverse[] = {0.5, 0.0, 0.0, 0.25, -2.0, -3.0};
  const double forward[] = {2.0, 0.0, 0.0, 4.0, 4.0, 12.0};
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_NEAR(fill.At<double>(4 + 8 * i), inverse[i], 1e-14) << "inverseMatrix " << i;
    EXPECT_NEAR(fill.At<double>(52 + 8 * i), forward[i], 1e-14) << "forwardMatrix " << i;
  }
  EXPECT_EQ(fill.At<std::uint32_t>(100), 10u) << "fillType";
  const std::u16string path = u"/p/t/a.png";
  for (std::size_t i = 0; i <= path.size(); ++i) {
    EXPECT_EQ(fill.At<char16_t>(112 + 2 * i), path.c_str()[i]) << "tilePath " << i;
  }
  EXPECT_EQ(fill.At<std::uint32_t>(368), 0xFFFFFFu) << "tileColour";
  EXPECT_EQ(fill.At<std::uint32_t>(372), 1u) << "tileColourOn";
  EXPECT_EQ(fill.At<double>(376), 1.0) << "tileScaleX";
  EXPECT_EQ(fill.At<double>(384), 1.0) << "tileScaleY";
  EXPECT_EQ(fill.At<double>(1152), -1.0) << "fillScale";
  EXPECT_EQ(fill.At<double>(1200), 4.0) << "tileHeight";
  EXPECT_EQ(fill.FirstOther(), 1216u);
}

TEST_F(PatternOperator, NeitherTheMatrixNorTheUnitsTakePart) {
  const FillDefinition plain = Fill("50.8 23.8 7 8 (a.png) 40 20 6 5 pfimg");
  run.UnitScale = 0.25;
  CurrentFrame().currentMatrix = {2.0, 3.0, 4.0, 5.0, 6.0, 7.0};
  CurrentFrame().gradientMatrix = {2.0, 3.0, 4.0, 5.0, 6.0, 7.0};
  const FillDefinition& other = Fill("50.8 23.8 9 1 (a.png) 40 20 3 4 pfimg");
  EXPECT_EQ(std::memcmp(&plain, &other, sizeof plain), 0);
}

TEST_F(PatternOperator, WithoutThePatternsOperandsTheirValuesStayZero) {
  const FillDefinition none = Fill("(a.png) 40 20 6 5 pfimg");
  EXPECT_EQ(TilePathOf(none), folder + "a.png");
  EXPECT_EQ(none.pattern.tileScaleX, 0.0);
  EXPECT_EQ(none.pattern.tileScaleY, 0.0);
  EXPECT_DOUBLE_EQ(none.inverseMatrix.a, 0.5);
  EXPECT_DOUBLE_EQ(none.inverseMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(none.inverseMatrix.f, 0.0);
  EXPECT_EQ(none.fillScale, -1.0);
  // The height alone.
  const FillDefinition height = Fill("8 (a.png) 40 20 6 5 pfimg");
  EXPECT_EQ(height.pattern.tileScaleX, 1.0);
  EXPECT_EQ(height.pattern.tileScaleY, 0.0);
  // y, width and height.
  const FillDefinition y = Fill("23.8 7 8 (a.png) 40 20 6 5 pfimg");
  EXPECT_EQ(y.pattern.tileScaleX, 1.0);
  EXPECT_EQ(y.pattern.tileScaleY, 1.0);
  EXPECT_NEAR(y.inverseMatrix.f, -3.0, 1e-14);
  EXPECT_DOUBLE_EQ(y.inverseMatrix.e, 0.0);
}

TEST_F(PatternOperator, WithoutAnyOperandTheFillIsMadeAllTheSame) {
  const FillDefinition& fill = Fill("pfimg");
  EXPECT_TRUE(std::isinf(fill.inverseMatrix.a));
  EXPECT_EQ(fill.pattern.tilePath[0], u'\0');
  EXPECT_EQ(fill.fillClass, 4u);
  EXPECT_EQ(fill.pattern.tileColour, 0xFFFFFFu);
  EXPECT_TRUE(AskedFiles().empty());
}

TEST_F(PatternOperator, AWidthOfZeroPassesItsQuotientOn) {
  const FillDefinition& fill = Fill("1 2 3 4 (a.png) 40 0 6 5 pfimg");
  EXPECT_TRUE(std::isinf(fill.inverseMatrix.a));
  EXPECT_DOUBLE_EQ(fill.inverseMatrix.d, 0.25);
}

TEST_F(PatternOperator, APathStandsBehindTheBaseFolderUnlessItIsMarkedAsAbsolute) {
  // No path is looked at: neither its ":" nor its dots nor its "/".
  for (const char* path : {"c:/x.png", "../x.png", "/x/y.png", "a/b.png"}) {
    EXPECT_EQ(TilePathOf(Fill("1 2 3 4 (" + std::string(path) + ") 40 20 6 5 pfimg")), folder + path);
  }
  run.images.ImagePathIsAbsolute = 1;
  EXPECT_EQ(TilePathOf(Fill("1 2 3 4 (x.png) 40 20 6 5 pfimg")), "x.png");
  EXPECT_EQ(run.images.ImagePathIsAbsolute, 0u);
  EXPECT_EQ(TilePathOf(Fill("1 2 3 4 (x.png) 40 20 6 5 pfimg")), folder + "x.png");
}

TEST_F(PatternOperator, APickedFileLandsInTheFill) {
  WriteFile(baseFolder + "moved.png", Png());
  SetHostImageFolder(baseFolder.substr(0, baseFolder.size() - 1));
  EXPECT_EQ(TilePathOf(Fill("1 2 3 4 (lost/moved.png) 40 20 6 5 pfimg")), baseFolder + "moved.png");
}

TEST_F(PatternOperator, AnEmptyPathIsNotAskedFor) {
  run.images.ImagePathIsAbsolute = 1;
  EXPECT_EQ(TilePathOf(Fill("1 2 3 4 () 40 20 6 5 pfimg")), "");
  EXPECT_TRUE(AskedFiles().empty());
}

TEST_F(PatternOperator, ATilePathHas127UnitsAndIsCutBeyond) {
  for (const std::size_t length : {126u, 127u, 128u, 300u}) {
    run.images.ImagePathIsAbsolute = 1;
    const std::string path(length, 'n');
    const FillDefinition& fill = Fill("1 2 3 4 (" + path + ") 40 20 6 5 pfimg");
    EXPECT_EQ(TilePathOf(fill), path.substr(0, 127)) << length;
    RawRecord record(&fill, 1216);
    EXPECT_EQ(record.At<char16_t>(112 + 2 * 127), u'\0') << length;
    EXPECT_EQ(record.At<std::uint32_t>(368), 0xFFFFFFu) << length;
  }
}

TEST_F(PatternOperator, NothingIsLostWhereverMemoryRunsOut) {
  std::size_t failed = 0;
  for (bool threw = true; threw; ++failed) {
    FailAllocation(failed + 1);
    try {
      threw = false;
      Feed("1 2 3 4 (a.png) 40 20 6 5 pfimg");
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    FailAllocation(0);
    const Lines lines = Drain();
    EXPECT_EQ(lines.size() == 2, !threw) << failed;
    Feed("D");
  }
  EXPECT_GT(failed, 1u);
}
