// The layouts of the stream's records in the C header and in the host guide against those that the filter is built
// with.
#include "tests/run/stream_layout.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "host/polygon.h"
#include "run/import_command.h"

namespace {

struct Place {
  std::size_t offset, size;
  bool operator==(const Place&) const = default;
};
void PrintTo(const Place& place, std::ostream* out) { *out << "offset " << place.offset << ", size " << place.size; }

using Layout = std::map<std::string, Place>;  // by "Record.field", and "Record." for the record itself
using Codes = std::map<std::string, unsigned>;

// POLYGON has a class table, which the language does not promise a place.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#define RECORD(record) {#record ".", {0, sizeof(record)}},
#define FIELD(record, field) {#record "." #field, {offsetof(record, field), sizeof(record::field)}},
const Layout layout = {
#include "tests/run/stream_fields.inc"
};
#undef RECORD
#undef FIELD

std::vector<std::string> LinesOf(const std::string& file) {
  std::ifstream in(std::string(SVGIMPORT_SOURCE_DIR "/") + file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The codes in the lines that match, whose groups are given by number.
Codes CodesIn(const std::string& file, const std::regex& form, int nameGroup, int codeGroup) {
  Codes codes;
  for (const std::string& line : LinesOf(file)) {
    std::smatch match;
    if (std::regex_search(line, match, form)) {
      codes.emplace(match[nameGroup], static_cast<unsigned>(std::stoul(match[codeGroup])));
    }
  }
  return codes;
}

Codes CodesOfHeader(const std::string& file) { return CodesIn(file, std::regex("^  (KEY_[A-Z]{4}) = ([0-9]+)"), 1, 2); }

// The bytes of a type as the guide writes it, such as "f64", "6 x f64", "pointer" or the name of a record.
std::size_t SizeOfType(const std::string& type) {
  std::smatch match;
  if (std::regex_match(type, match, std::regex("([0-9]+) x (.*)"))) {
    return std::stoul(match[1]) * SizeOfType(match[2]);
  }
  if (std::regex_match(type, match, std::regex("[uif](8|16|32|64)"))) return std::stoul(match[1]) / 8;
  if (std::regex_match(type, match, std::regex("`([A-Za-z]+)`"))) return layout.at(match[1].str() + ".").size;
  return type == "pointer" ? sizeof(void*) : 0;
}

// The tables under headings such as "### `LineRecord`, 48 bytes".
Layout LayoutOfGuide() {
  const std::regex heading("^### `([A-Za-z]+)`, ([0-9]+) bytes");
  const std::regex row(R"(^\| ([0-9]+) \| ([^|]+) \| `([A-Za-z0-9]+)` \|)");
  Layout guide;
  std::string record;
  std::size_t base = 0;
  for (const std::string& line : LinesOf("docs/host-guide.md")) {
    std::smatch match;
    if (std::regex_search(line, match, heading)) {
      record = match[1];
      guide[record + "."] = {0, std::stoul(match[2])};
      // The two parts of a fill are told with their places in the whole.
      base = record == "GradientPart" || record == "PatternPart" ? offsetof(FillDefinition, part) : 0;
    } else if (line.starts_with("#")) {
      record.clear();
    } else if (!record.empty() && std::regex_search(line, match, row)) {
      guide[record + "." + match[3].str()] = {std::stoul(match[1]) - base, SizeOfType(match[2])};
    }
  }
  return guide;
}

// Names each field that is missing, too many or elsewhere.
void ExpectSameLayout(const Layout& told) {
  EXPECT_EQ(told.size(), layout.size());
  for (const auto& [field, place] : layout) {
    const auto found = told.find(field);
    if (found == told.end()) {
      ADD_FAILURE() << field << " is missing";
    } else {
      EXPECT_EQ(found->second, place) << field;
    }
  }
  for (const auto& [field, place] : told) EXPECT_TRUE(layout.contains(field)) << field << " is no field";
}

TEST(StreamHeaderForC, HasEveryFieldAtThePlaceThatTheFilterWritesItTo) {
  Layout inC;
  for (const StreamField* field = StreamFieldsInC(); field->record; ++field) {
    inC[std::string(field->record) + "." + field->field] = {field->offset, field->size};
  }
  ExpectSameLayout(inC);
}

TEST(StreamHeaderForC, HasEveryCommandCode) {
  const Codes codes = CodesOfHeader("src/run/import_command.h");
  ASSERT_EQ(codes.size(), 35u);
  EXPECT_EQ(codes.at("KEY_TSPY"), KEY_TSPY);
  EXPECT_EQ(CodesOfHeader("include/svgimport/stream.h"), codes);
}

TEST(HostGuide, HasEveryFieldAtThePlaceThatTheFilterWritesItTo) { ExpectSameLayout(LayoutOfGuide()); }

TEST(HostGuide, HasEveryCommandCode) {
  EXPECT_EQ(CodesIn("docs/host-guide.md", std::regex(R"(^\| ([0-9]+) \| `(KEY_[A-Z]{4})` \|)"), 2, 1),
            CodesOfHeader("src/run/import_command.h"));
}

TEST(HostGuide, NamesEveryFunctionAndClassThatAHostCanReplace) {
  std::stringstream guide;
  guide << std::ifstream(SVGIMPORT_SOURCE_DIR "/docs/host-guide.md").rdbuf();
  for (const char* header :
       {"settings", "application", "matrix", "polygon", "colour", "fills", "transparency", "bitmap"}) {
    const std::string file = std::string("src/host/") + header + ".h";
    const std::regex declared(R"(^(?:[a-zA-Z].*[ *]([A-Za-z_]+)\(|class ([A-Za-z]+)))");
    for (const std::string& line : LinesOf(file)) {
      std::smatch match;
      if (!std::regex_search(line, match, declared) || line.starts_with("static_assert")) continue;
      const std::string name = match[1].matched ? match[1] : match[2];
      EXPECT_NE(guide.str().find("`" + name), std::string::npos) << file << ": " << name;
    }
  }
}

}  // namespace
