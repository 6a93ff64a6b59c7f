// The image element inside a pattern: its file goes into the host's base folder and stays there.
#include <cmath>

#include "operators/graphics_state.h"
#include "run/entry_points.h"
#include "tests/images/image_bench.h"
#include "tests/support/loopback_server.h"

namespace {

class PatternImage : public ImageTest {
 protected:
  // A pattern under the id "p" that holds this.
  static std::string Pattern(const std::string& content, std::string_view id = "p") {
    return "<pattern id=\"" + std::string(id) + "\" x=\"1\" y=\"2\" width=\"3\" height=\"4\">" + content + "</pattern>";
  }
  // Imports a path with this pattern for its fill; gives what stands between its replay and its outline.
  Lines FillWith(const std::string& pattern) {
    const Lines lines = ImportBody("<defs>" + pattern + "</defs><path style=\"fill:url(#p)\" d=\"M1 1 L2 2\"/>");
    const auto first = static_cast<std::ptrdiff_t>(Replay().size());
    const auto path = static_cast<std::ptrdiff_t>(FindLine(lines, "PATH"));
    commands.erase(commands.begin(), commands.begin() + first);
    return Lines(lines.begin() + first, lines.begin() + path);
  }
  // The path in the fill of the last FillWith.
  std::string TilePath() { return TilePathOf(PayloadOf<FillDefinition>(0)); }
  // The name within the base folder of the file that the last fill names.
  std::string TileName() {
    EXPECT_TRUE(TilePath().starts_with(baseFolder)) << TilePath();
    return TilePath().substr(baseFolder.size());
  }
};

const Lines kPatternPair = {"PFDF pattern", "PFOL pattern"};

}  // namespace

// --- Embedded images

TEST_F(PatternImage, AnEmbeddedImageStaysInTheBaseFolderWithTheFileOfItsName) {
  EXPECT_EQ(FillWith(Pattern(Image(DataUri("png", Png())))), kPatternPair);
  const std::string name = TileName();
  EXPECT_TRUE(name.starts_with("DEMO")) << name;
  EXPECT_TRUE(name.ends_with(".png")) << name;
  const std::string stem = name.substr(0, name.find('.'));
  EXPECT_EQ(FilesIn(baseFolder), (FileNames{stem + ".png", stem + ".tmp"}));
  EXPECT_EQ(ReadFile(baseFolder + stem + ".png"), Png());
  EXPECT_EQ(ReadFile(baseFolder + stem + ".tmp"), "");
  EXPECT_EQ(ModeOf(baseFolder + stem + ".png"), 0600u);
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
  EXPECT_TRUE(AskedFiles().empty());
  EXPECT_EQ(CloseFile(), 0);
  EXPECT_EQ(FilesIn(baseFolder).size(), 2u);
}

TEST_F(PatternImage, TheFileIsAPngWhateverTheFormatOfTheImage) {
  for (const char* format : {"png", "jpg", "jpeg"}) {
    EXPECT_EQ(FillWith(Pattern(Image(DataUri(format, Jpeg())))), kPatternPair) << format;
    EXPECT_TRUE(TileName().ends_with(".png")) << format;
    EXPECT_EQ(ReadFile(TilePath()), Jpeg()) << format;
    ResetImportRun();
  }
  EXPECT_EQ(FilesIn(baseFolder).size(), 6u);
}

TEST_F(PatternImage, TheWordBase64AloneMakesAnEmbeddedImage) {
  EXPECT_EQ(FillWith(Pattern(Image("png;base64,Zm9v"))), kPatternPair);
  EXPECT_EQ(ReadFile(TilePath()), "foo");
}

TEST_F(PatternImage, AnEmbeddedImageIsNotFetchedWhateverAddressItHolds) {
  EXPECT_EQ(FillWith(Pattern(Image("http://127.0.0.1:1/a.png;base64,Zm9v"))), kPatternPair);
  EXPECT_EQ(ReadFile(TilePath()), "foo");
}

