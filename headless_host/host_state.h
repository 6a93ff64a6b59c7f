// Everything that the reference host remembers, except what lives in the objects it hands out. Internal to the host.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "headless_host/fonts.h"
#include "headless_host/headless_host.h"
#include "headless_host/paragraph.h"
#include "headless_host/text.h"

namespace headless {

using TextPair = std::pair<std::u16string, std::u16string>;
using TextPairView = std::pair<std::u16string_view, std::u16string_view>;

struct TextPairLess {
  using is_transparent = void;
  template <class One, class Other>
  bool operator()(const One& one, const Other& other) const {
    const int order = CompareTexts(one.first, other.first);
    return order != 0 ? order < 0 : CompareTexts(one.second, other.second) < 0;
  }
};

struct HostState {
  std::map<TextPair, int, TextPairLess> settings;  // by section and key
  int units = 300;
  std::u16string baseDir;

  std::map<TextPair, void*, TextPairLess> windows;  // by class and title
  HostAllocator* registeredAllocator = nullptr;

  HostFontMode fontMode = HostFontMode::kAny;
  std::vector<std::u16string> listedFonts;
  std::u16string replacementFont;
  int compression = 0;

  std::string imageFolder;
  HostFailures failures;
  std::vector<ShownMessage> messages;
  std::vector<AskedFile> askedFiles;
  HostUserInterface userInterface;

  bool hidesGeneratedNames = false;
  std::vector<std::u16string> generatedFolders;

  std::uint32_t lastParagraphTag = 0;
  ParagraphTable paragraphs;
  std::unique_ptr<OpenRecords> lastRecords;  // of the paragraph closed last, which may still be read
  HostParagraph* openParagraph = nullptr;    // has its records
};

extern HostState host;

// Kept apart from the state, since neither goes back with a reset.
extern HostLiveCounts liveCounts;
extern FontTable fontTable;

}  // namespace headless
