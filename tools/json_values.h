// How the tools write numbers and texts as JSON.
#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <span>
#include <string>
#include <string_view>

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

// The shortest decimal form that reads back to the same bits; NaN and the infinities as the strings "NaN", "Infinity"
// and "-Infinity".
void WriteNumber(JsonWriter& writer, double number);
void WriteNumbers(JsonWriter& writer, std::span<const double> numbers);

// UTF-8; an unpaired surrogate becomes U+FFFD.
void WriteText(JsonWriter& writer, std::u16string_view text);

// Bytes that are UTF-8 for the most part, as a file name is: a byte that belongs to no character is written as the
// escape of a lone surrogate, \udc80 to \udcff, so that none is lost. JsonOfBytes gives the text without the quotes.
void WriteBytes(JsonWriter& writer, std::string_view bytes);
std::string JsonOfBytes(std::string_view bytes);
