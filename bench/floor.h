// The floor: what the XML library alone needs for the same bytes.
#pragma once

#include <string_view>

struct _xmlParserCtxt;

// libxml2's SAX2 parser with handlers that do nothing and one context for all documents.
class XmlFloor {
 public:
  XmlFloor();
  ~XmlFloor();
  XmlFloor(const XmlFloor&) = delete;
  XmlFloor& operator=(const XmlFloor&) = delete;

  // Parses the bytes, well-formed or not, and returns how many elements began.
  long Parse(std::string_view bytes);

 private:
  _xmlParserCtxt* context_;
};
