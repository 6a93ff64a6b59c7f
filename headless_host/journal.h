// The call journal: one line of JSON for each call of the filter into the host. Internal to the host.
//
// A function of the host writes itself down with
//     if (journaling) JournalCall("GetUnits").Result(units);
// so that a journal that is off costs one test. Pointers and handles are not written; a null text counts as a pointer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/fills.h"
#include "host/matrix.h"
#include "host/transparency.h"

namespace headless {

[[gnu::visibility("hidden")]] extern bool journaling;

// The line of one call, written when the object goes.
class JournalCall {
 public:
  template <class... Arguments>
  explicit JournalCall(const char* name, const Arguments&... arguments) {
    Begin(name);
    (Argument(arguments), ...);
    line_ += ']';
  }
  ~JournalCall();
  JournalCall(const JournalCall&) = delete;
  JournalCall& operator=(const JournalCall&) = delete;

  void Result(bool value);
  void Result(std::int64_t value);
  void Result(std::uint32_t value) { Result(std::int64_t{value}); }
  void Result(int value) { Result(std::int64_t{value}); }

 private:
  void Begin(const char* name);
  void Separate();

  void Argument(bool value);
  void Argument(int value);
  void Argument(unsigned value);
  void Argument(unsigned long value);
  void Argument(float value);
  void Argument(double value);
  void Argument(const char* text);
  void Argument(const char16_t* text);
  void Argument(std::u16string_view text);
  void Argument(const TM& matrix);
  void Argument(const CSpotMarker& marker);
  void Argument(const CTransMarker& marker);

  std::string line_;
  bool first_ = true;
};

// Writes a call without a result. For calls that come a million times: they need no room for a line of the journal
// while it is off.
template <class... Arguments>
[[gnu::noinline, gnu::cold]] void WriteCall(const char* name, Arguments... arguments) {
  JournalCall(name, arguments...);
}

// Keeps the calls that the host makes itself out of the journal, as long as it lives.
class JournalPause {
 public:
  JournalPause() : wasOn_(journaling) { journaling = false; }
  ~JournalPause() { journaling = wasOn_; }
  JournalPause(const JournalPause&) = delete;
  JournalPause& operator=(const JournalPause&) = delete;

 private:
  bool wasOn_;
};

}  // namespace headless
