#include "host/settings.h"

#include <algorithm>

#include "headless_host/host_state.h"
#include "headless_host/journal.h"
#include "headless_host/limits.h"

using headless::host;
using headless::JournalCall;
using headless::journaling;

int GetIntTavlor(const char16_t* section, const char16_t* key, int fallback, DataStoreType store,
                 const char16_t* reserved) {
  const int value = HostSetting(section, key).value_or(fallback);
  if (journaling) JournalCall("GetIntTavlor", section, key, fallback, static_cast<int>(store), reserved).Result(value);
  return value;
}

void WriteIntTavlor(const char16_t* section, const char16_t* key, int value, DataStoreType store) {
  if (journaling) JournalCall("WriteIntTavlor", section, key, value, static_cast<int>(store));
  SetHostSetting(section, key, value);
}

int GetUnits() {
  if (journaling) JournalCall("GetUnits").Result(host.units);
  return host.units;
}

void UdateUnits(int units) {
  if (journaling) JournalCall("UdateUnits", units);
  host.units = units;
}

void LoadBaseDir(char16_t* buffer) {
  if (journaling) JournalCall("LoadBaseDir");
  const std::size_t length = std::min(host.baseDir.size(), kBaseDirUnits - 1);
  std::copy_n(host.baseDir.data(), length, buffer);
  buffer[length] = u'\0';
}
