#include "tools/json_values.h"

#include <charconv>
#include <cmath>

#include "headless_host/text.h"

void WriteNumber(JsonWriter& writer, double number) {
  if (std::isnan(number)) {
    writer.String("NaN");
  } else if (std::isinf(number)) {
    writer.String(number > 0.0 ? "Infinity" : "-Infinity");
  } else {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, number);
    writer.RawValue(digits, static_cast<std::size_t>(end.ptr - digits), rapidjson::kNumberType);
  }
}

void WriteNumbers(JsonWriter& writer, std::span<const double> numbers) {
  writer.StartArray();
  for (const double number : numbers) WriteNumber(writer, number);
  writer.EndArray();
}

void WriteText(JsonWriter& writer, std::u16string_view text) {
  const std::string utf8 = headless::Utf8FromText(text);
  writer.String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
}
