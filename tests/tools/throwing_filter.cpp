// A filter that fails, for tests of what the tools do then: "check.svg" fails in CheckFile, "records.svg" in
// GetImportCommand behind one record, "close.svg" in CloseFile, any other name nowhere.

#include <cstdio>
#include <stdexcept>
#include <string>

#include "run/import_command.h"

namespace {

std::u16string path;
int returned = 0;

}  // namespace

extern "C" [[gnu::visibility("default")]] int CheckFile(std::uintptr_t, std::uintptr_t, const char16_t* file) {
  path = file;
  if (path.ends_with(u"check.svg")) throw std::runtime_error("IXMLDOMDocument: status 0x80004005");
  return 1;
}

extern "C" [[gnu::visibility("default")]] ImportCommand GetImportCommand() {
  if (returned++ == 0) return {KEY_FILL, 0, {7}};
  if (path.ends_with(u"records.svg")) throw std::out_of_range("invalid vector<T> subscript");
  return {KEY_ENDF, 0, {0}};
}

extern "C" [[gnu::visibility("default")]] std::intptr_t GetFileHandle() { return 0; }

extern "C" [[gnu::visibility("default")]] int CloseFile() {
  std::fputs("closed\n", stderr);
  if (path.ends_with(u"close.svg")) throw std::runtime_error("IXMLDOMNode: status 0x80004005");
  return 0;
}
