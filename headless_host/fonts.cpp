#include "headless_host/fonts.h"

#include <fontconfig/fontconfig.h>
#include <cstring>
#include <memory>

#include "headless_host/inspection.h"
#include "headless_host/sanitizer.h"
#include "headless_host/text.h"

#if HEADLESS_HOST_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace headless {
namespace {

struct PatternDeleter {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

struct FontSetDeleter {
  void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
using FontSet = std::unique_ptr<FcFontSet, FontSetDeleter>;

struct ObjectSetDeleter {
  void operator()(FcObjectSet* set) const { FcObjectSetDestroy(set); }
};
using ObjectSet = std::unique_ptr<FcObjectSet, ObjectSetDeleter>;

bool StartFontconfig() {
#if HEADLESS_HOST_ADDRESS_SANITIZER
  const __lsan::ScopedDisabler ignoreLeaks;  // the library forgets a pattern of its own while it reads its files
#endif
  return FcInit() != FcFalse;
}

// A pattern that asks for the family; null when fontconfig is not to be had.
Pattern FamilyPattern(std::u16string_view name) {
  if (!StartFontconfig()) return nullptr;
  Pattern pattern(FcPatternCreate());
  if (pattern != nullptr) {
    // The byte type of fontconfig differs from that of the text in its sign alone.
    const std::string family = Utf8FromText(name);
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
  }
  return pattern;
}

}  // namespace

FontRecord* FontTable::Record(std::u16string_view name) {
  const auto known = fonts_.find(name);
  if (known != fonts_.end()) return &known->second;
  HostFont& font = fonts_.try_emplace(std::u16string(name)).first->second;
  std::memset(static_cast<FontRecord*>(&font), 0, sizeof(FontRecord));
  font.name = name;
  font.fontCode = 1;
  return &font;
}

bool SystemHasFamily(std::u16string_view name) {
  if (name.empty()) return false;
  const Pattern pattern = FamilyPattern(name);
  if (pattern == nullptr) return false;
  const ObjectSet objects(FcObjectSetBuild(FC_FAMILY, static_cast<char*>(nullptr)));
  if (objects == nullptr) return false;
  const FontSet found(FcFontList(nullptr, pattern.get(), objects.get()));
  return found != nullptr && found->nfont > 0;
}

std::u16string BestSystemFamily(std::u16string_view name) {
  const Pattern pattern = FamilyPattern(name);
  if (pattern == nullptr) return {};
  if (FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern) == FcFalse) return {};
  FcDefaultSubstitute(pattern.get());
  FcResult result = FcResultNoMatch;
  const Pattern match(FcFontMatch(nullptr, pattern.get(), &result));
  FcChar8* family = nullptr;
  if (match == nullptr || FcPatternGetString(match.get(), FC_FAMILY, 0, &family) != FcResultMatch) return {};
  return TextFromUtf8(reinterpret_cast<const char*>(family));
}

}  // namespace headless

std::u16string_view FontName(const FontRecord& font) { return static_cast<const headless::HostFont&>(font).name; }
