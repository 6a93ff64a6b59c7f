// The host's settings store, its measurement units and its base folder.
#pragma once

enum DataStoreType { kUserDataStore = 1 };

// The stored integer, or `fallback` when the store has none. `reserved` is always null.
int GetIntTavlor(const char16_t* section, const char16_t* key, int fallback, DataStoreType store,
                 const char16_t* reserved);

void WriteIntTavlor(const char16_t* section, const char16_t* key, int value, DataStoreType store);

// The code of the host's current units. An import runs under any code but 301.
int GetUnits();
void UdateUnits(int units);

// Writes the host's base folder, NUL-terminated, into a buffer of 260 units.
void LoadBaseDir(char16_t* buffer);
