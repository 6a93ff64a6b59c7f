// "svgimport render" as a process: formats, sizes, options and failures.
#include <cairo.h>

#include <filesystem>

#include "tests/tools/tool_process.h"

using namespace tool_tests;
using host_tests::ReadText;
using host_tests::WriteText;

namespace {

constexpr char kDrawing[] =
    "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"90\" height=\"180\">"
    "<rect x=\"45\" y=\"90\" width=\"45\" height=\"45\" style=\"fill:#ff0000\"/></svg>";

class Render : public ToolTest {
 protected:
  Render() { WriteText(folder.File("drawing.svg"), kDrawing); }

  ToolResult RunRender(std::vector<std::string> arguments, std::string_view input = {}) {
    arguments.insert(arguments.begin(), "render");
    return Run("svgimport", std::move(arguments), input);
  }

  // Saves the document, draws it with these arguments, and reads the picture.
  struct Picture {
    int status, width, height;
    std::shared_ptr<cairo_surface_t> image;
    std::uint32_t At(int x, int y) const {
      const unsigned char* row =
          cairo_image_surface_get_data(image.get()) + y * cairo_image_surface_get_stride(image.get());
      return reinterpret_cast<const std::uint32_t*>(row)[x];
    }
  };
  Picture Draw(std::string_view document, std::vector<std::string> arguments = {}) {
    WriteText(folder.File("drawing.svg"), document);
    arguments.insert(arguments.end(), {"drawing.svg", "-o", "out.png"});
    const ToolResult result = RunRender(std::move(arguments));
    EXPECT_EQ(result.err, "");
    const std::shared_ptr<cairo_surface_t> image(cairo_image_surface_create_from_png(folder.File("out.png").c_str()),
                                                 cairo_surface_destroy);
    return {result.status, cairo_image_surface_get_width(image.get()), cairo_image_surface_get_height(image.get()),
            image};
  }
};

}  // namespace

TEST_F(Render, APngOfTheWholePageComesOut) {
  // 90 units of a 90th of an inch are an inch, 96 pixels.
  const Picture picture = Draw(kDrawing);
  EXPECT_EQ(picture.status, 0);
  EXPECT_EQ(picture.width, 96);
  EXPECT_EQ(picture.height, 192);
  EXPECT_EQ(picture.At(49, 97), 0xFFFF0000u);
  EXPECT_EQ(picture.At(49, 94), 0u);
  EXPECT_EQ(picture.At(49, 145), 0u);
  EXPECT_EQ(picture.At(46, 100), 0u);
}

TEST_F(Render, TheExtensionDecidesOnTheFormat) {
  for (const auto& [name, start] : {std::pair{"out.png", "\x89PNG"}, {"out.PDF", "%PDF-"}, {"out.svg", "<?xml"}}) {
    const ToolResult result = RunRender({"drawing.svg", "-o", name});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(ReadText(folder.File(name)).starts_with(start)) << name;
  }
}

TEST_F(Render, TheFormatOptionBeatsTheExtension) {
  EXPECT_EQ(RunRender({"drawing.svg", "-o", "out.png", "-f", "pdf"}).status, 0);
  EXPECT_TRUE(ReadText(folder.File("out.png")).starts_with("%PDF-"));
}

TEST_F(Render, StandardOutputGetsAPngUnlessAskedOtherwise) {
  EXPECT_TRUE(RunRender({"drawing.svg", "-o", "-"}).out.starts_with("\x89PNG"));
  EXPECT_TRUE(RunRender({"-", "-o", "-", "--format", "svg"}, kDrawing).out.starts_with("<?xml"));
}

