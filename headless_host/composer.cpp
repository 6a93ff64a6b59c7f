#include "host/composer.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "headless_host/host_state.h"
#include "headless_host/journal.h"

using headless::host;
using headless::HostParagraph;
using headless::JournalCall;
using headless::journaling;

namespace {

constexpr int kDone = 0;
constexpr int kFailed = -1;

void WireRecords(HostParagraph& paragraph) {
  paragraph.status.paragraphInfo = &paragraph.info;
  paragraph.status.lines = &paragraph.lines;
  paragraph.status.character = &paragraph.character;
  paragraph.status.wrapA = &paragraph.wrap;
  paragraph.status.textLine = &paragraph.textLine;
}

// As if the records had belonged to another paragraph before.
void FillRecords(HostParagraph& paragraph) {
  constexpr int kUsed = 0xA5;
  std::memset(&paragraph.status, kUsed, sizeof paragraph.status);
  std::memset(&paragraph.info, kUsed, sizeof paragraph.info);
  std::memset(&paragraph.lines, kUsed, sizeof paragraph.lines);
  std::memset(&paragraph.character, kUsed, sizeof paragraph.character);
  std::memset(&paragraph.textLine, kUsed, sizeof paragraph.textLine);
  std::memset(&paragraph.composed, kUsed, sizeof paragraph.composed);
  paragraph.character.font = nullptr;
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

bool IsFound(int kind, const std::u16string& name) {
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
  paragraph->composed.placement = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};
  if (host.failures.usedRecords) FillRecords(*paragraph);
  WireRecords(*paragraph);
  paragraph->tag = ++host.lastParagraphTag;
  paragraph->position = *position;
  paragraph->lines.listFlag = host.failures.listFlag ? 1 : 0;

  handle->tag = paragraph->tag;
  handle->paragraph = &paragraph->composed;
  handle->status = &paragraph->status;
  host.openParagraph = paragraph.get();
  const ComposedParagraph* address = &paragraph->composed;
  host.paragraphs.emplace(address, std::move(paragraph));
  ++headless::liveCounts.paragraphs;
  return result;
}

ParagraphStatus* GetCurrentParagraphStatusAddress() {
  if (journaling) JournalCall("GetCurrentParagraphStatusAddress");
  return host.openParagraph == nullptr ? nullptr : &host.openParagraph->status;
}

int CloseParagraph(int finish, ParagraphHandle* handle) {
  const auto known = host.paragraphs.find(handle->paragraph);
  const bool fails = known == host.paragraphs.end() || (finish != 0 && host.failures.closeParagraph);
  const int result = fails ? kFailed : kDone;
  if (journaling) JournalCall("CloseParagraph", finish).Result(result);
  if (fails) return result;

  if (host.openParagraph == known->second.get()) host.openParagraph = nullptr;
  if (finish == 0) {
    host.paragraphs.erase(known);
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
  if (host.openParagraph != nullptr && paragraph == &host.openParagraph->info) {
    host.openParagraph->justification = justification;
  }
}

FontRecord* AddFont(std::uint16_t code, int kind, const char16_t* name, int reserved, int force) {
  if (journaling) JournalCall("AddFont", static_cast<int>(code), kind, name, reserved, force);
  if (host.failures.addFont) return nullptr;
  const std::u16string asked = name;
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
  if (host.openParagraph == nullptr) return;
  const CharacterState& character = host.openParagraph->character;
  TextRunView run{std::u16string(pasted), std::nullopt, character.height};
  if (character.font != nullptr) run.font = FontName(*character.font);
  host.openParagraph->runs.push_back(std::move(run));
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
  const auto known = host.paragraphs.find(paragraph);
  if (known == host.paragraphs.end()) return std::nullopt;
  const HostParagraph& own = *known->second;
  return ParagraphView{own.tag,
                       own.position,
                       own.justification,
                       own.textLine.originX,
                       own.textLine.originY,
                       own.character.height,
                       own.character.charScale,
                       own.character.fontCode,
                       own.character.replacedFontId,
                       own.textLine.compression,
                       own.textLine.lineFlags,
                       own.textLine.lineMode,
                       own.lines.listMeasure,
                       own.status.statusLimit,
                       own.info.paragraphOption,
                       own.composed.placement,
                       own.runs};
}
