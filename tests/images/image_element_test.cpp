// The image element at the top level and in groups: embedded images on their way through the temporary folder, linked
// ones by their path. In these documents one unit is 0.1 host units, and the document is 100 high.
#include "images/image_element.h"

#include <new>

#include "document/definitions.h"
#include "operators/graphics_state.h"
#include "operators/operator_machine.h"
#include "tests/images/image_bench.h"
#include "tests/support/fake_document.h"

namespace {

class ImageElement : public ImageTest {
 protected:
  // The path of the only bitmap of the last import, seen as the name of a file in the temporary folder; empty when it
  // lies elsewhere.
  std::string TemporaryNameOfBitmap(std::size_t line) {
    std::string path = Utf8FromWide(BitmapOf(line).path);
    for (char& c : path) c = c == '\\' ? '/' : c;
    return path.starts_with(temporaryFolder) ? path.substr(temporaryFolder.size()) : "";
  }
  // How many frames stand above the first.
  static std::int32_t Depth() { return run.graphics.frameIndex; }
};

}  // namespace

// --- Embedded images

TEST_F(ImageElement, AnEmbeddedPngBecomesABitmapAndNothingElse) {
  EXPECT_EQ(ImportBody(Image(DataUri("png", Png({9, 8, 7, 255})), "width=\"20\" height=\"30\"")), Lines{"GNRC"});
  const BitmapView bitmap = BitmapOf(0);
  EXPECT_EQ(bitmap.width, 2u);
  EXPECT_EQ(bitmap.height, 3u);
  EXPECT_EQ(bitmap.pixels[0], 9);
  EXPECT_DOUBLE_EQ(bitmap.placedWidth, 2.0);
  EXPECT_DOUBLE_EQ(bitmap.placedHeight, 3.0);
}

TEST_F(ImageElement, AnEmbeddedImageHasANameOfTheTemporaryFolderWithItsFormat) {
  ImportBody(Image(DataUri("png", Png())) + Image(DataUri("jpg", Jpeg())));
  ASSERT_EQ(commands.size(), 2u);
  const std::string png = TemporaryNameOfBitmap(0), jpg = TemporaryNameOfBitmap(1);
  EXPECT_TRUE(png.starts_with("IMG")) << png;
  EXPECT_TRUE(png.ends_with(".png")) << png;
  EXPECT_TRUE(jpg.starts_with("IMG")) << jpg;
  EXPECT_TRUE(jpg.ends_with(".jpg")) << jpg;
  EXPECT_NE(png.substr(0, png.find('.')), jpg.substr(0, jpg.find('.')));
}

TEST_F(ImageElement, APointInATemporaryFoldersNameStays) {
  temporaryFolder += "v1.2/";
  std::filesystem::create_directory(temporaryFolder);
  setenv("TMPDIR", temporaryFolder.c_str(), 1);
  EXPECT_EQ(ImportBody(Image(DataUri("png", Png()))), Lines{"GNRC"});
  EXPECT_TRUE(TemporaryNameOfBitmap(0).starts_with("IMG"));
  EXPECT_TRUE(TemporaryNameOfBitmap(0).ends_with(".png"));
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
}

TEST_F(ImageElement, PngIsLookedForBeforeJpgAndOverTheWholeReference) {
  // What the text says is no matter for what the file holds.
  ImportBody(Image(DataUri("jpg;alt=png", Jpeg())) + Image(DataUri("jpeg", Jpeg()) + "=png") +
             Image(DataUri("jpeg", Jpeg()) + "=jpg"));
  ASSERT_EQ(commands.size(), 3u);
  EXPECT_TRUE(TemporaryNameOfBitmap(0).ends_with(".png"));
  EXPECT_TRUE(TemporaryNameOfBitmap(1).ends_with(".png"));
  EXPECT_TRUE(TemporaryNameOfBitmap(2).ends_with(".jpg"));
}

TEST_F(ImageElement, WhiteSpaceWithinTheDataIsNoHarm) {
  std::string uri = DataUri("png", Png());
  uri.insert(uri.size() - 20, "\n   \t");
  EXPECT_EQ(ImportBody(Image(uri)), Lines{"GNRC"});
}

