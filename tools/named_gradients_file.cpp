#include "tools/named_gradients_file.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>

#include "headless_host/text.h"

namespace {

using rapidjson::Value;

// What is wrong with the file, thrown out of the depth of the walk.
struct BadFile {
  std::string reason;
};

const Value* Member(const Value& object, const char* name) {
  const auto member = object.FindMember(name);
  return member == object.MemberEnd() ? nullptr : &member->value;
}

std::int32_t IntegerMember(const Value& object, const char* name, std::int32_t fallback) {
  const Value* value = Member(object, name);
  if (value == nullptr) return fallback;
  if (!value->IsInt()) throw BadFile{std::string("\"") + name + "\" is not a 32-bit integer"};
  return value->GetInt();
}

std::u16string TextMember(const Value& object, const char* name) {
  const Value* value = Member(object, name);
  if (value == nullptr) return {};
  if (!value->IsString()) throw BadFile{std::string("\"") + name + "\" is not a text"};
  return headless::TextFromUtf8({value->GetString(), value->GetStringLength()});
}

// The array of this name; null when there is none.
const Value* ArrayMember(const Value& object, const char* name) {
  const Value* value = Member(object, name);
  if (value != nullptr && !value->IsArray()) throw BadFile{std::string("\"") + name + "\" is not an array"};
  return value;
}

NamedStop ReadStop(const Value& object) {
  if (!object.IsObject()) throw BadFile{"a stop is not an object"};
  NamedStop stop = {
      0, 0, 0, 0, static_cast<std::uint32_t>(IntegerMember(object, "tint", 100)), TextMember(object, "colourName")};
  if (const Value* inks = ArrayMember(object, "cmyk")) {
    std::uint32_t* const fields[] = {&stop.cyan, &stop.magenta, &stop.yellow, &stop.black};
    if (inks->Size() != std::size(fields)) throw BadFile{"\"cmyk\" has not four inks"};
    for (rapidjson::SizeType i = 0; i < inks->Size(); ++i) {
      if (!(*inks)[i].IsUint()) throw BadFile{"an ink is not an integer from 0 on"};
      *fields[i] = (*inks)[i].GetUint();
    }
  }
  return stop;
}

NamedGradient ReadGradient(const Value& object) {
  if (!object.IsObject()) throw BadFile{"an entry is not an object"};
  NamedGradient gradient;
  gradient.name = TextMember(object, "name");
  gradient.type = IntegerMember(object, "type", 0);
  gradient.spotFill = IntegerMember(object, "spotFill", 0);
  if (const Value* stops = ArrayMember(object, "stops")) {
    for (const Value& stop : stops->GetArray()) gradient.stops.push_back(ReadStop(stop));
  }
  if (const Value* positions = ArrayMember(object, "positions")) {
    for (const Value& position : positions->GetArray()) {
      if (!position.IsNumber()) throw BadFile{"a position is not a number"};
      gradient.positions.push_back(position.GetDouble());
    }
  }
  if (gradient.positions.size() != gradient.stops.size()) throw BadFile{"the positions are not as many as the stops"};
  return gradient;
}

}  // namespace

std::string ReadNamedGradients(const std::string& file, std::vector<NamedGradient>& gradients) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::strerror(errno);
  const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  if (stream.bad()) return std::strerror(errno);

  rapidjson::Document document;
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag;
  if (document.Parse<kFlags>(text.data(), text.size()).HasParseError()) {
    return "offset " + std::to_string(document.GetErrorOffset()) + ": " +
           rapidjson::GetParseError_En(document.GetParseError());
  }
  if (!document.IsArray()) return "not an array";
  std::size_t entry = 0;
  try {
    for (const Value& object : document.GetArray()) {
      gradients.push_back(ReadGradient(object));
      ++entry;
    }
  } catch (const BadFile& bad) {
    return "entry " + std::to_string(entry) + ": " + bad.reason;
  }
  return {};
}
