// Small documents that are wrong in one respect: declarations, image references, and data cut short.

#include <filesystem>

#include "filter_limits.h"
#include "headless_host/limits.h"
#include "tests/hostile/hostile_fixture.h"
#include "tests/images/image_bench.h"

namespace {

using HostileDeclaration = HostileTest;
using HostileText = HostileTest;

class HostileImage : public HostileTest {
 protected:
  HostileImage() {
    setenv("TMPDIR", folder.c_str(), 1);
    SetHostBaseDir(WideFromUtf8(folder));
  }
  // Bitmaps that came of an embedded image of these bytes.
  std::size_t BitmapsOf(std::string_view format, std::string_view bytes) {
    Anew();
    keys.clear();
    CountBodyRecords("<image xlink:href='data:image/" + std::string(format) + ";base64," + EncodeBase64(bytes) + "'/>");
    return keys[KEY_GNRC];
  }
};

constexpr std::string_view kPlainDoctype = "<!DOCTYPE svg PUBLIC \"-//W3C//DTD SVG 1.1//EN\" \"svg11.dtd\">";

// Subsets, each with an entity that "&a;" would be.
const char* const kSubsets[] = {
    "<!DOCTYPE svg [<!ENTITY a 'b'>]>",
    "<!DOCTYPE svg [<!ENTITY a SYSTEM 'file:///etc/hostname'>]>",
    "<!DOCTYPE svg [<!ENTITY a PUBLIC 'x' 'http://127.0.0.1/'>]>",
    "<!DOCTYPE svg [<!ENTITY % p SYSTEM 'http://127.0.0.1/'> %p;]>",
    "<!DOCTYPE svg [<!ENTITY a0 'b'><!ENTITY a1 '&a0;&a0;&a0;&a0;'><!ENTITY a '&a1;&a1;&a1;&a1;'>]>",
    "<!DOCTYPE svg [<!ELEMENT svg ANY><!ATTLIST svg height CDATA '5'>]>",
    "<!DOCTYPE svg SYSTEM 'http://127.0.0.1/' [<!ENTITY a 'b'>]>",
};

std::string Shape(std::string_view text = "") { return "<path d='M0 0L1 1'/><text>" + std::string(text) + "</text>"; }

}  // namespace

// --- Declarations

TEST_F(HostileDeclaration, ASubsetInFrontOfTheRootIsRefused) {
  for (const std::string subset : kSubsets) {
    for (const std::string_view before :
         {"", "<?xml version='1.0'?>", "<?xml version='1.0'?>\n<!-- c -->", "<?pi x?>", " "}) {
      SCOPED_TRACE(std::string(before) + subset);
      Anew();
      EXPECT_EQ(Check(std::string(before) + subset + Document(Shape())), 0);
      EXPECT_EQ(run.commands.count, 0u);
    }
  }
}

TEST_F(HostileDeclaration, ASubsetBehindTheRootIsRefused) {
  for (const std::string subset : kSubsets) {
    SCOPED_TRACE(subset);
    Anew();
    EXPECT_EQ(Check(Document(Shape()) + subset), 0);
  }
}

TEST_F(HostileDeclaration, ASecondDeclarationIsRefusedWhateverIsInIt) {
  EXPECT_EQ(Check(std::string(kPlainDoctype) + std::string(kPlainDoctype) + Document(Shape())), 0);
  for (const std::string subset : kSubsets) {
    SCOPED_TRACE(subset);
    Anew();
    EXPECT_EQ(Check(std::string(kPlainDoctype) + subset + Document(Shape())), 0);
    Anew();
    EXPECT_EQ(Check(std::string(kPlainDoctype) + Document(subset + Shape())), 0);
  }
}

TEST_F(HostileDeclaration, ADeclarationWithinTheRootDeclaresNothing) {
  // What is left of it behind its first ">" is text; an entity is as unknown as without it.
  EXPECT_EQ(Check(Document("<!DOCTYPE svg [<!ENTITY a 'b'>]>" + Shape())), 1);
  Anew();
  EXPECT_EQ(Check(Document("<!DOCTYPE svg [<!ENTITY a 'b'>]>" + Shape("&a;"))), 0);
  Anew();
  EXPECT_EQ(Check(std::string(kPlainDoctype) + Document(Shape("&a;"))), 0);
}

TEST_F(HostileDeclaration, ADeclarationInSmallLettersOrWithoutItsWordIsRefused) {
  for (const std::string_view declaration :
       {"<!doctype svg>", "<!ENTITY a 'b'>", "<![INCLUDE[<!ENTITY a 'b'>]]>", "<!>"}) {
    SCOPED_TRACE(declaration);
    Anew();
    EXPECT_EQ(Check(std::string(declaration) + Document(Shape())), 0);
    Anew();
    EXPECT_EQ(Check(Document(std::string(declaration) + Shape())), 0);
  }
}

TEST_F(HostileDeclaration, ADeclarationInAnAttributeOrACommentIsBlankedWithAllBeforeItsBracket) {
  // The walk back to "<" takes the tag or the comment's start along; what is left is no document or one without them.
  EXPECT_EQ(Check("<svg width='1' a='!DOCTYPE'><g/></svg>"), 0);
  Anew();
  EXPECT_EQ(Check("<!-- !DOCTYPE svg [ --><svg><g/></svg>"), 1);
}

// --- Image references