TEST_F(ImageElement, TheDataBeginsBehindTheFirstComma) {
  EXPECT_EQ(ImportBody(Image("data:image/png;base64;," + EncodeBase64(Png()))), Lines{"GNRC"});
  ResetImportRun();
  // Everything up to the second comma counts as data, and ends at the comma.
  EXPECT_EQ(ImportBody(Image("data:image/png;base64,AAAA," + EncodeBase64(Png()))), Lines{});
}

TEST_F(ImageElement, WithoutACommaTheWholeReferenceIsDecoded) {
  std::string content = "not looked at";
  {
    HostCallWatch watch([&](std::string_view line) {
      if (line.find("CQXBitmap::Create") == line.npos) return;
      for (const std::string& name : FilesIn(temporaryFolder)) {
        if (name.ends_with(".png")) content = ReadFile(temporaryFolder + name);
      }
    });
    EXPECT_EQ(ImportBody(Image("database64png")), Lines{});
  }
  // Thirteen letters: three groups of four, and a sextet that is dropped. "data" is 011101 011010 101101 011010.
  EXPECT_EQ(content.size(), 9u);
  EXPECT_EQ(content.substr(0, 3), "\x75\xAB\x5A");
}

TEST_F(ImageElement, AFileNameWithTheLettersDataAndBase64CountsAsEmbedded) {
  WriteFile(folder + "database64.png", Png());
  EXPECT_EQ(ImportBody(Image("database64.png")), Lines{});
  EXPECT_TRUE(AskedFiles().empty());
  ResetImportRun();
  // Each of the two words alone is a path.
  WriteFile(folder + "base64.png", Png());
  WriteFile(folder + "data.png", Png());
  EXPECT_EQ(ImportBody(Image("base64.png") + Image("data.png")), (Lines{"GNRC", "GNRC"}));
}

TEST_F(ImageElement, WhileTheHostReadsItAnEmbeddedImageHasTwoFilesForTheUserAlone) {
  FileNames names;
  {
    HostCallWatch watch([&](std::string_view line) {
      if (line.find("CQXBitmap::Create") == line.npos) return;
      names = FilesIn(temporaryFolder);
      for (const std::string& name : names) {
        EXPECT_EQ(ModeOf(temporaryFolder + name), 0600u) << name;
        EXPECT_EQ(ReadFile(temporaryFolder + name), name.ends_with(".tmp") ? "" : Png()) << name;
      }
    });
    EXPECT_EQ(ImportBody(Image(DataUri("png", Png()))), Lines{"GNRC"});
  }
  // One name with two endings.
  const std::string stem = TemporaryNameOfBitmap(0).substr(0, TemporaryNameOfBitmap(0).find('.'));
  EXPECT_EQ(names, (FileNames{stem + ".png", stem + ".tmp"}));
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
}

TEST_F(ImageElement, AFormatThatIsNeitherPngNorJpgDrawsNothingAndLeavesAFrame) {
  const std::string gif = Image("data:image/gif;base64,R0lGODlhAQABAAAAACw=", "clip-path=\"url(#c)\"");
  EXPECT_EQ(ImportBody(gif), Lines{});
  EXPECT_EQ(Depth(), 1);
  EXPECT_EQ(run.graphics.saveDepth, 1);
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
}

TEST_F(ImageElement, TheFrameOfAFormatThatIsNotTakenIsLeftToTheElementsBehind) {
  // The group's pop takes the image's frame off, so that the group's red stays for the rectangle.
  const Lines lines =
      ImportBody("<g fill=\"#ff0000\">" + Image("data:image/gif;base64,R0lG") + "</g><rect width=\"1\" height=\"1\"/>");
  EXPECT_EQ(Depth(), 1);
  Lines replay = Replay();
  replay.at(FindLine(replay, "THST")) = "THST 2";
  replay.at(FindLine(replay, "FILL")) = "FILL 255";
  const std::size_t behind = FindLine(lines, "EGRP") + 1;
  EXPECT_EQ(Lines(lines.begin() + static_cast<std::ptrdiff_t>(behind),
                  lines.begin() + static_cast<std::ptrdiff_t>(behind + replay.size())),
            replay);
}