TEST_F(PatternImage, DataThatNobodyCanDecodeMakesAnEmptyFile) {
  EXPECT_EQ(FillWith(Pattern(Image("data:image/png;base64,!"))), kPatternPair);
  EXPECT_EQ(ReadFile(TilePath()), "");
  EXPECT_EQ(FilesIn(baseFolder).size(), 2u);
}

TEST_F(PatternImage, AnotherFormatIsGivenUpWithTheFrameUntouched) {
  EXPECT_EQ(FillWith(Pattern(Image("data:image/gif;base64,R0lG", "transform=\"translate(9 9)\""))), Lines{});
  EXPECT_EQ(run.graphics.frameIndex, 0);
  EXPECT_EQ(FilesIn(baseFolder), FileNames{});
}

TEST_F(PatternImage, AfterAFormatThatIsGivenUpTheNextPathCountsAsAbsolute) {
  WriteFile(folder + "a.png", Png());
  EXPECT_EQ(FillWith(Pattern(Image("data:image/gif;base64,R0lG") + Image("a.png") + Image("a.png"))),
            kPatternPair + kPatternPair);
  EXPECT_EQ(TilePath(), "a.png");
  // The operator has cleared the mark.
  EXPECT_EQ(TilePathOf(PayloadOf<FillDefinition>(2)), folder + "a.png");
}

TEST_F(PatternImage, ANameIsCutAtTheFirstPointOfTheWholePath) {
  std::filesystem::create_directory(baseFolder + "v1.2");
  SetHostBaseDir(WideFromUtf8(baseFolder + "v1.2/"));
  EXPECT_EQ(FillWith(Pattern(Image(DataUri("png", Png())))), kPatternPair);
  EXPECT_EQ(TilePath(), baseFolder + "v1.png");
  EXPECT_EQ(ReadFile(baseFolder + "v1.png"), Png());
  EXPECT_EQ(FilesIn(baseFolder + "v1.2").size(), 1u);
  EXPECT_TRUE(FilesIn(baseFolder + "v1.2").begin()->ends_with(".tmp"));
}

TEST_F(PatternImage, AnOlderFileOfTheNameIsReplacedAndNoLinkFollowed) {
  std::filesystem::create_directory(baseFolder + "v1.2");
  SetHostBaseDir(WideFromUtf8(baseFolder + "v1.2/"));
  WriteFile(folder + "precious", "keep me");
  std::filesystem::create_symlink(folder + "precious", baseFolder + "v1.png");
  EXPECT_EQ(FillWith(Pattern(Image(DataUri("png", Png())))), kPatternPair);
  EXPECT_EQ(ReadFile(folder + "precious"), "keep me");
  EXPECT_EQ(ReadFile(baseFolder + "v1.png"), Png());
}

TEST_F(PatternImage, TheBaseFolderNeedNotEndInASeparator) {
  SetHostBaseDir(WideFromUtf8(baseFolder.substr(0, baseFolder.size() - 1)));
  EXPECT_EQ(FillWith(Pattern(Image(DataUri("png", Png())))), kPatternPair);
  EXPECT_EQ(FilesIn(baseFolder).size(), 2u);
}

TEST_F(PatternImage, WithoutABaseFolderTheFillNamesNoFile) {
  SetHostBaseDir(WideFromUtf8(folder + "nowhere/"));
  const WorkingFolder work(baseFolder);
  EXPECT_EQ(FillWith(Pattern(Image(DataUri("png", Png())))), kPatternPair);
  EXPECT_EQ(TilePath(), "");
  EXPECT_EQ(run.images.ImagePathIsAbsolute, 0u);
  ResetImportRun();
  EXPECT_EQ(FillWith(Pattern(Image("http://127.0.0.1:1/a.png"))), kPatternPair);
  EXPECT_EQ(TilePath(), "");
  EXPECT_EQ(FilesIn(baseFolder), FileNames{});
  EXPECT_FALSE(std::filesystem::exists(folder + "nowhere"));
}

// --- Paths

