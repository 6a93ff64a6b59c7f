#include "host/composer.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "headless_host/host_state.h"
#include "headless_host/journal.h"

using headless::host;
using headless::HostParagraph;
using headless::JournalCall;
using headless::journaling;
using headless::OpenRecords;

namespace {

constexpr int kDone = 0;
constexpr int kFailed = -1;

void WireRecords(OpenRecords& records) {
  records.status.paragraphInfo = &records.info;
  records.status.lines = &records.lines;
  records.status.character = &records.character;
  records.status.wrapA = &records.wrap;
  records.status.textLine = &records.textLine;
}

// As if the records had belonged to another paragraph before.
void FillRecords(HostParagraph& paragraph) {
  constexpr int kUsed = 0xA5;
  OpenRecords& records = *paragraph.records;
  std::memset(&records.status, kUsed, sizeof records.status);
  std::memset(&records.info, kUsed, sizeof records.info);
  std::memset(&records.lines, kUsed, sizeof records.lines);
  std::memset(&records.character, kUsed, sizeof records.character);
  std::memset(&records.textLine, kUsed, sizeof records.textLine);
  std::memset(&paragraph.composed, kUsed, sizeof paragraph.composed);
  records.character.font = nullptr;
}

// FNV-1a, so that a name has the same number in every process; never 0.
std::uint32_t NumberOfName(std::u16string_view name) {
  std::uint32_t hash = 2166136261u;
  for (const char16_t unit : name) {
    hash = (hash ^ (unit & 0xFFu)) * 16777619u;
    hash = (hash ^ (unit >> 8)) * 16777619u;
  }
  return hash == 0 ? 1 : hash;
}

FontRecord* Record(std::u16string_view name) { return headless::fontTable.Record(name); }

// The font that stands in for one that is missing; null when there is none.
FontRecord* Replacement(std::u16string_view name) {
  switch (host.fontMode) {
    case HostFontMode::kAny:
      return Record(name);
    case HostFontMode::kSystem: {
      const std::u16string family = headless::BestSystemFamily(name);
      return family.empty() ? nullptr : Record(family);
    }
    case HostFontMode::kListed:
      return host.replacementFont.empty() ? nullptr : Record(host.replacementFont);
    case HostFontMode::kNone:
      break;
  }
  return nullptr;
}

bool IsFound(int kind, std::u16string_view name) {
  constexpr int kFromList = 2;
  switch (host.fontMode) {
    case HostFontMode::kAny:
      return true;
    case HostFontMode::kSystem:
      return headless::SystemHasFamily(name);
    case HostFontMode::kListed:
      return kind != kFromList ||
             std::find(host.listedFonts.begin(), host.listedFonts.end(), name) != host.listedFonts.end();
    case HostFontMode::kNone:
      break;
  }
  return false;
}

}  // namespace

void SetOpenParagraphInfo(ParagraphHandle* handle, int option) {
  if (journaling) JournalCall("SetOpenParagraphInfo", option);
  *handle = ParagraphHandle{};
}

int OpenParagraph(int kind, ParagraphHandle* handle, const ParagraphPosition* position, int option) {
  const int result = host.failures.openParagraph ? kFailed : kDone;
  if (journaling) JournalCall("OpenParagraph", kind, option).Result(result);
  if (result == kFailed) return result;

  auto paragraph = std::make_unique<HostParagraph>();
  OpenRecords& records = *paragraph->records;
  paragraph->composed.placement = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};
  if (host.failures.usedRecords) FillRecords(*paragraph);
  WireRecords(records);
  paragraph->state.tag = ++host.lastParagraphTag;
  paragraph->state.position = *position;
  records.lines.listFlag = host.failures.listFlag ? 1 : 0;

  handle->tag = paragraph->state.tag;
  handle->paragraph = &paragraph->composed;
  handle->status = &records.status;
  host.openParagraph = paragraph.get();
  host.paragraphs.Add(std::move(paragraph));
  ++headless::liveCounts.paragraphs;
  return result;
}

