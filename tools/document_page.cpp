#include "tools/document_page.h"

#include <libxml/xmlreader.h>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <string_view>

#include "headless_host/headless_host.h"
#include "headless_host/text.h"
#include "tools/document_bytes.h"

namespace {

constexpr double kMillimetre = 0.1;
constexpr double kPixel = 0.02822222222222222;
constexpr double kPoint = 0.035277777777777776;

// Whether the first number behind the first "width" of the file is followed by an "m", wherever that stands.
bool IsInMillimetres(std::string_view text) {
  std::size_t at = text.find("width");
  if (at == text.npos) return false;
  at = text.find_first_of("0123456789", at);
  if (at == text.npos) return false;
  at = text.find_first_not_of("0123456789.", at);
  if (at == text.npos) return false;
  at = text.find_first_not_of(' ', at);
  return at != text.npos && text[at] == 'm';
}

double UnitScale(std::string_view text) {
  if (IsInMillimetres(text)) return kMillimetre;
  return HostSetting(u"ZENTAL", u"Units").value_or(1) == 1 ? kPixel : kPoint;
}

double LeadingNumber(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n\v\f");
  if (start != text.npos) text.remove_prefix(start);
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0.0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
  return end.ec == std::errc() && std::isfinite(number) ? number : 0.0;
}

struct ReaderDeleter {
  void operator()(xmlTextReaderPtr reader) const { xmlFreeTextReader(reader); }
};

double RootNumber(xmlTextReaderPtr reader, const char* name) {
  xmlChar* value = xmlTextReaderGetAttribute(reader, reinterpret_cast<const xmlChar*>(name));
  const double number = value == nullptr ? 0.0 : LeadingNumber(reinterpret_cast<const char*>(value));
  xmlFree(value);
  return number;
}

}  // namespace

std::optional<DocumentPage> MeasureDocument(const std::string& file) {
  std::string unread;
  std::optional<std::string> bytes = ReadDocumentBytes(file, unread);
  if (!bytes) return std::nullopt;
  std::string& text = *bytes;
  text.resize(std::min(text.find('\0'), text.size()));
  BlankDoctype(text);
  const double scale = UnitScale(text);
  const std::string utf8 = headless::Utf8FromText(headless::TextFromNarrow(text));
  const std::unique_ptr<xmlTextReader, ReaderDeleter> reader(xmlReaderForMemory(
      utf8.data(), static_cast<int>(std::min<std::size_t>(utf8.size(), 0x7FFFFFFF)), nullptr, "UTF-8",
      XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_HUGE | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  if (reader == nullptr) return std::nullopt;
  while (xmlTextReaderRead(reader.get()) == 1) {
    if (xmlTextReaderNodeType(reader.get()) != XML_READER_TYPE_ELEMENT) continue;
    const DocumentPage page{RootNumber(reader.get(), "width") * scale, RootNumber(reader.get(), "height") * scale};
    if (page.width > 0.0 && page.height > 0.0) return page;
    break;
  }
  return std::nullopt;
}