TEST_F(PatternImage, APathIsPutBehindTheFolderOfTheDocumentAsItStands) {
  std::filesystem::create_directory(folder + "tiles");
  WriteFile(folder + "tiles/a.png", Png());
  EXPECT_EQ(FillWith(Pattern(Image("tiles/a.png"))), kPatternPair);
  EXPECT_EQ(TilePath(), folder + "tiles/a.png");
  EXPECT_TRUE(AskedFiles().empty());
  EXPECT_EQ(FilesIn(baseFolder), FileNames{});
  EXPECT_EQ(run.images.ImagePathIsAbsolute, 0u);
}

TEST_F(PatternImage, WithoutAReferenceThePathIsTheFolderOfTheDocument) {
  EXPECT_EQ(FillWith(Pattern("<image/>")), kPatternPair);
  EXPECT_EQ(TilePath(), folder);
  EXPECT_TRUE(AskedFiles().empty());
}

TEST_F(PatternImage, AMissingFileIsAskedForAndThePathOfACancelledQuestionStays) {
  EXPECT_EQ(FillWith(Pattern(Image("nowhere.png"))), kPatternPair);
  ASSERT_EQ(AskedFiles().size(), 1u);
  EXPECT_EQ(Utf8FromWide(AskedFiles()[0].file), folder + "nowhere.png");
  EXPECT_EQ(TilePath(), folder + "nowhere.png");
}

TEST_F(PatternImage, AnAddressWithASecureSchemeIsAPath) {
  // "https:" does not hold the letters "http:".
  EXPECT_EQ(FillWith(Pattern(Image("https://127.0.0.1:1/a.png"))), kPatternPair);
  EXPECT_EQ(TilePath(), folder + "https://127.0.0.1:1/a.png");
  EXPECT_EQ(FilesIn(baseFolder), FileNames{});
}

// --- Downloads

TEST_F(PatternImage, AnAddressIsFetchedIntoTheBaseFolder) {
  LoopbackServer server([](const std::string&) { return ReplyWithLength("200 OK", Jpeg()); });
  EXPECT_EQ(FillWith(Pattern(Image(server.Origin() + "/tile.jpg?size=1"))), kPatternPair);
  EXPECT_EQ(server.Targets(), std::vector<std::string>{"/tile.jpg?size=1"});
  const std::string name = TileName();
  EXPECT_TRUE(name.starts_with("DEMO")) << name;
  EXPECT_TRUE(name.ends_with(".png")) << name;
  EXPECT_EQ(ReadFile(TilePath()), Jpeg());
  EXPECT_EQ(ModeOf(TilePath()), 0600u);
  EXPECT_EQ(FilesIn(baseFolder).size(), 2u);
  EXPECT_TRUE(AskedFiles().empty());
  EXPECT_EQ(run.images.ImagePathIsAbsolute, 0u);
}

TEST_F(PatternImage, AFailedDownloadLeavesTheFileAndGoesOn) {
  int refused = 0;
  {
    LoopbackServer server([](const std::string& target) {
      return target == "/missing" ? ReplyWithLength("404 Not Found", "nothing here")
                                  : Reply("200 OK", "Content-Length: 100\r\n", "short");
    });
    refused = server.Port();
    EXPECT_EQ(FillWith(Pattern(Image(server.Origin() + "/missing"))), kPatternPair);
    EXPECT_EQ(ReadFile(TilePath()), "");
    ResetImportRun();
    EXPECT_EQ(FillWith(Pattern(Image(server.Origin() + "/short"))), kPatternPair);
    EXPECT_EQ(ReadFile(TilePath()), "short");
    ResetImportRun();
  }
  EXPECT_EQ(FillWith(Pattern(Image("http://127.0.0.1:" + std::to_string(refused) + "/a.png"))), kPatternPair);
  EXPECT_EQ(ReadFile(TilePath()), "");
  EXPECT_TRUE(std::filesystem::exists(TilePath()));
  EXPECT_EQ(FilesIn(baseFolder).size(), 6u);
}

TEST_F(PatternImage, TheLettersOfASchemeAnywhereMakeAnAddress) {
  EXPECT_EQ(FillWith(Pattern(Image("tiles/http:a.png"))), kPatternPair);
  EXPECT_TRUE(TileName().starts_with("DEMO"));
  EXPECT_EQ(ReadFile(TilePath()), "");
}

