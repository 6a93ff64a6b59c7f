// Fuzzes whole imports under all settings of the host and with its failures. The input is a line of switches, each a
// byte of which the lowest bits count, and the file behind it; what the line lacks stays at the default.

#include <string_view>

#include "fuzz/support/fuzz_run.h"
#include "headless_host/headless_host.h"

namespace {

// Takes the bytes of the line one after the other.
class Switches {
 public:
  explicit Switches(std::string_view line) : line_(line) {}
  bool given() const { return !line_.empty(); }
  unsigned Next() {
    if (line_.empty()) return 0;
    const auto byte = static_cast<unsigned char>(line_[0]);
    line_.remove_prefix(1);
    return byte;
  }
  bool Flag() { return (Next() & 1) != 0; }

 private:
  std::string_view line_;
};

struct Setting {
  const char16_t* section;
  const char16_t* key;
};

// The trace is left alone: its log is a file outside of the folder.
constexpr Setting kSettings[] = {
    {u"ZENTAL", u"Units"}, {u"KORBIN", u"DoOverPrint"}, {u"KORBIN", u"DoGroups"},          {u"ZENTAL", u"defaultWR"},
    {u"KORBIN", u"mode"},  {u"KORBIN", u"DoLayers"},    {u"Grouping", u"CollapseDatabase"}};

void SwitchHost(std::string_view line) {
  Switches switches(line);
  for (const Setting& setting : kSettings) {
    if (switches.given()) SetHostSetting(setting.section, setting.key, static_cast<int>(switches.Next() & 3));
  }
  if (switches.Flag()) SetHostUnits(301);
  switch (switches.Next() & 3) {
    case 1:
      SetHostFontMode(HostFontMode::kNone);
      break;
    case 2:
      SetHostFontMode(HostFontMode::kListed);
      SetListedFonts({u"arial", u"Times"}, u"Courier");
      break;
    default:
      SetHostFontMode(HostFontMode::kAny);
  }
  HostFailures& failures = HostFailureSwitches();
  for (bool HostFailures::*failure :
       {&HostFailures::openParagraph, &HostFailures::closeParagraph, &HostFailures::addFont,
        &HostFailures::chooseReplacementFont, &HostFailures::listFlag, &HostFailures::skipText,
        &HostFailures::newBitmap, &HostFailures::createBitmap}) {
    failures.*failure = switches.Flag();
  }
  // Which allocation fails, 0 for none.
  const unsigned high = switches.Next() & 15;
  FailAllocation(high * 16 + (switches.Next() & 15));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartFresh();
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t end = input.find('\n');
  if (end == input.npos) return -1;
  SwitchHost(input.substr(0, end));
  ImportDocument(input.substr(end + 1));
  return 0;
}
