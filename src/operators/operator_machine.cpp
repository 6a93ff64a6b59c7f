#include "operators/operator_machine.h"

#include "filter_limits.h"
#include "operators/operand_stack.h"
#include "run/import_run.h"
#include "run/number_text.h"

// The unit behind a number is swallowed whatever it is: "12 M" loses its blank, and "12M" its operator.
void FeedOperatorText(std::u16string_view text, int pushOnly) {
  const char16_t* const end = text.data() + text.size();
  const char16_t* cursor = text.data();
  std::uint32_t tokenCount = 0;
  const auto upTo = [](const char16_t* from, const char16_t* to) {
    return std::u16string_view(from, static_cast<std::size_t>(to - from));
  };

  while (cursor < end) {
    while (cursor < end && *cursor <= 32) ++cursor;
    if (cursor == end) return;
    const char16_t c = *cursor;

    if (c == u'+' || c == u'-' || c == u'.' || IsDigit(c)) {
      std::size_t consumed;
      const double value = ScanDouble(upTo(cursor, end), &consumed);
      // A sign or a point that begins no number makes an empty token.
      if (consumed > 0) {
        PushNumber(value);
      } else {
        PushToken({});
      }
      cursor += consumed + 1;
      ++tokenCount;
    } else if (c == u'(') {
      const char16_t* stop = cursor + 1;
      while (stop < end && *stop != u')') stop += *stop == u'\\' && stop + 1 < end && stop[1] == u')' ? 2 : 1;
      PushToken(upTo(cursor, stop));
      cursor = stop + 1;
      ++tokenCount;
    } else if (c == u'[') {
      if (cursor + 1 < end && cursor[1] == u'<') return;
      if (run.skipArrayOpen) {
        run.skipArrayOpen = 0;
        ++cursor;
        continue;
      }
      const char16_t* stop = cursor;
      while (stop < end && *stop != u']') ++stop;
      PushToken(upTo(cursor, stop));
      cursor = stop + 1;
      ++tokenCount;
    } else if (c == u']') {
      run.skipArrayOpen = 0;
      ++cursor;
    } else if (c == u'/') {
      const char16_t* stop = cursor;
      while (stop<end&& * stop> 32) ++stop;
      PushToken(upTo(cursor, stop));
      cursor = stop + 1;
      ++tokenCount;
    } else if (c == u'%' && cursor + 1 < end && cursor[1] == u'%') {
      return;
    } else if (c == u'{') {
      ++run.braceDepth;
      ++cursor;
    } else if (c == u'}') {
      --run.braceDepth;
      ++cursor;
    } else if (c == u'<') {
      return;
    } else {
      const char16_t* stop = cursor;
      while (stop<end&& * stop> 32 && *stop != u'}') ++stop;
      const std::u16string_view token = upTo(cursor, stop);
      ++tokenCount;
      cursor = stop;
      if (pushOnly) {
        PushToken(token);
      } else {
        ExecuteOperator({token.substr(0, kMaxNameUnits), tokenCount});
      }
    }
  }
}
