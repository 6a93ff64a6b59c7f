#include "run/settings.h"

#include "host/settings.h"
#include "run/import_run.h"

namespace {

constexpr char16_t kOwnSection[] = u"ZENTAL";
constexpr char16_t kSiblingSection[] = u"KORBIN";
constexpr char16_t kGroupingSection[] = u"Grouping";

constexpr double kPixelScale = 0.02822222222222222;
constexpr int kUnwantedUnits = 301;

std::int32_t Read(const char16_t* section, const char16_t* key, std::int32_t fallback) {
  return GetIntTavlor(section, key, fallback, kUserDataStore, nullptr);
}

}  // namespace

void ReadUnits() {
  if (Read(kOwnSection, u"Units", 1) == 1) run.UnitScale = kPixelScale;
}

// Two are fetched and dropped: the store sees the reads.
void ReadSettings() {
  run.DebugMode = Read(kOwnSection, u"debug", 0);
  Read(kSiblingSection, u"mode", 0);
  run.OverprintEnabled = Read(kSiblingSection, u"DoOverPrint", 1);
  Read(kSiblingSection, u"DoLayers", 1);
  run.GroupsEnabled = Read(kSiblingSection, u"DoGroups", 1);
  run.DefaultWindingRule = Read(kOwnSection, u"defaultWR", 1);
}

void ForceUnits() {
  if (GetUnits() != kUnwantedUnits) return;
  run.UnitsForced = 1;
  UdateUnits(kUnwantedUnits - 1);
}

void RestoreUnits() {
  if (run.UnitsForced == 1) UdateUnits(kUnwantedUnits);
}

void RequestClipGroupRefresh() {
  if (Read(kGroupingSection, u"CollapseDatabase", 1) != 0) {
    WriteIntTavlor(kGroupingSection, u"Discio Refresh ClipGroup", 1, kUserDataStore);
  }
}