TEST_F(ImageElement, AJpegThatIsSpelledSoIsGivenUp) {
  const std::string uri = DataUri("jpeg", Jpeg());
  ASSERT_EQ(uri.find("jpg"), uri.npos);
  ASSERT_EQ(uri.find("png"), uri.npos);
  EXPECT_EQ(ImportBody(Image(uri)), Lines{});
  EXPECT_EQ(Depth(), 1);
}

TEST_F(ImageElement, TheWordsAreMatchedInSmallLetters) {
  for (const char* reference : {"DATA:image/png;base64,AAAA", "data:image/png;Base64,AAAA"}) {
    // A path, then: it holds ":", so it stands for itself.
    EXPECT_EQ(ImportBody(Image(reference)), Lines{}) << reference;
    EXPECT_EQ(AskedFiles().size(), 1u) << reference;
    ResetImportRun();
    ResetHost();
  }
  EXPECT_EQ(ImportBody(Image("data:image/PNG;base64,AAAA")), Lines{});
  EXPECT_EQ(Depth(), 1);
}

TEST_F(ImageElement, DataThatNobodyCanDecodeDrawsNothing) {
  for (const char* data : {"!!!!", "", "AAAA"}) {
    EXPECT_EQ(ImportBody(Image("data:image/png;base64," + std::string(data))), Lines{}) << data;
    EXPECT_EQ(Depth(), 0) << data;
    EXPECT_TRUE(AskedFiles().empty()) << data;
    EXPECT_TRUE(ShownMessages().empty()) << data;
    ResetImportRun();
  }
}

// --- The temporary files go

TEST_F(ImageElement, NoTemporaryFileStaysBehindAnImage) {
  EXPECT_EQ(ImportBody(Image(DataUri("png", Png()))), Lines{"GNRC"});
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
}

TEST_F(ImageElement, NoTemporaryFileStaysBehindDataThatNobodyCanDecode) {
  EXPECT_EQ(ImportBody(Image("data:image/png;base64,!!!!")), Lines{});
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
}

TEST_F(ImageElement, NoTemporaryFileStaysWhenTheHostMakesNoBitmap) {
  HostFailureSwitches().newBitmap = true;
  EXPECT_EQ(ImportBody(Image(DataUri("png", Png()))), Lines{});
  HostFailureSwitches() = {};
  HostFailureSwitches().createBitmap = true;
  ResetImportRun();
  EXPECT_EQ(ImportBody(Image(DataUri("png", Png()))), Lines{});
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
}