TEST_F(HostileImage, PathsOutOfTheFolderLeadOneLevelUpAndNoFurther) {
  const std::filesystem::path inner = folder + "a/b/";
  std::filesystem::create_directories(inner);
  WriteFile(folder + "outside.png", TextOf(sample_images::PngOfOneColour(1, 1, {1, 2, 3, 4})));
  WriteFile(folder + "a/near.png", TextOf(sample_images::PngOfOneColour(1, 1, {1, 2, 3, 4})));
  const auto import = [&](std::string_view reference) {
    Anew();
    keys.clear();
    const std::string path = inner.string() + "drawing.svg";
    WriteFile(path, Document("<image xlink:href='" + std::string(reference) + "'/>"));
    EXPECT_EQ(CheckFile(0, 0, WideFromUtf8(path).c_str()), 1);
    ImportCommand command;
    do {
      command = GetImportCommand();
      ++keys[command.key];
      ReleaseCommand(command);
    } while (command.key != KEY_ENDF);
    return keys[KEY_GNRC];
  };
  EXPECT_EQ(import("../near.png"), 1u);
  // The steps behind the first are left to the operating system.
  EXPECT_EQ(import("../../outside.png"), 1u);
  EXPECT_EQ(import("..//none.png"), 0u);
  EXPECT_EQ(import(".."), 0u);
  EXPECT_EQ(import("..near.png"), 0u);
  EXPECT_EQ(import("/"), 0u);
  EXPECT_EQ(import("."), 0u);
}

TEST_F(HostileImage, APathWithANulIsRefusedOrEndsTheDocument) {
  EXPECT_EQ(Check(Document("<image xlink:href='a.png&#0;.txt'/>")), 0);
  Anew();
  EXPECT_EQ(Check(Document(std::string("<image xlink:href='a.png\0.txt'/>", 33))), 0);
}

TEST_F(HostileImage, NamesThatAreNoRegularFilesAreNotRead) {
  CountBodyRecords("<image xlink:href='/dev/zero'/><image xlink:href='/dev/stdin'/><image xlink:href='" + folder +
                   "'/>");
  EXPECT_EQ(keys[KEY_GNRC], 0u);
}

TEST_F(HostileImage, APngBombIsRefusedByItsSize) {
  EXPECT_EQ(BitmapsOf("png", TextOf(sample_images::PngOfOneColour(2, 2, {1, 2, 3, 4}))), 1u);
  for (const std::uint32_t side : {8001u, kMaxBitmapSide, kMaxBitmapSide + 1, 0x7FFFFFFFu}) {
    SCOPED_TRACE(side);
    EXPECT_EQ(BitmapsOf("png", TextOf(sample_images::PngWithoutPixels(side, side))), 0u);
  }
}

TEST_F(HostileImage, AJpegBombIsRefusedByItsSize) {
  std::string jpeg = TextOf(sample_images::kRedJpeg);
  EXPECT_EQ(BitmapsOf("jpg", jpeg), 1u);
  const std::size_t frame = jpeg.find("\xFF\xC0");
  ASSERT_LT(frame + 9, jpeg.size());
  for (std::size_t i = 5; i <= 8; ++i) jpeg[frame + i] = '\xFF';  // 65535 by 65535
  EXPECT_EQ(BitmapsOf("jpg", jpeg), 0u);
}

TEST_F(HostileImage, AnImageCutAtAnyByteIsAnImageOrNothing) {
  const std::string png = TextOf(sample_images::PngOfOneColour(2, 3, {1, 2, 3, 255}));
  std::string images;
  for (std::size_t length = 0; length < png.size(); ++length) {
    images += "<image xlink:href='data:image/png;base64," + EncodeBase64(png.substr(0, length)) + "'/>";
  }
  CountBodyRecords(images);
  EXPECT_LE(keys[KEY_GNRC], png.size());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);  // the document
}

TEST_F(HostileImage, BrokenBase64IsDecodedAsFarAsItGoes) {
  const std::string text = EncodeBase64(TextOf(sample_images::PngOfOneColour(2, 3, {1, 2, 3, 255})));
  for (const std::string_view bad : {"!", "=", "-", "%", "\xC3\xA4", "&amp;"}) {
    SCOPED_TRACE(bad);
    Anew();
    keys.clear();
    const std::string broken = text.substr(0, 40) + std::string(bad) + text.substr(40);
    EXPECT_EQ(CountBodyRecords("<image xlink:href='data:image/png;base64," + broken + "'/>"), 0u);
  }
  Anew();
  EXPECT_EQ(CountBodyRecords("<image xlink:href='data:image/png;base64," + text.substr(0, 40) + " \n " +
                             text.substr(40) + "'/>"),
            1u);
}

// --- Texts

TEST_F(HostileText, EveryInlineCodeCutShortIsAParagraph) {
  const std::string codes =
      "a\\Pb\\H2.5x;c\\Ftimes;d;e\\fx|y;z;f\\C1;g\\W2;h\\A1;i\\T3;j\\Lk\\l\\Om\\on\\pi1;o\\pp\\u1234%%cq%%dr%%ps%%%{t}"
      "\\P\\P";
  std::string texts;
  for (std::size_t i = 0; i <= codes.size(); ++i) {
    texts += "<text>" + codes.substr(0, i) + "</text><text>" + codes.substr(i) + "</text>";
  }
  CountBodyRecords(texts);
  EXPECT_EQ(keys[KEY_PARA], 2 * (codes.size() + 1));
  EXPECT_TRUE(ShownMessages().empty());
}

TEST_F(HostileText, NumbersOfHeightsMayBeAnything) {
  std::string texts;
  for (const char* number :
       {"1e308", "-1e308", "1e999", "1e-320", "", "x", "1e308x", "0x", "-0", "99999999999999999999", "e", "."}) {
    texts += "<text font-size='" + std::string(number) + "' x='" + number + "' y='" + number + "'>a\\H" + number +
             ";b\\H" + number + ";c</text>";
  }
  CountBodyRecords(texts);
  EXPECT_EQ(keys[KEY_PARA], 12u);
}
