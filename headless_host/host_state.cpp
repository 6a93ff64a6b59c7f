#include "headless_host/host_state.h"

#include <unistd.h>
#include <charconv>

#include "headless_host/file_access.h"
#include "headless_host/pool_allocator.h"
#include "headless_host/text.h"

namespace headless {

HostLiveCounts liveCounts;
FontTable fontTable;

namespace {

HostState FreshState() {
  HostState state;
  state.baseDir = TextFromNativePath(SystemTemporaryFolder());
  state.registeredAllocator = DefaultHostAllocator();
  state.windows[{std::u16string(kAllocatorWindowClass), AllocatorWindowTitle()}] = state.registeredAllocator;
  return state;
}

}  // namespace

HostState host = FreshState();

}  // namespace headless

using headless::host;

void ResetHost() {
  StopJournal();
  FailAllocation(0);
  headless::liveCounts.paragraphs -= host.paragraphs.size();
  host = headless::FreshState();
}

const HostLiveCounts& LiveCounts() {
  headless::liveCounts.blocks = headless::poolAllocator.LiveBlocks();
  return headless::liveCounts;
}

std::u16string AllocatorWindowTitle() {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<unsigned>(getpid()), 16);
  return u"MemAllocWnd" + std::u16string(digits, end.ptr);
}

void RegisterHostWindow(std::u16string_view className, std::u16string_view title, void* pointer) {
  headless::TextPair name{className, title};
  if (className == kAllocatorWindowClass && title == AllocatorWindowTitle()) {
    host.registeredAllocator = static_cast<HostAllocator*>(pointer);
  }
  if (pointer == nullptr) {
    host.windows.erase(name);
  } else {
    host.windows[std::move(name)] = pointer;
  }
}

void SetHostSetting(std::u16string_view section, std::u16string_view key, int value) {
  const auto stored = host.settings.find(headless::TextPairView(section, key));
  if (stored != host.settings.end()) {
    stored->second = value;
  } else {
    host.settings.emplace(headless::TextPair(section, key), value);
  }
}

std::optional<int> HostSetting(std::u16string_view section, std::u16string_view key) {
  const auto stored = host.settings.find(headless::TextPairView(section, key));
  if (stored == host.settings.end()) return std::nullopt;
  return stored->second;
}

void SetHostUnits(int units) { host.units = units; }
int HostUnits() { return host.units; }
void SetHostBaseDir(std::u16string_view folder) { host.baseDir = folder; }
void SetHostFontMode(HostFontMode mode) { host.fontMode = mode; }

void SetListedFonts(std::vector<std::u16string> names, std::u16string replacement) {
  host.listedFonts = std::move(names);
  host.replacementFont = std::move(replacement);
}

void SetHostCompression(int compression) { host.compression = compression; }
void SetHostImageFolder(std::string folder) { host.imageFolder = std::move(folder); }
HostFailures& HostFailureSwitches() { return host.failures; }
const std::vector<ShownMessage>& ShownMessages() { return host.messages; }
const std::vector<AskedFile>& AskedFiles() { return host.askedFiles; }
const HostUserInterface& HostInterfaceState() { return host.userInterface; }