ParagraphStatus* GetCurrentParagraphStatusAddress() {
  if (journaling) JournalCall("GetCurrentParagraphStatusAddress");
  return host.openParagraph == nullptr ? nullptr : &host.openParagraph->records->status;
}

int CloseParagraph(int finish, ParagraphHandle* handle) {
  HostParagraph* known = host.paragraphs.Find(handle->paragraph);
  const bool fails = known == nullptr || (finish != 0 && host.failures.closeParagraph);
  const int result = fails ? kFailed : kDone;
  if (journaling) JournalCall("CloseParagraph", finish).Result(result);
  if (fails) return result;

  if (host.openParagraph == known) host.openParagraph = nullptr;
  if (finish != 0) {
    if (auto records = known->Close()) host.lastRecords = std::move(records);
  } else {
    host.paragraphs.Free(handle->paragraph);
    --headless::liveCounts.paragraphs;
    handle->paragraph = nullptr;
    handle->status = nullptr;
  }
  return result;
}

void SetTextLineJustifyMode(paragraphStruct*, list_s*, int mode) {
  if (journaling) JournalCall("SetTextLineJustifyMode", mode);
}

void SetTextLineJustification(paragraphStruct* paragraph, list_s*, int justification) {
  if (journaling) JournalCall("SetTextLineJustification", justification);
  if (host.openParagraph != nullptr && paragraph == &host.openParagraph->records->info) {
    host.openParagraph->state.justification = justification;
  }
}

FontRecord* AddFont(std::uint16_t code, int kind, const char16_t* name, int reserved, int force) {
  if (journaling) JournalCall("AddFont", static_cast<int>(code), kind, name, reserved, force);
  if (host.failures.addFont) return nullptr;
  const std::u16string_view asked = name;
  if (IsFound(kind, asked)) return Record(asked);
  return force != 0 ? Replacement(asked) : nullptr;
}

std::uint32_t GetReplacedFontID(const char16_t* name, int style, int weight, FontRecord*) {
  const std::uint32_t id = NumberOfName(name);
  if (journaling) JournalCall("GetReplacedFontID", name, style, weight).Result(id);
  return id;
}

void edPasteString(const char16_t* text, int length, int mode, void*, bool flag) {
  const std::u16string_view pasted(text, static_cast<std::size_t>(std::max(length, 0)));
  if (journaling) JournalCall("edPasteString", pasted, length, mode, flag);
  if (host.openParagraph != nullptr) host.openParagraph->Paste(pasted);
}

void WrapLine(TextLine*, void*, std::uint32_t first, std::uint32_t last, const char* breakCharacters) {
  if (journaling) JournalCall("WrapLine", first, last, breakCharacters);
}

int edCalcCompression(list_s*) {
  if (journaling) JournalCall("edCalcCompression").Result(host.compression);
  return host.compression;
}

CFontReplacement::CFontReplacement(const char* kind) : hostData{}, skipText(0), hostTail{} {
  if (journaling) JournalCall("CFontReplacement::CFontReplacement", kind);
  skipText = host.failures.skipText ? 1 : 0;
  ++headless::liveCounts.fontReplacements;
}

CFontReplacement::~CFontReplacement() {
  if (journaling) JournalCall("CFontReplacement::~CFontReplacement");
  --headless::liveCounts.fontReplacements;
}

FontRecord* ChooseReplacementFont(CFontReplacement*, const char16_t* name, int style, int weight) {
  if (journaling) JournalCall("ChooseReplacementFont", name, style, weight);
  return host.failures.chooseReplacementFont ? nullptr : Replacement(name);
}

std::optional<ParagraphView> ViewParagraph(const ComposedParagraph* paragraph) {
  const HostParagraph* known = host.paragraphs.Find(paragraph);
  if (known == nullptr) return std::nullopt;
  return known->View();
}

std::size_t ParagraphBytes(const ComposedParagraph* paragraph) {
  HostParagraph* known = host.paragraphs.Find(paragraph);
  return known == nullptr ? 0 : known->Bytes();
}