TEST_F(Render, AnUnknownExtensionIsAWrongArgument) {
  const ToolResult result = RunRender({"drawing.svg", "-o", "out.gif"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err,
            "svgimport: out.gif: the name does not end in .png, .pdf or .svg; --format tells what to write\n");
  EXPECT_FALSE(std::filesystem::exists(folder.File("out.gif")));
}

TEST_F(Render, SizesAreThoseAskedFor) {
  Picture picture = Draw(kDrawing, {"-w", "30"});
  EXPECT_EQ(picture.width, 30);
  EXPECT_EQ(picture.height, 60);
  picture = Draw(kDrawing, {"--height", "30"});
  EXPECT_EQ(picture.width, 15);
  picture = Draw(kDrawing, {"--width", "30", "--height", "20"});
  EXPECT_EQ(picture.height, 20);
  picture = Draw(kDrawing, {"--zoom", "0.5"});
  EXPECT_EQ(picture.width, 48);
  picture = Draw(kDrawing, {"--dpi", "300"});
  EXPECT_EQ(picture.width, 300);
}

TEST_F(Render, TheBackgroundIsTransparentUnlessAskedOtherwise) {
  EXPECT_EQ(Draw(kDrawing).At(5, 5), 0u);
  EXPECT_EQ(Draw(kDrawing, {"--background", "none"}).At(5, 5), 0u);
  EXPECT_EQ(Draw(kDrawing, {"-b", "#0000ff"}).At(5, 5) & 0xFFFFFFu, 0x0000FFu);
}

TEST_F(Render, ThePageFollowsTheUnitOfTheImport) {
  // Millimetres by the first width of the file: 254 of them are ten inches.
  EXPECT_EQ(Draw("<svg width=\"254mm\" height=\"10\"><defs/></svg>", {"--dpi", "10"}).width, 100);
  // Points by the setting: 72 to an inch.
  EXPECT_EQ(Draw("<svg width=\"72\" height=\"72\"><defs/></svg>", {"--set", "ZENTAL/Units=0", "--dpi", "96"}).width,
            96);
}

TEST_F(Render, ThePageIsMeasuredBehindADoctypeAndAComment) {
  EXPECT_EQ(Draw("<?xml version=\"1.0\"?><!-- a page --><!DOCTYPE svg PUBLIC \"x\" \"y\">\n"
                 "<svg width=\"90\" height=\"90\"><defs/></svg>")
                .width,
            96);
}

TEST_F(Render, WithoutAPageTheDrawingItselfIsShown) {
  const Picture picture = Draw("<svg height=\"500\"><rect x=\"100\" y=\"300\" width=\"90\" height=\"45\"/></svg>");
  EXPECT_EQ(picture.width, 96);
  EXPECT_EQ(picture.height, 48);
  EXPECT_EQ(picture.At(48, 24), 0xFF000000u);
}

TEST_F(Render, NothingToSeeIsAnEmptyPage) {
  const Picture picture = Draw("<svg><defs/></svg>");
  EXPECT_EQ(picture.status, 0);
  EXPECT_EQ(picture.width, 378);
  EXPECT_EQ(picture.height, 378);
}

TEST_F(Render, ADocumentThatIsRefusedLeavesThePictureOfBefore) {
  WriteText(folder.File("out.png"), "before");
  const ToolResult result = RunRender({"-", "-o", "out.png"}, "no document");
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("standard input: not imported"), std::string::npos) << result.err;
  EXPECT_EQ(ReadText(folder.File("out.png")), "before");
}

TEST_F(Render, APageThatIsTooLargeIsAnErrorWithTheNameOfTheFile) {
  WriteText(folder.File("out.png"), "before");
  const ToolResult result = RunRender({"-", "-o", "out.png"}, "<svg width=\"1e6\" height=\"10\"><defs/></svg>");
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(result.err.starts_with("svgimport: standard input: the picture would be 1066667 by 11 pixels"))
      << result.err;
  EXPECT_EQ(ReadText(folder.File("out.png")), "before");
}

TEST_F(Render, AFileThatCannotBeOpenedIsSaidSo) {
  const ToolResult result = RunRender({"drawing.svg", "-o", "missing/out.png"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "svgimport: missing/out.png: No such file or directory\n");
}

TEST_F(Render, ADiskThatIsFullIsSaidSo) {
  const ToolResult result = RunRender({"drawing.svg", "-f", "png", "-o", "/dev/full"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "svgimport: /dev/full: No space left on device\n");
}

TEST_F(Render, AnErrorInTheFilterIsStatusThreeAndNoPicture) {
  WriteText(folder.File("records.svg"), kDrawing);
  const ToolResult result = RunRender({"records.svg", "-o", "out.png", "--filter",
                                       std::string(SVGIMPORT_LIB_DIR) + "/libsvgimport-throwing-filter.so"});
  EXPECT_EQ(result.status, 3);
  EXPECT_FALSE(std::filesystem::exists(folder.File("out.png")));
}

TEST_F(Render, WrongArgumentsAreStatusTwo) {
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{"drawing.svg"},
                                             {"-o", "out.png"},
                                             {"drawing.svg", "-o", "out.png", "--width", "0"},
                                             {"drawing.svg", "-o", "out.png", "--width", "-5"},
                                             {"drawing.svg", "-o", "out.png", "--width", "40000"},
                                             {"drawing.svg", "-o", "out.png", "--height", "wide"},
                                             {"drawing.svg", "-o", "out.png", "--zoom", "2", "--width", "10"},
                                             {"drawing.svg", "-o", "out.png", "--format", "gif"},
                                             {"drawing.svg", "-o", "out.png", "--background", "paleblack"},
                                             {"drawing.svg", "-o", "out.png", "--dpi", "nan"}}) {
    const ToolResult result = RunRender(wrong);
    EXPECT_EQ(result.status, 2) << wrong.back();
    EXPECT_NE(result.err, "") << wrong.back();
    EXPECT_FALSE(std::filesystem::exists(folder.File("out.png")));
  }
}

TEST_F(Render, HelpTellsThePageAndTheLimits) {
  const ToolResult result = RunRender({"--help"});
  EXPECT_EQ(result.status, 0);
  for (const char* part : {"--background", "32767", "10 by", "Examples:", "Exit status"}) {
    EXPECT_NE(result.out.find(part), std::string::npos) << part;
  }
}

TEST_F(Render, NoTemporaryFileIsLeft) {
  EXPECT_EQ(RunRender({"-", "-o", "out.png"}, kDrawing).status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(temporary.Path()));
}