TEST_F(ImageElement, NoTemporaryFileStaysWhereverMemoryRunsOut) {
  std::size_t failed = 0;
  for (bool threw = true; threw; ++failed) {
    ASSERT_EQ(Check(Document("<defs><clipPath id=\"c\"><rect width=\"1\" height=\"1\"/></clipPath></defs>" +
                             Image(DataUri("png", Png()), "clip-path=\"url(#c)\" transform=\"scale(2)\""))),
              1);
    Drain();
    FailAllocation(failed + 1);
    try {
      threw = false;
      EXPECT_NE(GetImportCommand().key, KEY_NULL);
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    FailAllocation(0);
    Drain();
    EXPECT_EQ(FilesIn(temporaryFolder), FileNames{}) << failed;
    ResetImportRun();
  }
  EXPECT_GT(failed, 1u);
}

TEST_F(ImageElement, NoTemporaryFileStaysWhenADocumentCallFails) {
  ASSERT_EQ(Check(Document("<g/>")), 1);
  Drain();
  FakeNode clip(u"clipPath"), image(u"image");
  clip.Set(u"id", u"c").childNodesStatus = kFailed;
  clip.AddRef();
  RecordClipDef(&clip);
  image.Set(u"xlink:href", WideFromNarrow(DataUri("png", Png()))).Set(u"clip-path", u"url(#c)");
  EXPECT_THROW(TranslateImage(&image), DocumentError);
  EXPECT_EQ(Drain().at(0), "SCGR 1") << "the error comes from within the clip, when the image has its files already";
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
  ResetImportRun();
}

TEST_F(ImageElement, WithoutATemporaryFolderAnEmbeddedImageTouchesNoOtherFile) {
  setenv("TMPDIR", (folder + "nowhere").c_str(), 1);
  const WorkingFolder work(baseFolder);
  WriteFile(baseFolder + "png", Png());
  WriteFile(folder + "png", Png());
  EXPECT_EQ(ImportBody(Image(DataUri("png", Png()))), Lines{});
  EXPECT_EQ(Depth(), 0);
  EXPECT_EQ(FilesIn(baseFolder), FileNames{"png"});
  EXPECT_FALSE(std::filesystem::exists(folder + "nowhere"));
}

// --- Linked images

TEST_F(ImageElement, ALinkedImageIsFoundBesideTheDocument) {
  std::filesystem::create_directory(folder + "pictures");
  WriteFile(folder + "pictures/a.png", Png());
  EXPECT_EQ(ImportBody(Image("pictures/a.png")), Lines{"GNRC"});
  std::string path = folder + "pictures/a.png";
  for (char& c : path) c = c == '/' ? '\\' : c;
  EXPECT_EQ(Utf8FromWide(BitmapOf(0).path), path);
  EXPECT_TRUE(std::filesystem::exists(folder + "pictures/a.png"));
  EXPECT_EQ(FilesIn(temporaryFolder), FileNames{});
}

TEST_F(ImageElement, AnAddressOfTheWebIsLookedForOnTheDisk) {
  EXPECT_EQ(ImportBody(Image("http://127.0.0.1/a.png")), Lines{});
  ASSERT_EQ(AskedFiles().size(), 1u);
  EXPECT_EQ(AskedFiles()[0].file, u"http:\\\\127.0.0.1\\a.png");
}

TEST_F(ImageElement, WithoutAReferenceTheOperandBelowIsThePath) {
  ASSERT_EQ(Check(Document(Image("") + "<image/>")), 1);
  Drain();
  WriteFile(folder + "below.png", Png());
  for (std::int32_t i = 0; i < 2; ++i) {
    FeedOperatorText(u"(below.png)", kPushOnly);
    TranslateImage(run.NodeList.At(i));
    EXPECT_EQ(Drain(), Lines{"GNRC"}) << i;
  }
  TranslateImage(run.NodeList.At(0));
  EXPECT_EQ(Drain(), Lines{});
  EXPECT_TRUE(AskedFiles().empty());
}

TEST_F(ImageElement, AClosingParenthesisEndsTheReferenceEarly) {
  WriteFile(folder + "a.png", Png());
  // What stands behind it is an operand of its own, on top of the path, and no path.
  EXPECT_EQ(ImportBody(Image("a.png)b.png") + Image("a.png)")), Lines{});
  EXPECT_TRUE(AskedFiles().empty());
}

// --- Placement

TEST_F(ImageElement, TheOperandsGoInTheOrderOfTheOperator) {
  WriteFile(folder + "a.png", Png());
  ImportBody(Image("a.png", "x=\"10\" y=\"20\" width=\"30\" height=\"40\""));
  const BitmapView bitmap = BitmapOf(0);
  EXPECT_DOUBLE_EQ(bitmap.placedX, 1.0);
  EXPECT_DOUBLE_EQ(bitmap.placedWidth, 3.0);
  EXPECT_DOUBLE_EQ(bitmap.placedHeight, 4.0);
  // 100 * 0.1 - 0 - 40 * 0.1 - 20 * 0.1 * 0.1
  EXPECT_DOUBLE_EQ(bitmap.placement.f, 5.8);
}

TEST_F(ImageElement, MissingMeasuresAreZeroAndUnitsAreDropped) {
  WriteFile(folder + "a.png", Png());
  ImportBody(Image("a.png") + Image("a.png", "x=\"\" y=\"\" width=\"20mm\" height=\"50%\""));
  ASSERT_EQ(commands.size(), 2u);
  const BitmapView first = BitmapOf(0), second = BitmapOf(1);
  EXPECT_EQ(first.placedX, 0.0);
  EXPECT_EQ(first.placedWidth, 0.0);
  EXPECT_EQ(first.placedHeight, 0.0);
  EXPECT_DOUBLE_EQ(first.placement.f, 10.0);
  EXPECT_EQ(second.placedX, 0.0);
  EXPECT_DOUBLE_EQ(second.placedWidth, 2.0);
  EXPECT_DOUBLE_EQ(second.placedHeight, 5.0);
}

TEST_F(ImageElement, ATransformGoesIntoThePlacementOfThisImageAlone) {
  WriteFile(folder + "a.png", Png());
  ImportBody("<g transform=\"scale(2)\">" + Image("a.png", "transform=\"translate(3,4)\"") + Image("a.png") + "</g>");
  std::vector<TM> placements;
  for (const ImportCommand& command : commands) {
    if (command.key == KEY_GNRC)
      placements.push_back(ViewBitmap(*static_cast<GenericRecord*>(command.data)->bitmap).placement);
  }
  ASSERT_EQ(placements.size(), 2u);
  EXPECT_EQ(placements[0].a, 2.0);
  EXPECT_DOUBLE_EQ(placements[0].e, 0.6);
  EXPECT_DOUBLE_EQ(placements[0].f, 10.0 - 0.8);
  EXPECT_EQ(placements[1].a, 2.0);
  EXPECT_EQ(placements[1].e, 0.0);
  EXPECT_DOUBLE_EQ(placements[1].f, 10.0);
}

TEST_F(ImageElement, AStyleHasNoEffect) {
  WriteFile(folder + "a.png", Png());
  EXPECT_EQ(ImportBody(Image("a.png", "style=\"fill:#ff0000;opacity:0.5\" opacity=\"0.5\" fill=\"red\"")),
            Lines{"GNRC"});
}

// --- Brackets

TEST_F(ImageElement, AClipPathIsOpenedBeforeTheImageAndClosedBehindIt) {
  EXPECT_EQ(ImportBody("<defs><clipPath id=\"c\"/></defs>" + Image(DataUri("png", Png()), "clip-path=\"url(#c)\"")),
            (Lines{"SCGR 1", "WIDT8 0", "THST 1", "FILL -1", "OUTL -1", "CLIP 1", "CLIP 0", "DOCP 1", "GNRC", "DOCP 0",
                   "ECGR 1"}));
}

TEST_F(ImageElement, AClipPathOfAnotherFormIsClosedAllTheSame) {
  EXPECT_EQ(ImportBody(Image(DataUri("png", Png()), "clip-path=\"none\"")), (Lines{"GNRC", "DOCP 0", "ECGR 1"}));
  ResetImportRun();
  EXPECT_EQ(ImportBody(Image("nowhere.png", "clip-path=\"url(#unknown)\"")),
            (Lines{"CLIP 0", "DOCP 1", "DOCP 0", "ECGR 1"}));
}

TEST_F(ImageElement, TheClipIsDrawnUnderTheImagesTransform) {
  const Lines lines = ImportBody("<defs><clipPath id=\"c\"><path d=\"M1 1 L2 2\"/></clipPath></defs>" +
                                 Image(DataUri("png", Png()), "transform=\"translate(10 0)\" clip-path=\"url(#c)\""));
  EXPECT_EQ(CountOf(lines, "LINE 1.1,9.9 1.2,9.8"), 1u);
}

TEST_F(ImageElement, AnOpenPathIsEndedBehindTheImage) {
  ASSERT_EQ(Check(Document(Image("a.png"))), 1);
  Drain();
  WriteFile(folder + "a.png", Png());
  FeedOperatorText(u"1 1 M", kExecute);
  TranslateImage(run.NodeList.At(0));
  EXPECT_EQ(Drain(), (Lines{"PATH", "GNRC", "ENDP", "FDEF flat 1"}));
}

TEST_F(ImageElement, AnImageEndsWithItsFrameAndWithNoOperands) {
  ASSERT_EQ(Check(Document(Image("nowhere.png", "width=\"1\""))), 1);
  Drain();
  FeedOperatorText(u"1 2 3", kPushOnly);
  TranslateImage(run.NodeList.At(0));
  EXPECT_EQ(Depth(), 0);
  EXPECT_EQ(Operands(), Lines{});
}
