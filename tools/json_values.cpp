#include "tools/json_values.h"

#include <charconv>
#include <cmath>
#include <cstdio>

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

std::string JsonOfBytes(std::string_view bytes) {
  std::string json;
  const auto escape = [&](unsigned unit) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "\\u%04x", unit);
    json += digits;
  };
  for (std::size_t i = 0; i < bytes.size();) {
    const unsigned char c = static_cast<unsigned char>(bytes[i]);
    const std::size_t size = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
    const std::string_view character = bytes.substr(i, size);
    if (size > 1 && !headless::IsUtf8(character)) {
      escape(0xDC00u + c);
      ++i;
      continue;
    }
    if (c == '"' || c == '\\') {
      json += '\\';
      json += bytes[i];
    } else if (c < 0x20 || c == 0x7F) {
      escape(c);
    } else {
      json += character;
    }
    i += size;
  }
  return json;
}

void WriteBytes(JsonWriter& writer, std::string_view bytes) {
  const std::string json = '"' + JsonOfBytes(bytes) + '"';
  writer.RawValue(json.data(), json.size(), rapidjson::kStringType);
}
