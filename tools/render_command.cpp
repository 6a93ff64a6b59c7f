#include "tools/render_command.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "headless_host/headless_host.h"
#include "preview/image_file.h"
#include "tools/guarded_child.h"
#include "tools/import_document.h"
#include "tools/option_values.h"
#include "tools/output_file.h"
#include "tools/render_document.h"

namespace {

using preview::ImageFormat;

struct RenderOptions {
  ImportOptions import;
  Limits limits;
  std::string output;
  std::string format;
  double width = 0.0, height = 0.0;  // 0: not given
  std::string background = "none";
  preview::ImageOptions image;
};

bool IsTransparent(const std::string& background) { return background == "none" || background == "transparent"; }

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

// "png", "pdf" or "svg": as asked for, or by the extension of the output. Empty if neither tells.
std::string FormatName(const RenderOptions& options) {
  if (!options.format.empty()) return options.format;
  if (options.output == "-") return "png";
  const std::string name = LowerCase(options.output);
  for (const char* format : {"png", "pdf", "svg"}) {
    if (name.ends_with(std::string(".") + format)) return format;
  }
  return {};
}

ImageFormat FormatNamed(const std::string& name) {
  if (name == "pdf") return ImageFormat::kPdf;
  return name == "svg" ? ImageFormat::kSvg : ImageFormat::kPng;
}

// A file in memory.
class MemoryFile {
 public:
  MemoryFile() : stream_(open_memstream(&bytes_, &size_)) {}
  ~MemoryFile() {
    Close();
    std::free(bytes_);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::FILE* Stream() { return stream_; }  // null when there is no memory for it
  // False when not everything found room. Bytes() holds from here on.
  bool Close() {
    std::FILE* stream = stream_;
    stream_ = nullptr;
    return stream == nullptr || std::fclose(stream) == 0;
  }
  std::string_view Bytes() const { return {bytes_, size_}; }

 private:
  char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
};

int DrawDocument(const RenderOptions& options, const ImportedDocument& document) {
  document.PrepareHost();
  preview::StreamDrawer drawer;
  if (const int status = document.Import([&](const ImportCommand& command) {
        drawer.Take(command);
        ReleaseCommand(command);
      });
      status != kExitDone) {
    return status;
  }
  MemoryFile picture;
  if (picture.Stream() == nullptr) throw std::bad_alloc();
  const std::string failure = WriteDocumentImage(document, drawer, options.image, picture.Stream());
  if (!picture.Close()) throw std::bad_alloc();
  if (!failure.empty()) {
    Complain(document.ShownName() + ": " + failure);
    return kExitNotImported;
  }

  // Only now, so that a document of which there is no picture leaves one of before as it is.
  OutputFile output;
  if (!output.Open(options.output)) {
    Complain(options.output + ": " + std::strerror(errno));
    return kExitUsage;
  }
  std::fwrite(picture.Bytes().data(), 1, picture.Bytes().size(), output.Stream());
  if (output.Close()) return kExitDone;
  Complain(output.Name() + ": " + std::strerror(errno));
  return kExitNotImported;
}

int Render(RenderOptions& options) {
  const std::string format = FormatName(options);
  if (format.empty()) {
    Complain(options.output + ": the name does not end in .png, .pdf or .svg; --format tells what to write");
    return kExitUsage;
  }
  preview::ImageOptions& image = options.image;
  image.format = FormatNamed(format);
  if (options.width > 0.0) image.width = options.width;
  if (options.height > 0.0) image.height = options.height;
  if (!IsTransparent(options.background)) image.background = options.background;

  const ImportedDocument document(options.import);
  if (document.Status() != kExitDone) return document.Status();
  return RunGuarded(options.limits, document.ShownName(), [&] { return DrawDocument(options, document); });
}

// A number above 0 and not above `largest`.
CLI::Option* AddMeasure(CLI::App& app, const std::string& name, double& number, double largest,
                        const std::string& description) {
  return AddNumberOption(app, name, number, description)
      ->type_name("N")
      ->check([name, largest](const std::string& text) {
        const double value = std::strtod(text.c_str(), nullptr);
        return value > 0.0 && value <= largest
                   ? std::string()
                   : "'" + text + "' is not above 0 and at most " + CLI::detail::to_string(largest);
      });
}

}  // namespace

void AddRenderCommand(CLI::App& app, int& status) {
  CLI::App* render = app.add_subcommand("render", "Imports a document and draws what came of it as PNG, PDF or SVG");
  auto options = std::make_shared<RenderOptions>();
  AddImportOptions(*render, options->import);
  render->add_option("-o,--output", options->output, "The picture; - is standard output")
      ->type_name("FILE")
      ->required();
  render
      ->add_option("-f,--format", options->format,
                   "What to write; without it the extension of the output decides, and standard output gets a PNG")
      ->type_name("png|pdf|svg")
      ->check(CLI::IsMember({"png", "pdf", "svg"}).description(""));
  CLI::Option* width = AddMeasure(*render, "-w,--width", options->width, preview::kMaxSide,
                                  "Width of the picture: pixels, of a PDF points; the height follows unless given");
  CLI::Option* height = AddMeasure(*render, "--height", options->height, preview::kMaxSide,
                                   "Height of the picture; the width follows unless given, and both stretch it");
  AddMeasure(*render, "-z,--zoom", options->image.zoom, 1e6, "Makes the picture so many times as large as the page")
      ->excludes(width)
      ->excludes(height);
  AddMeasure(*render, "--dpi", options->image.dpi, 1e5,
             "Pixels to an inch of the page, 96 unless given; a PDF keeps the size of the page");
  render
      ->add_option("-b,--background", options->background,
                   "Colour under the drawing: none, #rgb, #rrggbb, #rrggbbaa or a name such as white")
      ->type_name("COLOUR")
      ->capture_default_str()
      ->check([](const std::string& text) {
        return IsTransparent(text) || preview::IsColour(text) ? std::string() : "'" + text + "' is not a colour";
      });
  AddLimitOptions(*render, options->limits);
  render->footer(
      "The page is the width and height of the root element, as numbers times the import's unit (1/90 inch, or a\n"
      "millimetre), whatever their own units say; where one of them is missing, it is what the drawing covers, and 10 "
      "by\n"
      "10 centimetres if there is nothing to see. No side of a picture can be longer than 32767 pixels or points, and\n"
      "no PNG larger than 100 million pixels.\n\n"
      "Import and drawing run in a process of their own. A picture of before is replaced only by one that was drawn.\n"
      "Exit status: 0 drawn, 1 not imported, drawn or written, 2 wrong arguments or files, 3 an error left the "
      "filter,\n"
      "or the work crashed or went beyond a limit.\n\n"
      "Examples:\n"
      "  svgimport render drawing.svg -o drawing.png\n"
      "  svgimport render --width 800 --background white drawing.svg -o drawing.png\n"
      "  svgimport render --fonts system drawing.svg -o drawing.pdf\n"
      "  svgimport render --format svg - -o - < drawing.svg > imported.svg");
  render->callback([options, &status] { status = Render(*options); });
}
