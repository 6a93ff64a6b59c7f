#include "headless_host/journal.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "headless_host/headless_host.h"
#include "headless_host/text.h"

namespace headless {

bool journaling = false;

namespace {

std::FILE* journalFile = nullptr;

template <class Number>
void AppendNumber(Number value, std::string& out) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value);
  out.append(digits, end.ptr);
}

template <class Float>
void AppendFloat(Float value, std::string& out) {
  if (std::isnan(value)) {
    out += "\"NaN\"";
  } else if (std::isinf(value)) {
    out += value > 0 ? "\"Infinity\"" : "\"-Infinity\"";
  } else {
    AppendNumber(value, out);
  }
}

void AppendQuoted(std::string_view utf8, std::string& out) {
  static constexpr char kHex[] = "0123456789abcdef";
  out += '"';
  for (const char c : utf8) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      out += "\\u00";
      out += kHex[(c >> 4) & 15];
      out += kHex[c & 15];
    } else {
      out += c;
    }
  }
  out += '"';
}

}  // namespace

void JournalCall::Begin(const char* name) {
  line_ = "{\"call\":\"";
  line_ += name;
  line_ += "\",\"args\":[";
}

JournalCall::~JournalCall() {
  line_ += "}\n";
  std::fwrite(line_.data(), 1, line_.size(), journalFile);
}

void JournalCall::Result(bool value) { line_ += value ? ",\"result\":true" : ",\"result\":false"; }

void JournalCall::Result(std::int64_t value) {
  line_ += ",\"result\":";
  AppendNumber(value, line_);
}

void JournalCall::Separate() {
  if (!first_) line_ += ',';
  first_ = false;
}

void JournalCall::Argument(bool value) {
  Separate();
  line_ += value ? "true" : "false";
}

void JournalCall::Argument(int value) {
  Separate();
  AppendNumber(value, line_);
}

void JournalCall::Argument(unsigned value) {
  Separate();
  AppendNumber(value, line_);
}

void JournalCall::Argument(unsigned long value) {
  Separate();
  AppendNumber(value, line_);
}

void JournalCall::Argument(float value) {
  Separate();
  AppendFloat(value, line_);
}

void JournalCall::Argument(double value) {
  Separate();
  AppendFloat(value, line_);
}

void JournalCall::Argument(const char* text) {
  if (text == nullptr) return;
  Separate();
  AppendQuoted(text, line_);
}

void JournalCall::Argument(const char16_t* text) {
  if (text != nullptr) Argument(std::u16string_view(text));
}

void JournalCall::Argument(std::u16string_view text) {
  Separate();
  AppendQuoted(Utf8FromText(ShownPath(text)), line_);
}

void JournalCall::Argument(const TM& matrix) {
  Separate();
  const double values[] = {matrix.a, matrix.b, matrix.c, matrix.d, matrix.e, matrix.f};
  char separator = '[';
  for (const double value : values) {
    line_ += separator;
    AppendFloat(value, line_);
    separator = ',';
  }
  line_ += ']';
}

void JournalCall::Argument(const CSpotMarker& marker) {
  Separate();
  line_ += '[';
  AppendNumber(marker.position, line_);
  line_ += ',';
  AppendNumber(marker.tint, line_);
  line_ += ']';
}

void JournalCall::Argument(const CTransMarker& marker) {
  Separate();
  line_ += '[';
  AppendNumber(marker.position, line_);
  line_ += ',';
  AppendNumber(marker.opacity, line_);
  line_ += ']';
}

}  // namespace headless

void StartJournal(std::FILE* file) {
  headless::journalFile = file;
  headless::journaling = file != nullptr;
}

void StopJournal() { StartJournal(nullptr); }
