// What the tests of texts share: paragraphs as the composer holds them, the calls that reached it, a paragraph opened
// by the test itself, and a font manager that does as it is told.
#pragma once

#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/composer.h"
#include "host/font_manager.h"
#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"
#include "tests/support/host_journal.h"
#include "text/paragraph.h"

class TextTest : public FilterTest {
 protected:
  // The paragraphs of the last Drain or import, in the order of the stream.
  std::vector<ParagraphView> Paragraphs() const {
    std::vector<ParagraphView> views;
    for (const ImportCommand& command : commands) {
      if (command.key != KEY_PARA) continue;
      const auto view = ViewParagraph(static_cast<const ParagraphRecord*>(command.data)->paragraph);
      if (view) views.push_back(*view);
    }
    return views;
  }

  // The text of each paste, in order, of all paragraphs.
  Lines Pasted() const {
    Lines texts;
    for (const ParagraphView& paragraph : Paragraphs()) {
      for (const TextRunView& part : paragraph.runs) texts.push_back(Utf8FromWide(part.text));
    }
    return texts;
  }

  // Each paste as text|font|height.
  Lines Runs() const {
    Lines lines;
    for (const ParagraphView& paragraph : Paragraphs()) {
      for (const TextRunView& part : paragraph.runs) {
        const std::string font = part.font ? Utf8FromWide(*part.font) : "none";
        lines.push_back(Utf8FromWide(part.text) + '|' + font + '|' + ShowNumber(part.height));
      }
    }
    return lines;
  }

  std::string FontName() const { return Utf8FromWide(run.text.FontName); }

  // Composes the characters in the text state that stands; the machine must have been started. Neither a font manager
  // nor a replacement object is there unless the test has made one.
  Lines Compose(std::u16string_view characters) {
    run.text.TextBuffer = characters;
    ComposeParagraph();
    return Drain();
  }

  // A fresh run imports one text element with these attributes; 100 is the document's height and kScale the unit scale.
  Lines ImportText(std::string_view attributes, std::string_view content = "a") {
    return ImportTexts("<text " + std::string(attributes) + '>' + std::string(content) + "</text>");
  }
  // The same with these elements in the root.
  Lines ImportTexts(std::string_view elements) {
    ResetImportRun();
    return Import("<svg xmlns=\"http://www.w3.org/2000/svg\" height=\"100\">" + std::string(elements) + "</svg>");
  }
  static constexpr double kScale = 0.02822222222222222;

  void MakeReplacementObject() { run.FontReplacementObject = std::make_unique<CFontReplacement>("svg"); }
};

// The calls into the host since the last question, without those for memory and without the questions for the status of
// the open paragraph, whose place the filter may choose.
inline Lines ComposerCalls(HostJournal& journal) {
  return Without(Without(journal.Take(), "MemInitBaseT"), "GetCurrentParagraphStatusAddress");
}

// The lines from the first on that begins with `start`.
inline Lines From(std::string_view start, const Lines& lines) {
  return Lines(lines.begin() + static_cast<std::ptrdiff_t>(FindLine(lines, start)), lines.end());
}

// A paragraph that the test opens and abandons.
class OpenedParagraph {
 public:
  OpenedParagraph() {
    const ParagraphPosition position = {};
    SetOpenParagraphInfo(&handle_, 0);
    OpenParagraph(4, &handle_, &position, 0);
  }
  ~OpenedParagraph() { CloseParagraph(0, &handle_); }
  OpenedParagraph(const OpenedParagraph&) = delete;
  OpenedParagraph& operator=(const OpenedParagraph&) = delete;

  ParagraphStatus* status() const { return handle_.status; }
  CharacterState& character() const { return *handle_.status->character; }

 private:
  ParagraphHandle handle_ = {};
};

// A font manager in the run's link, as long as it lives. It grants the kinds of request that it is told to.
class FontManagerDouble final : public FontManagerSupport {
 public:
  explicit FontManagerDouble(std::set<int> grantedKinds) : granted_(std::move(grantedKinds)) {
    link_.iface = this;
    run.fontManager.link = &link_;
    run.FontManagerLinked = 1;
  }
  ~FontManagerDouble() {
    run.fontManager.link = nullptr;
    run.FontManagerLinked = 0;
  }
  FontManagerDouble(const FontManagerDouble&) = delete;
  FontManagerDouble& operator=(const FontManagerDouble&) = delete;

  std::function<void()> whenAsked;  // called with each request, if there is something to call
  Lines requests;                   // kind, name and option of each request
  Lines otherCalls;                 // place and argument of each other operation called

  std::uint32_t Operation11(std::uintptr_t argument) override {
    const auto* request = reinterpret_cast<const unsigned char*>(argument);
    char16_t name[802];
    std::memcpy(name, request + 1032, sizeof name);
    std::uint32_t option = 0;
    std::memcpy(&option, request + 2636, sizeof option);
    const int kind = request[1024];
    requests.push_back(std::to_string(kind) + ' ' + Utf8FromWide(name) + ' ' + std::to_string(option));
    if (whenAsked) whenAsked();
    return granted_.contains(kind) ? 0 : 0x80000000;
  }

  std::uint32_t Operation0(std::uintptr_t a) override { return Other(0, a); }
  std::uint32_t Operation1(std::uintptr_t a) override { return Other(1, a); }
  std::uint32_t Operation2(std::uintptr_t a) override { return Other(2, a); }
  std::uint32_t Operation3(std::uintptr_t a) override { return Other(3, a); }
  std::uint32_t Operation4(std::uintptr_t a) override { return Other(4, a); }
  std::uint32_t Operation5(std::uintptr_t a) override { return Other(5, a); }
  std::uint32_t Operation6(std::uintptr_t a) override { return Other(6, a); }
  std::uint32_t Operation7(std::uintptr_t a) override { return Other(7, a); }
  std::uint32_t Operation8(std::uintptr_t a) override { return Other(8, a); }
  std::uint32_t Operation9(std::uintptr_t a) override { return Other(9, a); }
  std::uint32_t Operation10(std::uintptr_t a) override { return Other(10, a); }
  std::uint32_t Operation12(std::uintptr_t a) override { return Other(12, a); }
  std::uint32_t Operation13(std::uintptr_t a) override { return Other(13, a); }
  std::uint32_t Operation14(std::uintptr_t a) override { return Other(14, a); }
  std::uint32_t Operation15(std::uintptr_t a) override { return Other(15, a); }
  std::uint32_t Operation16(std::uintptr_t a) override { return Other(16, a); }
  std::uint32_t Operation17(std::uintptr_t a) override { return Other(17, a); }
  std::uint32_t Operation18(std::uintptr_t a) override { return Other(18, a); }
  std::uint32_t Operation19(std::uintptr_t a) override { return Other(19, a); }
  std::uint32_t Operation20(std::uintptr_t a) override { return Other(20, a); }
  std::uint32_t Operation21(std::uintptr_t a) override { return Other(21, a); }

 private:
  std::uint32_t Other(int place, std::uintptr_t argument) {
    otherCalls.push_back(std::to_string(place) + ' ' + std::to_string(argument));
    return 0;
  }

  std::set<int> granted_;
  DynamicLink<FontManagerSupport> link_;
};
