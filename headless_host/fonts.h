// The font records of the reference host: one for each name that was ever found, for the life of the process, since a
// caller may keep the address. Internal to the host.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "headless_host/text.h"
#include "host/composer.h"

namespace headless {

struct HostFont : FontRecord {
  std::u16string name;
};

class FontTable {
 public:
  // The record for the name, made now if there is none. All have the code 1, so that what a paragraph shows does not
  // depend on the fonts that were found before.
  FontRecord* Record(std::u16string_view name);

 private:
  std::map<std::u16string, HostFont, TextLess> fonts_;
};

// Fontconfig's answers. Fontconfig is not touched before the first of these calls.
bool SystemHasFamily(std::u16string_view name);
// The family that fontconfig offers in place of the name; empty if it has none at all.
std::u16string BestSystemFamily(std::u16string_view name);

}  // namespace headless