// --- The operator

TEST_F(PatternImage, TheNumbersOfPatternAndImageReachTheFill) {
  WriteFile(folder + "a.png", Png());
  FillWith("<pattern id=\"p\" x=\"25.4\" y=\"74.6\" width=\"7\" height=\"8\">" +
           Image("a.png", "x=\"5\" y=\"6\" width=\"20\" height=\"40\"") + "</pattern>");
  const FillDefinition& fill = PayloadOf<FillDefinition>(0);
  // w = 20 / 10, h = 40 / 10; px = 25.4 / 25.4, py = (100 - 74.6) / 25.4.
  EXPECT_DOUBLE_EQ(fill.inverseMatrix.a, 0.5);
  EXPECT_DOUBLE_EQ(fill.inverseMatrix.d, 0.25);
  EXPECT_DOUBLE_EQ(fill.inverseMatrix.e, -1.0);
  EXPECT_DOUBLE_EQ(fill.inverseMatrix.f, -1.0);
  EXPECT_EQ(fill.tileHeight, 4.0);
}

TEST_F(PatternImage, MissingMeasuresAreZeroAndUnitsAreDropped) {
  WriteFile(folder + "a.png", Png());
  FillWith("<pattern id=\"p\">" + Image("a.png", "width=\"20mm\"") + "</pattern>");
  const FillDefinition& fill = PayloadOf<FillDefinition>(0);
  EXPECT_DOUBLE_EQ(fill.inverseMatrix.a, 0.5);
  EXPECT_TRUE(std::isinf(fill.inverseMatrix.d));
  EXPECT_DOUBLE_EQ(fill.inverseMatrix.e, 0.0);
  EXPECT_DOUBLE_EQ(fill.inverseMatrix.f, -100.0 / 25.4);
  EXPECT_EQ(fill.tileHeight, 0.0);
}

TEST_F(PatternImage, ATransformMovesTheShapeThatIsFilled) {
  WriteFile(folder + "a.png", Png());
  const Lines lines = ImportBody("<defs>" + Pattern(Image("a.png", "transform=\"translate(30 40)\"")) +
                                 "</defs><path style=\"fill:url(#p)\" d=\"M1 1 L2 2\"/><path d=\"M1 1 L2 2\"/>");
  EXPECT_EQ(lines.at(FindLine(lines, "LINE")), "LINE 3.1,5.9 3.2,5.8");
  EXPECT_EQ(CountOf(lines, "LINE 0.1,9.9 0.2,9.8"), 1u);
}

TEST_F(PatternImage, AClipPathHasNoEffect) {
  WriteFile(folder + "a.png", Png());
  const std::string clip = "<clipPath id=\"c\"><rect width=\"1\" height=\"1\"/></clipPath>";
  EXPECT_EQ(FillWith(clip + Pattern(Image("a.png", "clip-path=\"url(#c)\""))), kPatternPair);
  EXPECT_EQ(run.clip.clipPending, 0);
}

TEST_F(PatternImage, TwoShapesWithOnePatternGetAFileEach) {
  const std::string shape = "<path style=\"fill:url(#p)\" d=\"M1 1 L2 2\"/>";
  ImportBody("<defs>" + Pattern(Image(DataUri("png", Png()))) + "</defs>" + shape + shape);
  EXPECT_EQ(FilesIn(baseFolder).size(), 4u);
}

TEST_F(PatternImage, AnImageWithoutAPatternsOperandsTakesWhatThereIs) {
  WriteFile(folder + "a.png", Png());
  // Neither of the pattern's attributes holds a number, so that nothing stands below the path.
  EXPECT_EQ(FillWith("<pattern id=\"p\" x=\"u\" y=\"u\" width=\"u\" height=\"u\">" + Image("a.png", "width=\"20\"") +
                     "</pattern>"),
            kPatternPair);
  EXPECT_EQ(TilePath(), folder + "a.png");
  EXPECT_EQ(PayloadOf<FillDefinition>(0).pattern.tileScaleX, 0.0);
}
